#include "store/read_connection.h"

namespace velmora::store {

namespace {

Connection openReadOnly(const std::string& path) {
  // The control never writes: a read-only handle makes that a property of the file
  // access, not a promise of the code.
  auto db = openConnection(path, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX);
  checkSchema(db.get(), path);
  return db;
}

}  // namespace

ReadConnection::ReadConnection(const std::string& path)
    : path_(path),
      db_(openReadOnly(path)),
      fileExists_(db_.get(), "SELECT 1 FROM files WHERE name = ?1", path_),
      readRecord_(db_.get(), "SELECT body FROM records WHERE file = ?1 AND key = ?2", path_),
      readItem_(db_.get(),
                "SELECT attribute, key_start, key_length FROM dictionary "
                "WHERE file = ?1 AND name = ?2",
                path_),
      scanKeys_(db_.get(), "SELECT key FROM records WHERE file = ?1 AND key >= ?2 ORDER BY key",
                path_),
      scanKeysTo_(db_.get(),
                  "SELECT key FROM records WHERE file = ?1 AND key >= ?2 AND key < ?3 "
                  "ORDER BY key",
                  path_),
      scanRecords_(db_.get(),
                   "SELECT key, body FROM records WHERE file = ?1 AND key >= ?2 ORDER BY key",
                   path_),
      scanRecordsTo_(db_.get(),
                     "SELECT key, body FROM records WHERE file = ?1 AND key >= ?2 AND key < ?3 "
                     "ORDER BY key",
                     path_) {}

bool ReadConnection::hasFile(const Text& name) {
  fileExists_.reset().bind(1, toUtf8(name));
  const bool found = fileExists_.step();
  fileExists_.reset();
  return found;
}

std::optional<Text> ReadConnection::readBody(const Text& file, const Text& key) {
  readRecord_.reset().bind(1, toUtf8(file)).bindBlob(2, encodeText(key));
  if (!readRecord_.step()) {
    readRecord_.reset();
    return std::nullopt;
  }
  Text body = decodeText(readRecord_.blobColumn(0));
  readRecord_.reset();
  ++statistics_.decodedRecords;
  return body;
}

std::optional<DictionaryItem> ReadConnection::dictionaryItem(const Text& file, const Text& name) {
  readItem_.reset().bind(1, toUtf8(file)).bind(2, toUtf8(name));
  if (!readItem_.step()) {
    readItem_.reset();
    return std::nullopt;
  }
  DictionaryItem item{file, name, static_cast<int>(readItem_.intColumn(0)),
                      static_cast<int>(readItem_.intColumn(1)),
                      static_cast<int>(readItem_.intColumn(2))};
  readItem_.reset();
  return item;
}

void ReadConnection::scan(const Text& file, const std::vector<std::uint8_t>& lower,
                          const std::vector<std::uint8_t>& upper, bool withBody,
                          const Visitor& visit) {
  Statement& statement = withBody ? (upper.empty() ? scanRecords_ : scanRecordsTo_)
                                  : (upper.empty() ? scanKeys_ : scanKeysTo_);
  statement.reset().bind(1, toUtf8(file)).bindBlob(2, lower);
  if (!upper.empty()) statement.bindBlob(3, upper);
  try {
    while (statement.step()) {
      ++statistics_.scannedKeys;
      visit(statement.blobColumn(0),
            withBody ? statement.blobColumn(1) : std::span<const std::uint8_t>{});
    }
  } catch (...) {
    statement.reset();
    throw;
  }
  statement.reset();
}

}  // namespace velmora::store
