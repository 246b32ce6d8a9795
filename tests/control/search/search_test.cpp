// Whole searches through Init on a small account, in both vocabularies: the template
// searches, the catalogue fills that stand in when no template exists, the show-all
// switch, the consultation of a full key, and the texts the store is sent.
#include <map>

#include <velmora/base/failure.h>
#include "control/fixture.h"
#include "search/time_conversion.h"

namespace velmora::testing {
namespace {

const std::string kClient = "00001";

// The three columns of the account's items, as a fill writes them.
std::string columns(const std::string& code) {
  static const std::map<std::string, std::string> known{
      {"A", col("MENAGE") + col("ENTRETIEN") + col("A")},
      {"B", col("MENAGE") + col("ENTRETIEN") + col("B")},
      {"C", col("SOINS") + col("TOILETTE") + col("C")},
      {"D", col("SOINS") + col("TOILETTE") + col("D")},
      {"010101", col("Soins de base") + col("Hygiène") + col("Toilette complète")},
      {"010102", col("Soins de base") + col("Hygiène") + col("Change")},
      {"010103", col("Soins de base") + col("Hygiène") + col("Pansement")},
      {"010104", col("Soins de base") + col("Hygiène") + col("Surveillance")},
      {"020101", col("Relationnel") + col("Écoute") + col("Accompagnement")}};
  return known.at(code);
}
std::string catalogueRow(const std::string& code, std::string_view minutes) {
  return columns(code) + right(minutes, 7);
}
std::string fixedRow(const std::string& code, std::string_view minutes) {
  return catalogueRow(code, minutes) + "  ";
}
std::string floatingRow(const std::string& code, std::string_view minutes) {
  return catalogueRow(code, minutes) + "  *";
}
std::string selectedRow(const std::string& code, bool observation, std::string_view minutes) {
  return columns(code) + (observation ? "X" : " ") + right(minutes, 6);
}

// A template record: end time, kind ("S" care), items with durations and observations,
// and for floating templates the days.
struct TemplateSpec {
  std::string end;
  std::string kind;
  Rows codes;
  Rows durations;
  Rows observations;
  std::string days = {};
};
Table templateRecord(const TemplateSpec& t, const std::string& endDate = "") {
  return {{endDate}, {t.end}, {t.kind},       t.codes, t.durations,
          {""},      {""},    t.observations, {""},    {t.days}};
}

// Home help: types MENAGE and SOINS, groups ENTRETIEN (MENAGE) and TOILETTE (SOINS), tasks
// A and B in ENTRETIEN, C and D in TOILETTE. Care: acts 010101, 010102 and 010103 under
// type 0101 and regroupment 01, 020101 under 0201 and 02.
class SearchJourney : public ControlTest {
 protected:
  void SetUp() override {
    ControlTest::SetUp();
    account.put("TPSPARAM", "1", {});
    account.put("TYPETACHE", "MENAGE", {{"1"}});
    account.put("TYPETACHE", "SOINS", {{"2"}});
    account.put("GROUPETACHE", "ENTRETIEN", {{"1"}, {"MENAGE"}});
    account.put("GROUPETACHE", "TOILETTE", {{"1"}, {"SOINS"}});
    account.put("TACHE", "A", {{"1"}, {"ENTRETIEN"}, {""}, {""}, {"20"}});
    account.put("TACHE", "B", {{"2"}, {"ENTRETIEN"}, {""}, {""}, {"25"}});
    account.put("TACHE", "C", {{"1"}, {"TOILETTE"}, {""}, {""}, {"35"}});
    account.put("TACHE", "D", {{"2"}, {"TOILETTE"}, {""}, {""}, {"40"}});
    account.put("SSIADREGROUPSOINS", "01", {{"Soins de base"}});
    account.put("SSIADREGROUPSOINS", "02", {{"Relationnel"}});
    account.put("SSIADTYPESOINS", "0101", {{"Hygiène"}});
    account.put("SSIADTYPESOINS", "0201", {{"Écoute"}});
    account.put("SSIADSOINS", "010101", {{"Toilette complète"}, {""}, {""}, {"30"}});
    account.put("SSIADSOINS", "010102", {{"Change"}, {""}, {""}, {"10"}});
    account.put("SSIADSOINS", "010103", {{"Pansement"}, {""}, {""}, {"20"}});
    account.put("SSIADSOINS", "020101", {{"Accompagnement"}, {""}, {""}, {"45"}});
  }

