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

std::string keyOf(int i) {
  return (i < 10 ? "R0" : "R") + std::to_string(i);
}

// Round g of the writer: every record tagged g; on odd rounds the second half deleted.
Batch round(int g) {
  Batch batch;
  for (int i = 0; i < kRecords; ++i) {
    if (g % 2 == 1 && i >= kRecords / 2) {
      batch.deleteRecord(u"TACHE", fromUtf8(keyOf(i)));
    } else {
      batch.putRecord(u"TACHE", fromUtf8(keyOf(i)), makeRecord({{std::to_string(g)}, {"x"}}));
    }
  }
  return batch;
}

// The round a query's hits (key, tag) all belong to; throws what is wrong.
int queriedRound(NorvikDatabase& db) {
  long count = 0;
  const auto answer = db.RunQuery(u"SSELECT TACHE\uF8FETACHE\uF8FE0 1", u"", count);
  std::set<std::string> tags;
  for (const auto& hit : answer->attributes()) tags.insert(toUtf8(hit.at(1)));
  if (tags.size() != 1) throw std::runtime_error("query mixes rounds: " + toUtf8(answer->r()));
  const int g = std::stoi(*tags.begin());
  if (count != (g % 2 == 1 ? kRecords / 2 : kRecords)) {
    throw std::runtime_error("round " + std::to_string(g) + " with " + std::to_string(count));
  }
  return g;
}

// A procedure: one snapshot, a query then each record read on its own (more than a
// backend reads alone before it reads ahead), all of one round.
int procedure(NorvikDatabase& db) {
  const auto snapshot = db.holdSnapshot();
  const int g = queriedRound(db);
  const auto file = db.OpenFile(u"TACHE");
  for (int i = 0; i < kRecords; ++i) {
    const bool deleted = g % 2 == 1 && i >= kRecords / 2;
    try {
      const std::string tag = toUtf8(file->ReadRecord(fromUtf8(keyOf(i)))->r(1));
      if (deleted || tag != std::to_string(g)) throw std::runtime_error("another round read");
    } catch (const Failure& failure) {
      if (failure.number() != errors::kRecordNotFound || !deleted) throw;
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
        while (!stop) rounds[r].insert({procedure(*db), queriedRound(*db)});
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
  EXPECT_EQ(procedure(*db), last);
}

}  // namespace
}  // namespace velmora::testing
