// velmora propose and velmora consult, run as a user runs them, on a small account made
// for them: one home-help client with a Monday template of two tasks.

#include <atomic>
#include <thread>
#include <tuple>
#include <variant>

#include <velmora/store/exchange.h>

#include "cli/run_velmora.h"
#include "support/rows.h"

namespace velmora {
namespace {

using cli_test::Outcome;
using testing::col;
using testing::right;

class Propose : public cli_test::Tool {
 protected:
  void SetUp() override {
    account.put("BESOINSAIDE", "00001", {{"Mme Test"}});
    account.put("TPSPARAM", "1", {{""}, {""}, {""}, {""}, {""}, {""}, {""}, {""}, {""}, {""},
                                  {""}, {""}, {""}, {""}, {""}, {""}, {""}, {""}, {""}, {"0"}});
    account.put("TYPETACHE", "T-LINGE", {{"1"}});
    account.put("TYPETACHE", "T-PERSONNE", {{"2"}});
    account.put("GROUPETACHE", "G-LINGE", {{"1"}, {"T-LINGE"}});
    account.put("GROUPETACHE", "G-SOINS", {{"1"}, {"T-PERSONNE"}});
    account.put("TACHE", "Repassage", {{"1"}, {"G-LINGE"}, {""}, {"N"}, {"30"}});
    account.put("TACHE", "Aide à la toilette", {{"1"}, {"G-SOINS"}, {""}, {"O"}, {"20"}});
    // Monday (day 0) from 23/11/2026, 08:30 to 10:00, open-ended, home help.
    account.put("TPSSEMAINETYPE", "00001215120085001",
                {{""},
                 {"1000"},
                 {"A"},
                 {"Aide à la toilette", "Repassage"},
                 {"25", "10000"},  // five digits: one blank before them in a row of the selection
                 {""},
                 {""},
                 {"Gants", ""}});
  }

  const std::string linge = col("T-LINGE") + col("G-LINGE") + col("Repassage");
  const std::string toilette = col("T-PERSONNE") + col("G-SOINS") + col("Aide à la toilette");
};

TEST_F(Propose, PrintsWhatThePlannerSees) {
  const auto o = run({"propose", "--db", account.path(), "--client", "00001", "--from",
                      "23/11/2026", "--time", "08:30-10:00"});
  ASSERT_EQ(o.status, 0) << o.err;
  EXPECT_EQ(o.err, "");
  const std::string expected = R"(Etq_Pos1 "Type"  Etq_Pos2 "Groupe"  Etq_Pos3 "Tâche"
Etq_Sel1 "Type"  Etq_Sel2 "Groupe"  Etq_Sel3 "Tâche"
Cac_TouteTache "Afficher toutes les tâches" value 0

Lst_Possible (2 rows), Lst_CodePos (2 codes):
  0 |)" + linge + right("10000", 7) +
                               "  |  Repassage\n  1 |" + toilette + right("25", 7) +
                               R"(  |  Aide à la toilette

Lst_Selectionne (2 rows), Lst_CodeSelect (2 codes):
  0 |)" + linge + " " + right("10000", 6) +
                               "|  Repassage\n  1 |" + toilette + "X" + right("25", 6) +
                               R"(|  Aide à la toilette  obs "Gants"

Txt_Duree "167h05"
W_Total 10025
W_AfficheTache True
Etq_Imperativite shown
)";
  EXPECT_EQ(o.out, expected);
}

// What --json gives a program, for other days, slots, kinds and templates, and for a key.
TEST_F(Propose, JsonForProgramsAndForEachCase) {
  using Json = nlohmann::json;
  const auto on = [&](const std::string& from, const std::vector<std::string>& more) {
    std::vector<std::string> args = {"propose", "--db", account.path(), "--client",    "00001",
                                     "--from",  from,   "--time",       "08:30-10:00", "--json"};
    args.insert(args.end(), more.begin(), more.end());
    return args;
  };
  const std::string key = "00001215120085001SEMTYPE";
  const std::vector<std::tuple<std::vector<std::string>, const char*, Json>> cases{
      {on("2026-11-23", {"--days", "1000000"}), "/captions/Etq_Sel3", "Tâche"},
      // Tuesday: the template is proposed all the same.
      {on("24/11/2026", {}), "/Lst_CodePos", Json{"Repassage", "Aide à la toilette"}},
      {on("23/11/2026", {"--floating"}), "/W_AfficheTache", false},
      {on("23/11/2026", {"--kind", "SSIAD"}), "/captions/Cac_TouteTache",
       "Afficher tous les soins"},
      {{"consult", "--db", account.path(), "--key", key, "--json"},
       "/Lst_Selectionne",
       Json{linge + " " + right("10000", 6), toilette + "X" + right("25", 6)}},
  };
  for (const auto& [args, field, expected] : cases) {
    SCOPED_TRACE(std::string(field) + " of " + args[args.size() - 2]);
    const auto o = run(args);
    ASSERT_EQ(o.status, 0) << o.err;
    EXPECT_EQ(Json::parse(o.out).at(Json::json_pointer(field)), expected);
  }
}

// Proposals replayed by the tool in processes, from two threads, while a writer renames
// every task type back and forth in one batch: each is one committed state's, never a mix.
// On the sample account, on a file and on a server under VELMORA_TEST_STORE=postgresql.
TEST(ConcurrentProposals, EachIsTheProposalOfOneCommittedState) {
  testing::TempAccount account;
  Batch sample;
  for (const char* name : {"10-soins", "20-taches", "30-clients", "40-semaines", "60-param"}) {
    const std::string path = std::string(VELMORA_SAMPLE_DIR) + "/" + name + ".jsonl";
    std::ifstream in(path, std::ios::binary);
    sample.append(readExchange(in, path));
  }
  account.apply(sample);
  // The task groups, with their type as it is, or renamed.
  Batch asIs;
  Batch renamed;
  for (const auto& change : sample.changes()) {
    const auto* put = std::get_if<Batch::PutRecord>(&change);
    if (put == nullptr || put->file != u"GROUPETACHE") continue;
    asIs.putRecord(put->file, put->key, NorvikRecord(put->body));
    NorvikRecord record(put->body);
    record.set(2, record.r(2) + u" bis");
    renamed.putRecord(put->file, put->key, record);
  }
  ASSERT_GT(asIs.size(), 0U);

  const std::vector<std::string> propose = {"propose", "--db", account.path(), "--client", "00001"};
  const std::string before = cli_test::runVelmora(propose, account.directory()).out;
  account.apply(renamed);
  const std::string after = cli_test::runVelmora(propose, account.directory()).out;
  ASSERT_NE(before, after);
  ASSERT_NE(after.find(" bis"), std::string::npos);

  std::atomic<int> runs{0};
  std::atomic<bool> stop{false};
  std::vector<std::string> wrong(2);
  std::vector<std::thread> planners;
  for (int p = 0; p < 2; ++p) {
    planners.emplace_back([&, p] {
      const auto dir = std::filesystem::path(account.directory()) / ("planner" + std::to_string(p));
      std::filesystem::create_directory(dir);
      while (!stop) {
        const Outcome o = cli_test::runVelmora(propose, dir);
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
  EXPECT_EQ(cli_test::runVelmora(propose, account.directory()).out, isRenamed ? after : before);
}

}  // namespace
}  // namespace velmora
