// The bad-input table of the velmora tool (docs/bad-input.md), played whole on a sample
// store in English and in French: each wrong input gets its exit status and a message in
// one language that says what and where, ends as the tool promises (a pointer to --help,
// or the failure's number), quotes long input cut, and leaves the store as it was.
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <regex>
#include <string_view>

#include "cli/run_velmora.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using cli_test::frenchLocaleExists;
using cli_test::Outcome;
using cli_test::slurp;
using cli_test::spit;

// Whether a line of the tool speaks one language once what it quotes is set aside ("…"
// and « … », and the store's text after "says: " / "dit : "): no French in an English
// line, no English in a French one.
bool oneLanguage(const std::string& line, bool french) {
  static const std::regex quoted(R"("[^"]*"|«[^»]*»|(says: |dit : ).*)");
  const std::string own = " " + std::regex_replace(line, quoted, "Q") + " ";
  const auto holds = [&](std::initializer_list<std::string_view> words) {
    return std::any_of(words.begin(), words.end(),
                       [&](std::string_view w) { return own.find(w) != std::string::npos; });
  };
  if (french) {
    return !holds({" the ", " is ", " not ", " cannot ", " no ", " of ", " and ", " to ", " file ",
                   " error ", "See ", " missing", " unknown "});
  }
  return !holds({"é", "è", "à", "ê", " : ", " pas ", " est ", " une ", " le ", " la ", " de ",
                 " du ", "erreur ", "Voir "});
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// The failure's number in "velmora: error N: …" / "velmora: erreur N : …".
std::string numberOf(const std::string& line) {
  const auto start = line.find(' ', line.find("err")) + 1;
  return line.substr(start, line.find_first_not_of("-0123456789", start) - start);
}

struct Case {
  std::vector<std::string> args;  // "S" is the sample store, "W/x" a path in the work folder
  int status;
  std::string message;   // a part of the message
  std::string script{};  // when not empty, written to the last argument's file first
};

class BadInput : public cli_test::Tool {
 protected:
  std::vector<std::string> expand(const std::vector<std::string>& args) const {
    std::vector<std::string> out;
    for (const auto& a : args) {
      out.push_back(a == "S" ? at("s.db") : a.rfind("W/", 0) == 0 ? at(a.substr(2)) : a);
    }
    return out;
  }
};

TEST_F(BadInput, EachWrongInputIsNamedInOneLanguageAndLeavesTheStoreAsItWas) {
  if (testing::TempAccount::onServer()) GTEST_SKIP() << "the table is played on a store file";
  if (!frenchLocaleExists() && std::getenv("CI") == nullptr) {
    // Skipped whole rather than played in one language: generate the locale (scripts/setup
    // does: locales, then locale-gen). In CI the locale must be there: the test fails below.
    GTEST_SKIP() << "the locale fr_FR.UTF-8 is not installed, so the French half cannot run";
  }
  ASSERT_TRUE(frenchLocaleExists()) << "fr_FR.UTF-8 is missing on a CI machine: run scripts/setup";
  ASSERT_EQ(run({"sample", "--db", at("s.db")}).status, 0);
  const std::string store = slurp(at("s.db"));
  spit(at("cut.jsonl"), "{\"file\":\"TACHE\"}\n{\"file\":\"TACHE\",\"key\":\"x\",\"record\":[\n");
  spit(at("utf8.jsonl"), "{\"file\":\"TACHE\"}\n{\"file\":\"T\xff\"}\n");
  spit(at("nul.jsonl"), std::string("{\"file\":\"TACHE\"}\n{\"file\":\"TA\0\"}\n", 31));
  spit(at("big.jsonl"), "{\"dictionary\":\"TACHE\",\"name\":\"N\",\"attribute\":1e999}\n");
  spit(at("twice.jsonl"), "{\"file\":\"NEW\",\"file\":\"OTHER\"}\n");
  spit(at("number.jsonl"), "1\n");
  spit(at("extra.jsonl"), "{\"file\":\"TACHE\",\"key\":\"x\",\"record\":[\"1\"],\"more\":1}\n");
  spit(at("good.jsonl"),
       "{\"file\":\"TACHE\",\"key\":\"x\",\"record\":[\"1\"]}");  // no end of line
  spit(at("text.db"), "mes notes\n");
  spit(at("cut.db"), store.substr(0, 20000));
  const std::string longWord(100000, 'a');
  spit(at("gone.db-journal"), "journal d'une base partie\n");  // its store moved away
  fs::create_directory(at("folder"));
  ASSERT_EQ(mkfifo(at("fifo").c_str(), 0600), 0);

  const std::vector<std::string> play{"play", "--db", "S", "W/s.play"};
  const std::vector<Case> cases{
      {{}, 2, "a command is missing"},
      {{"frob"}, 2, "unknown command \"frob\""},
      {{"get", "--db", "S", "--colour", "red"}, 2, "unknown option --colour"},
      {{"get", "--db", "S"}, 2, "2 argument(s) missing"},
      {{"get", "TACHE", "x"}, 2, "--db PATH is required"},
      {{"get", "--db", "S", "TACHE", "x", "y"}, 2, "unexpected argument \"y\""},
      {{"get", "--db", "W/none.db", "TACHE", "x"}, 1, "La base " + at("none.db") + " n'existe pas"},
      {{"get", "--db", "W/no/x.db", "TACHE", "x"}, 1, "ni son dossier"},
      {{"get", "--db=/nonexistent/x.db", "TACHE", "x"}, 1, "ni son dossier"},
      {{"get", "--db", "W/folder", "TACHE", "x"}, 1, "est un dossier"},
      {{"get", "--db", "W/text.db", "TACHE", "x"}, 1, "n'est pas une base de données."},
      {{"get", "--db", "W/cut.db", "TACHE", "x"}, 1, "est endommagée."},
      {{"get", "--db", "S", "TACHE", "nope"}, 1, "TACHE has no key \"nope\""},
      {{"get", "--db", "S", "NOFILE", "x"}, 1, "unknown file \"NOFILE\""},
      {{"query", "--db", "S", R"(SSELECT TACHE AVEC 1 "x")"}, 1, "requête : à la position 22"},
      {{"import", "W/cut.jsonl", "--db", "S"}, 1, "cut.jsonl:2:37: the line ends before"},
      {{"import", "W/cut.jsonl", "--db", "W/new.db"}, 1, "the line ends before"},
      {{"import", "W/utf8.jsonl", "--db", "S"}, 1, "utf8.jsonl:2:11: byte 0xFF is not UTF-8"},
      {{"import", "W/nul.jsonl", "--db", "S"}, 1, "nul.jsonl:2:12: a NUL byte"},
      {{"import", "W/big.jsonl", "--db", "S"}, 1, "big.jsonl:1: a number is too large"},
      {{"import", "W/twice.jsonl", "--db", "S"}, 1, "1: the member \"file\" is given twice"},
      {{"import", "W/number.jsonl", "--db", "S"}, 1, "number.jsonl:1: expected one JSON object"},
      {{"import", "W/extra.jsonl", "--db", "S"}, 1, "unexpected member \"more\""},
      {{"import", "S", "--db", "S"}, 2, "is the database itself"},
      {{"import", "W/cut.db", "--db", "S"}, 1, "is an SQLite database, not an exchange file"},
      {{"import", "W/folder", "--db", "S"}, 2, "is a folder: give the exchange file"},
      {{"import", "W/none.jsonl", "--db", "S"}, 1, "cannot be read: No such file"},
      {{"import", "W/good.jsonl", "--db", "W/no/x.db"}, 1, "check that its folder exists"},
      {{"import", "W/good.jsonl", "--db", "W/fifo"}, 2, "is a named pipe"},
      {{"import", "W/good.jsonl", "--db", "W/cut.db"}, 1, "est endommagée."},
      {{"export", "--db", "S", "S"}, 2, "is the database itself"},
      {{"export", "--db", "S", "W/folder"}, 2, "is a folder"},
      {{"export", "--db", "S", "W/a.jsonl", "W/b.jsonl"}, 2, "unexpected argument"},
      {{"export", "--db", "S", "W/no/x.jsonl"}, 1, "cannot create a temporary file"},
      {{"export", "--db", "W/text.db", "W/out.jsonl"}, 1, "the export failed and"},
      {{"sample", "--db", "W/text.db"}, 1, "is not a Velmora store that sample may replace"},
      {{"sample", "--db", "W/cut.db"}, 1, "the store says: La base"},
      {{"sample", "--db", "W/fifo"}, 2, "--db " + at("fifo") + " is a named pipe"},
      {{"sample", "--db", ""}, 2, "--db needs a path"},
      {{"sample", "--db", "W/gone.db"}, 1, "has a journal " + at("gone.db-journal") + " left"},
      {{"propose", "--db", "S", "--client", "AB"}, 2, "\"AB\" is not a client code"},
      {{"propose", "--db", "S", "--client", "0000]"}, 2, "\"0000]\" is not a client code"},
      {{"propose", "--db", "S", "--client", "ZZZZZ"}, 1, "unknown client \"ZZZZZ\""},
      {{"propose", "--db", "S"}, 2, "--client CODE is required"},
      {{"propose", "--db", "S", "--client", "00001", "--time", "aa-bb"}, 2, "not a time of day"},
      {{"propose", "--db", "S", "--client", "00001", "--time", "08:30"}, 2, "--time is FROM-TO"},
      {{"propose", "--db", "S", "--client", "00001", "--kind", "autre"}, 2, "--kind is AUTRE or"},
      {{"consult", "--db", "S", "--key", "00001"}, 2, "--key is a full key"},
      {{"propose", "--db", "S", "--client", "00001", "--from", ""}, 2, "--from needs a date"},
      {{"propose", "--db", "S", "--client", "00001", "--from"}, 2, "--from needs a value"},
      {{"propose", "--db", "S", "--client", "00001", "--from", "31/02/2026"}, 2, "not a date of"},
      {{"propose", "--db", "S", "--client", "00001", "--time", "25:99-99"}, 2, "\"25:99\" is not"},
      {{"propose", "--db", "S", "--client", "00001", "--days", "12"}, 2, "--days is a mask"},
      {{"propose", "--db", "W/none.db", "--client", "00001", "--json"}, 1, "n'existe pas"},
      {{"consult", "--db", "S", "--key", "AB\"CDEFGHIJ"}, 2, "--key holds a double quote"},
      {{"consult", "--db", "S", "--key", std::string(26, 'A')}, 1, "unknown key"},
      {{"play", "--db", "S", "W/folder"}, 2, "is a folder: give the script"},
      {{"play", "--db", "S", "W/none.play"}, 1, "cannot be read: No such file"},
      {play, 2, "s.play:2: unknown word \"xaaa", "show\nx" + longWord + "\n"},
      {play, 2, "s.play:1: a quote opened at position 12", "init AUTRE \"" + longWord + "\n"},
      {play, 2, "s.play:1: client code \"0000]\"", "init AUTRE \"0000]\"\nshow\n"},
      {play, 2, "s.play:1: client code \"000001FLOT\"", "init AUTRE 000001FLOT\nshow\n"},
      {play, 2, "s.play:1: the key holds a double quote", "init-key AUTRE \"00001]\"\nshow\n"},
      {play, 2, "s.play:2: unknown button \"selct\"", "show\npress selct\n"},
      {play, 2, "s.play:1: \"x\" is not a row number", "click possible x\n"},
      {play, 2, "s.play:1: unknown list \"selected\"", "mark selected 0\n"},
      {play, 2, "s.play:3: missing kind of activity", "# fine\n\ninit\n"},
      {play, 2, "missing dialog button after \"close\"", "observation \"Sonner\" close\n"},
      {play, 2, "s.play:1: unknown host call \"maj_enr\"", "host maj_enr\n"},
      {play, 2, "s.play:1: unexpected word \"now\"", "show now\n"},
      {play, 2, "s.play:1: unknown text box \"duree\"", "type duree 5\n"},
      {play, 2, "s.play:1: an item of host affiche needs CODE", "host affiche A 10\n"},
  };
  // Each case in English, then in French: the same status and failure number, and in
  // each language lines of that language alone.
  const bool french = frenchLocaleExists();
  for (const Case& c : cases) {
    const auto args = expand(c.args);
    if (!c.script.empty()) spit(args.back(), c.script);
    const Outcome o = run(args);
    const Outcome fr = french ? run(args, "fr_FR.UTF-8") : o;
    SCOPED_TRACE((c.args.empty() ? "" : c.args.front()) + " " +
                 (c.args.size() > 1 ? c.args.back() : "") + " -> " + o.err.substr(0, 300) + " / " +
                 fr.err.substr(0, 300));
    EXPECT_NE(o.err.find(c.message), std::string::npos);
    for (const auto& [outcome, inFrench] : {std::pair{&o, false}, std::pair{&fr, french}}) {
      EXPECT_EQ(outcome->status, c.status);
      EXPECT_LT(outcome->err.size(), 1000u);  // long input is quoted cut
      const auto lines = linesOf(outcome->err);
      ASSERT_FALSE(lines.empty());
      for (const auto& line : lines) EXPECT_TRUE(oneLanguage(line, inFrench)) << line;
      if (c.status == 2) {
        // One line of mistake, one pointing at the help; never the help itself.
        ASSERT_EQ(lines.size(), 2u);
        EXPECT_TRUE(lines.back().starts_with(inFrench ? "Voir « velmora" : "See 'velmora"));
        EXPECT_TRUE(lines.back().ends_with(inFrench ? " --help »." : " --help'."));
      } else {
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_TRUE(lines.front().starts_with(inFrench ? "velmora: erreur " : "velmora: error "));
        EXPECT_EQ(numberOf(lines.front()), numberOf(linesOf(o.err).front()));
      }
      // Under --json the failure is also an object on the standard output, its number and
      // message those of the standard error; otherwise nothing is written there.
      if (std::find(args.begin(), args.end(), "--json") != args.end()) {
        const auto answer = nlohmann::json::parse(outcome->out)["error"];
        EXPECT_EQ(std::to_string(answer["number"].get<long>()), numberOf(lines.front()));
        EXPECT_NE(lines.front().find(answer["message"].get<std::string>()), std::string::npos);
      } else {
        EXPECT_EQ(outcome->out, "");
      }
    }
    EXPECT_EQ(slurp(at("s.db")), store);
  }
  for (const char* created : {"none.db", "new.db", "gone.db", "out.jsonl"}) {
    EXPECT_FALSE(fs::exists(at(created))) << created;
  }
  EXPECT_EQ(slurp(at("gone.db-journal")), "journal d'une base partie\n");
  EXPECT_TRUE(fs::is_fifo(at("fifo")));
  EXPECT_EQ(slurp(at("text.db")), "mes notes\n");
}

}  // namespace
}  // namespace velmora
