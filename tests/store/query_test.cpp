#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <velmora/base/failure.h>
#include <velmora/store/sqlite_database.h>
#include "store/query/order.h"
#include "store/query/syntax.h"
#include "support/account.h"

namespace velmora {
namespace {

using testing::TempAccount;
using Keys = std::vector<std::string>;
using Rows = std::vector<std::vector<std::string>>;

Text request(const std::string& query, const std::string& file, const std::string& columns) {
  return fromUtf8(query) + kAttributeMark + fromUtf8(file) + kAttributeMark + fromUtf8(columns);
}

// The file name is the query's second word, as the control always writes it.
std::string fileOf(const std::string& query) {
  const auto start = query.find(' ') + 1;
  return query.substr(start, query.find(' ', start) - start);
}

RecordRef answer(const DatabaseRef& db, const std::string& query,
                 const std::string& columns = "0") {
  long count = -1;
  auto result = db->RunQuery(request(query, fileOf(query), columns), u"", count);
  EXPECT_EQ(count, result->DCount());
  return result;
}

Rows rows(const DatabaseRef& db, const std::string& query, const std::string& columns) {
  const auto result = answer(db, query, columns);
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
  for (const auto& row : rows(db, query, "0")) out.push_back(row.front());
  return out;
}

struct Caught {
  long number = 0;
  std::string message;
};

Caught failureOf(const DatabaseRef& db, const Text& requestText) {
  long count = 0;
  try {
    db->RunQuery(requestText, u"", count);
  } catch (const Failure& f) {
    return {f.number(), f.what()};
  }
  return {};
}

Caught failureOf(const DatabaseRef& db, const std::string& query) {
  return failureOf(db, request(query, fileOf(query), "0"));
}

// ---------------------------------------------------------------------------------------
// The total order

TEST(QueryOrder, EmptyThenNumbersByValueThenTextByCodeUnit) {
  using store::compareOrdered;
  const std::vector<std::string> ascending = {"",
                                              "-12.5",
                                              "-3",
                                              "0",
                                              "2",
                                              "9",
                                              "9.5",
                                              "10",
                                              "21512",
                                              "100000000000000000000001",
                                              "+",
                                              "10a",
                                              "A",
                                              "Z",
                                              "a",
                                              "z",
                                              "\xC3\x89t\xC3\xA9"};
  for (std::size_t i = 0; i < ascending.size(); ++i) {
    for (std::size_t j = 0; j < ascending.size(); ++j) {
      const int c = compareOrdered(fromUtf8(ascending[i]), fromUtf8(ascending[j]));
      EXPECT_EQ(c < 0, i < j) << ascending[i] << " vs " << ascending[j];
      EXPECT_EQ(c == 0, i == j) << ascending[i] << " vs " << ascending[j];
      // The prepared form that the sorts use agrees.
      const int p = compareOrdered(store::OrderedText(fromUtf8(ascending[i])),
                                   store::OrderedText(fromUtf8(ascending[j])));
      EXPECT_EQ(p < 0, i < j) << ascending[i] << " vs " << ascending[j];
      EXPECT_EQ(p == 0, i == j) << ascending[i] << " vs " << ascending[j];
    }
  }
}

TEST(QueryOrder, EqualValuesAreBrokenByTextAndHugeNumbersCompareExactly) {
  using store::compareOrdered;
  EXPECT_LT(compareOrdered(u"010", u"10"), 0);  // same value, "0" < "1"
  EXPECT_LT(compareOrdered(u"10", u"10.0"), 0);
  EXPECT_LT(compareOrdered(u"-0", u"0"), 0);  // same value, '-' < '0'
  EXPECT_EQ(compareOrdered(u"007", u"007"), 0);
  // These differ in the last of 25 digits: no double can tell them apart.
  EXPECT_LT(compareOrdered(u"1234567890123456789012345", u"1234567890123456789012346"), 0);
  EXPECT_LT(compareOrdered(u"0.1000000000000000000001", u"0.1000000000000000000002"), 0);
  EXPECT_LT(compareOrdered(u"-2", u"-1.99999999999999999999"), 0);
  using store::OrderedText;
  EXPECT_LT(compareOrdered(OrderedText(u"010"), OrderedText(u"10")), 0);
  EXPECT_LT(compareOrdered(OrderedText(u"-0"), OrderedText(u"0")), 0);
  EXPECT_GT(compareOrdered(OrderedText(u"-1.5"), OrderedText(u"-1.51")), 0);
  EXPECT_LT(compareOrdered(OrderedText(u"0.1000000000000000000001"),
                           OrderedText(u"0.1000000000000000000002")),
            0);
  EXPECT_GT(compareOrdered(OrderedText(u"\u00E9"), OrderedText(u"z")), 0);
  EXPECT_LT(compareOrdered(OrderedText(u"z"), OrderedText(u"\uF8FD")), 0);
  EXPECT_TRUE(store::isQueryNumber(u"+0.50"));
  EXPECT_FALSE(store::isQueryNumber(u".5"));
  EXPECT_FALSE(store::isQueryNumber(u"5."));
  EXPECT_FALSE(store::isQueryNumber(u"1e3"));
  EXPECT_FALSE(store::isQueryNumber(u" 5"));
}

// ---------------------------------------------------------------------------------------
// Conditions and sorts on a small purpose-built file

class QueryWords : public ::testing::Test {
 protected:
  void SetUp() override {
    account_.put("TACHE", "A1", {{"9"}, {"G1"}, {""}, {"N"}, {"30"}});
    account_.put("TACHE", "A2", {{"10"}, {"G1"}, {""}, {"O"}, {"15"}});
    account_.put("TACHE", "B1", {{"100"}, {"G2"}, {""}, {"N"}, {"45"}});
    account_.put("TACHE", "B2", {{"abc"}, {"G2", "G3"}, {""}, {"N"}, {"5"}});
    account_.put("TACHE", "C", {{""}, {""}});
    account_.put("TACHE", "Ménage", {{"9"}, {"G3"}, {""}, {"N"}, {"20"}});
    db_ = account_.open();
  }

