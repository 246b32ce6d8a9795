// The PostgreSQL backend's reads of files, dictionary items, records and range scans, as
// unnamed statements; inside a snapshot, each committed state's answers are kept for the
// next snapshots of that state. The session beneath is postgresql_read_session.cpp.
#include "store/postgresql/postgresql_read_connection.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "store/engine/key_bytes.h"

namespace velmora::store {

namespace {

constexpr std::array<const char*, 9> kSql = {
    "SELECT 1 FROM files WHERE name = $1",
    "SELECT body FROM records WHERE file = $1 AND key = $2",
    "SELECT attribute, key_start, key_length FROM dictionary WHERE file = $1 AND name = $2",
    "SELECT key%s FROM records WHERE file = $1 AND key >= $2 ORDER BY key",
    "SELECT key%s FROM records WHERE file = $1 AND key >= $2 AND key < $3 ORDER BY key",
    "SELECT key, body%s FROM records WHERE file = $1 AND key >= $2 ORDER BY key",
    "SELECT key, body%s FROM records WHERE file = $1 AND key >= $2 AND key < $3 ORDER BY key",
    "SELECT key, body FROM records WHERE file = $1 AND key >= $2 ORDER BY key LIMIT $3",
    "SELECT key, body FROM records WHERE file = $1 AND key >= $2 AND key < $4 ORDER BY key "
    "LIMIT $3",
};

// The state version as a last column, read by the same statement and so in its snapshot.
constexpr std::string_view kStateColumn = ", (SELECT generation FROM velmora_store)";

std::string sqlOf(const char* pattern, bool withState) {
  std::string sql = pattern;
  const auto mark = sql.find("%s");
  if (mark != std::string::npos) sql.replace(mark, 2, withState ? kStateColumn : "");
  return sql;
}

}  // namespace

Result PostgresqlReadConnection::run(Kind kind, const Parameters& parameters, bool withState) {
  return read(sqlOf(kSql[kind], withState), parameters, 1);
}

bool PostgresqlReadConnection::lookupFile(const Text& name) {
  if (!inTransaction_) {
    return PQntuples(run(kFileExists, Parameters().text(toUtf8(name))).get()) > 0;
  }
  // In a snapshot, every name at the first look-up: one round trip for the dozen files a
  // procedure opens.
  if (!cache_.fileNames) {
    std::set<std::string, std::less<>> names;
    for (const Text& file : fileNames()) names.insert(toUtf8(file));
    cache_.fileNames = std::move(names);
  }
  return cache_.fileNames->contains(toUtf8(name));
}

std::optional<Text> PostgresqlReadConnection::lookupBody(const Text& file, const Text& key) {
  std::vector<std::uint8_t> bytes = encodeText(key);
  if (!inTransaction_) {
    const Result result = run(kReadRecord, Parameters().text(toUtf8(file)).bytes(std::move(bytes)));
    if (PQntuples(result.get()) == 0) return std::nullopt;
    return decodeText(bytesAt(result.get(), 0, 0));
  }
  ReadAhead& ahead = cache_.files[file];
  const std::string keyBytes(bytes.begin(), bytes.end());
  std::optional<Text> body;
  if (knownAhead(ahead, keyBytes, body)) return body;
  if (const auto point = ahead.points.find(keyBytes); point != ahead.points.end()) {
    if (!point->second) return std::nullopt;
    const auto* data = reinterpret_cast<const std::uint8_t*>(point->second->data());
    return decodeText({data, point->second->size()});
  }
  // A file not known to be large is read whole at its first point read, when it has at
  // most kSmallFile records: the catalogues' small files (types, regroupments, settings)
  // then cost one round trip, not one per record.
  if (ahead.pointReads == 0 && !largeFiles_.contains(file)) {
    if (!readAhead(file, {}, ahead, kSmallFile + 1)) largeFiles_.insert(file);
    if (knownAhead(ahead, keyBytes, body)) {
      ++ahead.pointReads;
      return body;
    }
  }
  if (++ahead.pointReads > kPointReadsAlone) {
    readAhead(file, keyBytes, ahead);
    static_cast<void>(knownAhead(ahead, keyBytes, body));
    return body;
  }
  const Result result = run(kReadRecord, Parameters().text(toUtf8(file)).bytes(std::move(bytes)));
  std::optional<std::string> found;
  if (PQntuples(result.get()) > 0) {
    const auto read = bytesAt(result.get(), 0, 0);
    found.emplace(read.begin(), read.end());
    body = decodeText(read);
  }
  const std::size_t size = keyBytes.size() + (found ? found->size() : 0);
  if (cache_.bytes + size <= kMostCachedBytes) {
    cache_.bytes += size;
    ahead.points.emplace(keyBytes, std::move(found));
  }
  return body;
}

bool PostgresqlReadConnection::knownAhead(const ReadAhead& ahead, const std::string& key,
                                          std::optional<Text>& body) {
  auto range = ahead.ranges.upper_bound(key);
  if (range == ahead.ranges.begin()) return false;
  --range;
  if (range->second && !(key < *range->second)) return false;
  const auto found = ahead.bodies.find(key);
  if (found != ahead.bodies.end()) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(found->second.data());
    body = decodeText({bytes, found->second.size()});
  }
  return true;
}

