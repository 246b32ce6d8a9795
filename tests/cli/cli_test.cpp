// The velmora tool, run as a user runs it, on temporary files.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "cli/run_velmora.h"
#include "support/account.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using cli_test::Outcome;
using cli_test::runVelmora;
using cli_test::shellWord;
using cli_test::slurp;

void spit(const fs::path& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary);
  out << text;
}

class Cli : public ::testing::Test {
 protected:
  Outcome run(const std::vector<std::string>& args) { return runVelmora(args, dir()); }

  fs::path dir() const { return account_.directory(); }
  std::string db() const { return account_.path(); }

  // A small sample directory of exchange files.
  fs::path sampleDir() {
    const fs::path d = dir() / "sample";
    fs::create_directories(d);
    spit(d / "10-files.jsonl",
         "# files\n{\"file\":\"TACHE\"}\n{\"file\":\"GROUPETACHE\"}\n"
         "{\"dictionary\":\"TACHE\",\"name\":\"Groupe\",\"attribute\":2}\n");
    spit(d / "20-records.jsonl",
         "{\"file\":\"TACHE\",\"key\":\"Vitres\",\"record\":[\"1\",\"G-VITRES\",\"\",\"N\",\"45\"]}"
         "\n"
         "{\"file\":\"TACHE\",\"key\":\"Repassage\",\"record\":[\"1\",\"G-LINGE\",\"\",\"N\","
         "\"30\"]}\n"
         "{\"file\":\"TACHE\",\"key\":\"Aspirateur\",\"record\":[\"2\",[\"G-SOL\",\"G-MAISON\"],"
         "\"\",\"O\",\"5\"]}\n");
    spit(d / "notes.txt", "not an exchange file, ignored\n");
    return d;
  }

  testing::TempAccount account_;
};

TEST_F(Cli, HelpAtTheTopAndOnEveryCommand) {
  const auto top = run({"--help"});
  EXPECT_EQ(top.status, 0);
  for (const char* name : {"sample", "import", "export", "query", "get"}) {
    EXPECT_NE(top.out.find(std::string("  ") + name + " "), std::string::npos) << name;
    const auto help = run({name, "--help"});
    EXPECT_EQ(help.status, 0) << name;
    EXPECT_EQ(help.out.rfind(std::string("usage: velmora ") + name, 0), 0u) << help.out;
  }
  const auto none = run({});
  EXPECT_EQ(none.status, 2);
  EXPECT_NE(none.err.find("usage: velmora"), std::string::npos);
}

TEST_F(Cli, UsageMistakesExitTwoWithAMessage) {
  const auto unknown = run({"frobnicate"});
  EXPECT_EQ(unknown.status, 2);
  EXPECT_EQ(unknown.err.rfind("velmora: unknown command \"frobnicate\"", 0), 0u) << unknown.err;
  const auto noDb = run({"get", "TACHE", "x"});
  EXPECT_EQ(noDb.status, 2);
  EXPECT_EQ(noDb.err.rfind("velmora: get: --db PATH is required", 0), 0u) << noDb.err;
  const auto extra = run({"get", "--db", db(), "TACHE", "x", "y"});
  EXPECT_EQ(extra.status, 2);
  EXPECT_NE(extra.err.find("unexpected argument \"y\""), std::string::npos) << extra.err;
  const auto badOption = run({"export", "--db", db(), "--colour", "red"});
  EXPECT_EQ(badOption.status, 2);
  EXPECT_NE(badOption.err.find("unknown option --colour"), std::string::npos) << badOption.err;
}

TEST_F(Cli, SampleBuildsFromTheFilesInNameOrderAndQueryPrintsAnAlignedTable) {
  const std::string target = (dir() / "sample.db").string();
  const auto built = run({"sample", "--db", target, "--from", sampleDir().string()});
  ASSERT_EQ(built.status, 0) << built.err;
  const auto q = run({"query", "--db", target, "SSELECT TACHE PAR 2", "--columns", "0 2 5"});
  EXPECT_EQ(q.status, 0) << q.err;
  EXPECT_EQ(q.out,
            "Repassage   G-LINGE           30\n"
            "Aspirateur  G-SOL | G-MAISON  5\n"
            "Vitres      G-VITRES          45\n");
  const auto named = run({"query", "--db", target, "SSELECT TACHE AVEC Groupe = \"G-SOL\""});
  EXPECT_EQ(named.out, "Aspirateur\n");
  const auto none = run({"query", "--db", target, "SSELECT TACHE AVEC 0 = \"Z]\""});
  EXPECT_EQ(none.status, 0);
  EXPECT_EQ(none.out, "");
}

