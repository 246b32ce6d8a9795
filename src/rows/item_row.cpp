// An item's row built from the catalogue records of its code, column by column, and
// added to a list with its code. Each step is one statement of its own, so that under
// continue on error a failing read leaves just its column out.
#include "rows/item_row.h"

#include <vector>

#include "control/error_regime.h"
#include "control/session_state.h"
#include "rows/row_format.h"

namespace velmora::rows {

namespace {

// One read of the item: true when its record was found or the read failed otherwise.
template <class Read>
bool readUnlessAbsent(Read&& read) {
  Err().Clear();
  resumeNext(std::forward<Read>(read));
  return Err().Number != errors::kRecordNotFound;
}

template <class Statement>
void run(OnFailure onFailure, Statement&& statement) {
  if (onFailure == OnFailure::kContinue) {
    resumeNext(std::forward<Statement>(statement));
  } else {
    std::forward<Statement>(statement)();
  }
}

// Appends the three text columns, one statement each, from the cursors just read.
void appendColumns(Text& row, bool autre, const Text& code, OnFailure onFailure) {
  if (autre) {
    run(onFailure, [&] { appendTextColumn(row, Variable().R_GroupeTache->r(2)); });
    run(onFailure, [&] { appendTextColumn(row, Variable().R_Tache->r(2)); });
    run(onFailure, [&] { appendTextColumn(row, code); });
    return;
  }
  run(onFailure, [&] { appendTextColumn(row, Variable().R_RegroupSoins->r(1)); });
  run(onFailure, [&] { appendTextColumn(row, Variable().R_TypeSoins->r(1)); });
  run(onFailure, [&] { appendTextColumn(row, Variable().R_Soins->r(1)); });
}

// The whole values of the three columns, from the same cursors, where the row cuts one;
// none when a cursor is empty. Reads nothing and sets no error.
std::vector<Text> itemWholeColumns(bool autre, const Text& code) {
  try {
    if (autre) return wholeColumns(Variable().R_GroupeTache->r(2), Variable().R_Tache->r(2), code);
    return wholeColumns(Variable().R_RegroupSoins->r(1), Variable().R_TypeSoins->r(1),
                        Variable().R_Soins->r(1));
  } catch (const Failure&) {
    return {};
  }
}

void addRow(ItemLists lists, bool autre, const Text& code, const Text& row, OnFailure onFailure) {
  run(onFailure, [&] { lists.rows.AddItem(row, itemWholeColumns(autre, code)); });
  run(onFailure, [&] { lists.codes.AddItem(code); });
}

}  // namespace

bool readItemRecords(bool autre, const Text& code) {
  if (autre) {
    if (!readUnlessAbsent([&] { Variable().R_Tache = Variable().F_Tache->ReadRecord(code); }))
      return false;
    return readUnlessAbsent([] {
      Variable().R_GroupeTache = Variable().F_GroupeTache->ReadRecord(Variable().R_Tache->r(2));
    });
  }
  if (!readUnlessAbsent([&] { Variable().R_Soins = Variable().F_Soins->ReadRecord(code); }))
    return false;
  if (!readUnlessAbsent(
          [&] { Variable().R_TypeSoins = Variable().F_TypeSoins->ReadRecord(left(code, 4)); })) {
    return false;
  }
  return readUnlessAbsent(
      [&] { Variable().R_RegroupSoins = Variable().F_RegroupSoins->ReadRecord(left(code, 2)); });
}

void addProposalRow(ItemLists lists, bool autre, const Text& code, TextView duration,
                    TextView end) {
  Text row;
  appendColumns(row, autre, code, OnFailure::kContinue);
  resumeNext([&] { row += proposalDuration(duration); });
  row += end;
  addRow(lists, autre, code, row, OnFailure::kContinue);
}

void addSelectionRow(ItemLists lists, bool autre, const Text& code, bool hasObservation,
                     TextView duration, OnFailure onFailure) {
  Text row;
  appendColumns(row, autre, code, onFailure);
  row += hasObservation ? u"X" : u" ";
  run(onFailure, [&] { row += mid(selectionMarkerAndDuration(false, duration), 2); });
  addRow(lists, autre, code, row, onFailure);
}

}  // namespace velmora::rows
