// The exchange files: what an import reads, what it refuses (naming the source and line),
// and the stable order of an export (the tool's tests make the round trips).
#include <gtest/gtest.h>

#include <sstream>

#include <velmora/store/exchange.h>
#include "support/account.h"
#include "support/failure_number.h"

namespace velmora {
namespace {

using testing::TempAccount;

Batch parse(const std::string& text) {
  std::istringstream in(text);
  return readExchange(in, "t.jsonl");
}

std::string parseFailure(const std::string& text) {
  std::string message = "no failure";
  EXPECT_EQ(testing::failureNumber([&] { parse(text); }, &message), errors::kBadImport) << message;
  return message;
}

const char* const kExample =
    "# a comment line\n"
    "\n"
    "{\"file\":\"TACHE\"}\n"
    "{\"dictionary\":\"TPSSEMAINETYPE\",\"name\":\"CodeAideSemType\",\"key\":[1,5]}\n"
    "{\"dictionary\":\"TPSSEMAINETYPE\",\"name\":\"TypeActSemType\",\"attribute\":3}\n"
    "   \n"
    R"({"file":"TACHE","key":"Repassage","record":["Entretien linge","G-LINGE","",)"
    "\"N\",\"30\"]}\n"
    R"({"file":"TPSSEMAINETYPE","key":"0001221186110002A","record":["","1150","A",)"
    "[\"T1\",\"T2\"],[\"30\",\"15\"],\"\",\"\",[\"\",  \"Sonner deux fois\"]]}\n";

// A byte order mark and Windows line ends are read too; a file cut just after a line end
// reads whole (cut in the middle of a line, it fails: the tool's bad-input table).
TEST(Exchange, ReadsDeclarationsDictionaryAndRecords) {
  std::string windows = "\xEF\xBB\xBF";
  for (const char* c = kExample; *c != '\0'; ++c)
    windows += *c == '\n' ? "\r\n" : std::string(1, *c);
  const Batch batch = parse(windows);
  ASSERT_EQ(batch.size(), 5u);
  EXPECT_EQ(std::get<Batch::PutRecord>(batch.changes()[3]).body,
            u"Entretien linge\uF8FEG-LINGE\uF8FE\uF8FEN\uF8FE30");
  EXPECT_EQ(
      std::get<Batch::PutRecord>(batch.changes()[4]).body,
      u"\uF8FE1150\uF8FEA\uF8FET1\uF8FDT2\uF8FE30\uF8FD15\uF8FE\uF8FE\uF8FE\uF8FDSonner deux fois");
  const std::string whole(kExample);
  EXPECT_EQ(parse(whole.substr(0, whole.rfind('\n', whole.size() - 2) + 1)).size(), 4u);
}

TEST(Exchange, ExportIsExactAndOrderedByCodeUnits) {
  TempAccount account;
  account.apply(parse(
      "{\"file\":\"ZFILE\"}\n"
      "{\"file\":\"ZFILE\",\"key\":\"a\",\"record\":[\"y\"]}\n"
      "{\"file\":\"AFILE\",\"key\":\"b\",\"record\":[\"x\"]}\n"
      "{\"file\":\"AFILE\",\"key\":\"\xC3\xA9t\xC3\xA9\",\"record\":[[\"1\",\"2\"],\"\",\"z\"]}\n"
      "{\"file\":\"AFILE\",\"key\":\"B\",\"record\":[]}\n"
      "{\"dictionary\":\"ZFILE\",\"name\":\"A\",\"attribute\":1}\n"
      "{\"dictionary\":\"AFILE\",\"name\":\"Deux\",\"attribute\":2}\n"
      "{\"dictionary\":\"AFILE\",\"name\":\"Debut\",\"key\":[1,1]}\n"));
  // Files by name, dictionary by file and name, then records by file and key:
  // "B" < "b" < "été". The layout's own files and items are left out here.
  std::ostringstream out;
  writeExchange(account.path(), out);
  std::istringstream lines(out.str());
  std::string ours;
  for (std::string line; std::getline(lines, line);) {
    if (line.find("FILE\"") != std::string::npos) ours += line + "\n";
  }
  EXPECT_EQ(
      ours,
      "{\"file\":\"AFILE\"}\n"
      "{\"file\":\"ZFILE\"}\n"
      "{\"dictionary\":\"AFILE\",\"name\":\"Debut\",\"key\":[1,1]}\n"
      "{\"dictionary\":\"AFILE\",\"name\":\"Deux\",\"attribute\":2}\n"
      "{\"dictionary\":\"ZFILE\",\"name\":\"A\",\"attribute\":1}\n"
      "{\"file\":\"AFILE\",\"key\":\"B\",\"record\":[]}\n"
      "{\"file\":\"AFILE\",\"key\":\"b\",\"record\":[\"x\"]}\n"
      "{\"file\":\"AFILE\",\"key\":\"\xC3\xA9t\xC3\xA9\",\"record\":[[\"1\",\"2\"],\"\",\"z\"]}\n"
      "{\"file\":\"ZFILE\",\"key\":\"a\",\"record\":[\"y\"]}\n");
}

TEST(Exchange, BadLinesNameTheSourceAndLine) {
  const std::vector<std::pair<std::string, std::string>> cases{
      {"\n\n[1,2]\n", "t.jsonl:3: expected one JSON object"},
      {R"({"file":"T","key":"a","record":[1]})", "t.jsonl:1: attribute 1: a value must"},
      {R"({"file":"T","key":"a","record":["x",[]]})", "t.jsonl:1: attribute 2: an array"},
      {R"({"file":"T","key":"a"})", R"(t.jsonl:1: "record" is missing)"},
      {R"({"file":"T","key":5,"record":[]})", R"(t.jsonl:1: "key" must be a string)"},
      {R"({"name":"x"})", R"(t.jsonl:1: expected "file" or "dictionary")"},
      {R"({"dictionary":"T","name":"N"})", "t.jsonl:1: a dictionary item needs either"},
      {R"({"dictionary":"T","name":"N","key":[0,5]})", "t.jsonl:1: the key part's start"},
      {R"({"dictionary":"T","name":"N","attribute":-2})", R"(t.jsonl:1: "attribute" must)"},
      {R"({"file":"TWO WORDS"})", "t.jsonl:1: invalid call: file name"},
      {"{\"file\":\"T\",\"key\":\"a\",\"record\":[\"x\xEF\xA3\xBDy\"]}",
       "t.jsonl:1: attribute 1: a value holds"},
  };
  for (const auto& [text, expected] : cases) {
    const std::string message = parseFailure(text);
    EXPECT_EQ(message.rfind(expected, 0), 0u) << text << "\n -> " << message;
  }
}

}  // namespace
}  // namespace velmora
