// The catalogue fills that stand in when no template exists, and the show-all switch,
// through Init and the planner's tick on a small account.
#include <gtest/gtest.h>

#include "control/module_slots.h"
#include "control/search/search_fixture.h"

namespace velmora::testing {
namespace {

using Rows = std::vector<std::string>;
using Table = std::vector<std::vector<std::string>>;

TEST_F(SearchJourney, WithoutTemplatesHomeHelpMergesTheClientsListsLatestFirst) {
  account.put("TACHE", "E", {{"1"}, {"PERDU"}, {""}, {""}, {"5"}});  // group missing
  account.put("AIDEDETAILTACHE", kClient + internal("01/11/2026"),
              {{"B", "ZZ", "C", "E"}, {"30", "5", "", "9"}});
  account.put("AIDEDETAILTACHE", kClient + internal("01/10/2026"), {{"A", "B"}, {"12", "45"}});
  account.put("AIDEDETAILTACHE", "00002" + internal("01/12/2026"), {{"D"}, {"99"}});
  init("AUTRE", kClient, "09:00", "10:00", "0010000");

  EXPECT_EQ(ctl.W_AfficheTache, kFalse);
  EXPECT_EQ(table(Variable::R_TablePossible),
            (Table{{"B", "30"}, {"ZZ", "5"}, {"C", ""}, {"E", "9"}, {"A", "12"}}));
  EXPECT_EQ(table(Variable::R_TableDurees),
            (Table{{"B", "30"}, {"ZZ", "5"}, {"C", ""}, {"E", "9"}, {"A", "12"}}));
  EXPECT_EQ(items(ctl.Lst_Possible), (Rows{catalogueRow("MENAGE", "ENTRETIEN", "A", "12"),
                                           catalogueRow("MENAGE", "ENTRETIEN", "B", "30"),
                                           catalogueRow("SOINS", "TOILETTE", "C", "")}));
  EXPECT_EQ(items(ctl.Lst_CodePos), (Rows{"A", "B", "C"}));
  EXPECT_TRUE(items(ctl.Lst_Selectionne).empty());
  EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), "");
}

TEST_F(SearchJourney, WithoutTemplatesNorListsHomeHelpLeavesAnEmptyTable) {
  init("AUTRE", kClient, "09:00", "10:00", "0010000");
  EXPECT_EQ(ctl.W_AfficheTache, kFalse);
  EXPECT_TRUE(items(ctl.Lst_Possible).empty());
  ASSERT_FALSE(Variable::R_TableDurees.empty());
  EXPECT_EQ(Variable::R_TableDurees->DCount(), 0);
}

TEST_F(SearchJourney, WithoutTemplatesCareShowsTheCatalogueLessActsWithoutRegroupmentOrType) {
  account.put("SSIADSOINS", "990101", {{"Sans regroupement"}, {""}, {""}, {"5"}});
  account.put("SSIADSOINS", "019901", {{"Sans type"}, {""}, {""}, {"5"}});
  account.put("SSIADSOINS", "010104", {{"Surveillance"}, {""}, {""}, {""}});
  init("SSIAD", kClient, "09:00", "10:00", "0010000");

  EXPECT_EQ(ctl.W_AfficheTache, kFalse);
  EXPECT_EQ(items(ctl.Lst_Possible),
            (Rows{catalogueRow("Relationnel", "Écoute", "Accompagnement", "45"),
                  catalogueRow("Soins de base", "Hygiène", "Change", "10"),
                  catalogueRow("Soins de base", "Hygiène", "Pansement", "20"),
                  catalogueRow("Soins de base", "Hygiène", "Surveillance", ""),
                  catalogueRow("Soins de base", "Hygiène", "Toilette complète", "30")}));
  EXPECT_EQ(items(ctl.Lst_CodePos), (Rows{"020101", "010102", "010103", "010104", "010101"}));
}

class ShowAll : public SearchJourney {
 protected:
  void SetUp() override {
    SearchJourney::SetUp();
    // Groups and tasks that the full catalogue cannot place.
    account.put("GROUPETACHE", "SANSTYPE", {{"1"}, {"INCONNU"}});
    account.put("TACHE", "G", {{"1"}, {"SANSTYPE"}, {""}, {""}, {"1"}});
    account.put("TACHE", "F", {{"1"}, {"ORPHELIN"}, {""}, {""}, {"2"}});
  }
};

TEST_F(ShowAll, TickingShowsTheWholeTaskCatalogueWithTheClientsDurations) {
  putFixed('2', "0900", {"1000", "A", {"A", "B", "C"}, {"0", "", "12"}, {"obs", "", ""}});
  init("AUTRE", kClient, "09:00", "10:00", "0010000");
  const Rows selection = items(ctl.Lst_Selectionne);
  ASSERT_EQ(selection.size(), 3u);

  ctl.Cac_TouteTache.toggle();
  // A keeps the catalogue's 20 over a "0", B its 25 over a "", C shows the client's 12.
  EXPECT_EQ(items(ctl.Lst_Possible), (Rows{catalogueRow("MENAGE", "ENTRETIEN", "A", "20"),
                                           catalogueRow("MENAGE", "ENTRETIEN", "B", "25"),
                                           catalogueRow("SOINS", "TOILETTE", "C", "12"),
                                           catalogueRow("SOINS", "TOILETTE", "D", "40")}));
  EXPECT_EQ(items(ctl.Lst_CodePos), (Rows{"A", "B", "C", "D"}));
  EXPECT_EQ(items(ctl.Lst_Selectionne), selection);
  EXPECT_EQ(toUtf8(ctl.W_Total.toText()), "12");
  EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), "0h12");

  ctl.Cac_TouteTache.toggle();
  // Back to the search, without the lower half: the total starts again from nothing.
  EXPECT_EQ(items(ctl.Lst_Possible), (Rows{fixedRow("MENAGE", "ENTRETIEN", "A", "0"),
                                           fixedRow("MENAGE", "ENTRETIEN", "B", ""),
                                           fixedRow("SOINS", "TOILETTE", "C", "12")}));
  EXPECT_EQ(items(ctl.Lst_Selectionne), selection);
  EXPECT_EQ(toUtf8(ctl.W_Total.toText()), "0");
  EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), "");
}

