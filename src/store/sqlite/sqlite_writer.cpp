// The SQLite backend's writes: a batch applied in one immediate transaction, all or nothing.
// A new store is made only in a file that holds nothing yet.
#include <optional>

#include <velmora/base/failure.h>
#include "store/engine/batch_target.h"
#include "store/sqlite/sqlite_support.h"

namespace velmora::store {

namespace {

// True when the file holds no table yet: a new file, or one whose creation was rolled back.
bool holdsNoTable(sqlite3* db, const std::string& path) {
  Statement count(db, "SELECT count(*) FROM sqlite_master", path);
  return count.step() && count.intColumn(0) == 0;
}

class SqliteTarget final : public BatchTarget {
 public:
  SqliteTarget(const std::string& path, StoreWriter::Sync sync);
  void apply(const Batch& batch) override;

 private:
  std::string path_;
  Connection db_;
};

SqliteTarget::SqliteTarget(const std::string& path, StoreWriter::Sync sync) : path_(path) {
  db_ = openConnection(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
  if (sync == StoreWriter::Sync::Fast) execute(db_.get(), "PRAGMA synchronous = OFF", path_);
  // A file with tables must be a store; a new one gets its tables in the first batch's
  // transaction, so that two writers creating it at once cannot see it half made.
  if (!holdsNoTable(db_.get(), path_)) checkSchema(db_.get(), path_);
}

void SqliteTarget::apply(const Batch& batch) {
  // The write lock first (a second writer waits here, then fails with errors::kBusy),
  // then the tables if the file has none yet: creation and batch commit as one.
  execute(db_.get(), "BEGIN IMMEDIATE", path_);
  std::optional<Statement> addFile, put, remove, define;
  try {
    if (holdsNoTable(db_.get(), path_)) {
      createSchema(db_.get(), path_);
    } else {
      checkSchema(db_.get(), path_);
    }
    addFile.emplace(db_.get(), "INSERT OR IGNORE INTO files (name) VALUES (?1)", path_);
    put.emplace(db_.get(), "INSERT OR REPLACE INTO records (file, key, body) VALUES (?1, ?2, ?3)",
                path_);
    remove.emplace(db_.get(), "DELETE FROM records WHERE file = ?1 AND key = ?2", path_);
    define.emplace(db_.get(),
                   "INSERT OR REPLACE INTO dictionary (file, name, attribute, key_start, "
                   "key_length) VALUES (?1, ?2, ?3, ?4, ?5)",
                   path_);
  } catch (...) {
    sqlite3_exec(db_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    throw;
  }
  try {
    for (const auto& change : batch.changes()) {
      std::visit(
          [&](const auto& c) {
            using T = std::decay_t<decltype(c)>;
            if constexpr (std::is_same_v<T, Batch::CreateFile>) {
              addFile->reset().bind(1, toUtf8(c.name)).run();
            } else if constexpr (std::is_same_v<T, Batch::PutRecord>) {
              addFile->reset().bind(1, toUtf8(c.file)).run();
              put->reset()
                  .bind(1, toUtf8(c.file))
                  .bindBlob(2, encodeText(c.key))
                  .bindBlob(3, encodeText(c.body))
                  .run();
            } else if constexpr (std::is_same_v<T, Batch::DeleteRecord>) {
              remove->reset().bind(1, toUtf8(c.file)).bindBlob(2, encodeText(c.key)).run();
            } else {
              addFile->reset().bind(1, toUtf8(c.file)).run();
              define->reset()
                  .bind(1, toUtf8(c.file))
                  .bind(2, toUtf8(c.name))
                  .bind(3, static_cast<long long>(c.attribute))
                  .bind(4, static_cast<long long>(c.isKeyPart() ? c.keyStart : 0))
                  .bind(5, static_cast<long long>(c.isKeyPart() ? c.keyLength : 0))
                  .run();
            }
          },
          change);
    }
    execute(db_.get(), "COMMIT", path_);
  } catch (...) {
    // Statements must let go of the transaction before it can be rolled back.
    addFile.reset();
    put.reset();
    remove.reset();
    define.reset();
    sqlite3_exec(db_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    throw;
  }
}

}  // namespace

std::unique_ptr<BatchTarget> sqliteTarget(const std::string& path, StoreWriter::Sync sync) {
  return std::make_unique<SqliteTarget>(path, sync);
}

}  // namespace velmora::store
