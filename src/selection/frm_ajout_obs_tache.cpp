// Frm_AjoutObsTache, the observations dialog: its controls and their layout. Its two
// buttons are the only way to close it, and OK writes the text into R_Obs at N_LigneObs.
#include <velmora/control/frm_ajout_obs_tache.h>

#include "control/session_state.h"

namespace velmora {

using toolkit::Geometry;

Frm_AjoutObsTache::Frm_AjoutObsTache()
    : toolkit::Form("Frm_AjoutObsTache", kWidth, kHeight, u"Observations sur la tâche"),
      Cmd_OkObs("Cmd_OkObs", Geometry{4320, 3720, 735, 375}, 1, u"Ok"),
      Cmd_AnnulerObs("Cmd_AnnulerObs", Geometry{5160, 3720, 735, 375}, 2, u"Annuler"),
      Txt_Obs("Txt_Obs", Geometry{120, 1680, 5775, 1935}, 0),
      Txt_Groupe("Txt_Groupe", Geometry{1080, 600, 4815, 285}, 8),
      Txt_Tache("Txt_Tache", Geometry{1080, 960, 4815, 285}, 7),
      Txt_Type("Txt_Type", Geometry{1080, 240, 4815, 285}, 6),
      Label4("Label4", Geometry{120, 1440, 930, 195}, 9, u"Observations"),
      Label3("Label3", Geometry{120, 600, 525, 195}, 5, u"Groupe"),
      Label2("Label2", Geometry{120, 960, 465, 195}, 4, u"Tâche"),
      Label1("Label1", Geometry{120, 240, 360, 195}, 3, u"Type") {
  fixedSingleBorder = true;
  maximizeButton = false;
  centreOnScreen = true;
  Txt_Obs.multiLine = true;
  for (toolkit::TextBox* t : {&Txt_Groupe, &Txt_Tache, &Txt_Type}) t->readOnly = true;
  for (toolkit::Label* l : {&Label4, &Label3, &Label2, &Label1}) l->autoSize = true;
  for (toolkit::Control* c : std::initializer_list<toolkit::Control*>{
           &Cmd_OkObs, &Cmd_AnnulerObs, &Txt_Obs, &Txt_Groupe, &Txt_Tache, &Txt_Type, &Label4,
           &Label3, &Label2, &Label1}) {
    addChild(*c);
  }
  LoadEvent = [this] { Form_Load(); };
  UnloadEvent = [this](std::int16_t& Cancel) {
    Form_Unload(Cancel);
    // The controls go with an unloaded form: the next Load finds them empty.
    if (Cancel == 0) {
      for (toolkit::TextBox* t : {&Txt_Obs, &Txt_Groupe, &Txt_Tache, &Txt_Type}) t->setText(u"");
    }
  };
  Cmd_OkObs.Click = [this] { Cmd_OkObs_Click(); };
  Cmd_AnnulerObs.Click = [this] { Cmd_AnnulerObs_Click(); };
}

void Frm_AjoutObsTache::Form_Load() {
  FermetureAutorisee = kFalse;
}

void Frm_AjoutObsTache::Form_Unload(std::int16_t& Cancel) {
  // Only the two buttons close the dialog; the close box does nothing.
  if (FermetureAutorisee == kFalse) Cancel = kTrue;
}

void Frm_AjoutObsTache::Cmd_OkObs_Click() {
  Variable().R_Obs->set(Variable().N_LigneObs, Txt_Obs.getText());
  FermetureAutorisee = kTrue;
  Unload();
}

void Frm_AjoutObsTache::Cmd_AnnulerObs_Click() {
  FermetureAutorisee = kTrue;
  Unload();
}

Frm_AjoutObsTache& DefaultFrm_AjoutObsTache() {
  static Frm_AjoutObsTache form;
  return form;
}

}  // namespace velmora
