#include <gtest/gtest.h>

#include <velmora/control/ctr_velmora_new.h>
#include <velmora/store/sqlite_database.h>
#include "control/module_slots.h"
#include "ctr_driver.h"
#include "support/account.h"

namespace velmora {
namespace {

using testing::TempAccount;

class Mandatory : public ::testing::Test {
 protected:
  void SetUp() override {
    Variable::resetAll();
    account.put("TACHE", "Courses", {{"1"}, {"G-REPAS"}, {""}, {"N"}, {"30"}});
    account.put("TACHE", "Toilette", {{"2"}, {"G-SOINS"}, {""}, {"O"}, {"20"}});
    account.put("TACHE", "Repassage", {{"3"}, {"G-LINGE"}, {""}, {"o"}, {"45"}});
    account.put("TACHE", "Ménage", {{"4"}, {"G-ENTRETIEN"}, {""}, {""}, {"60"}});
    account.put("TACHE", "Lever", {{"5"}, {"G-SOINS"}, {""}, {"O"}, {"15"}});
    account.put("TACHE", "Promenade", {{"6"}, {"G-SORTIE"}, {""}, {"O "}, {"60"}});
  }
  void TearDown() override { Variable::resetAll(); }

  // Init on a client that has nothing, so that the selection starts empty.
  void start(const char16_t* typeAct) {
    database = account.open();
    c.TheDatabase(database);
    InitArguments a{typeAct, u"00009", u"23/11/2026", u"", u"08:30", u"10:00", u"1000000"};
    c.Init(a);
  }

  void select(std::initializer_list<const char16_t*> codes) {
    c.Lst_CodeSelect.Clear();
    for (const char16_t* code : codes) c.Lst_CodeSelect.AddItem(code);
  }

  std::uint64_t reads() const { return statistics(database).decodedRecords; }

  TempAccount account;
  DatabaseRef database;
  Ctr_VelmoraNew c;
};

TEST_F(Mandatory, OnlyAnUpperCaseOCounts) {
  start(u"AUTRE");
  select({});
  EXPECT_EQ(c.AuMoinsUneTacheImperative(), kFalse);
  select({u"Courses", u"Repassage", u"Ménage", u"Promenade"});
  EXPECT_EQ(c.AuMoinsUneTacheImperative(), kFalse);
  select({u"Courses", u"Lever"});
  EXPECT_EQ(c.AuMoinsUneTacheImperative(), kTrue);
}

TEST_F(Mandatory, TheWalkStopsAtTheFirstMandatoryTask) {
  start(u"AUTRE");
  select({u"Courses", u"Ménage", u"Toilette", u"Repassage", u"Lever"});
  const auto before = reads();
  EXPECT_EQ(c.AuMoinsUneTacheImperative(), kTrue);
  EXPECT_EQ(reads() - before, 3u);
  // The cursor is left on the last task read.
  EXPECT_EQ(Variable::R_Tache->r(1), u"2");
}

TEST_F(Mandatory, CareActsAreNeverMandatory) {
  start(u"SSIAD");
  select({u"Toilette"});
  const auto before = reads();
  EXPECT_EQ(c.AuMoinsUneTacheImperative(), kFalse);
  EXPECT_EQ(reads(), before);
  select({});
  EXPECT_EQ(c.AuMoinsUneTacheImperative(), kFalse);
}

TEST_F(Mandatory, ATaskGoneFromTheCatalogueIsNotMandatoryAndTheWalkGoesOn) {
  start(u"AUTRE");
  select({u"Disparue", u"Courses"});
  EXPECT_EQ(c.AuMoinsUneTacheImperative(), kFalse);
  select({u"Disparue", u"Lever"});
  EXPECT_EQ(c.AuMoinsUneTacheImperative(), kTrue);
  EXPECT_EQ(Variable::R_Tache->r(1), u"5");
}

TEST_F(Mandatory, ACatalogueChangeShowsAtTheNextCall) {
  start(u"AUTRE");
  select({u"Courses"});
  EXPECT_EQ(c.AuMoinsUneTacheImperative(), kFalse);
  account.put("TACHE", "Courses", {{"1"}, {"G-REPAS"}, {""}, {"O"}, {"30"}});
  EXPECT_EQ(c.AuMoinsUneTacheImperative(), kTrue);
}

TEST_F(Mandatory, WithoutTheFilesTheFailureReachesTheCaller) {
  start(u"AUTRE");
  select({u"Courses"});
  Variable::F_Tache.reset();
  try {
    c.AuMoinsUneTacheImperative();
    FAIL() << "expected object not set";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.number(), errors::kObjectNotSet);
  }
}

TEST_F(Mandatory, SortingTheSelectionShowsTheIndicator) {
  start(u"AUTRE");
  CtrDriver driver(c);
  c.Lst_Selectionne.AddItem(u"b");
  c.Lst_Selectionne.AddItem(u"a");
  select({u"Courses", u"Toilette"});
  driver.Trie_Selectionne();
  EXPECT_TRUE(c.Etq_Imperativite.Visible());
  EXPECT_EQ(c.Lst_CodeSelect.List(0), u"Toilette");
  c.Lst_CodeSelect.setList(0, u"Ménage");
  driver.Trie_Selectionne();
  EXPECT_FALSE(c.Etq_Imperativite.Visible());
}

}  // namespace
}  // namespace velmora
