// The velmora tool, run as a user runs it, on temporary files: what it prints, how it
// exits, and that it never harms a file it does not replace whole.
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>

#include "cli/run_velmora.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using cli_test::Outcome;
using cli_test::shell;
using cli_test::shellWord;
using cli_test::slurp;
using cli_test::spit;

class Cli : public cli_test::Tool {
 protected:
  // A small sample directory of exchange files, read in name order.
  std::string sampleDir() {
    const fs::path d = dir() / "sample";
    fs::create_directories(d);
    spit(d / "10-files.jsonl",
         "# files\n{\"file\":\"TACHE\"}\n"
         "{\"dictionary\":\"TACHE\",\"name\":\"Groupe\",\"attribute\":2}\n");
    spit(d / "20-records.jsonl",
         R"({"file":"TACHE","key":"Vitres","record":["1","G-VITRES","","N","45"]}
{"file":"TACHE","key":"Repassage","record":["1","G-LINGE","","N","30"]}
{"file":"TACHE","key":"Aspirateur","record":["2",["G-SOL","G-MAISON"],"","O","5"]}
)");
    spit(d / "notes.txt", "not an exchange file, ignored\n");
    return d.string();
  }
};

// The help and the version on the standard output, the help in the messages' language
// and starting as help2man expects.
TEST_F(Cli, HelpAndVersion) {
  for (const std::string lang : {"C.UTF-8", "fr_FR.UTF-8"}) {
    if (lang != "C.UTF-8" && !cli_test::frenchLocaleExists()) continue;  // BadInput says why
    const std::string usage = lang == "C.UTF-8" ? "Usage: velmora " : "Utilisation : velmora ";
    for (const std::string command :
         {"", "sample", "import", "export", "query", "get", "propose", "consult", "play"}) {
      auto args = command.empty() ? std::vector<std::string>{} : std::vector{command};
      args.emplace_back("--help");
      const Outcome help = run(args, lang);
      EXPECT_EQ(help.status, 0);
      EXPECT_TRUE(help.out.starts_with(usage + (command.empty() ? "COMM" : command + " ")))
          << lang << " " << command << ": " << help.out.substr(0, 80);
    }
  }
  const Outcome version = run({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.out.rfind("velmora ", 0), 0u);
}

// A store built by sample answers query and get; its export, to the standard output or a
// file, imported into a new store, exports the same again. No progress line off a terminal.
TEST_F(Cli, SampleQueryGetAndAnExportThatImportsBackTheSame) {
  const std::string target = at("sample.db");
  ASSERT_EQ(run({"sample", "--db", target, "--from", sampleDir()}).status, 0);
  const auto q = run({"query", "--db", target, "SSELECT TACHE PAR 2", "--columns", "0 2 5"});
  EXPECT_EQ(q.out,
            "Repassage   G-LINGE           30\n"
            "Aspirateur  G-SOL | G-MAISON  5\n"
            "Vitres      G-VITRES          45\n");
  EXPECT_EQ(run({"query", "--db", target, R"(SSELECT TACHE AVEC Groupe = "G-SOL")"}).out,
            "Aspirateur\n");
  EXPECT_EQ(run({"get", "--db", target, "TACHE", "Aspirateur"}).out,
            "2\nG-SOL | G-MAISON\n\nO\n5\n");
  const Outcome exported = run({"export", "--db", target});
  ASSERT_EQ(exported.status, 0) << exported.err;
  EXPECT_EQ(exported.err, "");
  ASSERT_EQ(run({"export", "--db", target, at("export.jsonl")}).status, 0);
  EXPECT_EQ(slurp(at("export.jsonl")), exported.out);
  const Outcome imported = run({"import", at("export.jsonl"), "--db", at("fresh.db")});
  ASSERT_EQ(imported.status, 0);
  EXPECT_EQ(imported.err, "");
  EXPECT_EQ(run({"export", "--db", at("fresh.db")}).out, exported.out);
}

// sample replaces a store whole or not at all: never another file, never the user's own
// files beside it, and no journal of the old store is left to be played over the new one.
TEST_F(Cli, SampleReplacesOnlyAStoreWholeAndLeavesNoJournalOfTheOldOne) {
  for (const std::string left : {"hot", "wal", "stale"}) {
    const std::string target = at(left + ".db");
    ASSERT_EQ(run({"sample", "--db", target, "--from", sampleDir()}).status, 0);
    spit(target + ".building", "le fichier de quelqu'un\n");
    if (left == "stale") {
      spit(target + "-journal", std::string(512, '\0'));  // left before anything was written
    } else {
      testing::killWriterHalfWay(target, left == "wal");
    }
    const auto built = run({"sample", "--db", target, "--from", sampleDir()});
    EXPECT_EQ(built.status, 0) << built.err;
    EXPECT_FALSE(fs::exists(target + "-journal")) << left;
    EXPECT_FALSE(fs::exists(target + "-wal")) << left;
    EXPECT_EQ(slurp(target + ".building"), "le fichier de quelqu'un\n");
    EXPECT_EQ(run({"get", "--db", target, "TACHE", "Vitres"}).out, "1\nG-VITRES\n\nN\n45\n");
  }
  // A bad exchange file leaves the old store as it was.
  const std::string target = at("hot.db");
  const std::string good = slurp(target);
  spit(fs::path(sampleDir()) / "30-bad.jsonl", "{\"file\":\"TACHE\",\"key\":\"x\",\"record\":[\n");
  const auto bad = run({"sample", "--db", target, "--from", sampleDir()});
  EXPECT_EQ(bad.status, 1);
  EXPECT_NE(bad.err.find("30-bad.jsonl:1:"), std::string::npos) << bad.err;
  EXPECT_EQ(slurp(target), good);
}

// What a command writes to is never harmed: a regular file (or the one a link names; the
// link is kept) is replaced whole, a pipe or a device is written in place, anything else
// is refused as it is.
TEST_F(Cli, EachWriteTargetIsReplacedWrittenInPlaceOrRefusedAsItIs) {
  account.put("TACHE", "Vitres", {{"1"}});
  const std::string expected = run({"export", "--db", db()}).out;
  ASSERT_NE(expected.find("Vitres"), std::string::npos);
  spit(at("kept.jsonl"), "precious\n");
  fs::create_symlink("kept.jsonl", at("link.jsonl"));
  ASSERT_EQ(mkfifo(at("fifo").c_str(), 0600), 0);

  ASSERT_EQ(run({"export", "--db", db(), at("link.jsonl")}).status, 0);
  EXPECT_TRUE(fs::is_symlink(at("link.jsonl")));
  EXPECT_EQ(slurp(at("kept.jsonl")), expected);
  EXPECT_EQ(run({"export", "--db", db(), "/dev/stdout"}).out, expected);
  EXPECT_EQ(run({"export", "--db", db(), "-"}).out, expected);
  // The pipe is read while it is written, and stays a pipe.
  EXPECT_EQ(shell("cat " + shellWord(at("fifo")) + " >" + shellWord(at("read.jsonl")) + " & " +
                  shellWord(VELMORA_CLI) + " export --db " + shellWord(db()) + " " +
                  shellWord(at("fifo")) + "; s=$?; wait; exit $s"),
            0);
  EXPECT_EQ(slurp(at("read.jsonl")), expected);
  EXPECT_TRUE(fs::is_fifo(at("fifo")));

  // A socket is neither a file nor a stream: refused, and left as it was.
  const int listening = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string socketPath = at("socket");
  ASSERT_LT(socketPath.size(), sizeof address.sun_path);
  std::copy(socketPath.begin(), socketPath.end(), address.sun_path);
  ASSERT_EQ(bind(listening, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  const auto refused = run({"export", "--db", db(), socketPath});
  close(listening);
  EXPECT_EQ(refused.status, 2);
  EXPECT_NE(refused.err.find("is a socket"), std::string::npos) << refused.err;
  EXPECT_TRUE(fs::is_socket(socketPath));

  // sample replaces the store a link names, and keeps the link.
  ASSERT_EQ(run({"sample", "--db", at("store.db"), "--from", VELMORA_SAMPLE_DIR}).status, 0);
  fs::create_symlink("store.db", at("store-link.db"));
  ASSERT_EQ(run({"sample", "--db", at("store-link.db"), "--from", VELMORA_SAMPLE_DIR}).status, 0);
  EXPECT_TRUE(fs::is_symlink(at("store-link.db")));
  EXPECT_TRUE(fs::is_regular_file(at("store.db")));

  for (const auto& entry : fs::directory_iterator(dir())) {
    EXPECT_NE(entry.path().filename().string().front(), '.') << entry.path();  // no temporary
  }
  // Devices are written into and stay devices, also through a link; a full one is
  // reported, even when the export is small enough to wait in a buffer.
  if (fs::is_character_file("/dev/full") && fs::is_character_file("/dev/null")) {
    fs::create_symlink("/dev/full", at("full-link"));
    EXPECT_EQ(run({"export", "--db", db(), "/dev/null"}).status, 0);
    const auto full = run({"export", "--db", db(), at("full-link")});
    EXPECT_EQ(full.status, 1);
    EXPECT_NE(full.err.find("cannot write to " + at("full-link") + ": No space left"),
              std::string::npos)
        << full.err;
    EXPECT_TRUE(fs::is_symlink(at("full-link")));
    for (const char* node : {"/dev/null", "/dev/full"}) EXPECT_TRUE(fs::is_character_file(node));
  } else {
    GTEST_SKIP() << "no /dev/full or /dev/null to write into";
  }
}

// A long import shows one progress line on a terminal (script's pseudo-terminal here):
// what, how far, rewritten with \r and cleared before the result; none after --quiet (nor
// through a pipe or a file: the other tests read an empty standard error). Stopped half
// way by a full disk, it says what to do and leaves the store as it was: one batch.
TEST_F(Cli, ALongImportShowsItsProgressOnATerminalAndAFullDiskLeavesTheStoreAsItWas) {
  const std::string big = at("big.jsonl");
  std::string records;
  for (int i = 0; i < 3000; ++i) {
    records += R"({"file":"TACHE","key":"B)" + std::to_string(i) + R"(","record":[")" +
               std::string(100, 'b') + "\"]}\n";
  }
  spit(big, records);
  account.put("TACHE", "Vitres", {{"1"}});
  const std::string before = slurp(db());
  EXPECT_EQ(shell("ulimit -f 200; " + shellWord(VELMORA_CLI) + " import " + shellWord(big) +
                  " --db " + shellWord(db()) + " 2>" + shellWord(at("full.txt"))),
            1);
  EXPECT_NE(slurp(at("full.txt")).find("disk full"), std::string::npos);
  EXPECT_FALSE(fs::exists(db() + "-journal"));
  EXPECT_EQ(slurp(db()), before);

  // A root without /dev/pts (a bare chroot) can give no pseudo-terminal to watch.
  if (shell("script -q -e -c true /dev/null >/dev/null 2>&1 </dev/null") != 0) {
    GTEST_SKIP() << "no pseudo-terminal here: the progress lines are not checked";
  }
  const auto onTerminal = [&](const std::string& words) {
    const std::string command = "env LANG=C.UTF-8 " + shellWord(VELMORA_CLI) + " " + words;
    EXPECT_EQ(shell("script -q -e -c " + shellWord(command) + " /dev/null >" +
                    shellWord(at("terminal.txt")) + " </dev/null"),
              0)
        << words << ": " << slurp(at("terminal.txt"));
    return slurp(at("terminal.txt"));
  };
  const std::string imported =
      onTerminal("import " + shellWord(big) + " --db " + shellWord(at("b.db")));
  EXPECT_NE(imported.find("\rreading " + big + ": "), std::string::npos) << imported;
  EXPECT_NE(imported.find("% ("), std::string::npos);
  EXPECT_NE(imported.find(" of " + std::to_string(records.size() / 1000) + " kB)"),
            std::string::npos);
  EXPECT_NE(imported.find("\rimporting 3000 lines into " + at("b.db")), std::string::npos);
  // Cleared with blanks before the result is printed at the start of the line.
  EXPECT_NE(imported.find(" \rvelmora: " + at("b.db") + ": 3000 lines imported"),
            std::string::npos);
  const std::string built =
      onTerminal("sample --db " + shellWord(at("t.db")) + " --from " + shellWord(sampleDir()));
  EXPECT_NE(built.find("\rbuilding the sample store "), std::string::npos) << built;
  EXPECT_NE(built.find(" \rvelmora: "), std::string::npos) << built;
  const std::string quiet =
      onTerminal("import " + shellWord(big) + " --db " + shellWord(at("c.db")) + " --quiet");
  EXPECT_TRUE(quiet.starts_with("velmora: " + at("c.db") + ": 3000 lines imported")) << quiet;
}

}  // namespace
}  // namespace velmora
