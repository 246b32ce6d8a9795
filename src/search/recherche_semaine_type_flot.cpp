// Recherche_SemaineTypeFlot: the floating templates alone, the one search that selects
// from them, by the list of days each template holds in attribute 10.
#include <velmora/control/ctr_velmora_new.h>
#include "control/control_private.h"
#include "control/error_regime.h"
#include "control/read_snapshot.h"
#include "search/item_merge.h"
#include "search/search_fill.h"
#include "search/template_query.h"
#include "search/working_table.h"

namespace velmora {

namespace {

// Days 0 to 5 only: the seventh character of the mask and a digit 6 in the template are
// never looked at. A mask character that is not a number makes the test fail, and a
// failing test takes its true branch.
bool floatingDayMet(const Text& jour, const RecordRef& tpl) {
  bool day = false;
  for (int d = 0; d <= 5; ++d) {
    if (testOrTrue([&] {
          // Both sides are evaluated, as the platform's And does.
          const bool set = Currency::fromText(mid(jour, d + 1, 1)) != Currency();
          const bool held = instr(tpl->r(10), numberText(d)) > 0;
          return set && held;
        })) {
      day = true;
    }
  }
  return day;
}

}  // namespace

void Ctr_VelmoraNew::Recherche_SemaineTypeFlot(Boolean& RemplirBas) {
  const SessionInUse inUse(d_->session);
  const ProcedureSnapshot snapshot;
  // 1. Guard.
  if (d_->W_Code.empty() || d_->W_DateDeb.empty() || d_->W_HeureDe.empty() ||
      d_->W_HeureA.empty() || d_->W_TypeAct.empty() || d_->W_Jour.empty()) {
    return;
  }
  // 2. Times.
  const auto times = search::searchTimes(d_->W_CleLue != kFalse, d_->W_HeureDe, d_->W_HeureA);
  // 3. Floating query; W_ListeSem keeps what it held when the query fails.
  const search::SearchCriteria criteria{d_->W_Code, d_->W_DateDeb, d_->W_DateFin, d_->W_TypeAct};
  long nombre = 0;
  resumeNext([&] {
    d_->W_ListeSem = Variable().TheDatabase->RunQuery(
        search::templateRequest(search::kFloatingTemplates, criteria), u"", nombre);
  });

  // Preparation.
  Variable().R_TableDurees = newRecord();
  if (testOrTrue([&] { return search::defaultIsEmpty(*d_->W_ListeSem); })) {
    W_AfficheTache = kFalse;
    if (d_->W_TypeAct == u"AUTRE") {
      resumeNext([&] { Charge_AideTache(); });
    } else {
      resumeNext([&] { Remplir_Soins(); });
    }
    d_->W_ListeSem = nullptr;
    return;
  }
  Variable().R_TablePossible = newRecord();
  Variable().R_TableSelection = newRecord();
  W_AfficheTache = kTrue;
  W_Total = Currency();
  resumeNext([&] { Txt_Duree.setText(u""); });

  // The walk.
  search::TemplateMerge merge(*Variable().R_TablePossible, *Variable().R_TableSelection,
                              *Variable().R_TableDurees);
  int keys = 0;
  resumeNext([&] { keys = d_->W_ListeSem->DCount(); });
  for (int n = 1; n <= keys; ++n) {
    const Text key = d_->W_ListeSem->r(n);
    resumeNext([&] { Variable().R_SemTypeFlot = Variable().F_SemTypeFlot->ReadRecord(key); });
    bool matched = false;
    const bool day = floatingDayMet(d_->W_Jour, Variable().R_SemTypeFlot);
    if (testOrTrue([&] {
          const bool startsInTime = mid(key, 11, 4) <= times.end;
          const bool endsInTime = Variable().R_SemTypeFlot->r(2) >= times.start;
          return day && startsInTime && endsInTime;
        })) {
      matched = true;
    }
    int items = 0;
    resumeNext([&] { items = Variable().R_SemTypeFlot->DCount(4); });
    for (int v = 1; v <= items; ++v) {
      const NorvikRecord& tpl = *Variable().R_SemTypeFlot;
      merge.mergeFloating({tpl.r(4, v), tpl.r(5, v), tpl.r(8, v)}, matched, d_->W_CleLue != kFalse);
    }
  }

  const search::SearchFill fill{*this, d_->W_TypeAct == u"AUTRE", search::RowEnd::kFloating,
                                [this] { Trie_Possible(); }, [this] { Trie_Selectionne(); }};
  search::fillUpperList(fill);
  if (RemplirBas == kTrue) search::fillLowerHalf(fill);
  d_->W_ListeSem = nullptr;
}

}  // namespace velmora
