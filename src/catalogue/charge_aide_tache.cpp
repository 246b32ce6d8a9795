// Charge_AideTache: the client's dated task lists merged into one, latest first, each
// task once with the duration of the latest list that names it.
#include <velmora/control/ctr_velmora_new.h>
#include "control/control_private.h"
#include "control/error_regime.h"
#include "control/read_snapshot.h"
#include "rows/row_format.h"
#include "search/item_columns.h"
#include "search/item_merge.h"
#include "search/working_table.h"

namespace velmora {

void Ctr_VelmoraNew::Charge_AideTache() {
  const SessionInUse inUse(d_->session);
  const ProcedureSnapshot snapshot;
  // 1.
  NorvikRecord request;
  Variable().R_TablePossible = newRecord();
  request.set(u"");
  // 2. Keys that begin with the client code, latest date first.
  request.set(1, u"SSELECT AIDEDETAILTACHE AVEC @ID = \"" + d_->W_Code + u"]\" PAR-DECR @ID");
  request.set(2, u"AIDEDETAILTACHE");
  request.set(3, u"0");
  // 3.
  long nombre = 0;
  resumeNext(
      [&] { Variable().R_ListeAide = Variable().TheDatabase->RunQuery(request.r(), u"", nombre); });
  // 4. Before the answer is looked at: a client without lists ends with an empty table.
  Variable().R_TableDurees = newRecord();
  // 5.
  if (testOrTrue([] { return search::defaultIsEmpty(*Variable().R_ListeAide); })) return;
  // 6.
  search::ClientListMerge merge(*Variable().R_TablePossible, *Variable().R_TableDurees);
  const int lists = Variable().R_ListeAide->DCount();
  for (int i = 1; i <= lists; ++i) {
    Err().Clear();
    resumeNext([&] {
      Variable().R_AideDetail = Variable().F_AideDetail->ReadRecord(Variable().R_ListeAide->r(i));
    });
    int tasks = 0;
    resumeNext([&] { tasks = Variable().R_AideDetail->DCount(1); });
    for (int j = 1; j <= tasks; ++j) {
      merge.merge(Variable().R_AideDetail->r(1, j), Variable().R_AideDetail->r(2, j));
    }
  }
  // 7.
  resumeNext([&] { Lst_Possible.Clear(); });
  resumeNext([&] { Lst_CodePos.Clear(); });
  // 8.
  const int count = Variable().R_TablePossible->DCount();
  for (int i = 1; i <= count; ++i) {
    const Text& code = Variable().R_TablePossible->r(i, 1);
    Err().Clear();
    resumeNext([&] { Variable().R_Tache = Variable().F_Tache->ReadRecord(code); });
    if (Err().Number == errors::kRecordNotFound) continue;
    Err().Clear();
    resumeNext([] {
      Variable().R_GroupeTache = Variable().F_GroupeTache->ReadRecord(Variable().R_Tache->r(2));
    });
    if (Err().Number == errors::kRecordNotFound) continue;
    Text row;
    resumeNext([&] { row += rows::textColumn(Variable().R_GroupeTache->r(2)); });
    resumeNext([&] { row += rows::textColumn(Variable().R_Tache->r(2)); });
    row += rows::textColumn(code);
    resumeNext([&] { row += rows::proposalDuration(Variable().R_TablePossible->r(i, 2)); });
    resumeNext([&] { Lst_Possible.AddItem(row, search::wholeColumns(true, code)); });
    resumeNext([&] { Lst_CodePos.AddItem(code); });
  }
  // 9.
  resumeNext([&] { Trie_Possible(); });
}

}  // namespace velmora
