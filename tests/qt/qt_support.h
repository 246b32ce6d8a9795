// What the widget tests share, beside the control tests' fixture: an account with a small
// task catalogue, a step of everything a journey touches, the planner's hand on real
// widgets, and one fixture.
#pragma once

#include <algorithm>

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <velmora/qt/velmora_widget.h>
#include "control/fixture.h"
#include "qt/velmora_widget_private.h"

namespace velmora::testing {

// Everything a step of a journey can change: what the control's tests compare of the
// selection, and the proposal's rows and marks and the edited duration.
struct Step : Snapshot {
  Rows possible;
  std::vector<int> marked;
  std::string dureeSoin;
  friend bool operator==(const Step&, const Step&) = default;
};

inline Step step(const Ctr_VelmoraNew& c) {
  Step s{snapshot(c), items(c.Lst_Possible), {}, toUtf8(c.Txt_DureeSoin.getText())};
  for (int i = 0; i < c.Lst_Possible.ListCount(); ++i) {
    if (c.Lst_Possible.Selected(i)) s.marked.push_back(i);
  }
  return s;
}

// What a list shows: its rows, those it paints highlighted, and those its selection model
// holds (what a screen reader hears as selected).
struct ListShown {
  std::vector<std::string> rows;
  std::vector<int> highlighted, selected;
  friend bool operator==(const ListShown&, const ListShown&) = default;
};

inline ListShown listShown(const qt::ListBoxView& view) {
  ListShown shown;
  for (int i = 0; i < view.listModel().rowCount(); ++i) {
    const QModelIndex row = view.listModel().index(i);
    shown.rows.push_back(row.data().toString().toStdString());
    if (row.data(Qt::BackgroundRole).isValid()) shown.highlighted.push_back(i);
  }
  for (const QModelIndex& index : view.selectionModel()->selectedIndexes()) {
    shown.selected.push_back(index.row());
  }
  std::sort(shown.selected.begin(), shown.selected.end());
  return shown;
}

// The screen shows what the toolkit objects hold, once the lists have caught up: the rows,
// marks and current row of the lists, the tick, the texts, the warning, and which of the
// edit's children are enabled.
inline void expectScreenShows(const qt::VelmoraWidget& w, const Ctr_VelmoraNew& c) {
  QCoreApplication::processEvents();
  const Step s = step(c);
  const std::vector<int> current = s.current < 0 ? std::vector<int>{} : std::vector<int>{s.current};
  EXPECT_EQ(listShown(*qt::listViewOf(w, c.Lst_Possible)),
            (ListShown{s.possible, s.marked, s.marked}));
  EXPECT_EQ(listShown(*qt::listViewOf(w, c.Lst_Selectionne)),
            (ListShown{s.rows, current, current}));
  EXPECT_EQ(listShown(*qt::listViewOf(w, c.Lst_CodeSelect)).rows, s.codes);
  EXPECT_EQ(qobject_cast<QCheckBox*>(w.view(c.Cac_TouteTache))->isChecked(),
            c.Cac_TouteTache.Value() == 1);
  const auto text = [&](const toolkit::Control& box) {
    return qobject_cast<QLineEdit*>(w.view(box))->text().toStdString();
  };
  EXPECT_EQ(text(c.Txt_Duree), s.duree);
  EXPECT_EQ(text(c.Txt_DureeSoin), s.dureeSoin);
  EXPECT_EQ(w.view(c.Etq_Imperativite)->isVisibleTo(&w), s.imperative);
  const auto children = editChildren(c);
  for (std::size_t i = 0; i < children.size(); ++i) {
    EXPECT_EQ(w.view(*children[i])->isEnabled(), s.buttons[i] == '1') << children[i]->name();
  }
}

// The text of a count beside a filter line.
inline QString countOf(const qt::VelmoraWidget& w, const char* name) {
  return w.findChild<QLabel*>(QString::fromUtf8(name))->text();
}

// The journeys' catalogue: two types, three groups, four tasks, Repassage mandatory; the
// rows show the type key, the group key and the task key.
inline void putTaskCatalogue(TempAccount& account) {
  account.put("TYPETACHE", "Ménage", {{"1"}});
  account.put("TYPETACHE", "Repas", {{"2"}});
  account.put("GROUPETACHE", "Entretien", {{"1"}, {"Ménage"}});
  account.put("GROUPETACHE", "Linge", {{"2"}, {"Ménage"}});
  account.put("GROUPETACHE", "Cuisine", {{"1"}, {"Repas"}});
  account.put("TACHE", "Aspirateur", {{"1"}, {"Entretien"}, {""}, {"N"}, {"20"}});
  account.put("TACHE", "Vaisselle", {{"2"}, {"Entretien"}, {""}, {""}, {"15"}});
  account.put("TACHE", "Repassage", {{"1"}, {"Linge"}, {""}, {"O"}, {"45"}});
  account.put("TACHE", "Déjeuner", {{"1"}, {"Cuisine"}, {""}, {"N"}, {"30"}});
}

// Init for client 00001, who has no template and no task list: both lists start empty.
inline void initClient(Ctr_VelmoraNew& c, const TempAccount& account,
                       const Text& typeAct = u"AUTRE") {
  c.TheDatabase(account.open());
  InitArguments a{typeAct, u"00001", u"23/11/2026", u"23/11/2026", u"0800", u"1000", u"0100000"};
  c.Init(a);
}

// Runs action on the next modal widget once it is up, from inside its own event loop.
inline void whenModal(std::function<void(QWidget&)> action, int attempts = 300) {
  QTimer::singleShot(10, qApp, [action = std::move(action), attempts]() mutable {
    if (QWidget* modal = QApplication::activeModalWidget()) {
      action(*modal);
    } else if (attempts > 0) {
      whenModal(std::move(action), attempts - 1);
    } else {
      ADD_FAILURE() << "no modal widget appeared";
    }
  });
}

inline void click(QWidget* widget) {
  ASSERT_NE(widget, nullptr);
  QTest::mouseClick(widget, Qt::LeftButton);
}

// The next question box, once up, is checked and closed by how.
inline void whenBox(std::function<void(QMessageBox&)> how) {
  whenModal([how = std::move(how)](QWidget& modal) {
    auto* box = qobject_cast<QMessageBox*>(&modal);
    ASSERT_NE(box, nullptr);
    how(*box);
  });
}

// The fixture of the widget tests: an account with the journeys' catalogue, and the host's
// control, on a session of its own, in a widget not yet shown.
class WidgetTest : public ::testing::Test {
 protected:
  void SetUp() override { putTaskCatalogue(account); }

  // Shows the widget and waits until it is on screen, and active when keys must reach it.
  [[nodiscard]] bool shown(bool active = false) {
    w.show();
    if (!QTest::qWaitForWindowExposed(&w)) return false;
    if (!active) return true;
    w.activateWindow();
    return QTest::qWaitForWindowActive(&w);
  }
  // The view of a child, as the Qt class that shows its kind.
  template <typename W>
  W* viewOf(const toolkit::Control& child) const {
    auto* view = qobject_cast<W*>(w.view(child));
    EXPECT_NE(view, nullptr) << child.name();
    return view;
  }
  qt::ListBoxView& listOf(const toolkit::ListBox& list) const { return *qt::listViewOf(w, list); }

  TempAccount account;
  Session session;
  Ctr_VelmoraNew c{session};
  qt::VelmoraWidget w{c};
};

}  // namespace velmora::testing
