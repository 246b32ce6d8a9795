// What the stages of a query pass to each other: the fields a query's names stand for,
// the plan made of them, the rows a scan keeps, and the parse cache's entries. Each stage
// is one file of this folder; query.cpp says how they chain.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <velmora/base/text.h>
#include <velmora/store/record.h>
#include "store/engine/read_connection.h"
#include "store/query/syntax.h"

namespace velmora::store {

// Fails with errors::kBadQuery, the message prefixed "requête : ".
[[noreturn]] void badRequest(const std::string& what);

// A field once its name is known: the key, an attribute, or characters of the key.
struct Field {
  enum class Kind { Key, Attribute, KeyPart };
  Kind kind = Kind::Key;
  int attribute = 0;
  int start = 0;
  int length = 0;

  bool readsRecord() const { return kind == Kind::Attribute; }
  bool operator==(const Field&) const = default;
};

struct ResolvedCondition {
  Field field;
  std::vector<Comparison> alternatives;
};

struct ResolvedSort {
  Field field;
  bool descending = false;
};

// One candidate record: its key and, when the query needs them, the attributes it reads.
struct Row {
  Text key;
  std::vector<std::vector<Text>> attributes;  // index = position in Plan::attributes
};

struct Plan {
  Text file;
  std::vector<ResolvedCondition> keyConditions;     // tested before the body is read
  std::vector<ResolvedCondition> recordConditions;  // need attributes
  std::vector<ResolvedSort> sorts;
  std::vector<int> columns;
  std::vector<int> attributes;  // attribute numbers to decode, ascending
  std::vector<bool> kept;       // by position in attributes: read by the sort or the answer
  std::vector<std::uint8_t> lower;
  std::vector<std::uint8_t> upper;  // empty: no upper bound
  bool emptyRange = false;
  bool keepsAttributes = false;  // any of kept
  std::vector<bool> lastUse;     // by position in columns: no later column reads the same
  // Where each condition, in the order written, went: recordConditions or keyConditions,
  // and its index there; so that values can be put into the plan again.
  std::vector<std::pair<bool, std::size_t>> placeOf;
};

// Where a plan takes files and dictionary names from: the file, in a snapshot; or only
// what the connection already knows, for a query run as one statement.
struct Names {
  ReadConnection& connection;
  bool cachedOnly = false;
};

// The position of an attribute in Plan::attributes (which holds it).
inline std::size_t slotOf(const Plan& plan, int attribute) {
  return static_cast<std::size_t>(
      std::lower_bound(plan.attributes.begin(), plan.attributes.end(), attribute) -
      plan.attributes.begin());
}

// What a scan reuses from one record to the next, so that a record that fails the
// conditions costs no allocation: its key and body as text, and the wanted attributes'
// values as views of the body.
struct Scratch {
  Text key;
  Text body;
  std::vector<std::vector<TextView>> values;  // index = position in Plan::attributes
};

// What queries of one shape share: the parse of the first, and the plan last made for
// them with the fields their names stood for and the columns asked for.
struct PreparedPlan {
  Text columns;
  std::vector<Field> fields;
  Plan plan;
};

struct Prepared {
  QuerySyntax syntax;  // with the values of the first query of the shape
  std::optional<PreparedPlan> plan;
};

// Planning (plan.cpp). The fields a query's names stand for, its conditions' then its
// sorts', in the order written; false when a name is not known from where names are taken.
// An unknown file fails with errors::kUnknownFile, an unknown name with kUnknownName.
bool resolveFields(const Names& names, const QuerySyntax& syntax, std::vector<Field>& fields);
// The plan of a query whose names stand for fields; bad columns fail with kBadQuery.
Plan makePlan(const QuerySyntax& syntax, const std::vector<Field>& fields, TextView columns);
// Puts a query's values, in the order written, into the comparisons of a plan made for
// another query of the same shape, and works out its range again.
void putValues(Plan& plan, const std::vector<TextView>& values);

// Decoding (decode.cpp): a stored key, and the wanted attributes (ascending) of a stored
// body as views into scratch.body; an absent attribute counts as one empty value.
void decodeKey(std::span<const std::uint8_t> bytes, Text& key);
void decodeAttributes(std::span<const std::uint8_t> bytes, const std::vector<int>& wanted,
                      Scratch& scratch);

// Filtering (filter.cpp). The characters of the key that a key-part field names, as mid()
// would give them; the rows that meet the plan's conditions, nothing when the scan saw
// another state of the file than the one the plan's names were known in.
TextView keyPartView(TextView key, const Field& field);
std::optional<std::vector<Row>> selectRows(ReadConnection& connection, const Plan& plan);

// Sorting (sort.cpp): the order of the rows as indices into rows, which stay in place.
std::vector<std::size_t> sortedOrder(const Plan& plan, const std::vector<Row>& rows);

// The answer (answer.cpp): one attribute per row in order, one value per column; the
// rows' texts move into it.
NorvikRecord answerOf(const Plan& plan, std::vector<Row>& rows,
                      const std::vector<std::size_t>& order);

// The parse cache (parse_cache.cpp). What queries of this query's shape share, with this
// query's values in values; nothing when the query is malformed or its shape's parse
// cannot take other values. Then the plan for a query of that shape.
Prepared* preparedFor(TextView query, std::vector<TextView>& values);
const Plan& planFor(Prepared& prepared, const std::vector<Field>& fields, TextView columns,
                    const std::vector<TextView>& values);

}  // namespace velmora::store
