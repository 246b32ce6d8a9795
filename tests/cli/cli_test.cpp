// The velmora tool, run as a user runs it, on temporary files.
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "cli/run_velmora.h"
#include "store/sqlite_support.h"
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

// sample replaces a store or nothing: never another file, never the user's own files
// beside it, and no journal of the old store is left to be played over the new one.
TEST_F(Cli, SampleReplacesOnlyAStoreAndLeavesNoJournalOfTheOldOne) {
  const fs::path notes = dir() / "notes.txt";
  spit(notes, "mes notes\n");
  const auto refused = run({"sample", "--db", notes.string(), "--from", sampleDir().string()});
  EXPECT_EQ(refused.status, 1);
  EXPECT_NE(refused.err.find("is not a Velmora store"), std::string::npos) << refused.err;
  EXPECT_EQ(slurp(notes), "mes notes\n");

  // A hot journal, a log, and a journal that a writer left before it wrote anything (not
  // hot, but still there).
  for (const char* left : {"hot", "wal", "stale"}) {
    const bool wal = std::string(left) == "wal";
    const std::string target = (dir() / (std::string(left) + ".db")).string();
    ASSERT_EQ(run({"sample", "--db", target, "--from", sampleDir().string()}).status, 0);
    spit(target + ".building", "le fichier de quelqu'un\n");
    if (std::string(left) == "stale") {
      spit(target + "-journal", std::string(512, '\0'));
    } else {
      testing::killWriterHalfWay(target, wal);
    }
    const auto built = run({"sample", "--db", target, "--from", sampleDir().string()});
    EXPECT_EQ(built.status, 0) << built.err;
    EXPECT_FALSE(fs::exists(target + "-journal"));
    EXPECT_FALSE(fs::exists(target + "-wal"));
    EXPECT_EQ(slurp(target + ".building"), "le fichier de quelqu'un\n");
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(target.c_str(), &db), SQLITE_OK);
    sqlite3_stmt* check = nullptr;
    sqlite3_prepare_v2(db, "PRAGMA integrity_check", -1, &check, nullptr);
    ASSERT_EQ(sqlite3_step(check), SQLITE_ROW);
    EXPECT_STREQ(reinterpret_cast<const char*>(sqlite3_column_text(check, 0)), "ok") << left;
    sqlite3_finalize(check);
    sqlite3_close(db);
    EXPECT_EQ(run({"get", "--db", target, "TACHE", "Vitres"}).out, "1\nG-VITRES\n\nN\n45\n");
  }
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

// Small mistakes get a clear message and change nothing.
TEST_F(Cli, SmallMistakesGetAClearMessage) {
  const fs::path folder = dir() / "folder";
  fs::create_directories(folder);
  const fs::path line = dir() / "line.jsonl";
  spit(line, "{\"file\":\"TACHE\",\"key\":\"x\",\"record\":[\"1\"]}\n");
  struct Case {
    std::vector<std::string> args;
    int status;
    const char* message;
  };
  for (const Case& c : std::vector<Case>{
           {{"play", "--db", db(), folder.string()}, 2, "is a folder"},
           {{"import", folder.string(), "--db", db()}, 2, "is a folder"},
           {{"import", line.string(), "--db", folder.string()}, 2, "is a folder"},
           {{"sample", "--db", ""}, 2, "--db needs a path"},
       }) {
    const auto outcome = run(c.args);
    EXPECT_EQ(outcome.status, c.status) << c.args.front();
    EXPECT_NE(outcome.err.find(c.message), std::string::npos) << outcome.err;
  }

  // One huge cell does not pad every other line to its width.
  account_.put("TACHE", std::string(10000, 'k'), {{"x"}});
  for (int i = 0; i < 50; ++i) account_.put("TACHE", "t" + std::to_string(i), {{"y"}});
  const auto table = run({"query", "--db", db(), "SSELECT TACHE", "--columns", "0 1"});
  EXPECT_EQ(table.status, 0);
  EXPECT_LT(table.out.size(), 10000u + 50 * 50);

  // Past a file-size limit (as on a full disk) the import fails, says what to do and
  // leaves the store as it was, with no journal beside it.
  const fs::path big = dir() / "big.jsonl";
  {
    std::ofstream out(big, std::ios::binary);
    for (int i = 0; i < 3000; ++i) {
      out << "{\"file\":\"TACHE\",\"key\":\"B" << i << "\",\"record\":[\"" << std::string(100, 'b')
          << "\"]}\n";
    }
  }
  const std::string before = slurp(db());
  const std::string command = "ulimit -f 200; " + shellWord(VELMORA_CLI) + " import " +
                              shellWord(big.string()) + " --db " + shellWord(db()) + " 2>" +
                              shellWord((dir() / "full.txt").string());
  const int raw = std::system(command.c_str());
  EXPECT_EQ(WEXITSTATUS(raw), 1);
  EXPECT_NE(slurp(dir() / "full.txt").find("disk full"), std::string::npos)
      << slurp(dir() / "full.txt");
  EXPECT_FALSE(fs::exists(db() + "-journal"));
  EXPECT_EQ(slurp(db()), before);
}

// How many rounds the stress tests run: a few by default, VELMORA_STRESS=100 for more.
int stressRounds(int byDefault) {
  const char* raised = std::getenv("VELMORA_STRESS");
  return raised != nullptr ? std::max(1, std::atoi(raised)) : byDefault;
}

