// The indexed merges and walks against the row-by-row walks they replace, written out
// here step by step: same rows, same order, same tables, on the documented edge cases and
// on random data with many seeds.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include <velmora/base/failure.h>
#include <velmora/store/record.h>
#include "search/item_merge.h"
#include "search/task_catalogue.h"
#include "search/working_table.h"

namespace velmora::search {
namespace {

NorvikRecord answer(const std::vector<std::vector<std::string>>& rows) {
  NorvikRecord r;
  for (const auto& row : rows) {
    std::vector<Text> values;
    for (const auto& v : row) values.push_back(fromUtf8(v));
    r.appendAttribute(std::move(values));
  }
  return r;
}

// ---- The documented walks, one statement per documented step ----

std::vector<CatalogueRow> directCatalogueWalk(const NorvikRecord& T, const NorvikRecord& G,
                                              const NorvikRecord& K) {
  std::vector<CatalogueRow> rows;
  int j = 0;
  const int types = T.DCount();
  for (int i = 1; i <= types; ++i) {
    for (;;) {
      if (G.r(j, 3) != T.r(i, 1)) {
        j = 0;
        do {
          ++j;
        } while (!(G.r(j, 3) == T.r(i, 1) || G.r(j, 3).empty()));
      }
      if (G.r(j, 3) == T.r(i, 1)) {
        int k = 0;
        do {
          ++k;
        } while (!(K.r(k, 3) == G.r(j, 1) || K.r(k, 3).empty()));
        if (!K.r(k, 3).empty()) {
          do {
            rows.push_back({i, j, k});
            ++k;
          } while (!(K.r(k, 3) != G.r(j, 1) || K.r(k, 3).empty()));
        }
      }
      ++j;
      if (!(G.r(j, 3) == T.r(i, 1) && !G.r(j, 3).empty())) break;
    }
  }
  return rows;
}

// The override of one row: every row of the table that names the code with a duration
// neither "" nor "0" rewrites it; a rewrite that fails is skipped.
Text directOverride(const NorvikRecord& durees, const Text& code, Text row) {
  const int count = durees.DCount();
  for (int l = 1; l <= count; ++l) {
    if (durees.r(l, 1) == code && !durees.r(l, 2).empty() && durees.r(l, 2) != u"0") {
      try {
        row = withOverriddenDuration(row, durees.r(l, 2));
      } catch (const Failure&) {
      }
    }
  }
  return row;
}

Text indexedOverride(const DurationOverrides& known, const Text& code, Text row) {
  const auto* found = known.find(code);
  if (found != nullptr && found->duration) row = withOverriddenDuration(row, *found->duration);
  return row;
}

int directScan(const NorvikRecord& table, const Text& code) {
  int k = 1;
  while (!(table.r(k).empty() || table.r(k, 1) == code)) ++k;
  return k;
}

struct Item {
  Text code, duration, observation;
};
struct Template {
  bool fixedKey;
  bool matched;
  std::vector<Item> items;
};

struct Tables {
  NorvikRecord possible, selection, durees;
};

void directWeekly(Tables& t, const std::vector<Template>& templates, bool cleLue, bool floating) {
  for (const auto& tpl : templates) {
    for (const auto& item : tpl.items) {
      const int k = directScan(t.possible, item.code);
      if (t.possible.r(k).empty()) {
        t.possible.set(k, 1, item.code);
        t.possible.set(k, 2, item.duration);
        if (!floating) t.possible.set(k, 3, tpl.fixedKey ? u"" : u"*");
        const int last = t.durees.DCount() + 1;
        t.durees.set(last, 1, item.code);
        t.durees.set(last, 2, item.duration);
      }
      if (!cleLue && tpl.matched) {
        const int s = directScan(t.selection, item.code);
        if (t.selection.r(s).empty()) {
          const int last = t.selection.DCount() + 1;
          t.selection.set(last, 1, item.code);
          t.selection.set(last, 2, item.duration);
          t.selection.set(last, 3, item.observation);
        }
      }
    }
  }
}

void indexedWeekly(Tables& t, const std::vector<Template>& templates, bool cleLue, bool floating) {
  TemplateMerge merge(t.possible, t.selection, t.durees);
  for (const auto& tpl : templates) {
    for (const auto& item : tpl.items) {
      const TemplateItem in{item.code, item.duration, item.observation};
      if (floating) {
        merge.mergeFloating(in, tpl.matched, cleLue);
      } else {
        merge.mergeWeekly(in, tpl.fixedKey, tpl.matched, cleLue);
      }
    }
  }
}

void directClientLists(NorvikRecord& possible, NorvikRecord& durees,
                       const std::vector<std::vector<Item>>& lists) {
  for (const auto& list : lists) {
    for (const auto& item : list) {
      int k = 0;
      do {
        ++k;
      } while (!(possible.r(k).empty() || possible.r(k, 1) == item.code));
      if (possible.r(k).empty()) {
        possible.set(k, 1, item.code);
        possible.set(k, 2, item.duration);
        durees.set(durees.DCount() + 1, 1, item.code);
        try {
          durees.set(durees.DCount(), 2, item.duration);
        } catch (const Failure&) {
        }
      }
    }
  }
}

// ---- Random data ----

class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}
  int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(engine_); }
  template <class T>
  const T& pick(const std::vector<T>& from) {
    return from[static_cast<std::size_t>(below(static_cast<int>(from.size())))];
  }

 private:
  std::mt19937 engine_;
};

