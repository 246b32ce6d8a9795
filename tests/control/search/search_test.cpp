// Whole searches through Init on a small account, in both vocabularies: the template
// searches, the catalogue fills that stand in when no template exists, and the
// consultation of a full key.
#include <map>
#include <sstream>

#include "control/fixture.h"

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
      {"E", col("MENAGE") + col("ENTRETIEN") + col("E")},
      {"010101", col("Soins de base") + col("Hygiène") + col("Toilette complète")},
      {"010102", col("Soins de base") + col("Hygiène") + col("Change")},
      {"010103", col("Soins de base") + col("Hygiène") + col("Pansement")},
      {"010104", col("Soins de base") + col("Hygiène") + col("Surveillance")},
      {"010105", col("Soins de base") + col("Hygiène") + col("Toilette complète")},
      {"020101", col("Relationnel") + col("Écoute") + col("Accompagnement")},
      {"020102", col("Relationnel") + col("Écoute") + col("Visite")}};
  return known.at(code);
}
// A list's rows from "code:minutes" words, "*" after a floating template's item, "!" after
// a selected item with an observation, in the layout of a fill, a search or the selection.
enum class Kind { Catalogue, Template, Selected };
Rows rows(Kind kind, const std::string& described) {
  Rows out;
  std::istringstream words(described);
  for (std::string w; words >> w;) {
    const bool mark = w.back() == '*' || w.back() == '!';
    if (mark) w.pop_back();
    const std::string code = w.substr(0, w.find(':')), minutes = w.substr(w.find(':') + 1);
    out.push_back(kind == Kind::Selected ? columns(code) + (mark ? "X" : " ") + right(minutes, 6)
                  : kind == Kind::Template
                      ? columns(code) + right(minutes, 7) + (mark ? "  *" : "  ")
                      : columns(code) + right(minutes, 7));
  }
  return out;
}
const auto catalogue = [](const std::string& d) { return rows(Kind::Catalogue, d); };
const auto proposed = [](const std::string& d) { return rows(Kind::Template, d); };
const auto chosen = [](const std::string& d) { return rows(Kind::Selected, d); };
// A list's items, or a working table's rows of values, as words: "A B", "A:30: B:15:".
std::string words(const Rows& items) {
  std::string out;
  for (const auto& i : items) out += (out.empty() ? "" : " ") + i;
  return out;
}
std::string words(const RecordRef& r) {
  Rows out;
  for (const auto& row : table(r)) {
    out.emplace_back();
    for (const auto& v : row) out.back() += (&v == &row.front() ? "" : ":") + v;
  }
  return words(out);
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

// Home help: tasks A, B in group ENTRETIEN of type MENAGE, C, D in TOILETTE of SOINS.
// Care: acts 0101xx under type 0101 and regroupment 01, 020101 under 0201 and 02.
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
  // Init with a client code: the search runs with the lower half filled.
  void search(const std::string& typeAct, const std::string& jour,
              const std::string& code = kClient, const std::string& heureDe = "09:00",
              const std::string& heureA = "10:00", const std::string& dateFin = "30/11/2026") {
    init(typeAct, code, "23/11/2026", dateFin, heureDe, heureA, jour);
  }
  // Day 2 from 09:00 to 10:00. A fixed template of day 2 from 0930 to 1030 with items 0 and
  // 1, one of day 4 with items 2 and 3, a floating one with 3 and 4.
  void putTemplates(const std::string& kind, const Rows& c) {
    putFixed('2', "0930", {"1030", kind, {c[0], c[1]}, {"30", "15"}, {"Sonner deux fois", ""}});
    putFixed('4', "0800", {"1200", kind, {c[2], c[3]}, {"20", "10"}, {"", ""}});
    putFloating("0900", {"1000", kind, {c[3], c[4]}, {"50", "25"}, {"", "obs D"}, "4"});
  }
  void expectShown(const Rows& possible, const std::string& selected, const std::string& duree) {
    EXPECT_EQ(items(ctl.Lst_Possible), possible);
    EXPECT_EQ(items(ctl.Lst_Selectionne), chosen(selected));
    EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), duree);
  }
};
using WholeCase = SearchJourney;

