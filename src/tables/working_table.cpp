// The working tables' end and emptiness tests, and the reading of an item's row. The
// index of a table answers a merge's scan for a code in constant time as the table grows.
#include "tables/working_table.h"

namespace velmora::tables {

bool rowIsEmpty(const NorvikRecord& table, int row) {
  const auto& attributes = table.attributes();
  if (row < 1 || static_cast<std::size_t>(row) > attributes.size()) return true;
  const auto& values = attributes[static_cast<std::size_t>(row) - 1];
  return values.size() == 1 && values.front().empty();
}

bool defaultIsEmpty(const NorvikRecord& record) {
  const auto& attributes = record.attributes();
  if (attributes.empty()) return true;
  return attributes.size() == 1 && rowIsEmpty(record, 1);
}

TableItem tableItem(const NorvikRecord& table, int row) {
  return {table.r(row, 1), table.r(row, 2), table.r(row, 3)};
}

TableScan::TableScan(const NorvikRecord& table) {
  const int count = static_cast<int>(table.attributes().size());
  for (int row = 1; row <= count; ++row) {
    if (!rowIsEmpty(table, row)) firstRow_.try_emplace(table.r(row, 1), row);
  }
  advanceFirstEmpty(table);
}

int TableScan::stopRow(TextView code) const {
  const auto found = firstRow_.find(code);
  if (found != firstRow_.end() && found->second < firstEmpty_) return found->second;
  return firstEmpty_;
}

void TableScan::noteWritten(const NorvikRecord& table, int row) {
  if (rowIsEmpty(table, row)) return;
  // Rows are written once, when empty, so a row's value 1 never changes afterwards.
  const auto [at, inserted] = firstRow_.try_emplace(table.r(row, 1), row);
  if (!inserted && row < at->second) at->second = row;
  if (row == firstEmpty_) advanceFirstEmpty(table);
}

void TableScan::advanceFirstEmpty(const NorvikRecord& table) {
  while (!rowIsEmpty(table, firstEmpty_)) ++firstEmpty_;
}

}  // namespace velmora::tables
