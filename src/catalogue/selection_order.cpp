#include "catalogue/selection_order.h"

#include <cstddef>

namespace velmora::catalogue {

namespace {

// A tournament tree over positions: each inner node holds the winning position of its
// two children, the winner being the lesser key and, among equal keys, the earlier
// position, which is the row the scan of the selection sort would stop on. Positions
// already placed drop out of the tournament.
class Tournament {
 public:
  explicit Tournament(const std::vector<Text>& keys) : keys_(keys) {
    while (leaves_ < keys.size()) leaves_ *= 2;
    node_.assign(2 * leaves_, kNone);
    for (std::size_t p = 0; p < keys.size(); ++p) node_[leaves_ + p] = static_cast<int>(p);
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
    const int cmp = keys_[b].compare(keys_[a]);
    if (cmp < 0) return b;
    if (cmp > 0) return a;
    return a < b ? a : b;
  }

  const std::vector<Text>& keys_;
  std::size_t leaves_ = 1;
  std::vector<int> node_;
};

}  // namespace

void selectionSortExchanges(std::vector<Text> keys,
                            const std::function<void(int m, int i)>& exchange) {
  const int n = static_cast<int>(keys.size());
  if (n < 2) return;
  Tournament tournament(keys);
  for (int i = 0; i < n; ++i) {
    const int m = tournament.champion();
    if (m != i) {
      keys[static_cast<std::size_t>(m)].swap(keys[static_cast<std::size_t>(i)]);
      exchange(m, i);
      tournament.replay(m, true);
    }
    tournament.replay(i, false);
  }
}

}  // namespace velmora::catalogue
