// Taking the current row out of the selection, after a question to the planner. The
// row, its code and its observation go together; Lst_Possible keeps the item.
#include <velmora/control/ctr_velmora_new.h>
#include "control/control_private.h"
#include "control/session_state.h"
#include "selection/total.h"

namespace velmora {

namespace {
constexpr std::u16string_view kQuestionTitle = u"Message TALVERANE";
constexpr std::u16string_view kQuestionAct = u"Etes-vous sûr de vouloir supprimer cet acte ?";
constexpr std::u16string_view kQuestionTask = u"Etes-vous sûr de vouloir supprimer cette tâche ?";
}  // namespace

void Ctr_VelmoraNew::Cmd_SupprVelmora_Click() {
  // The question comes whatever the state: after the host's Vider_Tache the button is
  // still enabled without a row, and a removal then fails where it reaches the row.
  const TextView question = d_->W_TypeAct == u"SSIAD" ? kQuestionAct : kQuestionTask;
  const int answer = services().MsgBox(question, toolkit::kStyleYesNoQuestion, kQuestionTitle);
  if (answer == toolkit::kMsgBoxYes) Supprime_Ligne();
  Etq_Imperativite.setVisible(AuMoinsUneTacheImperative() != kFalse);
}

void Ctr_VelmoraNew::Supprime_Ligne() {
  // 1. The row's duration, 0 when it has none.
  const Text d = rows::rowDuration(Lst_Selectionne.List(Lst_Selectionne.ListIndex()));
  const Currency v = d.empty() ? Currency() : Currency::fromText(d);
  // 2-3.
  if (Txt_Duree.getText().empty()) Txt_Duree.setText(u"0");
  if (v != Currency()) {
    Txt_Duree.setText((rows::readBack(Txt_Duree.getText()) - v).toText());
    W_Total = rows::readBack(Txt_Duree.getText());
  }
  // 4-6. The observation, then the code, then the row, which ends the current row.
  Variable().R_Obs->Delete(Lst_Selectionne.ListIndex() + 1);
  Lst_CodeSelect.RemoveItem(Lst_Selectionne.ListIndex());
  Lst_Selectionne.RemoveItem(Lst_Selectionne.ListIndex());
  // 7-8. An edit under way ends with its row.
  Txt_DureeSoin.setText(u"");
  Cmd_SupprVelmora.setEnabled(false);
  Cmd_Obs.setEnabled(false);
  Cmd_OKVelmora.setEnabled(false);
  Cmd_AnnulerVelmora.setEnabled(false);
  Txt_DureeSoin.setEnabled(false);
  // 9-11.
  Lst_Selectionne.setListIndex(-1);
  Lst_CodeSelect.setListIndex(-1);
  W_DoubleClic = kFalse;
  Lst_Selectionne.setEnabled(true);
}

}  // namespace velmora
