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
#include <utility>
#include <vector>

namespace velmora::catalogue {

// The rank of each key among the distinct keys, 0 for the least; less(a, b) tells whether
// key a is strictly less than key b. Equal keys get equal ranks. The keys are sorted
// together with their positions, so that a comparison reads them in place.
template <typename Key, typename Less>
std::vector<int> denseRanks(const std::vector<Key>& keys, Less less) {
  std::vector<std::pair<Key, int>> order;
  order.reserve(keys.size());
  for (std::size_t i = 0; i < keys.size(); ++i) order.emplace_back(keys[i], static_cast<int>(i));
  std::sort(order.begin(), order.end(),
            [&](const auto& a, const auto& b) { return less(a.first, b.first); });
  std::vector<int> ranks(keys.size());
  int rank = 0;
  for (std::size_t p = 0; p < order.size(); ++p) {
    if (p > 0 && less(order[p - 1].first, order[p].first)) ++rank;
    ranks[static_cast<std::size_t>(order[p].second)] = rank;
  }
  return ranks;
}

// Calls exchange(m, i) for each exchange of the selection sort of keys given by their
// ranks, in order. m > i always.
void selectionSortExchanges(std::vector<int> ranks,
                            const std::function<void(int m, int i)>& exchange);

}  // namespace velmora::catalogue
