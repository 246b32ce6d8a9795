// The player of play scripts; the question box and the observations dialog take their
// answers from the script.
#include "play_player.h"

#include <array>
#include <iostream>
#include <memory>
#include <utility>

#include <velmora/base/failure.h>
#include <velmora/control/ctr_velmora_new.h>
#include <velmora/control/frm_ajout_obs_tache.h>
#include <velmora/toolkit/services.h>
#include "base/message.h"
#include "report.h"

namespace velmora::cli {

namespace {

using Json = nlohmann::ordered_json;

const char* yesNo(bool b) {
  return b ? "True" : "False";
}

// What the report of the proposal leaves out and a journey needs: the edit, the
// buttons, and the record handed to the host.
struct Extras {
  static Json enabled(const Ctr_VelmoraNew& c) {
    return Json{{"Cmd_Select", c.Cmd_Select.Enabled()},
                {"Cmd_Obs", c.Cmd_Obs.Enabled()},
                {"Cmd_SupprVelmora", c.Cmd_SupprVelmora.Enabled()},
                {"Cmd_OKVelmora", c.Cmd_OKVelmora.Enabled()},
                {"Cmd_AnnulerVelmora", c.Cmd_AnnulerVelmora.Enabled()},
                {"Txt_DureeSoin", c.Txt_DureeSoin.Enabled()},
                {"Lst_Selectionne", c.Lst_Selectionne.Enabled()}};
  }
  static Json record(const RecordRef& r) {
    if (r.empty()) return nullptr;
    Json items = Json::array();
    for (int i = 1; i <= r->DCount(); ++i) {
      items.push_back({toUtf8(r->r(i, 1)), toUtf8(r->r(i, 2)), toUtf8(r->r(i, 3))});
    }
    return items;
  }
};

// The scripted answers, and what the planner saw: each question box with its answer, and
// the four boxes of the observations dialog at each opening, until the next show.
class WatchedServices : public toolkit::ScriptedServices {
 public:
  int MsgBox(TextView prompt, int style, TextView title) override {
    Json asked{
        {"text", toUtf8(prompt)}, {"title", toUtf8(title)}, {"style", style}, {"answer", nullptr}};
    questions_.push_back(asked);
    const int answer = ScriptedServices::MsgBox(prompt, style, title);
    questions_.back()["answer"] = answer;
    return answer;
  }

  void ShowModal(toolkit::Form& form) override {
    if (const auto* dialog = dynamic_cast<const Frm_AjoutObsTache*>(&form)) {
      dialogs_.push_back({{"Txt_Type", toUtf8(dialog->Txt_Type.getText())},
                          {"Txt_Groupe", toUtf8(dialog->Txt_Groupe.getText())},
                          {"Txt_Tache", toUtf8(dialog->Txt_Tache.getText())},
                          {"Txt_Obs", toUtf8(dialog->Txt_Obs.getText())}});
    }
    ScriptedServices::ShowModal(form);
  }

  // What was seen since the last call.
  Json takeQuestions() { return std::exchange(questions_, Json::array()); }
  Json takeDialogs() { return std::exchange(dialogs_, Json::array()); }

 private:
  Json questions_ = Json::array();
  Json dialogs_ = Json::array();
};

Json markedRows(const toolkit::ListBox& list) {
  Json marked = Json::array();
  for (int i = 0; i < list.ListCount(); ++i) {
    if (list.Selected(i)) marked.push_back(i);
  }
  return marked;
}

}  // namespace

class Player::Impl {
 public:
  Impl(DatabaseRef db, bool json) : db_(std::move(db)), json_(json) {
    control_.setServices(services_);
    // As a host shows a failure and goes on, the script notes it and plays the next line.
    control_.setFailureHandler([this](const Failure& f) { report(f); });
  }

  void play(const std::vector<Step>& steps) {
    for (const Step& step : steps) this->step(step);
    if (services_->hasPendingAnswers()) note(say("answers or dialog actions left over at the end"));
    if (json_) std::cout << seen().dump(2) << "\n";
  }

  void step(const Step& step) {
    line_ = step.line;
    try {
      run(step);
    } catch (const Failure& f) {
      report(f);
    }
  }

  int failures() const { return failures_; }
  Json seen() const { return Json{{"shows", shows_}, {"messages", messages_}}; }
  const Ctr_VelmoraNew& control() const { return control_; }

