// Working tables (R_TablePossible, R_TableSelection, R_TableDurees): a row is an
// attribute, a field a value, and the first empty row marks the end. The merges scan a
// table from row 1 for the first row that is empty or holds a code in value 1; the
// index below answers that scan in constant time for a table that grows only by the
// merge that owns it.
#pragma once

#include <velmora/base/text.h>
#include <velmora/store/record.h>
#include "base/text_map.h"

namespace velmora::tables {

// True when attribute `row` reads "" (also past the end).
bool rowIsEmpty(const NorvikRecord& table, int row);
// True when the record's default value is "": no attribute, or one empty attribute.
bool defaultIsEmpty(const NorvikRecord& record);

// Values 1, 2 and 3 of a row of a selection table (R_TableSelection, W_Aff): the item's
// code, duration and observation.
struct TableItem {
  Text code;
  Text duration;
  Text observation;
};
TableItem tableItem(const NorvikRecord& table, int row);

class TableScan {
 public:
  // Indexes the rows the table holds now.
  explicit TableScan(const NorvikRecord& table);

  // The row where a scan from row 1 stops: the first row that is empty or whose value 1
  // equals code.
  int stopRow(TextView code) const;
  // To be called after each write to `row`, so that the index follows the table.
  void noteWritten(const NorvikRecord& table, int row);

 private:
  void advanceFirstEmpty(const NorvikRecord& table);

  int firstEmpty_ = 1;
  // First non-empty row for each value 1.
  TextMap<int> firstRow_;
};

}  // namespace velmora::tables