TEST_F(WholeCase, TheDayTheKindAndTheVocabularyDecideWhatIsSelected) {
  struct Case {
    const char *typeAct, *kind, *jour, *codesPos, *codesSel, *duree;
    Rows obs = {};
  };
  const Rows acts{"010101", "010102", "010102", "020101", "010103"};
  const std::vector<Case> cases{
      {"AUTRE", "A", "0010000", "A B C D", "A B", "0h45", {"Sonner deux fois", ""}},
      // Care templates are invisible to a home-help search, which falls back on the lists.
      {"AUTRE", "S", "0010000", "", "", "", {}},
      {"AUTRE", "A", "0000000", "A B C D", "", "", {}},  // another day
      {"AUTRE", "A", "0000100", "A B C D", "B C", "0h30", {"", ""}},
      // Care: the labels come from the care catalogue, observations move with their rows.
      {"SSIAD",
       "S",
       "0010000",
       "020101 010102 010101 010103",
       "010102 010101",
       "0h45",
       {"", "Sonner deux fois"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.typeAct) + " " + c.kind + " " + c.jour);
    putTemplates(c.kind, std::string(c.typeAct) == "SSIAD" ? acts : Rows{"A", "B", "B", "C", "D"});
    search(c.typeAct, c.jour);
    EXPECT_EQ(ctl.W_AfficheTache, *c.codesPos == '\0' ? kFalse : kTrue);
    EXPECT_EQ(words(items(ctl.Lst_CodePos)), c.codesPos);
    EXPECT_EQ(words(items(ctl.Lst_CodeSelect)), c.codesSel);
    EXPECT_EQ(attributes(variable().R_Obs, static_cast<int>(c.obs.size())), c.obs);
    EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), c.duree);
  }
  expectShown(proposed("020101:10 010102:15 010101:30 010103:25*"), "010102:15 010101:30!", "0h45");
  // A host that runs the search again gets the same lists, not twice the rows.
  Boolean fillLowerHalf = kTrue;
  ctl.Recherche_SemaineType(fillLowerHalf);
  expectShown(proposed("020101:10 010102:15 010101:30 010103:25*"), "010102:15 010101:30!", "0h45");
  EXPECT_EQ(toUtf8(ctl.W_Total.toText()), "45");
}

// The fixed templates that touch the slot at either end match, times in minutes (08:01 is
// 0802, the separator is not read) or as the parameter says in decimal hours (a comma
// too); with no end date, later ones too. A time that is no number is left empty: an
// empty start lets every template end in time.
TEST_F(SearchJourney, DecimalHoursAndMinutesMatchTheSlotAtEitherEnd) {
  struct Case {
    const char *decimal, *heureDe, *heureA, *dateFin;  // decimal: attribute 20 of TPSPARAM
    const char* selected;
  };
  const std::vector<Case> cases{
      {"0", "09:00", "10:00", "30/11/2026", "B:6: A:5:"},
      {"0", "08:01", "08:59", "30/11/2026", "D:8: C:7: B:6: E:9:"},
      {"0", "08h01", "08h59", "30/11/2026", "D:8: C:7: B:6: E:9:"},
      {"1", "8.5", "9", "30/11/2026", "D:8: B:6: E:9:"},
      {"1", "8,5", "9,0", "30/11/2026", "D:8: B:6: E:9:"},
      {"0", "08:xx", "09:00", "30/11/2026", "H:2: D:8: C:7: B:6: E:9:"},
      {"1", "huit", "9", "30/11/2026", "H:2: D:8: C:7: B:6: E:9:"},
      {"0", "09:00", "10:00", "", "B:6: A:5: F:4:"},
      // An end date that is no date drops both date tests.
      {"0", "09:00", "10:00", "pas une date", "B:6: Z:3: A:5: F:4:"},
  };
  // Templates of day 2 from..to, each with one item; F starts on 01/01/2027.
  putFixed('2', "1000", {"1100", "A", {"A"}, {"5"}, {""}});
  putFixed('2', "0800", {"0900", "A", {"B"}, {"6"}, {""}});
  putFixed('2', "0700", {"0802", "A", {"C"}, {"7"}, {""}});
  putFixed('2', "0600", {"0850", "A", {"D"}, {"8"}, {""}});
  putFixed('2', "0898", {"0899", "A", {"E"}, {"9"}, {""}});
  putFixed('2', "1001", {"1100", "A", {"G"}, {"1"}, {""}});
  putFixed('2', "0500", {"0801", "A", {"H"}, {"2"}, {""}});
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
    search("AUTRE", "0010000", kClient, c.heureDe, c.heureA, c.dateFin);
    EXPECT_EQ(words(variable().R_TableSelection), c.selected);
  }
}

