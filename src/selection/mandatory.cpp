// AuMoinsUneTacheImperative: whether a selected home-help task is marked mandatory
// ("O" in attribute 4 of its TACHE record). Read afresh at each call: nothing cached.
#include <velmora/control/ctr_velmora_new.h>
#include "control/module_slots.h"
#include "control/read_snapshot.h"

namespace velmora {

using namespace Variable;

Boolean Ctr_VelmoraNew::AuMoinsUneTacheImperative() {
  const ProcedureSnapshot snapshot;
  // Care acts have no mandatory mark.
  if (W_TypeAct != u"AUTRE") return kFalse;
  // In list order; the first mandatory task ends the walk.
  const int n = Lst_CodeSelect.ListCount();
  for (int i = 0; i < n; ++i) {
    try {
      R_Tache = F_Tache->ReadRecord(Lst_CodeSelect.List(i));
    } catch (const Failure& failure) {
      // A task since gone from the catalogue is not mandatory; other failures are real.
      if (failure.number() != errors::kRecordNotFound) throw;
      continue;
    }
    if (R_Tache->r(4) == u"O") return kTrue;
  }
  return kFalse;
}

}  // namespace velmora
