// The filter lines over the lists (the widget journey types in both): typing in the filter
// of a catalogue of 32,767 care acts shows the rows that hold every word, and the counts
// read in French.
#include "qt/list_filter.h"
#include "qt_support.h"

namespace velmora::testing {
namespace {

using qt::ListCount;

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
