// Whole template searches through Init on a small account: exact rows of both lists,
// code lists, observations, working tables and totals, in both vocabularies.
#include <gtest/gtest.h>

#include "control/module_slots.h"
#include "control/search/search_fixture.h"

namespace velmora::testing {
namespace {

using Rows = std::vector<std::string>;
using Table = std::vector<std::vector<std::string>>;

class WholeCase : public SearchJourney {
 protected:
  // Day 2 from 09:00 to 10:00. A fixed template of day 2 from 0930 to 1030 with A and B,
  // one of day 4 with B and C, a floating one with C and D.
  void putTemplates(const std::string& kind, const std::vector<std::string>& a,
                    const std::vector<std::string>& b) {
    putFixed('2', "0930", {"1030", kind, {a[0], a[1]}, {"30", "15"}, {"Sonner deux fois", ""}});
    putFixed('4', "0800", {"1200", kind, {b[0], b[1]}, {"20", "10"}, {"", ""}});
    putFloating("0900", {"1000", kind, {b[1], b[2]}, {"50", "25"}, {"", "obs D"}, "4"});
  }
};

TEST_F(WholeCase, HomeHelpProposesAllFourItemsAndSelectsTheMatchingTemplate) {
  putTemplates("A", {"A", "B"}, {"B", "C", "D"});
  init("AUTRE", kClient, "09:00", "10:00", "0010000");

  EXPECT_EQ(ctl.W_AfficheTache, kTrue);
  EXPECT_EQ(table(Variable::R_TablePossible),
            (Table{{"A", "30", ""}, {"B", "15", ""}, {"C", "10", ""}, {"D", "25", "*"}}));
  EXPECT_EQ(table(Variable::R_TableSelection),
            (Table{{"A", "30", "Sonner deux fois"}, {"B", "15", ""}}));
  EXPECT_EQ(table(Variable::R_TableDurees),
            (Table{{"A", "30"}, {"B", "15"}, {"C", "10"}, {"D", "25"}}));
  EXPECT_EQ(items(ctl.Lst_Possible), (Rows{fixedRow("MENAGE", "ENTRETIEN", "A", "30"),
                                           fixedRow("MENAGE", "ENTRETIEN", "B", "15"),
                                           fixedRow("SOINS", "TOILETTE", "C", "10"),
                                           floatingRow("SOINS", "TOILETTE", "D", "25")}));
  EXPECT_EQ(items(ctl.Lst_CodePos), (Rows{"A", "B", "C", "D"}));
  EXPECT_EQ(items(ctl.Lst_Selectionne),
            (Rows{selectedRow("MENAGE", "ENTRETIEN", "A", true, "30"),
                  selectedRow("MENAGE", "ENTRETIEN", "B", false, "15")}));
  EXPECT_EQ(items(ctl.Lst_CodeSelect), (Rows{"A", "B"}));
  EXPECT_EQ(attributes(Variable::R_Obs, 2), (Rows{"Sonner deux fois", ""}));
  EXPECT_EQ(toUtf8(ctl.W_Total.toText()), "45");
  EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), "0h45");
  EXPECT_TRUE(CtrInspector(ctl).W_ListeSem().empty());  // released after the fill
}

TEST_F(WholeCase, CareActsGiveTheLabelsAndTheSortMovesObservationsWithTheirRows) {
  putTemplates("S", {"010101", "010102"}, {"010102", "020101", "010103"});
  init("SSIAD", kClient, "09:00", "10:00", "0010000");

  EXPECT_EQ(ctl.W_AfficheTache, kTrue);
  EXPECT_EQ(items(ctl.Lst_Possible),
            (Rows{fixedRow("Relationnel", "Écoute", "Accompagnement", "10"),
                  fixedRow("Soins de base", "Hygiène", "Change", "15"),
                  fixedRow("Soins de base", "Hygiène", "Toilette complète", "30"),
                  floatingRow("Soins de base", "Hygiène", "Pansement", "25")}));
  EXPECT_EQ(items(ctl.Lst_CodePos), (Rows{"020101", "010102", "010101", "010103"}));
  EXPECT_EQ(items(ctl.Lst_Selectionne),
            (Rows{selectedRow("Soins de base", "Hygiène", "Change", false, "15"),
                  selectedRow("Soins de base", "Hygiène", "Toilette complète", true, "30")}));
  EXPECT_EQ(items(ctl.Lst_CodeSelect), (Rows{"010102", "010101"}));
  EXPECT_EQ(attributes(Variable::R_Obs, 2), (Rows{"", "Sonner deux fois"}));
  EXPECT_EQ(toUtf8(ctl.W_Total.toText()), "45");
  EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), "0h45");
}

