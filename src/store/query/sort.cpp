// The sorting stage of a query: the rows put in the order of its sorts, the key settling
// ties. The texts compared are laid out once in one buffer and the rows never move; only
// their indices are sorted.
#include <algorithm>

#include "store/query/order.h"
#include "store/query/stages.h"

namespace velmora::store {

namespace {

const std::vector<Text>& valuesOf(const Plan& plan, const Row& row, int attribute) {
  const auto at = std::lower_bound(plan.attributes.begin(), plan.attributes.end(), attribute);
  return row.attributes[static_cast<std::size_t>(at - plan.attributes.begin())];
}

// A buffer kept for the next query of the thread, unless a large answer made it large.
template <class Buffer>
void giveBackIfLarge(Buffer& buffer) {
  constexpr std::size_t kKept = 4096;
  if (buffer.capacity() > kKept) Buffer().swap(buffer);
}

// Appends the text a sort compares for a row: the key, characters of it, or an
// attribute's values joined by value marks.
void appendSortText(const Plan& plan, const Row& row, const Field& field, Text& out) {
  switch (field.kind) {
    case Field::Kind::Key:
      out += row.key;
      return;
    case Field::Kind::KeyPart:
      out += keyPartView(row.key, field);
      return;
    case Field::Kind::Attribute: {
      const auto& values = valuesOf(plan, row, field.attribute);
      out += values.front();
      for (std::size_t i = 1; i < values.size(); ++i) {
        out.push_back(kValueMark);
        out += values[i];
      }
      return;
    }
  }
}

}  // namespace

// The order of the rows: indices into rows, which stay where they are. The texts the
// sort compares are laid out once, row after row, in one buffer, so that the comparisons
// read contiguous memory and no row needs an allocation of its own.
std::vector<std::size_t> sortedOrder(const Plan& plan, const std::vector<Row>& rows) {
  const std::size_t width = plan.sorts.size();
  thread_local Text buffer;
  thread_local std::vector<std::size_t> ends;  // width per row: where each text ends
  buffer.clear();
  ends.clear();
  ends.reserve(rows.size() * width);
  for (const auto& row : rows) {
    for (const auto& sort : plan.sorts) {
      appendSortText(plan, row, sort.field, buffer);
      ends.push_back(buffer.size());
    }
  }
  thread_local std::vector<OrderedText> keys;  // width per row, worked out once
  keys.clear();
  keys.reserve(ends.size());
  const TextView all(buffer);
  std::size_t start = 0;
  for (const std::size_t end : ends) {
    keys.emplace_back(all.substr(start, end - start));
    start = end;
  }
  std::vector<std::size_t> order(rows.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  const auto before = [&](std::size_t a, std::size_t b) {
    for (std::size_t s = 0; s < width; ++s) {
      const int c = compareOrdered(keys[a * width + s], keys[b * width + s]);
      if (c != 0) return plan.sorts[s].descending ? c > 0 : c < 0;
    }
    return a < b;  // equal in every criterion: only when the key is not among them twice
  };
  // Sorted on the key alone, the rows of a scan, in key order, are often in order already:
  // checking costs one comparison a row.
  const bool onKeyAlone = width == 1 && plan.sorts.front().field.kind == Field::Kind::Key &&
                          !plan.sorts.front().descending;
  if (!onKeyAlone || !std::is_sorted(order.begin(), order.end(), before)) {
    std::sort(order.begin(), order.end(), before);
  }
  giveBackIfLarge(buffer);
  giveBackIfLarge(ends);
  giveBackIfLarge(keys);
  return order;
}

}  // namespace velmora::store
