// The last step of both template searches: R_TablePossible and R_TableSelection turned
// into the rows of Lst_Possible / Lst_CodePos and, when the lower half is wanted, of
// Lst_Selectionne / Lst_CodeSelect with R_Obs, W_Total and Txt_Duree.
#pragma once

#include <functional>

#include <velmora/control/ctr_velmora_new.h>

namespace velmora::search {

enum class RowEnd {
  kWeekly,    // "  " then value 3 of the proposal row: "" or "*"
  kFloating,  // "  *" on every row
};

struct SearchFill {
  Ctr_VelmoraNew& control;
  bool autre;  // W_TypeAct is "AUTRE"
  RowEnd end;
  std::function<void()> triePossible;
  std::function<void()> trieSelectionne;
};

// Under continue on error, as the searches run.
void fillUpperList(const SearchFill& fill);
void fillLowerHalf(const SearchFill& fill);

}  // namespace velmora::search