TEST_F(WholeCase, TheKindOfActivitySeparatesTheTemplates) {
  // Care templates are invisible to a home-help search, which falls back on the lists.
  putTemplates("S", {"A", "B"}, {"B", "C", "D"});
  init("AUTRE", kClient, "09:00", "10:00", "0010000");
  EXPECT_EQ(ctl.W_AfficheTache, kFalse);
  EXPECT_TRUE(items(ctl.Lst_Possible).empty());
  EXPECT_TRUE(items(ctl.Lst_Selectionne).empty());
  EXPECT_EQ(table(Variable::R_TableDurees), Table{});
}

TEST_F(WholeCase, AMaskOfAnotherDayProposesEverythingAndSelectsNothing) {
  putTemplates("A", {"A", "B"}, {"B", "C", "D"});
  init("AUTRE", kClient, "09:00", "10:00", "0000000");
  EXPECT_EQ(ctl.W_AfficheTache, kTrue);
  EXPECT_EQ(items(ctl.Lst_CodePos), (Rows{"A", "B", "C", "D"}));
  EXPECT_EQ(table(Variable::R_TableSelection), Table{});
  EXPECT_TRUE(items(ctl.Lst_Selectionne).empty());
  EXPECT_EQ(toUtf8(ctl.W_Total.toText()), "0");
  EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), "");
}

TEST_F(WholeCase, TheDayOfTheOtherTemplateSelectsItsItemsInstead) {
  putTemplates("A", {"A", "B"}, {"B", "C", "D"});
  init("AUTRE", kClient, "09:00", "10:00", "0000100");
  // Day 4 runs from 0800 to 1200: B and C, with that template's durations.
  EXPECT_EQ(table(Variable::R_TableSelection), (Table{{"B", "20", ""}, {"C", "10", ""}}));
  EXPECT_EQ(items(ctl.Lst_Selectionne), (Rows{selectedRow("MENAGE", "ENTRETIEN", "B", false, "20"),
                                              selectedRow("SOINS", "TOILETTE", "C", false, "10")}));
  EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), "0h30");
}

TEST_F(SearchJourney, TemplatesThatTouchTheSlotAtEitherEndMatch) {
  // 09:00-10:00 is 0900-1000: one template starts at 1000, one ends at 0900, one starts
  // at 1001 and one ends at 0899.
  putFixed('2', "1000", {"1100", "A", {"A"}, {"5"}, {""}});
  putFixed('2', "0800", {"0900", "A", {"B"}, {"6"}, {""}});
  putFixed('2', "1001", {"1100", "A", {"C"}, {"7"}, {""}});
  putFixed('2', "0700", {"0899", "A", {"D"}, {"8"}, {""}});
  init("AUTRE", kClient, "09:00", "10:00", "0010000");
  EXPECT_EQ(table(Variable::R_TableSelection), (Table{{"B", "6", ""}, {"A", "5", ""}}));
}

TEST_F(SearchJourney, MinutesAreTurnedIntoHundredthsOfAnHour) {
  // 08:01 is 0802 and 08:59 is 0898: a template from 0898 matches, one from 0899 not;
  // one ending at 0802 matches, one ending at 0801 not.
  putFixed('0', "0898", {"1000", "A", {"A"}, {"5"}, {""}});
  putFixed('0', "0899", {"1000", "A", {"B"}, {"6"}, {""}});
  putFixed('0', "0700", {"0802", "A", {"C"}, {"7"}, {""}});
  putFixed('0', "0600", {"0801", "A", {"D"}, {"8"}, {""}});
  init("AUTRE", kClient, "08:01", "08:59", "1000000");
  EXPECT_EQ(table(Variable::R_TableSelection), (Table{{"C", "7", ""}, {"A", "5", ""}}));
}

