// The embedded store: NorvikDatabase over one SQLite file, opened read-only.
#pragma once

#include <memory>
#include <string>

#include "store/database.h"
#include "store/read_connection.h"

namespace velmora {

class SqliteDatabase final : public NorvikDatabase {
 public:
  // Fails with errors::kDatabase, naming the path and the cause, when the file is
  // missing, is not SQLite, is damaged or does not hold a store.
  explicit SqliteDatabase(const std::string& path);

  FileRef OpenFile(const Text& Nom) override;
  RecordRef RunQuery(const Text& Requete, const Text& Options, long& Nombre) override;
  // One read transaction of this connection; fails with errors::kBusy when a writer keeps
  // the lock past ReadConnection::kLockWait.
  std::unique_ptr<Snapshot> holdSnapshot() override;

  const std::string& path() const { return connection_->path(); }
  // Counters of this connection, for tests and benchmarks.
  const StoreStatistics& statistics() const { return connection_->statistics(); }
  void resetStatistics() { connection_->statistics() = {}; }
  // The read-only SQLite handle, for tools and tests that check what it allows.
  sqlite3* nativeHandle() const { return connection_->handle(); }

 private:
  std::shared_ptr<store::ReadConnection> connection_;
};

// A new read-only connection to the store in that file.
DatabaseRef openDatabase(const std::string& path);

// The counters of a connection made by openDatabase; fails with errors::kInvalidCall
// for any other kind of database.
StoreStatistics statistics(const DatabaseRef& database);

}  // namespace velmora
