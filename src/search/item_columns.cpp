#include "search/item_columns.h"

#include "control/error_regime.h"
#include "rows/row_format.h"

namespace velmora::search {

using namespace Variable;

namespace {

// One read of the item: true when its record was found or the read failed otherwise.
template <class Read>
bool readUnlessAbsent(Read&& read) {
  Err.Clear();
  resumeNext(std::forward<Read>(read));
  return Err.Number != errors::kRecordNotFound;
}

}  // namespace

bool readItemRecords(bool autre, const Text& code) {
  if (autre) {
    if (!readUnlessAbsent([&] { R_Tache = F_Tache->ReadRecord(code); })) return false;
    return readUnlessAbsent([] { R_GroupeTache = F_GroupeTache->ReadRecord(R_Tache->r(2)); });
  }
  if (!readUnlessAbsent([&] { R_Soins = F_Soins->ReadRecord(code); })) return false;
  if (!readUnlessAbsent([&] { R_TypeSoins = F_TypeSoins->ReadRecord(left(code, 4)); })) {
    return false;
  }
  return readUnlessAbsent([&] { R_RegroupSoins = F_RegroupSoins->ReadRecord(left(code, 2)); });
}

void appendColumns(Text& row, bool autre, const Text& code) {
  if (autre) {
    resumeNext([&] { rows::appendTextColumn(row, R_GroupeTache->r(2)); });
    resumeNext([&] { rows::appendTextColumn(row, R_Tache->r(2)); });
    resumeNext([&] { rows::appendTextColumn(row, code); });
    return;
  }
  resumeNext([&] { rows::appendTextColumn(row, R_RegroupSoins->r(1)); });
  resumeNext([&] { rows::appendTextColumn(row, R_TypeSoins->r(1)); });
  resumeNext([&] { rows::appendTextColumn(row, R_Soins->r(1)); });
}

std::vector<Text> wholeColumns(bool autre, const Text& code) {
  try {
    if (autre) return rows::wholeColumns(R_GroupeTache->r(2), R_Tache->r(2), code);
    return rows::wholeColumns(R_RegroupSoins->r(1), R_TypeSoins->r(1), R_Soins->r(1));
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
