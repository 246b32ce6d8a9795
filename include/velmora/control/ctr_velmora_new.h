// Ctr_VelmoraNew: the planning control that a host embeds. One class, as its users know
// it; its member functions live in the folder of the job they do:
//   control/      state, public surface, Init, surface layout
//   rows/         row format, durations and the total (Txt_Duree_Change, Txt_DureeSoin_*)
//   catalogue/    Remplir_Soins, Charge_AideTache, Cac_TouteTache_Click, Trie_*
//   search/       Recherche_SemaineType, Recherche_SemaineTypeFlot
//   selection/    moving, editing, removing, observations, AuMoinsUneTacheImperative
//   persistence/  MAJ_Enr, Vider_*, Affiche, Affiche_Tache_ClicDroit*
#pragma once

#include <velmora/export.h>

#include <cstdint>
#include <memory>
#include <vector>

#include <velmora/base/boolean.h>
#include <velmora/base/currency.h>
#include <velmora/store/database.h>
#include <velmora/store/record.h>
#include <velmora/toolkit/services.h>
#include <velmora/toolkit/widgets.h>

namespace velmora {

class CtrInspector;

// The arguments of Init, all by reference, as a host passes them; Init changes Code
// and DateDeb for the caller.
struct VELMORA_EXPORT InitArguments {
  Text TypeAct;
  Text Code;
  Text DateDeb;
  Text DateFin;
  Text HeureDe;
  Text HeureA;
  Text Jour;
};

class VELMORA_EXPORT Ctr_VelmoraNew {
 public:
  Ctr_VelmoraNew();
  Ctr_VelmoraNew(const Ctr_VelmoraNew&) = delete;
  Ctr_VelmoraNew& operator=(const Ctr_VelmoraNew&) = delete;

  // Client area of the control, in twips.
  static constexpr int kWidth = 9960;
  static constexpr int kHeight = 6000;

  // ---- Public variables, read and written by the host ----
  Boolean W_AfficheTache = kFalse;
  Boolean W_Imperatif = kFalse;
  Currency W_Total;
  RecordRef W_Enr;
  RecordRef W_Aff;
  Text W_DureeInterv;
  Boolean W_DoubleClic = kFalse;

  // ---- Write-only properties ----
  void TheClient(const ClientRef& vNewValue);
  void TheDatabase(const DatabaseRef& vNewValue);

  // ---- Public procedures ----
  void Init(Text& TypeAct, Text& Code, Text& DateDeb, Text& DateFin, Text& HeureDe, Text& HeureA,
            Text& Jour);
  void Init(InitArguments& a) {
    Init(a.TypeAct, a.Code, a.DateDeb, a.DateFin, a.HeureDe, a.HeureA, a.Jour);
  }
  void Vider_liste();
  void Remplir_Soins();
  void MAJ_Enr();
  void Vider_Tache();
  void Affiche();
  void Recherche_SemaineType(Boolean& RemplirBas);
  void Charge_AideTache();
  void Affiche_Tache_ClicDroit();
  void Affiche_Tache_ClicDroit_TraiteTableau(std::int16_t& Traitement);
  Boolean AuMoinsUneTacheImperative();
  void Recherche_SemaineTypeFlot(Boolean& RemplirBas);

  // ---- Embedding ----
  // The screen services for the question box and the observations dialog.
  void setServices(std::shared_ptr<toolkit::Services> services);
  toolkit::Services& services() const;
  // Where failures that an event procedure lets out go; without one they reach
  // whoever made the gesture.
  void setFailureHandler(toolkit::FailureHandler handler);