TEST_F(SearchJourney, DecimalHoursWhenTheParameterSaysSo) {
  account.put("TPSPARAM", "1", {{""}, {""}, {""}, {""}, {""}, {""}, {""}, {""}, {""}, {""},
                                {""}, {""}, {""}, {""}, {""}, {""}, {""}, {""}, {""}, {"1"}});
  // 8.5 to 9 is 0850-0900.
  putFixed('1', "0900", {"1000", "A", {"A"}, {"5"}, {""}});
  putFixed('1', "0901", {"1000", "A", {"B"}, {"6"}, {""}});
  putFixed('1', "0800", {"0850", "A", {"C"}, {"7"}, {""}});
  putFixed('1', "0700", {"0849", "A", {"D"}, {"8"}, {""}});
  init("AUTRE", kClient, "8.5", "9", "0100000");
  EXPECT_EQ(table(Variable::R_TableSelection), (Table{{"C", "7", ""}, {"A", "5", ""}}));
}

TEST_F(SearchJourney, FloatingSearchSelectsByTheDaysOfEachTemplate) {
  putFixed('2', "0900", {"1000", "A", {"A"}, {"99"}, {""}});  // not looked at
  putFloating("0800", {"0930", "A", {"B"}, {"20"}, {""}, "6"});
  putFloating("0900", {"1000", "A", {"C", "D"}, {"50", "25"}, {"", "obs D"}, "24"});
  putFloating("1400", {"1500", "A", {"A", "C"}, {"5", "1"}, {"", ""}, "2"});
  // Day 2 and the seventh position set: the template of day 6 never matches.
  init("AUTRE", kClient + "FLOT", "09:00", "10:00", "0010001");

  EXPECT_EQ(ctl.W_AfficheTache, kTrue);
  EXPECT_EQ(table(Variable::R_TablePossible),
            (Table{{"B", "20"}, {"C", "50"}, {"D", "25"}, {"A", "5"}}));
  EXPECT_EQ(table(Variable::R_TableSelection), (Table{{"C", "50", ""}, {"D", "25", "obs D"}}));
  EXPECT_EQ(items(ctl.Lst_Possible), (Rows{floatingRow("MENAGE", "ENTRETIEN", "A", "5"),
                                           floatingRow("MENAGE", "ENTRETIEN", "B", "20"),
                                           floatingRow("SOINS", "TOILETTE", "C", "50"),
                                           floatingRow("SOINS", "TOILETTE", "D", "25")}));
  EXPECT_EQ(items(ctl.Lst_CodePos), (Rows{"A", "B", "C", "D"}));
  EXPECT_EQ(items(ctl.Lst_Selectionne), (Rows{selectedRow("SOINS", "TOILETTE", "C", false, "50"),
                                              selectedRow("SOINS", "TOILETTE", "D", true, "25")}));
  EXPECT_EQ(attributes(Variable::R_Obs, 2), (Rows{"", "obs D"}));
  EXPECT_EQ(toUtf8(ctl.W_Total.toText()), "75");
  EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), "1h15");
}

TEST_F(SearchJourney, FloatingSearchNeverLooksAtTheSeventhDay) {
  putFloating("0900", {"1000", "A", {"C"}, {"50"}, {""}, "0123456"});
  init("AUTRE", kClient + "FLOT", "09:00", "10:00", "0000001");
  EXPECT_EQ(table(Variable::R_TablePossible), (Table{{"C", "50"}}));
  EXPECT_EQ(table(Variable::R_TableSelection), Table{});
  EXPECT_EQ(items(ctl.Lst_Possible), (Rows{floatingRow("SOINS", "TOILETTE", "C", "50")}));
  EXPECT_TRUE(items(ctl.Lst_Selectionne).empty());
}

TEST_F(SearchJourney, MissingCatalogueRecordsDropTheRowButKeepTheTablesAndObservationNumbers) {
  account.put("TACHE", "E", {{"1"}, {"PERDU"}, {""}, {""}, {"5"}});  // group missing
  account.put("SSIADSOINS", "990101", {{"Sans regroupement"}, {""}, {""}, {"5"}});
  putFixed('3', "0900", {"1000", "A", {"ZZ", "E", "A"}, {"5", "6", "7"}, {"o1", "o2", "o3"}});
  init("AUTRE", kClient, "09:00", "10:00", "0001000");
  EXPECT_EQ(table(Variable::R_TablePossible),
            (Table{{"ZZ", "5", ""}, {"E", "6", ""}, {"A", "7", ""}}));
  EXPECT_EQ(table(Variable::R_TableDurees), (Table{{"ZZ", "5"}, {"E", "6"}, {"A", "7"}}));
  EXPECT_EQ(items(ctl.Lst_Possible), (Rows{fixedRow("MENAGE", "ENTRETIEN", "A", "7")}));
  EXPECT_EQ(items(ctl.Lst_Selectionne), (Rows{selectedRow("MENAGE", "ENTRETIEN", "A", true, "7")}));
  // The observation stays at the table's row number.
  EXPECT_EQ(attributes(Variable::R_Obs, 3), (Rows{"", "", "o3"}));
  EXPECT_EQ(toUtf8(ctl.W_Total.toText()), "7");
  EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), "0h07");
}

