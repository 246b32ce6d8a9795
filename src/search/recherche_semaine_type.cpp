// Recherche_SemaineType: the weekly templates of the client, fixed and floating, merged
// into the proposal; the fixed templates whose weekday and time slot meet the
// intervention also fill the selection.
#include "control/ctr_velmora_new.h"
#include "control/error_regime.h"
#include "control/read_snapshot.h"
#include "search/item_merge.h"
#include "search/search_fill.h"
#include "search/template_query.h"
#include "search/working_table.h"

namespace velmora {

using namespace Variable;

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
  const ProcedureSnapshot snapshot;
  // 1. Guard.
  if (W_Code.empty() || W_DateDeb.empty() || W_HeureDe.empty() || W_HeureA.empty() ||
      W_TypeAct.empty() || W_Jour.empty()) {
    return;
  }
  // 2. Fresh key lists.
  W_ListeSem = newRecord();
  W_ListeFlot = newRecord();
  const search::SearchCriteria criteria{W_Code, W_DateDeb, W_DateFin, W_TypeAct};
  long nombre = 0;
  // 3. Floating query.
  resumeNext([&] {
    W_ListeFlot = Variable::TheDatabase->RunQuery(
        search::templateRequest(search::kFloatingTemplates, criteria), u"", nombre);
  });
  // 4. Times.
  const auto times = search::searchTimes(W_CleLue != kFalse, W_HeureDe, W_HeureA);
  // 5. Fixed query.
  resumeNext([&] {
    W_ListeSem = Variable::TheDatabase->RunQuery(
        search::templateRequest(search::kFixedTemplates, criteria), u"", nombre);
  });

  // Fixed keys first, then the floating ones, each in the store's order.
  int floating = 0;
  resumeNext([&] { floating = W_ListeFlot->DCount(); });
  for (int i = 1; i <= floating; ++i) {
    resumeNext([&] { W_ListeSem->set(W_ListeSem->DCount() + 1, W_ListeFlot->r(i)); });
  }

  // Preparation.
  R_TableDurees = newRecord();
  if (testOrTrue([&] { return search::defaultIsEmpty(*W_ListeSem); })) {
    W_AfficheTache = kFalse;
    if (W_TypeAct == u"AUTRE") {
      resumeNext([&] { Charge_AideTache(); });
    } else {
      resumeNext([&] { Remplir_Soins(); });
    }
    W_ListeSem = nullptr;
    return;
  }
  R_TablePossible = newRecord();
  R_TableSelection = newRecord();
  W_AfficheTache = kTrue;
  W_Total = Currency();
  resumeNext([&] { Txt_Duree.setText(u""); });

  // The walk.
  search::TemplateMerge merge(*R_TablePossible, *R_TableSelection, *R_TableDurees);
  int keys = 0;
  resumeNext([&] { keys = W_ListeSem->DCount(); });
  for (int n = 1; n <= keys; ++n) {
    const Text key = W_ListeSem->r(n);
    const bool fixedKey = key.size() == kFixedKeyLength;
    resumeNext([&] { R_SemType = (fixedKey ? F_SemType : F_SemTypeFlot)->ReadRecord(key); });
    bool matched = false;
    if (fixedKey) {
      const bool day = fixedDayMet(W_Jour, key);
      if (testOrTrue([&] {
            const bool startsInTime = mid(key, 12, 4) <= times.end;
            const bool endsInTime = R_SemType->r(2) >= times.start;
            return day && startsInTime && endsInTime;
          })) {
        matched = true;
      }
    }
    int items = 0;
    resumeNext([&] { items = R_SemType->DCount(4); });
    for (int v = 1; v <= items; ++v) {
      const NorvikRecord& tpl = *R_SemType;
      merge.mergeWeekly({tpl.r(4, v), tpl.r(5, v), tpl.r(8, v)}, fixedKey, matched,
                        W_CleLue != kFalse);
    }
  }

  // The fill, then the key list goes.
  const search::SearchFill fill{*this, W_TypeAct == u"AUTRE", search::RowEnd::kWeekly,
                                [this] { Trie_Possible(); }, [this] { Trie_Selectionne(); }};
  search::fillUpperList(fill);
  if (RemplirBas == kTrue) search::fillLowerHalf(fill);
  W_ListeSem = nullptr;
}

}  // namespace velmora
