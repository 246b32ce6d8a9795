// Sessions as a host sees them: controls with sessions of their own work side by side on
// two stores, also on two threads, while controls on the default session share one
// connection, so that a Vider_liste on one releases it for the other.
#include <thread>

#include <velmora/control/session.h>
#include "control/fixture.h"

namespace velmora::testing {
namespace {

// A store whose care catalogue holds the given acts (code, name, minutes), one group and
// one type.
struct Store {
  explicit Store(const std::vector<std::vector<std::string>>& acts) {
    account.put("TPSPARAM", "1", {});
    account.put("SSIADREGROUPSOINS", "01", {{"Soins de base"}});
    account.put("SSIADTYPESOINS", "0101", {{"Hygiène"}});
    for (const auto& act : acts)
      account.put("SSIADSOINS", act[0], {{act[1]}, {""}, {""}, {act[2]}});
  }
  TempAccount account;
};

const std::vector<std::vector<std::string>> kNorth{{"010101", "Toilette complète", "30"},
                                                   {"010102", "Change", "10"}};
const std::vector<std::vector<std::string>> kSouth{{"010109", "Pansement", "20"}};

// Init of a bare client code on the control's store, then the care catalogue.
void showCatalogue(Ctr_VelmoraNew& c) {
  InitArguments a{u"SSIAD", u"00001", u"23/11/2026", u"", u"0800", u"0900", u"1000000"};
  c.Init(a);
  c.Remplir_Soins();
}

class Sessions : public ::testing::Test {
 protected:
  void SetUp() override {
    for (Ctr_VelmoraNew* c : {&north, &south}) {
      c->setServices(std::make_shared<toolkit::ScriptedServices>());
    }
    north.TheDatabase(northStore.account.open());
    south.TheDatabase(southStore.account.open());
  }

  Store northStore{kNorth};
  Store southStore{kSouth};
  Session northSession;
  Session southSession;
  Ctr_VelmoraNew north{northSession};
  Ctr_VelmoraNew south{southSession};
};

TEST_F(Sessions, TwoControlsOnTheirOwnSessionsEachProposeTheirOwnStore) {
  // One control per thread, at the same time.
  std::vector<Rows> northSeen;
  std::vector<Rows> southSeen;
  const auto run = [](Ctr_VelmoraNew& c, std::vector<Rows>& seen) {
    for (int i = 0; i < 20; ++i) {
      showCatalogue(c);
      seen.push_back(items(c.Lst_CodePos));  // the acts proposed, sorted by name
    }
  };
  std::thread first(run, std::ref(north), std::ref(northSeen));
  std::thread second(run, std::ref(south), std::ref(southSeen));
  first.join();
  second.join();
  EXPECT_EQ(northSeen, std::vector<Rows>(20, Rows{"010102", "010101"}));
  EXPECT_EQ(southSeen, std::vector<Rows>(20, Rows{"010109"}));

  // Interleaved on one thread, as a host with two windows calls them.
  InitArguments a{u"SSIAD", u"00001", u"23/11/2026", u"", u"0800", u"0900", u"1000000"};
  north.Init(a);
  InitArguments b = a;
  south.Init(b);
  north.Remplir_Soins();
  south.Remplir_Soins();
  EXPECT_EQ(items(north.Lst_CodePos), (Rows{"010102", "010101"}));
  EXPECT_EQ(items(south.Lst_CodePos), (Rows{"010109"}));

  // A gesture works on its own control's session: the selection's observations go there.
  south.Lst_Possible.click(0);
  south.Cmd_Select.press();
  EXPECT_EQ(items(south.Lst_CodeSelect), (Rows{"010109"}));
  EXPECT_FALSE(CtrInspector(south).Variable().R_Obs.empty());
  EXPECT_TRUE(items(north.Lst_CodeSelect).empty());

  // Ending the north control releases its own connection only.
  north.Vider_liste();
  EXPECT_TRUE(CtrInspector(north).Variable().TheDatabase.empty());
  EXPECT_FALSE(CtrInspector(south).Variable().TheDatabase.empty());
  south.Remplir_Soins();
  EXPECT_EQ(items(south.Lst_CodePos), (Rows{"010109"}));
  north.Remplir_Soins();
  EXPECT_TRUE(items(north.Lst_CodePos).empty());
  // Its failure is kept in its own session's error object.
  EXPECT_EQ(CtrInspector(north).Err().Number, errors::kObjectNotSet);
  EXPECT_NE(CtrInspector(south).Err().Number, errors::kObjectNotSet);
}

// Controls made without a session share the process's: the connection one is given
// serves the other, and a Vider_liste on either releases it for both.
TEST(DefaultSession, TwoControlsShareTheConnectionAndItsRelease) {
  Session::State& shared = Session::processDefault().state();
  shared.clear();
  const Store store{kNorth};
  Ctr_VelmoraNew first;
  Ctr_VelmoraNew second;
  first.TheDatabase(store.account.open());
  showCatalogue(first);
  showCatalogue(second);  // no TheDatabase of its own
  EXPECT_EQ(items(first.Lst_CodePos), (Rows{"010102", "010101"}));
  EXPECT_EQ(items(second.Lst_CodePos), (Rows{"010102", "010101"}));
  EXPECT_EQ(&CtrInspector(first).session(), &CtrInspector(second).session());

  second.Vider_liste();
  EXPECT_TRUE(shared.Variable.TheDatabase.empty());
  first.Remplir_Soins();
  EXPECT_TRUE(items(first.Lst_CodePos).empty());
  shared.clear();
}

}  // namespace
}  // namespace velmora::testing
