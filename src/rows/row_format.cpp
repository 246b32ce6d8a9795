// The fixed-width rows of the lists, written and read back: text columns and the
// durations of proposal and selection rows. Also the total's NhMM form read as minutes.
#include "rows/row_format.h"

#include <algorithm>
#include <string>

#include <velmora/base/failure.h>

namespace velmora::rows {

namespace {

void checkWidth(TextView d, int width) {
  if (static_cast<int>(d.size()) > width) {
    throw Failure(errors::kInvalidCall, "appel non valide : la durée « " + toUtf8(d) +
                                            " » dépasse ses " + std::to_string(width) +
                                            " caractères");
  }
}

Text alignedRight(TextView d, int width) {
  checkWidth(d, width);
  return padLeft(d, width);
}

}  // namespace

std::vector<Text> wholeColumns(TextView c1, TextView c2, TextView c3) {
  const auto cut = [](TextView v) { return v.size() > static_cast<std::size_t>(kColumnWidth); };
  if (!cut(c1) && !cut(c2) && !cut(c3)) return {};
  return {Text(c1), Text(c2), Text(c3)};
}

Text textColumn(TextView v) {
  return padRight(left(v, kColumnWidth), kColumnWidth + 1);
}

void appendTextColumn(Text& row, TextView v) {
  const std::size_t n = std::min<std::size_t>(v.size(), kColumnWidth);
  row.append(v.substr(0, n));
  row.append(kColumnWidth + 1 - n, u' ');
}

Text proposalDuration(TextView d) {
  return alignedRight(d, 7);
}

void appendProposalDuration(Text& row, TextView d) {
  checkWidth(d, 7);
  row.append(7 - d.size(), u' ');
  row.append(d);
}

Text selectionMarkerAndDuration(bool hasObservation, TextView d) {
  return Text(hasObservation ? u"X" : u" ") + alignedRight(d, 6);
}

Text rowDuration(TextView row) {
  return trimBlanks(mid(row, 81, 5));
}

Text rowLabel(TextView row) {
  return trimBlanks(mid(row, 53, 25));
}

Currency readBack(TextView shown) {
  const auto p = instr(shown, u"h");
  if (p == 0) {
    throw Failure(errors::kInvalidCall,
                  "appel non valide : le total « " + toUtf8(shown) + " » n'a pas de « h »");
  }
  const Currency hours = Currency::fromText(left(shown, p - 1));
  const Currency minutes = Currency::fromText(mid(shown, p + 1));
  return Currency::fromUnits(hours.units() * 60) + minutes;
}

}  // namespace velmora::rows
