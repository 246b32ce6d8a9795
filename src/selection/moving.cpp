// Moving marked proposal rows into the selection. Selecting copies: Lst_Possible keeps
// its rows, so an item taken out of the selection can be chosen again.
#include <velmora/control/ctr_velmora_new.h>
#include "rows/total.h"

namespace velmora::selection {

namespace {

// Positions 1-2 (column 1) or 27-28 (column 2) of a row, blanks trimmed, are empty.
bool columnBlank(TextView row, int start) {
  return trimBlanks(mid(row, start, 2)).empty();
}

// The nearest row at or above i whose column starting at `start` is filled; -1 for none.
// List(-1) reads "", which ends the walk at the top.
int rowAboveWithColumn(const toolkit::ListBox& list, int i, int start) {
  int k = i;
  while (k != -1 && columnBlank(list.List(k), start)) --k;
  return k;
}

// Walks the selection from the top and stops on the first row with the same label, or
// on the end of the list, which reads as "". Returns the row reached.
int duplicateCandidate(const toolkit::ListBox& selection, const Text& label) {
  int j = 0;
  while (true) {
    const Text& row = selection.List(j);
    if (rows::rowLabel(row) == label || row.empty()) return j;
    ++j;
  }
}

}  // namespace

}  // namespace velmora::selection

namespace velmora {

void Ctr_VelmoraNew::Lst_Possible_Click() {
  Cmd_Select.setEnabled(true);
}

void Ctr_VelmoraNew::Lst_Possible_DblClick() {
  Cmd_Select_Click();
}

void Ctr_VelmoraNew::Cmd_Select_Click() {
  const int last = Lst_Possible.ListCount() - 1;
  for (int i = 0; i <= last; ++i) {
    if (!Lst_Possible.Selected(i)) continue;
    const Text proposal = Lst_Possible.List(i);

    // Duplicate search and test: an item whose label is in the selection already
    // only loses its mark. An empty label always counts as a duplicate.
    const Text label = rows::rowLabel(proposal);
    const int j = selection::duplicateCandidate(Lst_Selectionne, label);
    if (label != rows::rowLabel(Lst_Selectionne.List(j))) {
      // The row as proposed, duration included.
      Text working = left(proposal, 85);
      // Columns from above, for rows whose column 1 is blank.
      if (selection::columnBlank(proposal, 1)) {
        const int k1 = selection::rowAboveWithColumn(Lst_Possible, i, 1);
        if (k1 != -1) working = mid(Lst_Possible.List(k1), 1, 26);
        const int k2 = selection::rowAboveWithColumn(Lst_Possible, i, 27);
        if (k2 != -1) working += mid(Lst_Possible.List(k2), 27, 26);
        working += mid(proposal, 53, 33);
      }
      // Appended, at least 80 long so that the marker and position 80 exist.
      Lst_Selectionne.AddItem(working.size() < 80 ? padRight(working, 80) : working,
                              Lst_Possible.wholeColumns(i));
      Lst_CodeSelect.AddItem(Lst_CodePos.List(i));
      // Its duration, if any, goes onto the total.
      const Text d = rows::rowDuration(working);
      if (!d.empty()) W_Total = rows::addToShownTotal(Txt_Duree, d);
    }
    // Every marked row loses its mark, added or not.
    Lst_Possible.setSelected(i, false);
    Lst_CodePos.setSelected(i, false);
  }
  Trie_Selectionne();
}

}  // namespace velmora
