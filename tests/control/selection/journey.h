// A control on a small purpose-built account, driven by the planner's gestures, and a
// snapshot of everything the selection's operations touch, so that each step of a
// journey can be compared whole.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <velmora/control/ctr_velmora_new.h>
#include <velmora/control/frm_ajout_obs_tache.h>
#include <velmora/toolkit/services.h>
#include "control/module_slots.h"
#include "support/account.h"

namespace velmora::testing {

// Rows written out by hand, so that the expectations do not lean on the code under test.
inline Text column(std::string_view utf8) {
  Text t = fromUtf8(utf8);
  if (t.size() > 25) t.resize(25);
  t.resize(26, u' ');
  return t;
}
inline Text rightAligned(std::string_view utf8, std::size_t width) {
  const Text t = fromUtf8(utf8);
  return Text(width - t.size(), u' ') + t;
}
// A proposal row as a catalogue fill writes it: 85 characters.
inline Text proposal(std::string_view c1, std::string_view c2, std::string_view c3,
                     std::string_view minutes) {
  return column(c1) + column(c2) + column(c3) + rightAligned(minutes, 7);
}
// A selection row: the three columns, the marker, the duration in six.
inline std::string sel(std::string_view c1, std::string_view c2, std::string_view c3, char marker,
                       std::string_view minutes) {
  return toUtf8(column(c1) + column(c2) + column(c3) + Text(1, char16_t(marker)) +
                rightAligned(minutes, 6));
}

struct Buttons {
  bool select = false;
  bool obs = false;
  bool suppr = false;
  bool ok = false;
  bool annuler = false;
  bool dureeSoin = false;
  bool list = true;  // Lst_Selectionne
  friend bool operator==(const Buttons&, const Buttons&) = default;
};

// What a step of a journey leaves behind.
struct Snapshot {
  std::vector<std::string> rows;   // Lst_Selectionne
  std::vector<std::string> codes;  // Lst_CodeSelect
  std::vector<std::string> obs;    // R_Obs, one per row
  std::string duree;               // Txt_Duree
  std::string total;               // W_Total
  bool doubleClic = false;
  int current = -1;  // ListIndex of Lst_Selectionne
  Buttons buttons;
  bool imperative = false;
  friend bool operator==(const Snapshot&, const Snapshot&) = default;
};

inline void PrintTo(const Snapshot& s, std::ostream* os) {
  *os << "\n  rows:";
  for (const auto& r : s.rows) *os << "\n    [" << r << "]";
  *os << "\n  codes:";
  for (const auto& c : s.codes) *os << " [" << c << "]";
  *os << "\n  obs:";
  for (const auto& o : s.obs) *os << " [" << o << "]";
  *os << "\n  Txt_Duree [" << s.duree << "] W_Total " << s.total << " W_DoubleClic " << s.doubleClic
      << " ListIndex " << s.current << " imperative " << s.imperative << "\n  enabled: select "
      << s.buttons.select << " obs " << s.buttons.obs << " suppr " << s.buttons.suppr << " ok "
      << s.buttons.ok << " annuler " << s.buttons.annuler << " dureeSoin " << s.buttons.dureeSoin
      << " list " << s.buttons.list;
}

inline Snapshot snapshot(const Ctr_VelmoraNew& c) {
  Snapshot s;
  for (int i = 0; i < c.Lst_Selectionne.ListCount(); ++i) {
    s.rows.push_back(toUtf8(c.Lst_Selectionne.List(i)));
    s.obs.push_back(Variable::R_Obs ? toUtf8(Variable::R_Obs->r(i + 1)) : "<no R_Obs>");
  }
  for (int i = 0; i < c.Lst_CodeSelect.ListCount(); ++i) {
    s.codes.push_back(toUtf8(c.Lst_CodeSelect.List(i)));
  }
  s.duree = toUtf8(c.Txt_Duree.getText());
  s.total = toUtf8(c.W_Total.toText());
  s.doubleClic = c.W_DoubleClic == kTrue;
  s.current = c.Lst_Selectionne.ListIndex();
  s.buttons = {c.Cmd_Select.Enabled(),         c.Cmd_Obs.Enabled(),
               c.Cmd_SupprVelmora.Enabled(),   c.Cmd_OKVelmora.Enabled(),
               c.Cmd_AnnulerVelmora.Enabled(), c.Txt_DureeSoin.Enabled(),
               c.Lst_Selectionne.Enabled()};
  s.imperative = c.Etq_Imperativite.Visible();
  return s;
}

// The catalogue every journey shares: three groups, tasks in them, one mandatory.
//   GROUPETACHE key -> attribute 2 the label shown in column 1 by Affiche
//   TACHE key       -> attribute 2 the group key, attribute 4 "O" when mandatory
inline void putCatalogue(TempAccount& account) {
  account.put("GROUPETACHE", "ENTRETIEN", {{"Entretien"}, {"Ménage"}});
  account.put("GROUPETACHE", "REPAS", {{"Repas"}, {"Cuisine"}});
  account.put("GROUPETACHE", "TOILETTE", {{"Toilette"}, {"Hygiène"}});
  account.put("TACHE", "ASPIRATEUR", {{"Passer l'aspirateur"}, {"ENTRETIEN"}, {""}, {"N"}});
  account.put("TACHE", "VAISSELLE", {{"Faire la vaisselle"}, {"ENTRETIEN"}, {""}, {""}});
  account.put("TACHE", "DEJEUNER", {{"Préparer le déjeuner"}, {"REPAS"}, {""}, {"N"}});
  account.put("TACHE", "DOUCHE", {{"Aide à la douche"}, {"TOILETTE"}, {""}, {"O"}});
}

class Journey : public ::testing::Test {
 protected:
  void SetUp() override {
    Variable::resetAll();
    putCatalogue(account);
    ctl.setServices(services);
    start(u"AUTRE");
  }
  void TearDown() override { Variable::resetAll(); }

