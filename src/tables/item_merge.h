// The merges that turn items read from templates or from a client's task lists into the
// working tables. Each keeps the first sight of a code: the row where a scan from row 1
// stops (first empty row, or first row holding the code) decides whether an item is new.
// The scans go through TableScan, so a merge of n items costs O(n), and the tables come
// out exactly as the row-by-row scans would leave them.
#pragma once

#include <velmora/store/record.h>
#include "tables/working_table.h"

namespace velmora::tables {

// One item of a template: value 4, 5 and 8 at the same value number.
struct TemplateItem {
  TextView code;
  TextView duration;
  TextView observation;
};

// The three tables of a template search, fresh or as they stand.
class TemplateMerge {
 public:
  TemplateMerge(NorvikRecord& possible, NorvikRecord& selection, NorvikRecord& durees);

  // What a new proposal row holds in value 3: Recherche_SemaineType writes "" for a
  // template of the fixed file and "*" for a floating one; Recherche_SemaineTypeFlot
  // writes nothing there.
  enum class Mark { kNone, kFixed, kFloating };

  // The item enters the proposal when it is new there, and also the selection when its
  // template meets the intervention and no key was read: so an item already proposed
  // from a template of another day enters the selection too.
  void merge(const TemplateItem& item, Mark mark, bool matched, bool cleLue);

 private:
  // True when the item was new to the proposal and has been written there.
  bool mergeIntoPossible(const TemplateItem& item, const Text* mark);
  void mergeIntoSelection(const TemplateItem& item);

  NorvikRecord& possible_;
  NorvikRecord& selection_;
  NorvikRecord& durees_;
  TableScan possibleScan_;
  TableScan selectionScan_;
};

// The merge of a client's dated task lists, latest first: each task once, with the
// duration of the first list that names it, into R_TablePossible and R_TableDurees.
class ClientListMerge {
 public:
  ClientListMerge(NorvikRecord& possible, NorvikRecord& durees);
  void merge(TextView code, TextView duration);

 private:
  NorvikRecord& possible_;
  NorvikRecord& durees_;
  TableScan possibleScan_;
};

}  // namespace velmora::tables
