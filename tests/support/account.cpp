#include "support/account.h"

#include <libpq-fe.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <system_error>

#include "store/engine/account_layout.h"

namespace velmora::testing {

void administerServer(const std::string& sql) {
  const std::unique_ptr<PGconn, decltype(&PQfinish)> admin(PQconnectdb(""), &PQfinish);
  if (PQstatus(admin.get()) != CONNECTION_OK) {
    throw std::runtime_error(std::string("no test server: ") + PQerrorMessage(admin.get()));
  }
  const std::unique_ptr<PGresult, decltype(&PQclear)> result(
      PQexec(admin.get(), ("SET client_min_messages = warning; " + sql).c_str()), &PQclear);
  const auto status = PQresultStatus(result.get());
  if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK) {
    throw std::runtime_error(sql + ": " + PQerrorMessage(admin.get()));
  }
}

namespace {

std::string makeTemporaryDirectory() {
  std::string pattern = (std::filesystem::temp_directory_path() / "velmora-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot create " + pattern);
  return pattern;
}

// A schema of its own for each account of this process.
std::string makeSchema() {
  if (!TempAccount::onServer()) return {};
  static std::atomic<int> made{0};
  std::string schema = "velmora_test_" + std::to_string(getpid()) + "_" + std::to_string(++made);
  administerServer("CREATE SCHEMA " + schema);
  return schema;
}

}  // namespace

bool TempAccount::onServer() {
  const char* store = std::getenv("VELMORA_TEST_STORE");
  return store != nullptr && std::string_view(store) == "postgresql";
}

NorvikRecord makeRecord(const std::vector<std::vector<std::string>>& attributes) {
  NorvikRecord record;
  for (const auto& values : attributes) {
    std::vector<Text> texts;
    texts.reserve(values.size());
    for (const auto& value : values) texts.push_back(fromUtf8(value));
    record.appendAttribute(std::move(texts));
  }
  return record;
}

TempAccount::TempAccount()
    : directory_(makeTemporaryDirectory()),
      schema_(makeSchema()),
      path_(schema_.empty() ? directory_ + "/account.db"
                            : "postgresql://?options=-csearch_path%3D" + schema_),
      writer_(path_, StoreWriter::Sync::Fast) {
  writer_.apply(standardLayout());
}

TempAccount::~TempAccount() {
  std::error_code ec;
  std::filesystem::remove_all(directory_, ec);
  try {
    if (!schema_.empty()) administerServer("DROP SCHEMA " + schema_ + " CASCADE");
  } catch (const std::exception&) {
    // The server went away with the schema: nothing is left to remove.
  }
}

void TempAccount::put(std::string_view file, std::string_view key,
                      const std::vector<std::vector<std::string>>& attributes) {
  Batch batch;
  batch.putRecord(fromUtf8(file), fromUtf8(key), makeRecord(attributes));
  apply(batch);
}

void TempAccount::remove(std::string_view file, std::string_view key) {
  Batch batch;
  batch.deleteRecord(fromUtf8(file), fromUtf8(key));
  apply(batch);
}

void killWriterHalfWay(const std::string& path, bool wal) {
  const pid_t child = fork();
  if (child == 0) {
    sqlite3* db = nullptr;
    sqlite3_open(path.c_str(), &db);
    if (wal) sqlite3_exec(db, "PRAGMA journal_mode = WAL", nullptr, nullptr, nullptr);
    sqlite3_exec(db,
                 "PRAGMA cache_size = 1; BEGIN; DELETE FROM records; "
                 "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < "
                 "3000) INSERT INTO records SELECT 'TACHE', randomblob(40), randomblob(300) "
                 "FROM n",
                 nullptr, nullptr, nullptr);
    _exit(0);  // no commit, no close
  }
  int status = 0;
  if (child > 0) waitpid(child, &status, 0);
}

}  // namespace velmora::testing
