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

#include <velmora/base/failure.h>
#include <velmora/control/ctr_velmora_new.h>
#include "catalogue/task_catalogue.h"
#include "control/inspection.h"
#include "rows/row_format.h"
#include "support/interventions.h"
#include "support/large_account.h"
#include "support/store_calls.h"
#include "support/summary.h"

namespace velmora::bench {
namespace {

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
    if (known != overrides.end()) row = catalogue::withOverriddenDuration(row, known->second);
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

// What a replay of calls read: each record by file and key, and each query's answer.
struct ReadBack {
  std::unordered_map<Text, RecordRef> records;      // by file, attribute mark, key
  std::vector<std::pair<Text, RecordRef>> answers;  // by request

  const NorvikRecord* record(TextView file, TextView key) {
    lookup_.assign(file);
    lookup_ += kAttributeMark;
    lookup_ += key;
    const auto found = records.find(lookup_);
    return found == records.end() || found->second.empty() ? nullptr : &found->second.get();
  }

 private:
  Text lookup_;
};

// Makes the calls (each distinct read once) and keeps what they read.
void replayKeeping(const StoreCalls& calls, const DatabaseRef& database, ReadBack& read) {
  std::unordered_map<Text, FileRef> files;
  long count = 0;
  for (const StoreCall& call : calls) {
    if (call.kind == StoreCall::Kind::Query) {
      read.answers.emplace_back(call.text, database->RunQuery(call.text, u"", count));
      continue;
    }
    FileRef& file = files[call.file];
    if (!file) file = database->OpenFile(call.file);
    if (call.kind == StoreCall::Kind::Open) continue;
    RecordRef record;
    try {
      record = file->ReadRecord(call.text);
    } catch (const Failure& failure) {
      if (failure.number() != errors::kRecordNotFound) throw;
    }
    read.records.emplace(call.file + kAttributeMark + call.text, std::move(record));
  }
}

struct TemplateRows {
  Rows possible;
  Rows selection;
};

// A template Init of the intervention of Monday 08:00 to 09:30 from its store work (the
// two template queries and each distinct record the control read, once, in one read
// snapshot): each item once in the proposal, fixed keys first, with the duration of its
// first sight and "*" behind those of floating templates; each item of the templates of
// Monday whose slot meets the intervention once in the selection, with its observation's
// mark; the rows built with the row helpers, both lists sorted with std::sort.
TemplateRows templateFloor(const DatabaseRef& database, const StoreCalls& calls, bool homeHelp) {
  const auto held = database->holdSnapshot();
  ReadBack read;
  replayKeeping(calls, database, read);
  std::vector<std::pair<Text, const NorvikRecord*>> keys;  // fixed first, then floating
  for (const bool fixed : {true, false}) {
    const char16_t* file = fixed ? u"TPSSEMAINETYPE" : u"TPSSEMAINETYPEFLOT";
    for (const auto& [request, answer] : read.answers) {
      const auto start = request.find(kAttributeMark) + 1;
      if (TextView(request).substr(start, request.find(kAttributeMark, start) - start) != file) {
        continue;
      }
      for (int i = 1; i <= answer->DCount(); ++i) {
        keys.emplace_back(answer->r(i), read.record(file, answer->r(i)));
      }
    }
  }
  struct Item {
    TextView code;
    TextView duration;
    TextView end;  // the floating mark, or the observation
  };
  std::vector<Item> proposed;
  std::vector<Item> selected;
  std::unordered_set<TextView> proposedCodes;
  std::unordered_set<TextView> selectedCodes;
  for (const auto& [key, record] : keys) {
    if (record == nullptr) continue;
    const bool fixed = key.size() == 17;
    // Monday is day 0 of the key; the slot starts by 09:50 and ends from 08:00 on.
    const bool matched = fixed && key[10] == u'0' && TextView(key).substr(11, 4) <= u"0950" &&
                         record->r(2) >= u"0800";
    for (int v = 1; v <= record->DCount(4); ++v) {
      const Item item{record->r(4, v), record->r(5, v), fixed ? u"" : u"*"};
      if (proposedCodes.insert(item.code).second) proposed.push_back(item);
      if (matched && selectedCodes.insert(item.code).second) {
        selected.push_back({item.code, item.duration, record->r(8, v)});
      }
    }
  }
  // The three text columns of an item; false when one of its records is absent.
  const auto columns = [&](TextView code, Text& row) {
    if (homeHelp) {
      const NorvikRecord* task = read.record(u"TACHE", code);
      if (task == nullptr) return false;
      const NorvikRecord* group = read.record(u"GROUPETACHE", task->r(2));
      if (group == nullptr) return false;
      rows::appendTextColumn(row, group->r(2));
      rows::appendTextColumn(row, task->r(2));
      rows::appendTextColumn(row, code);
      return true;
    }
    const NorvikRecord* act = read.record(u"SSIADSOINS", code);
    const NorvikRecord* type = read.record(u"SSIADTYPESOINS", code.substr(0, 4));
    const NorvikRecord* regroupment = read.record(u"SSIADREGROUPSOINS", code.substr(0, 2));
    if (act == nullptr || type == nullptr || regroupment == nullptr) return false;
    rows::appendTextColumn(row, regroupment->r(1));
    rows::appendTextColumn(row, type->r(1));
    rows::appendTextColumn(row, act->r(1));
    return true;
  };
  TemplateRows out;
  for (const Item& item : proposed) {
    Text row;
    if (!columns(item.code, row)) continue;
    rows::appendProposalDuration(row, item.duration);
    row += u"  ";
    row += item.end;
    out.possible.emplace_back(std::move(row), Text(item.code));
  }
  for (const Item& item : selected) {
    Text row;
    if (!columns(item.code, row)) continue;
    row += rows::selectionMarkerAndDuration(!item.end.empty(), item.duration);
    out.selection.emplace_back(std::move(row), Text(item.code));
  }
  std::sort(out.possible.begin(), out.possible.end(), proposalLess);
  std::sort(out.selection.begin(), out.selection.end());
  return out;
}

void runTemplateFloor(benchmark::State& state, const std::string& name,
                      const InitArguments& arguments) {
  const StoreCalls calls = distinctCalls(callsOf(name));
  const bool homeHelp = arguments.TypeAct == u"AUTRE";
  {
    Ctr_VelmoraNew control;
    init(control, largeAccountDatabase(), arguments);
    TemplateRows rows = templateFloor(largeAccountDatabase(), calls, homeHelp);
    checkSameRows(state, rowsOf(control.Lst_Possible, control.Lst_CodePos),
                  std::move(rows.possible));
    checkSameRows(state, rowsOf(control.Lst_Selectionne, control.Lst_CodeSelect),
                  std::move(rows.selection));
  }
  const CallCounts counts = count(calls);
  {
    const UserCpu user(state);
    for (auto _ : state) {
      benchmark::DoNotOptimize(templateFloor(largeAccountDatabase(), calls, homeHelp));
    }
  }
  state.counters["reads"] = counts.reads;
  state.counters["queries"] = counts.queries;
}

void InitCareTemplates(benchmark::State& state) {
  runInit(state, "InitCareTemplates", kCareWithTemplates);
}
void InitCareTemplatesFloor(benchmark::State& state) {
  runTemplateFloor(state, "InitCareTemplates", kCareWithTemplates);
}

void InitHomeHelpTemplates(benchmark::State& state) {
  runInit(state, "InitHomeHelpTemplates", kHomeHelpWithTemplates);
}
void InitHomeHelpTemplatesFloor(benchmark::State& state) {
  runTemplateFloor(state, "InitHomeHelpTemplates", kHomeHelpWithTemplates);
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
  const auto overrides = overridesOf(CtrInspector(control).Variable().R_TableDurees);
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
