#include "store/query/query.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string>
#include <unordered_map>

#include <velmora/base/failure.h>
#include "base/message.h"
#include "store/query/order.h"
#include "store/query/syntax.h"

namespace velmora::store {

namespace {

[[noreturn]] void badRequest(const std::string& what) {
  throw Failure(errors::kBadQuery, "requête : " + what);
}

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

bool isDigits(TextView text) {
  return !text.empty() &&
         std::all_of(text.begin(), text.end(), [](char16_t c) { return c >= u'0' && c <= u'9'; });
}

int attributeNumber(TextView digits, std::size_t position) {
  if (digits.size() > 6) {
    badRequest("à la position " + std::to_string(position) + " : le numéro d'attribut " +
               toUtf8(digits) + " est trop grand");
  }
  return static_cast<int>(*parseNumber(digits));  // six digits at most: exact
}

// Where a plan takes files and dictionary names from: the file, in a snapshot; or only
// what the connection already knows, for a query run as one statement.
struct Names {
  ReadConnection& connection;
  bool cachedOnly = false;
};

// The field a name stands for; nothing when names are taken from what the connection
// knows and it does not know this one, or knows it as unknown (the file then says why).
std::optional<Field> resolve(const Names& names, const Text& file, const FieldName& name) {
  if (name.spelling == u"@ID") return Field{};
  if (isDigits(name.spelling)) {
    const int number = attributeNumber(name.spelling, name.position);
    if (number == 0) return Field{};
    return Field{Field::Kind::Attribute, number};
  }
  std::optional<DictionaryItem> read;
  const std::optional<DictionaryItem>* item = &read;
  if (names.cachedOnly) {
    item = names.connection.knownItem(file, name.spelling);
    if (item == nullptr || !*item) return std::nullopt;
  } else {
    read = names.connection.dictionaryItem(file, name.spelling);
  }
  if (!*item) {
    throw Failure(errors::kUnknownName, "requête : à la position " + std::to_string(name.position) +
                                            " : nom de dictionnaire inconnu « " +
                                            excerpt(toUtf8(name.spelling)) + " » dans le fichier " +
                                            toUtf8(file));
  }
  const DictionaryItem& known = **item;
  if (known.isKeyPart()) return Field{Field::Kind::KeyPart, 0, known.keyStart, known.keyLength};
  if (known.attribute == 0) return Field{};
  return Field{Field::Kind::Attribute, known.attribute};
}

std::vector<int> parseColumns(TextView text) {
  std::vector<int> columns;
  std::size_t i = 0;
  while (i < text.size()) {
    if (text[i] == u' ') {
      ++i;
      continue;
    }
    const std::size_t start = i;
    while (i < text.size() && text[i] != u' ') ++i;
    const TextView word = text.substr(start, i - start);
    if (!isDigits(word)) {
      badRequest("colonnes : « " + excerpt(toUtf8(word)) + " » à la position " +
                 std::to_string(start + 1) + " n'est pas un numéro d'attribut");
    }
    columns.push_back(attributeNumber(word, start + 1));
  }
  if (columns.empty()) columns.push_back(0);
  return columns;
}

// Narrows [lower, upper) to the keys that can meet a condition on their leading
// characters; every condition is still tested on each candidate.
void narrowRange(Plan& plan, const ResolvedCondition& condition) {
  if (condition.alternatives.size() != 1) return;
  const Comparison& c = condition.alternatives.front();
  if (c.op != Operator::Equal || c.anchor == Anchor::Trailing) return;
  const Field& f = condition.field;
  std::vector<std::uint8_t> lower;
  std::vector<std::uint8_t> upper;
  if (f.kind == Field::Kind::Key) {
    lower = encodeText(c.value);
    if (c.anchor == Anchor::Leading) {
      upper = prefixUpperBound(lower);
    } else {
      upper = lower;
      upper.push_back(0);  // the smallest key above the exact one
    }
  } else if (f.kind == Field::Kind::KeyPart && f.start == 1) {
    lower = encodeText(TextView(c.value).substr(0, static_cast<std::size_t>(f.length)));
    upper = prefixUpperBound(lower);
  } else {
    return;
  }
  if (lower > plan.lower) plan.lower = std::move(lower);
  if (!upper.empty() && (plan.upper.empty() || upper < plan.upper)) plan.upper = std::move(upper);
  if (!plan.upper.empty() && plan.lower >= plan.upper) plan.emptyRange = true;
}

void needAttribute(Plan& plan, const Field& field) {
  if (field.readsRecord()) plan.attributes.push_back(field.attribute);
}

std::size_t slotOf(const Plan& plan, int attribute) {
  return static_cast<std::size_t>(
      std::lower_bound(plan.attributes.begin(), plan.attributes.end(), attribute) -
      plan.attributes.begin());
}

// Whether the file exists; nothing when names are taken from what the connection knows
// and it does not know the file as one.
std::optional<bool> fileExists(const Names& names, const Text& file) {
  if (!names.cachedOnly) return names.connection.hasFile(file);
  const auto known = names.connection.knownFile(file);
  if (!known || !*known) return std::nullopt;
  return true;
}

// The fields a query's names stand for, its conditions' then its sorts', in the order
// written; false when a name is not known from where names are taken.
bool resolveFields(const Names& names, const QuerySyntax& syntax, std::vector<Field>& fields) {
  fields.clear();
  const auto exists = fileExists(names, syntax.file);
  if (!exists) return false;
  if (!*exists) {
    throw Failure(errors::kUnknownFile, "requête : fichier inconnu « " +
                                            excerpt(toUtf8(syntax.file)) + " » dans la base " +
                                            names.connection.path());
  }
  for (const auto& condition : syntax.conditions) {
    const auto field = resolve(names, syntax.file, condition.field);
    if (!field) return false;
    fields.push_back(*field);
  }
  for (const auto& sort : syntax.sorts) {
    const auto field = resolve(names, syntax.file, sort.field);
    if (!field) return false;
    fields.push_back(*field);
  }
  return true;
}

// Works out the range of keys to scan from the key conditions' values.
void narrowRange(Plan& plan) {
  plan.lower.clear();
  plan.upper.clear();
  plan.emptyRange = false;
  for (const auto& condition : plan.keyConditions) narrowRange(plan, condition);
}

// The plan of a query whose names stand for fields (see resolveFields).
Plan makePlan(const QuerySyntax& syntax, const std::vector<Field>& fields, TextView columns) {
  Plan plan;
  plan.file = syntax.file;
  std::size_t f = 0;
  for (const auto& condition : syntax.conditions) {
    ResolvedCondition resolved{fields[f++], condition.alternatives};
    needAttribute(plan, resolved.field);
    auto& list = resolved.field.readsRecord() ? plan.recordConditions : plan.keyConditions;
    plan.placeOf.emplace_back(resolved.field.readsRecord(), list.size());
    list.push_back(std::move(resolved));
  }
  narrowRange(plan);
  bool sortsOnKey = false;
  for (const auto& sort : syntax.sorts) {
    const ResolvedSort resolved{fields[f++], sort.descending};
    sortsOnKey = sortsOnKey || resolved.field.kind == Field::Kind::Key;
    needAttribute(plan, resolved.field);
    plan.sorts.push_back(resolved);
  }
  // The key settles every tie, so that an answer never depends on storage order.
  if (!sortsOnKey) plan.sorts.push_back({Field{}, false});
  plan.columns = parseColumns(columns);
  for (const int column : plan.columns) {
    if (column > 0) plan.attributes.push_back(column);
  }
  std::sort(plan.attributes.begin(), plan.attributes.end());
  plan.attributes.erase(std::unique(plan.attributes.begin(), plan.attributes.end()),
                        plan.attributes.end());
  // Attributes only the conditions read are not kept in the rows.
  plan.kept.assign(plan.attributes.size(), false);
  for (const auto& sort : plan.sorts) {
    if (sort.field.readsRecord()) plan.kept[slotOf(plan, sort.field.attribute)] = true;
  }
  for (const int column : plan.columns) {
    if (column > 0) plan.kept[slotOf(plan, column)] = true;
  }
  plan.keepsAttributes = std::find(plan.kept.begin(), plan.kept.end(), true) != plan.kept.end();
  for (auto c = plan.columns.begin(); c != plan.columns.end(); ++c) {
    plan.lastUse.push_back(std::find(c + 1, plan.columns.end(), *c) == plan.columns.end());
  }
  return plan;
}

// Puts a query's values, in the order written, into the comparisons of a plan made for
// another query of the same shape, and works out its range again.
void putValues(Plan& plan, const std::vector<TextView>& values) {
  std::size_t k = 0;
  for (const auto& [inRecord, index] : plan.placeOf) {
    auto& condition = (inRecord ? plan.recordConditions : plan.keyConditions)[index];
    for (auto& comparison : condition.alternatives) {
      comparison = comparisonOf(comparison.op, values[k++]);
    }
  }
  narrowRange(plan);
}

// What a scan reuses from one record to the next, so that a record that fails the
// conditions costs no allocation: its key and body as text, and the wanted attributes'
// values as views of the body.
struct Scratch {
  Text key;
  Text body;
  std::vector<std::vector<TextView>> values;  // index = position in Plan::attributes
};

char16_t unitAt(std::span<const std::uint8_t> bytes, std::size_t unit) {
  return static_cast<char16_t>((bytes[2 * unit] << 8) | bytes[2 * unit + 1]);
}

void decodeKey(std::span<const std::uint8_t> bytes, Text& key) {
  key.resize(bytes.size() / 2);
  for (std::size_t u = 0; u < key.size(); ++u) key[u] = unitAt(bytes, u);
}

// Reads the wanted attributes (ascending) straight from the stored UTF-16BE text form,
// stopping after the last one wanted. An absent attribute counts as one empty value.
void decodeAttributes(std::span<const std::uint8_t> bytes, const std::vector<int>& wanted,
                      Scratch& scratch) {
  const std::size_t units = bytes.size() / 2;
  Text& body = scratch.body;
  body.resize(units);  // never grows below: the views stay valid
  scratch.values.resize(wanted.size());
  for (auto& values : scratch.values) values.clear();
  std::size_t slot = 0;
  std::size_t u = 0;
  for (int attribute = 1; slot < wanted.size(); ++attribute, ++u) {
    if (attribute == wanted[slot]) {
      auto& values = scratch.values[slot++];
      std::size_t begin = u;
      for (; u < units; ++u) {
        const char16_t unit = unitAt(bytes, u);
        if (unit == kAttributeMark) break;
        if (unit == kValueMark) {
          values.emplace_back(body.data() + begin, u - begin);
          begin = u + 1;
          continue;
        }
        body[u] = unit;
      }
      values.emplace_back(body.data() + begin, u - begin);
    } else {
      while (u < units && unitAt(bytes, u) != kAttributeMark) ++u;
    }
    if (u >= units) break;
  }
  for (; slot < wanted.size(); ++slot) scratch.values[slot].emplace_back();
}

const std::vector<Text>& valuesOf(const Plan& plan, const Row& row, int attribute) {
  const auto at = std::lower_bound(plan.attributes.begin(), plan.attributes.end(), attribute);
  return row.attributes[static_cast<std::size_t>(at - plan.attributes.begin())];
}

// The characters of the key that a key-part field names, as mid() would give them.
TextView keyPartView(TextView key, const Field& field) {
  if (field.start < 1 || field.length <= 0 || static_cast<std::size_t>(field.start) > key.size()) {
    return {};
  }
  return key.substr(static_cast<std::size_t>(field.start - 1),
                    static_cast<std::size_t>(field.length));
}

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

Text joined(const std::vector<Text>& values, char16_t mark) {
  Text out = values.front();
  for (std::size_t i = 1; i < values.size(); ++i) {
    out.push_back(mark);
    out += values[i];
  }
  return out;
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

// The rows that meet the conditions; nothing when the scan saw another state of the file
// than the one the plan's names were known in.
std::optional<std::vector<Row>> select(ReadConnection& connection, const Plan& plan) {
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

NorvikRecord answerOf(const Plan& plan, std::vector<Row>& rows,
                      const std::vector<std::size_t>& order) {
  NorvikRecord answer;
  for (const std::size_t i : order) {
    Row& row = rows[i];
    std::vector<Text> cells;
    cells.reserve(plan.columns.size());
    for (std::size_t c = 0; c < plan.columns.size(); ++c) {
      // The sort is done: a row's texts move into the answer when no later column reads them.
      const int column = plan.columns[c];
      if (column == 0) {
        cells.push_back(plan.lastUse[c] ? std::move(row.key) : row.key);
        continue;
      }
      // Values of a multi-valued column become subvalues, so that one hit stays one
      // attribute and one column one value.
      auto& values = row.attributes[static_cast<std::size_t>(
          std::lower_bound(plan.attributes.begin(), plan.attributes.end(), column) -
          plan.attributes.begin())];
      if (values.size() != 1) {
        cells.push_back(joined(values, kSubvalueMark));
      } else {
        cells.push_back(plan.lastUse[c] ? std::move(values.front()) : values.front());
      }
    }
    answer.appendAttribute(std::move(cells));
  }
  return answer;
}

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

// The attributes of the request as written (the query, the file, the columns), read in
// place in one pass.
std::array<TextView, 3> requestParts(TextView request) {
  std::array<TextView, 3> parts;
  std::size_t start = 0;
  for (auto& part : parts) {
    const auto mark = request.find(kAttributeMark, start);
    part = request.substr(start, mark == TextView::npos ? TextView::npos : mark - start);
    if (mark == TextView::npos) break;
    start = mark + 1;
  }
  return parts;
}

// The answer to a query, of a prepared shape (with its values) or parsed on its own;
// nothing when names are taken from what the connection knows and that is not enough, or
// no longer true of the file.
std::optional<NorvikRecord> answer(const Names& names, const QuerySyntax& syntax, TextView columns,
                                   Prepared* prepared, const std::vector<TextView>& values) {
  thread_local std::vector<Field> fields;
  if (!resolveFields(names, syntax, fields)) return std::nullopt;
  std::optional<Plan> own;
  const Plan& plan = prepared != nullptr ? planFor(*prepared, fields, columns, values)
                                         : own.emplace(makePlan(syntax, fields, columns));
  // An empty range reads nothing, so nothing would check the names it came from.
  if (names.cachedOnly && plan.emptyRange) return std::nullopt;
  auto rows = select(names.connection, plan);
  if (!rows) return std::nullopt;
  ++names.connection.statistics().queries;
  const auto order = sortedOrder(plan, *rows);
  return answerOf(plan, *rows, order);
}

}  // namespace

NorvikRecord runRequest(ReadConnection& connection, const Text& request) {
  const auto [query, file, columns] = requestParts(request);
  thread_local std::vector<TextView> values;
  Prepared* const prepared = preparedFor(query, values);
  std::optional<QuerySyntax> own;
  const QuerySyntax& syntax =
      prepared != nullptr ? prepared->syntax : own.emplace(parseQuery(query));
  if (file != syntax.file) {
    badRequest("la demande nomme le fichier « " + toUtf8(file) + " » mais la requête lit « " +
               toUtf8(syntax.file) + " »");
  }
  // A query on its own whose names the connection knows runs as one statement, the scan,
  // which is one read transaction and checks that those names still hold in it: no
  // transaction statements and no dictionary reads.
  if (!connection.inSnapshot()) {
    if (auto known = answer(Names{connection, true}, syntax, columns, prepared, values)) {
      return std::move(*known);
    }
  }
  const ReadConnection::Snapshot snapshot(connection);
  return std::move(*answer(Names{connection, false}, syntax, columns, prepared, values));
}

}  // namespace velmora::store
