// The planning stage of a query: the names of a parsed query resolved into fields (the key,
// an attribute, characters of the key) and a plan made of them. The plan says which range of
// keys to scan, which conditions a key decides, which attributes to decode and keep.
#include <algorithm>
#include <string>

#include <velmora/base/failure.h>
#include "base/message.h"
#include "store/query/stages.h"

namespace velmora::store {

void badRequest(const std::string& what) {
  throw Failure(errors::kBadQuery, "requête : " + what);
}

namespace {

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

// Whether the file exists; nothing when names are taken from what the connection knows
// and it does not know the file as one.
std::optional<bool> fileExists(const Names& names, const Text& file) {
  if (!names.cachedOnly) return names.connection.hasFile(file);
  const auto known = names.connection.knownFile(file);
  if (!known || !*known) return std::nullopt;
  return true;
}

// Works out the range of keys to scan from the key conditions' values.
void narrowRange(Plan& plan) {
  plan.lower.clear();
  plan.upper.clear();
  plan.emptyRange = false;
  for (const auto& condition : plan.keyConditions) narrowRange(plan, condition);
}

}  // namespace

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

}  // namespace velmora::store
