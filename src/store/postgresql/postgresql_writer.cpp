// The PostgreSQL backend's writes: a batch applied in one transaction, its statements sent in
// chunks before their answers are read. All or nothing, as in the SQLite backend.
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include <velmora/base/failure.h>
#include "store/engine/batch_target.h"
#include "store/engine/key_bytes.h"
#include "store/postgresql/postgresql_support.h"

namespace velmora::store {

namespace {

constexpr std::array<std::pair<const char*, const char*>, 4> kChanges = {{
    {"w_file", "INSERT INTO files (name) VALUES ($1) ON CONFLICT DO NOTHING"},
    {"w_put",
     "INSERT INTO records (file, key, body) VALUES ($1, $2, $3) "
     "ON CONFLICT (file, key) DO UPDATE SET body = EXCLUDED.body"},
    {"w_delete", "DELETE FROM records WHERE file = $1 AND key = $2"},
    {"w_define",
     "INSERT INTO dictionary (file, name, attribute, key_start, key_length) "
     "VALUES ($1, $2, $3, $4, $5) ON CONFLICT (file, name) DO UPDATE SET "
     "attribute = EXCLUDED.attribute, key_start = EXCLUDED.key_start, "
     "key_length = EXCLUDED.key_length"},
}};
enum Change { kAddFile, kPut, kDelete, kDefine };

// Statements sent before their answers are read: a batch costs a round trip per chunk,
// not per change. Small enough that the answers of a chunk fit in the socket's buffer.
constexpr int kChunk = 256;

// Writers exclude each other by this lock on the store's own table: SHARE ROW EXCLUSIVE
// conflicts with itself and with writes, not with reads, and only a role that may write
// the table can take it; a planner, who may only read (ACCESS SHARE), can neither take
// it nor stand in its way. An empty schema has no table to lock: two writers creating
// the tables at once collide on their names, and the loser tries once more.
constexpr const char* kWriterLock = "LOCK TABLE velmora_store IN SHARE ROW EXCLUSIVE MODE";

// A writer waits at most this long for a lock, unless the URI or the role sets its own
// lock_timeout; then it fails, naming who holds it.
constexpr const char* kLockWait = "30s";

class ServerTarget final : public BatchTarget {
 public:
  ServerTarget(const std::string& uri, StoreWriter::Sync sync)
      : uri_(uri), name_(displayUri(uri)), sync_(sync) {
    connect();
    // A schema with tables must be a store; an empty one gets its tables in the first
    // batch's transaction.
    if (!holdsNoTable()) checkServerSchema(connection_.get(), name_);
  }

  void apply(const Batch& batch) override {
    for (int attempt = 0;; ++attempt) {
      try {
        applyOnce(batch);
        return;
      } catch (const Failure&) {
        if (attempt > 0 || !lostTheRace_) throw;
      }
    }
  }

 private:
  void applyOnce(const Batch& batch) {
    if (PQstatus(connection_.get()) == CONNECTION_BAD) connect();
    PGconn* db = connection_.get();
    lostTheRace_ = false;
    // Settings and statements live in the transaction, or are dropped at its end: through
    // a pooler in transaction mode the server connection serves others between batches.
    // Statements another writer's failed batch left on it are dropped first.
    execute(
        db,
        std::string("BEGIN; DEALLOCATE ALL; SELECT CASE WHEN current_setting('lock_timeout') "
                    "= '0' THEN set_config('lock_timeout', '") +
            kLockWait + "', true) END" +
            (sync_ == StoreWriter::Sync::Fast ? ", set_config('synchronous_commit', 'off', true)"
                                              : ""),
        name_);
    try {
      if (holdsNoTable()) {
        createTables();
      } else {
        lock();
        checkServerSchema(db, name_);
      }
      prepare();
      sendAll(batch);
      execute(db, "UPDATE velmora_store SET generation = generation + 1; DEALLOCATE ALL; COMMIT",
              name_);
    } catch (...) {
      if (PQpipelineStatus(db) != PQ_PIPELINE_OFF) PQexitPipelineMode(db);
      if (PQstatus(db) != CONNECTION_BAD && PQtransactionStatus(db) != PQTRANS_IDLE) {
        PQclear(PQexec(db, "ROLLBACK; DEALLOCATE ALL"));
      }
      throw;
    }
  }

  // Another writer creating the same tables makes this one wait for its commit, then
  // fail on the names taken (unique_violation or duplicate_table).
  void createTables() {
    PGconn* db = connection_.get();
    const Result result(PQexec(db, kServerSchema));
    if (result != nullptr && PQresultStatus(result.get()) == PGRES_COMMAND_OK) return;
    const char* state =
        result != nullptr ? PQresultErrorField(result.get(), PG_DIAG_SQLSTATE) : nullptr;
    const std::string code = state != nullptr ? state : "";
    lostTheRace_ = code == "23505" || code == "42P07";
    throw statementFailure(db, result.get(), name_);
  }

  void lock() {
    PGconn* db = connection_.get();
    const Result result(PQexec(db, kWriterLock));
    if (result != nullptr && PQresultStatus(result.get()) == PGRES_COMMAND_OK) return;
    const char* state =
        result != nullptr ? PQresultErrorField(result.get(), PG_DIAG_SQLSTATE) : nullptr;
    if (state == nullptr || std::string_view(state) != "55P03") {
      throw statementFailure(db, result.get(), name_);
    }
    PQclear(PQexec(db, "ROLLBACK"));
    throw Failure(errors::kBusy, "La base " + name_ + " est en cours d'écriture par " +
                                     lockHolders() +
                                     " : l'import a attendu son tour, en vain. Réessayez "
                                     "quand cette écriture sera finie ; si elle dure, "
                                     "l'administrateur de la base peut y mettre fin.");
  }

