// The rows' layout, the places of the surface, the total shown in hours and minutes, and
// the mandatory-task label.
#include <velmora/store/sqlite_database.h>
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
using Durations = ControlTest;

TEST_F(Durations, MinutesShowAsHoursAndReadBack) {
  init("AUTRE", "00001", "", "", "", "", "1000000");
  Ctr_VelmoraNew& c = ctl;
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
  // Text that is no number fails and stays as written; the next write converts again.
  EXPECT_EQ(failureNumber([&] { c.Txt_Duree.setText(u"9000000000000000"); }), errors::kOverflow);
  EXPECT_EQ(failureNumber([&] { c.Txt_Duree.setText(u"1h30"); }), errors::kTypeMismatch);
  EXPECT_EQ(c.Txt_Duree.getText(), u"1h30");
}

// The places a host reads, in twips, of every child of the control and of the dialog.
TEST(Surface, EveryChildHasItsPlace) {
  const auto places = [](const auto& children) {
    std::string out;
    for (const toolkit::Control* c : children) {
      const toolkit::Geometry& g = c->geometry();
      for (const int v : {g.left, g.top, g.width, g.height}) out += std::to_string(v) + " ";
      out += c->name() + "|";
    }
    return out;
  };
  Ctr_VelmoraNew ctl;
  Frm_AjoutObsTache dialog;
  EXPECT_EQ(
      places(ctl.controls()) + places(dialog.children()),
      "120 120 2415 255 Cac_TouteTache|0 480 9930 5415 Cdr_Soins|7560 1560 855 840 Lst_CodePos|"
      "7680 3840 855 645 Lst_CodeSelect|10560 600 15 1095 Txt_Barre1|"
      "8520 5040 615 315 Txt_Duree|120 4920 855 375 Cmd_SupprVelmora|"
      "8520 4680 615 315 Txt_DureeSoin|6720 4920 855 375 Cmd_AnnulerVelmora|"
      "5880 4920 735 375 Cmd_OKVelmora|120 3360 9615 1320 Lst_Selectionne|"
      "120 360 9615 2370 Lst_Possible|4320 2760 495 375 Cmd_Select|5160 4920 615 375 Cmd_Obs|"
      "9240 120 255 255 Label1|1080 4800 3975 375 Etq_Imperativite|8640 3120 495 255 Label6|"
      "8640 120 495 255 Label5|8160 3120 375 255 Label3|5640 3120 615 255 Etq_Sel3|"
      "8040 5040 495 255 Etq_DureeTotale|8880 3360 495 255 Etq_Duree|120 120 1215 255 Etq_Pos1|"
      "2760 120 735 255 Etq_Pos2|5640 120 615 255 Etq_Pos3|2880 3120 735 255 Etq_Sel2|"
      "120 3120 1215 255 Etq_Sel1|4320 3720 735 375 Cmd_OkObs|5160 3720 735 375 Cmd_AnnulerObs|"
      "120 1680 5775 1935 Txt_Obs|1080 600 4815 285 Txt_Groupe|1080 960 4815 285 Txt_Tache|"
      "1080 240 4815 285 Txt_Type|120 1440 930 195 Label4|120 600 525 195 Label3|"
      "120 960 465 195 Label2|120 240 360 195 Label1|");
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
  // The selection's codes, and the question's answer with the store's reads it took.
  std::string ask(std::initializer_list<const char16_t*> codes) {
    ctl.Lst_CodeSelect.Clear();
    for (const char16_t* code : codes) ctl.Lst_CodeSelect.AddItem(code);
    const auto before = statistics(variable().TheDatabase).decodedRecords;
    const bool answer = ctl.AuMoinsUneTacheImperative() == kTrue;
    return std::to_string(answer) + " after " +
           std::to_string(statistics(variable().TheDatabase).decodedRecords - before);
  }
};

TEST_F(Mandatory, OnlyAnUpperCaseOCountsAndTheWalkStopsAtTheFirst) {
  init("AUTRE", "00009", "");
  EXPECT_EQ(ask({}), "0 after 0");
  EXPECT_EQ(ask({u"Courses", u"Repassage", u"Ménage", u"Promenade"}), "0 after 4");
  EXPECT_EQ(ask({u"Courses", u"Ménage", u"Toilette", u"Repassage", u"Lever"}), "1 after 3");
  // A task gone from the catalogue is not mandatory and the walk goes on.
  EXPECT_EQ(ask({u"Disparue", u"Lever"}), "1 after 1");
  // Without the files the failure reaches the caller.
  variable().F_Tache.reset();
  EXPECT_EQ(failureNumber([&] { ctl.AuMoinsUneTacheImperative(); }), errors::kObjectNotSet);
  // Care acts are never mandatory, and nothing is read for them.
  init("SSIAD", "00009", "");
  EXPECT_EQ(ask({u"Toilette"}), "0 after 0");
}

}  // namespace
}  // namespace velmora::testing
