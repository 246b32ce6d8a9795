// The course both template searches follow, from the guard to the fill of the lists.
// The procedures pass in their queries and their test of a template; the rest is here.
#include "search/template_search.h"

#include "control/control_private.h"
#include "control/error_regime.h"
#include "control/session_state.h"
#include "rows/item_row.h"
#include "rows/row_format.h"
#include "tables/working_table.h"

namespace velmora::search {

namespace {

// No template: the proposal shows the client's task lists or the care-act catalogue.
void fallBackOnCatalogue(const SearchControl& search) {
  auto& c = search.control;
  c.W_AfficheTache = kFalse;
  if (search.criteria.typeAct == u"AUTRE") {
    resumeNext([&] { c.Charge_AideTache(); });
  } else {
    resumeNext([&] { c.Remplir_Soins(); });
  }
}

// Fresh proposal and selection tables and an empty total, before the walk.
void prepareTables(const SearchControl& search) {
  auto& c = search.control;
  Variable().R_TablePossible = newRecord();
  Variable().R_TableSelection = newRecord();
  c.W_AfficheTache = kTrue;
  c.W_Total = Currency();
  resumeNext([&] { c.Txt_Duree.setText(u""); });
}

// Every key in the store's order; the items of each template merged into the tables.
void walkKeys(const SearchControl& search, const TemplateSearch& kind, const SearchTimes& times) {
  tables::TemplateMerge merge(*Variable().R_TablePossible, *Variable().R_TableSelection,
                              *Variable().R_TableDurees);
  int keys = 0;
  resumeNext([&] { keys = search.keys->DCount(); });
  for (int n = 1; n <= keys; ++n) {
    const Text key = search.keys->r(n);
    const TemplateVisit visit = kind.visit(key, times);
    int items = 0;
    resumeNext([&] { items = visit.cursor->DCount(4); });
    for (int v = 1; v <= items; ++v) {
      const NorvikRecord& tpl = *visit.cursor;
      merge.merge({tpl.r(4, v), tpl.r(5, v), tpl.r(8, v)}, visit.mark, visit.matched,
                  search.cleLue);
    }
  }
}

// R_TablePossible into the rows of Lst_Possible and Lst_CodePos.
void fillUpperList(const SearchControl& search, RowEnd end) {
  auto& c = search.control;
  const bool autre = search.criteria.typeAct == u"AUTRE";
  resumeNext([&] { c.Lst_Possible.Clear(); });
  resumeNext([&] { c.Lst_CodePos.Clear(); });
  int count = 0;
  resumeNext([&] { count = Variable().R_TablePossible->DCount(); });
  for (int i = 1; i <= count; ++i) {
    Text code;
    resumeNext([&] { code = Variable().R_TablePossible->r(i, 1); });
    if (!rows::readItemRecords(autre, code)) continue;
    const Text rowEnd =
        end == RowEnd::kFloating ? Text(u"  *") : u"  " + Variable().R_TablePossible->r(i, 3);
    rows::addProposalRow({c.Lst_Possible, c.Lst_CodePos}, autre, code,
                         Variable().R_TablePossible->r(i, 2), rowEnd);
  }
  resumeNext(search.triePossible);
}

// R_TableSelection into Lst_Selectionne and Lst_CodeSelect, with R_Obs, W_Total and
// Txt_Duree.
void fillLowerHalf(const SearchControl& search) {
  auto& c = search.control;
  const bool autre = search.criteria.typeAct == u"AUTRE";
  resumeNext([&] { c.Lst_Selectionne.Clear(); });
  resumeNext([&] { c.Lst_CodeSelect.Clear(); });
  int count = 0;
  resumeNext([&] { count = Variable().R_TableSelection->DCount(); });
  for (int i = 1; i <= count; ++i) {
    const auto item = tables::tableItem(*Variable().R_TableSelection, i);
    if (rows::readItemRecords(autre, item.code)) {
      rows::addSelectionRow({c.Lst_Selectionne, c.Lst_CodeSelect}, autre, item.code,
                            !item.observation.empty(), item.duration, rows::OnFailure::kContinue);
      // By table row: a dropped item leaves its number unused.
      resumeNext([&] { Variable().R_Obs->set(i, item.observation); });
      resumeNext([&] { c.W_Total += Currency::fromText(item.duration); });
    }
    // Sum first, then show: the text box turns the minutes into NhMM at once.
    resumeNext([&] { c.Txt_Duree.setText(c.W_Total.toText()); });
    resumeNext([&] { c.W_Total = rows::readBack(c.Txt_Duree.getText()); });
  }
  resumeNext(search.trieSelectionne);
}

}  // namespace

SearchCriteria criteriaOf(const Ctr_VelmoraNew::Private& fields) {
  return {fields.W_Code,    fields.W_DateDeb, fields.W_DateFin, fields.W_TypeAct,
          fields.W_HeureDe, fields.W_HeureA,  fields.W_Jour};
}

void runTemplateSearch(const SearchControl& search, const TemplateSearch& kind,
                       Boolean& remplirBas) {
  if (!search.criteria.complete()) return;
  const SearchTimes times = kind.findKeys();

  // The durations table is fresh before the answer is looked at, template or not.
  Variable().R_TableDurees = newRecord();
  if (testOrTrue([&] { return tables::defaultIsEmpty(*search.keys); })) {
    fallBackOnCatalogue(search);
    search.keys = nullptr;
    return;
  }
  prepareTables(search);
  walkKeys(search, kind, times);

  fillUpperList(search, kind.end);
  if (remplirBas == kTrue) fillLowerHalf(search);
  search.keys = nullptr;
}

}  // namespace velmora::search
