// The way back: a stored selection in W_Aff becomes selection rows again, behind what
// the selection holds already.
#include <optional>

#include <velmora/control/ctr_velmora_new.h>
#include "control/control_private.h"
#include "control/error_regime.h"
#include "control/read_snapshot.h"
#include "rows/row_format.h"
#include "selection/total.h"

namespace velmora {

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

void Ctr_VelmoraNew::Affiche() {
  const SessionInUse inUse(d_->session);
  const ProcedureSnapshot snapshot;
  const int count = W_Aff->DCount();
  bool leftOut = false;  // an item of this call has been left out
  for (int i = 1; i <= count; ++i) {
    const Text code = W_Aff->r(i, 1);
    const Text duration = W_Aff->r(i, 2);
    const Text observation = W_Aff->r(i, 3);
    // 1-2. An item without its task or its group is left out without a word.
    if (!readOrDrop(Variable().F_Tache, code, Variable().R_Tache) ||
        !readOrDrop(Variable().F_GroupeTache, Variable().R_Tache->r(2), Variable().R_GroupeTache)) {
      leftOut = true;
      continue;
    }
    // 3-4.
    Lst_Selectionne.AddItem(
        rows::textColumn(Variable().R_GroupeTache->r(2)) +
            rows::textColumn(Variable().R_Tache->r(2)) + rows::textColumn(code) +
            rows::selectionMarkerAndDuration(!observation.empty(), duration),
        rows::wholeColumns(Variable().R_GroupeTache->r(2), Variable().R_Tache->r(2), code));
    Lst_CodeSelect.AddItem(code);
    // 5. Attribute i. Behind a left-out item i runs ahead of the rows: the observation
    // then goes with the row just appended.
    Variable().R_Obs->set(leftOut ? Lst_Selectionne.ListCount() : i, observation);
    // 6.
    const Text d = trimBlanks(duration);
    if (!d.empty()) W_Total = selection::addToShownTotal(Txt_Duree, d);
  }
  Trie_Selectionne();
}

}  // namespace velmora
