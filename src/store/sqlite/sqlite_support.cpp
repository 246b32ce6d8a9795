// What the SQLite reader and writer share: the opening of a store file with its checks, the
// schema, and SQLite's failures put in our words with the store's error numbers.
#include "store/sqlite/sqlite_support.h"

#include <velmora/base/failure.h>
#include "base/message.h"

namespace velmora::store {

void ConnectionCloser::operator()(sqlite3* db) const noexcept {
  sqlite3_close_v2(db);
}

namespace {

// What to do about a failure that the disk causes.
std::string hint(sqlite3* db) {
  const int code = db != nullptr ? sqlite3_errcode(db) & 0xFF : SQLITE_NOMEM;
  if (code == SQLITE_FULL || code == SQLITE_IOERR) {
    return " (is the disk full, or a file size limit reached? free some space and run it "
           "again)";
  }
  return {};
}

[[noreturn]] void failSchema(const std::string& path, int code);

[[noreturn]] void fail(sqlite3* db, const std::string& path, const std::string& doing) {
  const std::string cause = db != nullptr ? sqlite3_errmsg(db) : "out of memory";
  if (db != nullptr) {
    const int code = sqlite3_errcode(db) & 0xFF;
    if (code == SQLITE_BUSY || code == SQLITE_LOCKED) throw busyFailure(path);
    // A damaged file or one that is no database: named as every reader names it.
    if (code == SQLITE_CORRUPT || code == SQLITE_NOTADB)
      failSchema(path, sqlite3_extended_errcode(db));
    if (code == SQLITE_CANTOPEN) {
      throw Failure(errors::kDatabase,
                    say("database {} cannot be opened or created; check that its folder exists "
                        "and may be written",
                        {path}));
    }
  }
  throw Failure(errors::kDatabase, say("database {}: {}: {}{}", {path, doing, cause, hint(db)}));
}

constexpr const char* kSchema = R"sql(
CREATE TABLE velmora_store (version INTEGER NOT NULL);
INSERT INTO velmora_store (version) VALUES (1);
CREATE TABLE files (name TEXT PRIMARY KEY) WITHOUT ROWID;
CREATE TABLE records (
  file TEXT NOT NULL,
  key BLOB NOT NULL,
  body BLOB NOT NULL,
  PRIMARY KEY (file, key)
) WITHOUT ROWID;
CREATE TABLE dictionary (
  file TEXT NOT NULL,
  name TEXT NOT NULL,
  attribute INTEGER NOT NULL,
  key_start INTEGER NOT NULL,
  key_length INTEGER NOT NULL,
  PRIMARY KEY (file, name)
) WITHOUT ROWID;
)sql";

constexpr long long kSchemaVersion = 1;

// Written in the file's header with the schema's version (user_version), so that `file`
// and SQLite's tools can tell a Velmora store. Stores made before carry 0 in both and are
// read all the same: checkSchema looks at the tables only.
constexpr long long kApplicationId = 0x566C6D72;  // "Vlmr"

}  // namespace

Failure busyFailure(const std::string& path) {
  return {errors::kBusy, "La base " + path +
                             " est verrouillée par un autre programme qui y écrit. "
                             "Réessayez dans un instant ; si cela dure, fermez "
                             "l'import ou l'outil qui la modifie."};
}

Connection openConnection(const std::string& path, int flags) {
  sqlite3* raw = nullptr;
  const int rc = sqlite3_open_v2(path.c_str(), &raw, flags, nullptr);
  Connection db(raw);
  if (rc != SQLITE_OK) fail(db.get(), path, "cannot open");
  sqlite3_extended_result_codes(db.get(), 1);
  sqlite3_busy_timeout(db.get(), 5000);
  return db;
}

Statement::Statement(sqlite3* db, std::string_view sql, const std::string& path)
    : db_(db), path_(path) {
  sqlite3_stmt* raw = nullptr;
  const int rc = sqlite3_prepare_v3(db, sql.data(), static_cast<int>(sql.size()),
                                    SQLITE_PREPARE_PERSISTENT, &raw, nullptr);
  statement_.reset(raw);
  if (rc != SQLITE_OK) fail(db, path, "cannot read the store's tables");
}

Statement& Statement::reset() {
  sqlite3_reset(statement_.get());
  sqlite3_clear_bindings(statement_.get());
  return *this;
}

Statement& Statement::bind(int index, std::string_view utf8) {
  sqlite3_bind_text(statement_.get(), index, utf8.data(), static_cast<int>(utf8.size()),
                    SQLITE_TRANSIENT);
  return *this;
}

Statement& Statement::bindBlob(int index, const std::vector<std::uint8_t>& bytes) {
  // A zero-length blob must still be a blob, not NULL: keys may be empty.
  static const std::uint8_t kNothing = 0;
  sqlite3_bind_blob(statement_.get(), index, bytes.empty() ? &kNothing : bytes.data(),
                    static_cast<int>(bytes.size()), SQLITE_TRANSIENT);
  return *this;
}

Statement& Statement::bind(int index, long long value) {
  sqlite3_bind_int64(statement_.get(), index, value);
  return *this;
}

bool Statement::step() {
  const int rc = sqlite3_step(statement_.get());
  if (rc == SQLITE_ROW) return true;
  if (rc == SQLITE_DONE) return false;
  fail(db_, path_, "cannot read or write");
}

std::string Statement::textColumn(int column) const {
  const auto* text = sqlite3_column_text(statement_.get(), column);
  const int size = sqlite3_column_bytes(statement_.get(), column);
  return text == nullptr ? std::string() : std::string(reinterpret_cast<const char*>(text), size);
}

