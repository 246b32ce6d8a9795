// The order of the hand-made selection sort of the lists, found in O(n log n).
//
// The lists are sorted by a selection sort: for each position i, the earliest row with
// the least key among rows i..n-1 is exchanged with row i. That order is not stable, so
// planners see exactly the order it gives, with equal rows where it leaves them. This
// helper replays the same exchanges, but finds each minimum with a tournament tree
// over the keys instead of a scan, so tens of thousands of rows sort at once.
#pragma once

#include <functional>
#include <vector>

#include <velmora/base/text.h>

namespace velmora::catalogue {

// Calls exchange(m, i) for each exchange of the selection sort of keys, in order, and
// leaves keys sorted the way the sort leaves them. m > i always.
void selectionSortExchanges(std::vector<Text> keys,
                            const std::function<void(int m, int i)>& exchange);

}  // namespace velmora::catalogue
