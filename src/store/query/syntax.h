// The syntax tree of a query, as read from its text before names are resolved.
#pragma once

#include <vector>

#include <velmora/base/text.h>

namespace velmora::store {

enum class Operator { Equal, NotEqual, Less, LessOrEqual, Greater, GreaterOrEqual };

// How a value compares: whole, by its leading characters ("X]") or by its trailing
// characters ("[X").
enum class Anchor { Whole, Leading, Trailing };

struct Comparison {
  Operator op = Operator::Equal;
  Anchor anchor = Anchor::Whole;
  Text value;  // without the brackets
};

// A field as written: an attribute number, "@ID", or a dictionary name.
struct FieldName {
  Text spelling;
  std::size_t position = 0;  // 1-based, for messages
};

// AVEC field op "v" [OR op "w"]...: true when any comparison holds.
struct Condition {
  FieldName field;
  std::vector<Comparison> alternatives;
};

struct SortKey {
  FieldName field;
  bool descending = false;
};

struct QuerySyntax {
  Text verb;  // SSELECT or SELECT: both answer the same way
  Text file;
  std::vector<Condition> conditions;  // all must hold
  std::vector<SortKey> sorts;         // the first ranks highest
};

// Reads a query text; a malformed one fails with errors::kBadQuery naming the 1-based
// position and what was expected there.
QuerySyntax parseQuery(TextView text);

// How a value in double quotes compares: "X]" by its leading characters, "[X" by its
// trailing ones, else whole.
Comparison comparisonOf(Operator op, TextView value);

}  // namespace velmora::store