bool PostgresqlReadConnection::readAhead(const Text& file, const std::string& key, ReadAhead& ahead,
                                         int rowsAsked) {
  const auto next = ahead.ranges.upper_bound(key);
  const int limit = rowsAsked > 0 ? rowsAsked : ahead.nextRows;
  if (rowsAsked == 0) ahead.nextRows = std::min(2 * limit, kMostReadAhead);
  Parameters parameters;
  parameters.text(toUtf8(file)).bytes({key.begin(), key.end()}).integer(limit);
  if (next != ahead.ranges.end()) parameters.bytes({next->first.begin(), next->first.end()});
  const Result result = run(next != ahead.ranges.end() ? kReadAheadTo : kReadAhead, parameters);
  const int rows = PQntuples(result.get());
  const auto text = [&](int row, int column) {
    return std::string(PQgetvalue(result.get(), row, column),
                       static_cast<std::size_t>(PQgetlength(result.get(), row, column)));
  };
  for (int row = 0; row < rows; ++row) {
    cache_.bytes += static_cast<std::size_t>(PQgetlength(result.get(), row, 0)) +
                    static_cast<std::size_t>(PQgetlength(result.get(), row, 1));
    ahead.bodies.insert_or_assign(text(row, 0), text(row, 1));
  }
  // All rows asked: known up to the last one (the key past it is that key and a zero
  // byte); fewer: up to the next range, or the end of the file.
  std::optional<std::string> past;
  if (rows == limit) {
    past = text(rows - 1, 0);
    past->push_back('\0');
  } else if (next != ahead.ranges.end()) {
    past = next->first;
  }
  ahead.ranges.insert_or_assign(key, std::move(past));
  return rows < limit;
}

std::optional<DictionaryItem> PostgresqlReadConnection::lookupItem(const Text& file,
                                                                   const Text& name) {
  if (inTransaction_) {
    // In a snapshot, the whole dictionary at the first look-up (a few hundred items).
    const auto named = [](const Text& file, const Text& name) {
      return toUtf8(file) + '\0' + toUtf8(name);
    };
    if (!cache_.items) {
      std::map<std::string, DictionaryItem, std::less<>> items;
      for (auto& item : dictionaryItems()) items.emplace(named(item.file, item.name), item);
      cache_.items = std::move(items);
    }
    const auto found = cache_.items->find(named(file, name));
    if (found == cache_.items->end()) return std::nullopt;
    return found->second;
  }
  const Result result = run(kReadItem, Parameters().text(toUtf8(file)).text(toUtf8(name)));
  if (PQntuples(result.get()) == 0) return std::nullopt;
  return DictionaryItem{file, name, static_cast<int>(integerAt(result.get(), 0, 0)),
                        static_cast<int>(integerAt(result.get(), 0, 1)),
                        static_cast<int>(integerAt(result.get(), 0, 2))};
}