TEST_F(ShowAll, WithoutTaskTypesTheCatalogueIsEmpty) {
  account.remove("TYPETACHE", "MENAGE");
  account.remove("TYPETACHE", "SOINS");
  account.put("AIDEDETAILTACHE", kClient + internal("01/11/2026"), {{"A"}, {"5"}});
  init("AUTRE", kClient, "09:00", "10:00", "0010000");
  ASSERT_EQ(items(ctl.Lst_CodePos), (Rows{"A"}));
  ctl.Cac_TouteTache.toggle();
  EXPECT_TRUE(items(ctl.Lst_Possible).empty());
  EXPECT_TRUE(items(ctl.Lst_CodePos).empty());
  ctl.Cac_TouteTache.toggle();
  EXPECT_EQ(items(ctl.Lst_Possible), (Rows{catalogueRow("MENAGE", "ENTRETIEN", "A", "5")}));
}

TEST_F(ShowAll, CareTicksToTheCareCatalogueAndBack) {
  putFixed('2', "0900", {"1000", "S", {"010101"}, {"35"}, {""}});
  init("SSIAD", kClient, "09:00", "10:00", "0010000");
  ASSERT_EQ(items(ctl.Lst_CodeSelect), (Rows{"010101"}));
  ctl.Cac_TouteTache.toggle();
  EXPECT_EQ(items(ctl.Lst_Possible),
            (Rows{catalogueRow("Relationnel", "Écoute", "Accompagnement", "45"),
                  catalogueRow("Soins de base", "Hygiène", "Change", "10"),
                  catalogueRow("Soins de base", "Hygiène", "Pansement", "20"),
                  catalogueRow("Soins de base", "Hygiène", "Toilette complète", "30")}));
  EXPECT_EQ(items(ctl.Lst_CodeSelect), (Rows{"010101"}));
  EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), "0h35");
  ctl.Cac_TouteTache.toggle();
  EXPECT_EQ(items(ctl.Lst_Possible),
            (Rows{fixedRow("Soins de base", "Hygiène", "Toilette complète", "35")}));
  EXPECT_EQ(items(ctl.Lst_CodeSelect), (Rows{"010101"}));
  EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), "");
}

TEST_F(ShowAll, UntickingAFloatingSearchRunsTheFloatingSearchAgain) {
  putFloating("0900", {"1000", "A", {"C"}, {"50"}, {""}, "2"});
  init("AUTRE", kClient + "FLOT", "09:00", "10:00", "001000");
  ASSERT_EQ(items(ctl.Lst_CodeSelect), (Rows{"C"}));
  ctl.Cac_TouteTache.toggle();
  EXPECT_EQ(items(ctl.Lst_CodePos), (Rows{"A", "B", "C", "D"}));
  EXPECT_EQ(ctl.Lst_Possible.List(2), fromUtf8(catalogueRow("SOINS", "TOILETTE", "C", "50")));
  ctl.Cac_TouteTache.toggle();
  EXPECT_EQ(items(ctl.Lst_Possible), (Rows{floatingRow("SOINS", "TOILETTE", "C", "50")}));
  EXPECT_EQ(items(ctl.Lst_CodeSelect), (Rows{"C"}));
}

TEST_F(ShowAll, WithoutAnyDurationTableTheCatalogueKeepsItsOwnDurations) {
  // The guard stops the search before it makes R_TableDurees.
  init("AUTRE", kClient, "09:00", "", "0010000");
  ASSERT_TRUE(Variable::R_TableDurees.empty());
  ctl.Cac_TouteTache.toggle();
  EXPECT_EQ(items(ctl.Lst_Possible), (Rows{catalogueRow("MENAGE", "ENTRETIEN", "A", "20"),
                                           catalogueRow("MENAGE", "ENTRETIEN", "B", "25"),
                                           catalogueRow("SOINS", "TOILETTE", "C", "35"),
                                           catalogueRow("SOINS", "TOILETTE", "D", "40")}));
}

TEST_F(SearchJourney, FloatingCareSearchMarksEveryRow) {
  putFloating("0900", {"1000", "S", {"010101", "020101"}, {"30", "15"}, {"obs", ""}, "13"});
  putFloating("1500", {"1600", "S", {"010102"}, {"10"}, {""}, "1"});
  init("SSIAD", kClient + "FLOT", "09:00", "10:00", "010000");
  EXPECT_EQ(items(ctl.Lst_Possible),
            (Rows{floatingRow("Relationnel", "Écoute", "Accompagnement", "15"),
                  floatingRow("Soins de base", "Hygiène", "Change", "10"),
                  floatingRow("Soins de base", "Hygiène", "Toilette complète", "30")}));
  EXPECT_EQ(items(ctl.Lst_Selectionne),
            (Rows{selectedRow("Relationnel", "Écoute", "Accompagnement", false, "15"),
                  selectedRow("Soins de base", "Hygiène", "Toilette complète", true, "30")}));
  EXPECT_EQ(attributes(Variable::R_Obs, 2), (Rows{"", "obs"}));
  EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), "0h45");
}

}  // namespace
}  // namespace velmora::testing
