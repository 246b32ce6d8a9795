// Affiche_Tache_ClicDroit: what a full key holds. The selection shows the items of the
// record that Init read with the key; the proposal shows, for home help, the client's
// latest task list at the key's date and, for care, the care-act catalogue.
#include <velmora/control/ctr_velmora_new.h>
#include "control/control_private.h"
#include "control/error_regime.h"
#include "control/read_snapshot.h"
#include "rows/item_row.h"
#include "tables/working_table.h"

namespace velmora::persistence {

namespace {

// The source of the second pass: the record Init read, and the attributes of its codes,
// durations and observations.
struct StoredItems {
  RecordRef record;
  int codes;
  int durations;
  int observations;
};

}  // namespace

}  // namespace velmora::persistence

namespace velmora {

void Ctr_VelmoraNew::Affiche_Tache_ClicDroit() {
  const SessionInUse inUse(d_->session);
  const ProcedureSnapshot snapshot;
  // Both lists, the selection table and the total start empty.
  Lst_Selectionne.Clear();
  Etq_Imperativite.setVisible(false);
  Lst_CodeSelect.Clear();
  Variable().R_TableSelection = newRecord();
  W_Total = Currency();
  Lst_Possible.Clear();
  Lst_CodePos.Clear();
  // Home help: the client's list valid at the key's date, the latest first.
  if (d_->W_TypeAct == u"AUTRE") {
    NorvikRecord request;
    request.set(1, u"SELECT AIDEDETAILTACHE AVEC 0 = \"" + d_->W_Code + u"]\" AND AVEC 0 <= \"[" +
                       d_->W_DateCle + u"\" PAR-DECR 0");
    request.set(2, u"AIDEDETAILTACHE");
    request.set(3, u"0");
    long nombre = 0;
    const RecordRef answer = Variable().TheDatabase->RunQuery(request.r(), u"", nombre);
    if (!tables::defaultIsEmpty(*answer)) {
      Variable().R_TableDurees = newRecord();
      Variable().R_AideDetail = Variable().F_AideDetail->ReadRecord(answer->r(1));
      NorvikRecord& table = *Variable().R_TableSelection;
      NorvikRecord& durees = *Variable().R_TableDurees;
      const NorvikRecord& list = *Variable().R_AideDetail;
      int j = 0;
      const int count = list.DCount(1);
      for (int k = 1; k <= count; ++k) {
        const Text& code = list.r(1, k);
        if (code.empty() || code == u"0") continue;  // passed over without a gap
        ++j;
        table.set(j, 1, code);
        table.set(j, 2, list.r(2, k));
        table.set(j, 3, u"");
        durees.set(durees.DCount() + 1, 1, code);
        durees.set(durees.DCount(), 2, list.r(2, k));
      }
    }
  } else {
    // Care: ticking the switch fills the proposal with the care-act catalogue.
    Cac_TouteTache.setValue(1);
    Cac_TouteTache.setEnabled(false);
  }
  // The first pass shows the client's list in the proposal.
  std::int16_t traitement = 1;
  Affiche_Tache_ClicDroit_TraiteTableau(traitement);
  // The selection and its table start empty again for the second pass.
  Lst_Selectionne.Clear();
  Etq_Imperativite.setVisible(false);
  Lst_CodeSelect.Clear();
  Variable().R_TableSelection = newRecord();
  // The items of the record Init read; every value is copied, also an empty one.
  using persistence::StoredItems;
  const StoredItems source =
      d_->W_SemType == kFalse ? StoredItems{Variable().R_DetailsInterv, 7, 8, 9}
      : d_->W_Flot == kFalse  ? StoredItems{Variable().R_SemType, 4, 5, 8}
                              : StoredItems{Variable().R_SemTypeFlot, 4, 5, 8};
  const NorvikRecord& stored = *source.record;
  NorvikRecord& table = *Variable().R_TableSelection;
  const int count = stored.DCount(source.codes);
  for (int k = 1; k <= count; ++k) {
    table.set(k, 1, stored.r(source.codes, k));
    table.set(k, 2, stored.r(source.durations, k));
    table.set(k, 3, stored.r(source.observations, k));
  }
  // The second pass shows them in the selection.
  traitement = 2;
  Affiche_Tache_ClicDroit_TraiteTableau(traitement);
}

void Ctr_VelmoraNew::Affiche_Tache_ClicDroit_TraiteTableau(std::int16_t& Traitement) {
  const SessionInUse inUse(d_->session);
  const ProcedureSnapshot snapshot;
  const bool autre = d_->W_TypeAct == u"AUTRE";
  toolkit::ListBox& rowsList = Traitement == 1 ? Lst_Possible : Lst_Selectionne;
  toolkit::ListBox& codes = Traitement == 1 ? Lst_CodePos : Lst_CodeSelect;
  W_Total = Currency();
  // Each item of the table whose records are found becomes a row, in table order.
  int count = 0;
  resumeNext([&] { count = Variable().R_TableSelection->DCount(); });
  for (int i = 1; i <= count; ++i) {
    const auto item = tables::tableItem(*Variable().R_TableSelection, i);
    if (!rows::readItemRecords(autre, item.code)) continue;
    rows::addSelectionRow({rowsList, codes}, autre, item.code, !item.observation.empty(),
                          item.duration, rows::OnFailure::kContinue);
    // The observation goes with the row's own number, so that a left-out item does not
    // shift the observations of the rows behind it.
    resumeNext([&] { Variable().R_Obs->set(rowsList.ListCount(), item.observation); });
    if (!item.duration.empty()) {
      resumeNext([&] { W_Total += Currency::fromText(item.duration); });
    }
  }
  // The list just filled is sorted.
  if (Traitement == 1) {
    resumeNext([&] { Trie_Possible(); });
  } else {
    resumeNext([&] { Trie_Selectionne(); });
  }
  // The total of the selection, shown in NhMM by the text box; not read back.
  if (Traitement != 1) resumeNext([&] { Txt_Duree.setText(W_Total.toText()); });
}

}  // namespace velmora
