// The observations dialog opened with no current row, as after the host's Vider_Tache,
// which leaves Obs. enabled: it opens on an empty row, whose observation (attribute 0 of
// R_Obs) reads as "". Cancelling changes nothing; OK fails on the write at 0 and leaves
// the dialog open, and the selection, the observations and the lists stay as they were.
#include "control/fixture.h"

namespace velmora::testing {
namespace {

class EmptyRow : public ControlTest {
 protected:
  void SetUp() override {
    ControlTest::SetUp();
    account.put("TACHE", "DOUCHE", {{""}, {"TOILETTE"}, {""}, {"O"}});
    init("AUTRE", "00001", "");
    ctl.Lst_Possible.AddItem(fromUtf8(catalogueRow("Toilette", "Hygiène", "DOUCHE", "30")));
    ctl.Lst_CodePos.AddItem(u"DOUCHE");
    select({0});
    observe(0, "Sonner deux fois");
    ctl.Vider_Tache();
  }
};

// What the dialog showed when it opened.
struct Shown {
  std::string type, groupe, tache, obs;
  bool operator==(const Shown&) const = default;
};

TEST_F(EmptyRow, ObsWithNoCurrentRowOpensOnAnEmptyRowAndOnlyCancelClosesIt) {
  ASSERT_TRUE(ctl.Cmd_Obs.Enabled());
  ASSERT_EQ(ctl.Lst_Selectionne.ListIndex(), -1);
  const Snapshot before = snapshot(ctl);
  const int shows = services->modalShows();
  for (const bool ok : {false, true}) {
    SCOPED_TRACE(ok ? "OK" : "Annuler");
    Shown shown;
    long okFailure = 0;
    bool openAfterOk = false;
    services->onModal([&](toolkit::Form& form) {
      auto& dialog = dynamic_cast<Frm_AjoutObsTache&>(form);
      shown = {toUtf8(dialog.Txt_Type.getText()), toUtf8(dialog.Txt_Groupe.getText()),
               toUtf8(dialog.Txt_Tache.getText()), toUtf8(dialog.Txt_Obs.getText())};
      dialog.Txt_Obs.replaceText(u"Clé sous le paillasson");
      if (ok) {
        okFailure = failureNumber([&] { dialog.Cmd_OkObs.press(); });
        openAfterOk = dialog.isLoaded();
      }
      dialog.Cmd_AnnulerObs.press();
    });
    const long failure = failureNumber([&] { ctl.Cmd_Obs.press(); });
    EXPECT_EQ(failure, 0);
    EXPECT_FALSE(services->hasPendingAnswers());
    EXPECT_EQ(shown, (Shown{"", "", "", ""}));
    EXPECT_EQ(slots().N_LigneObs, 0);
    if (ok) {
      EXPECT_EQ(okFailure, errors::kInvalidCall);
      EXPECT_TRUE(openAfterOk);
    }
    EXPECT_EQ(slots().R_Obs->r(), u"");
    EXPECT_EQ(snapshot(ctl), before);
  }
  EXPECT_EQ(services->modalShows(), shows + 2);
}

}  // namespace
}  // namespace velmora::testing