  TempAccount account_;
  DatabaseRef db_;
};

TEST_F(QueryWords, NoConditionGivesEveryKeyInKeyOrder) {
  EXPECT_EQ(keys(db_, "SSELECT TACHE"), (Keys{"A1", "A2", "B1", "B2", "C", "Ménage"}));
  EXPECT_EQ(keys(db_, "SELECT TACHE"), keys(db_, "SSELECT TACHE"));
}

TEST_F(QueryWords, EqualAndNotEqualAreExactText) {
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 1 = \"9\""), (Keys{"A1", "Ménage"}));
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 1 = \"09\""), Keys{});
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 1 <> \"9\""), (Keys{"A2", "B1", "B2", "C"}));
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 0 = \"B1\""), Keys{"B1"});
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC @ID = \"b1\""), Keys{});
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 4 = \"O\""), Keys{"A2"});
}

TEST_F(QueryWords, OrderingOperatorsCompareNumbersByValue) {
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 1 >= \"10\""), (Keys{"A2", "B1", "B2"}));
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 1 > \"10\""), (Keys{"B1", "B2"}));
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 1 <= \"10\""), (Keys{"A1", "A2", "C", "Ménage"}));
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 1 < \"10\""), (Keys{"A1", "C", "Ménage"}));
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 5 <= \"20\""), (Keys{"A2", "B2", "C", "Ménage"}));
}

TEST_F(QueryWords, OrAddsAlternativesForTheSameField) {
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 1 >= \"100\" OR = \"\""), (Keys{"B1", "B2", "C"}));
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 0 = \"A1\" OR = \"C\" OR <= \"A\""), (Keys{"A1", "C"}));
}

TEST_F(QueryWords, AndAvecNeedsEveryCondition) {
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 2 = \"G1\" AND AVEC 5 < \"20\""), Keys{"A2"});
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 2 = \"G1\" AND AVEC 1 = \"9\" AND AVEC 0 = \"A1\""),
            Keys{"A1"});
}

TEST_F(QueryWords, ClosingBracketComparesLeadingCharacters) {
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 0 = \"B]\""), (Keys{"B1", "B2"}));
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 0 <> \"B]\""), (Keys{"A1", "A2", "C", "Ménage"}));
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 1 = \"1]\""), (Keys{"A2", "B1"}));
  // The first character of attribute 1 against "5": "1" and "1" are below, "9" is above.
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 1 <= \"5]\""), (Keys{"A2", "B1", "C"}));
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 0 = \"]\""),
            (Keys{"A1", "A2", "B1", "B2", "C", "Ménage"}));
}

TEST_F(QueryWords, OpeningBracketComparesTrailingCharacters) {
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 0 = \"[1\""), (Keys{"A1", "B1"}));
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 0 <> \"[1\""), (Keys{"A2", "B2", "C", "Ménage"}));
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 0 >= \"[2\""), (Keys{"A2", "B2", "C", "Ménage"}));
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 0 = \"[age\""), Keys{"Ménage"});
}

