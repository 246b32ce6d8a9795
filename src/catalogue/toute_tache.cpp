// Cac_TouteTache_Click: the show-all switch. Ticked, it shows the whole catalogue, with
// the durations known for the client where it has them; unticked, it runs again what
// filled the proposals in the first place. The selection is not touched here.
#include <optional>

#include <velmora/control/ctr_velmora_new.h>
#include "catalogue/task_catalogue.h"
#include "control/control_private.h"
#include "control/error_regime.h"
#include "rows/row_format.h"
#include "tables/working_table.h"

namespace velmora::catalogue {

namespace {

struct TaskAnswers {
  RecordRef types;
  RecordRef groups;
  RecordRef tasks;
};

TaskAnswers runCatalogueQueries() {
  long nombre = 0;
  NorvikRecord request;
  request.set(1, u"SSELECT TYPETACHE PAR 1");
  request.set(2, u"TYPETACHE");
  request.set(3, u"0 1");
  TaskAnswers answers;
  answers.types = Variable().TheDatabase->RunQuery(request.r(), u"", nombre);
  request.set(u"");
  request.set(1, u"SSELECT GROUPETACHE PAR 2 PAR 1");
  request.set(2, u"GROUPETACHE");
  request.set(3, u"0 1 2");
  answers.groups = Variable().TheDatabase->RunQuery(request.r(), u"", nombre);
  request.set(u"");
  request.set(1, u"SSELECT TACHE PAR 2 PAR 1");
  request.set(2, u"TACHE");
  request.set(3, u"0 1 2 5");
  answers.tasks = Variable().TheDatabase->RunQuery(request.r(), u"", nombre);
  return answers;
}

// The durations of R_TableDurees, or nothing when the table does not exist yet.
std::optional<catalogue::DurationOverrides> knownDurations() {
  if (Variable().R_TableDurees.empty()) return std::nullopt;
  return catalogue::DurationOverrides(*Variable().R_TableDurees);
}

// The duration override of the row just added: positions 81-85 take the last duration
// of the client's table for that code, under errors ignored statement by statement.
void applyOverride(toolkit::ListBox& list, const std::optional<catalogue::DurationOverrides>& known,
                   const Text& code) {
  Err().Clear();
  if (!known) {
    Err().Number = errors::kObjectNotSet;
    return;
  }
  const auto* found = known->find(code);
  if (found == nullptr) return;
  const int last = list.ListCount() - 1;
  if (found->duration) {
    list.setList(last, catalogue::withOverriddenDuration(list.List(last), *found->duration));
  }
  if (found->anyTooWide) {
    resumeNext([&] { (void)catalogue::withOverriddenDuration(list.List(last), u"000000"); });
  }
}

}  // namespace

}  // namespace velmora::catalogue

namespace velmora {

void Ctr_VelmoraNew::Cac_TouteTache_Click() {
  // While Init resets the switch, its click does nothing.
  if (d_->W_ClicActif == kFalse) return;
  // The proposal starts empty; the selection is not touched.
  Lst_Possible.Clear();
  Lst_CodePos.Clear();
  // Ticked for home help: the whole task catalogue.
  if (Cac_TouteTache.Value() == 1 && d_->W_TypeAct == u"AUTRE") {
    const auto answers = catalogue::runCatalogueQueries();
    const NorvikRecord& T = *answers.types;
    const NorvikRecord& G = *answers.groups;
    const NorvikRecord& K = *answers.tasks;
    if (!tables::defaultIsEmpty(T)) {
      const auto known = catalogue::knownDurations();
      for (const auto& at : catalogue::taskCatalogueWalk(T, G, K)) {
        const Text& code = K.r(at.task, 1);
        Text row;
        row.reserve(85);
        rows::appendTextColumn(row, T.r(at.type, 1));
        rows::appendTextColumn(row, G.r(at.group, 1));
        rows::appendTextColumn(row, code);
        rows::appendProposalDuration(row, K.r(at.task, 4));
        Lst_Possible.AddItem(row, rows::wholeColumns(T.r(at.type, 1), G.r(at.group, 1), code));
        Lst_CodePos.AddItem(code);
        catalogue::applyOverride(Lst_Possible, known, code);
      }
      Trie_Possible();
    }
  }
  // Ticked for care: the care-act catalogue.
  if (Cac_TouteTache.Value() == 1 && d_->W_TypeAct != u"AUTRE") Remplir_Soins();
  // Unticked: back to what filled the proposals.
  if (Cac_TouteTache.Value() != 1) {
    if (d_->W_CleLue != kFalse) {
      Affiche_Tache_ClicDroit();
    } else if (d_->W_Flot != kFalse) {
      Boolean remplirBas = kFalse;
      Recherche_SemaineTypeFlot(remplirBas);
    } else {
      Boolean remplirBas = kFalse;
      Recherche_SemaineType(remplirBas);
    }
  }
}

}  // namespace velmora
