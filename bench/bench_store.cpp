// The store's hot operations on the large account, each beside the same work written
// directly in SQL, so that the summary shows what the store's layers cost.
#include <benchmark/benchmark.h>

#include <vector>

#include <velmora/store/database.h>
#include <velmora/store/sqlite_database.h>
#include "support/large_account.h"
#include "support/sql_floor.h"
#include "support/summary.h"

namespace velmora::bench {
namespace {

// 23/11/2026 and 31/12/2026 as internal dates.
constexpr const char16_t* kFirstDay = u"21512";
constexpr const char16_t* kLastDay = u"21550";

Text request(TextView query, TextView file, TextView columns) {
  return Text(query) + kAttributeMark + Text(file) + kAttributeMark + Text(columns);
}

struct Account {
  std::string path = largeAccount();
  DatabaseRef database = openDatabase(path);
  SqlFloor floor{path};
  std::vector<Text> actKeys = floor.keys(u"SSIADSOINS");
};

Account& account() {
  static Account shared;
  return shared;
}

void StoreCatalogueQuery(benchmark::State& state) {
  const Text text = request(u"SSELECT SSIADSOINS PAR 1", u"SSIADSOINS", u"0 1 4");
  long count = 0;
  int rows = 0;
  for (auto _ : state) {
    const RecordRef answer = account().database->RunQuery(text, u"", count);
    rows = answer->DCount();
    benchmark::DoNotOptimize(answer);
  }
  state.counters["rows"] = rows;
}
BENCHMARK(StoreCatalogueQuery)->Unit(benchmark::kMillisecond);

void SqlCatalogueQuery(benchmark::State& state) {
  int rows = 0;
  for (auto _ : state) {
    const NorvikRecord answer = account().floor.sortedColumns(u"SSIADSOINS", 1, 4);
    rows = answer.DCount();
    benchmark::DoNotOptimize(answer);
  }
  state.counters["rows"] = rows;
}
BENCHMARK(SqlCatalogueQuery)->Unit(benchmark::kMillisecond);

void StoreReadRecordLoop(benchmark::State& state) {
  const FileRef file = account().database->OpenFile(u"SSIADSOINS");
  for (auto _ : state) {
    for (const Text& key : account().actKeys) {
      const RecordRef record = file->ReadRecord(key);
      benchmark::DoNotOptimize(record);
    }
  }
  state.counters["reads"] = static_cast<double>(account().actKeys.size());
}
BENCHMARK(StoreReadRecordLoop)->Unit(benchmark::kMillisecond);

void SqlReadRecordLoop(benchmark::State& state) {
  for (auto _ : state) {
    for (const Text& key : account().actKeys) {
      const auto record = account().floor.read(u"SSIADSOINS", key);
      benchmark::DoNotOptimize(record);
    }
  }
  state.counters["reads"] = static_cast<double>(account().actKeys.size());
}
BENCHMARK(SqlReadRecordLoop)->Unit(benchmark::kMillisecond);

// The fixed-template query of the search, for a care client in the middle of the file.
const Text kClient = u"05000";

Text clientTemplateRequest() {
  return request(u"SSELECT TPSSEMAINETYPE AVEC CodeAideSemType = \"" + kClient +
                     u"\" AND AVEC DateDebSemType <= \"" + kLastDay + u"\" AND AVEC 1 >= \"" +
                     kFirstDay + u"\" OR = \"\" AND AVEC 4 <> \"\" AND AVEC TypeActSemType = \"S\"",
                 u"TPSSEMAINETYPE", u"0");
}

void StoreClientTemplateQuery(benchmark::State& state) {
  const Text text = clientTemplateRequest();
  long count = 0;
  int rows = 0;
  const StoreStatistics before = statistics(account().database);
  {
    const UserCpu user(state);
    for (auto _ : state) {
      const RecordRef answer = account().database->RunQuery(text, u"", count);
      rows = answer->DCount();
      benchmark::DoNotOptimize(answer);
    }
  }
  const StoreStatistics after = statistics(account().database);
  state.counters["rows"] = rows;
  state.counters["decoded/query"] =
      static_cast<double>(after.decodedRecords - before.decodedRecords) /
      static_cast<double>(state.iterations());
}
BENCHMARK(StoreClientTemplateQuery)->Unit(benchmark::kMicrosecond);

void SqlClientTemplateQuery(benchmark::State& state) {
  long count = 0;
  const RecordRef store = account().database->RunQuery(clientTemplateRequest(), u"", count);
  if (account().floor.clientTemplates(u"TPSSEMAINETYPE", kClient, kFirstDay, kLastDay, true).r() !=
      store->r()) {
    state.SkipWithError("the lookup's answer differs from the store's");
    return;
  }
  int rows = 0;
  const UserCpu user(state);
  for (auto _ : state) {
    const NorvikRecord answer =
        account().floor.clientTemplates(u"TPSSEMAINETYPE", kClient, kFirstDay, kLastDay, true);
    rows = answer.DCount();
    benchmark::DoNotOptimize(answer);
  }
  state.counters["rows"] = rows;
}
BENCHMARK(SqlClientTemplateQuery)->Unit(benchmark::kMicrosecond);

// Opening the control's connection, as a host does before each Init that follows
// Vider_liste; the floor is SQLite's own open with one statement.
void StoreOpenDatabase(benchmark::State& state) {
  for (auto _ : state) {
    const DatabaseRef database = openDatabase(account().path);
    benchmark::DoNotOptimize(database);
  }
}
BENCHMARK(StoreOpenDatabase)->Unit(benchmark::kMillisecond);

void SqlOpenDatabase(benchmark::State& state) {
  for (auto _ : state) {
    SqlFloor floor(account().path);
    benchmark::DoNotOptimize(floor);
  }
}
BENCHMARK(SqlOpenDatabase)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace velmora::bench

int main(int argc, char** argv) {
  using velmora::bench::RatioGoal;
  using velmora::bench::TimeGoal;
  velmora::bench::account();  // builds the large account before any timing
  return velmora::bench::runWithSummary(
      argc, argv,
      {RatioGoal{"StoreCatalogueQuery", "SqlCatalogueQuery", 2.0},
       RatioGoal{"StoreReadRecordLoop", "SqlReadRecordLoop", 2.0},
       // Both are mostly the lock calls of one read transaction: user time shows the rest.
       RatioGoal{"StoreClientTemplateQuery", "SqlClientTemplateQuery", 1.5, true},
       RatioGoal{"StoreOpenDatabase", "SqlOpenDatabase", 2.0}},
      {TimeGoal{"StoreClientTemplateQuery", 0.2e-3}});
}
