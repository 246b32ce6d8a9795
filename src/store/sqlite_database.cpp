#include <velmora/store/sqlite_database.h>

#include <filesystem>
#include <system_error>

#include <velmora/base/failure.h>
#include "store/query/query.h"

namespace velmora {

namespace {

class SqliteFile final : public NorvikFile {
 public:
  SqliteFile(std::shared_ptr<store::ReadConnection> connection, Text name)
      : connection_(std::move(connection)), name_(std::move(name)) {}

  RecordRef ReadRecord(const Text& Cle) override {
    auto record = connection_->readRecord(name_, Cle);
    if (!record) {
      throw Failure(errors::kRecordNotFound,
                    "record not found: " + toUtf8(name_) + " has no key \"" + toUtf8(Cle) + "\"");
    }
    return RecordRef::make(std::move(*record));
  }

  const Text& name() const override { return name_; }

 private:
  std::shared_ptr<store::ReadConnection> connection_;
  Text name_;
};

// Keeps the connection alive as long as the read transaction it holds.
class HeldSnapshot final : public NorvikDatabase::Snapshot {
 public:
  explicit HeldSnapshot(std::shared_ptr<store::ReadConnection> connection)
      : connection_(std::move(connection)), snapshot_(*connection_) {}

 private:
  std::shared_ptr<store::ReadConnection> connection_;
  store::ReadConnection::Snapshot snapshot_;
};

std::shared_ptr<store::ReadConnection> connect(const std::string& path) {
  std::error_code ec;
  if (std::filesystem::is_directory(path, ec)) {
    throw Failure(errors::kDatabase, "La base " + path +
                                         " est un dossier, pas une base : donnez le chemin "
                                         "du fichier de la base.");
  }
  if (!std::filesystem::is_regular_file(path, ec)) {
    throw Failure(errors::kDatabase,
                  "La base " + path + " n'existe pas (no such file) : vérifiez le chemin.");
  }
  return std::make_shared<store::ReadConnection>(path);
}

}  // namespace

SqliteDatabase::SqliteDatabase(const std::string& path) : connection_(connect(path)) {}

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
  return connection_->handle();
}

FileRef SqliteDatabase::OpenFile(const Text& Nom) {
  if (!connection_->hasFile(Nom)) {
    throw Failure(errors::kUnknownFile,
                  "unknown file \"" + toUtf8(Nom) + "\" in database " + path());
  }
  return {std::make_shared<SqliteFile>(connection_, Nom)};
}

RecordRef SqliteDatabase::RunQuery(const Text& Requete, const Text& /*Options*/, long& Nombre) {
  auto answer = RecordRef::make(store::runRequest(*connection_, Requete));
  Nombre = answer->DCount();
  return answer;
}

std::unique_ptr<NorvikDatabase::Snapshot> SqliteDatabase::holdSnapshot() {
  return std::make_unique<HeldSnapshot>(connection_);
}

DatabaseRef openDatabase(const std::string& path) {
  return {std::make_shared<SqliteDatabase>(path)};
}

StoreStatistics statistics(const DatabaseRef& database) {
  const auto* sqlite = dynamic_cast<const SqliteDatabase*>(&database.get());
  if (sqlite == nullptr) {
    throw Failure(errors::kInvalidCall, "invalid call: the database is not an embedded store");
  }
  return sqlite->statistics();
}

}  // namespace velmora
