#include "search/item_columns.h"

#include "control/error_regime.h"
#include "control/session_state.h"
#include "rows/row_format.h"

namespace velmora::search {

namespace {

// One read of the item: true when its record was found or the read failed otherwise.
template <class Read>
bool readUnlessAbsent(Read&& read) {
  Err().Clear();
  resumeNext(std::forward<Read>(read));
  return Err().Number != errors::kRecordNotFound;
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

void appendColumns(Text& row, bool autre, const Text& code) {
  if (autre) {
    resumeNext([&] { rows::appendTextColumn(row, Variable().R_GroupeTache->r(2)); });
    resumeNext([&] { rows::appendTextColumn(row, Variable().R_Tache->r(2)); });
    resumeNext([&] { rows::appendTextColumn(row, code); });
    return;
  }
  resumeNext([&] { rows::appendTextColumn(row, Variable().R_RegroupSoins->r(1)); });
  resumeNext([&] { rows::appendTextColumn(row, Variable().R_TypeSoins->r(1)); });
  resumeNext([&] { rows::appendTextColumn(row, Variable().R_Soins->r(1)); });
}

std::vector<Text> wholeColumns(bool autre, const Text& code) {
  try {
    if (autre)
      return rows::wholeColumns(Variable().R_GroupeTache->r(2), Variable().R_Tache->r(2), code);
    return rows::wholeColumns(Variable().R_RegroupSoins->r(1), Variable().R_TypeSoins->r(1),
                              Variable().R_Soins->r(1));
  } catch (const Failure&) {
    return {};
  }
}

void appendDuration(Text& row, TextView duration, int width) {
  resumeNext([&] {
    row += width == 7 ? rows::proposalDuration(duration)
                      : mid(rows::selectionMarkerAndDuration(false, duration), 2);
  });
}

}  // namespace velmora::search
