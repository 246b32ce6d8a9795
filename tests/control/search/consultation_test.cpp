// The consultation of a full key: what a stored intervention or template holds, beside
// the client's task list at the key's date or the care-act catalogue.
#include <gtest/gtest.h>

#include "control/module_slots.h"
#include "control/search/search_fixture.h"

namespace velmora::testing {
namespace {

using Rows = std::vector<std::string>;
using Table = std::vector<std::vector<std::string>>;

class Consultation : public SearchJourney {
 protected:
  void SetUp() override {
    SearchJourney::SetUp();
    account.put("AIDEDETAILTACHE", kClient + internal("01/10/2026"), {{"A", "B"}, {"12", "45"}});
    account.put("AIDEDETAILTACHE", kClient + internal("01/11/2026"),
                {{"B", "0", "C", "", "A", "A"}, {"30", "9", "", "7", "40", "50"}});
    account.put("AIDEDETAILTACHE", kClient + internal("01/12/2026"), {{"D"}, {"99"}});
  }
  std::string detailKey() const {
    return "INT01" + kClient + internal("23/11/2026") + "XXXXXX" + "2" + "0900";
  }
};

TEST_F(Consultation, ADetailKeyShowsItsItemsBesideTheListValidAtItsDate) {
  account.put("TPSDETAILSINTERV", detailKey(),
              {{internal("23/11/2026")},
               {"1000"},
               {""},
               {""},
               {""},
               {""},
               {"C", "ZZ", "A"},
               {"10", "5", ""},
               {"", "obs ZZ", "obs A"}});
  consult("AUTRE", detailKey());

  // The list of 01/11 alone; "0" and "" are passed over without a gap.
  EXPECT_EQ(table(Variable::R_TableDurees),
            (Table{{"B", "30"}, {"C", ""}, {"A", "40"}, {"A", "50"}}));
  EXPECT_EQ(items(ctl.Lst_Possible), (Rows{selectedRow("MENAGE", "ENTRETIEN", "A", false, "40"),
                                           selectedRow("MENAGE", "ENTRETIEN", "A", false, "50"),
                                           selectedRow("MENAGE", "ENTRETIEN", "B", false, "30"),
                                           selectedRow("SOINS", "TOILETTE", "C", false, "")}));
  EXPECT_EQ(items(ctl.Lst_CodePos), (Rows{"A", "A", "B", "C"}));
  // ZZ has no task record: left out, and the observations stay with their rows.
  EXPECT_EQ(table(Variable::R_TableSelection),
            (Table{{"C", "10", ""}, {"ZZ", "5", "obs ZZ"}, {"A", "", "obs A"}}));
  EXPECT_EQ(items(ctl.Lst_Selectionne), (Rows{selectedRow("MENAGE", "ENTRETIEN", "A", true, ""),
                                              selectedRow("SOINS", "TOILETTE", "C", false, "10")}));
  EXPECT_EQ(items(ctl.Lst_CodeSelect), (Rows{"A", "C"}));
  EXPECT_EQ(attributes(Variable::R_Obs, 2), (Rows{"obs A", ""}));
  EXPECT_EQ(toUtf8(ctl.W_Total.toText()), "10");
  EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), "0h10");
  EXPECT_EQ(ctl.W_AfficheTache, kFalse);
  EXPECT_TRUE(ctl.Cac_TouteTache.Enabled());
}

TEST_F(Consultation, TickingAfterAConsultationLetsTheLastValidDurationWin) {
  account.put("TPSDETAILSINTERV", detailKey(),
              {{""}, {"1000"}, {""}, {""}, {""}, {""}, {"C"}, {"10"}, {""}});
  consult("AUTRE", detailKey());
  ctl.Cac_TouteTache.toggle();
  // R_TableDurees names A with 40 then 50, C with "": A shows 50, C its catalogue 35.
  EXPECT_EQ(items(ctl.Lst_Possible), (Rows{catalogueRow("MENAGE", "ENTRETIEN", "A", "50"),
                                           catalogueRow("MENAGE", "ENTRETIEN", "B", "30"),
                                           catalogueRow("SOINS", "TOILETTE", "C", "35"),
                                           catalogueRow("SOINS", "TOILETTE", "D", "40")}));
  ctl.Cac_TouteTache.toggle();
  EXPECT_EQ(items(ctl.Lst_CodePos), (Rows{"A", "A", "B", "C"}));
  EXPECT_EQ(items(ctl.Lst_Selectionne), (Rows{selectedRow("SOINS", "TOILETTE", "C", false, "10")}));
  EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), "0h10");
}

