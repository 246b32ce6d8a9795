// The indexed merges and walks against the row-by-row walks they replace, written out
// here as documented: same rows, same order, same tables, on random data with many seeds.
#include <random>

#include <velmora/base/failure.h>
#include "catalogue/task_catalogue.h"
#include "control/fixture.h"
#include "tables/item_merge.h"
#include "tables/working_table.h"

namespace velmora {
namespace {

using catalogue::CatalogueRow;
using catalogue::taskCatalogueWalk;
using tables::ClientListMerge;
using tables::TemplateItem;
using tables::TemplateMerge;

using Answer = std::vector<std::vector<std::string>>;  // a store's answer, row by row
using testing::makeRecord;

std::vector<CatalogueRow> directCatalogueWalk(const NorvikRecord& T, const NorvikRecord& G,
                                              const NorvikRecord& K) {
  std::vector<CatalogueRow> rows;
  int j = 0;
  for (int i = 1; i <= T.DCount(); ++i) {
    do {
      if (G.r(j, 3) != T.r(i, 1)) {  // search the type's groups from the top
        j = 0;
        do ++j;
        while (!(G.r(j, 3) == T.r(i, 1) || G.r(j, 3).empty()));
      }
      if (G.r(j, 3) == T.r(i, 1)) {
        int k = 0;
        do ++k;
        while (!(K.r(k, 3) == G.r(j, 1) || K.r(k, 3).empty()));
        for (; !K.r(k, 3).empty() && K.r(k, 3) == G.r(j, 1); ++k) rows.push_back({i, j, k});
      }
      ++j;
    } while (G.r(j, 3) == T.r(i, 1) && !G.r(j, 3).empty());
  }
  return rows;
}

int directScan(const NorvikRecord& table, const Text& code) {
  int k = 1;
  while (!(table.r(k).empty() || table.r(k, 1) == code)) ++k;
  return k;
}
void append(NorvikRecord& table, std::initializer_list<Text> values) {
  const int last = table.DCount() + 1;
  int v = 0;
  for (const Text& value : values) table.set(last, ++v, value);
}

struct Item {
  Text code, duration, observation;
};
struct Template {
  bool fixedKey, matched;
  std::vector<Item> items;
};
struct Tables {
  NorvikRecord possible, selection, durees;
};

void directTemplates(Tables& t, const std::vector<Template>& templates, bool cleLue,
                     bool floating) {
  for (const auto& tpl : templates) {
    for (const auto& item : tpl.items) {
      const int k = directScan(t.possible, item.code);
      if (t.possible.r(k).empty()) {
        t.possible.set(k, 1, item.code);
        t.possible.set(k, 2, item.duration);
        if (!floating) t.possible.set(k, 3, tpl.fixedKey ? u"" : u"*");
        append(t.durees, {item.code, item.duration});
      }
      if (!cleLue && tpl.matched && t.selection.r(directScan(t.selection, item.code)).empty()) {
        append(t.selection, {item.code, item.duration, item.observation});
      }
    }
  }
}

// Random data from small alphabets: duplicates, "" cells and groups out of order abound.
class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}
  int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(engine_); }
  const std::string& pick(const std::vector<std::string>& from) {
    return from[static_cast<std::size_t>(below(static_cast<int>(from.size())))];
  }
  std::vector<Item> items(int most) {
    std::vector<Item> out(static_cast<std::size_t>(below(most)));
    for (auto& i : out)
      i = {fromUtf8(pick(kCodes)), fromUtf8(pick(kDurations)), below(3) ? u"" : u"obs"};
    return out;
  }
  inline static const std::vector<std::string> kCodes = {"",  "A", "B", "C",  "D",
                                                         "E", "a", "É", "A ", "0"};
  inline static const std::vector<std::string> kDurations = {"",   "0",   "5",     "30",
                                                             "45", "120", "12345", "123456"};

 private:
  std::mt19937 engine_;
};

// Each seed draws a catalogue's answers, templates and a client's lists.
TEST(IndexedWalks, SameRowsAndTablesAsTheDocumentedScans) {
  const std::vector<std::string> types = {"", "T1", "T2", "T3", "T4"};
  const std::vector<std::string> groups = {"", "G1", "G2", "G3", "G4", "G5"};
  int nonEmpty = 0;
  for (unsigned seed = 1; seed <= 3000; ++seed) {
    SCOPED_TRACE(seed);
    Random rnd(seed);
    Answer T(static_cast<std::size_t>(rnd.below(6))), G(static_cast<std::size_t>(rnd.below(8))),
        K(static_cast<std::size_t>(rnd.below(12)));
    for (auto& t : T) t = {rnd.below(8) == 0 ? "" : rnd.pick(types), "x"};
    for (auto& g : G) {
      g = {rnd.below(8) == 0 ? "" : rnd.pick(groups), "y",
           rnd.below(10) == 0 ? "" : rnd.pick(types)};
    }
    for (auto& k : K) k = {"K", "z", rnd.below(10) == 0 ? "" : rnd.pick(groups)};
    const auto expected = directCatalogueWalk(makeRecord(T), makeRecord(G), makeRecord(K));
    ASSERT_EQ(taskCatalogueWalk(makeRecord(T), makeRecord(G), makeRecord(K)), expected);
    nonEmpty += expected.empty() ? 0 : 1;

    std::vector<Template> templates(static_cast<std::size_t>(rnd.below(6)));
    for (auto& tpl : templates) tpl = {rnd.below(2) == 0, rnd.below(2) == 0, rnd.items(7)};
    const bool cleLue = rnd.below(4) == 0;
    const bool floating = rnd.below(2) == 0;
    Tables direct, indexed;
    directTemplates(direct, templates, cleLue, floating);
    TemplateMerge merge(indexed.possible, indexed.selection, indexed.durees);
    using Mark = TemplateMerge::Mark;
    for (const auto& tpl : templates) {
      const Mark mark = floating ? Mark::kNone : tpl.fixedKey ? Mark::kFixed : Mark::kFloating;
      for (const auto& item : tpl.items) {
        merge.merge(TemplateItem{item.code, item.duration, item.observation}, mark, tpl.matched,
                    cleLue);
      }
    }
    ASSERT_EQ(indexed.possible.r(), direct.possible.r());
    ASSERT_EQ(indexed.selection.r(), direct.selection.r());
    ASSERT_EQ(indexed.durees.r(), direct.durees.r());

    NorvikRecord directPossible, directDurees, possible, durees;
    ClientListMerge lists(possible, durees);
    for (const auto& item : rnd.items(30)) {  // the lists of a client one after the other
      lists.merge(item.code, item.duration);
      const int k = directScan(directPossible, item.code);
      if (!directPossible.r(k).empty()) continue;
      directPossible.set(k, 1, item.code);
      directPossible.set(k, 2, item.duration);
      directDurees.set(directDurees.DCount() + 1, 1, item.code);
      try {  // after a code "" the table has no row to take the duration
        directDurees.set(directDurees.DCount(), 2, item.duration);
      } catch (const Failure&) {
      }
    }
    ASSERT_EQ(possible.r(), directPossible.r());
    ASSERT_EQ(durees.r(), directDurees.r());
  }
  EXPECT_GT(nonEmpty, 300);  // the data does reach the interesting paths
}

}  // namespace
}  // namespace velmora