long long Statement::intColumn(int column) const {
  return sqlite3_column_int64(statement_.get(), column);
}

std::span<const std::uint8_t> Statement::blobColumn(int column) const {
  const auto* bytes =
      static_cast<const std::uint8_t*>(sqlite3_column_blob(statement_.get(), column));
  const int size = sqlite3_column_bytes(statement_.get(), column);
  if (bytes == nullptr) return {};
  return {bytes, static_cast<std::size_t>(size)};
}

void execute(sqlite3* db, const std::string& sql, const std::string& path) {
  char* message = nullptr;
  const int rc = sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &message);
  if (rc == SQLITE_OK) return;
  const std::string cause = message != nullptr ? message : sqlite3_errmsg(db);
  sqlite3_free(message);
  if ((rc & 0xFF) == SQLITE_BUSY || (rc & 0xFF) == SQLITE_LOCKED) throw busyFailure(path);
  throw Failure(errors::kDatabase, say("database {}: {}{}", {path, cause, hint(db)}));
}

void createSchema(sqlite3* db, const std::string& path) {
  execute(db, kSchema, path);
  execute(db,
          "PRAGMA application_id = " + std::to_string(kApplicationId) +
              "; PRAGMA user_version = " + std::to_string(kSchemaVersion),
          path);
}

namespace {

// What the schema check met, in words for the planner who may read it: what is wrong with
// the file and what to do.
// The cause of a failed read in French: SQLite's own words are English.
std::string frenchCause(int code) {
  switch (code & 0xFF) {
    case SQLITE_CANTOPEN:
      return "le fichier ne peut pas être ouvert";
    case SQLITE_PERM:
    case SQLITE_AUTH:
    case SQLITE_READONLY:
      return "accès refusé";
    case SQLITE_IOERR:
      return "erreur de lecture ou d'écriture du disque";
    case SQLITE_FULL:
      return "disque plein";
    case SQLITE_NOMEM:
      return "mémoire insuffisante";
    default:
      return "erreur SQLite " + std::to_string(code);
  }
}

[[noreturn]] void failSchema(const std::string& path, int code) {
  const std::string base = "La base " + path;
  switch (code & 0xFF) {
    case SQLITE_BUSY:
      throw SchemaFailure(errors::kBusy, code, busyFailure(path).what());
    case SQLITE_LOCKED:
      throw SchemaFailure(errors::kBusy, code,
                          base +
                              " est verrouillée par une autre connexion de ce programme. "
                              "Fermez l'autre fenêtre ou l'autre traitement, puis réessayez.");
    case SQLITE_NOTADB:
      throw SchemaFailure(errors::kDatabase, code,
                          base +
                              " n'est pas une base de données. Vérifiez le chemin : il doit "
                              "désigner une base Velmora.");
    case SQLITE_CORRUPT:
      throw SchemaFailure(errors::kDatabase, code,
                          base + " est endommagée. Remplacez-la par sa dernière sauvegarde.");
    case SQLITE_ERROR:
      throw SchemaFailure(errors::kDatabase, code,
                          base +
                              " n'est pas une base Velmora : il lui manque ses tables. "
                              "Vérifiez le chemin.");
    default:
      break;
  }
  if (code == SQLITE_READONLY_ROLLBACK || code == SQLITE_READONLY_RECOVERY ||
      code == SQLITE_READONLY_CANTINIT) {
    throw SchemaFailure(
        errors::kDatabase, code,
        base +
            " a été laissée à moitié écrite par un programme interrompu, et ce poste ne "
            "peut pas la remettre en état (dossier ou fichier en lecture seule). Demandez "
            "à un administrateur de l'ouvrir une fois avec le droit d'écrire dans son "
            "dossier (par exemple avec « velmora get »), puis réessayez.");
  }
  throw SchemaFailure(errors::kDatabase, code,
                      base + " ne peut pas être lue (" + frenchCause(code) +
                          "). Vérifiez les droits sur le fichier et son dossier, et le "
                          "disque, puis réessayez.");
}

}  // namespace

void checkSchema(sqlite3* db, const std::string& path) {
  // One statement names every table, so that a file without one of them fails to prepare
  // and the root page of each is read. The pages are not all read: a full check reads the
  // whole file, far too slow for an open before each Init; a damaged page deeper in fails
  // the read that reaches it, with the same error number.
  const char* sql =
      "SELECT version, EXISTS (SELECT 1 FROM files), EXISTS (SELECT 1 FROM records), "
      "EXISTS (SELECT 1 FROM dictionary) FROM velmora_store";
  sqlite3_stmt* raw = nullptr;
  const int prepared = sqlite3_prepare_v2(db, sql, -1, &raw, nullptr);
  std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> statement(raw, &sqlite3_finalize);
  if (prepared != SQLITE_OK) failSchema(path, sqlite3_extended_errcode(db));
  const int rc = sqlite3_step(raw);
  if (rc == SQLITE_DONE) {
    throw SchemaFailure(errors::kDatabase, SQLITE_ERROR,
                        "La base " + path +
                            " n'est pas une base Velmora : sa version n'est pas inscrite. "
                            "Vérifiez le chemin.");
  }
  if (rc != SQLITE_ROW) failSchema(path, sqlite3_extended_errcode(db));
  const long long version = sqlite3_column_int64(raw, 0);
  if (version != kSchemaVersion) {
    throw SchemaFailure(errors::kDatabase, SQLITE_ERROR,
                        "La base " + path + " est d'une version (" + std::to_string(version) +
                            ") que ce programme ne sait pas lire. Installez la version de "
                            "Velmora qui l'a écrite.");
  }
}

}  // namespace velmora::store