const std::vector<std::string> kCodes = {"", "A", "B", "C", "D", "E", "a", "É", "A ", "0"};
const std::vector<std::string> kDurations = {"", "0", "5", "30", "45", "120", "12345", "123456"};

Item randomItem(Random& rnd) {
  return {fromUtf8(rnd.pick(kCodes)), fromUtf8(rnd.pick(kDurations)),
          rnd.below(3) == 0 ? u"obs" : u""};
}

std::vector<Template> randomTemplates(Random& rnd) {
  std::vector<Template> templates(static_cast<std::size_t>(rnd.below(6)));
  for (auto& tpl : templates) {
    tpl.fixedKey = rnd.below(2) == 0;
    tpl.matched = rnd.below(2) == 0;
    tpl.items.resize(static_cast<std::size_t>(rnd.below(7)));
    for (auto& item : tpl.items) item = randomItem(rnd);
  }
  return templates;
}

struct Catalogue {
  NorvikRecord T, G, K;
};

// Small alphabets, so that duplicates, "" cells and groups out of type order abound.
Catalogue randomCatalogue(Random& rnd) {
  const std::vector<std::string> types = {"", "T1", "T2", "T3", "T4"};
  const std::vector<std::string> groups = {"", "G1", "G2", "G3", "G4", "G5"};
  std::vector<std::vector<std::string>> t, g, k;
  const int nt = rnd.below(6);
  for (int i = 0; i < nt; ++i) {
    t.push_back({rnd.below(8) == 0 ? "" : rnd.pick(types), "x"});
  }
  const int ng = rnd.below(8);
  for (int i = 0; i < ng; ++i) {
    g.push_back({rnd.below(8) == 0 ? "" : rnd.pick(groups), "y",
                 rnd.below(10) == 0 ? "" : rnd.pick(types)});
  }
  const int nk = rnd.below(12);
  for (int i = 0; i < nk; ++i) {
    k.push_back({"K" + std::to_string(i), "z", rnd.below(10) == 0 ? "" : rnd.pick(groups),
                 rnd.pick(kDurations)});
  }
  return {answer(t), answer(g), answer(k)};
}

// ---- Tests ----

TEST(TaskCatalogueWalk, GroupsSortedByTypeGiveEveryTaskUnderItsGroupAndType) {
  const auto T = answer({{"MENAGE", "1"}, {"REPAS", "2"}});
  const auto G =
      answer({{"LINGE", "1", "MENAGE"}, {"SOLS", "2", "MENAGE"}, {"CUISINE", "1", "REPAS"}});
  const auto K = answer({{"REPASSER", "1", "LINGE", "20"},
                         {"LAVER", "2", "LINGE", "15"},
                         {"ASPIRER", "1", "SOLS", "30"},
                         {"DEJEUNER", "1", "CUISINE", "45"}});
  const std::vector<CatalogueRow> expected = {{1, 1, 1}, {1, 1, 2}, {1, 2, 3}, {2, 3, 4}};
  EXPECT_EQ(taskCatalogueWalk(T, G, K), expected);
  EXPECT_EQ(directCatalogueWalk(T, G, K), expected);
}

TEST(TaskCatalogueWalk, GroupsInAnotherOrderThanTypesAreFoundFromTheTop) {
  // Groups of REPAS come first: the cursor searches again from the top for MENAGE.
  const auto T = answer({{"MENAGE", "1"}, {"REPAS", "2"}});
  const auto G = answer({{"CUISINE", "1", "REPAS"}, {"SOLS", "1", "MENAGE"}});
  const auto K = answer({{"ASPIRER", "1", "SOLS", "30"}, {"DEJEUNER", "1", "CUISINE", "45"}});
  const std::vector<CatalogueRow> expected = {{1, 2, 1}, {2, 1, 2}};
  EXPECT_EQ(taskCatalogueWalk(T, G, K), expected);
  EXPECT_EQ(directCatalogueWalk(T, G, K), expected);
}

