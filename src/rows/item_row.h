// The row of one item, built from the catalogue records of its code and added with the
// code to a list and its code list. Every procedure that shows stored or proposed items
// (the searches' fills, the consultation of a key, the client's task lists, the way back
// of a stored selection) builds its rows here.
//
//               "AUTRE"                          other ("SSIAD")
//   reads       TACHE(code), GROUPETACHE(task 2)  SSIADSOINS(code), SSIADTYPESOINS(code 1-4),
//                                                 SSIADREGROUPSOINS(code 1-2)
//   column 1    group attribute 2                 regroupment attribute 1
//   column 2    task attribute 2                  care type attribute 1
//   column 3    the code                          act attribute 1
#pragma once

#include <velmora/base/text.h>
#include <velmora/toolkit/widgets.h>

namespace velmora::rows {

// Under continue on error: each read starts with a cleared error number; false as soon
// as one reports record not found, and the item is to be left out. Any other failure
// leaves the cursor on its previous record and counts as read.
bool readItemRecords(bool autre, const Text& code);

// A list of rows and the list of their codes, which move together.
struct ItemLists {
  toolkit::ListBox& rows;
  toolkit::ListBox& codes;
};

// How each statement of a row's building and adding runs: under continue on error, a
// failing one is left out and the next runs; otherwise its failure reaches the host and
// nothing behind it runs.
enum class OnFailure { kContinue, kReachHost };

// A proposal row from the cursors just read: the three columns, the duration in 7
// places, then `end` (what follows the duration after a search, "" elsewhere). Under
// continue on error.
void addProposalRow(ItemLists lists, bool autre, const Text& code, TextView duration, TextView end);

// A selection row from the cursors just read: the three columns, the observation marker
// "X" or blank, the duration in 6 places. A duration that does not fit leaves the row
// without one (under continue on error) or fails before the row is added.
void addSelectionRow(ItemLists lists, bool autre, const Text& code, bool hasObservation,
                     TextView duration, OnFailure onFailure);

}  // namespace velmora::rows