// Imports started together into a new path: each one that says it is done has its record
// in the store; any other says why (the lock) and exits 1.
TEST_F(Cli, ImportsAtOnceIntoANewPathLoseNothingReportedDone) {
  const int imports = stressRounds(8);
  const fs::path target = dir() / "new.db";
  std::string script;
  for (int i = 0; i < imports; ++i) {
    const std::string n = std::to_string(i);
    spit(dir() / ("in" + n + ".jsonl"),
         "{\"file\":\"TACHE\",\"key\":\"K" + n + "\",\"record\":[\"" + n + "\"]}\n");
    script += "(" + shellWord(VELMORA_CLI) + " import " + shellWord((dir() / ("in" + n)).string()) +
              ".jsonl --db " + shellWord(target.string()) + " >/dev/null 2>" +
              shellWord((dir() / ("err" + n)).string()) + "; echo $? >" +
              shellWord((dir() / ("status" + n)).string()) + ") &\n";
  }
  ASSERT_EQ(std::system((script + "wait\n").c_str()), 0);
  int done = 0;
  for (int i = 0; i < imports; ++i) {
    const std::string n = std::to_string(i);
    const std::string status = slurp(dir() / ("status" + n));
    const auto got = run({"get", "--db", target.string(), "TACHE", "K" + n});
    if (status == "0\n") {
      ++done;
      EXPECT_EQ(got.out, n + "\n") << "import " << n << " said it was done: " << got.err;
    } else {
      EXPECT_EQ(status, "1\n");
      EXPECT_NE(slurp(dir() / ("err" + n)).find("verrouillée"), std::string::npos);
    }
  }
  EXPECT_GT(done, 0);
}

// A second import into a new path while the first one holds the lock: it waits, fails
// clearly and removes nothing, so the first one's work is still there once committed.
TEST_F(Cli, ASecondImportThatCannotLockFailsClearlyAndRemovesNothing) {
  const fs::path target = dir() / "new.db";
  sqlite3* first = nullptr;
  ASSERT_EQ(sqlite3_open(target.c_str(), &first), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(first, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
  store::createSchema(first, target.string());
  const fs::path line = dir() / "line.jsonl";
  spit(line, "{\"file\":\"TACHE\",\"key\":\"x\",\"record\":[\"1\"]}\n");
  const auto second = run({"import", line.string(), "--db", target.string()});
  EXPECT_EQ(second.status, 1);
  EXPECT_NE(second.err.find("verrouillée"), std::string::npos) << second.err;
  ASSERT_EQ(sqlite3_exec(first,
                         "INSERT INTO files VALUES ('TACHE'); INSERT INTO records VALUES "
                         "('TACHE', x'0041', x'0031'); COMMIT",
                         nullptr, nullptr, nullptr),
            SQLITE_OK);
  sqlite3_close(first);
  EXPECT_EQ(run({"get", "--db", target.string(), "TACHE", "A"}).out, "1\n");
}

// An import killed at a random moment leaves the store whole: all of its batch or none
// (the batch puts the same records each round, so once applied it stays so).
TEST_F(Cli, AnImportKilledAtARandomMomentLeavesTheStoreWhole) {
  const fs::path big = dir() / "big.jsonl";
  {
    std::ofstream out(big, std::ios::binary);
    for (int i = 0; i < 3000; ++i) {
      out << "{\"file\":\"TACHE\",\"key\":\"B" << i << "\",\"record\":[\"" << std::string(100, 'b')
          << "\"]}\n";
    }
  }
  account_.put("TACHE", "Vitres", {{"1"}});
  std::mt19937 random(std::random_device{}());
  const int rounds = stressRounds(4);
  for (int round = 0; round < rounds; ++round) {
    // Every other round waits for the journal, so that the kill falls inside the write.
    const bool inTheWrite = round % 2 == 1;
    const int delayMs = std::uniform_int_distribution<int>(0, inTheWrite ? 100 : 2000)(random);
    SCOPED_TRACE("killed " + std::to_string(delayMs) + " ms after " +
                 (inTheWrite ? "the journal appeared" : "the start"));
    const std::string waitForJournal = "while [ ! -e " + shellWord(db() + "-journal") +
                                       " ] && kill -0 $p 2>/dev/null; do :; done; ";
    const std::string command = shellWord(VELMORA_CLI) + " import " + shellWord(big.string()) +
                                " --db " + shellWord(db()) + " >/dev/null 2>&1 & p=$!; " +
                                (inTheWrite ? waitForJournal : "") + "sleep " +
                                std::to_string(delayMs / 1000.0) + "; kill -9 $p 2>/dev/null; wait";
    std::system(command.c_str());
    const auto vitres = run({"get", "--db", db(), "TACHE", "Vitres"});
    EXPECT_EQ(vitres.status, 0) << vitres.err;
    EXPECT_EQ(vitres.out, "1\n");
    const auto count = run({"query", "--db", db(), "SSELECT TACHE AVEC 0 = \"B]\""});
    const auto lines = std::count(count.out.begin(), count.out.end(), '\n');
    EXPECT_TRUE(lines == 0 || lines == 3000) << lines;
  }
}

TEST_F(Cli, StoreFailuresExitOneWithTheStoresMessage) {
  const auto badQuery = run({"query", "--db", db(), "SSELECT TACHE AVEC 1 \"x\""});
  EXPECT_EQ(badQuery.status, 1);
  EXPECT_EQ(badQuery.err.rfind("velmora: requête : à la position 22 : opérateur attendu", 0), 0u)
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
