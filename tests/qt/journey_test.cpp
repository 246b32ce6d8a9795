// One planner's journey on the Qt widgets, the question box and the observations dialog,
// by mouse and keyboard: the lists and totals written out by hand, the widgets showing
// what the toolkit objects hold, and the host told of each change of the total once.
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>

#include "control/inspection.h"
#include "qt_support.h"

namespace velmora::testing {
namespace {

using qt::VelmoraWidget;

// The observations dialog as designed, on the row of Repassage: a fixed, centred, modal
// box that shows the row's task, read only, above the observation.
void expectObservationsDialogAsDesigned(QWidget& dialog) {
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

TEST(WidgetJourney, TheMouseAndTheKeysLeaveTheListsTotalsAndRecordThePlannerMade) {
  Session::processDefault().state().clear();
  TempAccount account;
  putTaskCatalogue(account);
  int questions = 0;
  int dialogs = 0;
  std::vector<Snapshot> s;
  std::vector<double> totals;  // as the host is told of them, once per gesture
  std::vector<bool> mandatory;
  int selections = 0;
  {
    Ctr_VelmoraNew c;
    VelmoraWidget w(c);
    w.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&w));
    w.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&w));
    QObject::connect(&w, &VelmoraWidget::totalChanged, [&](double t) { totals.push_back(t); });
    QObject::connect(&w, &VelmoraWidget::mandatoryChanged, [&](bool m) { mandatory.push_back(m); });
    QObject::connect(&w, &VelmoraWidget::selectionChanged, [&] { ++selections; });
    qt::ListBoxView& possible = *qt::listViewOf(w, c.Lst_Possible);
    qt::ListBoxView& selected = *qt::listViewOf(w, c.Lst_Selectionne);
    QWidget* dureeSoin = w.view(c.Txt_DureeSoin);
    const auto record = [&] {
      s.push_back(snapshot(c));
      SCOPED_TRACE("step " + std::to_string(s.size() - 1));
      expectScreenShows(w, c);
    };
    const auto key = [](QWidget* widget, Qt::Key k) { QTest::keyClick(widget, k); };

    initClient(c, account);
    click(w.view(c.Cac_TouteTache));
    record();
    EXPECT_EQ(w.property("kind").toString(), QStringLiteral("AUTRE"));
    key(&possible, Qt::Key_Space);  // the caret starts on the first row
    key(&possible, Qt::Key_Down);
    key(&possible, Qt::Key_Down);
    key(&possible, Qt::Key_Space);
    record();
    // Tab order: Cmd_Select comes just before Lst_Possible.
    possible.setFocus(Qt::TabFocusReason);
    key(&possible, Qt::Key_Backtab);
    EXPECT_EQ(QApplication::focusWidget(), w.view(c.Cmd_Select));
    key(QApplication::focusWidget(), Qt::Key_Space);
    record();
    key(&possible, Qt::Key_End);
    key(&possible, Qt::Key_Space);
    key(&possible, Qt::Key_Return);  // Sélectionner
    record();
    QTest::mouseDClick(selected.viewport(), Qt::LeftButton, {}, selected.rowRect(0).center());
    record();
    // A double-click on "20" selects it; typing replaces it (the letter is refused). A click
    // at the left edge puts the caret before the text, the digit goes in there, and Delete
    // takes the one behind.
    QTest::mouseDClick(dureeSoin, Qt::LeftButton);
    QTest::keyClicks(dureeSoin, QStringLiteral("x45"));
    EXPECT_EQ(c.Txt_DureeSoin.getText(), u"45");
    QTest::mouseClick(dureeSoin, Qt::LeftButton, {}, QPoint(2, dureeSoin->height() / 2));
    QTest::keyClicks(dureeSoin, QStringLiteral("2"));
    EXPECT_EQ(c.Txt_DureeSoin.getText(), u"245");
    key(dureeSoin, Qt::Key_Delete);
    click(w.view(c.Cmd_OKVelmora));
    record();

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

    const auto answer = [&](const std::function<void(QMessageBox&)>& how) {
      whenModal([&questions, how](QWidget& modal) {
        ++questions;
        auto* box = qobject_cast<QMessageBox*>(&modal);
        ASSERT_NE(box, nullptr);
        EXPECT_EQ(box->text(), QStringLiteral("Etes-vous sûr de vouloir supprimer cette tâche ?"));
        how(*box);
      });
    };
    answer([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); });  // No
    key(w.view(c.Cmd_SupprVelmora), Qt::Key_Space);
    record();
    answer([](QMessageBox& box) { click(box.button(QMessageBox::Yes)); });
    click(w.view(c.Cmd_SupprVelmora));
    record();
    c.MAJ_Enr();
    EXPECT_EQ(c.W_Enr->DCount(), 2);
    EXPECT_EQ(w.property("total").toDouble(), 55.0);
  }
  Session::processDefault().state().clear();
  ASSERT_EQ(s.size(), 10u);
  EXPECT_EQ(questions, 2);
  EXPECT_EQ(dialogs, 2);
  EXPECT_EQ(totals, (std::vector<double>{65, 95, 100, 55}));
  EXPECT_EQ(mandatory, (std::vector<bool>{true, false}));
  EXPECT_EQ(selections, 6);  // Init, Select, Return, OK, the observation, Yes: not No nor Annuler

  EXPECT_EQ(s[0].possible.front(), row("Ménage", "Entretien", "Aspirateur", "20"));
  EXPECT_EQ(s[1].marked, (std::vector<int>{0, 2}));
  EXPECT_EQ(s[2].rows.back(), row("Ménage", "Linge", "Repassage", "45", ' '));
  EXPECT_EQ(s[2].duree, "1h05");
  EXPECT_TRUE(s[2].imperative);
  EXPECT_EQ(s[3].rows.back(), row("Repas", "Cuisine", "Déjeuner", "30", ' '));
  EXPECT_EQ(s[4].dureeSoin, "20");
  EXPECT_EQ(s[4].current, 0);
  EXPECT_EQ(s[4].enabled, (std::vector<bool>{true, true, true, true, true, true, false}));
  EXPECT_EQ(s[5].rows[0], row("Ménage", "Entretien", "Aspirateur", "25", ' '));
  EXPECT_EQ(s[5].total, "100");
  EXPECT_EQ(s[5].current, -1);
  EXPECT_EQ(s[6].rows[1], row("Ménage", "Linge", "Repassage", "45", 'X'));
  // Lines end as the host platform writes them.
  EXPECT_EQ(s[6].obs, (std::vector<std::string>{"", "Linge\r\nfragile", ""}));
  EXPECT_EQ(s[6].current, 1);
  EXPECT_EQ(s[7], s[6]);  // Annuler: nothing changes
  EXPECT_EQ(s[8], s[6]);  // answered No: nothing changes
  EXPECT_EQ(s[9].rows.back(), row("Repas", "Cuisine", "Déjeuner", "30", ' '));
  EXPECT_EQ(s[9].total, "55");
  EXPECT_FALSE(s[9].imperative);
}

}  // namespace
}  // namespace velmora::testing