TEST_F(Consultation, AKeyWithoutItemsShowsAnEmptySelectionAndZeroHours) {
  account.put("TPSDETAILSINTERV", detailKey(), {{""}, {"1000"}});
  consult("AUTRE", detailKey(), "15/10/2026");
  // At 15/10 the list of 01/10 is the latest.
  EXPECT_EQ(items(ctl.Lst_CodePos), (Rows{"A", "B"}));
  EXPECT_TRUE(items(ctl.Lst_Selectionne).empty());
  EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), "0h00");
  EXPECT_EQ(toUtf8(ctl.W_Total.toText()), "0");
}

TEST_F(Consultation, BeforeAnyListTheProposalStaysEmpty) {
  account.put("TPSDETAILSINTERV", detailKey(), {{""}, {"1000"}, {""}, {""}, {""}, {""}, {"B"}});
  consult("AUTRE", detailKey(), "01/01/2026");
  EXPECT_TRUE(items(ctl.Lst_Possible).empty());
  EXPECT_EQ(items(ctl.Lst_CodeSelect), (Rows{"B"}));
}

TEST_F(Consultation, ACareTemplateKeyShowsTheCatalogueAndTheTemplatesItems) {
  putFixed('2', "0930",
           {"1030", "S", {"020101", "010101"}, {"15", "30"}, {"", "Sonner deux fois"}});
  consult("SSIAD", fixedKey('2', "0930") + "SEMTYPE");

  EXPECT_EQ(ctl.Cac_TouteTache.Value(), 1);
  EXPECT_FALSE(ctl.Cac_TouteTache.Enabled());
  EXPECT_EQ(items(ctl.Lst_Possible),
            (Rows{catalogueRow("Relationnel", "Écoute", "Accompagnement", "45"),
                  catalogueRow("Soins de base", "Hygiène", "Change", "10"),
                  catalogueRow("Soins de base", "Hygiène", "Pansement", "20"),
                  catalogueRow("Soins de base", "Hygiène", "Toilette complète", "30")}));
  EXPECT_EQ(items(ctl.Lst_Selectionne),
            (Rows{selectedRow("Relationnel", "Écoute", "Accompagnement", false, "15"),
                  selectedRow("Soins de base", "Hygiène", "Toilette complète", true, "30")}));
  EXPECT_EQ(items(ctl.Lst_CodeSelect), (Rows{"020101", "010101"}));
  EXPECT_EQ(attributes(Variable::R_Obs, 2), (Rows{"", "Sonner deux fois"}));
  EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), "0h45");
  EXPECT_EQ(toUtf8(ctl.W_Total.toText()), "45");
}

TEST_F(Consultation, AFloatingTemplateKeyShowsThatTemplatesItems) {
  putFloating("0900", {"1000", "A", {"D", "A"}, {"25", "5"}, {"obs D", ""}, "24"});
  consult("AUTRE", floatingKey("0900") + "SEMTYPEFLOT");
  EXPECT_EQ(items(ctl.Lst_Selectionne), (Rows{selectedRow("MENAGE", "ENTRETIEN", "A", false, "5"),
                                              selectedRow("SOINS", "TOILETTE", "D", true, "25")}));
  EXPECT_EQ(items(ctl.Lst_CodeSelect), (Rows{"A", "D"}));
  EXPECT_EQ(attributes(Variable::R_Obs, 2), (Rows{"", "obs D"}));
  EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), "0h30");
  EXPECT_EQ(items(ctl.Lst_CodePos), (Rows{"A", "A", "B", "C"}));
}

}  // namespace
}  // namespace velmora::testing
