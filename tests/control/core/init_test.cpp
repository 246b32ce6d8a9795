// Whole Init journeys on small accounts made for each form of Code: the criteria it hands
// to the searches, what it gives back to the caller, and what it resets. What the searches
// and the consultation fill in the lists is theirs to test.
#include <gmock/gmock.h>
#include <sqlite3.h>

#include <chrono>

#include "control/fixture.h"
#include "store/engine/read_connection.h"

namespace velmora::testing {
namespace {

// Internal dates: days from 31/12/1967.
const std::string k23Nov2026 = "21512", k31Dec2026 = "21550", k30Jun2027 = "21731";
// An intervention detail: 5 unread, client, start date, 6 unread, day, start time.
const std::string kDetailKey = "I004200001" + k23Nov2026 + "XXXXXX30850";
const std::string kOddDayKey = "I004200001" + k23Nov2026 + "XXXXXXx0850";
// Fixed templates: client, start date, day, start time, two more; floating ones have no day.
const std::string kTemplateKey = "00001" + k23Nov2026 + "20850AB";
const std::string kFloatingKey = "00001" + k23Nov2026 + "0850CD";
const std::string kFloatingKey2 = "00001" + k23Nov2026 + "0900CD";

class Init : public ControlTest {
 protected:
  void SetUp() override {
    ControlTest::SetUp();
    Table parameter(20, Rows{""});
    parameter[19] = {"0"};
    account.put("TPSPARAM", "1", parameter);
    account.put("TPSDETAILSINTERV", kDetailKey, {{k31Dec2026}, {"1000"}});
    account.put("TPSDETAILSINTERV", kDetailKey + "07", {{k31Dec2026}, {"1000"}});
    account.put("TPSDETAILSINTERV", kOddDayKey, {{k31Dec2026}, {"1000"}});
    account.put("TPSSEMAINETYPE", kTemplateKey, {{k30Jun2027}, {"0930"}});
    account.put("TPSSEMAINETYPEFLOT", kFloatingKey,
                {{""}, {"1130"}, {""}, {""}, {""}, {""}, {""}, {""}, {""}, {"024"}});
    account.put("TPSSEMAINETYPEFLOT", kFloatingKey2,
                {{""}, {"1130"}, {""}, {""}, {""}, {""}, {""}, {""}, {""}, {"6 5 1"}});
  }
  std::string captions() const {
    return toUtf8(ctl.Etq_Pos1.Caption() + u"|" + ctl.Etq_Sel2.Caption() + u"|" +
                  ctl.Etq_Pos3.Caption() + u"|" + ctl.Cac_TouteTache.Caption());
  }
};
const std::string kTaskCaptions = "Type|Groupe|Tâche|Afficher toutes les tâches";
const std::string kCareCaptions = "Regroupement|Type|Soin|Afficher tous les soins";

// The criteria: code, dates, times, days, then W_CleLue, W_SemType and W_Flot; and the
// key's date.
std::string criteria(const Ctr_VelmoraNew& ctl) {
  const CtrInspector in(ctl);
  std::string out;
  for (const Text* t : {&in.W_Code(), &in.W_DateDeb(), &in.W_DateFin(), &in.W_HeureDe(),
                        &in.W_HeureA(), &in.W_Jour()}) {
    out += toUtf8(*t) + "|";
  }
  for (const Boolean b : {in.W_CleLue(), in.W_SemType(), in.W_Flot()}) out += b ? "1" : "0";
  return out + " " + toUtf8(in.W_DateCle());
}

// A form of Code with the criteria it gives and what the caller gets back; the keys are
// given with the date 23/11/2026 alone and give back no date.
struct Form {
  std::string code, codeBack, criteria;
  std::string dateDeb = "23/11/2026", dateDebBack{}, dateFin{}, heureDe{}, heureA{}, jour{};
};

TEST_F(Init, EachFormOfCodeGivesItsCriteriaInBothVocabularies) {
  const std::string d = "23/11/2026", detail = "00001|23/11/2026|31/12/2026|0850|1000|";
  const std::vector<Form> forms{
      {"00001", "00001", "00001|23/11/2026|31/12/2026|08:30|10:00|0100000|000 ", d, d, "31/12/2026",
       "08:30", "10:00", "0100000"},
      // The floating flag goes wherever it stood: the last four characters are cut.
      {"00001FLOT", "00001", "00001|23/11/2026||8.5|10|101000|001 ", d, d, "", "8.5", "10",
       "101000"},
      {"FLOT00001", "FLOT0", "FLOT0||||||001 ", ""},
      // A detail key gives one day of seven, or of six with the flag; the time has four.
      {kDetailKey, kDetailKey, detail + "0001000|100 21512"},
      {kDetailKey + "07", kDetailKey + "07", detail + "0001000|100 21512"},
      {kDetailKey + "FLOT", kDetailKey, detail + "000100|101 21512"},
      // A day that is no number sets every day.
      {kOddDayKey, kOddDayKey, detail + "1111111|100 21512"},
      // Template keys read 17 or 16 characters and keep their mark for the caller.
      {kTemplateKey + "SEMTYPE", kTemplateKey + "SEMTYPE",
       "00001|23/11/2026|30/06/2027|0850|0930|0010000|110 21512"},
      {kFloatingKey + "SEMTYPEFLOT", kFloatingKey + "SEMTYPEFLOT",
       "00001|23/11/2026||0850|1130|101010|111 21512"},
      // The floating days look at the digits 0 to 5 only.
      {kFloatingKey2 + "SEMTYPEFLOT", kFloatingKey2 + "SEMTYPEFLOT",
       "00001|23/11/2026||0900|1130|010001|111 21512"},
  };
  // The key's date stays from one Init to the next: the forms without a key come first.
  // Only "AUTRE" names the tasks' vocabulary.
  for (const Form& f : forms) {
    for (const std::string typeAct : {"SSIAD", "autre", "AUTRE"}) {
      SCOPED_TRACE(typeAct + " " + f.code);
      session.state().clear();
      const InitArguments a =
          init(typeAct, f.code, f.dateDeb, f.dateFin, f.heureDe, f.heureA, f.jour);
      EXPECT_EQ(toUtf8(a.Code), f.codeBack);
      EXPECT_EQ(toUtf8(a.DateDeb), f.dateDebBack);
      EXPECT_EQ(criteria(ctl), f.criteria);
      EXPECT_EQ(captions(), typeAct == "AUTRE" ? kTaskCaptions : kCareCaptions);
    }
  }
  // After a reset there is no database: Init still takes the key apart and sets the
  // captions, and opens nothing.
  init("AUTRE", "00009", "");
  session.state().clear();
  InitArguments a{u"SSIAD", fromUtf8(kDetailKey), u"23/11/2026", u"", u"", u"", u""};
  ctl.Init(a);
  EXPECT_EQ(criteria(ctl), "00001|23/11/2026||0850||0001000|100 21512");
  EXPECT_EQ(captions(), kCareCaptions);
  EXPECT_TRUE(variable().F_DetailsInterv.empty() && variable().R_DetailsInterv.empty());
}

TEST_F(Init, ResetsTheListsTheTotalAndTheButtonsButNotTheHostsSlots) {
  for (toolkit::ListBox* l :
       {&ctl.Lst_Selectionne, &ctl.Lst_CodeSelect, &ctl.Lst_Possible, &ctl.Lst_CodePos}) {
    l->AddItem(u"old");
  }
  variable().R_Obs = newRecord();
  variable().R_Obs->set(1, u"old observation");
  ctl.Etq_Imperativite.setVisible(true);
  ctl.W_Total = Currency::whole(75);
  ctl.Txt_Duree.setText(u"75");
  ctl.W_AfficheTache = ctl.W_DoubleClic = ctl.W_Imperatif = kTrue;
  ctl.W_DureeInterv = u"host's";
  for (toolkit::Control* b : std::initializer_list<toolkit::Control*>{
           &ctl.Cmd_SupprVelmora, &ctl.Cmd_Obs, &ctl.Cmd_OKVelmora, &ctl.Cmd_AnnulerVelmora}) {
    b->setEnabled(true);
  }
  ctl.Cac_TouteTache.setEnabled(false);
  init("AUTRE", "00009", "23/11/2026", "", "08:30", "10:00", "1000000");
  EXPECT_EQ(snapshot(ctl), (Snapshot{{}, {}, {}, "", "0", "0000011"}));
  EXPECT_EQ(ctl.W_AfficheTache, kFalse);
  EXPECT_EQ(ctl.W_Imperatif, kTrue);
  EXPECT_EQ(ctl.W_DureeInterv, u"host's");
  EXPECT_TRUE(ctl.Cac_TouteTache.Enabled());
  EXPECT_EQ(ctl.Cac_TouteTache.Value(), 0);
}

// A writer holds the lock: a gesture fails through the handler and changes nothing; Init
// fails after one bounded wait and leaves no partial proposal; then the control reads again.
TEST_F(Init, AWriterHoldingTheLockFailsClearlyAndLeavesNoPartialProposal) {
  account.put("SSIADREGROUPSOINS", "01", {{"Hygiène"}});
  account.put("SSIADTYPESOINS", "0101", {{"Toilette"}});
  account.put("SSIADSOINS", "010101", {{"Toilette complète"}, {""}, {""}, {"30"}});
  InitArguments a = init("SSIAD", "00001", "23/11/2026");
  ctl.Remplir_Soins();
  ASSERT_EQ(ctl.Lst_Possible.ListCount(), 1);

  sqlite3* writer = nullptr;
  ASSERT_EQ(sqlite3_open(account.path().c_str(), &writer), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(writer, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
  std::vector<long> shown;
  ctl.setFailureHandler([&](const Failure& f) { shown.push_back(f.number()); });
  ctl.Cac_TouteTache.toggle();
  EXPECT_EQ(shown, std::vector<long>{errors::kBusy});
  EXPECT_EQ(ctl.Lst_Possible.ListCount(), 1);
  EXPECT_EQ(ctl.Cac_TouteTache.Value(), 0);

  const auto start = std::chrono::steady_clock::now();
  std::string message;
  EXPECT_EQ(failureNumber([&] { ctl.Init(a); }, &message), errors::kBusy);
  EXPECT_THAT(message, ::testing::HasSubstr("verrouillée par un autre programme"));
  EXPECT_LT(std::chrono::steady_clock::now() - start, 3 * store::ReadConnection::kLockWait);
  EXPECT_EQ(ctl.Txt_Duree.getText(), u"");

  sqlite3_exec(writer, "ROLLBACK", nullptr, nullptr, nullptr);
  sqlite3_close(writer);
  ctl.Init(a);
  ctl.Remplir_Soins();
  EXPECT_EQ(ctl.Lst_Possible.ListCount(), 1);
}

}  // namespace
}  // namespace velmora::testing
