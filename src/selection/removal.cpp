// Taking the current row out of the selection, after a question to the planner. The
// row, its code and its observation go together; Lst_Possible keeps the item.
#include <velmora/control/ctr_velmora_new.h>
#include "control/control_private.h"
#include "control/session_state.h"
#include "rows/row_format.h"
#include "selection/duration_edit.h"

namespace velmora::selection {

namespace {
constexpr std::u16string_view kQuestionTitle = u"Message TALVERANE";
constexpr std::u16string_view kQuestionAct = u"Etes-vous sûr de vouloir supprimer cet acte ?";
constexpr std::u16string_view kQuestionTask = u"Etes-vous sûr de vouloir supprimer cette tâche ?";
}  // namespace

}  // namespace velmora::selection

namespace velmora {

void Ctr_VelmoraNew::Cmd_SupprVelmora_Click() {
  // The question comes whatever the state: after the host's Vider_Tache the button is
  // still enabled without a row, and a removal then fails where it reaches the row.
  const TextView question =
      d_->W_TypeAct == u"SSIAD" ? selection::kQuestionAct : selection::kQuestionTask;
  const int answer =
      services().MsgBox(question, toolkit::kStyleYesNoQuestion, selection::kQuestionTitle);
  if (answer == toolkit::kMsgBoxYes) Supprime_Ligne();
  Etq_Imperativite.setVisible(AuMoinsUneTacheImperative() != kFalse);
}

void Ctr_VelmoraNew::Supprime_Ligne() {
  // The row's duration, 0 when it has none, comes off the total.
  const Text d = rows::rowDuration(Lst_Selectionne.List(Lst_Selectionne.ListIndex()));
  const Currency v = d.empty() ? Currency() : Currency::fromText(d);
  if (Txt_Duree.getText().empty()) Txt_Duree.setText(u"0");
  if (v != Currency()) {
    Txt_Duree.setText((rows::readBack(Txt_Duree.getText()) - v).toText());
    W_Total = rows::readBack(Txt_Duree.getText());
  }
  // The observation, then the code, then the row, which ends the current row.
  Variable().R_Obs->Delete(Lst_Selectionne.ListIndex() + 1);
  Lst_CodeSelect.RemoveItem(Lst_Selectionne.ListIndex());
  Lst_Selectionne.RemoveItem(Lst_Selectionne.ListIndex());
  // An edit under way ends with its row, and nothing is left to remove or annotate.
  Txt_DureeSoin.setText(u"");
  Cmd_SupprVelmora.setEnabled(false);
  Cmd_Obs.setEnabled(false);
  selection::closeDurationEdit(*this);
}

}  // namespace velmora
