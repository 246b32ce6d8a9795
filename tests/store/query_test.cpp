// The query language: its total order, its conditions and sorts, the answers' cells, the
// failures of bad requests, and the fast paths of the control's queries on the sample.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <tuple>

#include <velmora/store/sample_account.h>
#include "store/query/order.h"
#include "store/query/syntax.h"
#include "support/account.h"
#include "support/failure_number.h"

namespace velmora {
namespace {

using testing::TempAccount;
using Keys = std::vector<std::string>;
using Rows = std::vector<std::vector<std::string>>;

// The request record as the control builds it; the file is the query's second word.
Text request(const std::string& query, const std::string& columns = "0") {
  const auto start = query.find(' ') + 1;
  const std::string file = query.substr(start, query.find(' ', start) - start);
  return fromUtf8(query) + kAttributeMark + fromUtf8(file) + kAttributeMark + fromUtf8(columns);
}

Rows rows(const DatabaseRef& db, const std::string& query, const std::string& columns = "0") {
  long count = -1;
  const auto result = db->RunQuery(request(query, columns), u"", count);
  EXPECT_EQ(count, result->DCount());
  const int width = static_cast<int>(std::count(columns.begin(), columns.end(), ' ')) + 1;
  Rows out;
  for (int i = 1; i <= result->DCount(); ++i) {
    EXPECT_LE(result->DCount(i), width);
    std::vector<std::string> row;
    for (int j = 1; j <= width; ++j) row.push_back(toUtf8(result->r(i, j)));
    out.push_back(row);
  }
  return out;
}

Keys keys(const DatabaseRef& db, const std::string& query) {
  Keys out;
  for (const auto& row : rows(db, query)) out.push_back(row.front());
  return out;
}

// The failure a request raises: its number, its message to *message.
long failureOf(const DatabaseRef& db, const Text& requestText, std::string* message = nullptr) {
  long count = 0;
  return testing::failureNumber([&] { db->RunQuery(requestText, u"", count); }, message);
}

TEST(QueryOrder, EmptyThenNumbersByValueThenTextByCodeUnitAndTiesByText) {
  using store::compareOrdered;
  using store::OrderedText;
  // In ascending order, parted by "|"; the first is empty.
  const std::string list =
      "|-12.5|-2|-1.99999999999999999999|-0|0|0.1000000000000000000001|0.1000000000000000000002"
      "|2|9|9.5|010|10|10.0|21512|1234567890123456789012345|1234567890123456789012346| 5|+|-|.5"
      "|10a|1e3|5.|A|Z|a|z|\xC3\x89t\xC3\xA9|\xEF\xA3\xBD";
  std::vector<std::string> ascending(1);
  for (const char ch : list)
    ch == '|' ? void(ascending.emplace_back()) : ascending.back().push_back(ch);
  for (std::size_t i = 0; i < ascending.size(); ++i) {
    for (std::size_t j = 0; j < ascending.size(); ++j) {
      SCOPED_TRACE(ascending[i] + " vs " + ascending[j]);
      const Text a = fromUtf8(ascending[i]);
      const Text b = fromUtf8(ascending[j]);
      const int c = compareOrdered(a, b);
      EXPECT_EQ(c < 0, i < j);
      EXPECT_EQ(c == 0, i == j);
      // The prepared form that the sorts use agrees.
      const int p = compareOrdered(OrderedText(a), OrderedText(b));
      EXPECT_EQ(p < 0, i < j);
      EXPECT_EQ(p == 0, i == j);
    }
  }
}

// A small file, its dictionary, and a file of numeric keys.
class Query : public ::testing::Test {
 protected:
  void SetUp() override {
    account_.put("TACHE", "A1", {{"9"}, {"G1"}, {""}, {"N"}, {"30"}});
    account_.put("TACHE", "A2", {{"10"}, {"G1"}, {""}, {"O"}, {"15"}});
    account_.put("TACHE", "B1", {{"100"}, {"G2"}, {""}, {"N"}, {"45"}});
    account_.put("TACHE", "B2", {{"abc"}, {"G2", "G3"}, {""}, {"N"}, {"5"}});
    account_.put("TACHE", "C", {{""}, {""}});
    account_.put("TACHE", "Ménage", {{"9"}, {"G3"}, {""}, {"N"}, {"20"}});
    for (const char* key : {"10", "100", "9", "-1", "x"}) account_.put("NOMBRES", key, {{"same"}});
    Batch batch;
    batch.defineItem(DictionaryItem{u"TACHE", u"Groupe", 2, 0, 0});
    batch.defineItem(DictionaryItem{u"TACHE", u"Lettre", -1, 1, 1});
    batch.defineItem(DictionaryItem{u"TACHE", u"Chiffre", -1, 2, 1});
    batch.defineItem(DictionaryItem{u"TACHE", u"Cle", 0, 0, 0});
    account_.apply(batch);
    db_ = account_.open();
  }

