// Removing a selected row after the question: the three parallel stores, the total,
// the end of an open edit and the mandatory label.
#include "control/module_slots.h"
#include "journey.h"

namespace velmora::testing {
namespace {

class Removal : public Journey {
 protected:
  void SetUp() override {
    Journey::SetUp();
    propose({{proposal("Ménage", "Entretien", "ASPIRATEUR", "30"), u"ASPIRATEUR"},
             {proposal("Ménage", "Entretien", "VAISSELLE", ""), u"VAISSELLE"},
             {proposal("Repas", "Cuisine", "DEJEUNER", "45"), u"DEJEUNER"},
             {proposal("Toilette", "Hygiène", "DOUCHE", "20"), u"DOUCHE"}});
  }
};

TEST_F(Removal, TheOnlyRowGoesAndTheTotalShowsZero) {
  select({0});
  remove(0);
  const Snapshot s = snapshot(ctl);
  EXPECT_TRUE(s.rows.empty());
  EXPECT_TRUE(s.codes.empty());
  EXPECT_EQ(s.duree, "0h00");
  EXPECT_EQ(s.total, "0");
  EXPECT_EQ(s.current, -1);
  EXPECT_EQ(s.buttons, (Buttons{true, false, false, false, false, false, true}));
  ASSERT_EQ(services->questions().size(), 1u);
  EXPECT_EQ(services->questions()[0].prompt, u"Etes-vous sûr de vouloir supprimer cette tâche ?");
  EXPECT_EQ(services->questions()[0].style, 36);
  EXPECT_EQ(services->questions()[0].title, u"Message TALVERANE");
  // The proposal keeps the item: it can be chosen again, without what it had.
  EXPECT_EQ(ctl.Lst_Possible.ListCount(), 4);
  select({0});
  EXPECT_EQ(snapshot(ctl).rows,
            (std::vector<std::string>{sel("Ménage", "Entretien", "ASPIRATEUR", ' ', "30")}));
  EXPECT_EQ(snapshot(ctl).total, "30");
}

TEST_F(Removal, ObservationsStayWithTheirRows) {
  select({0, 1, 2});
  observe(0, "A");
  observe(2, "C");
  ASSERT_EQ(snapshot(ctl).obs, (std::vector<std::string>{"A", "", "C"}));
  remove(0);
  const Snapshot s = snapshot(ctl);
  EXPECT_EQ(s.rows, (std::vector<std::string>{sel("Ménage", "Entretien", "VAISSELLE", ' ', ""),
                                              sel("Repas", "Cuisine", "DEJEUNER", 'X', "45")}));
  EXPECT_EQ(s.codes, (std::vector<std::string>{"VAISSELLE", "DEJEUNER"}));
  EXPECT_EQ(s.obs, (std::vector<std::string>{"", "C"}));
  EXPECT_EQ(toUtf8(Variable::R_Obs->r()), toUtf8(u"\uF8FEC"));
  EXPECT_EQ(s.duree, "0h45");
  EXPECT_EQ(s.total, "45");
}

TEST_F(Removal, NoChangesNothingButRefreshesTheLabel) {
  select({0, 3});
  ctl.Lst_Selectionne.click(1);
  ctl.Etq_Imperativite.setVisible(false);
  Snapshot before = snapshot(ctl);
  remove(1, toolkit::kMsgBoxNo);
  Snapshot after = snapshot(ctl);
  EXPECT_TRUE(after.imperative);
  after.imperative = false;
  EXPECT_EQ(after, before);
  EXPECT_EQ(after.current, 1);
}

TEST_F(Removal, NoDuringAnEditKeepsTheEditOpen) {
  select({0});
  ctl.Lst_Selectionne.click(0);
  ctl.Lst_Selectionne.doubleClick(0);
  const Snapshot before = snapshot(ctl);
  services->answer(toolkit::kMsgBoxNo);
  ctl.Cmd_SupprVelmora.press();
  EXPECT_EQ(snapshot(ctl), before);
  EXPECT_TRUE(snapshot(ctl).doubleClic);
}

TEST_F(Removal, RemovingTheRowUnderEditEndsTheEdit) {
  select({0, 2});
  ctl.Lst_Selectionne.click(1);
  ctl.Lst_Selectionne.doubleClick(1);
  services->answer(toolkit::kMsgBoxYes);
  ctl.Cmd_SupprVelmora.press();
  const Snapshot s = snapshot(ctl);
  EXPECT_EQ(s.codes, (std::vector<std::string>{"ASPIRATEUR"}));
  EXPECT_EQ(s.duree, "0h30");
  EXPECT_EQ(s.total, "30");
  EXPECT_FALSE(s.doubleClic);
  EXPECT_EQ(s.buttons, (Buttons{true, false, false, false, false, false, true}));
  EXPECT_EQ(ctl.Txt_DureeSoin.getText(), u"");
}

TEST_F(Removal, AnEditedRowTakesItsEditedDurationOff) {
  select({0, 2});
  edit(1, "10");
  ASSERT_EQ(snapshot(ctl).total, "40");
  remove(1);
  EXPECT_EQ(snapshot(ctl).duree, "0h30");
  EXPECT_EQ(snapshot(ctl).total, "30");
}

TEST_F(Removal, ARowWithoutDurationLeavesTheTotalButAnEmptyTotalShowsZero) {
  select({1});
  ASSERT_EQ(snapshot(ctl).duree, "");
  ctl.W_Total = Currency::whole(99);  // untouched when nothing is taken off
  remove(0);
  EXPECT_EQ(snapshot(ctl).duree, "0h00");
  EXPECT_EQ(snapshot(ctl).total, "99");
  EXPECT_TRUE(snapshot(ctl).rows.empty());
}

TEST_F(Removal, RemovingTheOnlyMandatoryTaskHidesTheLabel) {
  select({0, 3});
  ASSERT_TRUE(snapshot(ctl).imperative);
  remove(0);  // ASPIRATEUR: DOUCHE stays
  EXPECT_TRUE(snapshot(ctl).imperative);
  remove(0);  // DOUCHE
  EXPECT_FALSE(snapshot(ctl).imperative);
}

TEST_F(Removal, CareActsAskAboutAnAct) {
  ctl.Vider_liste();
  start(u"SSIAD");
  propose({{proposal("Soins de base", "Hygiène", "Toilette complète", "30"), u"123"}});
  select({0});
  remove(0);
  ASSERT_EQ(services->questions().size(), 1u);
  EXPECT_EQ(services->questions()[0].prompt, u"Etes-vous sûr de vouloir supprimer cet acte ?");
}

TEST_F(Removal, TheButtonLeftEnabledAfterTheHostEmptiedTheSelectionRefusesClearly) {
  select({0});
  ctl.Lst_Selectionne.click(0);
  ctl.Vider_Tache();
  ASSERT_TRUE(ctl.Cmd_SupprVelmora.Enabled());
  try {
    ctl.Cmd_SupprVelmora.press();
    ADD_FAILURE() << "removed without a row";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.number(), errors::kInvalidCall);
  }
  EXPECT_TRUE(services->questions().empty());
  EXPECT_EQ(snapshot(ctl).duree, "");
}

}  // namespace
}  // namespace velmora::testing