  // Init with a client that has no templates and no task list: both lists start empty.
  void start(const Text& typeAct) {
    ctl.TheDatabase(account.open());
    InitArguments a{typeAct, u"00001", u"", u"", u"", u"", u""};
    ctl.Init(a);
  }

  // The proposal rows as a catalogue fill would leave them.
  void propose(const std::vector<std::pair<Text, Text>>& rowsAndCodes) {
    for (const auto& [row, code] : rowsAndCodes) {
      ctl.Lst_Possible.AddItem(row);
      ctl.Lst_CodePos.AddItem(code);
    }
  }

  // The planner marks rows of Lst_Possible and presses the down arrow.
  void select(const std::vector<int>& rows) {
    for (const int r : rows) ctl.Lst_Possible.click(r);
    ctl.Cmd_Select.press();
  }

  // The planner edits the duration of a selected row: double-click, clear, type, OK.
  void edit(int row, std::string_view minutes) {
    ctl.Lst_Selectionne.click(row);
    ctl.Lst_Selectionne.doubleClick(row);
    while (!ctl.Txt_DureeSoin.getText().empty()) ctl.Txt_DureeSoin.typeKey(8);
    ctl.Txt_DureeSoin.typeText(fromUtf8(minutes));
    ctl.Cmd_OKVelmora.press();
  }

  // The planner writes an observation on a row and closes the dialog with Ok.
  void observe(int row, std::string_view text) {
    services->onModal([t = fromUtf8(text)](toolkit::Form& form) {
      auto& dialog = dynamic_cast<Frm_AjoutObsTache&>(form);
      dialog.Txt_Obs.replaceText(t);
      dialog.Cmd_OkObs.press();
    });
    ctl.Lst_Selectionne.click(row);
    ctl.Cmd_Obs.press();
  }

  // The planner removes a row and answers the question.
  void remove(int row, int answer = toolkit::kMsgBoxYes) {
    services->answer(answer);
    ctl.Lst_Selectionne.click(row);
    ctl.Cmd_SupprVelmora.press();
  }

  TempAccount account;
  Ctr_VelmoraNew ctl;
  std::shared_ptr<toolkit::ScriptedServices> services =
      std::make_shared<toolkit::ScriptedServices>();
};

// The state after Init and a first selection with no row chosen.
inline Buttons idle() {
  return Buttons{true, false, false, false, false, true, true};
}

}  // namespace velmora::testing
