// The control's two write-only properties. They hand the client and the connection to
// the control's session, where every control on the session finds them.
#include <velmora/control/ctr_velmora_new.h>
#include "control/control_private.h"

namespace velmora {

void Ctr_VelmoraNew::TheClient(const ClientRef& vNewValue) {
  d_->session.state().Variable.TheClient = vNewValue;
}

void Ctr_VelmoraNew::TheDatabase(const DatabaseRef& vNewValue) {
  d_->session.state().Variable.TheDatabase = vNewValue;
}

}  // namespace velmora