TEST(TaskCatalogueWalk, AnEmptyGroupKeyInTheTasksHidesTheTasksBehindIt) {
  const auto T = answer({{"MENAGE", "1"}});
  const auto G = answer({{"LINGE", "1", "MENAGE"}, {"SOLS", "2", "MENAGE"}});
  // ASPIRER stands behind a task without a group: the search from the top stops there.
  const auto K = answer({{"REPASSER", "1", "LINGE", "20"},
                         {"ORPHELINE", "1", "", "5"},
                         {"ASPIRER", "1", "SOLS", "30"}});
  const std::vector<CatalogueRow> expected = {{1, 1, 1}};
  EXPECT_EQ(taskCatalogueWalk(T, G, K), expected);
  EXPECT_EQ(directCatalogueWalk(T, G, K), expected);
}

TEST(TaskCatalogueWalk, TypesWithoutGroupsAndGroupsWithoutTasksGiveNoRow) {
  const auto T = answer({{"AUTRE", "0"}, {"MENAGE", "1"}, {"VIDE", "2"}});
  const auto G = answer({{"SOLS", "1", "MENAGE"}, {"RIEN", "2", "MENAGE"}});
  const auto K = answer({{"ASPIRER", "1", "SOLS", "30"}});
  const std::vector<CatalogueRow> expected = {{2, 1, 1}};
  EXPECT_EQ(taskCatalogueWalk(T, G, K), expected);
  EXPECT_EQ(directCatalogueWalk(T, G, K), expected);
  EXPECT_TRUE(taskCatalogueWalk(NorvikRecord(), G, K).empty());
}

TEST(TaskCatalogueWalk, SameRowsAsTheRowByRowWalkOnRandomAnswers) {
  int nonEmpty = 0;
  for (unsigned seed = 1; seed <= 3000; ++seed) {
    Random rnd(seed);
    const auto c = randomCatalogue(rnd);
    const auto expected = directCatalogueWalk(c.T, c.G, c.K);
    ASSERT_EQ(taskCatalogueWalk(c.T, c.G, c.K), expected) << "seed " << seed;
    nonEmpty += expected.empty() ? 0 : 1;
  }
  EXPECT_GT(nonEmpty, 300);  // the data does reach the interesting paths
}

TEST(DurationOverrides, TheLastValidDurationForACodeWinsAndEmptyOrZeroNeverDo) {
  const auto durees = answer(
      {{"A", "12"}, {"B", "0"}, {"A", "40"}, {"C", ""}, {"A", "0"}, {"A", "123456"}, {"D", "7"}});
  const DurationOverrides known(durees);
  const Text row = Text(78, u'x') + u"     99";
  EXPECT_EQ(indexedOverride(known, u"A", row), Text(78, u'x') + u"     40");
  EXPECT_EQ(indexedOverride(known, u"B", row), row);
  EXPECT_EQ(indexedOverride(known, u"C", row), row);
  EXPECT_EQ(indexedOverride(known, u"E", row), row);
  EXPECT_EQ(indexedOverride(known, u"D", row), Text(78, u'x') + u"      7");
  ASSERT_NE(known.find(u"A"), nullptr);
  EXPECT_TRUE(known.find(u"A")->anyTooWide);
  for (const Text code : {u"A", u"B", u"C", u"D", u"E"}) {
    EXPECT_EQ(indexedOverride(known, code, row), directOverride(durees, code, row));
  }
}

TEST(DurationOverrides, SameRowsAsTheRowByRowOverrideOnRandomTables) {
  for (unsigned seed = 1; seed <= 2000; ++seed) {
    Random rnd(seed);
    std::vector<std::vector<std::string>> rows(static_cast<std::size_t>(rnd.below(10)));
    for (auto& r : rows) r = {rnd.pick(kCodes), rnd.pick(kDurations)};
    const auto durees = answer(rows);
    const DurationOverrides known(durees);
    const Text row = Text(80, u'.') + u"   15";
    for (const auto& code : kCodes) {
      ASSERT_EQ(indexedOverride(known, fromUtf8(code), row),
                directOverride(durees, fromUtf8(code), row))
          << "seed " << seed << " code '" << code << "'";
    }
  }
}

