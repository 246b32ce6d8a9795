#include "support/sql_floor.h"

#include <algorithm>
#include <stdexcept>

#include "store/engine/key_bytes.h"

namespace velmora::bench {

namespace {

// Attribute n (from 1) of a record's text form, "" when absent.
TextView attribute(TextView body, int n) {
  std::size_t start = 0;
  for (int i = 1; i < n; ++i) {
    const std::size_t mark = body.find(kAttributeMark, start);
    if (mark == TextView::npos) return {};
    start = mark + 1;
  }
  const std::size_t end = body.find(kAttributeMark, start);
  return body.substr(start, end == TextView::npos ? TextView::npos : end - start);
}

// The store's order of sort values: empty first, then numbers by value, then text by code
// unit. Classified once per row, so that the sort itself compares cheaply.
struct SortValue {
  int kind = 0;  // 0 empty, 1 number, 2 text
  double value = 0;
  Text text;

  explicit SortValue(TextView v) : text(v) {
    if (v.empty()) return;
    if (isDecimalNumber(v)) {
      kind = 1;
      value = parseNumber(v).value_or(0);
      return;
    }
    kind = 2;
  }

  friend bool operator<(const SortValue& a, const SortValue& b) {
    if (a.kind != b.kind) return a.kind < b.kind;
    if (a.kind == 1 && a.value != b.value) return a.value < b.value;
    return a.text < b.text;
  }
};

Text columnText(sqlite3_stmt* statement, int column) {
  const auto* bytes = static_cast<const std::uint8_t*>(sqlite3_column_blob(statement, column));
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
  return store::decodeText({bytes, size});
}

}  // namespace

SqlFloor::SqlFloor(const std::string& path) {
  sqlite3* raw = nullptr;
  const int rc = sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READONLY, nullptr);
  db_.reset(raw);
  if (rc != SQLITE_OK) throw std::runtime_error("cannot open " + path);
  wholeFile_ = prepare("SELECT key, body FROM records WHERE file = ?1");
  oneRecord_ = prepare("SELECT body FROM records WHERE file = ?1 AND key = ?2");
  keyRange_ = prepare(
      "SELECT key, body FROM records WHERE file = ?1 AND key >= ?2 AND key < ?3 "
      "ORDER BY key");
  keysOnly_ = prepare("SELECT key FROM records WHERE file = ?1 ORDER BY key");
}

SqlFloor::Statement SqlFloor::prepare(const char* sql) {
  sqlite3_stmt* raw = nullptr;
  if (sqlite3_prepare_v3(db_.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &raw, nullptr) !=
      SQLITE_OK) {
    throw std::runtime_error(std::string("cannot prepare ") + sql + ": " +
                             sqlite3_errmsg(db_.get()));
  }
  return Statement(raw);
}

NorvikRecord SqlFloor::sortedColumns(const Text& file, int sortAttribute, int extraAttribute) {
  struct Row {
    SortValue sortValue;
    Text key;
    Text extra;
  };
  const std::string fileName = toUtf8(file);
  sqlite3_stmt* s = wholeFile_.get();
  sqlite3_reset(s);
  sqlite3_bind_text(s, 1, fileName.c_str(), -1, SQLITE_TRANSIENT);
  std::vector<Row> rows;
  while (sqlite3_step(s) == SQLITE_ROW) {
    const Text body = columnText(s, 1);
    rows.push_back(Row{SortValue(attribute(body, sortAttribute)), columnText(s, 0),
                       Text(attribute(body, extraAttribute))});
  }
  std::sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) {
    if (a.sortValue < b.sortValue) return true;
    if (b.sortValue < a.sortValue) return false;
    return a.key < b.key;
  });
  NorvikRecord answer;
  for (Row& row : rows) {
    answer.appendAttribute(
        {std::move(row.key), std::move(row.sortValue.text), std::move(row.extra)});
  }
  return answer;
}

std::shared_ptr<NorvikRecord> SqlFloor::read(const Text& file, const Text& key) {
  const std::string fileName = toUtf8(file);
  const std::vector<std::uint8_t> keyBytes = store::encodeText(key);
  sqlite3_stmt* s = oneRecord_.get();
  sqlite3_reset(s);
  sqlite3_bind_text(s, 1, fileName.c_str(), -1, SQLITE_TRANSIENT);
  sqlite3_bind_blob(s, 2, keyBytes.data(), static_cast<int>(keyBytes.size()), SQLITE_STATIC);
  if (sqlite3_step(s) != SQLITE_ROW) return nullptr;
  return std::make_shared<NorvikRecord>(columnText(s, 0));
}

NorvikRecord SqlFloor::clientTemplates(const Text& file, const Text& client, const Text& firstDay,
                                       const Text& lastDay, bool care) {
  const std::string fileName = toUtf8(file);
  const std::vector<std::uint8_t> lower = store::encodeText(client);
  std::vector<std::uint8_t> upper = lower;
  ++upper.back();  // client codes are digits: the last byte never overflows
  sqlite3_stmt* s = keyRange_.get();
  sqlite3_reset(s);
  sqlite3_bind_text(s, 1, fileName.c_str(), -1, SQLITE_TRANSIENT);
  sqlite3_bind_blob(s, 2, lower.data(), static_cast<int>(lower.size()), SQLITE_STATIC);
  sqlite3_bind_blob(s, 3, upper.data(), static_cast<int>(upper.size()), SQLITE_STATIC);
  NorvikRecord answer;
  while (sqlite3_step(s) == SQLITE_ROW) {
    Text key = columnText(s, 0);
    // Dates are five digits: their text order is their order as numbers.
    if (!lastDay.empty() && TextView(key).substr(5, 5) > TextView(lastDay)) continue;
    const Text body = columnText(s, 1);
    const TextView end = attribute(body, 1);
    if (!end.empty() && end < TextView(firstDay)) continue;
    if (attribute(body, 4).empty()) continue;
    if ((attribute(body, 3) == u"S") != care) continue;
    answer.appendAttribute({std::move(key)});
  }
  return answer;
}

std::vector<Text> SqlFloor::keys(const Text& file) {
  const std::string fileName = toUtf8(file);
  sqlite3_stmt* s = keysOnly_.get();
  sqlite3_reset(s);
  sqlite3_bind_text(s, 1, fileName.c_str(), -1, SQLITE_TRANSIENT);
  std::vector<Text> found;
  while (sqlite3_step(s) == SQLITE_ROW) found.push_back(columnText(s, 0));
  return found;
}

}  // namespace velmora::bench
