// Proposals replayed by the tool in processes, from two threads, while a writer renames
// every task type back and forth in one batch: each is one committed state's, never a mix.
// On a file, and on a server under VELMORA_TEST_STORE=postgresql.
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <velmora/store/exchange.h>
#include "cli/run_velmora.h"
#include "support/account.h"

namespace velmora::cli_test {
namespace {

// The sample account's task groups, with their type as it is, or renamed.
Batch groups(const Batch& sample, bool renamed) {
  Batch batch;
  for (const auto& change : sample.changes()) {
    const auto* put = std::get_if<Batch::PutRecord>(&change);
    if (put == nullptr || put->file != u"GROUPETACHE") continue;
    NorvikRecord record(put->body);
    if (renamed) record.set(2, record.r(2) + u" bis");
    batch.putRecord(put->file, put->key, record);
  }
  return batch;
}

TEST(ConcurrentProposals, EachIsTheProposalOfOneCommittedState) {
  testing::TempAccount account;
  Batch sample;
  for (const char* name : {"10-soins", "20-taches", "30-clients", "40-semaines", "60-param"}) {
    const std::string path = std::string(VELMORA_SAMPLE_DIR) + "/" + name + ".jsonl";
    std::ifstream in(path, std::ios::binary);
    sample.append(readExchange(in, path));
  }
  account.apply(sample);
  const Batch asIs = groups(sample, false);
  const Batch renamed = groups(sample, true);
  ASSERT_GT(asIs.size(), 0U);

  const std::vector<std::string> propose = {"propose", "--db", account.path(), "--client", "00001"};
  const std::string before = runVelmora(propose, account.directory()).out;
  account.apply(renamed);
  const std::string after = runVelmora(propose, account.directory()).out;
  ASSERT_NE(before, after);
  ASSERT_NE(after.find(" bis"), std::string::npos);

  std::atomic<int> runs{0};
  std::atomic<bool> stop{false};
  std::vector<std::string> wrong(2);
  std::vector<std::thread> planners;
  planners.reserve(2);
  for (int p = 0; p < 2; ++p) {
    planners.emplace_back([&, p] {
      const auto dir = std::filesystem::path(account.directory()) / ("planner" + std::to_string(p));
      std::filesystem::create_directory(dir);
      while (!stop) {
        const Outcome o = runVelmora(propose, dir);
        if (o.status != 0 || (o.out != before && o.out != after)) {
          wrong[p] = o.out + o.err;
          return;
        }
        ++runs;
      }
    });
  }
  bool isRenamed = true;
  while (runs < 8 && wrong[0].empty() && wrong[1].empty()) {
    account.apply(isRenamed ? asIs : renamed);
    isRenamed = !isRenamed;
  }
  stop = true;
  for (auto& planner : planners) planner.join();
  EXPECT_EQ(wrong[0], "");
  EXPECT_EQ(wrong[1], "");
  // The planners wrote nothing: the store gives the last committed state's proposal.
  EXPECT_EQ(runVelmora(propose, account.directory()).out, isRenamed ? after : before);
}

}  // namespace
}  // namespace velmora::cli_test
