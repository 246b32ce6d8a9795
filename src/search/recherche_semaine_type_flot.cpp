// Recherche_SemaineTypeFlot: the floating templates alone, merged into the proposal. It
// is the one search that selects from them, by the list of days each template holds in
// attribute 10.
#include <velmora/control/ctr_velmora_new.h>
#include "control/control_private.h"
#include "control/error_regime.h"
#include "control/read_snapshot.h"
#include "search/key_layouts.h"
#include "search/template_search.h"

namespace velmora::search {

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

// The search times, then the floating query; the key list keeps what it held when the
// query fails.
SearchTimes findFloatingKeys(const SearchCriteria& criteria, bool cleLue, RecordRef& listeSem) {
  SearchTimes times = searchTimes(cleLue, criteria);
  long nombre = 0;
  resumeNext([&] {
    listeSem = Variable().TheDatabase->RunQuery(templateRequest(kFloatingTemplates, criteria), u"",
                                                nombre);
  });
  return times;
}

// Every floating template is tested on its days and its time slot.
TemplateVisit visitFloatingKey(const Text& key, const Text& jour, const SearchTimes& times) {
  resumeNext([&] { Variable().R_SemTypeFlot = Variable().F_SemTypeFlot->ReadRecord(key); });
  bool matched = false;
  const bool day = floatingDayMet(jour, Variable().R_SemTypeFlot);
  if (testOrTrue([&] {
        const bool startsInTime = FloatingTemplateKey::start.in(key) <= times.end;
        const bool endsInTime = Variable().R_SemTypeFlot->r(2) >= times.start;
        return day && startsInTime && endsInTime;
      })) {
    matched = true;
  }
  return {Variable().R_SemTypeFlot, matched, tables::TemplateMerge::Mark::kNone};
}

}  // namespace

}  // namespace velmora::search

namespace velmora {

void Ctr_VelmoraNew::Recherche_SemaineTypeFlot(Boolean& RemplirBas) {
  const SessionInUse inUse(d_->session);
  const ProcedureSnapshot snapshot;
  const search::SearchCriteria criteria = search::criteriaOf(*d_);
  const bool cleLue = d_->W_CleLue != kFalse;
  const search::TemplateSearch floating{
      [&] { return search::findFloatingKeys(criteria, cleLue, d_->W_ListeSem); },
      [&](const Text& key, const search::SearchTimes& times) {
        return search::visitFloatingKey(key, d_->W_Jour, times);
      },
      search::RowEnd::kFloating};
  search::runTemplateSearch({*this, criteria, d_->W_ListeSem, cleLue, [this] { Trie_Possible(); },
                             [this] { Trie_Selectionne(); }},
                            floating, RemplirBas);
}

}  // namespace velmora
