// Remplir_Soins: the whole care-act catalogue in Lst_Possible, sorted by label. An act
// whose regroupment or care type is missing is left out; the selection is not touched.
#include <velmora/control/ctr_velmora_new.h>
#include "control/control_private.h"
#include "control/error_regime.h"
#include "control/read_snapshot.h"
#include "rows/row_format.h"
#include "tables/working_table.h"

namespace velmora {

void Ctr_VelmoraNew::Remplir_Soins() {
  const SessionInUse inUse(d_->session);
  const ProcedureSnapshot snapshot;
  // The proposal starts empty.
  resumeNext([&] { Lst_Possible.Clear(); });
  resumeNext([&] { Lst_CodePos.Clear(); });
  // Every care act, sorted by label, with its label and duration.
  NorvikRecord request;
  request.set(1, u"SSELECT SSIADSOINS PAR 1");
  request.set(2, u"SSIADSOINS");
  request.set(3, u"0 1 4");
  RecordRef answer;
  long nombre = 0;
  resumeNext([&] { answer = Variable().TheDatabase->RunQuery(request.r(), u"", nombre); });
  // A failing test runs its true branch: nothing to walk either way.
  if (testOrTrue([&] { return tables::defaultIsEmpty(*answer); })) return;
  // A row for each act whose regroupment and care type are found.
  const int count = answer->DCount();
  for (int i = 1; i <= count; ++i) {
    const Text& code = answer->r(i, 1);
    Err().Clear();
    resumeNext(
        [&] { Variable().R_RegroupSoins = Variable().F_RegroupSoins->ReadRecord(left(code, 2)); });
    if (Err().Number == errors::kRecordNotFound) continue;
    Err().Clear();
    resumeNext([&] { Variable().R_TypeSoins = Variable().F_TypeSoins->ReadRecord(left(code, 4)); });
    if (Err().Number == errors::kRecordNotFound) continue;
    Text row;
    row.reserve(85);
    resumeNext([&] { rows::appendTextColumn(row, Variable().R_RegroupSoins->r(1)); });
    resumeNext([&] { rows::appendTextColumn(row, Variable().R_TypeSoins->r(1)); });
    rows::appendTextColumn(row, answer->r(i, 2));
    resumeNext([&] { rows::appendProposalDuration(row, answer->r(i, 3)); });
    std::vector<Text> whole;
    resumeNext([&] {
      whole = rows::wholeColumns(Variable().R_RegroupSoins->r(1), Variable().R_TypeSoins->r(1),
                                 answer->r(i, 2));
    });
    resumeNext([&] { Lst_Possible.AddItem(row, std::move(whole)); });
    resumeNext([&] { Lst_CodePos.AddItem(code); });
  }
  resumeNext([&] { Trie_Possible(); });
}

}  // namespace velmora
