// The database and file objects over a read connection: files that share the connection,
// queries run through the query engine, snapshots held. Unknown files fail here, by name.
#include "store/engine/store_database.h"

#include <filesystem>
#include <system_error>

#include <velmora/base/failure.h>
#include "base/message.h"
#include "store/postgresql/postgresql_read_connection.h"
#include "store/query/query.h"
#include "store/sqlite/sqlite_read_connection.h"

namespace velmora::store {

namespace {

class StoreFile final : public NorvikFile {
 public:
  StoreFile(std::shared_ptr<ReadConnection> connection, Text name)
      : connection_(std::move(connection)), name_(std::move(name)) {}

  RecordRef ReadRecord(const Text& Cle) override {
    auto record = connection_->readRecord(name_, Cle);
    if (!record) {
      throw Failure(errors::kRecordNotFound, say("record not found: {} has no key \"{}\"",
                                                 {toUtf8(name_), excerpt(toUtf8(Cle))}));
    }
    return RecordRef::make(std::move(*record));
  }

  const Text& name() const override { return name_; }

 private:
  std::shared_ptr<ReadConnection> connection_;
  Text name_;
};

// Keeps the connection alive as long as the read transaction it holds.
class HeldSnapshot final : public NorvikDatabase::Snapshot {
 public:
  explicit HeldSnapshot(std::shared_ptr<ReadConnection> connection)
      : connection_(std::move(connection)), snapshot_(*connection_) {}

 private:
  std::shared_ptr<ReadConnection> connection_;
  ReadConnection::Snapshot snapshot_;
};

}  // namespace

FileRef openFile(const std::shared_ptr<ReadConnection>& connection, const Text& name) {
  if (!connection->hasFile(name)) {
    throw Failure(errors::kUnknownFile, say("unknown file \"{}\" in database {}",
                                            {excerpt(toUtf8(name)), connection->path()}));
  }
  return {std::make_shared<StoreFile>(connection, name)};
}

RecordRef runQuery(ReadConnection& connection, const Text& request, long& count) {
  auto answer = RecordRef::make(runRequest(connection, request));
  count = answer->DCount();
  return answer;
}

std::unique_ptr<NorvikDatabase::Snapshot> holdSnapshot(
    const std::shared_ptr<ReadConnection>& connection) {
  return std::make_unique<HeldSnapshot>(connection);
}

std::shared_ptr<ReadConnection> connectToStore(const std::string& location) {
  if (isServerUri(location)) return std::make_shared<PostgresqlReadConnection>(location);
  std::error_code ec;
  if (std::filesystem::is_directory(location, ec)) {
    throw Failure(errors::kDatabase, "La base " + location +
                                         " est un dossier, pas une base : donnez le chemin "
                                         "du fichier de la base.");
  }
  if (!std::filesystem::is_regular_file(location, ec)) {
    const auto folder = std::filesystem::path(location).parent_path();
    if (!folder.empty() && !std::filesystem::is_directory(folder, ec)) {
      throw Failure(errors::kDatabase, "La base " + location + " n'existe pas, ni son dossier " +
                                           folder.string() + " : vérifiez le chemin.");
    }
    throw Failure(errors::kDatabase, "La base " + location + " n'existe pas : vérifiez le chemin.");
  }
  return std::make_shared<SqliteReadConnection>(location);
}

}  // namespace velmora::store
