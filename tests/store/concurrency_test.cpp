// Readers in threads read the store while a writer imports and deletes in a loop: each
// procedure (one snapshot) and each query on its own sees one committed state, whole, and
// the readers write nothing. On a file, and on a server under VELMORA_TEST_STORE=postgresql.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <velmora/base/failure.h>
#include <velmora/store/sqlite_database.h>
#include "support/account.h"

namespace velmora::testing {
namespace {

constexpr int kRecords = 40;

Text keyOf(int i) {
  return fromUtf8((i < 10 ? "R0" : "R") + std::to_string(i));
}

// Round g of the writer: every record tagged g; on odd rounds the second half deleted.
Batch round(int g) {
  Batch batch;
  for (int i = 0; i < kRecords; ++i) {
    if (g % 2 == 1 && i >= kRecords / 2) {
      batch.deleteRecord(u"TACHE", keyOf(i));
    } else {
      batch.putRecord(u"TACHE", keyOf(i), makeRecord({{std::to_string(g)}, {"x"}}));
    }
  }
  return batch;
}

// The round that a query, or a procedure (one snapshot: the query, then each record read
// on its own, more than a backend reads before it reads ahead), saw whole; throws on a mix.
int seenRound(NorvikDatabase& db, bool procedure) {
  const auto snapshot = procedure ? db.holdSnapshot() : nullptr;
  long count = 0;
  const auto answer = db.RunQuery(u"SSELECT TACHE\uF8FETACHE\uF8FE0 1", u"", count);
  const int g = std::stoi(toUtf8(answer->r(1, 2)));
  const int alive = g % 2 == 1 ? kRecords / 2 : kRecords;
  const auto file = db.OpenFile(u"TACHE");
  for (int i = 0; i < kRecords; ++i) {
    const Text expected = i < alive ? fromUtf8(std::to_string(g)) : Text();
    Text read = expected;
    try {
      if (procedure) read = file->ReadRecord(keyOf(i))->r(1);
    } catch (const Failure& failure) {
      if (failure.number() != errors::kRecordNotFound) throw;
      read.clear();
    }
    if (count != alive || answer->r(i + 1, 2) != expected || read != expected) {
      throw std::runtime_error("round " + std::to_string(g) + " mixed: " + toUtf8(answer->r()));
    }
  }
  return g;
}

TEST(Concurrency, ReadersSeeWholeCommittedRoundsWhileAWriterImportsAndDeletes) {
  TempAccount account;
  account.apply(round(0));
  StoreWriter writer(account.path(), StoreWriter::Sync::Fast);
  std::atomic<bool> stop{false};
  constexpr int kReaders = 3;
  std::vector<std::string> wrong(kReaders);
  std::vector<std::set<int>> rounds(kReaders);
  std::vector<std::thread> readers;
  for (int r = 0; r < kReaders; ++r) {
    readers.emplace_back([&, r] {
      try {
        DatabaseRef db = openDatabase(account.path());
        while (!stop) rounds[r].insert({seenRound(*db, true), seenRound(*db, false)});
      } catch (const std::exception& e) {
        wrong[r] = e.what();
      }
    });
  }
  int last = 0;
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(1500);
  while (std::chrono::steady_clock::now() < end) writer.apply(round(++last));
  stop = true;
  std::set<int> all;
  for (int r = 0; r < kReaders; ++r) {
    readers[r].join();
    EXPECT_EQ(wrong[r], "") << "reader " << r;
    all.insert(rounds[r].begin(), rounds[r].end());
  }
  EXPECT_GE(all.size(), 2U) << "the readers saw the writer's rounds go by";
  // Nothing the readers did changed the store: it holds the writer's last round.
  DatabaseRef db = account.open();
  EXPECT_EQ(seenRound(*db, true), last);
}

}  // namespace
}  // namespace velmora::testing
