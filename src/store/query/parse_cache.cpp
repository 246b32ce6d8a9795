// The parse cache of the query engine: queries that differ only in their quoted values
// share one parse and one plan. A shape is kept only when its parse reads every query of the
// shape exactly as the parser would, so the cache never changes an answer or a message.
#include <algorithm>
#include <array>
#include <charconv>
#include <unordered_map>

#include "store/query/stages.h"

namespace velmora::store {

namespace {

// A query's shape: its text with each value in double quotes replaced by its length, and
// the values in order. Queries that differ only in their values (a client code, a date)
// share a shape, and so a parse and a plan. The length stays in the shape so that the
// positions in the parse, which messages name, are the same for every query of the
// shape. False when a quote is not closed.
bool shapeOf(TextView query, Text& shape, std::vector<TextView>& values) {
  shape.clear();
  values.clear();
  std::size_t i = 0;
  while (i < query.size()) {
    const auto open = query.find(u'"', i);
    shape += query.substr(i, open == TextView::npos ? TextView::npos : open - i);
    if (open == TextView::npos) break;
    i = open;
    const auto close = query.find(u'"', i + 1);
    if (close == TextView::npos) return false;  // malformed: the parser says why
    values.push_back(query.substr(i + 1, close - i - 1));
    std::array<char, 24> digits{};
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), close - i - 1);
    shape += u'"';
    shape.append(digits.data(), written.ptr);
    shape += u'"';
    i = close + 1;
  }
  return true;
}

// Puts values into the comparisons of syntax, in the order they were written; false when
// the syntax does not have one comparison per value.
bool putValues(QuerySyntax& syntax, const std::vector<TextView>& values) {
  std::size_t k = 0;
  for (auto& condition : syntax.conditions) {
    for (auto& comparison : condition.alternatives) {
      if (k == values.size()) return false;
      comparison = comparisonOf(comparison.op, values[k++]);
    }
  }
  return k == values.size();
}

bool sameSyntax(const QuerySyntax& a, const QuerySyntax& b) {
  const auto sameField = [](const FieldName& x, const FieldName& y) {
    return x.spelling == y.spelling && x.position == y.position;
  };
  const auto sameComparison = [](const Comparison& x, const Comparison& y) {
    return x.op == y.op && x.anchor == y.anchor && x.value == y.value;
  };
  return a.verb == b.verb && a.file == b.file &&
         std::equal(
             a.conditions.begin(), a.conditions.end(), b.conditions.begin(), b.conditions.end(),
             [&](const Condition& x, const Condition& y) {
               return sameField(x.field, y.field) &&
                      std::equal(x.alternatives.begin(), x.alternatives.end(),
                                 y.alternatives.begin(), y.alternatives.end(), sameComparison);
             }) &&
         std::equal(a.sorts.begin(), a.sorts.end(), b.sorts.begin(), b.sorts.end(),
                    [&](const SortKey& x, const SortKey& y) {
                      return sameField(x.field, y.field) && x.descending == y.descending;
                    });
}

}  // namespace

// What queries of this query's shape share, with this query's values in values; nothing
// when the query is malformed or its shape's parse cannot take other values. A shape is
// kept only when putting its first query's values back into its parse gives that parse
// again, so that a kept parse always reads a query as the parser would.
Prepared* preparedFor(TextView query, std::vector<TextView>& values) {
  constexpr std::size_t kMostShapes = 256;  // a control sends a few dozen shapes
  thread_local std::unordered_map<Text, std::optional<Prepared>> prepared;
  thread_local Text shape;
  if (!shapeOf(query, shape, values)) return nullptr;
  const auto found = prepared.find(shape);
  if (found != prepared.end()) return found->second ? &*found->second : nullptr;
  QuerySyntax syntax = parseQuery(query);
  QuerySyntax rebound = syntax;
  const bool reusable = putValues(rebound, values) && sameSyntax(rebound, syntax);
  if (prepared.size() >= kMostShapes) prepared.clear();
  auto& entry = prepared[shape];
  if (reusable) entry.emplace(Prepared{std::move(syntax), std::nullopt});
  return entry ? &*entry : nullptr;
}

// The plan of a query of a prepared shape whose names stand for fields: the plan made
// for an earlier query of the shape with this query's values put in, when its names
// stood for the same fields and it asked for the same columns; else made again.
const Plan& planFor(Prepared& prepared, const std::vector<Field>& fields, TextView columns,
                    const std::vector<TextView>& values) {
  auto& kept = prepared.plan;
  if (!kept || kept->fields != fields || kept->columns != columns) {
    kept.reset();
    kept.emplace(PreparedPlan{Text(columns), fields, makePlan(prepared.syntax, fields, columns)});
  }
  putValues(kept->plan, values);
  return kept->plan;
}

}  // namespace velmora::store
