// Trie_Possible and Trie_Selectionne, the selection sorts of the two visible lists. The
// list boxes don't sort themselves, since rows, codes and observations live side by side
// and must move together.
#include <functional>
#include <vector>

#include <velmora/control/ctr_velmora_new.h>
#include "catalogue/selection_order.h"
#include "control/session_state.h"

namespace velmora::catalogue {

namespace {

// The key of a proposal row is "1" or "2" followed by the row: "2" when position 88,
// with blanks trimmed, is not empty (the mark "*" of floating templates), so those rows go
// behind all the others. Compared here without building the text.
struct ProposalKey {
  bool behind;
  TextView row;
};

bool operator<(const ProposalKey& a, const ProposalKey& b) {
  if (a.behind != b.behind) return b.behind;
  return a.row < b.row;
}

std::vector<ProposalKey> proposalKeys(const toolkit::ListBox& list) {
  std::vector<ProposalKey> keys;
  keys.reserve(static_cast<std::size_t>(list.ListCount()));
  for (int i = 0; i < list.ListCount(); ++i) {
    const Text& row = list.List(i);
    keys.push_back({row.size() >= 88 && row[87] != u' ', row});
  }
  return keys;
}

// The key of a selection row is the row.
std::vector<TextView> rowKeys(const toolkit::ListBox& list) {
  std::vector<TextView> keys;
  keys.reserve(static_cast<std::size_t>(list.ListCount()));
  for (int i = 0; i < list.ListCount(); ++i) keys.emplace_back(list.List(i));
  return keys;
}

}  // namespace

}  // namespace velmora::catalogue

namespace velmora {

void Ctr_VelmoraNew::Trie_Possible() {
  auto ranks = catalogue::denseRanks(catalogue::proposalKeys(Lst_Possible), std::less<>());
  catalogue::selectionSortExchanges(std::move(ranks), [this](int m, int i) {
    Lst_Possible.swapRows(m, i);
    Lst_CodePos.swapRows(m, i);
  });
}

void Ctr_VelmoraNew::Trie_Selectionne() {
  auto ranks = catalogue::denseRanks(catalogue::rowKeys(Lst_Selectionne), std::less<>());
  catalogue::selectionSortExchanges(std::move(ranks), [this](int m, int i) {
    Lst_Selectionne.swapRows(m, i);
    Lst_CodeSelect.swapRows(m, i);
    // The observation follows its row, as the exchange of attributes through a temporary
    // does: an observation list shorter than the selection grows to the rows exchanged.
    Variable().R_Obs->swapAttributes(m + 1, i + 1);
  });
  Etq_Imperativite.setVisible(AuMoinsUneTacheImperative() != kFalse);
}

}  // namespace velmora
