// Whole Init journeys on small accounts made for each form of Code. Only what Init
// itself guarantees is asserted here; what the searches and the consultation fill in
// the lists is theirs to test.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <chrono>

#include "control/ctr_velmora_new.h"
#include "store/read_connection.h"
#include "store/sqlite_database.h"
#include "support/account.h"
#include "support/failure_number.h"

namespace velmora {
namespace {

using testing::TempAccount;

// Internal dates: days from 31/12/1967.
constexpr const char* k23Nov2026 = "21512";
constexpr const char* k31Dec2026 = "21550";
constexpr const char* k30Jun2027 = "21731";

// An intervention detail: 5 unread, client, start date, 6 unread, day, start time.
const std::string kDetailKey =
    std::string("I0042") + "00001" + k23Nov2026 + "XXXXXX" + "3" + "0850";
// A fixed template: client, start date, day, start time, two more.
const std::string kTemplateKey = std::string("00001") + k23Nov2026 + "2" + "0850" + "AB";
// A floating template: client, start date, start time, two more.
const std::string kFloatingKey = std::string("00001") + k23Nov2026 + "0850" + "CD";

class Init : public ::testing::Test {
 protected:
  void SetUp() override {
    Variable::resetAll();
    account.put("TPSPARAM", "1", {{""}, {""}, {""}, {""}, {""}, {""}, {""}, {""}, {""}, {""},
                                  {""}, {""}, {""}, {""}, {""}, {""}, {""}, {""}, {""}, {"0"}});
    account.put("TPSDETAILSINTERV", kDetailKey, {{k31Dec2026}, {"1000"}});
    account.put("TPSSEMAINETYPE", kTemplateKey, {{k30Jun2027}, {"0930"}});
    account.put("TPSSEMAINETYPEFLOT", kFloatingKey,
                {{""}, {"1130"}, {""}, {""}, {""}, {""}, {""}, {""}, {""}, {"024"}});
    connect();
  }
  void TearDown() override { Variable::resetAll(); }

  void connect() { c.TheDatabase(account.open()); }

  InitArguments args(std::string_view typeAct, std::string_view code) {
    return InitArguments{fromUtf8(typeAct), fromUtf8(code), u"23/11/2026", u"", u"", u"", u""};
  }