  std::string fixedKey(char day, const std::string& time, const char* start = "01/01/2026") {
    return kClient + internal(start) + day + time + "01";
  }
  std::string floatingKey(const std::string& time) {
    return kClient + internal("01/01/2026") + time + "01";
  }
  void putFixed(char day, const std::string& time, const TemplateSpec& t) {
    account.put("TPSSEMAINETYPE", fixedKey(day, time), templateRecord(t));
  }
  void putFloating(const std::string& time, const TemplateSpec& t) {
    account.put("TPSSEMAINETYPEFLOT", floatingKey(time), templateRecord(t));
  }
  void putList(const char* date, const Rows& codes, const Rows& minutes) {
    account.put("AIDEDETAILTACHE", kClient + internal(date), {codes, minutes});
  }
  // Init with a bare client code: the search runs with the lower half filled.
  void search(const std::string& typeAct, const std::string& code, const std::string& heureDe,
              const std::string& heureA, const std::string& jour,
              const std::string& dateFin = "30/11/2026") {
    init(typeAct, code, "23/11/2026", dateFin, heureDe, heureA, jour);
  }
  // Init with a full key: the consultation runs.
  void consult(const std::string& typeAct, const std::string& key,
               const char* date = "23/11/2026") {
    init(typeAct, key, date);
  }
  // Day 2 from 09:00 to 10:00. A fixed template of day 2 from 0930 to 1030 with items 0 and
  // 1, one of day 4 with items 2 and 3, a floating one with 3 and 4.
  void putTemplates(const std::string& kind, const Rows& c) {
    putFixed('2', "0930", {"1030", kind, {c[0], c[1]}, {"30", "15"}, {"Sonner deux fois", ""}});
    putFixed('4', "0800", {"1200", kind, {c[2], c[3]}, {"20", "10"}, {"", ""}});
    putFloating("0900", {"1000", kind, {c[3], c[4]}, {"50", "25"}, {"", "obs D"}, "4"});
  }
  // What the lists and the total show.
  void expectShown(const Rows& possible, const Rows& selected, const std::string& duree) {
    EXPECT_EQ(items(ctl.Lst_Possible), possible);
    EXPECT_EQ(items(ctl.Lst_Selectionne), selected);
    EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), duree);
  }
};
using WholeCase = SearchJourney;

