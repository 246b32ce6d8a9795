// The control's heavy operations on the large account, each beside its floor: the least
// work giving the same rows, that is the distinct records the operation needs, read in
// the fewest queries, joined and sorted with the standard library and built into the
// same rows. Each floor checks once that its rows are the control's.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include <velmora/control/ctr_velmora_new.h>
#include "control/module_slots.h"
#include "rows/row_format.h"
#include "search/task_catalogue.h"
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
  {
    const UserCpu user(state);
    for (auto _ : state) init(control, largeAccountDatabase(), arguments);
  }
  countersOf(state, control, calls);
}

// The rows of a list with their codes, in list order.
using Rows = std::vector<std::pair<Text, Text>>;

Rows rowsOf(const toolkit::ListBox& rows, const toolkit::ListBox& codes) {
  Rows out;
  for (int i = 0; i < rows.ListCount(); ++i) out.emplace_back(rows.List(i), codes.List(i));
  return out;
}

// A floor must give what the control gives: the same rows in the same order, and each
// row with its code (equal rows may hold their codes in another order).
void checkSameRows(benchmark::State& state, const Rows& control, Rows floor) {
  bool same = control.size() == floor.size();
  for (std::size_t i = 0; same && i < control.size(); ++i)
    same = control[i].first == floor[i].first;
  Rows sortedControl = control;
  std::sort(sortedControl.begin(), sortedControl.end());
  std::sort(floor.begin(), floor.end());
  if (!same || sortedControl != floor)
    state.SkipWithError("the floor's rows differ from the control's");
}

// Proposal rows in the order of Trie_Possible's key ("1" or "2" for the mark at position
// 88, then the row), by std::sort in place.
bool proposalLess(const std::pair<Text, Text>& a, const std::pair<Text, Text>& b) {
  const auto marked = [](const Text& row) { return row.size() >= 88 && row[87] != u' '; };
  const bool ma = marked(a.first);
  const bool mb = marked(b.first);
  if (ma != mb) return mb;
  return a.first < b.first;
}

long nombre = 0;

NorvikRecord query(const DatabaseRef& database, const char16_t* q, const char16_t* file,
                   const char16_t* columns) {
  Text request(q);
  request += kAttributeMark;
  request += file;
  request += kAttributeMark;
  request += columns;
  return *database->RunQuery(request, u"", nombre);
}

// Key -> attribute 1 of every record of a file, in one query.
std::unordered_map<Text, Text> labels(const DatabaseRef& database, const char16_t* q,
                                      const char16_t* file) {
  const NorvikRecord answer = query(database, q, file, u"0 1");
  std::unordered_map<Text, Text> out;
  out.reserve(static_cast<std::size_t>(answer.DCount()));
  for (int i = 1; i <= answer.DCount(); ++i) out.emplace(answer.r(i, 1), answer.r(i, 2));
  return out;
}

// The care-act catalogue: the acts, the regroupments and the care types in three
// queries in one read transaction, joined in hash maps, the rows built and sorted.
Rows careCatalogueFloor(const DatabaseRef& database) {
  const auto held = database->holdSnapshot();  // one read transaction for the three
  const NorvikRecord acts = query(database, u"SSELECT SSIADSOINS PAR 1", u"SSIADSOINS", u"0 1 4");
  const auto regroupments = labels(database, u"SSELECT SSIADREGROUPSOINS", u"SSIADREGROUPSOINS");
  const auto types = labels(database, u"SSELECT SSIADTYPESOINS", u"SSIADTYPESOINS");
  Rows rows;
  rows.reserve(static_cast<std::size_t>(acts.DCount()));
  for (int i = 1; i <= acts.DCount(); ++i) {
    const Text& code = acts.r(i, 1);
    const auto regroupment = regroupments.find(left(code, 2));
    if (regroupment == regroupments.end()) continue;
    const auto type = types.find(left(code, 4));
    if (type == types.end()) continue;
    Text row = rows::textColumn(regroupment->second);
    row += rows::textColumn(type->second);
    row += rows::textColumn(acts.r(i, 2));
    row += rows::proposalDuration(acts.r(i, 3));
    rows.emplace_back(std::move(row), code);
  }
  std::sort(rows.begin(), rows.end(), proposalLess);
  return rows;
}

// The client's durations that override the catalogue's: the last valid one per code.
std::unordered_map<Text, Text> overridesOf(const RecordRef& durees) {
  std::unordered_map<Text, Text> out;
  if (durees.empty()) return out;
  for (int l = 1; l <= durees->DCount(); ++l) {
    const Text& d = durees->r(l, 2);
    if (!d.empty() && d != u"0") out[durees->r(l, 1)] = d;
  }
  return out;
}