  TempAccount account_;
  DatabaseRef db_;
};

TEST_F(Query, ConditionsAndSortsSelectAndOrderTheKeys) {
  const std::vector<std::pair<std::string, Keys>> cases{
      {"SSELECT TACHE", {"A1", "A2", "B1", "B2", "C", "Ménage"}},
      // = and <> are exact text; <, <=, >, >= compare numbers by value.
      {R"(SSELECT TACHE AVEC 1 = "9")", {"A1", "Ménage"}},
      {R"(SSELECT TACHE AVEC 1 = "09")", {}},
      {R"(SSELECT TACHE AVEC 1 <> "9")", {"A2", "B1", "B2", "C"}},
      {R"(SSELECT TACHE AVEC 1 >= "10")", {"A2", "B1", "B2"}},
      {R"(SSELECT TACHE AVEC 1 > "10")", {"B1", "B2"}},
      {R"(SSELECT TACHE AVEC 1 <= "10")", {"A1", "A2", "C", "Ménage"}},
      {R"(SSELECT TACHE AVEC 1 < "10")", {"A1", "C", "Ménage"}},
      // OR adds alternatives for the same field, AND AVEC needs every condition.
      {R"(SSELECT TACHE AVEC 1 >= "100" OR = "")", {"B1", "B2", "C"}},
      {R"(SSELECT TACHE AVEC 2 = "G1" AND AVEC 1 = "9" AND AVEC 0 = "A1")", {"A1"}},
      // "x]" compares the leading characters, "[x" the trailing ones.
      {R"(SSELECT TACHE AVEC 0 = "B]")", {"B1", "B2"}},
      {R"(SSELECT TACHE AVEC 1 = "1]")", {"A2", "B1"}},
      {R"(SSELECT TACHE AVEC 1 <= "5]")", {"A2", "B1", "C"}},
      {R"(SSELECT TACHE AVEC 0 = "[1")", {"A1", "B1"}},
      {R"(SSELECT TACHE AVEC 0 <> "[1")", {"A2", "B2", "C", "Ménage"}},
      {R"(SSELECT TACHE AVEC 0 >= "[2")", {"A2", "B2", "C", "Ménage"}},
      {R"(SSELECT TACHE AVEC 0 = "[age")", {"Ménage"}},
      // Queries of one shape share a parse, each read with its own values and brackets.
      {R"(SSELECT TACHE AVEC 0 = "B1" OR = "A2")", {"A2", "B1"}},
      {R"(SSELECT TACHE AVEC 0 = "B]" OR = "[1")", {"A1", "B1", "B2"}},
      {R"(SSELECT TACHE AVEC 0 = "A1" OR = "C]")", {"A1", "C"}},
      // Any value of a multi-valued attribute meets a condition; absent reads as "".
      {R"(SSELECT TACHE AVEC 2 = "G3")", {"B2", "Ménage"}},
      {R"(SSELECT TACHE AVEC 2 <> "G2")", {"A1", "A2", "B2", "C", "Ménage"}},
      {R"(SSELECT TACHE AVEC 2 = "")", {"C"}},
      {R"(SSELECT TACHE AVEC 40 = "")", {"A1", "A2", "B1", "B2", "C", "Ménage"}},
      // Sorts: ascending, descending, the key last in the same order, several criteria.
      {"SSELECT TACHE PAR 1", {"C", "A1", "Ménage", "A2", "B1", "B2"}},
      {"SSELECT TACHE PAR-DECR 1", {"B2", "B1", "A2", "A1", "Ménage", "C"}},
      {"SSELECT TACHE PAR-DECR @ID", {"Ménage", "C", "B2", "B1", "A2", "A1"}},
      {"SSELECT NOMBRES", {"-1", "9", "10", "100", "x"}},
      {"SSELECT NOMBRES PAR-DECR 1", {"-1", "9", "10", "100", "x"}},
      {"SELECT NOMBRES PAR-DECR 0", {"x", "100", "10", "9", "-1"}},
      {"SSELECT TACHE PAR 4 PAR 5", {"C", "B2", "Ménage", "A1", "B1", "A2"}},
      {"SSELECT TACHE PAR 4 PAR-DECR 0 PAR 5", {"C", "Ménage", "B2", "B1", "A1", "A2"}},
      {R"(SSELECT TACHE AVEC 2 <> "" PAR-DECR 2)", {"Ménage", "B2", "B1", "A1", "A2"}},
      // Dictionary names: attributes, parts of the key, the key itself.
      {R"(SSELECT TACHE AVEC Groupe = "G1")", {"A1", "A2"}},
      {R"(SSELECT TACHE AVEC Lettre = "B")", {"B1", "B2"}},
      {R"(SSELECT TACHE AVEC Chiffre = "2")", {"A2", "B2"}},
      {R"(SSELECT TACHE AVEC Cle = "C")", {"C"}},
      {R"(SSELECT TACHE AVEC Lettre <> "A" PAR-DECR Chiffre)", {"Ménage", "B2", "B1", "C"}},
  };
  for (const auto& [query, expected] : cases) EXPECT_EQ(keys(db_, query), expected) << query;
}

// A value in single quotes is taken literally, a quote in it doubled: whatever it holds,
// it is one whole value and the query keeps its shape.
TEST_F(Query, NoLiteralValueChangesTheShapeOfTheQuery) {
  const std::vector<std::string> values = {"B]",         "[B",    "]",  "[",
                                           R"(a"b)",     "it's",  "''", R"(x" AND AVEC 0 = "A1)",
                                           "' OR = 'A1", "PAR 1", "",   R"(A1" OR = "A2)",
                                           "[A]"};
  for (const auto& v : values) account_.put("TACHE", "k" + v, {{v}});
  for (const auto& v : values) {
    SCOPED_TRACE(v);
    const std::string literal = toUtf8(literalValue(fromUtf8(v)));
    EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 0 = " + literal + " PAR 1"), Keys{});
    const std::string key = toUtf8(literalValue(fromUtf8("k" + v)));
    EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 0 = " + key + (" AND AVEC 1 = " + literal)),
              Keys{"k" + v});
    EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 1 = " + literal + R"( AND AVEC 0 = "k]")"),
              Keys{"k" + v});
  }
}

