#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include <velmora/control/ctr_velmora_new.h>
#include "control/module_slots.h"
#include "ctr_driver.h"
#include "rows/row_format.h"

namespace velmora {
namespace {

using Variable::R_Obs;

// A list as the sorts see it: rows with their marks and current row, the codes beside
// them and, for the selection, the observations.
struct Lists {
  std::vector<Text> rows;
  std::vector<bool> marks;
  int current = -1;
  std::vector<Text> codes;
  NorvikRecord observations;
};

Text possibleKey(const Text& row) {
  return (trimBlanks(mid(row, 88, 1)).empty() ? u"1" : u"2") + row;
}

// The sort as documented, one scan per position, for comparison.
void directSelectionSort(Lists& l, bool selection) {
  const int n = static_cast<int>(l.rows.size());
  std::vector<Text> keys;
  for (const Text& row : l.rows) keys.push_back(selection ? row : possibleKey(row));
  for (int i = 0; i < n; ++i) {
    int m = i;
    for (int j = i + 1; j < n; ++j) {
      if (keys[j] < keys[m]) m = j;
    }
    if (m == i) continue;
    std::swap(keys[m], keys[i]);
    std::swap(l.rows[m], l.rows[i]);
    l.marks.swap(l.marks[m], l.marks[i]);
    if (l.current == m) {
      l.current = i;
    } else if (l.current == i) {
      l.current = m;
    }
    std::swap(l.codes[m], l.codes[i]);
    if (selection) {
      const Text temporary = l.observations.r(m + 1);
      l.observations.set(m + 1, l.observations.r(i + 1));
      l.observations.set(i + 1, temporary);
    }
  }
}

void load(toolkit::ListBox& rows, toolkit::ListBox& codes, const Lists& l) {
  rows.Clear();
  codes.Clear();
  for (std::size_t i = 0; i < l.rows.size(); ++i) {
    rows.AddItem(l.rows[i]);
    rows.setSelected(static_cast<int>(i), l.marks[i]);
    codes.AddItem(l.codes[i]);
  }
  if (l.current >= 0) rows.setListIndex(l.current);
}

std::vector<Text> contents(const toolkit::ListBox& list) {
  std::vector<Text> out;
  for (int i = 0; i < list.ListCount(); ++i) out.push_back(list.List(i));
  return out;
}

std::vector<bool> marks(const toolkit::ListBox& list) {
  std::vector<bool> out;
  for (int i = 0; i < list.ListCount(); ++i) out.push_back(list.Selected(i));
  return out;
}

// Rows from a few values, so that ties, shared prefixes and accents abound.
class RowMaker {
 public:
  explicit RowMaker(unsigned seed) : random_(seed) {}

  Text row() {
    static const std::vector<Text> values{u"Aide", u"Aide au lever", u"Âge",    u"aide",
                                          u"",     u"Zinc",          u"Ménage", u"Bain"};
    static const std::vector<Text> durations{u"", u"5", u"30", u"120", u"0", u"12345"};
    Text r = rows::textColumn(pick(values)) + rows::textColumn(pick(values)) +
             rows::textColumn(pick(values)) + rows::proposalDuration(pick(durations));
    switch (below(4)) {
      case 0:
        return r;  // a catalogue row, 85
      case 1:
        return r + u"  ";  // a fixed template's row, 87
      case 2:
        return r + u"  *";  // a floating template's row, 88
      default: {            // a selection row, maybe with its marker
        Text s =
            left(r, 78) + rows::selectionMarkerAndDuration(below(2) == 0, rows::rowDuration(r));
        return s;
      }
    }
  }

  Lists lists(int n, bool withObservations) {
    Lists l;
    for (int i = 0; i < n; ++i) {
      l.rows.push_back(row());
      l.marks.push_back(below(3) == 0);
      Text code = u"C";  // appended, not prefixed: GCC 12 sees a false overlap in u"C" + text
      code += numberText(i);
      l.codes.push_back(code);
    }
    l.current = n > 0 ? static_cast<int>(below(n + 1)) - 1 : -1;
    if (withObservations) {
      // Sparse: some rows have none, and the record may stop short of the list.
      const int reach = n > 0 ? static_cast<int>(below(n + 1)) : 0;
      for (int a = 1; a <= reach; ++a) {
        if (below(2) == 0) continue;
        l.observations.set(a, below(5) == 0 ? Text(u"obs ") + numberText(a) + u"\xF8FDsecond"
                                            : Text(u"obs ") + numberText(a));
      }
    }
    return l;
  }