TEST_F(WholeCase, TheDayTheKindAndTheVocabularyDecideWhatIsSelected) {
  struct Case {
    const char* typeAct;
    const char* kind;
    const char* jour;
    Rows codesPos;
    Rows codesSel;
    Rows obs;
    const char* duree;
  };
  const Rows acts{"010101", "010102", "010102", "020101", "010103"};
  const std::vector<Case> cases{
      // Care: the labels come from the care catalogue, observations move with their rows.
      {"SSIAD",
       "S",
       "0010000",
       {"020101", "010102", "010101", "010103"},
       {"010102", "010101"},
       {"", "Sonner deux fois"},
       "0h45"},
      {"AUTRE", "A", "0010000", {"A", "B", "C", "D"}, {"A", "B"}, {"Sonner deux fois", ""}, "0h45"},
      // Care templates are invisible to a home-help search, which falls back on the lists.
      {"AUTRE", "S", "0010000", {}, {}, {}, ""},
      {"AUTRE", "A", "0000000", {"A", "B", "C", "D"}, {}, {}, ""},  // another day
      {"AUTRE", "A", "0000100", {"A", "B", "C", "D"}, {"B", "C"}, {"", ""}, "0h30"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.typeAct) + " " + c.kind + " " + c.jour);
    const bool care = std::string(c.typeAct) == "SSIAD";
    putTemplates(c.kind, care ? acts : Rows{"A", "B", "B", "C", "D"});
    search(c.typeAct, kClient, "09:00", "10:00", c.jour);
    EXPECT_EQ(ctl.W_AfficheTache, c.codesPos.empty() ? kFalse : kTrue);
    EXPECT_EQ(items(ctl.Lst_CodePos), c.codesPos);
    EXPECT_EQ(items(ctl.Lst_CodeSelect), c.codesSel);
    EXPECT_EQ(attributes(Variable::R_Obs, static_cast<int>(c.obs.size())), c.obs);
    EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), c.duree);
  }
  EXPECT_EQ(items(ctl.Lst_Selectionne),
            (Rows{selectedRow("B", false, "20"), selectedRow("C", false, "10")}));
  putTemplates("S", acts);
  search("SSIAD", kClient, "09:00", "10:00", "0010000");
  expectShown({fixedRow("020101", "10"), fixedRow("010102", "15"), fixedRow("010101", "30"),
               floatingRow("010103", "25")},
              {selectedRow("010102", false, "15"), selectedRow("010101", true, "30")}, "0h45");
  // The working tables in the order of the fill; only a floating template's items are marked.
  EXPECT_EQ(table(Variable::R_TablePossible), (Table{{"010101", "30", ""},
                                                     {"010102", "15", ""},
                                                     {"020101", "10", ""},
                                                     {"010103", "25", "*"}}));
  EXPECT_EQ(table(Variable::R_TableSelection),
            (Table{{"010101", "30", "Sonner deux fois"}, {"010102", "15", ""}}));
  EXPECT_EQ(table(Variable::R_TableDurees),
            (Table{{"010101", "30"}, {"010102", "15"}, {"020101", "10"}, {"010103", "25"}}));
  EXPECT_EQ(toUtf8(ctl.W_Total.toText()), "45");
  EXPECT_TRUE(CtrInspector(ctl).W_ListeSem().empty());  // released after the fill
}

// Which fixed templates of a day match a slot: those that touch it at either end, with
// the host's times in minutes (08:01 is 0802) or, when the parameter says so, in decimal
// hours; and, without an end date, one that starts later too.
TEST_F(SearchJourney, DecimalHoursAndMinutesMatchTheSlotAtEitherEnd) {
  struct Case {
    const char* decimal;  // attribute 20 of the parameter record
    const char* heureDe;
    const char* heureA;
    const char* dateFin;
    const char* selected;  // codes and minutes, in the order of the fill
  };
  const std::vector<Case> cases{
      {"0", "09:00", "10:00", "30/11/2026", "B6 A5"},
      {"0", "08:01", "08:59", "30/11/2026", "D8 C7 B6 E9"},
      {"1", "8.5", "9", "30/11/2026", "D8 B6 E9"},
      {"0", "09:00", "10:00", "", "B6 A5 F4"},
      // An end date that is no date drops both date tests.
      {"0", "09:00", "10:00", "pas une date", "B6 Z3 A5 F4"},
  };
  // Templates of day 2 from..to: A 1000-1100, B 0800-0900, C 0700-0802, D 0600-0850,
  // E 0898-0899, G 1001-1100, H 0500-0801; F starts on 01/01/2027.
  const std::vector<std::tuple<const char*, const char*, const char*>> templates{
      {"1000", "1100", "A"}, {"0800", "0900", "B"}, {"0700", "0802", "C"}, {"0600", "0850", "D"},
      {"0898", "0899", "E"}, {"1001", "1100", "G"}, {"0500", "0801", "H"}};
  const char* durations = "5678912";
  for (std::size_t i = 0; i < templates.size(); ++i) {
    const auto& [from, to, code] = templates[i];
    putFixed('2', from, {to, "A", {code}, {std::string(1, durations[i])}, {""}});
  }
  account.put("TPSSEMAINETYPE", fixedKey('2', "0900", "01/01/2027"),
              templateRecord({"1000", "A", {"F"}, {"4"}, {""}}));
  // One whose validity ended the day before the period is left out.
  account.put("TPSSEMAINETYPE", fixedKey('2', "0930"),
              templateRecord({"1000", "A", {"Z"}, {"3"}, {""}}, internal("22/11/2026")));
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.heureDe) + "-" + c.heureA + " " + c.dateFin);
    Table parameter(20, Rows{""});
    parameter[19] = {c.decimal};
    account.put("TPSPARAM", "1", parameter);
    search("AUTRE", kClient, c.heureDe, c.heureA, "0010000", c.dateFin);
    std::string selected;
    for (const auto& row : table(Variable::R_TableSelection)) {
      selected += (selected.empty() ? "" : " ") + row[0] + row[1] + row[2];
    }
    EXPECT_EQ(selected, c.selected);
  }
}

