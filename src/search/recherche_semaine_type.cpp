// Recherche_SemaineType: the weekly templates of the client, fixed and floating, merged
// into the proposal; the fixed templates whose weekday and time slot meet the
// intervention also fill the selection.
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

constexpr std::size_t kFixedKeyLength = 17;

// Character D + 1 of the mask set, and the key's day character (11) equal to D, for some
// D from 0 to 6. A character that is not a number makes the test fail, and a failing
// test takes its true branch.
bool fixedDayMet(const Text& jour, const Text& key) {
  bool day = false;
  for (int d = 0; d <= 6; ++d) {
    if (testOrTrue([&] {
          // Both sides are evaluated, as the platform's And does.
          const bool set = Currency::fromText(mid(jour, d + 1, 1)) != Currency();
          const bool same = Currency::fromText(mid(key, 11, 1)) == Currency::whole(d);
          return set && same;
        })) {
      day = true;
    }
  }
  return day;
}

}  // namespace

void Ctr_VelmoraNew::Recherche_SemaineType(Boolean& RemplirBas) {
  const SessionInUse inUse(d_->session);
  const ProcedureSnapshot snapshot;
  // 1. Guard.
  if (d_->W_Code.empty() || d_->W_DateDeb.empty() || d_->W_HeureDe.empty() ||
      d_->W_HeureA.empty() || d_->W_TypeAct.empty() || d_->W_Jour.empty()) {
    return;
  }
  // 2. Fresh key lists.
  d_->W_ListeSem = newRecord();
  d_->W_ListeFlot = newRecord();
  const search::SearchCriteria criteria{d_->W_Code, d_->W_DateDeb, d_->W_DateFin, d_->W_TypeAct};
  long nombre = 0;
  // 3. Floating query.
  resumeNext([&] {
    d_->W_ListeFlot = Variable().TheDatabase->RunQuery(
        search::templateRequest(search::kFloatingTemplates, criteria), u"", nombre);
  });
  // 4. Times.
  const auto times = search::searchTimes(d_->W_CleLue != kFalse, d_->W_HeureDe, d_->W_HeureA);
  // 5. Fixed query.
  resumeNext([&] {
    d_->W_ListeSem = Variable().TheDatabase->RunQuery(
        search::templateRequest(search::kFixedTemplates, criteria), u"", nombre);
  });

  // Fixed keys first, then the floating ones, each in the store's order.
  int floating = 0;
  resumeNext([&] { floating = d_->W_ListeFlot->DCount(); });
  for (int i = 1; i <= floating; ++i) {
    resumeNext([&] { d_->W_ListeSem->set(d_->W_ListeSem->DCount() + 1, d_->W_ListeFlot->r(i)); });
  }

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
    const bool fixedKey = key.size() == kFixedKeyLength;
    resumeNext([&] {
      Variable().R_SemType =
          (fixedKey ? Variable().F_SemType : Variable().F_SemTypeFlot)->ReadRecord(key);
    });
    bool matched = false;
    if (fixedKey) {
      const bool day = fixedDayMet(d_->W_Jour, key);
      if (testOrTrue([&] {
            const bool startsInTime = mid(key, 12, 4) <= times.end;
            const bool endsInTime = Variable().R_SemType->r(2) >= times.start;
            return day && startsInTime && endsInTime;
          })) {
        matched = true;
      }
    }
    int items = 0;
    resumeNext([&] { items = Variable().R_SemType->DCount(4); });
    for (int v = 1; v <= items; ++v) {
      const NorvikRecord& tpl = *Variable().R_SemType;
      merge.mergeWeekly({tpl.r(4, v), tpl.r(5, v), tpl.r(8, v)}, fixedKey, matched,
                        d_->W_CleLue != kFalse);
    }
  }

  // The fill, then the key list goes.
  const search::SearchFill fill{*this, d_->W_TypeAct == u"AUTRE", search::RowEnd::kWeekly,
                                [this] { Trie_Possible(); }, [this] { Trie_Selectionne(); }};
  search::fillUpperList(fill);
  if (RemplirBas == kTrue) search::fillLowerHalf(fill);
  d_->W_ListeSem = nullptr;
}

}  // namespace velmora