// A value in single quotes is taken literally, a quote in it doubled: whatever it holds
// (brackets, double quotes, words and operators of the language), it is one whole value
// and the query keeps its shape.
TEST_F(QueryWords, NoLiteralValueChangesTheShapeOfTheQuery) {
  const std::vector<std::string> values = {"B]",
                                           "[B",
                                           "]",
                                           "[",
                                           "a\"b",
                                           "\"",
                                           "it's",
                                           "''",
                                           "x\" AND AVEC 0 = \"A1",
                                           "' OR = 'A1",
                                           "PAR 1",
                                           " ",
                                           "",
                                           "A1\" OR = \"A2",
                                           "[A]"};
  for (const auto& v : values) account_.put("TACHE", "k" + v, {{v}});
  for (const auto& v : values) {
    SCOPED_TRACE(v);
    const std::string literal = toUtf8(store::literalValue(fromUtf8(v)));
    // Keys are "k" and the value: a literal that could act as a bracket matches none.
    EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 0 = " + literal + " PAR 1"), Keys{});
    const std::string key = toUtf8(store::literalValue(fromUtf8("k" + v)));
    EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 0 = " + key + " AND AVEC 1 = " + literal),
              Keys{"k" + v});
    EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 1 = " + literal + " AND AVEC 0 = \"k]\""),
              Keys{"k" + v});
  }
  EXPECT_EQ(failureOf(db_, "SSELECT TACHE AVEC 0 = 'x").message,
            "requête : à la position 24 : la valeur n'a pas d'apostrophe fermante");
}

// Queries of one shape (the same text but for values of the same length) share a parse:
// each must still be read with its own values and brackets.
TEST_F(QueryWords, QueriesDifferingOnlyInTheirValuesAnswerEachForItsOwn) {
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 0 = \"B1\" OR = \"A2\""), (Keys{"A2", "B1"}));
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 0 = \"B]\" OR = \"[1\""), (Keys{"A1", "B1", "B2"}));
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 0 = \"A1\" OR = \"C]\""), (Keys{"A1", "C"}));
}

TEST_F(QueryWords, AnyValueOfAMultiValuedAttributeMeetsACondition) {
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 2 = \"G3\""), (Keys{"B2", "Ménage"}));
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 2 = \"G2\""), (Keys{"B1", "B2"}));
  // B2 has G2 and G3: G3 is not G2, so B2 is also in.
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 2 <> \"G2\""), (Keys{"A1", "A2", "B2", "C", "Ménage"}));
}

TEST_F(QueryWords, AnEmptyOrAbsentAttributeCountsAsOneEmptyValue) {
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 2 = \"\""), Keys{"C"});
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 2 <> \"\""), (Keys{"A1", "A2", "B1", "B2", "Ménage"}));
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 40 = \"\""),
            (Keys{"A1", "A2", "B1", "B2", "C", "Ménage"}));
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 5 = \"\""), Keys{"C"});
}

TEST_F(QueryWords, ParSortsAscendingWithTheKeyLast) {
  // Attribute 1: "" < 9 = 9 < 10 < 100 < "abc"; the two 9s in key order.
  EXPECT_EQ(keys(db_, "SSELECT TACHE PAR 1"), (Keys{"C", "A1", "Ménage", "A2", "B1", "B2"}));
}

TEST_F(QueryWords, ParDecrSortsDescendingAndTiesStayInAscendingKeyOrder) {
  EXPECT_EQ(keys(db_, "SSELECT TACHE PAR-DECR 1"), (Keys{"B2", "B1", "A2", "A1", "Ménage", "C"}));
  EXPECT_EQ(keys(db_, "SSELECT TACHE PAR-DECR @ID"), (Keys{"Ménage", "C", "B2", "B1", "A2", "A1"}));
  EXPECT_EQ(keys(db_, "SSELECT TACHE PAR-DECR 0"), keys(db_, "SSELECT TACHE PAR-DECR @ID"));
}

