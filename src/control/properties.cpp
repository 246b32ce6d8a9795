#include <velmora/control/ctr_velmora_new.h>
#include "control/module_slots.h"

namespace velmora {

void Ctr_VelmoraNew::TheClient(const ClientRef& vNewValue) {
  Variable::TheClient = vNewValue;
}

void Ctr_VelmoraNew::TheDatabase(const DatabaseRef& vNewValue) {
  Variable::TheDatabase = vNewValue;
}

}  // namespace velmora
