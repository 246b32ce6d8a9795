// The one course of the two template searches, Recherche_SemaineType and
// Recherche_SemaineTypeFlot: guard, the procedure's own queries, the fallback on the
// catalogue when no template is found, the walk of the keys into the working tables,
// and the fill of the lists. What differs between the two is passed in.
#pragma once

#include <functional>

#include <velmora/control/ctr_velmora_new.h>
#include "search/template_query.h"
#include "tables/item_merge.h"

namespace velmora::search {

// The control as a search reads and changes it: its public lists and variables, and what
// the procedure lends of its private state.
struct SearchControl {
  Ctr_VelmoraNew& control;
  const SearchCriteria& criteria;
  RecordRef& keys;  // W_ListeSem: the keys to walk, released at the end
  bool cleLue;      // Init read a key: the selection is not filled from templates
  std::function<void()> triePossible;
  std::function<void()> trieSelectionne;
};

// One key of the walk, read: the cursor its template was read into, whether that
// template meets the intervention, and what a new proposal row holds in value 3.
struct TemplateVisit {
  const RecordRef& cursor;
  bool matched;
  tables::TemplateMerge::Mark mark;
};

// What a proposal row shows behind its duration.
enum class RowEnd {
  kWeekly,    // "  " then value 3 of the proposal row: "" or "*"
  kFloating,  // "  *" on every row
};

// What differs between the two searches.
struct TemplateSearch {
  // The queries and the search times, in the procedure's own order; the keys to walk
  // are left in SearchControl::keys.
  std::function<SearchTimes()> findKeys;
  // Reads the template of one key into its cursor and tests it.
  std::function<TemplateVisit(const Text& key, const SearchTimes& times)> visit;
  RowEnd end;
};

// The criteria as Init left them in the control's private fields.
SearchCriteria criteriaOf(const Ctr_VelmoraNew::Private& fields);

// Runs the search under continue on error, as the procedures do.
void runTemplateSearch(const SearchControl& search, const TemplateSearch& kind,
                       Boolean& remplirBas);

}  // namespace velmora::search