TEST_F(QueryWords, TheKeyIsTheLastCriterionInTheSameOrder) {
  // Stored order is by code unit ("10" < "100" < "9"); the answer's order is by value.
  for (const char* key : {"10", "100", "9", "-1", "x"}) account_.put("NOMBRES", key, {{"same"}});
  const auto db = account_.open();
  EXPECT_EQ(keys(db, "SSELECT NOMBRES"), (Keys{"-1", "9", "10", "100", "x"}));
  EXPECT_EQ(keys(db, "SSELECT NOMBRES PAR 1"), (Keys{"-1", "9", "10", "100", "x"}));
  EXPECT_EQ(keys(db, "SSELECT NOMBRES PAR-DECR 1"), (Keys{"-1", "9", "10", "100", "x"}));
  EXPECT_EQ(keys(db, "SELECT NOMBRES PAR-DECR 0"), (Keys{"x", "100", "10", "9", "-1"}));
}

TEST_F(QueryWords, SeveralParSortOnTheFirstThenTheNext) {
  // Attribute 4: "" (C) < "N" (A1 B1 B2 Ménage) < "O" (A2); then attribute 5 by value.
  EXPECT_EQ(keys(db_, "SSELECT TACHE PAR 4 PAR 5"), (Keys{"C", "B2", "Ménage", "A1", "B1", "A2"}));
  EXPECT_EQ(keys(db_, "SSELECT TACHE PAR 4 PAR-DECR 5"),
            (Keys{"C", "B1", "A1", "Ménage", "B2", "A2"}));
  // A sort on the key in the middle decides before a later criterion.
  EXPECT_EQ(keys(db_, "SSELECT TACHE PAR 4 PAR-DECR 0 PAR 5"),
            (Keys{"C", "Ménage", "B2", "B1", "A1", "A2"}));
}

TEST_F(QueryWords, ASortOnAMultiValuedAttributeUsesItsWholeText) {
  // "G2" < "G2<value mark>G3" < "G3" by code unit.
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC 2 <> \"\" PAR-DECR 2"),
            (Keys{"Ménage", "B2", "B1", "A1", "A2"}));
}

TEST_F(QueryWords, ColumnsGiveOneValuePerColumnAndSubvaluesForSeveralValues) {
  EXPECT_EQ(rows(db_, "SSELECT TACHE AVEC 0 = \"B]\"", "0 2 5 9"),
            (Rows{{"B1", "G2", "45", ""}, {"B2", "G2\xEF\xA3\xBCG3", "5", ""}}));
  const auto result = answer(db_, "SSELECT TACHE AVEC 0 = \"B2\"", "2 0");
  EXPECT_EQ(result->DCount(), 1);
  EXPECT_EQ(result->DCount(1), 2);
  EXPECT_EQ(result->r(1, 1), Text(u"G2") + kSubvalueMark + u"G3");
  EXPECT_EQ(result->r(1, 2), u"B2");
}

TEST_F(QueryWords, CellsPastTheLastHitAndAtRowZeroReadEmpty) {
  const auto result = answer(db_, "SSELECT TACHE AVEC 0 = \"A]\"", "0 1");
  EXPECT_EQ(result->DCount(), 2);
  EXPECT_EQ(result->r(1, 1), u"A1");
  EXPECT_EQ(result->r(2, 2), u"10");
  EXPECT_EQ(result->r(3, 1), u"");
  EXPECT_EQ(result->r(0, 1), u"");
  EXPECT_EQ(result->r(0), u"");
}

TEST_F(QueryWords, NoHitGivesAnEmptyAnswer) {
  const auto result = answer(db_, "SSELECT TACHE AVEC 0 = \"Z]\"", "0 1");
  EXPECT_EQ(result->r(), u"");
  EXPECT_EQ(result->DCount(), 0);
  EXPECT_EQ(result->r(1, 1), u"");
}

TEST_F(QueryWords, EmptyColumnsMeanTheKey) {
  long count = 0;
  const auto result =
      db_->RunQuery(request("SSELECT TACHE AVEC 0 = \"C\"", "TACHE", ""), u"", count);
  EXPECT_EQ(result->r(), u"C");
}