TEST_F(SearchJourney, FloatingSearchesSelectByTheDaysOfEachTemplateAndMarkEveryRow) {
  putFixed('2', "0900", {"1000", "A", {"A"}, {"99"}, {""}});     // not looked at
  putFloating("1500", {"1630", "A", {"B"}, {"20"}, {""}, "6"});  // the last key
  putFloating("0900", {"1000", "A", {"C", "D"}, {"50", "25"}, {"", "obs D"}, "24"});
  putFloating("1400", {"1500", "A", {"A", "C"}, {"5", "1"}, {"", ""}, "2"});
  putFloating("0700", {"0900", "A", {"A"}, {"5"}, {""}, "2"});  // ends as the slot starts
  // Day 2 and the seventh position set: the template of day 6 never matches.
  search("AUTRE", "0010001", kClient + "FLOT");
  EXPECT_EQ(words(variable().R_TablePossible), "A:5 C:50 D:25 B:20");
  EXPECT_EQ(words(variable().R_TableSelection), "A:5: C:50: D:25:obs D");
  EXPECT_EQ(words(items(ctl.Lst_CodePos)), "A B C D");
  expectShown(proposed("A:5* B:20* C:50* D:25*"), "A:5 C:50 D:25!", "1h20");
  EXPECT_EQ(toUtf8(ctl.W_Total.toText()), "80");
}

TEST_F(SearchJourney, WithoutTemplatesTheClientsListsOrTheCareCatalogueStandIn) {
  // An empty criterion stops the search, fixed or floating, before any table is made.
  putFixed('2', "0900", {"1000", "A", {"A"}, {"5"}, {""}});
  putFloating("0900", {"1000", "A", {"A"}, {"5"}, {""}, "2"});
  for (const std::string& code : {kClient, kClient + "FLOT"}) {
    search("AUTRE", "0010000", code, "09:00", "");
    EXPECT_EQ(ctl.W_AfficheTache, kFalse) << code;
    EXPECT_TRUE(variable().R_TableDurees.empty() && variable().R_TablePossible.empty()) << code;
  }
  account.remove("TPSSEMAINETYPE", fixedKey('2', "0900"));
  account.remove("TPSSEMAINETYPEFLOT", floatingKey("0900"));

  account.put("TACHE", "E", {{"1"}, {"PERDU"}, {""}, {""}, {"5"}});
  putList("01/11/2026", {"B", "ZZ", "C", "E"}, {"30", "5", "", "9"});
  putList("01/10/2026", {"A", "B"}, {"12", "45"});
  account.put("AIDEDETAILTACHE", "00002" + internal("01/12/2026"), {{"D"}, {"99"}});
  for (const std::string& code : {kClient, kClient + "FLOT"}) {  // fixed or floating search
    search("AUTRE", "0000001", code);
    EXPECT_EQ(ctl.W_AfficheTache, kFalse);
    EXPECT_EQ(words(variable().R_TableDurees), "B:30 ZZ:5 C: E:9 A:12");
    expectShown(catalogue("A:12 B:30 C:"), "", "");
  }

  account.put("SSIADSOINS", "990101", {{"Sans regroupement"}, {""}, {""}, {"5"}});
  account.put("SSIADSOINS", "010104", {{"Surveillance"}, {""}, {""}, {""}});
  // The acts come in label order and are sorted as rows by exchanges, so that Visite
  // jumps ahead and 010101 ends behind its twin.
  account.put("SSIADSOINS", "010105", {{"Toilette complète"}, {""}, {""}, {"30"}});
  account.put("SSIADSOINS", "020102", {{"Visite"}, {""}, {""}, {"15"}});
  for (const char* typeAct : {"SSIAD", "OTHER"}) {  // neither vocabulary: care acts
    search(typeAct, "0000001");
    expectShown(catalogue("020101:45 020102:15 010102:10 010103:20 010104: 010105:30 010101:30"),
                "", "");
    EXPECT_EQ(words(items(ctl.Lst_CodePos)), "020101 020102 010102 010103 010104 010105 010101");
  }
}

using Consultation = SearchJourney;