TEST_F(SearchJourney, FloatingSearchesSelectByTheDaysOfEachTemplateAndMarkEveryRow) {
  putFixed('2', "0900", {"1000", "A", {"A"}, {"99"}, {""}});  // not looked at
  putFloating("0800", {"0930", "A", {"B"}, {"20"}, {""}, "6"});
  putFloating("0900", {"1000", "A", {"C", "D"}, {"50", "25"}, {"", "obs D"}, "24"});
  putFloating("1400", {"1500", "A", {"A", "C"}, {"5", "1"}, {"", ""}, "2"});
  putFloating("0700", {"0900", "A", {"A"}, {"5"}, {""}, "2"});  // ends as the slot starts
  // Day 2 and the seventh position set: the template of day 6 never matches.
  search("AUTRE", kClient + "FLOT", "09:00", "10:00", "0010001");
  EXPECT_EQ(table(Variable::R_TablePossible),
            (Table{{"A", "5"}, {"B", "20"}, {"C", "50"}, {"D", "25"}}));
  EXPECT_EQ(table(Variable::R_TableSelection),
            (Table{{"A", "5", ""}, {"C", "50", ""}, {"D", "25", "obs D"}}));
  EXPECT_EQ(items(ctl.Lst_CodePos), (Rows{"A", "B", "C", "D"}));
  EXPECT_EQ(ctl.Lst_Possible.List(3), fromUtf8(floatingRow("D", "25")));
  EXPECT_EQ(items(ctl.Lst_Selectionne),
            (Rows{selectedRow("A", false, "5"), selectedRow("C", false, "50"),
                  selectedRow("D", true, "25")}));
  EXPECT_EQ(toUtf8(ctl.W_Total.toText()), "80");

  putFloating("0900", {"1000", "S", {"010101", "020101"}, {"30", "15"}, {"obs", ""}, "13"});
  search("SSIAD", kClient + "FLOT", "09:00", "10:00", "010000");
  expectShown({floatingRow("020101", "15"), floatingRow("010101", "30")},
              {selectedRow("020101", false, "15"), selectedRow("010101", true, "30")}, "0h45");
}

TEST_F(SearchJourney, ItemsWithoutCatalogueRecordsOrTooWideKeepTheTablesAndObservationNumbers) {
  account.put("TACHE", "E", {{"1"}, {"PERDU"}, {""}, {""}, {"5"}});  // group missing
  putFixed('3', "0900", {"1000", "A", {"ZZ", "E", "A"}, {"5", "6", "7"}, {"o1", "o2", "o3"}});
  search("AUTRE", kClient, "09:00", "10:00", "0001000");
  EXPECT_EQ(table(Variable::R_TableDurees), (Table{{"ZZ", "5"}, {"E", "6"}, {"A", "7"}}));
  expectShown({fixedRow("A", "7")}, {selectedRow("A", true, "7")}, "0h07");
  EXPECT_EQ(attributes(Variable::R_Obs, 3), (Rows{"", "", "o3"}));  // at the table's row
  // A duration wider than its column leaves the row without one.
  putFixed('3', "0900", {"1000", "A", {"A", "B"}, {"12345678", "1234567"}, {"", ""}});
  search("AUTRE", kClient, "09:00", "10:00", "0001000");
  EXPECT_EQ(items(ctl.Lst_Possible),
            (Rows{col("MENAGE") + col("ENTRETIEN") + col("A") + "  ", fixedRow("B", "1234567")}));
  EXPECT_EQ(items(ctl.Lst_Selectionne), (Rows{col("MENAGE") + col("ENTRETIEN") + col("A") + " ",
                                              col("MENAGE") + col("ENTRETIEN") + col("B") + " "}));

  account.put("SSIADSOINS", "990101", {{"Sans regroupement"}, {""}, {""}, {"5"}});
  account.put("SSIADSOINS", "019901", {{"Sans type"}, {""}, {""}, {"5"}});
  putFixed('3', "0900", {"1000", "S", {"990101", "019901", "010101"}, {"5", "6", "7"}, {}});
  search("SSIAD", kClient, "09:00", "10:00", "0001000");
  EXPECT_EQ(items(ctl.Lst_CodeSelect), (Rows{"010101"}));
}

