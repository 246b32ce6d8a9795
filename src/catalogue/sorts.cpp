// Trie_Possible and Trie_Selectionne: the list boxes don't sort themselves, since rows,
// codes and observations live side by side and must move together.
#include <vector>

#include <velmora/control/ctr_velmora_new.h>
#include "catalogue/selection_order.h"
#include "control/module_slots.h"

namespace velmora {

using namespace Variable;

namespace {

// Rows marked "*" at position 88 (floating templates) go behind all the others.
Text proposalKey(const Text& row) {
  return (trimBlanks(mid(row, 88, 1)).empty() ? u"1" : u"2") + row;
}

}  // namespace

void Ctr_VelmoraNew::Trie_Possible() {
  const int n = Lst_Possible.ListCount();
  std::vector<Text> keys;
  keys.reserve(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) keys.push_back(proposalKey(Lst_Possible.List(i)));
  catalogue::selectionSortExchanges(std::move(keys), [this](int m, int i) {
    Lst_Possible.swapRows(m, i);
    Lst_CodePos.swapRows(m, i);
  });
}

void Ctr_VelmoraNew::Trie_Selectionne() {
  const int n = Lst_Selectionne.ListCount();
  std::vector<Text> keys;
  keys.reserve(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) keys.push_back(Lst_Selectionne.List(i));
  catalogue::selectionSortExchanges(std::move(keys), [this](int m, int i) {
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