bool PostgresqlReadConnection::scanRecords(const Range& range, const Visitor& visit,
                                           bool checkState) {
  const bool bounded = !range.upper.empty();
  const Kind kind = range.withBody ? (bounded ? kScanRecordsTo : kScanRecords)
                                   : (bounded ? kScanKeysTo : kScanKeys);
  Parameters parameters;
  parameters.text(toUtf8(range.file)).bytes(range.lower);
  if (bounded) parameters.bytes(range.upper);
  // In a snapshot, a scan already made in this state is answered again from memory.
  std::string scanKey;
  if (inTransaction_ && !checkState) {
    const auto part = [&](std::string_view bytes) {
      scanKey += std::to_string(bytes.size()) + ':';
      scanKey += bytes;
    };
    scanKey = std::to_string(kind) + ':';
    part(toUtf8(range.file));
    part({reinterpret_cast<const char*>(range.lower.data()), range.lower.size()});
    part({reinterpret_cast<const char*>(range.upper.data()), range.upper.size()});
  }
  const auto cached = scanKey.empty() ? cache_.scans.end() : cache_.scans.find(scanKey);
  Result fetched;
  if (cached == cache_.scans.end()) fetched = run(kind, parameters, checkState);
  const PGresult* result = cached != cache_.scans.end() ? cached->second.get() : fetched.get();
  const int rows = PQntuples(result);
  if (checkState) {
    // No row, no state version: the caller asks again in a snapshot.
    const int stateColumn = range.withBody ? 2 : 1;
    if (rows == 0 || !stateHolds(static_cast<std::uint64_t>(integerAt(result, 0, stateColumn)))) {
      return false;
    }
  }
  for (int row = 0; row < rows; ++row) {
    ++statistics().scannedKeys;
    visit(bytesAt(result, row, 0),
          range.withBody ? bytesAt(result, row, 1) : std::span<const std::uint8_t>{});
  }
  if (!scanKey.empty() && fetched != nullptr) {
    std::size_t size = scanKey.size();
    for (int row = 0; row < rows; ++row) {
      for (int column = 0; column < PQnfields(result); ++column) {
        size += static_cast<std::size_t>(PQgetlength(result, row, column));
      }
    }
    if (cache_.bytes + size <= kMostCachedBytes) {
      cache_.bytes += size;
      cache_.scans.emplace(std::move(scanKey), std::move(fetched));
    }
  }
  return true;
}

std::vector<Text> PostgresqlReadConnection::fileNames() {
  const Result result = read("SELECT name FROM files", {}, 0);
  std::vector<Text> names;
  const int rows = PQntuples(result.get());
  names.reserve(static_cast<std::size_t>(rows));
  for (int row = 0; row < rows; ++row) {
    names.push_back(fromUtf8(PQgetvalue(result.get(), row, 0)));
  }
  return names;
}

std::vector<DictionaryItem> PostgresqlReadConnection::dictionaryItems() {
  const Result result =
      read("SELECT file, name, attribute, key_start, key_length FROM dictionary", {}, 0);
  std::vector<DictionaryItem> items;
  const auto number = [&](int row, int column) {
    const char* text = PQgetvalue(result.get(), row, column);
    int value = 0;
    std::from_chars(text, text + std::strlen(text), value);
    return value;
  };
  const int rows = PQntuples(result.get());
  items.reserve(static_cast<std::size_t>(rows));
  for (int row = 0; row < rows; ++row) {
    items.push_back({fromUtf8(PQgetvalue(result.get(), row, 0)),
                     fromUtf8(PQgetvalue(result.get(), row, 1)), number(row, 2), number(row, 3),
                     number(row, 4)});
  }
  return items;
}

}  // namespace velmora::store
