// Editing the duration of a selected item: a click makes a row current, a double-click
// opens the edit, OK rewrites the row and the total, Annuler leaves both alone.
#include <algorithm>
#include <string>

#include <velmora/control/ctr_velmora_new.h>
#include "rows/row_format.h"
#include "selection/duration_edit.h"

namespace velmora::selection {

namespace {

bool isDigits(TextView v) {
  return std::all_of(v.begin(), v.end(), [](char16_t c) { return c >= u'0' && c <= u'9'; });
}

// The key filter keeps typing to digits, but a paste or a host's write does not go
// through it. A duration that is not a number of minutes, or that is wider than the
// five characters a row can hold, is refused before anything changes.
void checkEditedDuration(const Text& typed) {
  if (typed.empty()) return;
  if (!isDigits(typed)) {
    throw Failure(errors::kTypeMismatch,
                  "type incompatible : la durée « " + toUtf8(typed) +
                      " » n'est pas un nombre de minutes ; la ligne n'a pas changé");
  }
  if (typed.size() > 5) {
    throw Failure(errors::kOverflow, "dépassement de capacité : la durée « " + toUtf8(typed) +
                                         " » a plus de 5 chiffres ; la ligne n'a pas changé");
  }
}

}  // namespace

void closeDurationEdit(Ctr_VelmoraNew& control) {
  control.Cmd_OKVelmora.setEnabled(false);
  control.Cmd_AnnulerVelmora.setEnabled(false);
  control.Txt_DureeSoin.setEnabled(false);
  control.Lst_Selectionne.setListIndex(-1);
  control.Lst_CodeSelect.setListIndex(-1);
  control.W_DoubleClic = kFalse;
  control.Lst_Selectionne.setEnabled(true);
}

}  // namespace velmora::selection

namespace velmora {

void Ctr_VelmoraNew::Lst_Selectionne_Click() {
  const bool hasRow = Lst_Selectionne.ListIndex() != -1;
  Cmd_Obs.setEnabled(hasRow);
  Cmd_SupprVelmora.setEnabled(hasRow);
  Lst_CodeSelect.setListIndex(Lst_Selectionne.ListIndex());
}

void Ctr_VelmoraNew::Lst_Selectionne_DblClick() {
  // Without a current row there is nothing to edit, and OK would have no row to write.
  if (Lst_Selectionne.ListIndex() == -1) return;
  Txt_DureeSoin.setText(rows::rowDuration(Lst_Selectionne.List(Lst_Selectionne.ListIndex())));
  Cmd_OKVelmora.setEnabled(true);
  Cmd_AnnulerVelmora.setEnabled(true);
  Lst_Selectionne.setEnabled(false);
  Txt_DureeSoin.setEnabled(true);
  W_DoubleClic = kTrue;
}

void Ctr_VelmoraNew::Cmd_OKVelmora_Click() {
  // Without a current row (the host emptied the selection during the edit) the steps
  // run as written until the row's rewrite fails.
  selection::checkEditedDuration(Txt_DureeSoin.getText());
  const int current = Lst_Selectionne.ListIndex();

  // A total never shown counts as 0.
  if (Txt_Duree.getText().empty()) Txt_Duree.setText(u"0");
  // The old duration comes off the total, the new one goes on.
  const Text old = rows::rowDuration(Lst_Selectionne.List(current));
  Currency v = rows::readBack(Txt_Duree.getText());
  if (!old.empty()) v -= Currency::fromText(old);
  if (!Txt_DureeSoin.getText().empty()) v += Currency::fromText(Txt_DureeSoin.getText());
  Txt_Duree.setText(v.toText());
  // The row keeps positions 1-79, the marker with them, and takes the new duration.
  const Text t = trimBlanks(Txt_DureeSoin.getText());
  Lst_Selectionne.setList(current,
                          padRight(left(Lst_Selectionne.List(current), 79), 79) + padLeft(t, 6));
  // The edit box empties, the total is read back from what is shown, the edit ends.
  Txt_DureeSoin.setText(u"");
  W_Total = rows::readBack(Txt_Duree.getText());
  selection::closeDurationEdit(*this);
  Etq_Imperativite.setVisible(AuMoinsUneTacheImperative() != kFalse);
}

void Ctr_VelmoraNew::Cmd_AnnulerVelmora_Click() {
  Txt_DureeSoin.setText(u"");
  selection::closeDurationEdit(*this);
}

}  // namespace velmora