TEST_F(Cli, SampleReplacesTheDatabaseWholeOrNotAtAll) {
  const std::string target = (dir() / "sample.db").string();
  {
    testing::TempAccount other;
    other.put("TACHE", "Ancienne", {{"old"}});
    fs::copy_file(other.path(), target);
  }
  ASSERT_EQ(run({"sample", "--db", target, "--from", sampleDir().string()}).status, 0);
  EXPECT_EQ(run({"get", "--db", target, "TACHE", "Ancienne"}).status, 1);
  const std::string good = slurp(target);

  spit(sampleDir() / "30-bad.jsonl", "{\"file\":\"TACHE\",\"key\":\"x\",\"record\":[\n");
  const auto bad = run({"sample", "--db", target, "--from", sampleDir().string()});
  EXPECT_EQ(bad.status, 1);
  EXPECT_EQ(bad.err.rfind("velmora: ", 0), 0u) << bad.err;
  EXPECT_NE(bad.err.find("30-bad.jsonl:1:"), std::string::npos) << bad.err;
  EXPECT_EQ(slurp(target), good);
  EXPECT_FALSE(fs::exists(target + ".building"));
}

TEST_F(Cli, GetPrintsOneAttributePerLine) {
  account_.put("TPSSEMAINETYPE", "0001221500108501A",
               {{""}, {"1000"}, {"A"}, {"T1", "T2"}, {"30", "15"}, {""}, {""}, {"", "Sonner"}});
  const auto got = run({"get", "--db", db(), "TPSSEMAINETYPE", "0001221500108501A"});
  EXPECT_EQ(got.status, 0) << got.err;
  EXPECT_EQ(got.out, "\n1000\nA\nT1 | T2\n30 | 15\n\n\n | Sonner\n");
  const auto missing = run({"get", "--db", db(), "TPSSEMAINETYPE", "nope"});
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.err.rfind("velmora: record not found", 0), 0u) << missing.err;
  EXPECT_NE(missing.err.find("nope"), std::string::npos);
  EXPECT_EQ(missing.out, "");
}

TEST_F(Cli, ImportIsAllOrNothingAndExportRoundTrips) {
  const fs::path good = dir() / "good.jsonl";
  spit(good,
       "{\"file\":\"TACHE\",\"key\":\"Vitres\",\"record\":[\"1\",\"G-VITRES\"]}\n"
       "{\"file\":\"TACHE\",\"key\":\"Été\",\"record\":[[\"a\",\"b\"]]}\n");
  const auto imported = run({"import", good.string(), "--db", db()});
  ASSERT_EQ(imported.status, 0) << imported.err;
  EXPECT_EQ(run({"get", "--db", db(), "TACHE", "Été"}).out, "a | b\n");

  const auto before = run({"export", "--db", db()});
  ASSERT_EQ(before.status, 0);
  const fs::path bad = dir() / "bad.jsonl";
  spit(bad,
       "{\"file\":\"TACHE\",\"key\":\"New\",\"record\":[\"1\"]}\n"
       "{\"file\":\"TACHE\",\"key\":\"Vitres\",\"record\":[\"changed\"]}\n"
       "{\"file\":\"TACHE\",\"key\":\"Cut\",\"rec");
  const auto refused = run({"import", bad.string(), "--db", db()});
  EXPECT_EQ(refused.status, 1);
  EXPECT_EQ(refused.err.rfind("velmora: " + bad.string() + ":3: ", 0), 0u) << refused.err;
  EXPECT_EQ(run({"export", "--db", db()}).out, before.out);

  const fs::path file = dir() / "export.jsonl";
  ASSERT_EQ(run({"export", "--db", db(), file.string()}).status, 0);
  EXPECT_EQ(slurp(file), before.out);
  const std::string copy = (dir() / "copy.db").string();
  ASSERT_EQ(run({"import", file.string(), "--db", copy}).status, 0);
  EXPECT_EQ(run({"export", "--db", copy}).out, before.out);
}

