// Trie_Possible and Trie_Selectionne: the list boxes don't sort themselves, since rows,
// codes and observations live side by side and must move together.
#include <vector>

#include "catalogue/selection_order.h"
#include "control/ctr_velmora_new.h"

namespace velmora {

using namespace Variable;

namespace {

// The key of a proposal row is "1" or "2" followed by the row: "2" when position 88,
// with blanks trimmed, is not empty (the mark "*" of floating templates), so those rows go
// behind all the others. Compared here without building the keys.
bool markedBehind(const Text& row) {
  return row.size() >= 88 && row[87] != u' ';
}

// The rows of a list by reference, in list order.
std::vector<const Text*> rowsOf(const toolkit::ListBox& list) {
  std::vector<const Text*> rows(static_cast<std::size_t>(list.ListCount()));
  for (int i = 0; i < list.ListCount(); ++i) rows[static_cast<std::size_t>(i)] = &list.List(i);
  return rows;
}

}  // namespace

void Ctr_VelmoraNew::Trie_Possible() {
  const auto rows = rowsOf(Lst_Possible);
  std::vector<char> behind(rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) behind[i] = markedBehind(*rows[i]) ? 1 : 0;
  auto ranks = catalogue::denseRanks(static_cast<int>(rows.size()), [&](int a, int b) {
    const auto ua = static_cast<std::size_t>(a);
    const auto ub = static_cast<std::size_t>(b);
    if (behind[ua] != behind[ub]) return behind[ua] < behind[ub];
    return *rows[ua] < *rows[ub];
  });
  catalogue::selectionSortExchanges(std::move(ranks), [this](int m, int i) {
    Lst_Possible.swapRows(m, i);
    Lst_CodePos.swapRows(m, i);
  });
}

void Ctr_VelmoraNew::Trie_Selectionne() {
  const auto rows = rowsOf(Lst_Selectionne);
  auto ranks = catalogue::denseRanks(static_cast<int>(rows.size()), [&](int a, int b) {
    return *rows[static_cast<std::size_t>(a)] < *rows[static_cast<std::size_t>(b)];
  });
  catalogue::selectionSortExchanges(std::move(ranks), [this](int m, int i) {
    Lst_Selectionne.swapRows(m, i);
    Lst_CodeSelect.swapRows(m, i);
    // The observation follows its row through a temporary, as attribute writes: an
    // observation list shorter than the selection grows to the rows exchanged.
    NorvikRecord temporary;
    temporary.set(R_Obs->r(m + 1));
    R_Obs->set(m + 1, R_Obs->r(i + 1));
    R_Obs->set(i + 1, temporary.r());
  });
  Etq_Imperativite.setVisible(AuMoinsUneTacheImperative() != kFalse);
}

}  // namespace velmora