TEST_F(QueryWords, DictionaryNamesResolveForTheirFileOnly) {
  Batch batch;
  batch.defineItem(DictionaryItem{u"TACHE", u"Groupe", 2, 0, 0});
  batch.defineItem(DictionaryItem{u"TACHE", u"Lettre", -1, 1, 1});
  batch.defineItem(DictionaryItem{u"TACHE", u"Chiffre", -1, 2, 1});
  batch.defineItem(DictionaryItem{u"TACHE", u"Cle", 0, 0, 0});
  account_.apply(batch);
  const auto db = account_.open();
  EXPECT_EQ(keys(db, "SSELECT TACHE AVEC Groupe = \"G1\""), (Keys{"A1", "A2"}));
  EXPECT_EQ(keys(db, "SSELECT TACHE AVEC Lettre = \"B\""), (Keys{"B1", "B2"}));
  EXPECT_EQ(keys(db, "SSELECT TACHE AVEC Chiffre = \"2\""), (Keys{"A2", "B2"}));
  EXPECT_EQ(keys(db, "SSELECT TACHE AVEC Cle = \"C\""), Keys{"C"});
  EXPECT_EQ(keys(db, "SSELECT TACHE AVEC Lettre <> \"A\" PAR-DECR Chiffre"),
            (Keys{"Ménage", "B2", "B1", "C"}));  // "é" is text, after the digits
  const auto wrongFile = failureOf(db, std::string("SSELECT GROUPETACHE AVEC Groupe = \"x\""));
  EXPECT_EQ(wrongFile.number, errors::kUnknownName);
}

// ---------------------------------------------------------------------------------------
// Every query shape the control sends

class ControlQueries : public ::testing::Test {
 protected:
  void SetUp() override {
    account_.put("SSIADSOINS", "010101", {{"Toilette"}, {""}, {""}, {"30"}});
    account_.put("SSIADSOINS", "010102", {{"Bain"}, {""}, {""}, {"45"}});
    account_.put("SSIADSOINS", "020101", {{"Toilette"}, {""}, {""}, {"20"}});
    account_.put("SSIADSOINS", "020202", {{"Évaluation"}, {""}, {""}, {"15"}});
    account_.put("TYPETACHE", "Ménage", {{"2"}});
    account_.put("TYPETACHE", "Courses", {{"1"}});
    account_.put("TYPETACHE", "Linge", {{"2"}});
    account_.put("GROUPETACHE", "G-SOL", {{"b"}, {"Ménage"}});
    account_.put("GROUPETACHE", "G-VITRES", {{"a"}, {"Ménage"}});
    account_.put("GROUPETACHE", "G-ACHATS", {{"a"}, {"Courses"}});
    account_.put("GROUPETACHE", "G-LINGE", {{"a"}, {"Linge"}});
    account_.put("TACHE", "Aspirateur", {{"2"}, {"G-SOL"}, {""}, {"N"}, {"30"}});
    account_.put("TACHE", "Serpillière", {{"1"}, {"G-SOL"}, {""}, {"O"}, {"20"}});
    account_.put("TACHE", "Vitres", {{"1"}, {"G-VITRES"}, {""}, {"N"}, {"45"}});
    account_.put("TACHE", "Repassage", {{"1"}, {"G-LINGE"}, {""}, {"N"}, {"30"}});
    for (const char* key : {"0001221400", "0001221512", "0001221513", "0001221600", "0001121512",
                            "0001321000", "000129"}) {
      account_.put("AIDEDETAILTACHE", key, {{"T1"}, {"10"}});
    }
    putTemplates("TPSSEMAINETYPE", true);
    putTemplates("TPSSEMAINETYPEFLOT", false);
    db_ = account_.open();
  }

  // Fixed keys have a day character at position 11; floating ones do not.
  static std::string templateKey(bool fixed, const std::string& client, const std::string& start,
                                 char day, const std::string& rest) {
    return client + start + (fixed ? std::string(1, day) : std::string()) + rest;
  }

  void putTemplates(const std::string& file, bool fixed) {
    const auto key = [&](const char* client, const char* start, char day, const char* rest) {
      return templateKey(fixed, client, start, day, rest);
    };
    // end date, end time, kind, items
    account_.put(file, key("00012", "21500", '1', "0850AA"), {{""}, {"1000"}, {"A"}, {"T1", "T2"}});
    account_.put(file, key("00012", "21400", '2', "1000AA"), {{"21511"}, {"1100"}, {"A"}, {"T1"}});
    account_.put(file, key("00012", "21450", '3', "0900AA"),
                 {{"21600"}, {"1000"}, {"S"}, {"0101"}});
    account_.put(file, key("00012", "21560", '0', "0800AA"), {{""}, {"0900"}, {"A"}, {"T1"}});
    account_.put(file, key("00012", "21300", '4', "0800AA"), {{"21512"}, {"0900"}, {"A"}, {""}});
    account_.put(file, key("00012", "21300", '5', "0800AB"), {{"30000"}, {"0900"}, {"A"}, {"T3"}});
    account_.put(file, key("00012", "21200", '6', "1400AA"), {{""}, {"1500"}, {""}, {"T9"}});
    account_.put(file, key("00012", "21560", '1', "0800AA"), {{""}, {"0900"}, {"S"}, {"0102"}});
    account_.put(file, key("00011", "21500", '1', "0850AA"), {{""}, {"1000"}, {"A"}, {"T1"}});
    account_.put(file, key("00013", "21500", '1', "0850AA"), {{""}, {"1000"}, {"S"}, {"T1"}});
  }

