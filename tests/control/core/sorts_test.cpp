// The control's sorts of the proposal and the selection against the documented sort, one
// scan per position, on random lists short and long.
#include <random>

#include "control/fixture.h"
#include "control/inspection.h"
#include "rows/row_format.h"

namespace velmora::testing {
namespace {

// A list as the sorts see it: rows with their marks and current row, the codes beside
// them and, for the selection, the observations.
struct Lists {
  std::vector<Text> rows;
  std::vector<bool> marks;
  int current = -1;
  std::vector<Text> codes;
  NorvikRecord observations;
};

// The documented sort: floating rows of the proposal behind; the entries exchanged in
// place, so that with no edit open the current row stays where it is.
void documentedSort(Lists& l, bool selection) {
  std::vector<Text> keys;
  for (const Text& row : l.rows) {
    keys.push_back(selection ? row : (trimBlanks(mid(row, 88, 1)).empty() ? u"1" : u"2") + row);
  }
  for (std::size_t i = 0; i < keys.size(); ++i) {
    std::size_t m = i;
    for (std::size_t j = i + 1; j < keys.size(); ++j) m = keys[j] < keys[m] ? j : m;
    if (m == i) continue;
    std::swap(keys[m], keys[i]);
    std::swap(l.rows[m], l.rows[i]);
    l.marks.swap(l.marks[m], l.marks[i]);
    std::swap(l.codes[m], l.codes[i]);
    if (!selection) continue;
    const Text kept = l.observations.r(static_cast<int>(m) + 1);
    l.observations.set(static_cast<int>(m) + 1, l.observations.r(static_cast<int>(i) + 1));
    l.observations.set(static_cast<int>(i) + 1, kept);
  }
}

// Rows from a few values, so that ties, shared prefixes and accents abound: catalogue
// rows (85), fixed (87) and floating (88) templates' rows, selection rows.
Lists randomLists(std::mt19937& random, int n) {
  const auto below = [&](unsigned k) {
    return std::uniform_int_distribution<unsigned>(0, k - 1)(random);
  };
  static const std::vector<Text> values{u"Aide", u"Aide au lever", u"Âge",    u"aide",
                                        u"",     u"Zinc",          u"Ménage", u"Bain"};
  static const std::vector<Text> durations{u"", u"5", u"30", u"120", u"0", u"12345"};
  Lists l;
  for (int i = 0; i < n; ++i) {
    const Text& duration = durations[below(6)];
    Text r;
    for (int c = 0; c < 3; ++c) r += rows::textColumn(values[below(8)]);
    const unsigned kind = below(4);
    r += kind == 3 ? rows::selectionMarkerAndDuration(below(2) == 0, duration)
                   : rows::proposalDuration(duration) + (kind == 1   ? u"  "
                                                         : kind == 2 ? u"  *"
                                                                     : u"");
    l.rows.push_back(r);
    l.marks.push_back(below(3) == 0);
    l.codes.push_back(u"C" + numberText(i));
    // Sparse observations: some rows have none, and the record may stop short.
    if (below(2) == 0)
      l.observations.set(i + 1, below(5) == 0 ? u"obs\xF8FDsecond" : u"obs " + numberText(i));
  }
  l.current = static_cast<int>(below(static_cast<unsigned>(n) + 1)) - 1;
  return l;
}

class Sorts : public ControlTest {
 protected:
  void check(Lists l, bool selection) {
    toolkit::ListBox& rows = selection ? ctl.Lst_Selectionne : ctl.Lst_Possible;
    toolkit::ListBox& codes = selection ? ctl.Lst_CodeSelect : ctl.Lst_CodePos;
    rows.Clear();
    codes.Clear();
    for (std::size_t i = 0; i < l.rows.size(); ++i) {
      rows.AddItem(l.rows[i]);
      rows.setSelected(static_cast<int>(i), l.marks[i]);
      codes.AddItem(l.codes[i]);
    }
    if (l.current >= 0) rows.setListIndex(l.current);
    slots().R_Obs = RecordRef::make(l.observations);
    selection ? CtrDriver(ctl).Trie_Selectionne() : CtrDriver(ctl).Trie_Possible();
    documentedSort(l, selection);
    ASSERT_EQ(rows.ListCount(), static_cast<int>(l.rows.size()));
    for (int i = 0; i < rows.ListCount(); ++i) {
      const auto k = static_cast<std::size_t>(i);
      ASSERT_EQ(rows.List(i), l.rows[k]) << i;
      ASSERT_EQ(codes.List(i), l.codes[k]) << i;
      ASSERT_TRUE(selection || rows.Selected(i) == l.marks[k]) << i;
    }
    ASSERT_EQ(rows.ListIndex(), l.current);
    ASSERT_EQ(slots().R_Obs->r(), l.observations.r());  // the proposal's sort leaves them
  }
};

TEST_F(Sorts, TheSameOrderAsTheDocumentedSortOnRandomAndLongLists) {
  std::mt19937 random(20261123);
  for (int trial = 0; trial < 300; ++trial) {
    SCOPED_TRACE(trial);
    const int n = static_cast<int>(random() % 40);
    check(randomLists(random, n), false);
    check(randomLists(random, n), true);
  }
  check(randomLists(random, 1500), false);
  check(randomLists(random, 1500), true);
  // A code list shorter than the rows fails as the exchange of a missing entry.
  ctl.Lst_CodePos.RemoveItem(0);
  ctl.Lst_Possible.AddItem(u"");
  EXPECT_EQ(failureNumber([&] { CtrDriver(ctl).Trie_Possible(); }), errors::kInvalidCall);
}

}  // namespace
}  // namespace velmora::testing
