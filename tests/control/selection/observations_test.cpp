// The observations dialog on the current row: what it shows, what it stores, the marker
// at position 79, and the ways it closes.
#include "control/module_slots.h"
#include "journey.h"

namespace velmora::testing {
namespace {

class Observations : public Journey {
 protected:
  void SetUp() override {
    Journey::SetUp();
    propose({{proposal("Ménage", "Entretien", "ASPIRATEUR", "30"), u"ASPIRATEUR"},
             {proposal("Repas", "Cuisine", "DEJEUNER", ""), u"DEJEUNER"},
             {proposal("Ménage", "Entretien", "VAISSELLE", "15"), u"VAISSELLE"}});
    select({0, 1, 2});
  }

  // Runs the dialog on a row with the given action on the form.
  void withDialog(int row, std::function<void(Frm_AjoutObsTache&)> action) {
    services->onModal([action = std::move(action)](toolkit::Form& form) {
      action(dynamic_cast<Frm_AjoutObsTache&>(form));
    });
    ctl.Lst_Selectionne.click(row);
    ctl.Cmd_Obs.press();
  }
};

TEST_F(Observations, TheDialogShowsTheColumnsUntrimmedAndTheStoredText) {
  observe(1, "Sonner deux fois\nCode 1234");
  Text type, groupe, tache, obs;
  withDialog(1, [&](Frm_AjoutObsTache& d) {
    type = d.Txt_Type.getText();
    groupe = d.Txt_Groupe.getText();
    tache = d.Txt_Tache.getText();
    obs = d.Txt_Obs.getText();
    d.Cmd_AnnulerObs.press();
  });
  EXPECT_EQ(type, u"Ménage                   ");
  EXPECT_EQ(groupe, u"Entretien                ");
  EXPECT_EQ(tache, u"VAISSELLE                ");
  EXPECT_EQ(obs, u"Sonner deux fois\nCode 1234");
  EXPECT_EQ(Variable::N_LigneObs, 2);
  EXPECT_EQ(services->mousePointer(), 0);
  EXPECT_EQ(services->modalShows(), 2);
}

TEST_F(Observations, SettingThenClearingMovesTheMarker) {
  observe(0, "Clé chez la voisine");
  Snapshot s = snapshot(ctl);
  EXPECT_EQ(s.rows[0], sel("Ménage", "Entretien", "ASPIRATEUR", 'X', "30"));
  EXPECT_EQ(s.obs, (std::vector<std::string>{"Clé chez la voisine", "", ""}));
  EXPECT_EQ(s.current, 0);  // the state of the row does not change
  EXPECT_EQ(s.buttons, (Buttons{true, true, true, false, false, true, true}));

  observe(0, "Clé chez le gardien");  // one text into another: the marker stays
  EXPECT_EQ(snapshot(ctl).rows[0], sel("Ménage", "Entretien", "ASPIRATEUR", 'X', "30"));
  EXPECT_EQ(snapshot(ctl).obs[0], "Clé chez le gardien");

  observe(0, "");
  s = snapshot(ctl);
  EXPECT_EQ(s.rows[0], sel("Ménage", "Entretien", "ASPIRATEUR", ' ', "30"));
  EXPECT_EQ(s.obs, (std::vector<std::string>{"", "", ""}));
  EXPECT_EQ(s.total, "45");
}

TEST_F(Observations, ARowOfEightyCharactersStaysEightyLong) {
  propose({{column("Toilette") + column("Hygiène") + column("DOUCHE"), u"DOUCHE"}});
  select({3});
  ASSERT_EQ(ctl.Lst_CodeSelect.List(3), u"DOUCHE");
  observe(3, "Sans savon");
  EXPECT_EQ(ctl.Lst_Selectionne.List(3),
            column("Toilette") + column("Hygiène") + column("DOUCHE") + u"X ");
  observe(3, "");
  EXPECT_EQ(ctl.Lst_Selectionne.List(3),
            column("Toilette") + column("Hygiène") + column("DOUCHE") + u"  ");
}

TEST_F(Observations, TheDurationComesThroughBothRewrites) {
  observe(0, "x");
  EXPECT_EQ(ctl.Lst_Selectionne.List(0),
            column("Ménage") + column("Entretien") + column("ASPIRATEUR") + u"X    30");
  observe(0, "");
  EXPECT_EQ(ctl.Lst_Selectionne.List(0),
            column("Ménage") + column("Entretien") + column("ASPIRATEUR") + u"     30");
  EXPECT_EQ(snapshot(ctl).total, "45");
}

TEST_F(Observations, ABlankIsAnObservation) {
  observe(1, " ");
  EXPECT_EQ(snapshot(ctl).rows[1], sel("Ménage", "Entretien", "VAISSELLE", 'X', "15"));
  ctl.MAJ_Enr();
  EXPECT_EQ(ctl.W_Enr->r(2, 3), u" ");
}

TEST_F(Observations, AnnulerAfterTypingLeavesEverything) {
  observe(1, "Avant");
  const Snapshot before = snapshot(ctl);
  withDialog(1, [](Frm_AjoutObsTache& d) {
    d.Txt_Obs.replaceText(u"");
    d.Cmd_AnnulerObs.press();
  });
  EXPECT_EQ(snapshot(ctl), before);
}

TEST_F(Observations, OkWithoutChangeStoresTheSameText) {
  observe(1, "Même");
  const Snapshot before = snapshot(ctl);
  withDialog(1, [](Frm_AjoutObsTache& d) { d.Cmd_OkObs.press(); });
  EXPECT_EQ(snapshot(ctl), before);
}

TEST_F(Observations, TheCloseBoxIsRefusedAndOnlyTheButtonsClose) {
  bool stayedOpen = false;
  withDialog(0, [&](Frm_AjoutObsTache& d) {
    d.Txt_Obs.replaceText(u"Tapé puis fermé");
    d.requestClose();
    stayedOpen = d.isLoaded();
    d.Cmd_OkObs.press();
  });
  EXPECT_TRUE(stayedOpen);
  EXPECT_FALSE(DefaultFrm_AjoutObsTache().isLoaded());
  EXPECT_EQ(snapshot(ctl).obs[0], "Tapé puis fermé");
  EXPECT_EQ(snapshot(ctl).rows[0], sel("Ménage", "Entretien", "ASPIRATEUR", 'X', "30"));
}

TEST_F(Observations, EachOpeningStartsAfresh) {
  withDialog(0, [](Frm_AjoutObsTache& d) {
    d.Txt_Obs.replaceText(u"Brouillon");
    d.Cmd_AnnulerObs.press();
  });
  // Closing by a button once does not let the close box through the next time.
  bool stayedOpen = false;
  Text shown;
  withDialog(0, [&](Frm_AjoutObsTache& d) {
    shown = d.Txt_Obs.getText();
    d.requestClose();
    stayedOpen = d.isLoaded();
    d.Cmd_AnnulerObs.press();
  });
  EXPECT_TRUE(stayedOpen);
  EXPECT_EQ(shown, u"");
  EXPECT_EQ(&DefaultFrm_AjoutObsTache(), &DefaultFrm_AjoutObsTache());
}

TEST_F(Observations, ObservationsFollowTheirRowsThroughASort) {
  observe(0, "A");
  observe(1, "V");
  // BALAI sorts before all of them: every row moves down by one.
  propose({{proposal("Ménage", "Entretien", "BALAI", "5"), u"BALAI"}});
  select({3});
  const Snapshot s = snapshot(ctl);
  EXPECT_EQ(s.codes, (std::vector<std::string>{"ASPIRATEUR", "BALAI", "VAISSELLE", "DEJEUNER"}));
  EXPECT_EQ(s.obs, (std::vector<std::string>{"A", "", "V", ""}));
  EXPECT_EQ(s.rows[2], sel("Ménage", "Entretien", "VAISSELLE", 'X', "15"));
  ctl.MAJ_Enr();
  EXPECT_EQ(ctl.W_Enr->r(3, 1), u"VAISSELLE");
  EXPECT_EQ(ctl.W_Enr->r(3, 3), u"V");
  EXPECT_EQ(ctl.W_Enr->r(2, 3), u"");
}

TEST_F(Observations, TheDialogsSurface) {
  const Frm_AjoutObsTache& d = DefaultFrm_AjoutObsTache();
  EXPECT_EQ(d.Caption(), u"Observations sur la tâche");
  EXPECT_EQ(d.geometry(), (toolkit::Geometry{0, 0, 6015, 4215}));
  EXPECT_TRUE(d.fixedSingleBorder);
  EXPECT_FALSE(d.maximizeButton);
  EXPECT_TRUE(d.centreOnScreen);
  struct Expected {
    std::string name;
    toolkit::Geometry geometry;
    int tab;
  };
  const std::vector<Expected> expected{
      {"Cmd_OkObs", {4320, 3720, 735, 375}, 1}, {"Cmd_AnnulerObs", {5160, 3720, 735, 375}, 2},
      {"Txt_Obs", {120, 1680, 5775, 1935}, 0},  {"Txt_Groupe", {1080, 600, 4815, 285}, 8},
      {"Txt_Tache", {1080, 960, 4815, 285}, 7}, {"Txt_Type", {1080, 240, 4815, 285}, 6},
      {"Label4", {120, 1440, 930, 195}, 9},     {"Label3", {120, 600, 525, 195}, 5},
      {"Label2", {120, 960, 465, 195}, 4},      {"Label1", {120, 240, 360, 195}, 3}};
  ASSERT_EQ(d.children().size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(d.children()[i]->name(), expected[i].name);
    EXPECT_EQ(d.children()[i]->geometry(), expected[i].geometry) << expected[i].name;
    EXPECT_EQ(d.children()[i]->tabIndex(), expected[i].tab) << expected[i].name;
  }
  EXPECT_EQ(d.Cmd_OkObs.Caption(), u"Ok");
  EXPECT_EQ(d.Cmd_AnnulerObs.Caption(), u"Annuler");
  EXPECT_EQ(d.Label4.Caption(), u"Observations");
  EXPECT_EQ(d.Label3.Caption(), u"Groupe");
  EXPECT_EQ(d.Label2.Caption(), u"Tâche");
  EXPECT_EQ(d.Label1.Caption(), u"Type");
  EXPECT_TRUE(d.Txt_Obs.multiLine);
  EXPECT_TRUE(d.Txt_Type.readOnly && d.Txt_Groupe.readOnly && d.Txt_Tache.readOnly);
  EXPECT_FALSE(d.Txt_Obs.readOnly);
  EXPECT_TRUE(d.Label1.autoSize && d.Label2.autoSize && d.Label3.autoSize && d.Label4.autoSize);
}

}  // namespace
}  // namespace velmora::testing