  // Who holds a lock that keeps writers out of the store's tables, as the server shows
  // it to any role: "le rôle R (processus P)", or a plain word.
  std::string lockHolders() {
    const Result holders(
        PQexec(connection_.get(),
               "SELECT DISTINCT a.usename, a.pid FROM pg_locks l JOIN "
               "pg_stat_activity a ON a.pid = l.pid JOIN pg_class c ON c.oid = l.relation WHERE "
               "l.granted AND l.pid <> pg_backend_pid() AND c.relnamespace = "
               "current_schema()::regnamespace AND l.mode NOT IN ('AccessShareLock', "
               "'RowShareLock') ORDER BY a.pid"));
    if (holders == nullptr || PQresultStatus(holders.get()) != PGRES_TUPLES_OK ||
        PQntuples(holders.get()) == 0) {
      return "un autre programme";
    }
    std::string shown;
    for (int row = 0; row < PQntuples(holders.get()); ++row) {
      if (row > 0) shown += ", ";
      shown += std::string("le rôle ") + PQgetvalue(holders.get(), row, 0) + " (processus " +
               PQgetvalue(holders.get(), row, 1) + ")";
    }
    return shown;
  }

  void connect() { connection_ = connectToServer(uri_, name_); }

  bool holdsNoTable() {
    const Result count =
        execute(connection_.get(),
                "SELECT count(*) FROM pg_tables WHERE schemaname = current_schema()", name_);
    return std::string_view(PQgetvalue(count.get(), 0, 0)) == "0";
  }

  void prepare() {
    for (const auto& [name, sql] : kChanges) {
      const Result result(PQprepare(connection_.get(), name, sql, 0, nullptr));
      if (result == nullptr || PQresultStatus(result.get()) != PGRES_COMMAND_OK) {
        throw statementFailure(connection_.get(), result.get(), name_);
      }
    }
  }

  void send(Change change, const Parameters& parameters) {
    if (PQsendQueryPrepared(connection_.get(), kChanges[change].first, parameters.size(),
                            parameters.values(), parameters.lengths(), parameters.formats(),
                            0) == 0) {
      throw statementFailure(connection_.get(), nullptr, name_);
    }
    ++pending_;
  }

  // Sends every change in order, a chunk at a time, and reads their answers.
  void sendAll(const Batch& batch) {
    PGconn* db = connection_.get();
    if (PQenterPipelineMode(db) == 0) throw statementFailure(db, nullptr, name_);
    pending_ = 0;
    for (const auto& change : batch.changes()) {
      std::visit(
          [&](const auto& c) {
            using T = std::decay_t<decltype(c)>;
            if constexpr (std::is_same_v<T, Batch::CreateFile>) {
              send(kAddFile, Parameters().text(toUtf8(c.name)));
            } else if constexpr (std::is_same_v<T, Batch::PutRecord>) {
              send(kAddFile, Parameters().text(toUtf8(c.file)));
              send(kPut, Parameters()
                             .text(toUtf8(c.file))
                             .bytes(encodeText(c.key))
                             .bytes(encodeText(c.body)));
            } else if constexpr (std::is_same_v<T, Batch::DeleteRecord>) {
              send(kDelete, Parameters().text(toUtf8(c.file)).bytes(encodeText(c.key)));
            } else {
              send(kAddFile, Parameters().text(toUtf8(c.file)));
              send(kDefine, Parameters()
                                .text(toUtf8(c.file))
                                .text(toUtf8(c.name))
                                .integer(c.attribute)
                                .integer(c.isKeyPart() ? c.keyStart : 0)
                                .integer(c.isKeyPart() ? c.keyLength : 0));
            }
          },
          change);
      if (pending_ >= kChunk) readAnswers();
    }
    readAnswers();
    if (PQexitPipelineMode(db) == 0) throw statementFailure(db, nullptr, name_);
  }

  // Reads the answers of what was sent, up to the sync that ends them; fails with the
  // first failure among them (those after it were not run).
  void readAnswers() {
    PGconn* db = connection_.get();
    if (PQpipelineSync(db) == 0) throw statementFailure(db, nullptr, name_);
    std::optional<Failure> failure;
    for (;;) {
      const Result result(PQgetResult(db));
      if (result == nullptr) {
        if (PQstatus(db) == CONNECTION_BAD) throw statementFailure(db, nullptr, name_);
        continue;
      }
      const auto status = PQresultStatus(result.get());
      if (status == PGRES_PIPELINE_SYNC) break;
      if (status == PGRES_FATAL_ERROR && !failure) {
        failure = statementFailure(db, result.get(), name_);
      }
    }
    pending_ = 0;
    if (failure) throw *failure;
  }

  std::string uri_;
  std::string name_;
  StoreWriter::Sync sync_;
  ServerConnection connection_;
  bool lostTheRace_ = false;
  int pending_ = 0;
};

}  // namespace

std::unique_ptr<BatchTarget> serverTarget(const std::string& uri, StoreWriter::Sync sync) {
  return std::make_unique<ServerTarget>(uri, sync);
}

}  // namespace velmora::store
