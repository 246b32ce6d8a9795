// The interventions the control benchmarks hand to Init, as a host hands them over.
#pragma once

#include <string>

#include <velmora/base/text.h>
#include <velmora/control/ctr_velmora_new.h>
#include "control/inspection.h"

namespace velmora::bench {

// An intervention on Monday 23/11/2026, 08:00 to 09:30.
inline InitArguments intervention(const char16_t* typeAct, const std::string& client) {
  return InitArguments{typeAct,  fromUtf8(client), u"23/11/2026", u"31/12/2026",
                       u"08:00", u"09:30",         u"1000000"};
}

// What Init needs each time: a fresh session and the connection.
inline void init(Ctr_VelmoraNew& control, const DatabaseRef& database, InitArguments arguments) {
  CtrInspector(control).session().state().clear();
  control.TheDatabase(database);
  control.Init(arguments);
}

}  // namespace velmora::bench
