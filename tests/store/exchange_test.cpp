#include <gtest/gtest.h>
#include <vector>

#include <sstream>

#include <velmora/base/failure.h>
#include <velmora/store/exchange.h>
#include <velmora/store/sqlite_database.h>
#include "support/account.h"

namespace velmora {
namespace {

using testing::TempAccount;

Batch parse(const std::string& text) {
  std::istringstream in(text);
  return readExchange(in, "t.jsonl");
}

std::string exported(const std::string& path) {
  std::ostringstream out;
  writeExchange(path, out);
  return out.str();
}

std::string parseFailure(const std::string& text) {
  try {
    parse(text);
  } catch (const Failure& f) {
    EXPECT_EQ(f.number(), errors::kBadImport) << f.what();
    return f.what();
  }
  return "no failure";
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

TEST(Exchange, ReadsDeclarationsDictionaryAndRecords) {
  TempAccount account;
  const Batch batch = parse(kExample);
  EXPECT_EQ(batch.size(), 5u);
  account.apply(batch);
  const auto db = account.open();
  const auto tache = db->OpenFile(u"TACHE")->ReadRecord(u"Repassage");
  EXPECT_EQ(tache->r(), u"Entretien linge\uF8FEG-LINGE\uF8FE\uF8FEN\uF8FE30");
  const auto semType = db->OpenFile(u"TPSSEMAINETYPE")->ReadRecord(u"0001221186110002A");
  EXPECT_EQ(semType->DCount(), 8);
  EXPECT_EQ(semType->r(4), u"T1\uF8FDT2");
  EXPECT_EQ(semType->r(8, 2), u"Sonner deux fois");
  EXPECT_EQ(semType->r(8, 1), u"");
}

TEST(Exchange, ExportIsExactAndOrderedByCodeUnits) {
  TempAccount account;
  account.apply(parse(
      "{\"file\":\"ZFILE\"}\n"
      "{\"file\":\"AFILE\",\"key\":\"b\",\"record\":[\"x\"]}\n"
      "{\"file\":\"AFILE\",\"key\":\"\xC3\xA9t\xC3\xA9\",\"record\":[[\"1\",\"2\"],\"\",\"z\"]}\n"
      "{\"file\":\"AFILE\",\"key\":\"B\",\"record\":[]}\n"
      "{\"dictionary\":\"AFILE\",\"name\":\"Deux\",\"attribute\":2}\n"
      "{\"dictionary\":\"AFILE\",\"name\":\"Debut\",\"key\":[1,1]}\n"));
  // Files by name (the layout's thirteen included), dictionary by file and name, then
  // records by file and key: "B" < "b" < "été".
  std::string expected = "{\"file\":\"AFILE\"}\n";
  for (const char* file :
       {"AIDEDETAILTACHE", "BESOINSAIDE", "GROUPETACHE", "SSIADREGROUPSOINS", "SSIADSOINS",
        "SSIADTYPESOINS", "TABLES", "TACHE", "TPSDETAILSINTERV", "TPSPARAM", "TPSSEMAINETYPE",
        "TPSSEMAINETYPEFLOT", "TYPETACHE", "ZFILE"}) {
    expected += std::string(R"({"file":")") + file + "\"}\n";
  }
  expected +=
      "{\"dictionary\":\"AFILE\",\"name\":\"Debut\",\"key\":[1,1]}\n"
      "{\"dictionary\":\"AFILE\",\"name\":\"Deux\",\"attribute\":2}\n"
      "{\"dictionary\":\"TPSSEMAINETYPE\",\"name\":\"CodeAideSemType\",\"key\":[1,5]}\n"
      "{\"dictionary\":\"TPSSEMAINETYPE\",\"name\":\"DateDebSemType\",\"key\":[6,5]}\n"
      "{\"dictionary\":\"TPSSEMAINETYPE\",\"name\":\"TypeActSemType\",\"attribute\":3}\n"
      "{\"dictionary\":\"TPSSEMAINETYPEFLOT\",\"name\":\"CodeAideFlot\",\"key\":[1,5]}\n"
      "{\"dictionary\":\"TPSSEMAINETYPEFLOT\",\"name\":\"DateDebFlot\",\"key\":[6,5]}\n"
      "{\"dictionary\":\"TPSSEMAINETYPEFLOT\",\"name\":\"TypeActFlot\",\"attribute\":3}\n"
      "{\"file\":\"AFILE\",\"key\":\"B\",\"record\":[]}\n"
      "{\"file\":\"AFILE\",\"key\":\"b\",\"record\":[\"x\"]}\n"
      "{\"file\":\"AFILE\",\"key\":\"\xC3\xA9t\xC3\xA9\",\"record\":[[\"1\",\"2\"],\"\",\"z\"]}\n";
  EXPECT_EQ(exported(account.path()), expected);
  // Exported, imported and exported again, every character is kept.
  account.put("TACHE", "Tâche «spéciale»", {{"a\"b\\c"}, {"", ""}, {"x\xEF\xA3\xBCy"}});
  const std::string once = exported(account.path());
  TempAccount second;
  second.apply(parse(once));
  EXPECT_EQ(exported(second.path()), once);
  EXPECT_EQ(second.open()->OpenFile(u"TACHE")->ReadRecord(u"Tâche «spéciale»")->r(1), u"a\"b\\c");
}

TEST(Exchange, BadLinesNameTheSourceAndLine) {
  struct Case {
    std::string text;
    std::string expected;
  };
  const std::vector<Case> cases{
      {"{\"file\":\"TACHE\"}\n{\"file\":\"TACHE\",\"key\":\"a\",\"rec", "t.jsonl:2: not a JSON"},
      {"\n\n[1,2]\n", "t.jsonl:3: expected one JSON object"},
      {R"({"file":"T","key":"a","record":[1e310]})", "t.jsonl:1: not a JSON object"},
      {R"({"file":"T","key":"a","record":[1]})", "t.jsonl:1: attribute 1: a value must"},
      {R"({"file":"T","key":"a","record":["x",[]]})", "t.jsonl:1: attribute 2: an array"},
      {R"({"file":"T","key":"a","record":"x"})", R"(t.jsonl:1: "record" must be an array)"},
      {R"({"file":"T","key":"a"})", R"(t.jsonl:1: "record" is missing)"},
      {R"({"file":"T","key":5,"record":[]})", R"(t.jsonl:1: "key" must be a string)"},
      {R"({"file":"T","colour":"red"})", R"(t.jsonl:1: unexpected member "colour")"},
      {R"({"name":"x"})", R"(t.jsonl:1: expected "file" or "dictionary")"},
      {R"({"dictionary":"T","name":"N"})", "t.jsonl:1: a dictionary item needs either"},
      {R"({"dictionary":"T","name":"N","key":[0,5]})", "t.jsonl:1: the key part's start"},
      {R"({"dictionary":"T","name":"N","key":[1]})", R"(t.jsonl:1: "key" must be [start)"},
      {R"({"dictionary":"T","name":"N","attribute":-2})", R"(t.jsonl:1: "attribute" must)"},
      {R"({"file":"TWO WORDS"})", "t.jsonl:1: invalid call: file name"},
      {"{\"file\":\"T\",\"key\":\"a\",\"record\":[\"x\xEF\xA3\xBDy\"]}",
       "t.jsonl:1: attribute 1: a value holds"},
  };
  for (const auto& c : cases) {
    const std::string message = parseFailure(c.text);
    EXPECT_EQ(message.rfind(c.expected, 0), 0u) << c.text << "\n -> " << message;
  }
}

TEST(Exchange, AByteOrderMarkAndWindowsLineEndsAreReadAndATruncatedFileFailsAtItsLastLine) {
  const Batch batch = parse(
      "\xEF\xBB\xBF{\"file\":\"TACHE\"}\r\n{\"file\":\"TACHE\",\"key\":\"a\","
      "\"record\":[\"1\"]}\r\n");
  ASSERT_EQ(batch.size(), 2u);
  EXPECT_EQ(std::get<Batch::PutRecord>(batch.changes()[1]).body, u"1");
  const std::string whole(kExample);
  const std::string message = parseFailure(whole.substr(0, whole.size() - 30));
  EXPECT_EQ(message.rfind("t.jsonl:8: not a JSON object", 0), 0u) << message;
  // Cut just after a line end, the same text reads whole.
  EXPECT_EQ(parse(whole.substr(0, whole.rfind('\n', whole.size() - 2) + 1)).size(), 4u);
}

TEST(Exchange, ExportOfSomethingThatIsNotAStoreFails) {
  TempAccount account;
  std::ostringstream out;
  try {
    writeExchange(account.directory() + "/absent.db", out);
    ADD_FAILURE() << "exported a missing file";
  } catch (const Failure& f) {
    EXPECT_EQ(f.number(), errors::kDatabase);
  }
  EXPECT_EQ(out.str(), "");
}

}  // namespace
}  // namespace velmora