TEST_F(Consultation, ADetailKeyShowsItsItemsBesideTheListValidAtItsDate) {
  putList("01/10/2026", {"A", "B"}, {"12", "45"});
  putList("01/11/2026", {"B", "0", "C", "", "A", "A"}, {"30", "9", "", "7", "40", "50"});
  putList("01/12/2026", {"D"}, {"99"});
  const std::string detailKey = "INT01" + kClient + internal("23/11/2026") + "XXXXXX20900";
  Table detail(6, Rows{""});
  detail[1] = {"1000"};
  detail.insert(detail.end(), {{"C", "ZZ", "A"}, {"10", "5", ""}, {"", "obs ZZ", "obs A"}});
  account.put("TPSDETAILSINTERV", detailKey, detail);
  init("AUTRE", detailKey, "23/11/2026");  // a full key: the consultation runs
  // The list of 01/11 alone; "0" and "" are passed over without a gap.
  EXPECT_EQ(words(variable().R_TableDurees), "B:30 C: A:40 A:50");
  // ZZ has no task record: left out, and the observations stay with their rows.
  expectShown(chosen("A:40 A:50 B:30 C:"), "A:! C:10", "0h10");
  EXPECT_EQ(items(ctl.Lst_CodeSelect), (Rows{"A", "C"}));
  EXPECT_EQ(attributes(variable().R_Obs, 2), (Rows{"obs A", ""}));
  EXPECT_EQ(ctl.W_AfficheTache, kFalse);
  EXPECT_TRUE(ctl.Cac_TouteTache.Enabled());
  // Ticking and unticking brings the key's list back, the selection untouched.
  ctl.Cac_TouteTache.toggle();
  ctl.Cac_TouteTache.toggle();
  EXPECT_EQ(words(items(ctl.Lst_CodePos)), "A A B C");
  EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), "0h10");

  // At 15/10 the list of 01/10, and without items.
  account.put("TPSDETAILSINTERV", detailKey, {{""}, {"1000"}});
  init("AUTRE", detailKey, "15/10/2026");
  EXPECT_EQ(words(items(ctl.Lst_CodePos)), "A B");
  EXPECT_TRUE(items(ctl.Lst_Selectionne).empty());
  EXPECT_EQ(toUtf8(ctl.Txt_Duree.getText()), "0h00");
}

// Ticked, the switch shows each task with the last duration of the key's list that fits
// its five places, "" and "0" passed over; a task the list does not name, or names with
// no duration that fits, keeps its own.
TEST_F(Consultation, TheSwitchShowsTheLastDurationOfTheListThatFits) {
  putList("01/11/2026", {"A", "A", "A", "A", "B", "B", "C", "E"},
          {"15", "40", "0", "", "20", "123456", "12345", "0"});
  // E comes first in the catalogue's order and takes its place among the sorted rows.
  account.put("TACHE", "E", {{"0"}, {"ENTRETIEN"}, {""}, {""}, {"5"}});
  const std::string detailKey = "INT01" + kClient + internal("23/11/2026") + "XXXXXX20900";
  account.put("TPSDETAILSINTERV", detailKey, {{""}, {"1000"}});
  init("AUTRE", detailKey, "23/11/2026");
  ctl.Cac_TouteTache.toggle();
  EXPECT_EQ(items(ctl.Lst_Possible), catalogue("A:40 B:20 E:5 C:12345 D:40"));
}

// A template key shows the template's items; care ticks the switch and locks it.
TEST_F(Consultation, TemplateKeysShowTheirItemsAndCareShowsTheCatalogue) {
  putFixed('2', "0930",
           {"1030", "S", {"020101", "010101"}, {"15", "30"}, {"", "Sonner deux fois"}});
  init("SSIAD", fixedKey('2', "0930") + "SEMTYPE", "23/11/2026");
  EXPECT_EQ(ctl.Cac_TouteTache.Value(), 1);
  EXPECT_FALSE(ctl.Cac_TouteTache.Enabled());
  expectShown(catalogue("020101:45 010102:10 010103:20 010101:30"), "020101:15 010101:30!", "0h45");
  EXPECT_EQ(attributes(variable().R_Obs, 2), (Rows{"", "Sonner deux fois"}));
  putFloating("0900", {"1000", "A", {"D", "A"}, {"25", "5"}, {"obs D", ""}, "24"});
  init("AUTRE", floatingKey("0900") + "SEMTYPEFLOT", "23/11/2026");
  EXPECT_EQ(items(ctl.Lst_Selectionne), chosen("A:5 D:25!"));
  EXPECT_EQ(attributes(variable().R_Obs, 2), (Rows{"", "obs D"}));
}

}  // namespace
}  // namespace velmora::testing
