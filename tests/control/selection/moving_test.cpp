// Moving proposal rows into the selection: copies, duplicates, inherited columns, the
// total and the mandatory label.
#include "journey.h"

namespace velmora::testing {
namespace {

class Moving : public Journey {};

TEST_F(Moving, TwoRowsOfTwentyFiveAndFortyShowOneHourFive) {
  propose({{proposal("Ménage", "Entretien", "VAISSELLE", "25"), u"VAISSELLE"},
           {proposal("Ménage", "Entretien", "ASPIRATEUR", "40"), u"ASPIRATEUR"}});

  select({0});
  Snapshot s = snapshot(ctl);
  EXPECT_EQ(s.rows, (std::vector<std::string>{sel("Ménage", "Entretien", "VAISSELLE", ' ', "25")}));
  EXPECT_EQ(s.codes, (std::vector<std::string>{"VAISSELLE"}));
  EXPECT_EQ(s.duree, "0h25");
  EXPECT_EQ(s.total, "25");

  select({1});
  s = snapshot(ctl);
  // The selection is sorted on the whole row: ASPIRATEUR comes before VAISSELLE.
  EXPECT_EQ(s.rows, (std::vector<std::string>{sel("Ménage", "Entretien", "ASPIRATEUR", ' ', "40"),
                                              sel("Ménage", "Entretien", "VAISSELLE", ' ', "25")}));
  EXPECT_EQ(s.codes, (std::vector<std::string>{"ASPIRATEUR", "VAISSELLE"}));
  EXPECT_EQ(s.obs, (std::vector<std::string>{"", ""}));
  EXPECT_EQ(s.duree, "1h05");
  EXPECT_EQ(s.total, "65");
  EXPECT_FALSE(s.doubleClic);
  EXPECT_EQ(s.current, -1);
  EXPECT_EQ(s.buttons, (Buttons{true, false, false, false, false, true, true}));
  EXPECT_FALSE(s.imperative);

  // Selecting copies: the proposal keeps its rows, without marks.
  ASSERT_EQ(ctl.Lst_Possible.ListCount(), 2);
  EXPECT_FALSE(ctl.Lst_Possible.Selected(0));
  EXPECT_FALSE(ctl.Lst_Possible.Selected(1));
  EXPECT_FALSE(ctl.Lst_CodePos.Selected(0));
  EXPECT_FALSE(ctl.Lst_CodePos.Selected(1));
}

TEST_F(Moving, NinetyThenFortyFiveShowOneThirtyThenTwoFifteen) {
  propose({{proposal("Repas", "Cuisine", "DEJEUNER", "90"), u"DEJEUNER"},
           {proposal("Ménage", "Entretien", "VAISSELLE", "45"), u"VAISSELLE"}});
  select({0});
  EXPECT_EQ(snapshot(ctl).duree, "1h30");
  EXPECT_EQ(snapshot(ctl).total, "90");
  select({1});
  EXPECT_EQ(snapshot(ctl).duree, "2h15");
  EXPECT_EQ(snapshot(ctl).total, "135");
}

TEST_F(Moving, ASecondItemWithTheSameTaskColumnIsADuplicate) {
  // Same column 3, other columns 1 and 2, other code: only the text counts.
  propose({{proposal("Ménage", "Entretien", "VAISSELLE", "25"), u"VAISSELLE"},
           {proposal("Repas", "Cuisine", "VAISSELLE", "10"), u"VAISSELLE2"},
           {proposal("Repas", "Cuisine", "DEJEUNER", "30"), u"DEJEUNER"}});
  // A view may mark the hidden codes too; they lose their marks with the rows.
  for (int i = 0; i < 3; ++i) ctl.Lst_CodePos.setSelected(i, true);
  select({0, 1, 2});
  const Snapshot s = snapshot(ctl);
  EXPECT_EQ(s.rows, (std::vector<std::string>{sel("Ménage", "Entretien", "VAISSELLE", ' ', "25"),
                                              sel("Repas", "Cuisine", "DEJEUNER", ' ', "30")}));
  EXPECT_EQ(s.codes, (std::vector<std::string>{"VAISSELLE", "DEJEUNER"}));
  EXPECT_EQ(s.duree, "0h55");
  EXPECT_EQ(s.total, "55");
  for (int i = 0; i < 3; ++i) {
    EXPECT_FALSE(ctl.Lst_Possible.Selected(i)) << i;
    EXPECT_FALSE(ctl.Lst_CodePos.Selected(i)) << i;
  }

  // Chosen again later, an item already in the selection only loses its mark.
  select({0});
  EXPECT_EQ(snapshot(ctl), s);
}

TEST_F(Moving, ALabelOfTwentyFiveAndOneOfFortyWithTheSameStartAreTheSameItem) {
  propose({{proposal("A", "B", "Nettoyage complet du sol", "5"), u"SOL1"},
           {proposal("A", "B", "Nettoyage complet du sol de la cuisine", "7"), u"SOL2"}});
  select({0, 1});
  EXPECT_EQ(snapshot(ctl).codes, (std::vector<std::string>{"SOL1"}));
  EXPECT_EQ(snapshot(ctl).total, "5");
}

TEST_F(Moving, ARowWithoutLabelNeverEntersAndItsDurationIsNotCounted) {
  propose({{proposal("Ménage", "Entretien", "", "20"), u"SANSNOM"}});
  select({0});
  const Snapshot s = snapshot(ctl);
  EXPECT_TRUE(s.rows.empty());
  EXPECT_TRUE(s.codes.empty());
  EXPECT_EQ(s.duree, "");
  EXPECT_EQ(s.total, "0");
  EXPECT_FALSE(ctl.Lst_Possible.Selected(0));
}

TEST_F(Moving, ColumnsComeFromTheNearestRowsAboveThatHaveThem) {
  propose({{proposal("Ménage", "Entretien", "ASPIRATEUR", "40"), u"ASPIRATEUR"},
           {proposal("", "Sols", "LAVAGE", "15"), u"LAVAGE"},
           {proposal("", "", "VITRES", "20"), u"VITRES"}});
  select({2});
  // Column 1 from row 0, column 2 from row 1: the walks start at the row itself.
  EXPECT_EQ(snapshot(ctl).rows,
            (std::vector<std::string>{sel("Ménage", "Sols", "VITRES", ' ', "20")}));
  select({1});
  // Column 2 of its own, column 1 from above.
  EXPECT_EQ(snapshot(ctl).rows,
            (std::vector<std::string>{sel("Ménage", "Sols", "LAVAGE", ' ', "15"),
                                      sel("Ménage", "Sols", "VITRES", ' ', "20")}));
  EXPECT_EQ(snapshot(ctl).codes, (std::vector<std::string>{"LAVAGE", "VITRES"}));
  EXPECT_EQ(snapshot(ctl).total, "35");
}

TEST_F(Moving, ARowWithFilledColumnOneIsCopiedWholeWhateverItsColumnTwo) {
  propose({{proposal("Ménage", "Entretien", "ASPIRATEUR", "40"), u"ASPIRATEUR"},
           {proposal("Repas", "", "DEJEUNER", "30"), u"DEJEUNER"}});
  select({1});
  EXPECT_EQ(snapshot(ctl).rows,
            (std::vector<std::string>{sel("Repas", "", "DEJEUNER", ' ', "30")}));
}

TEST_F(Moving, ARowWithoutDurationLeavesTheTotalAlone) {
  propose({{proposal("Ménage", "Entretien", "ASPIRATEUR", "40"), u"ASPIRATEUR"},
           {proposal("Ménage", "Entretien", "VAISSELLE", ""), u"VAISSELLE"}});
  select({1});
  Snapshot s = snapshot(ctl);
  EXPECT_EQ(s.rows, (std::vector<std::string>{sel("Ménage", "Entretien", "VAISSELLE", ' ', "")}));
  EXPECT_EQ(s.duree, "");
  EXPECT_EQ(s.total, "0");
  select({0});
  s = snapshot(ctl);
  EXPECT_EQ(s.duree, "0h40");
  EXPECT_EQ(s.total, "40");
}

TEST_F(Moving, AShortRowIsFilledToEightySoThatTheMarkerHasItsPlace) {
  // A proposal that stops after its columns: 78 characters.
  propose({{column("Ménage") + column("Entretien") + column("VAISSELLE"), u"VAISSELLE"}});
  select({0});
  EXPECT_EQ(ctl.Lst_Selectionne.List(0),
            column("Ménage") + column("Entretien") + column("VAISSELLE") + u"  ");
  EXPECT_EQ(snapshot(ctl).duree, "");
}

TEST_F(Moving, TheMarkOfAFloatingTemplateStaysBehind) {
  propose({{proposal("Ménage", "Entretien", "ASPIRATEUR", "40") + u"  *", u"ASPIRATEUR"}});
  select({0});
  EXPECT_EQ(ctl.Lst_Selectionne.List(0),
            column("Ménage") + column("Entretien") + column("ASPIRATEUR") + u"     40");
}

TEST_F(Moving, ADoubleClickSelectsTheRowUnderThePointer) {
  propose({{proposal("Repas", "Cuisine", "DEJEUNER", "30"), u"DEJEUNER"},
           {proposal("Ménage", "Entretien", "VAISSELLE", "45"), u"VAISSELLE"}});
  ctl.Lst_Possible.doubleClick(1);
  const Snapshot s = snapshot(ctl);
  EXPECT_EQ(s.codes, (std::vector<std::string>{"VAISSELLE"}));
  EXPECT_EQ(s.total, "45");
  EXPECT_TRUE(s.buttons.select);
  EXPECT_FALSE(ctl.Lst_Possible.Selected(1));
}

TEST_F(Moving, NothingMarkedChangesNothingButRefreshesTheLabel) {
  propose({{proposal("Toilette", "Hygiène", "DOUCHE", "30"), u"DOUCHE"}});
  select({0});
  EXPECT_TRUE(snapshot(ctl).imperative);
  ctl.Etq_Imperativite.setVisible(false);
  const Snapshot before = snapshot(ctl);
  ctl.Lst_Possible.click(0);
  ctl.Lst_Possible.click(0);  // marked, then unmarked
  ctl.Cmd_Select.press();
  Snapshot after = snapshot(ctl);
  EXPECT_TRUE(after.imperative);
  after.imperative = false;
  EXPECT_EQ(after, before);
}

TEST_F(Moving, AMandatoryTaskShowsTheLabel) {
  propose({{proposal("Ménage", "Entretien", "ASPIRATEUR", "40"), u"ASPIRATEUR"},
           {proposal("Toilette", "Hygiène", "DOUCHE", "30"), u"DOUCHE"}});
  EXPECT_FALSE(ctl.Cmd_Select.Enabled());
  select({0});
  EXPECT_FALSE(snapshot(ctl).imperative);
  select({1});
  EXPECT_TRUE(snapshot(ctl).imperative);
  EXPECT_EQ(ctl.Etq_Imperativite.Caption(), u"Au moins une tâche impérative");
}

}  // namespace
}  // namespace velmora::testing
