// What the store's SQLite reader and writer share: handles that close themselves,
// prepared statements and the schema.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <velmora/base/failure.h>
#include <velmora/base/text.h>
#include <velmora/store/writer.h>  // store::Connection
#include "store/engine/key_bytes.h"

namespace velmora::store {

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
// A failure of checkSchema, with the extended SQLite code it met, for a caller that can
// put the file right (a journal left by a writer that stopped) and try again.
class SchemaFailure : public Failure {
 public:
  SchemaFailure(long number, int sqliteCode, const std::string& message)
      : Failure(number, message), sqliteCode_(sqliteCode) {}
  int sqliteCode() const noexcept { return sqliteCode_; }

 private:
  int sqliteCode_;
};

// Fails with a SchemaFailure (errors::kBusy for a lock, errors::kDatabase otherwise) that
// tells apart a locked, unreadable, damaged file, one that is not a database and a
// database that is not a store, in French: the message may reach a planner.
void checkSchema(sqlite3* db, const std::string& path);

}  // namespace velmora::store
