// The fixed-width rows of the two visible lists, and the total's display form. A row
// is at once what the planner reads and the only store of its columns, duration and
// observation marker, so every writer and reader goes through these helpers.
//
// Proposal row:  1-25 column 1, 26 blank, 27-51 column 2, 52 blank, 53-77 column 3,
//                78 blank, 79-85 duration right-aligned, then "  " and "*" after a search.
// Selection row: 1-78 as above, 79 observation marker "X" or blank, 80-85 duration.
#pragma once

#include <vector>

#include <velmora/base/currency.h>
#include <velmora/base/text.h>

namespace velmora::rows {

inline constexpr int kColumnWidth = 25;

// The first 25 code units of v, then blanks up to 26.
Text textColumn(TextView v);
// The same, appended to a row: rows are built in one buffer, without a text per column.
void appendTextColumn(Text& row, TextView v);
// The values of a row's three text columns, kept beside the row for assistive technology
// when the row cuts one of them; none when all three fit.
std::vector<Text> wholeColumns(TextView c1, TextView c2, TextView c3);
// 7 minus the length of d blanks, then d. A d longer than 7 cannot be aligned and
// fails with the invalid-call error, as the platform's Space() of a negative count.
Text proposalDuration(TextView d);
// The same, appended to a row; a d that does not fit fails and leaves the row as it was.
void appendProposalDuration(Text& row, TextView d);
// "X" when there is an observation, else a blank; then d right-aligned in 6.
// A d longer than 6 fails as above.
Text selectionMarkerAndDuration(bool hasObservation, TextView d);
// Positions 81-85 of a row with blanks trimmed: the item's duration, "" for none.
Text rowDuration(TextView row);
// Positions 53-77 of a row with blanks trimmed: the label that tells two items apart.
Text rowLabel(TextView row);

// The read-back of the total's display form NhMM: the number before the first "h"
// times 60 plus the number after it.
Currency readBack(TextView shown);

}  // namespace velmora::rows
