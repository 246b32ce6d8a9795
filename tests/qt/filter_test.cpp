// The filter lines over the lists: a journey made with them gives the control and the host
// exactly what the same journey gives without them; typing in the filter of a catalogue
// of 32,767 care acts shows the rows that hold every word; the counts read in French.
#include "qt/list_filter.h"
#include "qt_support.h"

namespace velmora::testing {
namespace {

using qt::ListCount;

// What the control holds and what the host reads along a journey.
struct Outcome {
  std::vector<Snapshot> steps;
  std::vector<double> totals;
  int selections = 0;
  std::string record;
  friend bool operator==(const Outcome&, const Outcome&) = default;
};

QString countOf(const qt::VelmoraWidget& w, const char* name) {
  return w.findChild<QLabel*>(QString::fromUtf8(name))->text();
}

// Marks Aspirateur and Repassage, selects them, changes Aspirateur's duration to 25 and
// keeps the selection; with the filters, Repassage and Aspirateur are found by typing.
Outcome journey(const TempAccount& account, bool filters) {
  Session session;
  Ctr_VelmoraNew c{session};
  qt::VelmoraWidget w{c};
  Outcome out;
  QObject::connect(&w, &qt::VelmoraWidget::totalChanged,
                   [&](double t) { out.totals.push_back(t); });
  QObject::connect(&w, &qt::VelmoraWidget::selectionChanged, [&] { ++out.selections; });
  w.setFiltersVisible(filters);
  w.show();
  w.activateWindow();
  EXPECT_TRUE(QTest::qWaitForWindowActive(&w));
  qt::ListBoxView& possible = *qt::listViewOf(w, c.Lst_Possible);
  qt::ListBoxView& selected = *qt::listViewOf(w, c.Lst_Selectionne);
  auto* possibleFilter = w.findChild<QLineEdit*>(QStringLiteral("Filtre_Possible"));
  auto* selectedFilter = w.findChild<QLineEdit*>(QStringLiteral("Filtre_Selectionne"));
  EXPECT_EQ(possibleFilter->isVisible(), filters);
  const auto step = [&] {
    QCoreApplication::processEvents();
    out.steps.push_back(snapshot(c));
  };
  initClient(c, account);
  click(w.view(c.Cac_TouteTache));
  possible.setFocus(Qt::OtherFocusReason);
  QTest::keyClick(&possible, Qt::Key_Space);  // Aspirateur, the first row
  step();
  if (filters) {
    // A letter typed in the list goes on in its filter; case and accents do not count.
    QTest::keyClicks(&possible, QStringLiteral("RÉPASS"));
    EXPECT_EQ(QApplication::focusWidget(), possibleFilter);
    EXPECT_EQ(listShown(possible).rows, (std::vector{row("Ménage", "Linge", "Repassage", "45")}));
    EXPECT_EQ(countOf(w, "Compte_Possible"),
              QStringLiteral("1 sur 4 tâches · 1 marquée, dont 1 masquée"));
    QTest::keyClick(possibleFilter, Qt::Key_Down);
    EXPECT_EQ(QApplication::focusWidget(), &possible);
  } else {
    QTest::keyClick(&possible, Qt::Key_R);  // no filter shown: a letter does nothing
    EXPECT_TRUE(possibleFilter->text().isEmpty());
    QTest::keyClick(&possible, Qt::Key_Down);
    QTest::keyClick(&possible, Qt::Key_Down);
  }
  QTest::keyClick(&possible, Qt::Key_Space);
  step();
  QTest::keyClick(&possible, Qt::Key_Return);  // Sélectionner
  step();
  if (filters) {
    // The filter outlives the refill; Ctrl+F from the selection goes to its own filter.
    EXPECT_EQ(listShown(possible).rows.size(), 1u);
    selected.setFocus(Qt::OtherFocusReason);
    QTest::keyClick(&selected, Qt::Key_F, Qt::ControlModifier);
    EXPECT_EQ(QApplication::focusWidget(), selectedFilter);
    QTest::keyClicks(selectedFilter, QStringLiteral("aspi"));
    EXPECT_EQ(countOf(w, "Compte_Selectionne"), QStringLiteral("1 sur 2 choisies · 1h05"));
    QTest::keyClick(selectedFilter, Qt::Key_Down);
  }
  selected.setFocus(Qt::OtherFocusReason);
  QTest::keyClick(&selected, Qt::Key_Return);  // the edit of the row under the caret
  QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("25"));
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
  step();
  if (filters) {
    // Escape clears a filter, and every row is back in the control's order.
    QTest::keyClick(selectedFilter, Qt::Key_Escape);
    QTest::keyClick(possibleFilter, Qt::Key_Escape);
    EXPECT_EQ(countOf(w, "Compte_Possible"), QStringLiteral("4 tâches"));
  }
  expectScreenShows(w, c);
  c.MAJ_Enr();
  out.record = toUtf8(c.W_Enr->r());
  return out;
}

TEST(FilterJourney, WithTheFiltersTheControlAndTheHostEndAsWithout) {
  TempAccount account;
  putTaskCatalogue(account);
  const Outcome without = journey(account, false);
  const Outcome with = journey(account, true);
  EXPECT_EQ(with, without);
  EXPECT_EQ(without.steps.back().rows[0], row("Ménage", "Entretien", "Aspirateur", "25", ' '));
  EXPECT_EQ(without.totals, (std::vector<double>{65, 70}));
}

// A catalogue of 32,767 acts; one in seven is done "à domicile", beyond the 25 characters
// that the rows show of a label.
TEST_F(WidgetTest, TypingInTheFilterOfTheLargeCatalogueShowsTheRowsThatHoldEveryWord) {
  Batch batch;
  constexpr int kActs = 32767;
  // Codes 100000 to 132766: regroupment "10" to "13", type "1000" to "1327".
  const auto put = [&batch](std::u16string_view file, int code, const std::string& label,
                            std::vector<std::vector<std::string>> more = {}) {
    more.insert(more.begin(), {label});
    batch.putRecord(Text(file), fromUtf8(std::to_string(code)), makeRecord(more));
  };
  for (int r = 10; r <= 13; ++r) put(u"SSIADREGROUPSOINS", r, "Soins");
  for (int t = 1000; t <= 1327; ++t) put(u"SSIADTYPESOINS", t, "Pansements");
  for (int n = 0; n < kActs; ++n) {
    put(u"SSIADSOINS", 100000 + n,
        "Pansement simple n° " + std::to_string(n) + (n % 7 == 0 ? " à domicile" : " en cabinet"),
        {{}, {}, {"15"}});
  }
  account.apply(batch);
  w.setFiltersVisible(true);
  initClient(c, account, u"SSIAD");
  w.refreshLists();
  ASSERT_EQ(c.Lst_Possible.ListCount(), kActs);
  qt::ListBoxView& possible = listOf(c.Lst_Possible);
  auto* filter = w.findChild<QLineEdit*>(QStringLiteral("Filtre_Possible"));
  c.Lst_Possible.click(1);  // "en cabinet": hidden by the filter, still counted
  QTest::keyClicks(filter, QStringLiteral("PANS DOMIC"));
  const int atHome = (kActs + 6) / 7;
  ASSERT_EQ(possible.listModel().rowCount(), atHome);
  for (int shown = 0; shown < atHome; shown += 97) {
    const QString read = possible.listModel().index(shown).data(Qt::AccessibleTextRole).toString();
    EXPECT_TRUE(read.contains(QStringLiteral("à domicile"))) << read.toStdString();
  }
  EXPECT_EQ(countOf(w, "Compte_Possible"),
            QString::fromUtf8("4\u202F681 sur 32\u202F767 soins · 1 marqué, dont 1 masqué"));
  QTest::keyClicks(filter, QStringLiteral(" n° 7000"));
  EXPECT_EQ(listShown(possible).rows.size(), 1u);  // 7000 alone: 70000 and up are not there
  EXPECT_EQ(c.Lst_Possible.ListCount(), kActs);    // the control's list is left as it was
  EXPECT_TRUE(c.Lst_Possible.Selected(1));
  QTest::keyClick(filter, Qt::Key_Escape);
  EXPECT_EQ(possible.listModel().rowCount(), kActs);
}

TEST(FilterCount, ReadsInFrenchAndAgreesWithTheRows) {
  const std::vector<std::tuple<ListCount, bool, const char*>> proposals{
      {{32767, 32767, false, 2, 0}, true, "32\u202F767 soins · 2 marqués"},
      {{0, 40, true, 3, 1}, false, "0 sur 40 tâches · 3 marquées, dont 1 masquée"},
      {{2, 1234, true, 5, 2}, true, "2 sur 1\u202F234 soins · 5 marqués, dont 2 masqués"},
  };
  for (const auto& [count, care, text] : proposals) {
    EXPECT_EQ(qt::proposalsCount(count, care), QString::fromUtf8(text));
  }
  const auto selection = [](ListCount count, bool care, const char* total) {
    return qt::selectionCount(count, care, QString::fromUtf8(total)).toStdString();
  };
  EXPECT_EQ(selection({2, 1234, true}, true, "1h10"), "2 sur 1\u202F234 choisis · 1h10");
  EXPECT_EQ(selection({0, 0, false}, true, ""), "0 choisi");
}

}  // namespace
}  // namespace velmora::testing