  // ---- Child controls, in the order of their getters ----
  toolkit::CheckBox Cac_TouteTache;
  toolkit::Frame Cdr_Soins;
  toolkit::ListBox Lst_CodePos;
  toolkit::ListBox Lst_CodeSelect;
  toolkit::TextBox Txt_Barre1;
  toolkit::TextBox Txt_Duree;
  toolkit::CommandButton Cmd_SupprVelmora;
  toolkit::TextBox Txt_DureeSoin;
  toolkit::CommandButton Cmd_AnnulerVelmora;
  toolkit::CommandButton Cmd_OKVelmora;
  toolkit::ListBox Lst_Selectionne;
  toolkit::ListBox Lst_Possible;
  toolkit::CommandButton Cmd_Select;
  toolkit::CommandButton Cmd_Obs;
  toolkit::Label Label1;
  toolkit::Label Etq_Imperativite;
  toolkit::Label Label6;
  toolkit::Label Label5;
  toolkit::Label Label3;
  toolkit::Label Etq_Sel3;
  toolkit::Label Etq_DureeTotale;
  toolkit::Label Etq_Duree;
  toolkit::Label Etq_Pos1;
  toolkit::Label Etq_Pos2;
  toolkit::Label Etq_Pos3;
  toolkit::Label Etq_Sel2;
  toolkit::Label Etq_Sel1;

  // Every child control in getter order; Cac_TouteTache and Cdr_Soins lie on the
  // control, the others in the frame.
  std::vector<toolkit::Control*> controls();
  bool liesInFrame(const toolkit::Control& control) const;

 private:
  friend class CtrInspector;
  // Calls private procedures directly, for the unit tests of the sorts.
  friend class CtrDriver;

  // ---- Event procedures ----
  void Cac_TouteTache_Click();
  void Cmd_AnnulerVelmora_Click();
  void Cmd_Obs_Click();
  void Cmd_OKVelmora_Click();
  void Cmd_Select_Click();
  void Cmd_SupprVelmora_Click();
  void Supprime_Ligne();
  void Lst_Possible_Click();
  void Lst_Possible_DblClick();
  void Lst_Selectionne_DblClick();
  void Lst_Selectionne_Click();
  void Txt_Duree_Change();
  void Txt_DureeSoin_LostFocus();
  void Txt_DureeSoin_KeyPress(int& KeyAscii);
  void Trie_Possible();
  void Trie_Selectionne();

  // Connects the event procedures to their controls.
  void wireEvents();

  // ---- Private fields ----
  Text W_TypeAct;
  Text W_Code;
  Text W_DateDeb;
  Text W_DateFin;
  Text W_HeureDe;
  Text W_HeureA;
  Text W_Jour;
  RecordRef W_ListeSem;
  RecordRef W_ListeFlot;
  Boolean W_CleLue = kFalse;
  Boolean W_SemType = kFalse;
  Text W_DateCle;
  Boolean W_ClicActif = kFalse;
  Boolean W_ChangeActif = kFalse;
  Boolean W_Flot = kFalse;

  std::shared_ptr<toolkit::Services> services_;
  std::shared_ptr<toolkit::FailureHandler> failureHandler_;
};

// Read access to the private fields, for tests and the command line's reports.
class VELMORA_EXPORT CtrInspector {
 public:
  explicit CtrInspector(const Ctr_VelmoraNew& c) : c_(c) {}
  const Text& W_TypeAct() const { return c_.W_TypeAct; }
  const Text& W_Code() const { return c_.W_Code; }
  const Text& W_DateDeb() const { return c_.W_DateDeb; }
  const Text& W_DateFin() const { return c_.W_DateFin; }
  const Text& W_HeureDe() const { return c_.W_HeureDe; }
  const Text& W_HeureA() const { return c_.W_HeureA; }
  const Text& W_Jour() const { return c_.W_Jour; }
  const RecordRef& W_ListeSem() const { return c_.W_ListeSem; }
  const RecordRef& W_ListeFlot() const { return c_.W_ListeFlot; }
  Boolean W_CleLue() const { return c_.W_CleLue; }
  Boolean W_SemType() const { return c_.W_SemType; }
  const Text& W_DateCle() const { return c_.W_DateCle; }
  Boolean W_ClicActif() const { return c_.W_ClicActif; }
  Boolean W_ChangeActif() const { return c_.W_ChangeActif; }
  Boolean W_Flot() const { return c_.W_Flot; }

 private:
  const Ctr_VelmoraNew& c_;
};

}  // namespace velmora