TEST_F(SearchJourney, WithoutTemplatesTheClientsListsOrTheCareCatalogueStandIn) {
  // An empty criterion stops the search before any table is made.
  putFixed('2', "0900", {"1000", "A", {"A"}, {"5"}, {""}});
  search("AUTRE", kClient, "09:00", "", "0010000");
  EXPECT_EQ(ctl.W_AfficheTache, kFalse);
  EXPECT_TRUE(Variable::R_TableDurees.empty() && Variable::R_TablePossible.empty());
  EXPECT_TRUE(items(ctl.Lst_Possible).empty());
  account.remove("TPSSEMAINETYPE", fixedKey('2', "0900"));

  account.put("TACHE", "E", {{"1"}, {"PERDU"}, {""}, {""}, {"5"}});
  putList("01/11/2026", {"B", "ZZ", "C", "E"}, {"30", "5", "", "9"});
  putList("01/10/2026", {"A", "B"}, {"12", "45"});
  account.put("AIDEDETAILTACHE", "00002" + internal("01/12/2026"), {{"D"}, {"99"}});
  search("AUTRE", kClient, "09:00", "10:00", "0000001");
  EXPECT_EQ(ctl.W_AfficheTache, kFalse);
  EXPECT_EQ(table(Variable::R_TableDurees),
            (Table{{"B", "30"}, {"ZZ", "5"}, {"C", ""}, {"E", "9"}, {"A", "12"}}));
  expectShown({catalogueRow("A", "12"), catalogueRow("B", "30"), catalogueRow("C", "")}, {}, "");

  account.put("SSIADSOINS", "990101", {{"Sans regroupement"}, {""}, {""}, {"5"}});
  account.put("SSIADSOINS", "010104", {{"Surveillance"}, {""}, {""}, {""}});
  search("SSIAD", kClient, "09:00", "10:00", "0000001");
  expectShown(
      {catalogueRow("020101", "45"), catalogueRow("010102", "10"), catalogueRow("010103", "20"),
       catalogueRow("010104", ""), catalogueRow("010101", "30")},
      {}, "");
  EXPECT_EQ(items(ctl.Lst_CodePos), (Rows{"020101", "010102", "010103", "010104", "010101"}));
  search("OTHER", kClient, "09:00", "10:00", "0000001");  // neither vocabulary: care acts
  EXPECT_EQ(items(ctl.Lst_CodePos), (Rows{"020101", "010102", "010103", "010104", "010101"}));
}

TEST_F(SearchJourney, TheShowAllSwitchShowsTheCatalogueWithTheClientsDurationsAndGoesBack) {
  account.put("GROUPETACHE", "SANSTYPE", {{"1"}, {"INCONNU"}});  // cannot be placed
  account.put("TACHE", "G", {{"1"}, {"SANSTYPE"}, {""}, {""}, {"1"}});
  account.put("TACHE", "F", {{"1"}, {"ORPHELIN"}, {""}, {""}, {"2"}});
  putFixed('2', "0900", {"1000", "A", {"A", "B", "C"}, {"0", "", "12"}, {"obs", "", ""}});
  search("AUTRE", kClient, "09:00", "10:00", "0010000");
  const Rows selection = items(ctl.Lst_Selectionne);
  ctl.Cac_TouteTache.toggle();
  // A keeps the catalogue's 20 over a "0", B its 25 over a "", C shows the client's 12.
  expectShown({catalogueRow("A", "20"), catalogueRow("B", "25"), catalogueRow("C", "12"),
               catalogueRow("D", "40")},
              selection, "0h12");
  EXPECT_EQ(items(ctl.Lst_CodePos), (Rows{"A", "B", "C", "D"}));
  ctl.Cac_TouteTache.toggle();
  // Back to the search, without the lower half: the total starts again from nothing.
  expectShown({fixedRow("A", "0"), fixedRow("B", ""), fixedRow("C", "12")}, selection, "");
  EXPECT_EQ(toUtf8(ctl.W_Total.toText()), "0");

  // Without any duration table (the guard stopped the search) the catalogue keeps its own.
  search("AUTRE", kClient, "09:00", "", "0010000");
  ctl.Cac_TouteTache.toggle();
  EXPECT_EQ(ctl.Lst_Possible.List(0), fromUtf8(catalogueRow("A", "20")));
  // Without task types the catalogue is empty.
  account.remove("TYPETACHE", "MENAGE");
  account.remove("TYPETACHE", "SOINS");
  search("AUTRE", kClient, "09:00", "10:00", "0010000");
  ctl.Cac_TouteTache.toggle();
  EXPECT_TRUE(items(ctl.Lst_Possible).empty() && items(ctl.Lst_CodePos).empty());
}

