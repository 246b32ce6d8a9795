// The query engine's entry: a request record run against a read connection, through the
// stages of this folder. It decides whether a query runs as one statement on names the
// connection already knows, or inside a snapshot that reads the dictionary afresh.
//
// Design. A query goes through seven stages, one file each:
//   parser.cpp       the text read into a syntax tree (syntax.h);
//   parse_cache.cpp  queries that differ only in their quoted values share one parse and
//                    one plan, the values put in again;
//   plan.cpp         names resolved into fields (the key, an attribute, characters of the
//                    key); the range of keys to scan; which attributes to decode and keep;
//   decode.cpp       keys and the wanted attributes read straight from the stored bytes;
//   filter.cpp       the scan: key conditions before the body is decoded, then the others;
//   sort.cpp         the rows ordered by the sorts, the key settling every tie (order.h
//                    holds the one order of the language);
//   answer.cpp       one attribute per hit, one value per column.
// What passes between the stages is declared in stages.h. Nothing is shared between
// threads: the parse cache and the scan's buffers are per thread. A query outside a
// snapshot first tries names the connection knows, in one read statement that also checks
// them; when that is not enough it runs again inside a snapshot, so that an answer never
// mixes two states of the store.
#include "store/query/query.h"

#include <array>
#include <optional>
#include <string>

#include "store/query/stages.h"

namespace velmora::store {

namespace {

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
  auto rows = selectRows(names.connection, plan);
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
