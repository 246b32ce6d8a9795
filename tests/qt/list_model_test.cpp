// The lists on screen: many rows arrive in one refresh, the view never reads past the
// list while a refresh is pending nor leaves its caret past it, changed rows are
// repainted, and the planner's clicks reach the rows they aim at.
#include "qt_support.h"

namespace velmora::testing {
namespace {

using qt::ListBoxModel;
using qt::ListBoxView;

class ListModel : public WidgetTest {
 protected:
  QString shown(int row) const { return model().index(row).data().toString(); }
  bool marked(int row) const { return model().index(row).data(ListBoxModel::kMarkedRole).toBool(); }
  const ListBoxModel& model() const { return listOf(c.Lst_Possible).listModel(); }
  // Rows "Ligne from" to "Ligne to - 1" added to the proposal.
  void addRows(int from, int to) {
    for (int i = from; i < to; ++i) c.Lst_Possible.AddItem(fromUtf8("Ligne " + std::to_string(i)));
  }
};

TEST_F(ListModel, RowsArriveInOneResetNoneIsReadPastTheListAndChangesAreRepainted) {
  QSignalSpy resets(&model(), &QAbstractItemModel::modelReset);
  addRows(0, 20000);
  c.Lst_Possible.setSelected(19999, true);
  // Nothing reaches the view until the event loop turns.
  EXPECT_EQ(model().rowCount(), 0);
  QCoreApplication::processEvents();
  EXPECT_EQ(resets.count(), 1);
  ASSERT_EQ(model().rowCount(), 20000);
  EXPECT_EQ(shown(19999), QStringLiteral("Ligne 19999"));
  EXPECT_TRUE(marked(19999));

  // Rows that go from under the keyboard caret leave it on the last row left; until then
  // the view still counts the old rows, the lost ones read empty and unmarked.
  listOf(c.Lst_Possible).placeCaret(19999);
  for (int i = 19999; i >= 5; --i) c.Lst_Possible.RemoveItem(i);
  EXPECT_EQ(model().rowCount(), 20000);
  EXPECT_EQ(shown(4), QStringLiteral("Ligne 4"));
  EXPECT_EQ(shown(9), QString());
  EXPECT_FALSE(marked(19999));
  QCoreApplication::processEvents();
  EXPECT_EQ(model().rowCount(), 5);
  EXPECT_EQ(listOf(c.Lst_Possible).caretRow(), 4);

  // A changed row and a new mark: one repaint from the first row to the last, no reset.
  QSignalSpy changes(&model(), &QAbstractItemModel::dataChanged);
  resets.clear();
  c.Lst_Possible.setList(4, u"Autre texte");
  c.Lst_Possible.setSelected(0, true);
  QCoreApplication::processEvents();
  EXPECT_EQ(resets.count(), 0);
  ASSERT_EQ(changes.count(), 1);
  EXPECT_EQ(changes.at(0).at(0).toModelIndex().row(), 0);
  EXPECT_EQ(changes.at(0).at(1).toModelIndex().row(), 4);
  EXPECT_EQ(shown(4), QStringLiteral("Autre texte"));
  EXPECT_TRUE(marked(0));
  EXPECT_FALSE(marked(4));
}

// A press reaches the row under it, even one that arrived since the last refresh; a press
// below the last row is no click on a row.
TEST_F(ListModel, AClickMarksTheRowUnderIt) {
  ASSERT_TRUE(WidgetTest::shown());
  ListBoxView& possible = listOf(c.Lst_Possible);
  addRows(0, 1);
  QCoreApplication::processEvents();
  const QRect first = possible.rowRect(0);
  addRows(1, 4);
  QTest::mouseClick(possible.viewport(), Qt::LeftButton, {},
                    first.center() + QPoint(0, 3 * first.height()));
  EXPECT_TRUE(c.Lst_Possible.Selected(3));
  QTest::mouseClick(possible.viewport(), Qt::LeftButton, {}, possible.rowRect(1).center());
  QTest::mouseClick(possible.viewport(), Qt::LeftButton, {},
                    QPoint(10, possible.rowRect(3).bottom() + 20));
  EXPECT_EQ(c.Lst_Possible.ListIndex(), 1);
  EXPECT_TRUE(c.Lst_Possible.Selected(3));
}

}  // namespace
}  // namespace velmora::testing