  unsigned below(unsigned n) { return std::uniform_int_distribution<unsigned>(0, n - 1)(random_); }

 private:
  const Text& pick(const std::vector<Text>& v) { return v[below(static_cast<unsigned>(v.size()))]; }
  std::mt19937 random_;
};

class Sorts : public ::testing::Test {
 protected:
  void SetUp() override { Variable::resetAll(); }
  void TearDown() override { Variable::resetAll(); }

  void checkPossible(Lists l) {
    load(c.Lst_Possible, c.Lst_CodePos, l);
    driver.Trie_Possible();
    directSelectionSort(l, false);
    ASSERT_EQ(contents(c.Lst_Possible), l.rows);
    ASSERT_EQ(contents(c.Lst_CodePos), l.codes);
    ASSERT_EQ(marks(c.Lst_Possible), l.marks);
    ASSERT_EQ(c.Lst_Possible.ListIndex(), l.current);
  }

  void checkSelection(Lists l) {
    load(c.Lst_Selectionne, c.Lst_CodeSelect, l);
    R_Obs = RecordRef::make(l.observations);
    driver.Trie_Selectionne();
    directSelectionSort(l, true);
    ASSERT_EQ(contents(c.Lst_Selectionne), l.rows);
    ASSERT_EQ(contents(c.Lst_CodeSelect), l.codes);
    ASSERT_EQ(c.Lst_Selectionne.ListIndex(), l.current);
    ASSERT_EQ(R_Obs->r(), l.observations.r());
    ASSERT_EQ(R_Obs->DCount(), l.observations.DCount());
  }

