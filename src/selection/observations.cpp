// Cmd_Obs_Click: the observation of the current selected row, edited in the dialog at
// N_LigneObs of R_Obs. The row's marker at position 79 follows whether the text went
// empty or not.
#include <velmora/control/ctr_velmora_new.h>
#include <velmora/control/frm_ajout_obs_tache.h>
#include "control/session_state.h"

namespace velmora::selection {

namespace {

Text withMarker(TextView row, TextView marker) {
  return left(row, 78) + Text(marker) + mid(row, 81, 5);
}

}  // namespace

}  // namespace velmora::selection

namespace velmora {

void Ctr_VelmoraNew::Cmd_Obs_Click() {
  // The usual pointer, and the dialog loaded.
  services().setMousePointer(0);
  Frm_AjoutObsTache& form = DefaultFrm_AjoutObsTache();
  form.Load();
  // The columns as they stand, blanks and all.
  const Text row = Lst_Selectionne.List(Lst_Selectionne.ListIndex());
  form.Txt_Type.setText(mid(row, 1, 25));
  form.Txt_Groupe.setText(mid(row, 27, 25));
  form.Txt_Tache.setText(mid(row, 53, 25));
  // The dialog edits the observation of the current row, kept before it opens.
  Variable().N_LigneObs = Lst_Selectionne.ListIndex() + 1;
  form.Txt_Obs.setText(Variable().R_Obs->r(Variable().N_LigneObs));
  const Text before = Variable().R_Obs->r(Variable().N_LigneObs);
  services().ShowModal(form);
  // The marker follows the observation: exact comparison with "", a blank is one.
  const Text after = Variable().R_Obs->r(Variable().N_LigneObs);
  const int current = Lst_Selectionne.ListIndex();
  if (after.empty() && !before.empty()) {
    Lst_Selectionne.setList(current, selection::withMarker(Lst_Selectionne.List(current), u"  "));
  } else if (!after.empty() && before.empty()) {
    Lst_Selectionne.setList(current, selection::withMarker(Lst_Selectionne.List(current), u"X "));
  }
}

}  // namespace velmora