TEST_F(SearchJourney, CareAndFloatingSearchesTickToTheCatalogueAndBack) {
  putFixed('2', "0900", {"1000", "S", {"010101"}, {"35"}, {""}});
  search("SSIAD", kClient, "09:00", "10:00", "0010000");
  ctl.Cac_TouteTache.toggle();
  expectShown({catalogueRow("020101", "45"), catalogueRow("010102", "10"),
               catalogueRow("010103", "20"), catalogueRow("010101", "30")},
              {selectedRow("010101", false, "35")}, "0h35");
  ctl.Cac_TouteTache.toggle();
  EXPECT_EQ(items(ctl.Lst_Possible), (Rows{fixedRow("010101", "35")}));

  putFloating("0900", {"1000", "A", {"C"}, {"50"}, {""}, "2"});
  search("AUTRE", kClient + "FLOT", "09:00", "10:00", "001000");
  ctl.Cac_TouteTache.toggle();
  EXPECT_EQ(ctl.Lst_Possible.List(2), fromUtf8(catalogueRow("C", "50")));
  ctl.Cac_TouteTache.toggle();
  EXPECT_EQ(items(ctl.Lst_Possible), (Rows{floatingRow("C", "50")}));
  EXPECT_EQ(items(ctl.Lst_CodeSelect), (Rows{"C"}));
}

class Consultation : public SearchJourney {
 protected:
  void SetUp() override {
    SearchJourney::SetUp();
    putList("01/10/2026", {"A", "B"}, {"12", "45"});
    putList("01/11/2026", {"B", "0", "C", "", "A", "A"}, {"30", "9", "", "7", "40", "50"});
    putList("01/12/2026", {"D"}, {"99"});
  }
  const std::string detailKey = "INT01" + kClient + internal("23/11/2026") + "XXXXXX20900";
};

TEST_F(Consultation, ADetailKeyShowsItsItemsBesideTheListValidAtItsDate) {
  Table detail(6, Rows{""});
  detail[1] = {"1000"};
  detail.insert(detail.end(), {{"C", "ZZ", "A"}, {"10", "5", ""}, {"", "obs ZZ", "obs A"}});
  account.put("TPSDETAILSINTERV", detailKey, detail);
  consult("AUTRE", detailKey);
  // The list of 01/11 alone; "0" and "" are passed over without a gap.
  EXPECT_EQ(table(Variable::R_TableDurees),
            (Table{{"B", "30"}, {"C", ""}, {"A", "40"}, {"A", "50"}}));
  // ZZ has no task record: left out, and the observations stay with their rows.
  expectShown({selectedRow("A", false, "40"), selectedRow("A", false, "50"),
               selectedRow("B", false, "30"), selectedRow("C", false, "")},
              {selectedRow("A", true, ""), selectedRow("C", false, "10")}, "0h10");
  EXPECT_EQ(items(ctl.Lst_CodeSelect), (Rows{"A", "C"}));
  EXPECT_EQ(attributes(Variable::R_Obs, 2), (Rows{"obs A", ""}));
  EXPECT_EQ(ctl.W_AfficheTache, kFalse);
  EXPECT_TRUE(ctl.Cac_TouteTache.Enabled());
  // Ticking lets the last valid duration win: A shows 50, C its catalogue 35.
  ctl.Cac_TouteTache.toggle();
  EXPECT_EQ(items(ctl.Lst_Possible)[0], catalogueRow("A", "50"));
  EXPECT_EQ(items(ctl.Lst_Possible)[2], catalogueRow("C", "35"));
  ctl.Cac_TouteTache.toggle();
  EXPECT_EQ(items(ctl.Lst_CodePos), (Rows{"A", "A", "B", "C"}));
  EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), "0h10");

  // Before the first list, or at 15/10 with the list of 01/10, and without items.
  account.put("TPSDETAILSINTERV", detailKey, {{""}, {"1000"}});
  consult("AUTRE", detailKey, "15/10/2026");
  EXPECT_EQ(items(ctl.Lst_CodePos), (Rows{"A", "B"}));
  EXPECT_TRUE(items(ctl.Lst_Selectionne).empty());
  EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), "0h00");
  consult("AUTRE", detailKey, "01/01/2026");
  EXPECT_TRUE(items(ctl.Lst_Possible).empty());
}

