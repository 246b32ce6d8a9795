// The order of the hand-made selection sort of the lists, found in O(n log n).
//
// The lists are sorted by a selection sort: for each position i, the earliest row with
// the least key among rows i..n-1 is exchanged with row i. That order is not stable, so
// planners see exactly the order it gives, with equal rows where it leaves them. This
// helper replays the same exchanges, but finds each minimum with a tournament tree
// instead of a scan, and the tournament compares the ranks of the distinct keys (worked
// out once by a library sort) instead of the keys, so tens of thousands of rows sort at
// once at little more than the cost of that library sort.
#pragma once

#include <algorithm>
#include <functional>
#include <numeric>
#include <vector>

namespace velmora::catalogue {

// The rank of each of n keys among the distinct keys, 0 for the least; less(a, b) tells
// whether key a is strictly less than key b. Equal keys get equal ranks.
template <typename Less>
std::vector<int> denseRanks(int n, Less less) {
  std::vector<int> order(static_cast<std::size_t>(n));
  std::iota(order.begin(), order.end(), 0);
  std::sort(order.begin(), order.end(), less);
  std::vector<int> ranks(static_cast<std::size_t>(n));
  int rank = 0;
  for (std::size_t p = 0; p < order.size(); ++p) {
    if (p > 0 && less(order[p - 1], order[p])) ++rank;
    ranks[static_cast<std::size_t>(order[p])] = rank;
  }
  return ranks;
}

// Calls exchange(m, i) for each exchange of the selection sort of keys given by their
// ranks, in order. m > i always.
void selectionSortExchanges(std::vector<int> ranks,
                            const std::function<void(int m, int i)>& exchange);

}  // namespace velmora::catalogue
