// The exchanges of the lists' selection sort, replayed with a tournament tree over the
// ranks of the keys. A long list thus sorts in O(n log n), in the very same order.
#include "catalogue/selection_order.h"

#include <cstddef>
#include <utility>

namespace velmora::catalogue {

namespace {

// A tournament tree over positions: each inner node holds the winning position of its
// two children, the winner being the lesser rank and, among equal ranks, the earlier
// position, which is the row the scan of the selection sort would stop on. Positions
// already placed drop out of the tournament.
class Tournament {
 public:
  explicit Tournament(const std::vector<int>& ranks) : ranks_(ranks) {
    while (leaves_ < ranks.size()) leaves_ *= 2;
    node_.assign(2 * leaves_, kNone);
    for (std::size_t p = 0; p < ranks.size(); ++p) node_[leaves_ + p] = static_cast<int>(p);
    for (std::size_t v = leaves_ - 1; v >= 1; --v)
      node_[v] = winner(node_[2 * v], node_[2 * v + 1]);
  }

  int champion() const { return node_[1]; }

  // The key at position p changed, or p left the tournament.
  void replay(int p, bool present) {
    std::size_t v = leaves_ + static_cast<std::size_t>(p);
    node_[v] = present ? p : kNone;
    for (v /= 2; v >= 1; v /= 2) node_[v] = winner(node_[2 * v], node_[2 * v + 1]);
  }

 private:
  static constexpr int kNone = -1;

  int winner(int a, int b) const {
    if (a == kNone) return b;
    if (b == kNone) return a;
    // Strictly less wins; a tie goes to the earlier position.
    const int ra = ranks_[static_cast<std::size_t>(a)];
    const int rb = ranks_[static_cast<std::size_t>(b)];
    if (rb != ra) return rb < ra ? b : a;
    return a < b ? a : b;
  }

  const std::vector<int>& ranks_;
  std::size_t leaves_ = 1;
  std::vector<int> node_;
};

}  // namespace

void selectionSortExchanges(std::vector<int> ranks,
                            const std::function<void(int m, int i)>& exchange) {
  const int n = static_cast<int>(ranks.size());
  if (n < 2) return;
  Tournament tournament(ranks);
  for (int i = 0; i < n; ++i) {
    const int m = tournament.champion();
    if (m != i) {
      std::swap(ranks[static_cast<std::size_t>(m)], ranks[static_cast<std::size_t>(i)]);
      exchange(m, i);
      tournament.replay(m, true);
    }
    tournament.replay(i, false);
  }
}

}  // namespace velmora::catalogue
