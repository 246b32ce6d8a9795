// The planner's work on the selection: moving proposal rows in, editing a duration, the
// observations dialog (also with no current row), removing a row, and the way out and back
// (MAJ_Enr, Vider_Tache, Vider_liste, Affiche), each compared whole as a planner and a host see it.
#include <array>

#include "control/fixture.h"

namespace velmora::testing {
namespace {

struct Item {
  const char *c1, *c2, *task, *minutes, *code;
};
// The proposal every test starts from; DOUCHE is the catalogue's one mandatory task.
const std::array<Item, 6> kItems{{{"Ménage", "Entretien", "ASPIRATEUR", "25", "ASPIRATEUR"},
                                  {"Ménage", "Entretien", "VAISSELLE", "40", "VAISSELLE"},
                                  {"Repas", "Cuisine", "DEJEUNER", "", "DEJEUNER"},
                                  {"Ménage", "Entretien", "BALAI", "5", "BALAI"},
                                  {"Toilette", "Hygiène", "DOUCHE", "30", "DOUCHE"},
                                  {"Ménage", "Entretien", "Numéro", "5", "42"}}};
const std::string kStart = "0000011";    // after Init: nothing to select yet
const std::string kIdle = "1000011";     // after a selection: the arrow, the box, the list
const std::string kClicked = "1110011";  // a current row: Obs. and Supprimer too
const std::string kEditing = "1111110";  // an edit open: OK and Annuler, the list locked
const std::string kDone = "1000001";     // after OK, Annuler or a removal

std::string sel(int i, bool observation = false, const char* minutes = nullptr) {
  const Item& it = kItems[static_cast<std::size_t>(i)];
  return selectedRow(it.c1, it.c2, it.task, observation, minutes ? minutes : it.minutes);
}
// The selection of these items in this order, each with its observation and its duration
// (the proposal's unless told), as a planner and a host see it with no edit open.
struct Pick {
  int item;
  const char* obs = "";
  const char* minutes = nullptr;
};
Snapshot chosen(const std::vector<Pick>& picks, std::string duree, std::string total,
                std::string buttons, bool imperative = false, int current = -1) {
  Snapshot s{{},         {},     {}, std::move(duree), std::move(total), std::move(buttons),
             imperative, current};
  for (const Pick& p : picks) {
    s.rows.push_back(sel(p.item, *p.obs != '\0', p.minutes));
    s.codes.emplace_back(kItems[static_cast<std::size_t>(p.item)].code);
    s.obs.emplace_back(p.obs);
  }
  return s;
}

class Selection : public ControlTest {
 protected:
  void SetUp() override {
    ControlTest::SetUp();
    // Affiche shows a task under its group's attribute 2, then the group key.
    account.put("GROUPETACHE", "ENTRETIEN", {{"Entretien"}, {"Ménage"}});
    account.put("GROUPETACHE", "REPAS", {{"Repas"}, {"Cuisine"}});
    account.put("GROUPETACHE", "TOILETTE", {{"Toilette"}, {"Hygiène"}});
    account.put("TACHE", "ASPIRATEUR", {{""}, {"ENTRETIEN"}, {""}, {"N"}});
    account.put("TACHE", "VAISSELLE", {{""}, {"ENTRETIEN"}, {""}, {""}});
    account.put("TACHE", "DEJEUNER", {{""}, {"REPAS"}, {""}, {"N"}});
    account.put("TACHE", "DOUCHE", {{""}, {"TOILETTE"}, {""}, {"O"}});
    start();
  }
  // Init on a client without templates nor task lists: both lists start empty.
  void start(std::string_view typeAct = "AUTRE", bool withItems = true) {
    init(typeAct, "00001", "");
    if (!withItems) return;
    for (const Item& it : kItems) propose(catalogueRow(it.c1, it.c2, it.task, it.minutes), it.code);
  }
  void propose(const std::string& row, const std::string& code) {
    ctl.Lst_Possible.AddItem(fromUtf8(row));
    ctl.Lst_CodePos.AddItem(fromUtf8(code));
  }
  void stored(const Table& items) { ctl.W_Aff = RecordRef::make(makeRecord(items)); }
  Text enr() { return ctl.W_Enr->r(); }
};
using Moving = Selection;
using Editing = Selection;
using Observations = Selection;
using Removal = Selection;
using WayOut = Selection;

TEST_F(Moving, RowsAreCopiedSortedWithTheirCodesAndCountedInTheTotal) {
  EXPECT_EQ(snapshot(ctl).buttons, kStart);
  select({2});  // no duration: the total stays empty
  EXPECT_EQ(snapshot(ctl), chosen({{2}}, "", "0", kIdle));
  select({1});
  EXPECT_EQ(snapshot(ctl).duree, "0h40");
  for (const int r : {0, 4}) ctl.Lst_CodePos.setSelected(r, true);  // a view may mark codes
  select({0, 4});
  const Snapshot s = snapshot(ctl);
  EXPECT_EQ(s, chosen({{0}, {1}, {2}, {4}}, "1h35", "95", kIdle, true));
  for (int r = 0; r < 6; ++r)
    EXPECT_FALSE(ctl.Lst_Possible.Selected(r) || ctl.Lst_CodePos.Selected(r));
  select({0, 1});  // already there: they only lose their marks
  EXPECT_EQ(snapshot(ctl), s);
  ctl.Lst_Possible.doubleClick(3);  // a double-click selects the row under the pointer
  EXPECT_EQ(snapshot(ctl).codes[1], "BALAI");
  EXPECT_EQ(snapshot(ctl).total, "100");
  EXPECT_FALSE(ctl.Lst_Possible.Selected(3));
}

TEST_F(Moving, TheTaskColumnDecidesWhatEntersAndEmptyColumnsComeFromAbove) {
  start("AUTRE", false);
  const Table proposals{
      // Columns 1 and 2 come from the nearest rows above that have them.
      {"Ménage", "Entretien", "ASPIRATEUR", "40", "ASPIRATEUR"},
      {"", "Sols", "LAVAGE", "15", "LAVAGE"},
      {"", "", "VITRES", "20", "VITRES"},
      {"Repas", "", "DEJEUNER", "30", "DEJEUNER"},
      // A second item with the same task column is a duplicate, whatever its code; a row
      // without a task never enters; the same first 25 characters are the same task.
      {"Repas", "Cuisine", "VITRES", "10", "VITRES2"},
      {"Ménage", "Entretien", "", "20", "SANSNOM"},
      {"A", "B", "Nettoyage complet du sol", "5", "SOL1"},
      {"A", "B", "Nettoyage complet du sol de la cuisine", "7", "SOL2"}};
  for (const auto& p : proposals) propose(catalogueRow(p[0], p[1], p[2], p[3]), p[4]);
  select({7, 6, 5, 4, 3, 2, 1});
  EXPECT_EQ(snapshot(ctl).rows, (Rows{selectedRow("A", "B", "Nettoyage complet du sol", false, "5"),
                                      selectedRow("Ménage", "Sols", "LAVAGE", false, "15"),
                                      selectedRow("Ménage", "Sols", "VITRES", false, "20"),
                                      selectedRow("Repas", "", "DEJEUNER", false, "30")}));
  EXPECT_EQ(snapshot(ctl).codes, (Rows{"SOL1", "LAVAGE", "VITRES", "DEJEUNER"}));
  EXPECT_EQ(snapshot(ctl).total, "70");  // only what enters is counted
  // The floating mark stays behind.
  start("AUTRE", false);
  propose(catalogueRow("Ménage", "Entretien", "BALAI", "40") + "  *", "BALAI");
  select({0});
  EXPECT_EQ(snapshot(ctl).rows, (Rows{selectedRow("Ménage", "Entretien", "BALAI", false, "40")}));
}

TEST_F(Editing, TheStatesOfAClickADoubleClickAnnulerAndOk) {
  select({0, 1});
  ctl.Lst_Selectionne.click(1);
  EXPECT_EQ(snapshot(ctl).buttons, kClicked);
  EXPECT_EQ(ctl.Lst_CodeSelect.ListIndex(), 1);
  ctl.Lst_Selectionne.DblClick();
  ctl.Lst_Selectionne.doubleClick(1);
  EXPECT_EQ(ctl.Txt_DureeSoin.getText(), u"40");
  EXPECT_EQ(snapshot(ctl).buttons, kEditing);
  ctl.Txt_DureeSoin.typeText(u"9");
  ctl.Cmd_AnnulerVelmora.press();  // leaves no trace
  EXPECT_EQ(snapshot(ctl), chosen({{0}, {1}}, "1h05", "65", kDone));
  EXPECT_EQ(ctl.Txt_DureeSoin.getText(), u"");
  openEdit(1);
  EXPECT_EQ(ctl.Txt_DureeSoin.getText(), u"40");
  ctl.Lst_Selectionne.click(0);  // locked: nothing changes
  EXPECT_EQ(snapshot(ctl).current, 1);
  ctl.Txt_DureeSoin.typeKey(8);
  ctl.Txt_DureeSoin.typeKey(8);
  ctl.Txt_DureeSoin.typeText(u"1x0");  // the filter drops the letter
  ctl.Cmd_OKVelmora.press();
  EXPECT_EQ(snapshot(ctl), chosen({{0}, {1, "", "10"}}, "0h35", "35", kDone));
  EXPECT_EQ(ctl.Lst_CodeSelect.ListIndex(), -1);
  EXPECT_EQ(ctl.Txt_DureeSoin.getText(), u"");
}

TEST_F(Editing, ADurationThatIsNotDigitsIsRefusedLosesNothingAndReachesTheHost) {
  select({0, 1});
  openEdit(1);
  const Snapshot before = snapshot(ctl);
  for (const Text& pasted : {Text(u"1a"), Text(u"-5"), Text(u" 7"), Text(u"2.5")}) {
    SCOPED_TRACE(toUtf8(pasted));
    ctl.Txt_DureeSoin.replaceText(pasted);
    std::string message;
    EXPECT_EQ(failureNumber([&] { ctl.Cmd_OKVelmora.press(); }, &message), errors::kTypeMismatch);
    EXPECT_NE(message.find(toUtf8(pasted)), std::string::npos) << message;
    EXPECT_EQ(snapshot(ctl), before);
    EXPECT_EQ(ctl.Txt_DureeSoin.getText(), pasted);
  }
  std::vector<long> seen;
  ctl.setFailureHandler([&](const Failure& f) { seen.push_back(f.number()); });
  ctl.Cmd_OKVelmora.press();
  EXPECT_EQ(seen, (std::vector<long>{errors::kTypeMismatch}));
  ctl.Txt_DureeSoin.replaceText(u"15");
  ctl.Cmd_OKVelmora.press();
  EXPECT_EQ(snapshot(ctl).duree, "0h40");
  EXPECT_EQ(snapshot(ctl).total, "40");
}

TEST_F(Observations, TheDialogShowsTheRowAndItsTextAndOnlyItsButtonsCloseIt) {
  select({0, 1, 2});
  observe(1, "Sonner deux fois\nCode 1234");
  Text shown;  // what each opening shows, then whether a close request left it open
  withDialog(1, [&](Frm_AjoutObsTache& d) {
    for (const auto* t : {&d.Txt_Type, &d.Txt_Groupe, &d.Txt_Tache, &d.Txt_Obs}) {
      shown += t->getText() + u"|";
    }
    d.Txt_Obs.replaceText(u"Brouillon");
    d.Cmd_AnnulerObs.press();
  });
  EXPECT_EQ(services->mousePointer(), 0);
  withDialog(0, [&](Frm_AjoutObsTache& d) {
    shown += d.Txt_Obs.getText() + u"|";  // each opening starts afresh
    d.Txt_Obs.replaceText(u"Tapé puis fermé");
    d.requestClose();
    shown += d.isLoaded() ? u"open" : u"closed";
    d.Cmd_OkObs.press();
  });
  EXPECT_EQ(shown,
            u"Ménage                   |Entretien                |VAISSELLE                |"
            u"Sonner deux fois\nCode 1234||open");
  EXPECT_EQ(snapshot(ctl).obs, (Rows{"Tapé puis fermé", "Sonner deux fois\nCode 1234", ""}));
}

// After the host's Vider_Tache, which leaves Obs. enabled, the dialog opens with no current
// row on an empty row, whose observation (attribute 0 of R_Obs) reads as "". Cancelling
// changes nothing; OK fails on the write at 0 and leaves the dialog open, and the
// selection, the observations and the lists stay as they were.
TEST_F(Observations, WithNoCurrentRowTheDialogOpensOnAnEmptyRowAndOnlyCancelClosesIt) {
  select({4});
  observe(0, "Sonner deux fois");
  ctl.Vider_Tache();
  ASSERT_TRUE(ctl.Cmd_Obs.Enabled());
  ASSERT_EQ(ctl.Lst_Selectionne.ListIndex(), -1);
  const Snapshot before = snapshot(ctl);
  const int shows = services->modalShows();
  for (const bool ok : {false, true}) {
    SCOPED_TRACE(ok ? "OK" : "Annuler");
    Text shown;  // what it showed, then whether OK left it open
    long okFailure = 0;
    withDialog(-1, [&](Frm_AjoutObsTache& d) {
      for (const auto* t : {&d.Txt_Type, &d.Txt_Groupe, &d.Txt_Tache, &d.Txt_Obs}) {
        shown += t->getText() + u"|";
      }
      d.Txt_Obs.replaceText(u"Clé sous le paillasson");
      if (ok) {
        okFailure = failureNumber([&] { d.Cmd_OkObs.press(); });
        shown += d.isLoaded() ? u"open" : u"closed";
      }
      d.Cmd_AnnulerObs.press();
    });
    EXPECT_FALSE(services->hasPendingAnswers());
    EXPECT_EQ(shown, ok ? u"||||open" : u"||||");
    EXPECT_EQ(okFailure, ok ? errors::kInvalidCall : 0);
    EXPECT_EQ(variable().N_LigneObs, 0);
    EXPECT_EQ(variable().R_Obs->r(), u"");
    EXPECT_EQ(snapshot(ctl), before);
  }
  EXPECT_EQ(services->modalShows(), shows + 2);
}

TEST_F(Removal, ObservationsAndEditedDurationsGoWithTheirRows) {
  select({0, 1, 2});
  remove(1, toolkit::kMsgBoxNo);
  EXPECT_EQ(services->questions().back().prompt,
            u"Etes-vous sûr de vouloir supprimer cette tâche ?");
  observe(0, "A");
  observe(2, "C");
  edit(0, "10");  // the marker survives the edit
  select({3});    // BALAI sorts second, the observations move with their rows
  EXPECT_EQ(snapshot(ctl).rows, (Rows{sel(0, true, "10"), sel(3), sel(1), sel(2, true)}));
  remove(0);
  EXPECT_EQ(snapshot(ctl), chosen({{3}, {1}, {2, "C"}}, "0h45", "45", kDone));
  EXPECT_EQ(variable().R_Obs->r(), u"\uF8FE\uF8FEC");
  remove(0);
  remove(0);
  EXPECT_EQ(snapshot(ctl).total, "0");
}

TEST_F(Removal, NoKeepsTheEditOpenAndYesEndsIt) {
  select({0, 4});  // DOUCHE, the one mandatory task, is edited and removed
  openEdit(1);
  const Snapshot before = snapshot(ctl);
  services->answer(toolkit::kMsgBoxNo);
  ctl.Cmd_SupprVelmora.press();
  EXPECT_EQ(snapshot(ctl), before);
  EXPECT_TRUE(before.imperative);
  services->answer(toolkit::kMsgBoxYes);
  ctl.Cmd_SupprVelmora.press();
  EXPECT_EQ(snapshot(ctl), chosen({{0}}, "0h25", "25", kDone));
  EXPECT_EQ(ctl.Txt_DureeSoin.getText(), u"");
}

TEST_F(WayOut, CareActCodesAreZeroFilledToSixDigits) {
  start("SSIAD", false);
  propose(catalogueRow("Soins de base", "Hygiène", "Toilette complète", "30"), "123");
  propose(catalogueRow("Soins de base", "Hygiène", "Pansement", "15"), "1234567");
  propose(catalogueRow("Soins de base", "Hygiène", "Surveillance", ""), "AB12");
  select({0, 1, 2});
  ctl.MAJ_Enr();
  EXPECT_EQ(enr(), makeRecord({{"1234567", "15", ""}, {"AB12", "", ""}, {"000123", "30", ""}}).r());
  EXPECT_EQ(snapshot(ctl).codes, (Rows{"1234567", "AB12", "123"}));
  remove(0);  // a care act is no task
  EXPECT_EQ(services->questions().back().prompt, u"Etes-vous sûr de vouloir supprimer cet acte ?");
  EXPECT_EQ(snapshot(ctl).codes, (Rows{"AB12", "123"}));
}

TEST_F(WayOut, MajEnrHandsTheSelectionOverInListOrderAsANewRecordEachTime) {
  select({0, 2, 4, 5});
  observe(3, "Sonner deux fois\nCode 1234");
  edit(2, "0");
  ctl.MAJ_Enr();
  const RecordRef first = ctl.W_Enr;
  const Text firstText = enr();
  EXPECT_EQ(firstText, makeRecord({{"ASPIRATEUR", "25", ""},
                                   {"42", "5", ""},
                                   {"DEJEUNER", "0", ""},
                                   {"DOUCHE", "30", "Sonner deux fois\nCode 1234"}})
                           .r());
  EXPECT_EQ(snapshot(ctl).total, "60");   // MAJ_Enr changes nothing on screen
  EXPECT_TRUE(snapshot(ctl).imperative);  // OK on an edit keeps DOUCHE's label
  for (int i = 0; i < 4; ++i) remove(0);
  ctl.MAJ_Enr();
  EXPECT_EQ(first->r(), firstText);
  EXPECT_EQ(enr(), u"");
}

TEST_F(WayOut, ViderTacheEmptiesTheSelectionAndViderListeEverything) {
  select({0, 4});
  observe(0, "A");
  ctl.Vider_Tache();
  // The host's total stays until the next operation sets it.
  EXPECT_EQ(snapshot(ctl), chosen({}, "", "55", kClicked));
  EXPECT_EQ(variable().R_Obs->r(), u"");
  EXPECT_EQ(ctl.Lst_CodePos.ListCount(), 6);
  select({2, 1});
  EXPECT_EQ(snapshot(ctl), chosen({{1}, {2}}, "0h40", "40", kClicked));
  ctl.MAJ_Enr();
  ctl.Vider_liste();
  EXPECT_EQ(ctl.Lst_Possible.ListCount() + ctl.Lst_CodePos.ListCount() +
                ctl.Lst_Selectionne.ListCount() + ctl.Lst_CodeSelect.ListCount(),
            0);
  EXPECT_EQ(snapshot(ctl).duree, "");
  EXPECT_EQ(snapshot(ctl).total, "40");
  EXPECT_TRUE(ctl.W_Enr.empty());
}

TEST_F(WayOut, AfficheShowsAStoredSelectionAndLeavesOutWhatIsNoTask) {
  account.put("TACHE", "ORPHELINE", {{""}, {"DISPARU"}, {""}, {"O"}});
  account.put("TACHE", "UNE_TACHE_AU_CODE_TRES_LONG_ET_PLUS", {{""}, {"REPAS"}});
  select({0});
  ctl.Vider_Tache();
  stored({{"INCONNUE", "10", "perdue 1"},
          {"ORPHELINE", "20", "perdue 2"},
          {"VAISSELLE", "0", ""},
          {"DOUCHE", "45", "Clé sous le paillasson"},
          {"DEJEUNER"},
          {"UNE_TACHE_AU_CODE_TRES_LONG_ET_PLUS", "5", ""}});
  ctl.Affiche();
  // Column 1 is the group's attribute 2, column 2 the group key, column 3 the code.
  EXPECT_EQ(
      snapshot(ctl),
      (Snapshot{{selectedRow("Cuisine", "REPAS", "DEJEUNER", false, ""),
                 selectedRow("Cuisine", "REPAS", "UNE_TACHE_AU_CODE_TRES_LONG_ET_PLUS", false, "5"),
                 selectedRow("Hygiène", "TOILETTE", "DOUCHE", true, "45"),
                 selectedRow("Ménage", "ENTRETIEN", "VAISSELLE", false, "0")},
                {"DEJEUNER", "UNE_TACHE_AU_CODE_TRES_LONG_ET_PLUS", "DOUCHE", "VAISSELLE"},
                {"", "", "Clé sous le paillasson", ""},
                "0h50",
                "50",
                kIdle,
                true}));
}

}  // namespace
}  // namespace velmora::testing