// An export never harms a file it does not replace whole: not the database itself (also
// through a link), not an existing file when the export fails, and it leaves no temporary.
TEST_F(Cli, ExportReplacesItsFileOnlyWhenWholeAndNeverTheDatabase) {
  account_.put("TACHE", "Vitres", {{"1"}});
  const std::string store = slurp(db());
  const fs::path link = dir() / "link.db";
  fs::create_symlink(db(), link);
  const fs::path kept = dir() / "kept.jsonl";
  spit(kept, "precious\n");
  const fs::path garbage = dir() / "garbage.db";
  spit(garbage, std::string(3000, 'Z'));
  struct Case {
    std::vector<std::string> args;
    int status;
    const char* message;
  };
  for (const Case& c : std::vector<Case>{
           {{"export", "--db", db(), db()}, 2, "is the database itself"},
           {{"export", "--db", db(), link.string()}, 2, "is the database itself"},
           {{"export", "--db", db(), dir().string()}, 2, "is a folder"},
           {{"export", "--db", garbage.string(), kept.string()}, 1, "garbage.db"},
       }) {
    const auto outcome = run(c.args);
    EXPECT_EQ(outcome.status, c.status) << c.args.back();
    EXPECT_NE(outcome.err.find(c.message), std::string::npos) << outcome.err;
  }
  EXPECT_EQ(slurp(db()), store);
  EXPECT_EQ(slurp(kept), "precious\n");
  EXPECT_EQ(run({"get", "--db", link.string(), "TACHE", "Vitres"}).out, "1\n");
  ASSERT_EQ(run({"export", "--db", db(), kept.string()}).status, 0);
  EXPECT_NE(slurp(kept).find("Vitres"), std::string::npos);
  for (const auto& entry : fs::directory_iterator(dir())) {
    EXPECT_NE(entry.path().filename().string().front(), '.') << entry.path();
  }
}

TEST_F(Cli, ImportOfABadFileCreatesNoDatabase) {
  const fs::path bad = dir() / "bad.jsonl";
  spit(bad, "{\"file\":\"T\",\"key\":\"a\",\"record\":[1]}\n");
  const std::string target = (dir() / "fresh.db").string();
  const auto refused = run({"import", bad.string(), "--db", target});
  EXPECT_EQ(refused.status, 1);
  EXPECT_FALSE(fs::exists(target));
}

TEST_F(Cli, StoreFailuresExitOneWithTheStoresMessage) {
  const auto badQuery = run({"query", "--db", db(), "SSELECT TACHE AVEC 1 \"x\""});
  EXPECT_EQ(badQuery.status, 1);
  EXPECT_EQ(badQuery.err.rfind("velmora: query: at 22: expected an operator", 0), 0u)
      << badQuery.err;
  const auto unknownFile = run({"query", "--db", db(), "SSELECT NOSUCH"});
  EXPECT_EQ(unknownFile.status, 1);
  EXPECT_NE(unknownFile.err.find("NOSUCH"), std::string::npos);

  const std::string garbage = (dir() / "garbage.db").string();
  spit(garbage, std::string(3000, '\x5A'));
  for (const auto& args : std::vector<std::vector<std::string>>{
           {"query", "--db", garbage, "SSELECT TACHE"},
           {"get", "--db", garbage, "TACHE", "x"},
           {"export", "--db", garbage},
           {"import", (dir() / "none.jsonl").string(), "--db", garbage}}) {
    const auto failed = run(args);
    EXPECT_EQ(failed.status, 1) << args.front();
    EXPECT_EQ(failed.err.rfind("velmora: ", 0), 0u) << failed.err;
  }
  EXPECT_EQ(slurp(garbage), std::string(3000, '\x5A'));
}

}  // namespace
}  // namespace velmora