  // The four template queries as the search writes them.
  static std::string templateQuery(bool fixed, bool withStart, bool care) {
    const std::string file = fixed ? "TPSSEMAINETYPE" : "TPSSEMAINETYPEFLOT";
    const std::string code = fixed ? "CodeAideSemType" : "CodeAideFlot";
    const std::string start = fixed ? "DateDebSemType" : "DateDebFlot";
    const std::string kind = fixed ? "TypeActSemType" : "TypeActFlot";
    std::string q = "SSELECT " + file + " AVEC " + code + " = \"00012\"";
    if (withStart) q += " AND AVEC " + start + " <= \"21550\"";
    q += " AND AVEC 1 >= \"21512\" OR = \"\" AND AVEC 4 <> \"\"";
    q += " AND AVEC " + kind + (care ? " = " : " <> ") + "\"S\"";
    return q;
  }

  static Keys templateKeys(bool fixed, std::initializer_list<const char*> picks) {
    Keys out;
    for (const char* p : picks) {
      const std::string s(p);  // "<start><day>-<rest>"
      out.push_back(templateKey(fixed, "00012", s.substr(0, 5), s[5], s.substr(7)));
    }
    return out;
  }

  TempAccount account_;
  DatabaseRef db_;
};

TEST_F(ControlQueries, CareActCatalogueByLabelThenKey) {
  EXPECT_EQ(rows(db_, "SSELECT SSIADSOINS PAR 1", "0 1 4"), (Rows{{"010102", "Bain", "45"},
                                                                  {"010101", "Toilette", "30"},
                                                                  {"020101", "Toilette", "20"},
                                                                  {"020202", "Évaluation", "15"}}));
}

TEST_F(ControlQueries, TaskCatalogueQueries) {
  EXPECT_EQ(rows(db_, "SSELECT TYPETACHE PAR 1", "0 1"),
            (Rows{{"Courses", "1"}, {"Linge", "2"}, {"Ménage", "2"}}));
  EXPECT_EQ(rows(db_, "SSELECT GROUPETACHE PAR 2 PAR 1", "0 1 2"),
            (Rows{{"G-ACHATS", "a", "Courses"},
                  {"G-LINGE", "a", "Linge"},
                  {"G-VITRES", "a", "Ménage"},
                  {"G-SOL", "b", "Ménage"}}));
  EXPECT_EQ(rows(db_, "SSELECT TACHE PAR 2 PAR 1", "0 1 2 5"),
            (Rows{{"Repassage", "1", "G-LINGE", "30"},
                  {"Serpillière", "1", "G-SOL", "20"},
                  {"Aspirateur", "2", "G-SOL", "30"},
                  {"Vitres", "1", "G-VITRES", "45"}}));
}

TEST_F(ControlQueries, ClientTaskListLatestFirst) {
  // Keys of digits sort by value: the short stray key "000129" is the smallest.
  EXPECT_EQ(keys(db_, "SSELECT AIDEDETAILTACHE AVEC @ID = \"00012]\" PAR-DECR @ID"),
            (Keys{"0001221600", "0001221513", "0001221512", "0001221400", "000129"}));
}

TEST_F(ControlQueries, ConsultationLimitsTheDateAtTheEndOfTheKey) {
  EXPECT_EQ(
      keys(db_, "SELECT AIDEDETAILTACHE AVEC 0 = \"00012]\" AND AVEC 0 <= \"[21512\" PAR-DECR 0"),
      (Keys{"0001221512", "0001221400", "000129"}));  // "00129" <= 21512 too
}

TEST_F(ControlQueries, FixedTemplateQueries) {
  EXPECT_EQ(keys(db_, templateQuery(true, true, false)),
            templateKeys(true, {"212006-1400AA", "213005-0800AB", "215001-0850AA"}));
  EXPECT_EQ(
      keys(db_, templateQuery(true, false, false)),
      templateKeys(true, {"212006-1400AA", "213005-0800AB", "215001-0850AA", "215600-0800AA"}));
  EXPECT_EQ(keys(db_, templateQuery(true, true, true)), templateKeys(true, {"214503-0900AA"}));
  EXPECT_EQ(keys(db_, templateQuery(true, false, true)),
            templateKeys(true, {"214503-0900AA", "215601-0800AA"}));
}