 private:
  void note(const std::string& text) {
    if (json_) {
      messages_.push_back({{"line", line_}, {"text", text}});
    } else {
      std::cout << say("line {}: {}", {std::to_string(line_), text}) << "\n";
    }
  }

  void report(const Failure& f) {
    ++failures_;
    note(say("error {}: {}", {std::to_string(f.number()), inOurWords(f.what())}));
  }

  toolkit::ListBox& list(const std::string& name) {
    return name == "possible" ? control_.Lst_Possible : control_.Lst_Selectionne;
  }

  // A gesture on a disabled control or past the last row does nothing, as on a screen;
  // the script says so, since its author probably meant something else.
  bool reachable(const toolkit::Control& target, int row = -1, int rows = 0) {
    if (!target.Enabled()) {
      note(say("{} is disabled: nothing happens", {target.name()}));
      return false;
    }
    if (row >= rows && row != -1) {
      note(say("{} has no row {}: nothing happens", {target.name(), std::to_string(row)}));
      return false;
    }
    return true;
  }

  toolkit::CommandButton& button(const std::string& name) {
    if (name == "select") return control_.Cmd_Select;
    if (name == "ok") return control_.Cmd_OKVelmora;
    if (name == "cancel") return control_.Cmd_AnnulerVelmora;
    if (name == "remove") return control_.Cmd_SupprVelmora;
    return control_.Cmd_Obs;
  }

  void run(const Step& step) {
    using K = Step::Kind;
    toolkit::TextBox& duree = control_.Txt_DureeSoin;
    switch (step.kind) {
      case K::Init:
        return init(step);
      case K::Click:
      case K::DoubleClick: {
        toolkit::ListBox& l = list(step.words[0]);
        if (!reachable(l, step.row, l.ListCount())) return;
        return step.kind == K::Click ? l.click(step.row) : l.doubleClick(step.row);
      }
      case K::Press:
        if (reachable(button(step.words[0]))) button(step.words[0]).press();
        return;
      case K::Type:
        if (reachable(duree)) duree.typeText(fromUtf8(step.words[0]));
        return;
      case K::Paste:
        if (reachable(duree)) duree.replaceText(fromUtf8(step.words[0]));
        return;
      case K::Clear:
        if (!reachable(duree)) return;
        while (!duree.getText().empty()) duree.typeKey(8);
        return;
      case K::Tick:
        if (reachable(control_.Cac_TouteTache)) control_.Cac_TouteTache.toggle();
        return;
      case K::Answer:
        services_->answer(step.words[0] == "yes" ? toolkit::kMsgBoxYes : toolkit::kMsgBoxNo);
        return;
      case K::Observation:
        return observation(step);
      case K::Host:
        return host(step);
      case K::Show:
        return show();
    }
  }

  void init(const Step& step) {
    // The host sets the connection before each Init: Vider_liste gives it back.
    control_.TheDatabase(db_);
    InitArguments a;
    const std::array<Text*, 7> fields{&a.TypeAct, &a.Code,   &a.DateDeb, &a.DateFin,
                                      &a.HeureDe, &a.HeureA, &a.Jour};
    for (std::size_t i = 0; i < fields.size(); ++i) *fields[i] = fromUtf8(step.words[i]);
    control_.Init(a);
  }

  void observation(const Step& step) {
    const bool hasText = step.hasText;
    const Text text = hasText ? fromUtf8(step.words[0]) : Text();
    const std::vector<std::string> buttons(step.words.begin() + (hasText ? 1 : 0),
                                           step.words.end());
    services_->onModal([hasText, text, buttons](toolkit::Form& form) {
      auto& dialog = dynamic_cast<Frm_AjoutObsTache&>(form);
      if (hasText) dialog.Txt_Obs.replaceText(text);
      for (const std::string& b : buttons) {
        if (b == "close") dialog.requestClose();
        if (b == "ok") dialog.Cmd_OkObs.press();
        if (b == "cancel") dialog.Cmd_AnnulerObs.press();
      }
    });
  }