TEST_F(Query, ColumnsGiveOneValuePerColumnSubvaluesForSeveralAndEmptyPastTheEnd) {
  EXPECT_EQ(rows(db_, R"(SSELECT TACHE AVEC 0 = "B]")", "0 2 5 9"),
            (Rows{{"B1", "G2", "45", ""}, {"B2", "G2\xEF\xA3\xBCG3", "5", ""}}));
  EXPECT_EQ(rows(db_, R"(SSELECT TACHE AVEC 0 = "A]")", "1 0"), (Rows{{"9", "A1"}, {"10", "A2"}}));
  long count = 0;
  EXPECT_EQ(db_->RunQuery(request(R"(SSELECT TACHE AVEC 0 = "Z]")"), u"", count)->r(), u"");
  EXPECT_EQ(count, 0);
  EXPECT_EQ(db_->RunQuery(request(R"(SSELECT TACHE AVEC 0 = "C")", ""), u"", count)->r(), u"C");
}

TEST_F(Query, AnOpenConnectionSeesWhatTheWriterChanges) {
  EXPECT_EQ(failureOf(db_, request(R"(SSELECT TACHE AVEC Neuf = "G1")")), errors::kUnknownName);
  EXPECT_EQ(failureOf(db_, request("SSELECT NOUVEAU")), errors::kUnknownFile);
  // The plan of this shape is kept with the old meaning of Groupe.
  EXPECT_EQ(keys(db_, R"(SSELECT TACHE AVEC Groupe = "G1")"), (Keys{"A1", "A2"}));
  Batch batch;
  batch.defineItem(DictionaryItem{u"TACHE", u"Neuf", 2, 0, 0});
  batch.putRecord(u"NOUVEAU", u"k", testing::makeRecord({{"v"}}));
  batch.deleteRecord(u"TACHE", u"A1");
  batch.defineItem(DictionaryItem{u"TACHE", u"Groupe", 4, 0, 0});  // a new meaning
  account_.apply(batch);
  EXPECT_EQ(keys(db_, R"(SSELECT TACHE AVEC Neuf = "G1")"), Keys{"A2"});
  EXPECT_EQ(keys(db_, "SSELECT NOUVEAU"), Keys{"k"});
  EXPECT_EQ(keys(db_, R"(SSELECT TACHE AVEC Groupe = "N")"), (Keys{"B1", "B2", "Ménage"}));
}