TEST_F(ControlQueries, FloatingTemplateQueries) {
  // Floating keys have no day: the two records that differ by day alone in the fixed
  // file are one key here.
  EXPECT_EQ(keys(db_, templateQuery(false, true, false)),
            templateKeys(false, {"212006-1400AA", "213005-0800AB", "215001-0850AA"}));
  EXPECT_EQ(keys(db_, templateQuery(false, false, false)),
            templateKeys(false, {"212006-1400AA", "213005-0800AB", "215001-0850AA"}));
  EXPECT_EQ(keys(db_, templateQuery(false, true, true)), templateKeys(false, {"214503-0900AA"}));
  EXPECT_EQ(keys(db_, templateQuery(false, false, true)),
            templateKeys(false, {"214503-0900AA", "215601-0800AA"}));
}

TEST_F(ControlQueries, OneClientsTemplateQueryDecodesOnlyThatClientsRecords) {
  auto& sqlite = dynamic_cast<SqliteDatabase&>(db_.get());
  // Client 00012 has 8 fixed templates; 2 start after 21550 and are refused on their
  // key alone, before their body is read.
  sqlite.resetStatistics();
  keys(db_, templateQuery(true, true, false));
  EXPECT_EQ(sqlite.statistics().scannedKeys, 8u);
  EXPECT_EQ(sqlite.statistics().decodedRecords, 6u);
  sqlite.resetStatistics();
  keys(db_, templateQuery(true, false, true));
  EXPECT_EQ(sqlite.statistics().scannedKeys, 8u);
  EXPECT_EQ(sqlite.statistics().decodedRecords, 8u);
  EXPECT_EQ(statistics(db_).queries, 1u);
}

TEST_F(ControlQueries, KeyOnlyQueriesDecodeNothing) {
  auto& sqlite = dynamic_cast<SqliteDatabase&>(db_.get());
  sqlite.resetStatistics();
  keys(db_, "SELECT AIDEDETAILTACHE AVEC 0 = \"00012]\" AND AVEC 0 <= \"[21512\" PAR-DECR 0");
  EXPECT_EQ(sqlite.statistics().scannedKeys, 5u);
  EXPECT_EQ(sqlite.statistics().decodedRecords, 0u);
  sqlite.resetStatistics();
  EXPECT_EQ(keys(db_, "SSELECT AIDEDETAILTACHE AVEC 0 = \"0001221512\""), Keys{"0001221512"});
  EXPECT_EQ(sqlite.statistics().scannedKeys, 1u);
}

// ---------------------------------------------------------------------------------------
// Bad requests: a clear failure, never a partial answer

TEST_F(QueryWords, MalformedQueriesNameThePositionAndWhatWasExpected) {
  const struct {
    std::string query;
    std::size_t position;
    std::string expected;
  } cases[] = {
      {"", 1, "SSELECT ou SELECT attendu"},
      {"FIND TACHE", 1, "SSELECT ou SELECT attendu"},
      {"SSELECT", 8, "nom de fichier attendu"},
      {"SSELECT AVEC", 9, "nom de fichier attendu"},
      {"SSELECT TACHE AVEC 1 \"x\"", 22, "opérateur attendu (=, <=, >=, <>) après « AVEC 1 »"},
      {"SSELECT TACHE AVEC 1 == \"x\"", 22, "opérateur attendu"},
      {"SSELECT TACHE AVEC 1 = x", 24,
       "valeur entre guillemets ou apostrophes attendue après « AVEC 1 = »"},
      {"SSELECT TACHE AVEC 1 = \"x", 24, "pas de guillemet fermant"},
      {"SSELECT TACHE AVEC = \"x\"", 20, "numéro d'attribut, @ID ou nom du dictionnaire attendu"},
      {"SSELECT TACHE AVEC 1 = \"x\" AVEC 2 = \"y\"", 28, "AND attendu avant AVEC"},
      {"SSELECT TACHE AVEC 1 = \"x\" AND 2 = \"y\"", 32, "AVEC attendu"},
      {"SSELECT TACHE AVEC 1 = \"x\" OR \"y\"", 31, "opérateur attendu"},
      {"SSELECT TACHE PAR", 18, "numéro d'attribut"},
      {"SSELECT TACHE PAR 1 AVEC 2 = \"x\"", 21, "les conditions doivent précéder les tris"},
      {"SSELECT TACHE AND AVEC 1 = \"x\"", 15, "AVEC, PAR, PAR-DECR"},
      {"SSELECT TACHE PAR 1 extra", 21, "PAR-DECR ou la fin de la requête attendu après « PAR 1 »"},
      {"sselect TACHE", 1, "SSELECT ou SELECT attendu"},
  };
  for (const auto& c : cases) {
    const auto caught = failureOf(db_, request(c.query, "TACHE", "0"));
    EXPECT_EQ(caught.number, errors::kBadQuery) << c.query;
    const std::string at = "requête : à la position " + std::to_string(c.position) + " : ";
    EXPECT_EQ(caught.message.rfind(at, 0), 0u) << c.query << " -> " << caught.message;
    EXPECT_NE(caught.message.find(c.expected), std::string::npos)
        << c.query << " -> " << caught.message;
  }
}

