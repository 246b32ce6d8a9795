// One planner's journey on the Qt widgets, the filter lines, the question box and the
// observations dialog, by mouse and keyboard: the lists and totals written out by hand, the
// widgets showing what the toolkit objects hold, the focus where the next key goes, and
// the host told of each change of the total once.
#include <QScreen>

#include "qt_support.h"

namespace velmora::testing {
namespace {

using qt::VelmoraWidget;
using WidgetJourney = WidgetTest;
using Focus = WidgetTest;

// The observations dialog as designed, on the row of Repassage: a fixed, centred, modal
// box that shows the row's task, read only, above the observation; a screen reader names
// its boxes by their labels and its buttons by their captions.
void expectObservationsDialogAsDesigned(QWidget& dialog) {
  const std::vector<std::pair<const char*, const char*>> names{
      {"Txt_Type", "Type"},        {"Txt_Groupe", "Groupe"}, {"Txt_Tache", "Tâche"},
      {"Txt_Obs", "Observations"}, {"Cmd_OkObs", "OK"},      {"Cmd_AnnulerObs", "Annuler"}};
  for (const auto& [object, name] : names) {
    auto* child = dialog.findChild<QWidget*>(QString::fromUtf8(object));
    ASSERT_NE(child, nullptr) << object;
    EXPECT_EQ(QAccessible::queryAccessibleInterface(child)->text(QAccessible::Name),
              QString::fromUtf8(name));
  }
  EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Observations sur la tâche"));
  EXPECT_EQ(dialog.size(), QSize(401, 281));
  EXPECT_EQ(dialog.minimumSize(), dialog.maximumSize());
  EXPECT_TRUE(dialog.isModal());
  const QPoint offCentre =
      dialog.frameGeometry().center() - dialog.screen()->availableGeometry().center();
  EXPECT_LE(offCentre.manhattanLength(), 4) << offCentre.x() << "," << offCentre.y();
  auto* task = dialog.findChild<QLineEdit*>(QStringLiteral("Txt_Tache"));
  ASSERT_NE(task, nullptr);
  EXPECT_EQ(task->text(), QStringLiteral("Repassage                "));
  EXPECT_TRUE(task->isReadOnly());
}

TEST_F(Focus, TheFocusedCheckBoxIsDrawnFromTheStart) {
  ASSERT_TRUE(shown(true));
  QWidget* box = w.view(c.Cac_TouteTache);
  box->setFocus(Qt::OtherFocusReason);
  const QImage focusedImage = box->grab().toImage();
  w.view(c.Lst_Possible)->setFocus(Qt::OtherFocusReason);
  EXPECT_NE(focusedImage, box->grab().toImage());
}

TEST_F(WidgetJourney, TheMouseAndTheKeysLeaveTheListsTotalsFocusAndRecordThePlannerMade) {
  ASSERT_TRUE(shown(true));
  int questions = 0;
  int dialogs = 0;
  int selections = 0;
  std::vector<Step> s;
  std::vector<double> totals;  // as the host is told of them, once per gesture
  std::vector<bool> mandatory;
  QObject::connect(&w, &VelmoraWidget::totalChanged, [&](double t) { totals.push_back(t); });
  QObject::connect(&w, &VelmoraWidget::mandatoryChanged, [&](bool m) { mandatory.push_back(m); });
  QObject::connect(&w, &VelmoraWidget::selectionChanged, [&] { ++selections; });
  qt::ListBoxView& possible = listOf(c.Lst_Possible);
  qt::ListBoxView& selected = listOf(c.Lst_Selectionne);
  auto* dureeSoin = viewOf<QLineEdit>(c.Txt_DureeSoin);
  const auto record = [&] {
    s.push_back(step(c));
    SCOPED_TRACE("step " + std::to_string(s.size() - 1));
    expectScreenShows(w, c);
  };
  const auto key = [](QWidget* widget, Qt::Key k) { QTest::keyClick(widget, k); };
  // Focus comes back once the window is active again after a dialog or a question.
  const auto focusGoesTo = [](QWidget* widget) {
    return QTest::qWaitFor([widget] { return QApplication::focusWidget() == widget; });
  };

  initClient(c, account);
  click(w.view(c.Cac_TouteTache));
  record();
  EXPECT_EQ(w.property("kind").toString(), QStringLiteral("AUTRE"));
  key(&possible, Qt::Key_Space);  // the caret starts on the first row
  key(&possible, Qt::Key_Down);
  key(&possible, Qt::Key_Down);
  key(&possible, Qt::Key_Space);
  key(&possible, Qt::Key_R);  // no filter shown: a letter moves nothing
  EXPECT_EQ(possible.caretRow(), 2);
  record();
  // Tab order: Cmd_Select comes just before Lst_Possible; after it the planner goes on there.
  possible.setFocus(Qt::TabFocusReason);
  key(&possible, Qt::Key_Backtab);
  EXPECT_EQ(QApplication::focusWidget(), w.view(c.Cmd_Select));
  key(QApplication::focusWidget(), Qt::Key_Space);
  EXPECT_EQ(QApplication::focusWidget(), &possible);
  record();
  // A letter typed in the list goes on in its filter, case and accents aside; Down goes back
  // to the rows it shows, Return is Sélectionner, and the filter outlives the refill.
  w.setFiltersVisible(true);
  auto* possibleFilter = w.findChild<QLineEdit*>(QStringLiteral("Filtre_Possible"));
  QTest::keyClicks(&possible, QStringLiteral("DÉJ"));
  EXPECT_EQ(QApplication::focusWidget(), possibleFilter);
  EXPECT_EQ(listShown(possible).rows,
            (std::vector{catalogueRow("Repas", "Cuisine", "Déjeuner", "30")}));
  EXPECT_EQ(countOf(w, "Compte_Possible"), QStringLiteral("1 sur 4 tâches"));
  key(possibleFilter, Qt::Key_Down);
  EXPECT_EQ(QApplication::focusWidget(), &possible);
  key(&possible, Qt::Key_Space);
  key(&possible, Qt::Key_Return);
  EXPECT_EQ(listShown(possible).rows.size(), 1u);
  key(possibleFilter, Qt::Key_Escape);  // every row back, in the control's order
  EXPECT_EQ(countOf(w, "Compte_Possible"), QStringLiteral("4 tâches"));
  record();
  // The edit takes the focus with the duration chosen, ready to be typed over.
  QTest::mouseDClick(selected.viewport(), Qt::LeftButton, {}, selected.rowRect(0).center());
  EXPECT_EQ(QApplication::focusWidget(), dureeSoin);
  EXPECT_EQ(dureeSoin->selectedText(), QStringLiteral("20"));
  record();
  // A double-click on "20" selects it; typing replaces it (the letter is refused). A click
  // at the left edge puts the caret before the text, the digit goes in there, and Delete
  // takes the one behind; Return is OK, and the selection has the focus on the edited row.
  QTest::mouseDClick(dureeSoin, Qt::LeftButton);
  QTest::keyClicks(dureeSoin, QStringLiteral("x45"));
  EXPECT_EQ(c.Txt_DureeSoin.getText(), u"45");
  QTest::mouseClick(dureeSoin, Qt::LeftButton, {}, QPoint(2, dureeSoin->height() / 2));
  QTest::keyClicks(dureeSoin, QStringLiteral("2"));
  EXPECT_EQ(c.Txt_DureeSoin.getText(), u"245");
  key(dureeSoin, Qt::Key_Delete);
  key(dureeSoin, Qt::Key_Return);
  EXPECT_EQ(QApplication::focusWidget(), &selected);
  EXPECT_EQ(selected.caretRow(), 0);
  record();
  // Ctrl+F goes to the selection's filter; Down back to the one row it shows, Repassage,
  // whose edit Return opens; Escape is Annuler: nothing changes, the caret stays on the row.
  auto* selectedFilter = w.findChild<QLineEdit*>(QStringLiteral("Filtre_Selectionne"));
  QTest::keyClick(&selected, Qt::Key_F, Qt::ControlModifier);
  EXPECT_EQ(QApplication::focusWidget(), selectedFilter);
  QTest::keyClicks(selectedFilter, QStringLiteral("linge"));
  EXPECT_EQ(countOf(w, "Compte_Selectionne"), QStringLiteral("1 sur 3 choisies · 1h40"));
  key(selectedFilter, Qt::Key_Down);
  key(&selected, Qt::Key_Return);
  EXPECT_EQ(QApplication::focusWidget(), dureeSoin);
  EXPECT_EQ(dureeSoin->selectedText(), QStringLiteral("45"));
  key(dureeSoin, Qt::Key_Escape);
  EXPECT_EQ(QApplication::focusWidget(), &selected);
  EXPECT_EQ(selected.caretRow(), 1);
  key(selectedFilter, Qt::Key_Escape);  // every row back, the caret still on Repassage
  EXPECT_EQ(selected.caretRow(), 1);
  record();
  // An edit the host opens on another row: when it ends, the caret goes to that row.
  c.Lst_Selectionne.doubleClick(0);
  key(dureeSoin, Qt::Key_Escape);
  EXPECT_EQ(selected.caretRow(), 0);

  // End, then Down held at the last row, then Up: the middle row of three.
  key(&selected, Qt::Key_End);
  key(&selected, Qt::Key_Down);
  key(&selected, Qt::Key_Up);
  // Two lines typed; the close box and Escape are refused; Tab, then the space bar on OK.
  whenModal([&](QWidget& dialog) {
    ++dialogs;
    expectObservationsDialogAsDesigned(dialog);
    QWidget* obs = dialog.focusWidget();
    ASSERT_NE(obs, nullptr);
    EXPECT_EQ(obs->objectName(), QStringLiteral("Txt_Obs"));
    QTest::keyClicks(obs, QStringLiteral("Linge"));
    QTest::keyClick(obs, Qt::Key_Return);
    QTest::keyClicks(obs, QStringLiteral("fragile"));
    EXPECT_FALSE(dialog.close());
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_EQ(QApplication::activeModalWidget(), &dialog);
    QTest::keyClick(obs, Qt::Key_Tab);
    QWidget* ok = dialog.focusWidget();
    EXPECT_EQ(ok->objectName(), QStringLiteral("Cmd_OkObs"));
    QTest::keyClick(ok, Qt::Key_Space);
  });
  key(w.view(c.Cmd_Obs), Qt::Key_Space);
  EXPECT_TRUE(focusGoesTo(&selected));
  record();
  // Opened again, it shows both lines; emptied, then Annuler: nothing changes.
  whenModal([&](QWidget& dialog) {
    ++dialogs;
    auto* obs = dialog.findChild<QPlainTextEdit*>(QStringLiteral("Txt_Obs"));
    EXPECT_EQ(obs->toPlainText(), QStringLiteral("Linge\nfragile"));
    obs->selectAll();
    QTest::keyClick(obs, Qt::Key_Delete);
    click(dialog.findChild<QPushButton*>(QStringLiteral("Cmd_AnnulerObs")));
  });
  click(w.view(c.Cmd_Obs));
  record();

  // Delete on the selection is Supprimer: answered No by Escape, then Yes.
  const auto answer = [&](std::function<void(QMessageBox&)> how) {
    whenBox([&questions, how = std::move(how)](QMessageBox& box) {
      ++questions;
      EXPECT_EQ(box.text(), QStringLiteral("Etes-vous sûr de vouloir supprimer cette tâche ?"));
      how(box);
    });
  };
  answer([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); });
  key(&selected, Qt::Key_Delete);
  record();
  answer([](QMessageBox& box) { click(box.button(QMessageBox::Yes)); });
  click(w.view(c.Cmd_SupprVelmora));
  EXPECT_TRUE(focusGoesTo(&selected));
  EXPECT_EQ(selected.caretRow(), 1);  // on Déjeuner, which took the removed row's place
  record();
  c.MAJ_Enr();
  EXPECT_EQ(c.W_Enr->DCount(), 2);
  EXPECT_EQ(w.property("total").toDouble(), 55.0);