  TempAccount account;
  Ctr_VelmoraNew c;
  CtrInspector in{c};
};

// The forms of Code decode alike in both vocabularies.
class InitForms : public Init, public ::testing::WithParamInterface<const char16_t*> {
 protected:
  Text kind() const { return GetParam(); }
  InitArguments args(std::string_view code) {
    return InitArguments{kind(), fromUtf8(code), u"23/11/2026", u"", u"", u"", u""};
  }
};

INSTANTIATE_TEST_SUITE_P(BothVocabularies, InitForms, ::testing::Values(u"AUTRE", u"SSIAD"));

TEST_P(InitForms, BareCodeTakesTheCriteriaAsPassed) {
  InitArguments a{kind(), u"00001", u"23/11/2026", u"31/12/2026", u"08:30", u"10:00", u"0100000"};
  c.Init(a);
  EXPECT_EQ(a.Code, u"00001");
  EXPECT_EQ(a.DateDeb, u"23/11/2026");
  EXPECT_EQ(in.W_Code(), u"00001");
  EXPECT_EQ(in.W_DateDeb(), u"23/11/2026");
  EXPECT_EQ(in.W_DateFin(), u"31/12/2026");
  EXPECT_EQ(in.W_HeureDe(), u"08:30");
  EXPECT_EQ(in.W_HeureA(), u"10:00");
  EXPECT_EQ(in.W_Jour(), u"0100000");
  EXPECT_EQ(in.W_CleLue(), kFalse);
  EXPECT_EQ(in.W_SemType(), kFalse);
  EXPECT_EQ(in.W_Flot(), kFalse);
  EXPECT_EQ(in.W_TypeAct(), kind());
  // The bare forms leave the key's date alone.
  EXPECT_EQ(in.W_DateCle(), u"");
  // The parameter record stays read for the search.
  ASSERT_FALSE(Variable::R_Param.empty());
  EXPECT_EQ(Variable::R_Param->r(20), u"0");
}

TEST_P(InitForms, BareFloatingCodeLosesItsFlagForTheCaller) {
  InitArguments a{kind(), u"00001FLOT", u"23/11/2026", u"", u"8.5", u"10", u"101000"};
  c.Init(a);
  EXPECT_EQ(a.Code, u"00001");
  EXPECT_EQ(in.W_Code(), u"00001");
  EXPECT_EQ(in.W_Flot(), kTrue);
  EXPECT_EQ(in.W_SemType(), kFalse);
  EXPECT_EQ(in.W_CleLue(), kFalse);
  EXPECT_EQ(in.W_HeureDe(), u"8.5");
  EXPECT_EQ(in.W_HeureA(), u"10");
  EXPECT_EQ(in.W_Jour(), u"101000");
  // The flag goes wherever it stood: the last four characters are cut.
  InitArguments b{kind(), u"FLOT00001", u"", u"", u"", u"", u""};
  c.Init(b);
  EXPECT_EQ(b.Code, u"FLOT0");
  EXPECT_EQ(in.W_Code(), u"FLOT0");
  EXPECT_EQ(in.W_Flot(), kTrue);
}

TEST_P(InitForms, DetailKeyGivesOneDayOfSeven) {
  InitArguments a = args(kDetailKey);
  c.Init(a);
  EXPECT_EQ(a.Code, fromUtf8(kDetailKey));
  EXPECT_EQ(a.DateDeb, u"");
  EXPECT_EQ(in.W_DateCle(), u"21512");
  EXPECT_EQ(in.W_Code(), u"00001");
  EXPECT_EQ(in.W_DateDeb(), u"23/11/2026");
  EXPECT_EQ(in.W_DateFin(), u"31/12/2026");
  EXPECT_EQ(in.W_HeureDe(), u"0850");
  EXPECT_EQ(in.W_HeureA(), u"1000");
  EXPECT_EQ(in.W_Jour(), u"0001000");
  EXPECT_EQ(in.W_CleLue(), kTrue);
  EXPECT_EQ(in.W_SemType(), kFalse);
  EXPECT_EQ(in.W_Flot(), kFalse);
  ASSERT_FALSE(Variable::R_DetailsInterv.empty());
  EXPECT_EQ(Variable::R_DetailsInterv->r(2), u"1000");
}

TEST_P(InitForms, DetailKeyWithTheFloatingFlagGivesOneDayOfSix) {
  InitArguments a = args(kDetailKey + "FLOT");
  c.Init(a);
  EXPECT_EQ(a.Code, fromUtf8(kDetailKey));
  EXPECT_EQ(in.W_Flot(), kTrue);
  EXPECT_EQ(in.W_SemType(), kFalse);
  EXPECT_EQ(in.W_CleLue(), kTrue);
  EXPECT_EQ(in.W_Code(), u"00001");
  EXPECT_EQ(in.W_HeureA(), u"1000");
  EXPECT_EQ(in.W_Jour(), u"000100");
}

TEST_P(InitForms, TemplateKeyReadsSeventeenCharacters) {
  InitArguments a = args(kTemplateKey + "SEMTYPE");
  c.Init(a);
  // Nothing is cut when the key names a template.
  EXPECT_EQ(a.Code, fromUtf8(kTemplateKey + "SEMTYPE"));
  EXPECT_EQ(a.DateDeb, u"");
  EXPECT_EQ(in.W_SemType(), kTrue);
  EXPECT_EQ(in.W_Flot(), kFalse);
  EXPECT_EQ(in.W_CleLue(), kTrue);
  EXPECT_EQ(in.W_Code(), u"00001");
  EXPECT_EQ(in.W_DateDeb(), u"23/11/2026");
  EXPECT_EQ(in.W_DateFin(), u"30/06/2027");
  EXPECT_EQ(in.W_HeureDe(), u"0850");
  EXPECT_EQ(in.W_HeureA(), u"0930");
  EXPECT_EQ(in.W_Jour(), u"0010000");
  ASSERT_FALSE(Variable::R_SemType.empty());
  EXPECT_EQ(Variable::R_SemType->r(2), u"0930");
}

TEST_P(InitForms, FloatingTemplateKeyReadsSixteenCharactersAndItsDays) {
  InitArguments a = args(kFloatingKey + "SEMTYPEFLOT");
  c.Init(a);
  EXPECT_EQ(a.Code, fromUtf8(kFloatingKey + "SEMTYPEFLOT"));
  EXPECT_EQ(in.W_SemType(), kTrue);
  EXPECT_EQ(in.W_Flot(), kTrue);
  EXPECT_EQ(in.W_CleLue(), kTrue);
  EXPECT_EQ(in.W_Code(), u"00001");
  EXPECT_EQ(in.W_DateDeb(), u"23/11/2026");
  // An open-ended template has no end date.
  EXPECT_EQ(in.W_DateFin(), u"");
  EXPECT_EQ(in.W_HeureDe(), u"0850");
  EXPECT_EQ(in.W_HeureA(), u"1130");
  EXPECT_EQ(in.W_Jour(), u"101010");
}

TEST_P(InitForms, FloatingDaysLookAtDigitsZeroToFiveOnly) {
  account.put("TPSSEMAINETYPEFLOT", kFloatingKey,
              {{""}, {"1130"}, {""}, {""}, {""}, {""}, {""}, {""}, {""}, {"6 5 1"}});
  InitArguments a = args(kFloatingKey + "SEMTYPEFLOT");
  c.Init(a);
  EXPECT_EQ(in.W_Jour(), u"010001");
}

TEST_P(InitForms, EmptyCodeIsADetailKeyThatFindsNothing) {
  InitArguments a = args("");
  c.Init(a);
  EXPECT_EQ(in.W_Code(), u"");
  EXPECT_EQ(in.W_HeureDe(), u"");
  EXPECT_EQ(in.W_Jour(), u"1111111");
  EXPECT_EQ(in.W_CleLue(), kTrue);
  EXPECT_EQ(a.DateDeb, u"");
}

TEST_P(InitForms, DayThatIsNotANumberSetsEveryDay) {
  const std::string key = std::string("I0042") + "00001" + k23Nov2026 + "XXXXXX" + "x" + "0850";
  account.put("TPSDETAILSINTERV", key, {{k31Dec2026}, {"1000"}});
  InitArguments a = args(key);
  c.Init(a);
  EXPECT_EQ(in.W_Jour(), u"1111111");
  EXPECT_EQ(in.W_HeureA(), u"1000");
}

TEST_P(InitForms, AbsentKeyRecordLeavesFieldsFromTheLastRecordRead) {
  InitArguments first = args(kDetailKey);
  c.Init(first);
  ASSERT_EQ(in.W_HeureA(), u"1000");
  // Another intervention of another client, at another time, without a record.
  const std::string absent = std::string("I0099") + "00002" + k31Dec2026 + "XXXXXX" + "5" + "1400";
  InitArguments second = args(absent);
  c.Init(second);
  // Taken from the key: the new values.
  EXPECT_EQ(in.W_Code(), u"00002");
  EXPECT_EQ(in.W_DateDeb(), u"31/12/2026");
  EXPECT_EQ(in.W_HeureDe(), u"1400");
  EXPECT_EQ(in.W_Jour(), u"0000010");
  // Taken from the record: the cursor still holds the first intervention.
  EXPECT_EQ(in.W_DateFin(), u"31/12/2026");
  EXPECT_EQ(in.W_HeureA(), u"1000");
}

TEST_P(InitForms, AbsentKeyRecordOnAnEmptyCursorKeepsTheFormerValues) {
  InitArguments bare{kind(), u"00001", u"23/11/2026", u"30/06/2027", u"08:30", u"11:45", u"1"};
  c.Init(bare);
  const std::string absent = std::string("I0099") + "00002" + k31Dec2026 + "XXXXXX" + "0" + "1400";
  InitArguments key = args(absent);
  c.Init(key);
  EXPECT_EQ(in.W_Code(), u"00002");
  EXPECT_EQ(in.W_DateFin(), u"30/06/2027");
  EXPECT_EQ(in.W_HeureA(), u"11:45");
  EXPECT_EQ(in.W_Jour(), u"1000000");
}

TEST_P(InitForms, DateThatIsNotADateKeepsTheKeyDate) {
  InitArguments first = args(kDetailKey);
  c.Init(first);
  ASSERT_EQ(in.W_DateCle(), u"21512");
  InitArguments second = args(kDetailKey);
  second.DateDeb = u"32/13/2026";
  c.Init(second);
  EXPECT_EQ(in.W_DateCle(), u"21512");
  EXPECT_EQ(second.DateDeb, u"");
  EXPECT_EQ(in.W_Jour(), u"0001000");
  // A bare code after it leaves the key's date as it was.
  InitArguments bare{kind(), u"00001", u"01/01/2026", u"", u"", u"", u""};
  c.Init(bare);
  EXPECT_EQ(in.W_DateCle(), u"21512");
}

TEST_F(Init, CaptionsFollowTheVocabulary) {
  struct Case {
    const char* typeAct;
    const char16_t* first;
    const char16_t* second;
    const char16_t* third;
    const char16_t* showAll;
  };
  const Case cases[] = {
      {"AUTRE", u"Type", u"Groupe", u"Tâche", u"Afficher toutes les tâches"},
      {"SSIAD", u"Regroupement", u"Type", u"Soin", u"Afficher tous les soins"},
      {"autre", u"Regroupement", u"Type", u"Soin", u"Afficher tous les soins"},
      {"AUTRE", u"Type", u"Groupe", u"Tâche", u"Afficher toutes les tâches"},
  };
  for (const Case& k : cases) {
    SCOPED_TRACE(k.typeAct);
    InitArguments a{fromUtf8(k.typeAct), u"00009", u"", u"", u"", u"", u""};
    c.Init(a);
    EXPECT_EQ(in.W_TypeAct(), fromUtf8(k.typeAct));
    EXPECT_EQ(c.Etq_Pos1.Caption(), k.first);
    EXPECT_EQ(c.Etq_Sel1.Caption(), k.first);
    EXPECT_EQ(c.Etq_Pos2.Caption(), k.second);
    EXPECT_EQ(c.Etq_Sel2.Caption(), k.second);
    EXPECT_EQ(c.Etq_Pos3.Caption(), k.third);
    EXPECT_EQ(c.Etq_Sel3.Caption(), k.third);
    EXPECT_EQ(c.Cac_TouteTache.Caption(), k.showAll);
  }
}

TEST_F(Init, ResetsTheSelectionTheTotalAndTheButtons) {
  c.Lst_Selectionne.AddItem(u"old row");
  c.Lst_CodeSelect.AddItem(u"OLD");
  c.Lst_Possible.AddItem(u"old proposal");
  c.Lst_CodePos.AddItem(u"OLDP");
  Variable::R_Obs = newRecord();
  Variable::R_Obs->set(1, u"old observation");
  const RecordRef oldObs = Variable::R_Obs;
  c.Etq_Imperativite.setVisible(true);
  c.W_Total = Currency::whole(75);
  c.Txt_Duree.setText(u"75");
  c.W_AfficheTache = kTrue;
  c.W_DoubleClic = kTrue;
  c.W_Imperatif = kTrue;
  c.W_DureeInterv = u"host's";
  for (toolkit::CommandButton* b :
       {&c.Cmd_SupprVelmora, &c.Cmd_Obs, &c.Cmd_OKVelmora, &c.Cmd_AnnulerVelmora}) {
    b->setEnabled(true);
  }
  c.Cac_TouteTache.setEnabled(false);

  // A client without templates nor task lists: nothing fills the lists again.
  InitArguments a{u"AUTRE", u"00009", u"23/11/2026", u"", u"08:30", u"10:00", u"1000000"};
  c.Init(a);

  EXPECT_EQ(c.Lst_Selectionne.ListCount(), 0);
  EXPECT_EQ(c.Lst_CodeSelect.ListCount(), 0);
  EXPECT_EQ(c.Lst_Possible.ListCount(), 0);
  EXPECT_EQ(c.Lst_CodePos.ListCount(), 0);
  ASSERT_FALSE(Variable::R_Obs.empty());
  EXPECT_FALSE(Variable::R_Obs == oldObs);
  EXPECT_EQ(Variable::R_Obs->r(), u"");
  EXPECT_FALSE(c.Etq_Imperativite.Visible());
  EXPECT_EQ(c.W_Total, Currency::whole(0));
  EXPECT_EQ(c.Txt_Duree.getText(), u"");
  EXPECT_EQ(c.W_AfficheTache, kFalse);
  EXPECT_EQ(c.W_DoubleClic, kFalse);
  // The host's own slots are the host's.
  EXPECT_EQ(c.W_Imperatif, kTrue);
  EXPECT_EQ(c.W_DureeInterv, u"host's");
  EXPECT_FALSE(c.Cmd_SupprVelmora.Enabled());
  EXPECT_FALSE(c.Cmd_Obs.Enabled());
  EXPECT_FALSE(c.Cmd_OKVelmora.Enabled());
  EXPECT_FALSE(c.Cmd_AnnulerVelmora.Enabled());
  EXPECT_TRUE(c.Cac_TouteTache.Enabled());
  EXPECT_EQ(c.Cac_TouteTache.Value(), 0);
  EXPECT_EQ(in.W_ClicActif(), kTrue);
  EXPECT_EQ(in.W_ChangeActif(), kTrue);
}

TEST_F(Init, ResettingTheSwitchRunsNoFill) {
  // A fresh control has the switch ticked, so Init's reset raises its Click; a second
  // Init finds it unticked already and raises nothing. Both must query the store alike.
  InitArguments first{u"AUTRE", u"00009", u"23/11/2026", u"", u"08:30", u"10:00", u"1000000"};
  const DatabaseRef database = account.open();
  c.TheDatabase(database);
  ASSERT_EQ(c.Cac_TouteTache.Value(), 1);
  const StoreStatistics before = statistics(database);
  c.Init(first);
  const StoreStatistics afterFirst = statistics(database);
  ASSERT_EQ(c.Cac_TouteTache.Value(), 0);
  InitArguments second = first;
  c.Init(second);
  const StoreStatistics afterSecond = statistics(database);
  EXPECT_EQ(afterFirst.queries - before.queries, afterSecond.queries - afterFirst.queries);
  EXPECT_EQ(afterFirst.decodedRecords - before.decodedRecords,
            afterSecond.decodedRecords - afterFirst.decodedRecords);
}

TEST_F(Init, WithoutADatabaseStillSetsCaptionsAndButtons) {
  Variable::resetAll();
  for (toolkit::CommandButton* b :
       {&c.Cmd_SupprVelmora, &c.Cmd_Obs, &c.Cmd_OKVelmora, &c.Cmd_AnnulerVelmora}) {
    b->setEnabled(true);
  }
  InitArguments a = args("SSIAD", kDetailKey);
  c.Init(a);
  EXPECT_EQ(c.Etq_Pos1.Caption(), u"Regroupement");
  EXPECT_EQ(c.Cac_TouteTache.Caption(), u"Afficher tous les soins");
  EXPECT_FALSE(c.Cmd_SupprVelmora.Enabled());
  EXPECT_FALSE(c.Cmd_AnnulerVelmora.Enabled());
  // Taken from the key all the same; the record could not be read.
  EXPECT_EQ(in.W_Code(), u"00001");
  EXPECT_EQ(in.W_Jour(), u"0001000");
  EXPECT_TRUE(Variable::F_DetailsInterv.empty());
  EXPECT_TRUE(Variable::R_DetailsInterv.empty());
}

// A writer holding the store's lock while the planner works. A gesture that reads fails
// through the failure handler and leaves the lists as they were; Init fails with its
// number after one bounded wait, not one per statement, and leaves no list that could be
// taken for a complete proposal. Once the writer is done, the control reads again.
TEST_F(Init, AWriterHoldingTheLockFailsClearlyAndLeavesNoPartialProposal) {
  account.put("SSIADREGROUPSOINS", "01", {{"Hygiène"}});
  account.put("SSIADTYPESOINS", "0101", {{"Toilette"}});
  account.put("SSIADSOINS", "010101", {{"Toilette complète"}, {""}, {""}, {"30"}});
  InitArguments a = args("SSIAD", "00001");
  c.Init(a);
  c.Remplir_Soins();
  ASSERT_EQ(c.Lst_Possible.ListCount(), 1);

  sqlite3* writer = nullptr;
  ASSERT_EQ(sqlite3_open(account.path().c_str(), &writer), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(writer, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);

  std::vector<long> shown;
  c.setFailureHandler([&](const Failure& f) { shown.push_back(f.number()); });
  c.Cac_TouteTache.toggle();
  EXPECT_EQ(shown, std::vector<long>{errors::kBusy});
  EXPECT_EQ(c.Lst_Possible.ListCount(), 1);

  const auto start = std::chrono::steady_clock::now();
  std::string message;
  const long number = testing::failureNumber([&] {
    try {
      c.Init(a);
    } catch (const Failure& f) {
      message = f.what();
      throw;
    }
  });
  EXPECT_LT(std::chrono::steady_clock::now() - start, 3 * store::ReadConnection::kLockWait);
  EXPECT_EQ(number, errors::kBusy);
  EXPECT_THAT(message, ::testing::HasSubstr("verrouillée par un autre programme"));
  EXPECT_EQ(c.Lst_Possible.ListCount(), 0);
  EXPECT_EQ(c.Lst_CodePos.ListCount(), 0);
  EXPECT_EQ(c.Txt_Duree.getText(), u"");

  sqlite3_exec(writer, "ROLLBACK", nullptr, nullptr, nullptr);
  sqlite3_close(writer);
  c.Init(a);
  c.Remplir_Soins();
  EXPECT_EQ(c.Lst_Possible.ListCount(), 1);
}

}  // namespace
}  // namespace velmora