TEST_F(Consultation, TemplateKeysShowTheirItemsAndCareShowsTheCatalogue) {
  putFixed('2', "0930",
           {"1030", "S", {"020101", "010101"}, {"15", "30"}, {"", "Sonner deux fois"}});
  consult("SSIAD", fixedKey('2', "0930") + "SEMTYPE");
  EXPECT_EQ(ctl.Cac_TouteTache.Value(), 1);
  EXPECT_FALSE(ctl.Cac_TouteTache.Enabled());
  expectShown({catalogueRow("020101", "45"), catalogueRow("010102", "10"),
               catalogueRow("010103", "20"), catalogueRow("010101", "30")},
              {selectedRow("020101", false, "15"), selectedRow("010101", true, "30")}, "0h45");
  EXPECT_EQ(attributes(Variable::R_Obs, 2), (Rows{"", "Sonner deux fois"}));

  putFloating("0900", {"1000", "A", {"D", "A"}, {"25", "5"}, {"obs D", ""}, "24"});
  consult("AUTRE", floatingKey("0900") + "SEMTYPEFLOT");
  EXPECT_EQ(items(ctl.Lst_Selectionne),
            (Rows{selectedRow("A", false, "5"), selectedRow("D", true, "25")}));
  EXPECT_EQ(items(ctl.Lst_CodePos), (Rows{"A", "A", "B", "C"}));
  EXPECT_EQ(attributes(Variable::R_Obs, 2), (Rows{"", "obs D"}));
}

TEST(TimeConversion, MinutesBecomeHundredthsOfAnHourAndDecimalHoursTimesAHundred) {
  const std::vector<std::pair<const char*, const char*>> cases = {
      {"08:00", "0800"}, {"08:01", "0802"}, {"08:15", "0825"}, {"08:20", "0833"},
      {"08:30", "0850"}, {"08:40", "0867"}, {"08:45", "0875"}, {"08:59", "0898"},
      {"23:10", "2317"}, {"07h05", "0708"}};
  for (const auto& [in, out] : cases) {
    EXPECT_EQ(toUtf8(search::minutesToFourDigit(fromUtf8(in))), out) << in;
  }
  for (const auto& [in, out] : std::vector<std::pair<Text, Text>>{
           {u"8.5", u"0850"}, {u"8,5", u"0850"}, {u"12", u"1200"}, {u"9.25", u"0925"}}) {
    EXPECT_EQ(search::decimalToFourDigit(in), out) << toUtf8(in);
  }
  for (const Text bad : {u"08:xx", u"8", u""}) {
    EXPECT_EQ(failureNumber([&] { (void)search::minutesToFourDigit(bad); }), errors::kTypeMismatch)
        << toUtf8(bad);
  }
  EXPECT_EQ(failureNumber([] { (void)search::decimalToFourDigit(u"huit"); }),
            errors::kTypeMismatch);
}

}  // namespace
}  // namespace velmora::testing
