// The whole task catalogue of the show-all switch: three sorted answers, types T (key,
// attribute 1), groups G (key, attribute 1, type key) and tasks K (key, attribute 1,
// group key, duration), merged into one row per task.
//
// The walk keeps a group cursor j across types and searches groups and tasks from the
// top when it has to; those searches stop at the first cell that matches or reads "",
// so a "" in the middle of an answer hides what lies behind it. Here the searches are
// answered from first positions computed once, and the walk visits the same rows in the
// same order at a cost that grows with the size of the answers, not with their product.
#pragma once

#include <optional>
#include <vector>

#include <velmora/store/record.h>
#include "base/text_map.h"

namespace velmora::catalogue {

// One row of the catalogue: the answer rows of its type, group and task.
struct CatalogueRow {
  int type;
  int group;
  int task;
  friend bool operator==(const CatalogueRow&, const CatalogueRow&) = default;
};

std::vector<CatalogueRow> taskCatalogueWalk(const NorvikRecord& T, const NorvikRecord& G,
                                            const NorvikRecord& K);

// The durations known for the client (R_TableDurees: value 1 code, value 2 minutes) that
// override the catalogue's. The walk over the table rewrites the row for each row that
// names the code with a duration neither "" nor "0", so the last of them wins; one wider
// than the five places of the duration cannot be written and leaves the row as it was.
class DurationOverrides {
 public:
  explicit DurationOverrides(const NorvikRecord& durees);

  struct Override {
    std::optional<Text> duration;  // the last one that fits, if any
    bool anyTooWide = false;       // a valid one did not fit: its rewrite failed
  };
  // Nothing when no row of the table names the code with a duration.
  const Override* find(TextView code) const;

 private:
  TextMap<Override> byCode_;
};

// The row with positions 1-80 kept and d right-aligned in positions 81-85; a d wider
// than 5 fails with the invalid-call error.
Text withOverriddenDuration(TextView row, TextView d);

}  // namespace velmora::catalogue
