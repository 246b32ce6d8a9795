// Ctr_VelmoraNew: the planning control that a host embeds.
//
// The control proposes the care acts or home-help tasks of one intervention (Lst_Possible)
// and keeps the planner's selection with its durations and observations (Lst_Selectionne,
// W_Total). A host sets TheDatabase (and TheClient), calls Init with the intervention, lets
// the planner work, then calls MAJ_Enr and reads W_Enr and W_Total. The control raises no
// event: the host reads the public variables after a call or after the planner's work.
//
// Shared state: the connection, the thirteen files opened from it, their cursors, the
// working tables and the observations live in the control's Session, not in the control.
// Controls made without a session share Session::processDefault(); a Vider_liste on any of
// them releases the files and the connection for all of them. A host that needs controls
// apart (two stores, several threads) gives each its own Session.
//
// Ownership: TheDatabase hands the connection to the session, which keeps it until
// Vider_liste (or the session's end). The session must outlive the control.
//
// Threads: one thread at a time per session; the control and its children belong to the
// thread that uses them.
//
// Failures: a procedure that lets a failure out throws velmora::Failure; its number()
// is one of errors:: (errors::kRecordNotFound, errors::kObjectNotSet, ...), tested by
// number or with the predicates of Failure. The procedures that run under continue on
// error keep the number of the last failure in the session's error object instead.
//
// Its member functions live in the folder of the job they do:
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
#include <velmora/control/session.h>
#include <velmora/store/database.h>
#include <velmora/store/record.h>
#include <velmora/toolkit/services.h>
#include <velmora/toolkit/widgets.h>

namespace velmora {

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
  // A control on the process's default session.
  Ctr_VelmoraNew();
  // A control on the host's own session, which must outlive it.
  explicit Ctr_VelmoraNew(Session& session);
  ~Ctr_VelmoraNew();
  Ctr_VelmoraNew(const Ctr_VelmoraNew&) = delete;
  Ctr_VelmoraNew& operator=(const Ctr_VelmoraNew&) = delete;

  // Client area of the control, in twips.
  static constexpr int kWidth = 9960;
  static constexpr int kHeight = 6000;

  // ---- Public variables, read and written by the host ----
  // True when the last template search found a template, False when it filled the
  // catalogue instead.
  Boolean W_AfficheTache = kFalse;
  // Kept for the host; the control neither reads nor writes it.
  Boolean W_Imperatif = kFalse;
  // The total duration of the selection, in minutes.
  Currency W_Total;
  // The selection as MAJ_Enr builds it: attribute i is row i, values code, duration,
  // observation.
  RecordRef W_Enr;
  // A stored selection, of W_Enr's shape, for Affiche to show.
  RecordRef W_Aff;
  // Kept for the host; the control neither reads nor writes it.
  Text W_DureeInterv;
  // True while a selected row is open for editing after a double click.
  Boolean W_DoubleClic = kFalse;

  // ---- Write-only properties ----
  // Keeps the client in the session; the control makes no call on it.
  void TheClient(const ClientRef& vNewValue);
  // Keeps the connection in the session: every file Init opens and every query goes
  // through it. Required before Init, and again after Vider_liste.
  void TheDatabase(const DatabaseRef& vNewValue);

  // ---- Public procedures ----
  // Opens the thirteen files through the session's connection, resets the lists, the
  // total and W_AfficheTache/W_DoubleClic, decodes Code and fills the lists. Code is a
  // bare client code (5 characters, see checkClientCode; the criteria come apart) or a
  // full key of an intervention detail or a template ("SEMTYPE", "FLOT"); Init gives the
  // caller Code without a bare "FLOT" and, for a key, DateDeb empty. Runs under continue
  // on error: a file that fails to open or a key without a record (errors::kRecordNotFound)
  // leaves the lists as far as they got. A store that cannot be read at all (errors::kBusy,
  // errors::kDatabase) empties the lists and throws before anything else changes.
  void Init(Text& TypeAct, Text& Code, Text& DateDeb, Text& DateFin, Text& HeureDe, Text& HeureA,
            Text& Jour);
  void Init(InitArguments& a) {
    Init(a.TypeAct, a.Code, a.DateDeb, a.DateFin, a.HeureDe, a.HeureA, a.Jour);
  }
  // Ends the use of the control: empties both lists and the total text, drops W_Enr and
  // releases the session's cursors, files, working tables and connection, for every
  // control on the session. Lets failures out.
  void Vider_liste();
  // Fills Lst_Possible from the care-act catalogue; under continue on error.
  void Remplir_Soins();
  // Builds a new W_Enr from the selection (code, duration, observation per row). Lets
  // failures out.
  void MAJ_Enr();
  // Empties the selection, the total text and the observations; the files stay open.
  // Lets failures out, except on the observations.
  void Vider_Tache();
  // Appends the selection stored in W_Aff to the selection lists and the total. An item
  // whose task or group has no record (errors::kRecordNotFound) is left out; any other
  // failure is thrown.
  void Affiche();
  // Searches the weekly templates of Init's criteria and fills Lst_Possible (and the
  // selection too when RemplirBas is True); without a template, the catalogue. Sets
  // W_AfficheTache. Under continue on error.
  void Recherche_SemaineType(Boolean& RemplirBas);
  // Fills Lst_Possible from the client's task list (W_Code); under continue on error.
  void Charge_AideTache();
  // Shows what the full key Init read holds: its proposal and its selection. Lets
  // failures out.
  void Affiche_Tache_ClicDroit();
  // Fills Lst_Possible (Traitement 1) or the selection (2) from the session's working
  // table; under continue on error.
  void Affiche_Tache_ClicDroit_TraiteTableau(std::int16_t& Traitement);
  // True when a selected home-help task is marked mandatory in the task file, read afresh.
  // A selected code without its task counts as not mandatory; any other failure is
  // thrown (errors::kObjectNotSet before Init has opened the files).
  Boolean AuMoinsUneTacheImperative();
  // Recherche_SemaineType on the floating templates.
  void Recherche_SemaineTypeFlot(Boolean& RemplirBas);

  // ---- Embedding ----
  // The screen services for the question box and the observations dialog; a gesture
  // that needs them without them fails with errors::kObjectNotSet.
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

  // The control's private fields and its session, defined inside the library only.
  class Private;

 private:
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

  std::unique_ptr<Private> const d_;
};

}  // namespace velmora
