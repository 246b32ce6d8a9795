// Charge_AideTache: the client's dated task lists merged into one, latest first, each
// task once with the duration of the latest list that names it. The proposal then shows
// the merged tasks still in the catalogue, and R_TableDurees keeps every duration seen.
#include <velmora/control/ctr_velmora_new.h>
#include "control/error_regime.h"
#include "control/read_snapshot.h"
#include "rows/item_row.h"
#include "tables/item_merge.h"
#include "tables/working_table.h"

namespace velmora {

using namespace Variable;

void Ctr_VelmoraNew::Charge_AideTache() {
  const ProcedureSnapshot snapshot;
  // A fresh proposal table, and a request record to fill.
  NorvikRecord request;
  R_TablePossible = newRecord();
  request.set(u"");
  // Keys that begin with the client code, latest date first.
  request.set(1, u"SSELECT AIDEDETAILTACHE AVEC @ID = \"" + W_Code + u"]\" PAR-DECR @ID");
  request.set(2, u"AIDEDETAILTACHE");
  request.set(3, u"0");
  long nombre = 0;
  resumeNext([&] { R_ListeAide = Variable::TheDatabase->RunQuery(request.r(), u"", nombre); });
  // Before the answer is looked at: a client without lists ends with an empty table.
  R_TableDurees = newRecord();
  if (testOrTrue([] { return tables::defaultIsEmpty(*R_ListeAide); })) return;
  // Each task once, with the duration of the latest list that names it.
  tables::ClientListMerge merge(*R_TablePossible, *R_TableDurees);
  const int lists = R_ListeAide->DCount();
  for (int i = 1; i <= lists; ++i) {
    Err.Clear();
    resumeNext([&] { R_AideDetail = F_AideDetail->ReadRecord(R_ListeAide->r(i)); });
    int tasks = 0;
    resumeNext([&] { tasks = R_AideDetail->DCount(1); });
    for (int j = 1; j <= tasks; ++j) {
      merge.merge(R_AideDetail->r(1, j), R_AideDetail->r(2, j));
    }
  }
  // The proposal shows the merged tasks still in the catalogue, sorted.
  resumeNext([&] { Lst_Possible.Clear(); });
  resumeNext([&] { Lst_CodePos.Clear(); });
  const int count = R_TablePossible->DCount();
  for (int i = 1; i <= count; ++i) {
    const Text& code = R_TablePossible->r(i, 1);
    if (!rows::readItemRecords(true, code)) continue;
    rows::addProposalRow({Lst_Possible, Lst_CodePos}, true, code, R_TablePossible->r(i, 2), u"");
  }
  resumeNext([&] { Trie_Possible(); });
}

}  // namespace velmora
