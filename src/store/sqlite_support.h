// What the store's SQLite reader and writer share: handles that close themselves,
// prepared statements, the schema and the byte forms of keys and record bodies.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/failure.h"
#include "base/text.h"

namespace velmora::store {

struct ConnectionCloser {
  void operator()(sqlite3* db) const noexcept { sqlite3_close_v2(db); }
};
using Connection = std::unique_ptr<sqlite3, ConnectionCloser>;

// errors::kBusy: another connection held the lock past the wait, naming the path.
Failure busyFailure(const std::string& path);

// Opens the file with the given flags; fails with errors::kDatabase naming the path.
Connection openConnection(const std::string& path, int flags);

// One prepared statement, reset and cleared before each use so that it can be reused.
class Statement {
 public:
  Statement(sqlite3* db, std::string_view sql, const std::string& path);

  Statement& reset();
  Statement& bind(int index, std::string_view utf8);
  Statement& bindBlob(int index, const std::vector<std::uint8_t>& bytes);
  Statement& bind(int index, long long value);
  // True while there is a row; false when done. Failures become errors::kDatabase.
  bool step();
  void run() {
    while (step()) {
    }
  }

  std::string textColumn(int column) const;
  long long intColumn(int column) const;
  // The bytes of a blob column; valid until the next step or reset.
  std::span<const std::uint8_t> blobColumn(int column) const;

 private:
  struct Finalizer {
    void operator()(sqlite3_stmt* s) const noexcept { sqlite3_finalize(s); }
  };
  std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
  sqlite3* db_;
  std::string path_;
};

// Runs statements without results (schema, transactions).
void execute(sqlite3* db, const std::string& sql, const std::string& path);

// The tables, created by the writer on a new file.
void createSchema(sqlite3* db, const std::string& path);
// Fails with errors::kDatabase when the file does not hold this store's tables.
void checkSchema(sqlite3* db, const std::string& path);

// Keys and bodies are stored as UTF-16 big-endian bytes, so that SQLite's memcmp
// order of blobs is the order of UTF-16 code units.
std::vector<std::uint8_t> encodeText(TextView text);
Text decodeText(std::span<const std::uint8_t> bytes);
// The smallest byte string above every string that begins with prefix; empty when
// there is none (the prefix is all 0xFF).
std::vector<std::uint8_t> prefixUpperBound(std::vector<std::uint8_t> prefix);

}  // namespace velmora::store
