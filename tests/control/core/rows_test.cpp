// The rows' layout, the total shown in hours and minutes, and the mandatory-task label.
#include <velmora/store/sqlite_database.h>
#include "control/core/ctr_driver.h"
#include "control/fixture.h"
#include "rows/row_format.h"

namespace velmora::testing {
namespace {

using rows::readBack;

// The journeys see the columns and durations written; here, what they do not reach.
TEST(RowFormat, ColumnsAndDurationsHaveTheirPlaces) {
  // 25 characters at most, accented letters one each, padded to 26.
  EXPECT_EQ(rows::textColumn(u"Tâche à réaliser chez élève"), u"Tâche à réaliser chez élè ");
  const std::vector<std::pair<Text, Text>> cases{
      {rows::proposalDuration(u" 30"), u"     30"},  // not trimmed
      {rows::rowDuration(Text(78, u'a')), u""},      // too short for a duration
      {rows::rowDuration(Text(78, u'a') + u"     30  *"), u"30"},
      {rows::rowDuration(Text(78, u'a') + u"X    45"), u"45"},
      {rows::rowDuration(Text(78, u'a') + u"1234567"), u"34567"},  // 81 to 85 only
  };
  for (std::size_t i = 0; i < cases.size(); ++i) EXPECT_EQ(cases[i].first, cases[i].second) << i;
  EXPECT_EQ(failureNumber([] { rows::proposalDuration(u"12345678"); }), errors::kInvalidCall);
  EXPECT_EQ(failureNumber([] { rows::selectionMarkerAndDuration(false, u"1234567"); }),
            errors::kInvalidCall);
}

// The total's box turns minutes into hours and minutes as they are written, once Init
// has armed it, and the control reads them back when it changes the total.
TEST(Durations, MinutesShowAsHoursAndReadBack) {
  Variable::resetAll();
  Ctr_VelmoraNew c;
  c.Txt_Duree.setText(u"90");
  EXPECT_EQ(c.Txt_Duree.getText(), u"90");  // before Init: as written
  InitArguments a{u"AUTRE", u"00001", u"", u"", u"", u"", u"1000000"};
  c.Init(a);
  const std::vector<std::pair<Text, Text>> cases{
      {u"0", u"0h00"},         {u"5", u"0h05"},    {u"65", u"1h05"},   {u"1500", u"25h00"},
      {u"100000", u"1666h40"}, {u"-5", u"-1h55"},  {u"-60", u"-1h00"}, {u"-61", u"-2h59"},
      {u"12.4", u"0h12"},      {u"12.5", u"0h13"}, {u"59.5", u"0h60"}, {u"", u""}};
  for (const auto& [minutes, shown] : cases) {
    c.Txt_Duree.setText(minutes);
    EXPECT_EQ(c.Txt_Duree.getText(), shown) << toUtf8(minutes);
  }
  for (int minutes = -200; minutes <= 2000; minutes += 7) {
    c.Txt_Duree.setText(numberText(minutes));
    ASSERT_EQ(readBack(c.Txt_Duree.getText()), Currency::whole(minutes)) << minutes;
  }
  EXPECT_EQ(readBack(u"0h60"), Currency::whole(60));
  for (const auto& [bad, number] :
       std::vector<std::pair<Text, long>>{{u"90", errors::kInvalidCall},
                                          {u"1H30", errors::kInvalidCall},
                                          {u"1h", errors::kTypeMismatch},
                                          {u"xh10", errors::kTypeMismatch}}) {
    const Text text = bad;
    EXPECT_EQ(failureNumber([&] { readBack(text); }), number) << toUtf8(text);
  }
  // Text that is no number fails and stays as written; the next write converts again.
  EXPECT_EQ(failureNumber([&] { c.Txt_Duree.setText(u"9000000000000000"); }), errors::kOverflow);
  EXPECT_EQ(failureNumber([&] { c.Txt_Duree.setText(u"1h30"); }), errors::kTypeMismatch);
  EXPECT_EQ(c.Txt_Duree.getText(), u"1h30");
  c.Txt_Duree.setText(u"45");
  EXPECT_EQ(c.Txt_Duree.getText(), u"0h45");
}

class Mandatory : public ControlTest {
 protected:
  void SetUp() override {
    ControlTest::SetUp();
    const std::vector<std::pair<const char*, const char*>> tasks{
        {"Courses", "N"}, {"Toilette", "O"}, {"Repassage", "o"},
        {"Ménage", ""},   {"Lever", "O"},    {"Promenade", "O "}};
    for (std::size_t i = 0; i < tasks.size(); ++i) {
      account.put("TACHE", tasks[i].first,
                  {{std::to_string(i + 1)}, {"G"}, {""}, {tasks[i].second}});
    }
  }
  // The selection's codes, and what the question answers with the store's reads it took.
  std::string ask(std::initializer_list<const char16_t*> codes) {
    ctl.Lst_CodeSelect.Clear();
    for (const char16_t* code : codes) ctl.Lst_CodeSelect.AddItem(code);
    const auto before = statistics(Variable::TheDatabase).decodedRecords;
    const bool answer = ctl.AuMoinsUneTacheImperative() == kTrue;
    return std::to_string(answer) + " after " +
           std::to_string(statistics(Variable::TheDatabase).decodedRecords - before);
  }
};

TEST_F(Mandatory, OnlyAnUpperCaseOCountsAndTheWalkStopsAtTheFirst) {
  init("AUTRE", "00009", "");
  EXPECT_EQ(ask({}), "0 after 0");
  EXPECT_EQ(ask({u"Courses", u"Repassage", u"Ménage", u"Promenade"}), "0 after 4");
  EXPECT_EQ(ask({u"Courses", u"Ménage", u"Toilette", u"Repassage", u"Lever"}), "1 after 3");
  // A task gone from the catalogue is not mandatory and the walk goes on.
  EXPECT_EQ(ask({u"Disparue", u"Lever"}), "1 after 1");
  EXPECT_EQ(Variable::R_Tache->r(1), u"5");  // the cursor stays on the last task read
  // A change of the catalogue shows at the next call.
  account.put("TACHE", "Courses", {{"1"}, {"G"}, {""}, {"O"}});
  EXPECT_EQ(ask({u"Courses"}), "1 after 1");
  // Sorting the selection shows the label.
  ctl.Lst_Selectionne.AddItem(u"b");
  ctl.Lst_Selectionne.AddItem(u"a");
  ask({u"Ménage", u"Toilette"});
  CtrDriver(ctl).Trie_Selectionne();
  EXPECT_TRUE(ctl.Etq_Imperativite.Visible());
  EXPECT_EQ(ctl.Lst_CodeSelect.List(0), u"Toilette");
  ctl.Lst_CodeSelect.setList(0, u"Ménage");
  CtrDriver(ctl).Trie_Selectionne();
  EXPECT_FALSE(ctl.Etq_Imperativite.Visible());
  // Without the files the failure reaches the caller.
  Variable::F_Tache.reset();
  EXPECT_EQ(failureNumber([&] { ctl.AuMoinsUneTacheImperative(); }), errors::kObjectNotSet);
  // Care acts are never mandatory, and nothing is read for them.
  init("SSIAD", "00009", "");
  EXPECT_EQ(ask({u"Toilette"}), "0 after 0");
}

}  // namespace
}  // namespace velmora::testing