  Ctr_VelmoraNew c;
  CtrDriver driver{c};
};

TEST_F(Sorts, FastSortGivesTheOrderOfTheDirectSortOnRandomLists) {
  RowMaker maker(20261123);
  for (int trial = 0; trial < 300; ++trial) {
    const int n = static_cast<int>(maker.below(40));
    SCOPED_TRACE(trial);
    checkPossible(maker.lists(n, false));
    checkSelection(maker.lists(n, true));
  }
}

TEST_F(Sorts, FastSortGivesTheOrderOfTheDirectSortOnALongList) {
  RowMaker maker(7);
  checkPossible(maker.lists(1500, false));
  checkSelection(maker.lists(1500, true));
}

TEST_F(Sorts, EmptyAndSingleListsStayAndTheIndicatorIsSetAnyway) {
  R_Obs = newRecord();
  c.Etq_Imperativite.setVisible(true);
  driver.Trie_Selectionne();
  EXPECT_FALSE(c.Etq_Imperativite.Visible());
  EXPECT_EQ(R_Obs->r(), u"");

  const Text row = rows::textColumn(u"B") + rows::textColumn(u"") + rows::textColumn(u"") +
                   rows::selectionMarkerAndDuration(false, u"5");
  c.Lst_Selectionne.AddItem(row);
  c.Lst_CodeSelect.AddItem(u"B1");
  c.Etq_Imperativite.setVisible(true);
  driver.Trie_Selectionne();
  EXPECT_EQ(contents(c.Lst_Selectionne), std::vector<Text>{row});
  EXPECT_EQ(contents(c.Lst_CodeSelect), std::vector<Text>{u"B1"});
  EXPECT_FALSE(c.Etq_Imperativite.Visible());
  // Nothing moved, so the observations record was not written.
  EXPECT_EQ(R_Obs->DCount(), 0);
}

TEST_F(Sorts, FloatingRowsGoBehindAndShorterRowsFirst) {
  const Text cols =
      rows::textColumn(u"Entretien") + rows::textColumn(u"Ménage") + rows::textColumn(u"Sols");
  const Text early = rows::textColumn(u"Aide") + rows::textColumn(u"") + rows::textColumn(u"") +
                     rows::proposalDuration(u"10");
  const Text catalogue = cols + rows::proposalDuration(u"30");
  const Text fixed = catalogue + u"  ";
  const Text floating = early + u"  *";
  const Text accented = rows::textColumn(u"Écrire") + rows::textColumn(u"") +
                        rows::textColumn(u"") + rows::proposalDuration(u"5");
  const Text lower = rows::textColumn(u"zinc") + rows::textColumn(u"") + rows::textColumn(u"") +
                     rows::proposalDuration(u"5");
  for (const Text& r : {floating, fixed, accented, catalogue, lower}) c.Lst_Possible.AddItem(r);
  for (const char16_t* code : {u"F", u"X", u"E", u"K", u"Z"}) c.Lst_CodePos.AddItem(code);
  driver.Trie_Possible();
  EXPECT_EQ(contents(c.Lst_Possible),
            (std::vector<Text>{catalogue, fixed, lower, accented, floating}));
  EXPECT_EQ(contents(c.Lst_CodePos), (std::vector<Text>{u"K", u"X", u"Z", u"E", u"F"}));
}

TEST_F(Sorts, EqualSelectionRowsKeepTheirOwnCodesAndObservations) {
  const Text same = rows::textColumn(u"Soins") + rows::textColumn(u"Toilette") +
                    rows::textColumn(u"Douche") + rows::selectionMarkerAndDuration(true, u"20");
  const Text first = rows::textColumn(u"Aide") + rows::textColumn(u"Repas") +
                     rows::textColumn(u"Courses") + rows::selectionMarkerAndDuration(false, u"");
  c.Lst_Selectionne.AddItem(same);
  c.Lst_Selectionne.AddItem(same);
  c.Lst_Selectionne.AddItem(first);
  c.Lst_CodeSelect.AddItem(u"D1");
  c.Lst_CodeSelect.AddItem(u"D2");
  c.Lst_CodeSelect.AddItem(u"C1");
  R_Obs = newRecord();
  R_Obs->set(1, u"porte bleue");
  R_Obs->set(2, u"chien");
  c.Lst_Selectionne.setListIndex(1);
  driver.Trie_Selectionne();
  // The only exchange is of rows 2 and 0: the first equal row goes last.
  EXPECT_EQ(contents(c.Lst_Selectionne), (std::vector<Text>{first, same, same}));
  EXPECT_EQ(contents(c.Lst_CodeSelect), (std::vector<Text>{u"C1", u"D2", u"D1"}));
  EXPECT_EQ(R_Obs->r(1), u"");
  EXPECT_EQ(R_Obs->r(2), u"chien");
  EXPECT_EQ(R_Obs->r(3), u"porte bleue");
  EXPECT_EQ(R_Obs->DCount(), 3);
  // The current row stays on its item.
  EXPECT_EQ(c.Lst_Selectionne.ListIndex(), 1);
}

TEST_F(Sorts, ListsOfMoreThan32767RowsSortWhole) {
  // Row i has code i, so that each row can be matched with its code afterwards.
  std::mt19937 random(5);
  const int n = 40000;
  for (int i = 0; i < n; ++i) {
    const Text label = numberText(static_cast<long long>(random() % 5000));
    c.Lst_Possible.AddItem(rows::textColumn(label) + rows::textColumn(u"") + rows::textColumn(u"") +
                           rows::proposalDuration(numberText(i)));
    c.Lst_CodePos.AddItem(numberText(i));
  }
  driver.Trie_Possible();
  ASSERT_EQ(c.Lst_Possible.ListCount(), n);
  for (int i = 0; i < n; ++i) {
    ASSERT_EQ(trimBlanks(mid(c.Lst_Possible.List(i), 79, 7)), c.Lst_CodePos.List(i)) << i;
    if (i > 0) {
      ASSERT_LE(c.Lst_Possible.List(i - 1), c.Lst_Possible.List(i)) << i;
    }
  }
}

TEST_F(Sorts, ShortCodeListFailsAsAnExchangeOfAMissingEntry) {
  const Text b = rows::textColumn(u"B") + rows::textColumn(u"") + rows::textColumn(u"") +
                 rows::proposalDuration(u"");
  const Text a = rows::textColumn(u"A") + rows::textColumn(u"") + rows::textColumn(u"") +
                 rows::proposalDuration(u"");
  c.Lst_Possible.AddItem(b);
  c.Lst_Possible.AddItem(a);
  c.Lst_CodePos.AddItem(u"B");
  try {
    driver.Trie_Possible();
    FAIL() << "expected an invalid call";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.number(), errors::kInvalidCall);
  }
}

}  // namespace
}  // namespace velmora
