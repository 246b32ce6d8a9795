// Editing the duration of a selected row: the three states, OK and Annuler, the total,
// refused input, and an edit that a sort moves under the planner.
#include "journey.h"

namespace velmora::testing {
namespace {

class Editing : public Journey {
 protected:
  void SetUp() override {
    Journey::SetUp();
    propose({{proposal("Ménage", "Entretien", "ASPIRATEUR", "25"), u"ASPIRATEUR"},
             {proposal("Ménage", "Entretien", "VAISSELLE", "40"), u"VAISSELLE"},
             {proposal("Repas", "Cuisine", "DEJEUNER", ""), u"DEJEUNER"},
             {proposal("Ménage", "Entretien", "BALAI", "5"), u"BALAI"}});
  }
};

TEST_F(Editing, TheStatesOfAClickADoubleClickAndOk) {
  select({0, 1});
  ASSERT_EQ(snapshot(ctl).duree, "1h05");

  ctl.Lst_Selectionne.click(1);
  Snapshot s = snapshot(ctl);
  EXPECT_EQ(s.current, 1);
  EXPECT_EQ(ctl.Lst_CodeSelect.ListIndex(), 1);
  EXPECT_EQ(s.buttons, (Buttons{true, true, true, false, false, true, true}));
  EXPECT_FALSE(s.doubleClic);

  ctl.Lst_Selectionne.doubleClick(1);
  s = snapshot(ctl);
  EXPECT_EQ(ctl.Txt_DureeSoin.getText(), u"40");
  EXPECT_EQ(s.buttons, (Buttons{true, true, true, true, true, true, false}));
  EXPECT_TRUE(s.doubleClic);
  // The list is locked: a click on the other row changes nothing.
  ctl.Lst_Selectionne.click(0);
  EXPECT_EQ(snapshot(ctl).current, 1);

  ctl.Txt_DureeSoin.typeKey(8);
  ctl.Txt_DureeSoin.typeKey(8);
  ctl.Txt_DureeSoin.typeText(u"1x0");  // the filter drops the letter
  EXPECT_EQ(ctl.Txt_DureeSoin.getText(), u"10");
  ctl.Cmd_OKVelmora.press();

  s = snapshot(ctl);
  EXPECT_EQ(s.rows, (std::vector<std::string>{sel("Ménage", "Entretien", "ASPIRATEUR", ' ', "25"),
                                              sel("Ménage", "Entretien", "VAISSELLE", ' ', "10")}));
  EXPECT_EQ(s.codes, (std::vector<std::string>{"ASPIRATEUR", "VAISSELLE"}));
  EXPECT_EQ(s.duree, "0h35");
  EXPECT_EQ(s.total, "35");
  EXPECT_FALSE(s.doubleClic);
  EXPECT_EQ(s.current, -1);
  EXPECT_EQ(ctl.Lst_CodeSelect.ListIndex(), -1);
  EXPECT_EQ(s.buttons, (Buttons{true, false, false, false, false, false, true}));
  EXPECT_EQ(ctl.Txt_DureeSoin.getText(), u"");
}

TEST_F(Editing, AnEmptyDurationBlanksTheRowAndTakesTheOldOneOff) {
  select({0, 1});
  edit(1, "10");
  ASSERT_EQ(snapshot(ctl).duree, "0h35");
  edit(1, "");
  const Snapshot s = snapshot(ctl);
  EXPECT_EQ(s.rows[1], sel("Ménage", "Entretien", "VAISSELLE", ' ', ""));
  EXPECT_EQ(s.duree, "0h25");
  EXPECT_EQ(s.total, "25");
  // Read back as an item without a duration.
  ctl.MAJ_Enr();
  EXPECT_EQ(ctl.W_Enr->r(2, 2), u"");
}

TEST_F(Editing, ZeroIsADurationOfItsOwn) {
  select({0});
  edit(0, "0");
  EXPECT_EQ(snapshot(ctl).rows[0], sel("Ménage", "Entretien", "ASPIRATEUR", ' ', "0"));
  EXPECT_EQ(snapshot(ctl).duree, "0h00");
  EXPECT_EQ(snapshot(ctl).total, "0");
  ctl.MAJ_Enr();
  EXPECT_EQ(ctl.W_Enr->r(1, 2), u"0");
}

TEST_F(Editing, ARowWithoutDurationGetsOneStartingFromZero) {
  select({2});
  ASSERT_EQ(snapshot(ctl).duree, "");
  edit(0, "75");
  const Snapshot s = snapshot(ctl);
  EXPECT_EQ(s.rows, (std::vector<std::string>{sel("Repas", "Cuisine", "DEJEUNER", ' ', "75")}));
  EXPECT_EQ(s.duree, "1h15");
  EXPECT_EQ(s.total, "75");
}

TEST_F(Editing, OkWithoutChangeKeepsRowAndTotal) {
  select({0, 1});
  const Snapshot before = snapshot(ctl);
  ctl.Lst_Selectionne.click(0);
  ctl.Lst_Selectionne.doubleClick(0);
  ctl.Cmd_OKVelmora.press();
  Snapshot after = snapshot(ctl);
  EXPECT_EQ(after.rows, before.rows);
  EXPECT_EQ(after.duree, "1h05");
  EXPECT_EQ(after.total, "65");
}

TEST_F(Editing, AnnulerLeavesNoTrace) {
  select({0, 1});
  ctl.Lst_Selectionne.click(1);
  ctl.Lst_Selectionne.doubleClick(1);
  ctl.Txt_DureeSoin.typeKey(8);
  ctl.Txt_DureeSoin.typeText(u"9");
  ctl.Cmd_AnnulerVelmora.press();
  const Snapshot s = snapshot(ctl);
  EXPECT_EQ(s.rows[1], sel("Ménage", "Entretien", "VAISSELLE", ' ', "40"));
  EXPECT_EQ(s.duree, "1h05");
  EXPECT_EQ(s.total, "65");
  EXPECT_FALSE(s.doubleClic);
  EXPECT_EQ(s.current, -1);
  EXPECT_EQ(s.buttons, (Buttons{true, false, false, false, false, false, true}));
  EXPECT_EQ(ctl.Txt_DureeSoin.getText(), u"");
  // Opened again, the edit shows the old duration.
  ctl.Lst_Selectionne.doubleClick(1);
  EXPECT_EQ(ctl.Txt_DureeSoin.getText(), u"40");
}

TEST_F(Editing, ADoubleClickWithoutCurrentRowIsIgnored) {
  select({0});
  const Snapshot before = snapshot(ctl);
  ASSERT_EQ(ctl.Lst_Selectionne.ListIndex(), -1);
  ctl.Lst_Selectionne.DblClick();  // as a toolkit could deliver it on an empty spot
  EXPECT_EQ(snapshot(ctl), before);
  EXPECT_EQ(ctl.Txt_DureeSoin.getText(), u"");
}

TEST_F(Editing, APastedDurationThatIsNotDigitsIsRefusedAndLosesNothing) {
  select({0, 1});
  ctl.Lst_Selectionne.click(1);
  ctl.Lst_Selectionne.doubleClick(1);
  const Snapshot before = snapshot(ctl);
  for (const Text& pasted : {Text(u"1a"), Text(u"-5"), Text(u" 7"), Text(u"2.5")}) {
    ctl.Txt_DureeSoin.replaceText(pasted);
    try {
      ctl.Cmd_OKVelmora.press();
      ADD_FAILURE() << "accepted " << toUtf8(pasted);
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.number(), errors::kTypeMismatch);
      EXPECT_NE(std::string(failure.what()).find(toUtf8(pasted)), std::string::npos);
    }
    // Row, total and the open edit are as they were.
    EXPECT_EQ(snapshot(ctl), before) << toUtf8(pasted);
    EXPECT_EQ(ctl.Txt_DureeSoin.getText(), pasted);
  }
  // The planner corrects it and the edit ends normally.
  ctl.Txt_DureeSoin.replaceText(u"15");
  ctl.Cmd_OKVelmora.press();
  EXPECT_EQ(snapshot(ctl).duree, "0h40");
  EXPECT_EQ(snapshot(ctl).total, "40");
}

TEST_F(Editing, ARefusedDurationReachesTheHostsFailureHandler) {
  std::vector<long> seen;
  ctl.setFailureHandler([&](const Failure& f) { seen.push_back(f.number()); });
  select({0});
  ctl.Lst_Selectionne.click(0);
  ctl.Lst_Selectionne.doubleClick(0);
  ctl.Txt_DureeSoin.replaceText(u"abc");
  ctl.Cmd_OKVelmora.press();
  EXPECT_EQ(seen, (std::vector<long>{errors::kTypeMismatch}));
  EXPECT_TRUE(snapshot(ctl).doubleClic);
  EXPECT_EQ(snapshot(ctl).total, "25");
}

TEST_F(Editing, ASortMovesTheCurrentRowWithItsItemOnlyDuringAnEdit) {
  // VAISSELLE alone, its edit open; then ASPIRATEUR and BALAI come in and sort before it.
  select({1});
  ctl.Lst_Selectionne.click(0);
  ctl.Lst_Selectionne.doubleClick(0);
  ASSERT_EQ(ctl.Txt_DureeSoin.getText(), u"40");
  select({0, 3});
  Snapshot s = snapshot(ctl);
  EXPECT_EQ(s.rows, (std::vector<std::string>{sel("Ménage", "Entretien", "ASPIRATEUR", ' ', "25"),
                                              sel("Ménage", "Entretien", "BALAI", ' ', "5"),
                                              sel("Ménage", "Entretien", "VAISSELLE", ' ', "40")}));
  EXPECT_EQ(s.current, 2);
  EXPECT_EQ(ctl.Lst_CodeSelect.ListIndex(), 2);
  EXPECT_TRUE(s.doubleClic);
  EXPECT_EQ(s.duree, "1h10");

  ctl.Txt_DureeSoin.typeKey(8);
  ctl.Txt_DureeSoin.typeKey(8);
  ctl.Txt_DureeSoin.typeText(u"12");
  ctl.Cmd_OKVelmora.press();
  s = snapshot(ctl);
  EXPECT_EQ(s.rows, (std::vector<std::string>{sel("Ménage", "Entretien", "ASPIRATEUR", ' ', "25"),
                                              sel("Ménage", "Entretien", "BALAI", ' ', "5"),
                                              sel("Ménage", "Entretien", "VAISSELLE", ' ', "12")}));
  EXPECT_EQ(s.codes, (std::vector<std::string>{"ASPIRATEUR", "BALAI", "VAISSELLE"}));
  EXPECT_EQ(s.duree, "0h42");
  EXPECT_EQ(s.total, "42");
  EXPECT_FALSE(s.doubleClic);

  // With no edit open the sort writes the rows in place: the current row stays where it
  // is, now on another item, and Obs. and Supprimer act on what stands there.
  propose({{proposal("Ménage", "Entretien", "ARROSAGE", "10"), u"ARROSAGE"}});
  ctl.Lst_Selectionne.click(1);  // BALAI
  select({4});                   // ARROSAGE sorts first
  ASSERT_EQ(toUtf8(ctl.Lst_Selectionne.List(2)), sel("Ménage", "Entretien", "BALAI", ' ', "5"));
  s = snapshot(ctl);
  EXPECT_EQ(s.current, 1);
  EXPECT_EQ(ctl.Lst_CodeSelect.ListIndex(), 1);
  EXPECT_EQ(s.codes[1], "ASPIRATEUR");
}

TEST_F(Editing, TheMarkerSurvivesAnEditAndAnObservationCanChangeDuringIt) {
  select({0});
  ctl.Lst_Selectionne.click(0);
  ctl.Lst_Selectionne.doubleClick(0);
  EXPECT_TRUE(ctl.Cmd_Obs.Enabled());
  services->onModal([](toolkit::Form& form) {
    auto& dialog = dynamic_cast<Frm_AjoutObsTache&>(form);
    dialog.Txt_Obs.replaceText(u"Sonner deux fois");
    dialog.Cmd_OkObs.press();
  });
  ctl.Cmd_Obs.press();
  EXPECT_EQ(snapshot(ctl).rows[0], sel("Ménage", "Entretien", "ASPIRATEUR", 'X', "25"));
  EXPECT_TRUE(snapshot(ctl).doubleClic);
  ctl.Txt_DureeSoin.typeKey(8);
  ctl.Txt_DureeSoin.typeKey(8);
  ctl.Txt_DureeSoin.typeText(u"30");
  ctl.Cmd_OKVelmora.press();
  const Snapshot s = snapshot(ctl);
  EXPECT_EQ(s.rows[0], sel("Ménage", "Entretien", "ASPIRATEUR", 'X', "30"));
  EXPECT_EQ(s.obs, (std::vector<std::string>{"Sonner deux fois"}));
  EXPECT_EQ(s.total, "30");
}

TEST_F(Editing, OkRefreshesTheMandatoryLabel) {
  propose({{proposal("Toilette", "Hygiène", "DOUCHE", "30"), u"DOUCHE"}});
  select({4});
  ctl.Etq_Imperativite.setVisible(false);
  edit(0, "20");
  EXPECT_TRUE(snapshot(ctl).imperative);
}

}  // namespace
}  // namespace velmora::testing
