// Recherche_SemaineType: the weekly templates of the client, fixed and floating, merged
// into the proposal. The fixed templates whose weekday and time slot meet the
// intervention also fill the selection.
#include <velmora/control/ctr_velmora_new.h>
#include "control/control_private.h"
#include "control/error_regime.h"
#include "control/read_snapshot.h"
#include "search/key_layouts.h"
#include "search/template_search.h"

namespace velmora::search {

namespace {

// Character D + 1 of the mask set, and the key's day equal to D, for some D from 0 to 6.
// A character that is not a number makes the test fail, and a failing test takes its
// true branch.
bool fixedDayMet(const Text& jour, const Text& key) {
  bool day = false;
  for (int d = 0; d <= 6; ++d) {
    if (testOrTrue([&] {
          // Both sides are evaluated, as the platform's And does.
          const bool set = Currency::fromText(mid(jour, d + 1, 1)) != Currency();
          const bool same = Currency::fromText(FixedTemplateKey::day.in(key)) == Currency::whole(d);
          return set && same;
        })) {
      day = true;
    }
  }
  return day;
}

// Fresh key lists, the floating query, the search times, the fixed query; then the
// fixed keys first and the floating ones behind, each in the store's order.
SearchTimes findWeeklyKeys(const SearchCriteria& criteria, bool cleLue, RecordRef& listeSem,
                           RecordRef& listeFlot) {
  listeSem = newRecord();
  listeFlot = newRecord();
  long nombre = 0;
  resumeNext([&] {
    listeFlot = Variable().TheDatabase->RunQuery(templateRequest(kFloatingTemplates, criteria), u"",
                                                 nombre);
  });
  SearchTimes times = searchTimes(cleLue, criteria);
  resumeNext([&] {
    listeSem =
        Variable().TheDatabase->RunQuery(templateRequest(kFixedTemplates, criteria), u"", nombre);
  });
  int floating = 0;
  resumeNext([&] { floating = listeFlot->DCount(); });
  for (int i = 1; i <= floating; ++i) {
    resumeNext([&] { listeSem->set(listeSem->DCount() + 1, listeFlot->r(i)); });
  }
  return times;
}

// A key of the fixed file (17 characters) is read there and tested on its weekday and
// time slot; any other key is read in the floating file and only proposed.
TemplateVisit visitWeeklyKey(const Text& key, const Text& jour, const SearchTimes& times) {
  const bool fixedKey = key.size() == FixedTemplateKey::length;
  resumeNext([&] {
    Variable().R_SemType =
        (fixedKey ? Variable().F_SemType : Variable().F_SemTypeFlot)->ReadRecord(key);
  });
  bool matched = false;
  if (fixedKey) {
    const bool day = fixedDayMet(jour, key);
    if (testOrTrue([&] {
          const bool startsInTime = FixedTemplateKey::start.in(key) <= times.end;
          const bool endsInTime = Variable().R_SemType->r(2) >= times.start;
          return day && startsInTime && endsInTime;
        })) {
      matched = true;
    }
  }
  using Mark = tables::TemplateMerge::Mark;
  return {Variable().R_SemType, matched, fixedKey ? Mark::kFixed : Mark::kFloating};
}

}  // namespace

}  // namespace velmora::search

namespace velmora {

void Ctr_VelmoraNew::Recherche_SemaineType(Boolean& RemplirBas) {
  const SessionInUse inUse(d_->session);
  const ProcedureSnapshot snapshot;
  const search::SearchCriteria criteria = search::criteriaOf(*d_);
  const bool cleLue = d_->W_CleLue != kFalse;
  const search::TemplateSearch weekly{
      [&] { return search::findWeeklyKeys(criteria, cleLue, d_->W_ListeSem, d_->W_ListeFlot); },
      [&](const Text& key, const search::SearchTimes& times) {
        return search::visitWeeklyKey(key, d_->W_Jour, times);
      },
      search::RowEnd::kWeekly};
  search::runTemplateSearch({*this, criteria, d_->W_ListeSem, cleLue, [this] { Trie_Possible(); },
                             [this] { Trie_Selectionne(); }},
                            weekly, RemplirBas);
}

}  // namespace velmora
