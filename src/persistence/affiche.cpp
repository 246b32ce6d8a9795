// Affiche, the way back: a stored selection in W_Aff becomes selection rows again, behind
// what the selection holds already. An item whose task or group is gone is left out.
#include <velmora/control/ctr_velmora_new.h>
#include "control/control_private.h"
#include "control/error_regime.h"
#include "control/read_snapshot.h"
#include "rows/item_row.h"
#include "rows/total.h"
#include "tables/working_table.h"

namespace velmora::persistence {

namespace {

// Reads one record into its cursor; a key without a record is the one failure that
// only drops the item, so it answers false. Any other failure reaches the host.
bool readOrDrop(const FileRef& file, const Text& key, RecordRef& cursor) {
  Err().Clear();
  try {
    cursor = file->ReadRecord(key);
    return true;
  } catch (const Failure& failure) {
    if (failure.number() != errors::kRecordNotFound) throw;
    recordFailure(failure);
    return false;
  }
}

}  // namespace

}  // namespace velmora::persistence

namespace velmora {

void Ctr_VelmoraNew::Affiche() {
  const SessionInUse inUse(d_->session);
  const ProcedureSnapshot snapshot;
  const int count = W_Aff->DCount();
  bool leftOut = false;  // an item of this call has been left out
  for (int i = 1; i <= count; ++i) {
    const auto [code, duration, observation] = tables::tableItem(*W_Aff, i);
    // An item without its task or its group is left out without a word.
    using persistence::readOrDrop;
    if (!readOrDrop(Variable().F_Tache, code, Variable().R_Tache) ||
        !readOrDrop(Variable().F_GroupeTache, Variable().R_Tache->r(2), Variable().R_GroupeTache)) {
      leftOut = true;
      continue;
    }
    // The row and its code; a duration too wide for the row fails here, before both.
    rows::addSelectionRow({Lst_Selectionne, Lst_CodeSelect}, true, code, !observation.empty(),
                          duration, rows::OnFailure::kReachHost);
    // The observation goes to attribute i; behind a left-out item i runs ahead of the
    // rows, and the observation then goes with the row just appended.
    Variable().R_Obs->set(leftOut ? Lst_Selectionne.ListCount() : i, observation);
    // The item's duration, if any, goes onto the total.
    const Text d = trimBlanks(duration);
    if (!d.empty()) W_Total = rows::addToShownTotal(Txt_Duree, d);
  }
  Trie_Selectionne();
}

}  // namespace velmora
