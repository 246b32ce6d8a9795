// The way out of a selection: MAJ_Enr hands it to the host as one record; Vider_Tache
// and Vider_liste empty the control between items and at the end.
#include <velmora/control/ctr_velmora_new.h>
#include "control/control_private.h"
#include "control/error_regime.h"
#include "rows/row_format.h"

namespace velmora::persistence {

namespace {

// The format "000000": a numeric code zero-filled to six digits; any other text as is.
Text sixDigits(const Text& code) {
  if (!isDecimalNumber(trimBlanks(code))) return code;
  return zeroPadded(*parseNumber(code), 6);
}

}  // namespace

}  // namespace velmora::persistence

namespace velmora {

void Ctr_VelmoraNew::MAJ_Enr() {
  const SessionInUse inUse(d_->session);
  W_Enr = newRecord();
  for (int i = 0; i < Lst_Selectionne.ListCount(); ++i) {
    const int n = i + 1;
    const Text& code = Lst_CodeSelect.List(i);
    W_Enr->set(n, 1, d_->W_TypeAct == u"SSIAD" ? persistence::sixDigits(code) : code);
    W_Enr->set(n, 2, rows::rowDuration(Lst_Selectionne.List(i)));
    W_Enr->set(n, 3, Variable().R_Obs->r(n));
  }
}

void Ctr_VelmoraNew::Vider_Tache() {
  const SessionInUse inUse(d_->session);
  Lst_Selectionne.Clear();
  Etq_Imperativite.setVisible(false);
  Lst_CodeSelect.Clear();
  Txt_Duree.setText(u"");
  resumeNext([] { Variable().R_Obs->set(u""); });
}

void Ctr_VelmoraNew::Vider_liste() {
  const SessionInUse inUse(d_->session);
  Lst_Possible.Clear();
  Lst_Selectionne.Clear();
  Etq_Imperativite.setVisible(false);
  Lst_CodeSelect.Clear();
  Lst_CodePos.Clear();
  Txt_Duree.setText(u"");
  W_Enr = nullptr;
  Procedure().Ferme_Fichiers();
}

}  // namespace velmora