  void host(const Step& step) {
    const std::string& call = step.words[0];
    if (call == "maj-enr") return control_.MAJ_Enr();
    if (call == "vider-tache") return control_.Vider_Tache();
    if (call == "vider-liste") return control_.Vider_liste();
    // affiche with items: the host sets W_Aff to them, one attribute an item.
    if (step.words.size() > 1) {
      NorvikRecord items;
      for (std::size_t w = 1; w + 2 < step.words.size(); w += 3) {
        const auto item = static_cast<int>(w / 3 + 1);
        items.set(item, 1, fromUtf8(step.words[w]));
        items.set(item, 2, fromUtf8(step.words[w + 1]));
        items.set(item, 3, fromUtf8(step.words[w + 2]));
      }
      control_.W_Aff = RecordRef::make(items);
      return control_.Affiche();
    }
    // affiche alone: the host hands back what MAJ_Enr gave it.
    if (control_.W_Enr.empty()) {
      throw Failure(errors::kObjectNotSet,
                    say("object not set: no W_Enr to show; run host maj-enr first"));
    }
    control_.W_Aff = RecordRef::make(*control_.W_Enr);
    control_.Affiche();
  }

  void show() {
    const Ctr_VelmoraNew& c = control_;
    if (json_) {
      Json state = reportJson(c);
      state["Txt_DureeSoin"] = toUtf8(c.Txt_DureeSoin.getText());
      state["W_DoubleClic"] = c.W_DoubleClic != kFalse;
      state["ListIndex"] = c.Lst_Selectionne.ListIndex();
      state["enabled"] = Extras::enabled(c);
      state["W_Enr"] = Extras::record(c.W_Enr);
      state["marked"] = markedRows(c.Lst_Possible);
      state["questions"] = services_->takeQuestions();
      state["dialogs"] = services_->takeDialogs();
      shows_.push_back({{"line", line_}, {"state", state}});
      return;
    }
    std::cout << "== " << say("line {}", {std::to_string(line_)}) << " ==\n";
    printReport(std::cout, c);
    std::cout << "Lst_Possible " << say("marked:");
    const Json marked = markedRows(c.Lst_Possible);
    if (marked.empty()) std::cout << " " << say("none");
    for (const auto& row : marked) std::cout << " " << row.get<int>();
    std::cout << "\n";
    std::cout << "Txt_DureeSoin \"" << toUtf8(c.Txt_DureeSoin.getText()) << "\"\n";
    std::cout << "W_DoubleClic " << yesNo(c.W_DoubleClic != kFalse) << "  ListIndex "
              << c.Lst_Selectionne.ListIndex() << "\n";
    std::cout << say("enabled:");
    const Json enabled = Extras::enabled(c);
    for (const auto& [name, on] : enabled.items()) {
      std::cout << " " << name << (on.get<bool>() ? "" : say("(off)"));
    }
    std::cout << "\n";
    const Json enr = Extras::record(c.W_Enr);
    if (enr.is_null()) {
      std::cout << "W_Enr Nothing\n";
    } else {
      std::cout << "W_Enr (" << counted(enr.size(), toSay("1 item"), toSay("{} items")) << ")\n";
      int n = 0;
      for (const auto& item : enr) {
        std::cout << "  " << ++n << " " << item[0].dump() << " " << item[1].dump() << " "
                  << item[2].dump() << "\n";
      }
    }
    for (const auto& q : services_->takeQuestions()) {
      std::cout << say("question {} {} style {} answer {}",
                       {q["title"].dump(), q["text"].dump(), std::to_string(q["style"].get<int>()),
                        q["answer"].is_null() ? say("none") : q["answer"].dump()})
                << "\n";
    }
    for (const auto& d : services_->takeDialogs()) {
      std::cout << say("dialog Txt_Type {} Txt_Groupe {} Txt_Tache {} Txt_Obs {}",
                       {d["Txt_Type"].dump(), d["Txt_Groupe"].dump(), d["Txt_Tache"].dump(),
                        d["Txt_Obs"].dump()})
                << "\n";
    }
    std::cout << "\n";
  }

  DatabaseRef db_;
  bool json_;
  Session session_;
  Ctr_VelmoraNew control_{session_};
  std::shared_ptr<WatchedServices> services_ = std::make_shared<WatchedServices>();
  int line_ = 0;
  Json shows_ = Json::array();
  Json messages_ = Json::array();
  int failures_ = 0;
};

Player::Player(DatabaseRef db, bool json) : impl_(std::make_unique<Impl>(std::move(db), json)) {}
Player::~Player() = default;
void Player::play(const std::vector<Step>& steps) {
  impl_->play(steps);
}
void Player::step(const Step& step) {
  impl_->step(step);
}
int Player::failures() const {
  return impl_->failures();
}
nlohmann::ordered_json Player::seen() const {
  return impl_->seen();
}
const Ctr_VelmoraNew& Player::control() const {
  return impl_->control();
}

}  // namespace velmora::cli
