// Charge_AideTache: the client's dated task lists merged into one, latest first, each
// task once with the duration of the latest list that names it. The proposal then shows
// the merged tasks still in the catalogue, and R_TableDurees keeps every duration seen.
#include <velmora/control/ctr_velmora_new.h>
#include "control/control_private.h"
#include "control/error_regime.h"
#include "control/read_snapshot.h"
#include "rows/item_row.h"
#include "tables/item_merge.h"
#include "tables/working_table.h"

namespace velmora {

void Ctr_VelmoraNew::Charge_AideTache() {
  const SessionInUse inUse(d_->session);
  const ProcedureSnapshot snapshot;
  // A fresh proposal table, and a request record to fill.
  NorvikRecord request;
  Variable().R_TablePossible = newRecord();
  request.set(u"");
  // Keys that begin with the client code, latest date first.
  request.set(1, u"SSELECT AIDEDETAILTACHE AVEC @ID = \"" + d_->W_Code + u"]\" PAR-DECR @ID");
  request.set(2, u"AIDEDETAILTACHE");
  request.set(3, u"0");
  long nombre = 0;
  resumeNext(
      [&] { Variable().R_ListeAide = Variable().TheDatabase->RunQuery(request.r(), u"", nombre); });
  // Before the answer is looked at: a client without lists ends with an empty table.
  Variable().R_TableDurees = newRecord();
  if (testOrTrue([] { return tables::defaultIsEmpty(*Variable().R_ListeAide); })) return;
  // Each task once, with the duration of the latest list that names it.
  tables::ClientListMerge merge(*Variable().R_TablePossible, *Variable().R_TableDurees);
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
  // The proposal shows the merged tasks still in the catalogue, sorted.
  resumeNext([&] { Lst_Possible.Clear(); });
  resumeNext([&] { Lst_CodePos.Clear(); });
  const int count = Variable().R_TablePossible->DCount();
  for (int i = 1; i <= count; ++i) {
    const Text& code = Variable().R_TablePossible->r(i, 1);
    if (!rows::readItemRecords(true, code)) continue;
    rows::addProposalRow({Lst_Possible, Lst_CodePos}, true, code,
                         Variable().R_TablePossible->r(i, 2), u"");
  }
  resumeNext([&] { Trie_Possible(); });
}

}  // namespace velmora
