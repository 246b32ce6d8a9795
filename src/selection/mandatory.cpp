// AuMoinsUneTacheImperative: whether a selected home-help task is marked mandatory
// ("O" in attribute 4 of its TACHE record). Read afresh at each call: nothing cached.
#include <velmora/control/ctr_velmora_new.h>
#include "control/control_private.h"
#include "control/read_snapshot.h"
#include "control/session_state.h"

namespace velmora {

Boolean Ctr_VelmoraNew::AuMoinsUneTacheImperative() {
  const SessionInUse inUse(d_->session);
  const ProcedureSnapshot snapshot;
  // Care acts have no mandatory mark.
  if (d_->W_TypeAct != u"AUTRE") return kFalse;
  // In list order; the first mandatory task ends the walk.
  const int n = Lst_CodeSelect.ListCount();
  for (int i = 0; i < n; ++i) {
    try {
      Variable().R_Tache = Variable().F_Tache->ReadRecord(Lst_CodeSelect.List(i));
    } catch (const Failure& failure) {
      // A task since gone from the catalogue is not mandatory; other failures are real.
      if (failure.number() != errors::kRecordNotFound) throw;
      continue;
    }
    if (Variable().R_Tache->r(4) == u"O") return kTrue;
  }
  return kFalse;
}

}  // namespace velmora
