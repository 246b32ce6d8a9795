// SqliteDatabase, the database over one SQLite file, and openDatabase, which picks the backend
// from a location. The statistics of a connection are read through either.
#include <velmora/store/sqlite_database.h>

#include <velmora/base/failure.h>
#include "store/engine/read_connection.h"
#include "store/sqlite/sqlite_read_connection.h"
#include "store/engine/store_database.h"

namespace velmora {

SqliteDatabase::SqliteDatabase(const std::string& path)
    : connection_(isServerUri(path)
                      ? throw Failure(errors::kInvalidCall,
                                      "invalid call: SqliteDatabase opens a file, not a server: "
                                      "use openDatabase")
                      : store::connectToStore(path)) {}

const std::string& SqliteDatabase::path() const {
  return connection_->path();
}

const StoreStatistics& SqliteDatabase::statistics() const {
  return connection_->statistics();
}

void SqliteDatabase::resetStatistics() {
  connection_->statistics() = {};
}

sqlite3* SqliteDatabase::nativeHandle() const {
  return static_cast<const store::SqliteReadConnection&>(*connection_).handle();
}

FileRef SqliteDatabase::OpenFile(const Text& Nom) {
  return store::openFile(connection_, Nom);
}

RecordRef SqliteDatabase::RunQuery(const Text& Requete, const Text& /*Options*/, long& Nombre) {
  return store::runQuery(*connection_, Requete, Nombre);
}

std::unique_ptr<NorvikDatabase::Snapshot> SqliteDatabase::holdSnapshot() {
  return store::holdSnapshot(connection_);
}

DatabaseRef openDatabase(const std::string& location) {
  if (isServerUri(location)) {
    return {std::make_shared<store::StoreDatabase>(store::connectToStore(location))};
  }
  return {std::make_shared<SqliteDatabase>(location)};
}

StoreStatistics statistics(const DatabaseRef& database) {
  if (const auto* sqlite = dynamic_cast<const SqliteDatabase*>(&database.get())) {
    return sqlite->statistics();
  }
  if (const auto* server = dynamic_cast<const store::StoreDatabase*>(&database.get())) {
    return server->statistics();
  }
  throw Failure(errors::kInvalidCall, "invalid call: the database is not a Velmora store");
}

}  // namespace velmora
