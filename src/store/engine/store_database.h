// What every NorvikDatabase over a ReadConnection does the same way, whatever the backend:
// files that share the connection, queries, snapshots.
#pragma once

#include <memory>
#include <string>

#include <velmora/store/database.h>
#include <velmora/store/sqlite_database.h>  // StoreStatistics
#include "store/engine/read_connection.h"

namespace velmora::store {

// A file of the store; fails with errors::kUnknownFile naming the store when there is none.
FileRef openFile(const std::shared_ptr<ReadConnection>& connection, const Text& name);
RecordRef runQuery(ReadConnection& connection, const Text& request, long& count);
std::unique_ptr<NorvikDatabase::Snapshot> holdSnapshot(
    const std::shared_ptr<ReadConnection>& connection);

// The store on a server (or any backend without a public class of its own).
class StoreDatabase final : public NorvikDatabase {
 public:
  explicit StoreDatabase(std::shared_ptr<ReadConnection> connection)
      : connection_(std::move(connection)) {}

  FileRef OpenFile(const Text& Nom) override { return openFile(connection_, Nom); }
  RecordRef RunQuery(const Text& Requete, const Text& /*Options*/, long& Nombre) override {
    return runQuery(*connection_, Requete, Nombre);
  }
  std::unique_ptr<Snapshot> holdSnapshot() override { return store::holdSnapshot(connection_); }

  const StoreStatistics& statistics() const { return connection_->statistics(); }

 private:
  std::shared_ptr<ReadConnection> connection_;
};

}  // namespace velmora::store