  ASSERT_EQ(s.size(), 11u);
  EXPECT_EQ(questions, 2);
  EXPECT_EQ(dialogs, 2);
  EXPECT_EQ(totals, (std::vector<double>{65, 95, 100, 55}));
  EXPECT_EQ(mandatory, (std::vector<bool>{true, false}));
  EXPECT_EQ(selections, 6);  // Init, Select, Return, OK, the observation, Yes: not No nor Annuler

  EXPECT_EQ(s[0].possible.front(), catalogueRow("Ménage", "Entretien", "Aspirateur", "20"));
  EXPECT_EQ(s[1].marked, (std::vector<int>{0, 2}));
  EXPECT_EQ(s[2].rows.back(), selectedRow("Ménage", "Linge", "Repassage", false, "45"));
  EXPECT_EQ(s[2].duree, "1h05");
  EXPECT_TRUE(s[2].imperative);
  EXPECT_EQ(s[3].rows.back(), selectedRow("Repas", "Cuisine", "Déjeuner", false, "30"));
  EXPECT_EQ(s[4].dureeSoin, "20");
  EXPECT_EQ(s[4].current, 0);
  EXPECT_EQ(s[4].buttons, "1111110");
  EXPECT_EQ(s[5].rows[0], selectedRow("Ménage", "Entretien", "Aspirateur", false, "25"));
  EXPECT_EQ(s[5].total, "100");
  EXPECT_EQ(s[5].current, -1);
  EXPECT_EQ(s[6], s[5]);  // Annuler: nothing changes
  EXPECT_EQ(s[7].rows[1], selectedRow("Ménage", "Linge", "Repassage", true, "45"));
  // Lines end as the host platform writes them.
  EXPECT_EQ(s[7].obs, (std::vector<std::string>{"", "Linge\r\nfragile", ""}));
  EXPECT_EQ(s[7].current, 1);
  EXPECT_EQ(s[8], s[7]);  // the dialog's Annuler: nothing changes
  EXPECT_EQ(s[9], s[7]);  // answered No: nothing changes
  EXPECT_EQ(s[10].rows.back(), selectedRow("Repas", "Cuisine", "Déjeuner", false, "30"));
  EXPECT_EQ(s[10].total, "55");
  EXPECT_FALSE(s[10].imperative);
}

}  // namespace
}  // namespace velmora::testing
