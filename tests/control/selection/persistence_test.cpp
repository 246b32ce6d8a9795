// The way out and back of a selection: MAJ_Enr, Vider_Tache, Vider_liste and Affiche.
#include "control/module_slots.h"
#include "journey.h"

namespace velmora::testing {
namespace {

// The whole text form of a record built from rows of values, marks and all.
Text recordText(const std::vector<std::vector<std::string>>& attributes) {
  return makeRecord(attributes).r();
}

class WayOut : public Journey {
 protected:
  void SetUp() override {
    Journey::SetUp();
    propose({{proposal("Ménage", "Entretien", "ASPIRATEUR", "30"), u"ASPIRATEUR"},
             {proposal("Repas", "Cuisine", "DEJEUNER", ""), u"DEJEUNER"},
             {proposal("Toilette", "Hygiène", "DOUCHE", "20"), u"DOUCHE"}});
  }

  // A stored selection for Affiche: one {code, duration, observation} per item.
  void storedSelection(const std::vector<std::vector<std::string>>& items) {
    ctl.W_Aff = RecordRef::make(makeRecord(items));
  }
};

TEST_F(WayOut, MajEnrHandsTheSelectionOverInListOrder) {
  select({0, 1, 2});
  observe(2, "Sonner deux fois\nCode 1234");
  edit(1, "0");
  ctl.MAJ_Enr();
  EXPECT_EQ(ctl.W_Enr->r(), recordText({{"ASPIRATEUR", "30", ""},
                                        {"DEJEUNER", "0", ""},
                                        {"DOUCHE", "20", "Sonner deux fois\nCode 1234"}}));
  // MAJ_Enr changes no list and no control.
  EXPECT_EQ(snapshot(ctl).rows.size(), 3u);
  EXPECT_EQ(snapshot(ctl).total, "50");
}

TEST_F(WayOut, ARowWithoutDurationGivesAnEmptyValueNotZero) {
  select({1});
  ctl.MAJ_Enr();
  EXPECT_EQ(ctl.W_Enr->DCount(), 1);
  EXPECT_EQ(ctl.W_Enr->r(1, 1), u"DEJEUNER");
  EXPECT_EQ(ctl.W_Enr->r(1, 2), u"");
  EXPECT_EQ(ctl.W_Enr->r(1, 3), u"");
}

TEST_F(WayOut, EachCallGivesANewRecordAndLeavesTheOldOneAlone) {
  select({0});
  ctl.MAJ_Enr();
  const RecordRef first = ctl.W_Enr;
  const Text firstText = first->r();
  select({2});
  ctl.MAJ_Enr();
  EXPECT_FALSE(first == ctl.W_Enr);
  EXPECT_EQ(first->r(), firstText);
  EXPECT_EQ(ctl.W_Enr->r(), recordText({{"ASPIRATEUR", "30", ""}, {"DOUCHE", "20", ""}}));
}

TEST_F(WayOut, AnEmptySelectionGivesANewEmptyRecord) {
  select({0});
  ctl.MAJ_Enr();
  remove(0);
  ctl.MAJ_Enr();
  EXPECT_EQ(ctl.W_Enr->DCount(), 0);
  EXPECT_EQ(ctl.W_Enr->r(), u"");
}

TEST_F(WayOut, CareActCodesAreZeroFilledToSixDigits) {
  ctl.Vider_liste();
  start(u"SSIAD");
  propose({{proposal("Soins de base", "Hygiène", "Toilette complète", "30"), u"123"},
           {proposal("Soins de base", "Hygiène", "Pansement", "15"), u"1234567"},
           {proposal("Soins de base", "Hygiène", "Surveillance", ""), u"AB12"}});
  select({0, 1, 2});
  ctl.MAJ_Enr();
  EXPECT_EQ(ctl.W_Enr->r(),
            recordText({{"1234567", "15", ""}, {"AB12", "", ""}, {"000123", "30", ""}}));
  // The list keeps the code as it was.
  EXPECT_EQ(snapshot(ctl).codes, (std::vector<std::string>{"1234567", "AB12", "123"}));
}

TEST_F(WayOut, TaskCodesGoUnchanged) {
  ctl.Lst_Possible.AddItem(proposal("Ménage", "Entretien", "Numéro", "5"));
  ctl.Lst_CodePos.AddItem(u"42");
  select({3});
  ctl.MAJ_Enr();
  EXPECT_EQ(ctl.W_Enr->r(1, 1), u"42");
}

TEST_F(WayOut, ViderTacheEmptiesTheSelectionAndKeepsTheProposal) {
  select({0, 2});
  observe(0, "A");
  ASSERT_TRUE(snapshot(ctl).imperative);
  ctl.Vider_Tache();
  const Snapshot s = snapshot(ctl);
  EXPECT_TRUE(s.rows.empty());
  EXPECT_TRUE(s.codes.empty());
  EXPECT_EQ(Variable::R_Obs->r(), u"");
  EXPECT_EQ(s.duree, "");
  EXPECT_EQ(s.total, "50");  // the host's total stays until the next operation sets it
  EXPECT_FALSE(s.imperative);
  EXPECT_EQ(ctl.Lst_Possible.ListCount(), 3);
  EXPECT_EQ(ctl.Lst_CodePos.ListCount(), 3);
  // The planner can fill the selection again, starting from an empty total.
  select({1, 2});
  EXPECT_EQ(snapshot(ctl).codes, (std::vector<std::string>{"DEJEUNER", "DOUCHE"}));
  EXPECT_EQ(snapshot(ctl).obs, (std::vector<std::string>{"", ""}));
  EXPECT_EQ(snapshot(ctl).duree, "0h20");
  EXPECT_EQ(snapshot(ctl).total, "20");
}

TEST_F(WayOut, ViderListeEmptiesEverythingAndReleasesTheConnection) {
  select({0});
  ctl.MAJ_Enr();
  ctl.W_Aff = RecordRef::make();
  const RecordRef aff = ctl.W_Aff;
  ctl.Vider_liste();
  EXPECT_EQ(ctl.Lst_Possible.ListCount(), 0);
  EXPECT_EQ(ctl.Lst_CodePos.ListCount(), 0);
  EXPECT_EQ(ctl.Lst_Selectionne.ListCount(), 0);
  EXPECT_EQ(ctl.Lst_CodeSelect.ListCount(), 0);
  EXPECT_EQ(ctl.Txt_Duree.getText(), u"");
  EXPECT_EQ(ctl.W_Total.toText(), u"30");
  EXPECT_FALSE(ctl.Etq_Imperativite.Visible());
  EXPECT_TRUE(ctl.W_Enr.empty());
  EXPECT_TRUE(ctl.W_Aff == aff);
  EXPECT_TRUE(Variable::TheDatabase.empty());
  EXPECT_TRUE(Variable::F_Tache.empty());
  EXPECT_TRUE(Variable::R_Obs.empty());
}

TEST_F(WayOut, AfficheShowsAStoredSelectionAfterViderTache) {
  select({0});
  ctl.Vider_Tache();
  storedSelection(
      {{"VAISSELLE", "30", ""}, {"DOUCHE", "45", "Clé sous le paillasson"}, {"DEJEUNER"}});
  ctl.Affiche();
  const Snapshot s = snapshot(ctl);
  // Column 1 is the group's label, column 2 the group key, column 3 the code.
  EXPECT_EQ(s.rows, (std::vector<std::string>{sel("Cuisine", "REPAS", "DEJEUNER", ' ', ""),
                                              sel("Hygiène", "TOILETTE", "DOUCHE", 'X', "45"),
                                              sel("Ménage", "ENTRETIEN", "VAISSELLE", ' ', "30")}));
  EXPECT_EQ(s.codes, (std::vector<std::string>{"DEJEUNER", "DOUCHE", "VAISSELLE"}));
  EXPECT_EQ(s.obs, (std::vector<std::string>{"", "Clé sous le paillasson", ""}));
  EXPECT_EQ(s.duree, "1h15");
  EXPECT_EQ(s.total, "75");
  EXPECT_TRUE(s.imperative);
  // The observation opens in the dialog.
  Text shown;
  services->onModal([&](toolkit::Form& form) {
    auto& d = dynamic_cast<Frm_AjoutObsTache&>(form);
    shown = d.Txt_Obs.getText();
    d.Cmd_AnnulerObs.press();
  });
  ctl.Lst_Selectionne.click(1);
  ctl.Cmd_Obs.press();
  EXPECT_EQ(shown, u"Clé sous le paillasson");
}

TEST_F(WayOut, AfficheTwiceWithoutEmptyingDoublesRowsAndTotal) {
  storedSelection({{"VAISSELLE", "30", "V"}, {"DEJEUNER", "15", ""}});
  ctl.Affiche();
  ctl.Affiche();
  const Snapshot s = snapshot(ctl);
  EXPECT_EQ(s.rows, (std::vector<std::string>{sel("Cuisine", "REPAS", "DEJEUNER", ' ', "15"),
                                              sel("Cuisine", "REPAS", "DEJEUNER", ' ', "15"),
                                              sel("Ménage", "ENTRETIEN", "VAISSELLE", 'X', "30"),
                                              sel("Ménage", "ENTRETIEN", "VAISSELLE", 'X', "30")}));
  EXPECT_EQ(s.codes, (std::vector<std::string>{"DEJEUNER", "DEJEUNER", "VAISSELLE", "VAISSELLE"}));
  EXPECT_EQ(s.obs, (std::vector<std::string>{"", "", "V", "V"}));
  EXPECT_EQ(s.duree, "1h30");
  EXPECT_EQ(s.total, "90");
}

TEST_F(WayOut, AfficheBehindRowsAlreadySelectedKeepsTheirObservations) {
  select({0});
  observe(0, "Déjà là");
  storedSelection({{"VAISSELLE", "10", "Nouvelle"}});
  ctl.Affiche();
  const Snapshot s = snapshot(ctl);
  // "ENTRETIEN" sorts before "Entretien": the new row goes first, with its observation.
  EXPECT_EQ(s.codes, (std::vector<std::string>{"VAISSELLE", "ASPIRATEUR"}));
  EXPECT_EQ(s.obs, (std::vector<std::string>{"Nouvelle", "Déjà là"}));
  EXPECT_EQ(s.total, "40");
}

TEST_F(WayOut, ItemsLeftOutDoNotCarryTheirObservationsOntoOthers) {
  account.put("TACHE", "ORPHELINE", {{"Sans groupe"}, {"DISPARU"}, {""}, {"O"}});
  storedSelection({{"INCONNUE", "10", "perdue 1"},
                   {"ORPHELINE", "20", "perdue 2"},
                   {"VAISSELLE", "30", "V"},
                   {"DEJEUNER", "", "D"}});
  ctl.Affiche();
  const Snapshot s = snapshot(ctl);
  EXPECT_EQ(s.codes, (std::vector<std::string>{"DEJEUNER", "VAISSELLE"}));
  EXPECT_EQ(s.obs, (std::vector<std::string>{"D", "V"}));
  EXPECT_EQ(Variable::R_Obs->DCount(), 2);
  EXPECT_EQ(s.duree, "0h30");
  EXPECT_EQ(s.total, "30");
  ctl.MAJ_Enr();
  EXPECT_EQ(ctl.W_Enr->r(), recordText({{"DEJEUNER", "", "D"}, {"VAISSELLE", "30", "V"}}));
}

TEST_F(WayOut, AStoredZeroStandsInTheRowAndShowsZeroHours) {
  storedSelection({{"VAISSELLE", "0", ""}});
  ctl.Affiche();
  EXPECT_EQ(snapshot(ctl).rows,
            (std::vector<std::string>{sel("Ménage", "ENTRETIEN", "VAISSELLE", ' ', "0")}));
  EXPECT_EQ(snapshot(ctl).duree, "0h00");
  EXPECT_EQ(snapshot(ctl).total, "0");
}

TEST_F(WayOut, AnEmptyStoredSelectionChangesNothingButTheLabel) {
  select({2});
  ctl.Etq_Imperativite.setVisible(false);
  Snapshot before = snapshot(ctl);
  ctl.W_Aff = RecordRef::make();
  ctl.Affiche();
  Snapshot after = snapshot(ctl);
  EXPECT_TRUE(after.imperative);
  after.imperative = false;
  EXPECT_EQ(after, before);
}

TEST_F(WayOut, ALongCodeIsCutInTheRowButWholeInTheCodes) {
  account.put("TACHE", "UNE_TACHE_AU_CODE_TRES_LONG_ET_PLUS", {{"Longue"}, {"REPAS"}});
  storedSelection({{"UNE_TACHE_AU_CODE_TRES_LONG_ET_PLUS", "5", ""}});
  ctl.Affiche();
  EXPECT_EQ(snapshot(ctl).rows,
            (std::vector<std::string>{
                sel("Cuisine", "REPAS", "UNE_TACHE_AU_CODE_TRES_LONG_ET_PLUS", ' ', "5")}));
  EXPECT_EQ(snapshot(ctl).codes, (std::vector<std::string>{"UNE_TACHE_AU_CODE_TRES_LONG_ET_PLUS"}));
}

TEST_F(WayOut, CareActsAreNoTasksSoAfficheLeavesEveryItemOut) {
  ctl.Vider_liste();
  start(u"SSIAD");
  storedSelection({{"000123", "30", "obs"}, {"000456", "15", ""}});
  ctl.Affiche();
  const Snapshot s = snapshot(ctl);
  EXPECT_TRUE(s.rows.empty());
  EXPECT_TRUE(s.codes.empty());
  EXPECT_EQ(Variable::R_Obs->r(), u"");
  EXPECT_EQ(s.duree, "");
  EXPECT_EQ(s.total, "0");
  EXPECT_FALSE(s.imperative);
  EXPECT_EQ(Err.Number, errors::kRecordNotFound);
}

}  // namespace
}  // namespace velmora::testing
