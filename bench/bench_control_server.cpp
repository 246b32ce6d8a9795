// The control's heavy operations on the large account, on a PostgreSQL server beside the
// same on the SQLite file, in the same run: the care-catalogue Init, the show-all tick
// and one client's template query. Wall-clock time: on a server the work is shared with
// another process. The server is the URI in $VELMORA_BENCH_SERVER, else the one the PG*
// variables name (pg_virtualenv sets them); the large account is copied into it once.
//   pg_virtualenv -o fsync=off env PGHOST=/var/run/postgresql
//   build/release/bench/bench_control_server
#include <benchmark/benchmark.h>
#include <libpq-fe.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include <velmora/base/failure.h>
#include <velmora/control/ctr_velmora_new.h>
#include <velmora/store/sqlite_database.h>
#include <velmora/store/writer.h>
#include "control/inspection.h"
#include "store/engine/read_connection.h"
#include "support/interventions.h"
#include "support/large_account.h"

namespace velmora::bench {
namespace {

std::string serverUri() {
  const char* uri = std::getenv("VELMORA_BENCH_SERVER");
  return uri != nullptr ? uri : "postgresql://";
}

// The large account on the server: copied from the file in one transaction when the
// server holds no store yet.
DatabaseRef serverDatabase() {
  static const DatabaseRef database = [] {
    try {
      return openDatabase(serverUri());
    } catch (const Failure&) {
      std::fprintf(stderr, "copying the large account to %s\n", serverUri().c_str());
    }
    const auto source = store::connectToStore(largeAccount());
    Batch batch;
    for (const DictionaryItem& item : source->dictionaryItems()) batch.defineItem(item);
    for (const Text& file : source->fileNames()) {
      batch.createFile(file);
      source->scan(file, {}, {}, true, [&](auto key, auto body) {
        batch.putRecord(file, store::decodeText(key), NorvikRecord(store::decodeText(body)));
      });
    }
    StoreWriter(serverUri(), StoreWriter::Sync::Fast).apply(batch);
    return openDatabase(serverUri());
  }();
  return database;
}

DatabaseRef databaseOf(const benchmark::State& state) {
  return state.range(0) == 0 ? largeAccountDatabase() : serverDatabase();
}

void InitCareCatalogue(benchmark::State& state) {
  const DatabaseRef database = databaseOf(state);
  Ctr_VelmoraNew control;
  for (auto _ : state) init(control, database, intervention(u"SSIAD", kClientWithoutAnything));
  state.counters["proposed"] = control.Lst_Possible.ListCount();
}

void TickAllTasks(benchmark::State& state) {
  const DatabaseRef database = databaseOf(state);
  Ctr_VelmoraNew control;
  init(control, database, intervention(u"AUTRE", clientCode(5001)));
  for (auto _ : state) {
    control.Cac_TouteTache.toggle();
    state.PauseTiming();
    state.counters["proposed"] = control.Lst_Possible.ListCount();
    control.Cac_TouteTache.toggle();
    state.ResumeTiming();
  }
}

// The fixed-template query of the search, for a care client in the middle of the file.
void ClientTemplateQuery(benchmark::State& state) {
  const DatabaseRef database = databaseOf(state);
  const Text text = Text(
                        u"SSELECT TPSSEMAINETYPE AVEC CodeAideSemType = \"05000\" AND AVEC "
                        u"DateDebSemType <= \"21550\" AND AVEC 1 >= \"21512\" OR = \"\" AND "
                        u"AVEC 4 <> \"\" AND AVEC TypeActSemType = \"S\"") +
                    kAttributeMark + u"TPSSEMAINETYPE" + kAttributeMark + u"0";
  long count = 0;
  for (auto _ : state) benchmark::DoNotOptimize(database->RunQuery(text, u"", count));
  state.counters["rows"] = static_cast<double>(count);
}

// The floor of anything on the server: one round trip of a prepared statement that reads
// nothing, on the benchmark's own session.
void ServerRoundTrip(benchmark::State& state) {
  const std::unique_ptr<PGconn, decltype(&PQfinish)> session(PQconnectdb(serverUri().c_str()),
                                                             &PQfinish);
  PQclear(PQprepare(session.get(), "nothing", "SELECT 1", 0, nullptr));
  for (auto _ : state) {
    PQclear(PQexecPrepared(session.get(), "nothing", 0, nullptr, nullptr, nullptr, 1));
  }
}
BENCHMARK(ServerRoundTrip)->Unit(benchmark::kMicrosecond)->UseRealTime();

// Argument 0: the SQLite file; 1: the server. Real time: the server's work is done in
// its own processes, which the processor time of this one does not count.
BENCHMARK(InitCareCatalogue)
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->MinTime(4)
    ->UseRealTime();
BENCHMARK(TickAllTasks)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->MinTime(2)->UseRealTime();
BENCHMARK(ClientTemplateQuery)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond)->UseRealTime();

}  // namespace
}  // namespace velmora::bench

int main(int argc, char** argv) {
  using namespace velmora::bench;
  largeAccountDatabase();  // builds the large account, and copies it, before any timing
  serverDatabase();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