TEST_F(QueryWords, UnknownFileAndNamesFailNamingThem) {
  const auto file = failureOf(db_, std::string("SSELECT NOSUCH PAR 1"));
  EXPECT_EQ(file.number, errors::kUnknownFile);
  EXPECT_NE(file.message.find("NOSUCH"), std::string::npos) << file.message;

  const auto name = failureOf(db_, std::string("SSELECT TACHE AVEC Inconnu = \"x\""));
  EXPECT_EQ(name.number, errors::kUnknownName);
  EXPECT_NE(name.message.find("Inconnu"), std::string::npos) << name.message;
  EXPECT_NE(name.message.find("TACHE"), std::string::npos) << name.message;

  const auto sortName = failureOf(db_, std::string("SSELECT TACHE PAR CodeAideSemType"));
  EXPECT_EQ(sortName.number, errors::kUnknownName);
}

TEST_F(QueryWords, AnOpenConnectionSeesFilesAndNamesAddedByTheWriter) {
  EXPECT_EQ(failureOf(db_, std::string("SSELECT TACHE AVEC Groupe = \"G1\"")).number,
            errors::kUnknownName);
  EXPECT_EQ(failureOf(db_, std::string("SSELECT NOUVEAU")).number, errors::kUnknownFile);
  Batch batch;
  batch.defineItem(DictionaryItem{u"TACHE", u"Groupe", 2, 0, 0});
  batch.putRecord(u"NOUVEAU", u"k", testing::makeRecord({{"v"}}));
  account_.apply(batch);
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC Groupe = \"G1\""), (Keys{"A1", "A2"}));
  EXPECT_EQ(keys(db_, "SSELECT NOUVEAU"), Keys{"k"});
  // A record the writer removes is gone for the same connection too.
  Batch removal;
  removal.deleteRecord(u"TACHE", u"A1");
  account_.apply(removal);
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC Groupe = \"G1\""), Keys{"A2"});
  // A name the writer defines again is read with its new meaning, though the connection
  // knew the old one.
  Batch redefinition;
  redefinition.defineItem(DictionaryItem{u"TACHE", u"Groupe", 4, 0, 0});
  account_.apply(redefinition);
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC Groupe = \"G1\""), Keys{});  // a query of the same shape
  EXPECT_EQ(keys(db_, "SSELECT TACHE AVEC Groupe = \"N\""), (Keys{"B1", "B2", "Ménage"}));
}

TEST_F(QueryWords, BadRequestRecordsFailClearly) {
  const auto mismatch = failureOf(db_, request("SSELECT TACHE PAR 1", "GROUPETACHE", "0"));
  EXPECT_EQ(mismatch.number, errors::kBadQuery);
  EXPECT_NE(mismatch.message.find("GROUPETACHE"), std::string::npos) << mismatch.message;
  EXPECT_NE(mismatch.message.find("TACHE"), std::string::npos) << mismatch.message;

  const auto columns = failureOf(db_, request("SSELECT TACHE PAR 1", "TACHE", "0 x 2"));
  EXPECT_EQ(columns.number, errors::kBadQuery);
  EXPECT_NE(columns.message.find("« x »"), std::string::npos) << columns.message;

  const auto huge = failureOf(db_, std::string("SSELECT TACHE AVEC 123456789012 = \"x\""));
  EXPECT_EQ(huge.number, errors::kBadQuery);
}

}  // namespace
}  // namespace velmora
