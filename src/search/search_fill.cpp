#include "search/search_fill.h"

#include "control/error_regime.h"
#include "control/session_state.h"
#include "rows/row_format.h"
#include "search/item_columns.h"

namespace velmora::search {

void fillUpperList(const SearchFill& fill) {
  auto& c = fill.control;
  resumeNext([&] { c.Lst_Possible.Clear(); });
  resumeNext([&] { c.Lst_CodePos.Clear(); });
  int count = 0;
  resumeNext([&] { count = Variable().R_TablePossible->DCount(); });
  for (int i = 1; i <= count; ++i) {
    Text code;
    resumeNext([&] { code = Variable().R_TablePossible->r(i, 1); });
    if (!readItemRecords(fill.autre, code)) continue;
    Text row;
    appendColumns(row, fill.autre, code);
    appendDuration(row, Variable().R_TablePossible->r(i, 2), 7);
    resumeNext([&] {
      row += fill.end == RowEnd::kFloating ? Text(u"  *")
                                           : u"  " + Variable().R_TablePossible->r(i, 3);
    });
    resumeNext([&] { c.Lst_Possible.AddItem(row, wholeColumns(fill.autre, code)); });
    resumeNext([&] { c.Lst_CodePos.AddItem(code); });
  }
  resumeNext(fill.triePossible);
}

void fillLowerHalf(const SearchFill& fill) {
  auto& c = fill.control;
  resumeNext([&] { c.Lst_Selectionne.Clear(); });
  resumeNext([&] { c.Lst_CodeSelect.Clear(); });
  int count = 0;
  resumeNext([&] { count = Variable().R_TableSelection->DCount(); });
  for (int i = 1; i <= count; ++i) {
    const Text code = Variable().R_TableSelection->r(i, 1);
    const Text duration = Variable().R_TableSelection->r(i, 2);
    const Text observation = Variable().R_TableSelection->r(i, 3);
    if (readItemRecords(fill.autre, code)) {
      Text row;
      appendColumns(row, fill.autre, code);
      row += observation.empty() ? u" " : u"X";
      appendDuration(row, duration, 6);
      resumeNext([&] { c.Lst_Selectionne.AddItem(row, wholeColumns(fill.autre, code)); });
      resumeNext([&] { c.Lst_CodeSelect.AddItem(code); });
      // By table row: a dropped item leaves its number unused.
      resumeNext([&] { Variable().R_Obs->set(i, observation); });
      resumeNext([&] { c.W_Total += Currency::fromText(duration); });
    }
    // Sum first, then show: the text box turns the minutes into NhMM at once.
    resumeNext([&] { c.Txt_Duree.setText(c.W_Total.toText()); });
    resumeNext([&] { c.W_Total = rows::readBack(c.Txt_Duree.getText()); });
  }
  resumeNext(fill.trieSelectionne);
}

}  // namespace velmora::search
