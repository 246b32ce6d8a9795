// The lists on screen: many rows arrive in one refresh, the view never reads past the
// list while a refresh is pending, and marks and the current row show as the toolkit
// holds them.
#include <QSignalSpy>

#include "control/module_slots.h"
#include "qt/control_views.h"
#include "qt_support.h"

namespace velmora::testing {
namespace {

using qt::ListBoxModel;
using qt::ListBoxView;

Text numbered(int i) {
  return fromUtf8("Ligne " + std::to_string(i));
}

class ListModel : public ::testing::Test {
 protected:
  void SetUp() override { Variable::resetAll(); }
  void TearDown() override { Variable::resetAll(); }

  QString shown(int row) const {
    return model().data(model().index(row), Qt::DisplayRole).toString();
  }
  bool marked(int row) const {
    return model().data(model().index(row), ListBoxModel::kMarkedRole).toBool();
  }
  const ListBoxModel& model() const { return w.listView(ctl.Lst_Possible)->listModel(); }

  Ctr_VelmoraNew ctl;
  qt::VelmoraWidget w{ctl};
};

TEST_F(ListModel, TwentyThousandRowsArriveInOneReset) {
  QSignalSpy resets(&model(), &QAbstractItemModel::modelReset);
  for (int i = 0; i < 20000; ++i) ctl.Lst_Possible.AddItem(numbered(i));
  // Nothing reaches the view until the event loop turns.
  EXPECT_EQ(model().rowCount(), 0);
  EXPECT_EQ(resets.count(), 0);
  QCoreApplication::processEvents();
  EXPECT_EQ(resets.count(), 1);
  ASSERT_EQ(model().rowCount(), 20000);
  EXPECT_EQ(shown(0), QStringLiteral("Ligne 0"));
  EXPECT_EQ(shown(19999), QStringLiteral("Ligne 19999"));
  EXPECT_TRUE(w.listView(ctl.Lst_Possible)->uniformItemSizes());
  EXPECT_TRUE(w.listView(ctl.Lst_Selectionne)->uniformItemSizes());
}

TEST_F(ListModel, AViewNeverReadsPastTheListWhileARefreshIsPending) {
  for (int i = 0; i < 10; ++i) ctl.Lst_Possible.AddItem(numbered(i));
  ctl.Lst_Possible.setSelected(9, true);
  QCoreApplication::processEvents();
  ASSERT_EQ(model().rowCount(), 10);
  EXPECT_TRUE(marked(9));

  for (int i = 9; i >= 5; --i) ctl.Lst_Possible.RemoveItem(i);
  // The view still counts ten rows; the lost ones read empty and unmarked.
  EXPECT_EQ(model().rowCount(), 10);
  EXPECT_EQ(shown(4), QStringLiteral("Ligne 4"));
  EXPECT_EQ(shown(9), QString());
  EXPECT_FALSE(marked(9));
  QCoreApplication::processEvents();
  EXPECT_EQ(model().rowCount(), 5);

  ctl.Lst_Possible.Clear();
  EXPECT_EQ(shown(0), QString());
  QCoreApplication::processEvents();
  EXPECT_EQ(model().rowCount(), 0);
}

TEST_F(ListModel, RewrittenRowsAndMarksRefreshWithoutAReset) {
  for (int i = 0; i < 3; ++i) ctl.Lst_Possible.AddItem(numbered(i));
  QCoreApplication::processEvents();
  QSignalSpy resets(&model(), &QAbstractItemModel::modelReset);
  QSignalSpy changes(&model(), &QAbstractItemModel::dataChanged);
  ctl.Lst_Possible.setList(1, u"Autre texte");
  ctl.Lst_Possible.setSelected(2, true);
  ctl.Lst_Possible.swapRows(0, 2);
  QCoreApplication::processEvents();
  EXPECT_EQ(resets.count(), 0);
  EXPECT_EQ(changes.count(), 1);
  EXPECT_EQ(shown(0), QStringLiteral("Ligne 2"));
  EXPECT_EQ(shown(1), QStringLiteral("Autre texte"));
  EXPECT_EQ(shown(2), QStringLiteral("Ligne 0"));
  EXPECT_TRUE(marked(0));
  EXPECT_FALSE(marked(1));
  EXPECT_FALSE(marked(2));
}

TEST_F(ListModel, AClickTogglesTheMarkOfTheMultiSelectListAndChoosesTheRowOfTheOther) {
  w.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&w));
  for (int i = 0; i < 4; ++i) {
    ctl.Lst_Possible.AddItem(numbered(i));
    ctl.Lst_CodePos.AddItem(numbered(i));
  }
  ListBoxView& possible = *w.listView(ctl.Lst_Possible);
  clickRow(possible, 1);
  clickRow(possible, 3);
  EXPECT_TRUE(ctl.Lst_Possible.Selected(1));
  EXPECT_TRUE(ctl.Lst_Possible.Selected(3));
  EXPECT_FALSE(ctl.Lst_Possible.Selected(0));
  EXPECT_EQ(ctl.Lst_Possible.ListIndex(), 3);
  clickRow(possible, 1);  // a second click takes the mark off again
  EXPECT_FALSE(ctl.Lst_Possible.Selected(1));
  EXPECT_TRUE(ctl.Lst_Possible.Selected(3));
  QCoreApplication::processEvents();
  EXPECT_FALSE(marked(1));
  EXPECT_TRUE(marked(3));
  EXPECT_EQ(ctl.Lst_Possible.ListIndex(), 1);
  // A click below the last row is no click on a row.
  QTest::mouseClick(possible.viewport(), Qt::LeftButton, {},
                    QPoint(10, possible.rowRect(3).bottom() + 20));
  EXPECT_EQ(ctl.Lst_Possible.ListIndex(), 1);
  EXPECT_TRUE(ctl.Lst_Possible.Selected(3));
}

}  // namespace
}  // namespace velmora::testing
