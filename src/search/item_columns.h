// What an item code shows in the three text columns, by vocabulary, read from the
// catalogue records into the module-level cursors. Used by the search fills and by the
// consultation of a key, which read the same records in the same order.
//
//               "AUTRE"                          other ("SSIAD")
//   reads       TACHE(code), GROUPETACHE(task 2)  SSIADSOINS(code), SSIADTYPESOINS(code 1-4),
//                                                 SSIADREGROUPSOINS(code 1-2)
//   column 1    group attribute 2                 regroupment attribute 1
//   column 2    task attribute 2                  care type attribute 1
//   column 3    the code                          act attribute 1
#pragma once

#include <vector>

#include <velmora/base/text.h>

namespace velmora::search {

// Under continue on error: each read starts with a cleared error number; false as soon
// as one reports record not found, and the item is to be left out. Any other failure
// leaves the cursor on its previous record and counts as read.
bool readItemRecords(bool autre, const Text& code);

// Appends the three text columns, one statement each, from the cursors just read.
void appendColumns(Text& row, bool autre, const Text& code);

// The whole values of the three columns, from the same cursors, where the row cuts one
// (rows::wholeColumns); none when a cursor is empty. Reads nothing and sets no error.
std::vector<Text> wholeColumns(bool autre, const Text& code);

// Appends the duration right-aligned in `width` places (7 for a proposal row, 6 behind
// the marker of a selection row); a duration that does not fit leaves the row without one.
void appendDuration(Text& row, TextView duration, int width);

}  // namespace velmora::search
