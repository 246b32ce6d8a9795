// A control on a small purpose-built account, driven as a host and a planner drive it,
// and what they see of it. Rows are written out by hand so that the expectations do not
// lean on the code under test.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <velmora/control/ctr_velmora_new.h>
#include <velmora/control/frm_ajout_obs_tache.h>
#include <velmora/store/dates.h>
#include <velmora/toolkit/services.h>
#include "control/inspection.h"
#include "support/account.h"
#include "support/failure_number.h"
#include "support/rows.h"

namespace velmora::testing {

using Rows = std::vector<std::string>;
using Table = std::vector<std::vector<std::string>>;

// A proposal row of a catalogue fill (85 characters; a template search adds "  " or the
// floating mark "  *"); a selection row (85).
inline std::string catalogueRow(std::string_view c1, std::string_view c2, std::string_view c3,
                                std::string_view minutes) {
  return col(c1) + col(c2) + col(c3) + right(minutes, 7);
}
inline std::string selectedRow(std::string_view c1, std::string_view c2, std::string_view c3,
                               bool observation, std::string_view minutes) {
  return col(c1) + col(c2) + col(c3) + (observation ? "X" : " ") + right(minutes, 6);
}

inline Rows items(const toolkit::ListBox& list) {
  Rows out;
  for (int i = 0; i < list.ListCount(); ++i) out.push_back(toUtf8(list.List(i)));
  return out;
}
// A record as rows of values, for comparing working tables whole.
inline Table table(const RecordRef& r) {
  Table out;
  if (r.empty() || r->DCount() == 0) return out;
  for (const auto& attribute : r->attributes()) {
    out.emplace_back();
    for (const auto& v : attribute) out.back().push_back(toUtf8(v));
  }
  return out;
}
inline Rows attributes(const RecordRef& r, int count) {
  Rows out;
  for (int i = 1; i <= count; ++i) out.push_back(toUtf8(r->r(i)));
  return out;
}
// The internal date of a calendar date, five digits.
inline std::string internal(const char* ddmmyyyy) {
  return toUtf8(NorvikDates().TexteVersDate(fromUtf8(ddmmyyyy)));
}

// What a planner sees of the selection, and what the host reads of it.
struct Snapshot {
  Rows rows;            // Lst_Selectionne
  Rows codes;           // Lst_CodeSelect
  Rows obs;             // R_Obs, one per row
  std::string duree;    // Txt_Duree
  std::string total;    // W_Total
  std::string buttons;  // '1' for each of editChildren enabled
  bool imperative = false;
  int current = -1;  // ListIndex of Lst_Selectionne
  bool doubleClic = false;
  friend bool operator==(const Snapshot&, const Snapshot&) = default;
};
inline void PrintTo(const Snapshot& s, std::ostream* os) {
  for (const Rows* list : {&s.rows, &s.codes, &s.obs}) {  // rows, codes, observations
    *os << "\n ";
    for (const auto& r : *list) *os << " [" << r << "]";
  }
  *os << "\n  Txt_Duree [" << s.duree << "] W_Total " << s.total << " W_DoubleClic " << s.doubleClic
      << " ListIndex " << s.current << " enabled " << s.buttons << " imperative " << s.imperative;
}
// The children an edit enables and disables, in the order of Snapshot::buttons.
inline std::vector<const toolkit::Control*> editChildren(const Ctr_VelmoraNew& c) {
  return {&c.Cmd_Select,         &c.Cmd_Obs,       &c.Cmd_SupprVelmora, &c.Cmd_OKVelmora,
          &c.Cmd_AnnulerVelmora, &c.Txt_DureeSoin, &c.Lst_Selectionne};
}
inline Snapshot snapshot(const Ctr_VelmoraNew& c) {
  Snapshot s;
  s.rows = items(c.Lst_Selectionne);
  s.codes = items(c.Lst_CodeSelect);
  for (int i = 1; i <= c.Lst_Selectionne.ListCount(); ++i) {
    const RecordRef& obs = CtrInspector(c).Variable().R_Obs;
    s.obs.push_back(obs ? toUtf8(obs->r(i)) : "<no R_Obs>");
  }
  s.duree = toUtf8(c.Txt_Duree.getText());
  s.total = toUtf8(c.W_Total.toText());
  s.doubleClic = c.W_DoubleClic == kTrue;
  s.current = c.Lst_Selectionne.ListIndex();
  for (const toolkit::Control* b : editChildren(c)) s.buttons += b->Enabled() ? '1' : '0';
  s.imperative = c.Etq_Imperativite.Visible();
  return s;
}

class ControlTest : public ::testing::Test {
 protected:
  void SetUp() override { ctl.setServices(services); }

  // The module slots of the test's own session (its Variable face).
  SessionVariables& variable() { return session.state().Variable; }

  InitArguments init(std::string_view typeAct, std::string_view code, std::string_view dateDeb,
                     std::string_view dateFin = "", std::string_view heureDe = "",
                     std::string_view heureA = "", std::string_view jour = "") {
    ctl.TheDatabase(account.open());
    InitArguments a{fromUtf8(typeAct), fromUtf8(code),   fromUtf8(dateDeb), fromUtf8(dateFin),
                    fromUtf8(heureDe), fromUtf8(heureA), fromUtf8(jour)};
    ctl.Init(a);
    return a;
  }

  // The planner's gestures, made as a planner makes them: marks then the arrow, a
  // double-click then OK, the dialog closed with Ok, a removal answered.
  void select(const std::vector<int>& rows) {
    for (const int r : rows) ctl.Lst_Possible.click(r);
    ctl.Cmd_Select.press();
  }
  void openEdit(int row) {
    ctl.Lst_Selectionne.click(row);
    ctl.Lst_Selectionne.doubleClick(row);
  }
  void edit(int row, std::string_view minutes) {
    openEdit(row);
    for (int i = 0; i < 5; ++i) ctl.Txt_DureeSoin.typeKey(8);
    ctl.Txt_DureeSoin.typeText(fromUtf8(minutes));
    ctl.Cmd_OKVelmora.press();
  }
  void withDialog(int row, std::function<void(Frm_AjoutObsTache&)> action) {
    services->onModal([action = std::move(action)](toolkit::Form& form) {
      action(dynamic_cast<Frm_AjoutObsTache&>(form));
    });
    if (row >= 0) ctl.Lst_Selectionne.click(row);  // -1: no current row
    ctl.Cmd_Obs.press();
  }
  void observe(int row, std::string_view text) {
    withDialog(row, [t = fromUtf8(text)](Frm_AjoutObsTache& d) {
      d.Txt_Obs.replaceText(t);
      d.Cmd_OkObs.press();
    });
  }
  void remove(int row, int answer = toolkit::kMsgBoxYes) {
    services->answer(answer);
    ctl.Lst_Selectionne.click(row);
    ctl.Cmd_SupprVelmora.press();
  }

  TempAccount account;
  Session session;
  Ctr_VelmoraNew ctl{session};
  std::shared_ptr<toolkit::ScriptedServices> services =
      std::make_shared<toolkit::ScriptedServices>();
};

}  // namespace velmora::testing