// A bad request fails clearly, naming what and where; never a partial answer.
TEST_F(Query, BadRequestsNameThePositionAndWhatWasExpected) {
  struct Case {
    std::string query;
    std::string message;  // the start of it, after "requête : à la position "
    long number = errors::kBadQuery;
  };
  const std::vector<Case> cases{
      {"sselect TACHE", "1 : SSELECT ou SELECT attendu"},
      {"SSELECT", "8 : nom de fichier attendu après « SSELECT », trouvé la fin de la requête"},
      {R"(SSELECT TACHE AVEC 1 "x")",
       R"(22 : opérateur attendu (=, <=, >=, <>) après « AVEC 1 », trouvé « "x" »)"},
      {"SSELECT TACHE AVEC 1 = x",
       "24 : valeur entre guillemets ou apostrophes attendue après « AVEC 1 = »"},
      {R"(SSELECT TACHE AVEC 1 = "x)", "24 : la valeur n'a pas de guillemet fermant"},
      {R"(SSELECT TACHE AVEC = "x")", "20 : numéro d'attribut, @ID ou nom du dictionnaire attendu"},
      {R"(SSELECT TACHE AVEC 1 = "x" AVEC 2 = "y")", "28 : AND attendu avant AVEC"},
      {R"(SSELECT TACHE AVEC 1 = "x" AND 2 = "y")", "32 : AVEC attendu"},
      {R"(SSELECT TACHE PAR 1 AVEC 2 = "x")", "21 : les conditions doivent précéder les tris"},
      {"SSELECT TACHE PAR 1 extra",
       "21 : AVEC, PAR, PAR-DECR ou la fin de la requête attendu après « PAR 1 »"},
      {R"(SSELECT TACHE AVEC Inconnu = "x")",
       "20 : nom de dictionnaire inconnu « Inconnu » dans le fichier TACHE", errors::kUnknownName},
      {R"(SSELECT GROUPETACHE AVEC Groupe = "x")", "26", errors::kUnknownName},
  };
  for (const auto& c : cases) {
    std::string message;
    EXPECT_EQ(failureOf(db_, request(c.query), &message), c.number) << c.query;
    EXPECT_EQ(message.rfind("requête : à la position " + c.message, 0), 0u) << message;
  }
  std::string message;
  failureOf(db_, request("SSELECT TACHE", "0 x 2"), &message);
  EXPECT_EQ(message.rfind("requête : colonnes : « x » à la position 3 n'est pas", 0), 0u)
      << message;
  EXPECT_EQ(failureOf(db_, request("SSELECT NOSUCH PAR 1"), &message), errors::kUnknownFile);
  EXPECT_NE(message.find("NOSUCH"), std::string::npos);
  // The file named in the request is not the query's.
  for (const Text tail : {u"\uF8FE0", u""}) {
    EXPECT_EQ(failureOf(db_, u"SSELECT TACHE\uF8FEGROUPETACHE" + tail, &message),
              errors::kBadQuery);
    EXPECT_NE(message.find("GROUPETACHE"), std::string::npos) << message;
  }
}

// Fast paths on the sample account: a client's template query decodes only the bodies it
// must, a query on keys decodes none.
TEST(SampleAccount, QueriesOnKeysDecodeOnlyTheRecordsTheyMust) {
  // Built over the empty file that a failed first build leaves.
  TempAccount account;
  const std::string path = account.directory() + "/sample.db";
  std::ofstream(path).close();
  buildSampleDatabase(path, VELMORA_SAMPLE_DIR);
  const auto db = openDatabase(path);
  auto& sqlite = dynamic_cast<SqliteDatabase&>(db.get());
  // Client 00004 has three fixed templates (ended on 01/09/2026, current, and starting next
  // year); the one starting next year is refused on its key.
  const std::vector<std::tuple<std::string, Keys, std::uint64_t, std::uint64_t>> cases{
      {R"(SELECT AIDEDETAILTACHE AVEC 0 = "00001]" AND AVEC 0 <= "[21512" PAR-DECR 0)",
       {"0000121491", "0000121064", "0000120700"},
       4,
       0},
      {R"(SSELECT AIDEDETAILTACHE AVEC 0 = "0000121519")", {"0000121519"}, 1, 0},
      {R"(SSELECT TPSSEMAINETYPE AVEC CodeAideSemType = "00004" AND AVEC )"
       R"(DateDebSemType <= "21550" AND AVEC 1 >= "21512" OR = "" AND AVEC 4 <> "" )"
       R"(AND AVEC TypeActSemType <> "S")",
       {"00004214593090001"},
       3,
       2}};
  for (const auto& [query, expected, scanned, decoded] : cases) {
    sqlite.resetStatistics();
    EXPECT_EQ(keys(db, query), expected) << query;
    EXPECT_EQ(sqlite.statistics().scannedKeys, scanned) << query;
    EXPECT_EQ(sqlite.statistics().decodedRecords, decoded) << query;
    EXPECT_EQ(statistics(db).queries, 1u);
  }
}

}  // namespace
}  // namespace velmora
