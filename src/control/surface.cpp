// The control's surface: its child controls with their documented places (twips), tab
// indexes, captions and defaults, and the event procedures wired to them. Every event runs
// with the control's session in use, in one read snapshot when it reads the store.
#include <algorithm>
#include <optional>

#include <velmora/control/ctr_velmora_new.h>
#include "control/control_private.h"
#include "control/read_snapshot.h"

namespace velmora {

using toolkit::Alignment;
using toolkit::FontSpec;
using toolkit::Geometry;
using toolkit::Rgb;

namespace {
const FontSpec kListFont{"Courier New", 8.25, false};
const FontSpec kWarningFont{"MS Sans Serif", 13.5, false};
}  // namespace

Ctr_VelmoraNew::Ctr_VelmoraNew() : Ctr_VelmoraNew(Session::processDefault()) {}

Ctr_VelmoraNew::Ctr_VelmoraNew(Session& session)
    : Cac_TouteTache("Cac_TouteTache", Geometry{120, 120, 2415, 255}, 22,
                     u"Afficher toutes les tâches", 1),
      Cdr_Soins("Cdr_Soins", Geometry{0, 480, 9930, 5415}, 0),
      Lst_CodePos("Lst_CodePos", Geometry{7560, 1560, 855, 840}, 24, true),
      Lst_CodeSelect("Lst_CodeSelect", Geometry{7680, 3840, 855, 645}, 23, false),
      Txt_Barre1("Txt_Barre1", Geometry{10560, 600, 15, 1095}, 10, u"Text1"),
      Txt_Duree("Txt_Duree", Geometry{8520, 5040, 615, 315}, 9),
      Cmd_SupprVelmora("Cmd_SupprVelmora", Geometry{120, 4920, 855, 375}, 8, u"Supprimer"),
      Txt_DureeSoin("Txt_DureeSoin", Geometry{8520, 4680, 615, 315}, 7),
      Cmd_AnnulerVelmora("Cmd_AnnulerVelmora", Geometry{6720, 4920, 855, 375}, 6, u"Annuler"),
      Cmd_OKVelmora("Cmd_OKVelmora", Geometry{5880, 4920, 735, 375}, 5, u"OK"),
      Lst_Selectionne("Lst_Selectionne", Geometry{120, 3360, 9615, 1320}, 4, false),
      Lst_Possible("Lst_Possible", Geometry{120, 360, 9615, 2370}, 3, true),
      Cmd_Select("Cmd_Select", Geometry{4320, 2760, 495, 375}, 2, u""),
      Cmd_Obs("Cmd_Obs", Geometry{5160, 4920, 615, 375}, 1, u"Obs."),
      Label1("Label1", Geometry{9240, 120, 255, 255}, 26, u"F"),
      Etq_Imperativite("Etq_Imperativite", Geometry{1080, 4800, 3975, 375}, 25,
                       u"Au moins une tâche impérative"),
      Label6("Label6", Geometry{8640, 3120, 495, 255}, 21, u"Durée"),
      Label5("Label5", Geometry{8640, 120, 495, 255}, 20, u"Durée"),
      Label3("Label3", Geometry{8160, 3120, 375, 255}, 19, u"Obs."),
      Etq_Sel3("Etq_Sel3", Geometry{5640, 3120, 615, 255}, 18, u"Tâche"),
      Etq_DureeTotale("Etq_DureeTotale", Geometry{8040, 5040, 495, 255}, 17, u"Total"),
      Etq_Duree("Etq_Duree", Geometry{8880, 3360, 495, 255}, 16, u"Durée"),
      Etq_Pos1("Etq_Pos1", Geometry{120, 120, 1215, 255}, 15, u"Type"),
      Etq_Pos2("Etq_Pos2", Geometry{2760, 120, 735, 255}, 14, u"Groupe"),
      Etq_Pos3("Etq_Pos3", Geometry{5640, 120, 615, 255}, 13, u"Tâche"),
      Etq_Sel2("Etq_Sel2", Geometry{2880, 3120, 735, 255}, 12, u"Groupe"),
      Etq_Sel1("Etq_Sel1", Geometry{120, 3120, 1215, 255}, 11, u"Type"),
      d_(std::make_unique<Private>(session)) {
  Lst_Possible.font = kListFont;
  Lst_Selectionne.font = kListFont;
  Lst_CodePos.setVisible(false);
  Lst_CodeSelect.setVisible(false);
  for (toolkit::CommandButton* b :
       {&Cmd_SupprVelmora, &Cmd_AnnulerVelmora, &Cmd_OKVelmora, &Cmd_Select, &Cmd_Obs}) {
    b->setEnabled(false);
  }
  Cmd_Select.graphical = true;
  Txt_Duree.setEnabled(false);
  Txt_Duree.alignment = Alignment::Right;
  Txt_Duree.background = Rgb{192, 192, 255};
  Txt_DureeSoin.alignment = Alignment::Right;
  Txt_DureeSoin.maxLength = 5;
  Txt_Barre1.tabStop = false;
  Txt_Barre1.background = Rgb{64, 64, 64};
  Etq_Imperativite.setVisible(false);
  Etq_Imperativite.foreground = Rgb{255, 0, 0};
  Etq_Imperativite.font = kWarningFont;
  Label1.alignment = Alignment::Center;
  d_->failureHandler_ = std::make_shared<toolkit::FailureHandler>();
  for (toolkit::Control* c : controls()) c->setFailureHandler(d_->failureHandler_);
  wireEvents();
}

Ctr_VelmoraNew::~Ctr_VelmoraNew() = default;

std::vector<toolkit::Control*> Ctr_VelmoraNew::controls() {
  return {&Cac_TouteTache,   &Cdr_Soins,       &Lst_CodePos,
          &Lst_CodeSelect,   &Txt_Barre1,      &Txt_Duree,
          &Cmd_SupprVelmora, &Txt_DureeSoin,   &Cmd_AnnulerVelmora,
          &Cmd_OKVelmora,    &Lst_Selectionne, &Lst_Possible,
          &Cmd_Select,       &Cmd_Obs,         &Label1,
          &Etq_Imperativite, &Label6,          &Label5,
          &Label3,           &Etq_Sel3,        &Etq_DureeTotale,
          &Etq_Duree,        &Etq_Pos1,        &Etq_Pos2,
          &Etq_Pos3,         &Etq_Sel2,        &Etq_Sel1};
}

bool Ctr_VelmoraNew::liesInFrame(const toolkit::Control& control) const {
  return &control != &Cac_TouteTache && &control != &Cdr_Soins;
}

void Ctr_VelmoraNew::wireEvents() {
  // The gestures that read the store run in one snapshot, taken before they change
  // anything. Cmd_SupprVelmora reads only after its question, through
  // AuMoinsUneTacheImperative, which takes its own: no lock is held while a planner
  // thinks over a question box, and Cmd_Obs does not read. Each runs with the control's
  // session in use, the observations dialog it may open included.
  const auto inSession = [this](auto event) {
    return [this, event](auto&... arguments) {
      const SessionInUse inUse(d_->session);
      event(arguments...);
    };
  };
  Cac_TouteTache.Click = inSession([this] {
    // While Init resets the switch its click does nothing, and reads nothing.
    if (d_->W_ClicActif == kFalse) return Cac_TouteTache_Click();
    std::optional<ProcedureSnapshot> snapshot;
    try {
      snapshot.emplace();
    } catch (const Failure&) {
      // The switch goes back to what the list still shows.
      d_->W_ClicActif = kFalse;
      Cac_TouteTache.setValue(Cac_TouteTache.Value() == 0 ? 1 : 0);
      d_->W_ClicActif = kTrue;
      throw;
    }
    Cac_TouteTache_Click();
  });
  Lst_Possible.Click = inSession([this] { Lst_Possible_Click(); });
  Lst_Possible.DblClick = inSession([this] {
    const ProcedureSnapshot snapshot;
    Lst_Possible_DblClick();
  });
  Cmd_Select.Click = inSession([this] {
    const ProcedureSnapshot snapshot;
    Cmd_Select_Click();
  });
  Lst_Selectionne.Click = inSession([this] { Lst_Selectionne_Click(); });
  Lst_Selectionne.DblClick = inSession([this] { Lst_Selectionne_DblClick(); });
  // A sort writes the rows in place; only an open edit follows its item.
  const auto editOpen = [this] { return W_DoubleClic != kFalse; };
  Lst_Selectionne.currentFollows = editOpen;
  Lst_CodeSelect.currentFollows = editOpen;
  Cmd_OKVelmora.Click = inSession([this] {
    const ProcedureSnapshot snapshot;
    Cmd_OKVelmora_Click();
  });
  Cmd_AnnulerVelmora.Click = inSession([this] { Cmd_AnnulerVelmora_Click(); });
  Cmd_SupprVelmora.Click = inSession([this] { Cmd_SupprVelmora_Click(); });
  Cmd_Obs.Click = inSession([this] { Cmd_Obs_Click(); });
  Txt_Duree.Change = inSession([this] { Txt_Duree_Change(); });
  Txt_DureeSoin.KeyPress = inSession([this](int& key) { Txt_DureeSoin_KeyPress(key); });
  Txt_DureeSoin.LostFocus = inSession([this] { Txt_DureeSoin_LostFocus(); });
}

void Ctr_VelmoraNew::setFailureHandler(toolkit::FailureHandler handler) {
  *d_->failureHandler_ = std::move(handler);
}

void Ctr_VelmoraNew::setServices(std::shared_ptr<toolkit::Services> services) {
  d_->services_ = std::move(services);
}

toolkit::Services& Ctr_VelmoraNew::services() const {
  if (!d_->services_) {
    throw Failure(errors::kObjectNotSet,
                  "objet non défini : l'hôte n'a pas donné de services d'écran au contrôle");
  }
  return *d_->services_;
}

}  // namespace velmora
