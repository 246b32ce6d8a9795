// The control's heavy operations on the large account, each beside its floor: the same
// store opens, reads and queries, recorded from the operation and run directly.
#include <benchmark/benchmark.h>

#include <map>
#include <memory>
#include <string>

#include <velmora/control/ctr_velmora_new.h>
#include "control/module_slots.h"
#include "support/large_account.h"
#include "support/store_calls.h"
#include "support/summary.h"

namespace velmora::bench {
namespace {

// An intervention on Monday 23/11/2026, 08:00 to 09:30, as a host hands it over.
InitArguments intervention(const char16_t* typeAct, const std::string& client) {
  return InitArguments{typeAct,  fromUtf8(client), u"23/11/2026", u"31/12/2026",
                       u"08:00", u"09:30",         u"1000000"};
}

// What Init needs each time: fresh module slots and the connection.
void init(Ctr_VelmoraNew& control, const DatabaseRef& database, InitArguments arguments) {
  Variable::resetAll();
  control.TheDatabase(database);
  control.Init(arguments);
}

const InitArguments kCareWithoutTemplates = intervention(u"SSIAD", kClientWithoutAnything);
const InitArguments kCareWithTemplates = intervention(u"SSIAD", clientCode(5002));
const InitArguments kHomeHelpWithTemplates = intervention(u"AUTRE", clientCode(5001));

// The store calls of an operation, recorded at the first use of its name, outside the
// timings: an Init, or an Init followed by ticking the show-all box (only the tick counts).
const StoreCalls& callsOf(const std::string& name) {
  static std::map<std::string, StoreCalls> recorded;
  const auto found = recorded.find(name);
  if (found != recorded.end()) return found->second;
  const bool tick = name == "TickAllTasks";
  const InitArguments& arguments = name == "InitCareCatalogue"   ? kCareWithoutTemplates
                                   : name == "InitCareTemplates" ? kCareWithTemplates
                                                                 : kHomeHelpWithTemplates;
  auto calls = std::make_shared<StoreCalls>();
  Ctr_VelmoraNew control;
  init(control, recordingDatabase(largeAccountDatabase(), calls), arguments);
  if (tick) {
    calls->clear();
    control.Cac_TouteTache.toggle();
  }
  return recorded[name] = *calls;
}

void countersOf(benchmark::State& state, const Ctr_VelmoraNew& control, const StoreCalls& calls) {
  const CallCounts counts = count(calls);
  state.counters["proposed"] = control.Lst_Possible.ListCount();
  state.counters["selected"] = control.Lst_Selectionne.ListCount();
  state.counters["reads"] = counts.reads;
  state.counters["queries"] = counts.queries;
}

void runInit(benchmark::State& state, const std::string& name, const InitArguments& arguments) {
  const StoreCalls& calls = callsOf(name);
  Ctr_VelmoraNew control;
  for (auto _ : state) init(control, largeAccountDatabase(), arguments);
  countersOf(state, control, calls);
}

void runFloor(benchmark::State& state, const std::string& name) {
  const StoreCalls& calls = callsOf(name);
  for (auto _ : state) replay(calls, largeAccountDatabase());
}

void InitCareCatalogue(benchmark::State& state) {
  runInit(state, "InitCareCatalogue", kCareWithoutTemplates);
}
void InitCareCatalogueFloor(benchmark::State& state) {
  runFloor(state, "InitCareCatalogue");
}

void InitCareTemplates(benchmark::State& state) {
  runInit(state, "InitCareTemplates", kCareWithTemplates);
}
void InitCareTemplatesFloor(benchmark::State& state) {
  runFloor(state, "InitCareTemplates");
}

void InitHomeHelpTemplates(benchmark::State& state) {
  runInit(state, "InitHomeHelpTemplates", kHomeHelpWithTemplates);
}
void InitHomeHelpTemplatesFloor(benchmark::State& state) {
  runFloor(state, "InitHomeHelpTemplates");
}

// The planner ticks "Afficher toutes les tâches"; unticking (which searches again) is
// left out of the timing.
void TickAllTasks(benchmark::State& state) {
  const StoreCalls& calls = callsOf("TickAllTasks");
  Ctr_VelmoraNew control;
  init(control, largeAccountDatabase(), kHomeHelpWithTemplates);
  for (auto _ : state) {
    control.Cac_TouteTache.toggle();
    state.PauseTiming();
    countersOf(state, control, calls);
    control.Cac_TouteTache.toggle();
    state.ResumeTiming();
  }
}
void TickAllTasksFloor(benchmark::State& state) {
  runFloor(state, "TickAllTasks");
}

// A catalogue Init takes about a second: a few runs of each, so that one slow run on the
// shared machine does not decide the ratio.
BENCHMARK(InitCareCatalogue)->Unit(benchmark::kMillisecond)->MinTime(4);
BENCHMARK(InitCareCatalogueFloor)->Unit(benchmark::kMillisecond)->MinTime(4);
BENCHMARK(TickAllTasks)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(TickAllTasksFloor)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(InitCareTemplates)->Unit(benchmark::kMicrosecond)->MinTime(2);
BENCHMARK(InitCareTemplatesFloor)->Unit(benchmark::kMicrosecond)->MinTime(2);
BENCHMARK(InitHomeHelpTemplates)->Unit(benchmark::kMicrosecond)->MinTime(2);
BENCHMARK(InitHomeHelpTemplatesFloor)->Unit(benchmark::kMicrosecond)->MinTime(2);

}  // namespace
}  // namespace velmora::bench

int main(int argc, char** argv) {
  using namespace velmora::bench;
  largeAccountDatabase();  // builds the large account before any timing
  return runWithSummary(argc, argv,
                        {RatioGoal{"InitCareCatalogue", "InitCareCatalogueFloor", 2.0},
                         RatioGoal{"TickAllTasks", "TickAllTasksFloor", 2.0},
                         RatioGoal{"InitCareTemplates", "InitCareTemplatesFloor", 2.0},
                         RatioGoal{"InitHomeHelpTemplates", "InitHomeHelpTemplatesFloor", 2.0}},
                        {});
}
