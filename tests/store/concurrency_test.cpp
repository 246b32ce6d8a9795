// Readers in threads and in a process of their own read the store while a writer imports
// and deletes in a loop: each procedure (one snapshot) and each query on its own sees one
// committed state, whole, and the readers write nothing. On a file, and on a server under
// VELMORA_TEST_STORE=postgresql.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <set>
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

// What one read saw: the round it belongs to, or a description of what is wrong.
struct Seen {
  int round = -1;
  std::string wrong;
};

// The hits of a query as (key, tag), checked against one committed round.
Seen checkQuery(NorvikDatabase& db) {
  long count = 0;
  const Text request = Text(u"SSELECT TACHE") + kAttributeMark + u"TACHE" + kAttributeMark + u"0 1";
  const auto answer = db.RunQuery(request, u"", count);
  std::set<std::string> tags;
  for (const auto& hit : answer->attributes()) tags.insert(toUtf8(hit.at(1)));
  if (tags.size() != 1) return {-1, "query mixes rounds: " + toUtf8(answer->r())};
  const int g = std::stoi(*tags.begin());
  const long expected = g % 2 == 1 ? kRecords / 2 : kRecords;
  if (count != expected)
    return {-1, "round " + std::to_string(g) + " with " + std::to_string(count) + " hits"};
  return {g, {}};
}

// A procedure: one snapshot, a query then each record read on its own (more than a
// backend reads alone before it reads ahead), all of one round.
Seen procedure(NorvikDatabase& db) {
  const auto snapshot = db.holdSnapshot();
  Seen seen = checkQuery(db);
  if (!seen.wrong.empty()) return seen;
  const auto file = db.OpenFile(u"TACHE");
  for (int i = 0; i < kRecords; ++i) {
    const bool deleted = seen.round % 2 == 1 && i >= kRecords / 2;
    try {
      const std::string tag = toUtf8(file->ReadRecord(fromUtf8(keyOf(i)))->r(1));
      if (deleted || tag != std::to_string(seen.round)) return {-1, "read of another round"};
    } catch (const Failure& failure) {
      if (failure.number() != errors::kRecordNotFound || !deleted) return {-1, failure.what()};
    }
  }
  return seen;
}

// Reads until stop; the rounds seen, or the first thing wrong.
Seen readUntil(const std::string& location, const std::atomic<bool>& stop, std::set<int>& rounds) {
  try {
    DatabaseRef db = openDatabase(location);
    while (!stop) {
      for (const Seen& seen : {procedure(*db), checkQuery(*db)}) {
        if (!seen.wrong.empty()) return seen;
        rounds.insert(seen.round);
      }
    }
  } catch (const Failure& failure) {
    return {-1, failure.what()};
  }
  return {};
}

TEST(Concurrency, ReadersSeeWholeCommittedRoundsWhileAWriterImportsAndDeletes) {
  TempAccount account;
  account.apply(round(0));
  StoreWriter writer(account.path(), StoreWriter::Sync::Fast);
  std::atomic<bool> stop{false};

  // A reader in a process of its own, started before any thread.
  const pid_t child = fork();
  if (child == 0) {
    std::set<int> rounds;
    std::atomic<bool> childStop{false};
    std::thread timer([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(1500));
      childStop = true;
    });
    const Seen seen = readUntil(account.path(), childStop, rounds);
    timer.join();
    _exit(seen.wrong.empty() ? 0 : 1);
  }
  ASSERT_GT(child, 0);

  constexpr int kReaders = 3;
  std::vector<Seen> results(kReaders);
  std::vector<std::set<int>> rounds(kReaders);
  std::vector<std::thread> readers;
  readers.reserve(kReaders);
  for (int r = 0; r < kReaders; ++r) {
    readers.emplace_back([&, r] { results[r] = readUntil(account.path(), stop, rounds[r]); });
  }
  int last = 0;
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(1500);
  while (std::chrono::steady_clock::now() < end) writer.apply(round(++last));
  stop = true;
  for (auto& reader : readers) reader.join();
  int status = 0;
  waitpid(child, &status, 0);

  std::set<int> all;
  for (int r = 0; r < kReaders; ++r) {
    EXPECT_EQ(results[r].wrong, "") << "reader " << r;
    all.insert(rounds[r].begin(), rounds[r].end());
  }
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the reader process failed";
  EXPECT_GE(all.size(), 2U) << "the readers saw the writer's rounds go by";
  // Nothing the readers did changed the store: it holds the writer's last round.
  DatabaseRef db = account.open();
  const Seen final = procedure(*db);
  EXPECT_EQ(final.wrong, "");
  EXPECT_EQ(final.round, last);
}

}  // namespace
}  // namespace velmora::testing
