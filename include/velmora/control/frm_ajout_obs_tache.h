// Frm_AjoutObsTache: the modal dialog in which the planner writes the observation of a
// selected item. It meets the control only through R_Obs and N_LigneObs, the slots of
// the session in use: Cmd_Obs shows it with its control's session in use on the thread,
// so that Ok writes the observation of that control's row.
//
// Threads and sharing: DefaultFrm_AjoutObsTache() is one dialog for the process, as every
// control shows it; it is used by one thread at a time. Ok writes the text into R_Obs at
// N_LigneObs and closes; Annuler closes and changes nothing; the close box does nothing.
// Ok before the control has made R_Obs fails with errors::kObjectNotSet.
#pragma once

#include <velmora/export.h>

#include <cstdint>

#include <velmora/base/boolean.h>
#include <velmora/toolkit/form.h>
#include <velmora/toolkit/widgets.h>

namespace velmora {

class VELMORA_EXPORT Frm_AjoutObsTache : public toolkit::Form {
 public:
  Frm_AjoutObsTache();

  static constexpr int kWidth = 6015;
  static constexpr int kHeight = 4215;

  toolkit::CommandButton Cmd_OkObs;
  toolkit::CommandButton Cmd_AnnulerObs;
  toolkit::TextBox Txt_Obs;
  toolkit::TextBox Txt_Groupe;
  toolkit::TextBox Txt_Tache;
  toolkit::TextBox Txt_Type;
  toolkit::Label Label4;
  toolkit::Label Label3;
  toolkit::Label Label2;
  toolkit::Label Label1;

 private:
  void Form_Load();
  void Form_Unload(std::int16_t& Cancel);
  void Cmd_OkObs_Click();
  void Cmd_AnnulerObs_Click();

  Boolean FermetureAutorisee = kFalse;
};

// The global default instance, made at first use and reused afterwards.
VELMORA_EXPORT Frm_AjoutObsTache& DefaultFrm_AjoutObsTache();

}  // namespace velmora
