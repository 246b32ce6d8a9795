// The filtering stage of a query: the scan of a plan's range of keys, each candidate tested
// on its key first and on its decoded attributes then. A condition holds when any value of
// its field meets any of its comparisons, in the one order of the query language.
#include <algorithm>

#include "store/query/order.h"
#include "store/query/stages.h"

namespace velmora::store {

// The characters of the key that a key-part field names, as mid() would give them.
TextView keyPartView(TextView key, const Field& field) {
  if (field.start < 1 || field.length <= 0 || static_cast<std::size_t>(field.start) > key.size()) {
    return {};
  }
  return key.substr(static_cast<std::size_t>(field.start - 1),
                    static_cast<std::size_t>(field.length));
}

namespace {

bool startsWith(TextView text, TextView prefix) {
  return text.substr(0, prefix.size()) == prefix;
}
bool endsWith(TextView text, TextView suffix) {
  return text.size() >= suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}

bool holds(TextView subject, const Comparison& c) {
  if (c.op == Operator::Equal || c.op == Operator::NotEqual) {
    bool equal = false;
    switch (c.anchor) {
      case Anchor::Whole:
        equal = subject == c.value;
        break;
      case Anchor::Leading:
        equal = startsWith(subject, c.value);
        break;
      case Anchor::Trailing:
        equal = endsWith(subject, c.value);
        break;
    }
    return equal == (c.op == Operator::Equal);
  }
  TextView part = subject;
  if (c.anchor == Anchor::Leading) part = part.substr(0, c.value.size());
  if (c.anchor == Anchor::Trailing && part.size() > c.value.size()) {
    part = part.substr(part.size() - c.value.size());
  }
  const int order = compareOrdered(part, c.value);
  switch (c.op) {
    case Operator::Less:
      return order < 0;
    case Operator::LessOrEqual:
      return order <= 0;
    case Operator::Greater:
      return order > 0;
    case Operator::GreaterOrEqual:
      return order >= 0;
    default:
      return false;
  }
}

bool meets(const std::vector<TextView>& values, const std::vector<Comparison>& alternatives) {
  return std::any_of(values.begin(), values.end(), [&](TextView value) {
    return std::any_of(alternatives.begin(), alternatives.end(),
                       [&](const Comparison& c) { return holds(value, c); });
  });
}

bool meetsKeyConditions(const Plan& plan, TextView key) {
  return std::all_of(plan.keyConditions.begin(), plan.keyConditions.end(), [&](const auto& c) {
    const TextView subject = c.field.kind == Field::Kind::Key ? key : keyPartView(key, c.field);
    return std::any_of(c.alternatives.begin(), c.alternatives.end(),
                       [&](const Comparison& comparison) { return holds(subject, comparison); });
  });
}

bool meetsRecordConditions(const Plan& plan, const Scratch& scratch) {
  return std::all_of(
      plan.recordConditions.begin(), plan.recordConditions.end(), [&](const auto& c) {
        return meets(scratch.values[slotOf(plan, c.field.attribute)], c.alternatives);
      });
}

}  // namespace

// The rows that meet the conditions; nothing when the scan saw another state of the file
// than the one the plan's names were known in.
std::optional<std::vector<Row>> selectRows(ReadConnection& connection, const Plan& plan) {
  std::vector<Row> rows;
  if (plan.emptyRange) return rows;
  rows.reserve(16);  // one client's records at one allocation
  const bool withBody = !plan.attributes.empty();
  thread_local Scratch scratch;  // its buffers serve every query of the thread
  const bool sameState = connection.scanInCachedState(
      plan.file, plan.lower, plan.upper, withBody, [&](auto keyBytes, auto body) {
        decodeKey(keyBytes, scratch.key);
        if (!meetsKeyConditions(plan, scratch.key)) return;
        if (withBody) {
          decodeAttributes(body, plan.attributes, scratch);
          ++connection.statistics().decodedRecords;
          if (!meetsRecordConditions(plan, scratch)) return;
        }
        Row& row = rows.emplace_back(Row{scratch.key, {}});
        if (!plan.keepsAttributes) return;
        row.attributes.resize(scratch.values.size());
        for (std::size_t slot = 0; slot < scratch.values.size(); ++slot) {
          if (!plan.kept[slot]) continue;
          row.attributes[slot].assign(scratch.values[slot].begin(), scratch.values[slot].end());
        }
      });
  if (!sameState) return std::nullopt;
  return rows;
}

}  // namespace velmora::store