TEST(TemplateMerge, TheWholeCaseGivesFourProposalsAndTwoSelectedItems) {
  // Day 2 from 0900 to 1000: fixed template of day 2 (A, B) matches, fixed template of
  // day 4 (B, C) does not, the floating one (C, D) only proposes.
  const std::vector<Template> templates = {
      {true, true, {{u"A", u"30", u"obs A"}, {u"B", u"15", u""}}},
      {true, false, {{u"B", u"20", u""}, {u"C", u"10", u""}}},
      {false, false, {{u"C", u"50", u""}, {u"D", u"25", u"obs D"}}}};
  Tables t;
  indexedWeekly(t, templates, false, false);
  EXPECT_EQ(t.possible,
            answer({{"A", "30", ""}, {"B", "15", ""}, {"C", "10", ""}, {"D", "25", "*"}}));
  EXPECT_EQ(t.selection, answer({{"A", "30", "obs A"}, {"B", "15", ""}}));
  EXPECT_EQ(t.durees, answer({{"A", "30"}, {"B", "15"}, {"C", "10"}, {"D", "25"}}));
}

TEST(TemplateMerge, AKeyDecodedByInitNeverSelects) {
  Tables t;
  indexedWeekly(t, {{true, true, {{u"A", u"30", u""}}}}, true, false);
  EXPECT_EQ(t.possible, answer({{"A", "30", ""}}));
  EXPECT_EQ(t.selection.DCount(), 0);
}

TEST(TemplateMerge, SameTablesAsTheRowByRowScansOnRandomTemplates) {
  for (unsigned seed = 1; seed <= 3000; ++seed) {
    Random rnd(seed);
    const auto templates = randomTemplates(rnd);
    const bool cleLue = rnd.below(4) == 0;
    const bool floating = rnd.below(2) == 0;
    Tables direct, indexed;
    directWeekly(direct, templates, cleLue, floating);
    indexedWeekly(indexed, templates, cleLue, floating);
    ASSERT_EQ(indexed.possible.r(), direct.possible.r()) << "seed " << seed;
    ASSERT_EQ(indexed.selection.r(), direct.selection.r()) << "seed " << seed;
    ASSERT_EQ(indexed.durees.r(), direct.durees.r()) << "seed " << seed;
    ASSERT_EQ(indexed.possible.DCount(), direct.possible.DCount()) << "seed " << seed;
  }
}

TEST(ClientListMerge, TheLatestListDecidesTheDurationAndTheOrder) {
  NorvikRecord possible, durees;
  ClientListMerge merge(possible, durees);
  // Latest list first: B 30 and A ""; then an older list with A 45, C 10 and B 50.
  for (const auto& [code, minutes] : std::vector<std::pair<Text, Text>>{
           {u"B", u"30"}, {u"A", u""}, {u"A", u"45"}, {u"C", u"10"}, {u"B", u"50"}}) {
    merge.merge(code, minutes);
  }
  EXPECT_EQ(possible, answer({{"B", "30"}, {"A", ""}, {"C", "10"}}));
  EXPECT_EQ(durees, answer({{"B", "30"}, {"A", ""}, {"C", "10"}}));
}

TEST(ClientListMerge, SameTablesAsTheRowByRowScanOnRandomLists) {
  for (unsigned seed = 1; seed <= 3000; ++seed) {
    Random rnd(seed);
    std::vector<std::vector<Item>> lists(static_cast<std::size_t>(rnd.below(5)));
    for (auto& list : lists) {
      list.resize(static_cast<std::size_t>(rnd.below(8)));
      for (auto& item : list) item = randomItem(rnd);
    }
    NorvikRecord directPossible, directDurees, possible, durees;
    directClientLists(directPossible, directDurees, lists);
    ClientListMerge merge(possible, durees);
    for (const auto& list : lists) {
      for (const auto& item : list) merge.merge(item.code, item.duration);
    }
    ASSERT_EQ(possible.r(), directPossible.r()) << "seed " << seed;
    ASSERT_EQ(durees.r(), directDurees.r()) << "seed " << seed;
  }
}

TEST(TableScan, StopsAtTheFirstEmptyRowOrTheFirstRowOfTheCode) {
  auto table = answer({{"A", "1"}, {"B", "2"}, {""}, {"C", "3"}, {"A", "4"}});
  const TableScan scan(table);
  EXPECT_EQ(scan.stopRow(u"A"), 1);
  EXPECT_EQ(scan.stopRow(u"B"), 2);
  EXPECT_EQ(scan.stopRow(u"C"), 3);  // behind the empty row 3
  EXPECT_EQ(scan.stopRow(u"Z"), 3);
  for (const Text code : {u"A", u"B", u"C", u"Z", u""}) {
    EXPECT_EQ(scan.stopRow(code), directScan(table, code));
  }
}

}  // namespace
}  // namespace velmora::search