// The task catalogue of the show-all switch: types, groups and tasks in three queries,
// each task joined to its group and type in hash maps, the rows built and sorted.
Rows taskCatalogueFloor(const DatabaseRef& database,
                        const std::unordered_map<Text, Text>& overrides) {
  const auto held = database->holdSnapshot();
  const NorvikRecord types = query(database, u"SSELECT TYPETACHE", u"TYPETACHE", u"0");
  const NorvikRecord groups = query(database, u"SSELECT GROUPETACHE", u"GROUPETACHE", u"0 2");
  const NorvikRecord tasks = query(database, u"SSELECT TACHE", u"TACHE", u"0 2 5");
  std::unordered_set<Text> typeKeys;
  for (int i = 1; i <= types.DCount(); ++i) typeKeys.insert(types.r(i, 1));
  std::unordered_map<Text, Text> typeOfGroup;
  for (int j = 1; j <= groups.DCount(); ++j) {
    if (typeKeys.contains(groups.r(j, 2))) typeOfGroup.emplace(groups.r(j, 1), groups.r(j, 2));
  }
  Rows rows;
  rows.reserve(static_cast<std::size_t>(tasks.DCount()));
  for (int k = 1; k <= tasks.DCount(); ++k) {
    const Text& code = tasks.r(k, 1);
    const auto type = typeOfGroup.find(tasks.r(k, 2));
    if (type == typeOfGroup.end()) continue;
    Text row = rows::textColumn(type->second);
    row += rows::textColumn(tasks.r(k, 2));
    row += rows::textColumn(code);
    row += rows::proposalDuration(tasks.r(k, 3));
    const auto known = overrides.find(code);
    if (known != overrides.end()) row = search::withOverriddenDuration(row, known->second);
    rows.emplace_back(std::move(row), code);
  }
  std::sort(rows.begin(), rows.end(), proposalLess);
  return rows;
}

// The store work of a template Init: its queries, and each distinct record it read, once,
// in one read transaction.
StoreCalls distinctCalls(const StoreCalls& calls) {
  StoreCalls out;
  std::set<std::pair<Text, Text>> read;
  for (const StoreCall& call : calls) {
    if (call.kind == StoreCall::Kind::Open) continue;
    if (call.kind == StoreCall::Kind::Read && !read.insert({call.file, call.text}).second) continue;
    out.push_back(call);
  }
  return out;
}

void InitCareCatalogue(benchmark::State& state) {
  runInit(state, "InitCareCatalogue", kCareWithoutTemplates);
}
void InitCareCatalogueFloor(benchmark::State& state) {
  static const bool checked = [&] {
    Ctr_VelmoraNew control;
    init(control, largeAccountDatabase(), kCareWithoutTemplates);
    checkSameRows(state, rowsOf(control.Lst_Possible, control.Lst_CodePos),
                  careCatalogueFloor(largeAccountDatabase()));
    return true;
  }();
  (void)checked;
  const UserCpu user(state);
  for (auto _ : state) benchmark::DoNotOptimize(careCatalogueFloor(largeAccountDatabase()));
}

void runDistinctReads(benchmark::State& state, const std::string& name) {
  const StoreCalls calls = distinctCalls(callsOf(name));
  const CallCounts counts = count(calls);
  {
    const UserCpu user(state);
    for (auto _ : state) {
      const auto held = largeAccountDatabase()->holdSnapshot();
      replay(calls, largeAccountDatabase());
    }
  }
  state.counters["reads"] = counts.reads;
  state.counters["queries"] = counts.queries;
}

void InitCareTemplates(benchmark::State& state) {
  runInit(state, "InitCareTemplates", kCareWithTemplates);
}
void InitCareTemplatesFloor(benchmark::State& state) {
  runDistinctReads(state, "InitCareTemplates");
}

void InitHomeHelpTemplates(benchmark::State& state) {
  runInit(state, "InitHomeHelpTemplates", kHomeHelpWithTemplates);
}
void InitHomeHelpTemplatesFloor(benchmark::State& state) {
  runDistinctReads(state, "InitHomeHelpTemplates");
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
  Ctr_VelmoraNew control;
  init(control, largeAccountDatabase(), kHomeHelpWithTemplates);
  const auto overrides = overridesOf(Variable::R_TableDurees);
  static const bool checked = [&] {
    control.Cac_TouteTache.toggle();
    checkSameRows(state, rowsOf(control.Lst_Possible, control.Lst_CodePos),
                  taskCatalogueFloor(largeAccountDatabase(), overrides));
    control.Cac_TouteTache.toggle();
    return true;
  }();
  (void)checked;
  const UserCpu user(state);
  for (auto _ : state)
    benchmark::DoNotOptimize(taskCatalogueFloor(largeAccountDatabase(), overrides));
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
  return runWithSummary(
      argc, argv,
      {RatioGoal{"InitCareCatalogue", "InitCareCatalogueFloor", 1.5, true},
       RatioGoal{"TickAllTasks", "TickAllTasksFloor", 1.5},
       RatioGoal{"InitCareTemplates", "InitCareTemplatesFloor", 1.5, true},
       RatioGoal{"InitHomeHelpTemplates", "InitHomeHelpTemplatesFloor", 1.5, true}},
      {});
}