TEST_F(SearchJourney, CareActsWithoutRegroupmentOrTypeAreDropped) {
  account.put("SSIADSOINS", "990101", {{"Sans regroupement"}, {""}, {""}, {"5"}});
  account.put("SSIADSOINS", "019901", {{"Sans type"}, {""}, {""}, {"5"}});
  putFixed('3', "0900", {"1000", "S", {"990101", "019901", "010101"}, {"5", "6", "7"}, {}});
  init("SSIAD", kClient, "09:00", "10:00", "0001000");
  EXPECT_EQ(items(ctl.Lst_Possible),
            (Rows{fixedRow("Soins de base", "Hygiène", "Toilette complète", "7")}));
  EXPECT_EQ(items(ctl.Lst_CodeSelect), (Rows{"010101"}));
}

TEST_F(SearchJourney, ADurationWiderThanItsColumnLeavesTheRowWithoutOne) {
  putFixed('3', "0900", {"1000", "A", {"A", "B"}, {"12345678", "1234567"}, {"", ""}});
  init("AUTRE", kClient, "09:00", "10:00", "0001000");
  EXPECT_EQ(items(ctl.Lst_Possible), (Rows{col("MENAGE") + col("ENTRETIEN") + col("A") + "  ",
                                           fixedRow("MENAGE", "ENTRETIEN", "B", "1234567")}));
  EXPECT_EQ(items(ctl.Lst_Selectionne), (Rows{col("MENAGE") + col("ENTRETIEN") + col("A") + " ",
                                              col("MENAGE") + col("ENTRETIEN") + col("B") + " "}));
}

TEST_F(SearchJourney, AnEmptyCriterionStopsTheSearchBeforeAnyQuery) {
  putFixed('2', "0900", {"1000", "A", {"A"}, {"5"}, {""}});
  init("AUTRE", kClient, "09:00", "", "0010000");
  EXPECT_EQ(ctl.W_AfficheTache, kFalse);
  EXPECT_TRUE(items(ctl.Lst_Possible).empty());
  EXPECT_TRUE(CtrInspector(ctl).W_ListeSem().empty());
  EXPECT_TRUE(Variable::R_TableDurees.empty());
  EXPECT_TRUE(Variable::R_TablePossible.empty());
}

TEST_F(SearchJourney, WithoutEndDateATemplateThatStartsLaterIsFoundToo) {
  account.put("TPSSEMAINETYPE", kClient + internal("01/01/2027") + "2" + "0900" + "01",
              templateRecord({"1000", "A", {"A"}, {"5"}, {""}}));
  init("AUTRE", kClient, "09:00", "10:00", "0010000", "30/11/2026");
  EXPECT_EQ(ctl.W_AfficheTache, kFalse);
  init("AUTRE", kClient, "09:00", "10:00", "0010000", "");
  EXPECT_EQ(ctl.W_AfficheTache, kTrue);
  EXPECT_EQ(table(Variable::R_TableSelection), (Table{{"A", "5", ""}}));
}

TEST_F(SearchJourney, ATemplateWhoseValidityEndedBeforeThePeriodIsLeftOut) {
  TemplateSpec ended{"1000", "A", {"A"}, {"5"}, {""}};
  auto record = templateRecord(ended);
  record[0] = {internal("22/11/2026")};
  account.put("TPSSEMAINETYPE", fixedKey('2', "0900"), record);
  record[0] = {internal("23/11/2026")};
  record[3] = {"B"};
  account.put("TPSSEMAINETYPE", fixedKey('2', "0800"), record);
  init("AUTRE", kClient, "09:00", "10:00", "0010000");
  EXPECT_EQ(table(Variable::R_TablePossible), (Table{{"B", "5", ""}}));
}

}  // namespace
}  // namespace velmora::testing
