// One read snapshot of the store for the length of a procedure of the control: its reads
// see one state of the store and wait for a writer's lock once, at the entry, before the
// procedure changes anything. Procedures called inside share the outermost one. Without
// a database it holds nothing.
#pragma once

#include <memory>

#include "control/session_state.h"

namespace velmora {

class ProcedureSnapshot {
 public:
  ProcedureSnapshot() {
    if (Variable().TheDatabase) hold_ = Variable().TheDatabase->holdSnapshot();
  }

 private:
  std::unique_ptr<NorvikDatabase::Snapshot> hold_;
};

}  // namespace velmora
