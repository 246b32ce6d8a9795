// Editing the duration of a selected item: a click makes a row current, a double-click
// opens the edit, OK rewrites the row and the total, Annuler leaves both alone.
#include <algorithm>
#include <string>

#include <velmora/control/ctr_velmora_new.h>
#include "selection/total.h"

namespace velmora {

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
    throw Failure(errors::kTypeMismatch, "type mismatch: the duration '" + toUtf8(typed) +
                                             "' is not a number of minutes; the row is unchanged");
  }
  if (typed.size() > 5) {
    throw Failure(errors::kOverflow, "overflow: the duration '" + toUtf8(typed) +
                                         "' has more than 5 digits; the row is unchanged");
  }
}

void checkCurrentRow(const toolkit::ListBox& selection, const char* what) {
  if (selection.ListIndex() == -1) {
    throw Failure(errors::kInvalidCall,
                  std::string("invalid call: ") + what + " needs a current selected row");
  }
}

}  // namespace

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
  checkCurrentRow(Lst_Selectionne, "OK");
  checkEditedDuration(Txt_DureeSoin.getText());
  const int current = Lst_Selectionne.ListIndex();

  // 1.
  if (Txt_Duree.getText().empty()) Txt_Duree.setText(u"0");
  // 2. The old duration comes off the total.
  const Text old = rows::rowDuration(Lst_Selectionne.List(current));
  Currency v = rows::readBack(Txt_Duree.getText());
  if (!old.empty()) v -= Currency::fromText(old);
  // 3. The new one goes on.
  if (!Txt_DureeSoin.getText().empty()) v += Currency::fromText(Txt_DureeSoin.getText());
  // 4.
  Txt_Duree.setText(v.toText());
  // 5. Positions 1-79 stay, the marker with them.
  const Text t = trimBlanks(Txt_DureeSoin.getText());
  Lst_Selectionne.setList(current,
                          padRight(left(Lst_Selectionne.List(current), 79), 79) + padLeft(t, 6));
  // 6-7.
  Txt_DureeSoin.setText(u"");
  W_Total = rows::readBack(Txt_Duree.getText());
  // 8.
  Cmd_OKVelmora.setEnabled(false);
  Cmd_AnnulerVelmora.setEnabled(false);
  Txt_DureeSoin.setEnabled(false);
  // 9. The Click of Lst_Selectionne disables Cmd_Obs and Cmd_SupprVelmora.
  Lst_Selectionne.setListIndex(-1);
  Lst_CodeSelect.setListIndex(-1);
  // 10-12.
  W_DoubleClic = kFalse;
  Lst_Selectionne.setEnabled(true);
  Etq_Imperativite.setVisible(AuMoinsUneTacheImperative() != kFalse);
}

void Ctr_VelmoraNew::Cmd_AnnulerVelmora_Click() {
  Txt_DureeSoin.setText(u"");
  Cmd_OKVelmora.setEnabled(false);
  Cmd_AnnulerVelmora.setEnabled(false);
  Txt_DureeSoin.setEnabled(false);
  Lst_Selectionne.setListIndex(-1);
  Lst_CodeSelect.setListIndex(-1);
  W_DoubleClic = kFalse;
  Lst_Selectionne.setEnabled(true);
}

}  // namespace velmora
