// The PostgreSQL backend's read session: opening it (again past a host that went away,
// or back on a standby after a fallback), one read in a transaction of its own, and the
// snapshots, repeatable-read transactions whose COMMIT the next statement collects.
#include "store/postgresql/postgresql_read_connection.h"

#include <charconv>
#include <cstring>
#include <optional>

#include <poll.h>

namespace velmora::store {

namespace {

bool lost(PGconn* connection) {
  return connection == nullptr || PQstatus(connection) == CONNECTION_BAD;
}

// What each read transaction carries, since a session's own settings do not survive a
// pooler that hands the server connection to another client between transactions: set
// local to the transaction, they end with it. The reads cannot write, whatever role
// logged in; a statement that a lock or a load keeps waiting ends with a failure instead
// of a hang, unless the office set its own limit; and a walk in key order follows the
// primary key, never a sort of a whole file (which would spill to disk).
constexpr const char* kReadSettings =
    "SELECT set_config('transaction_read_only', 'on', true), "
    "set_config('enable_sort', 'off', true), "
    "CASE WHEN current_setting('statement_timeout') = '0' "
    "THEN set_config('statement_timeout', '30s', true) END";

// One statement in a transaction of its own with the read settings, in one round trip:
// the settings and the statement pipelined up to one sync, which the server runs as one
// implicit transaction. Unnamed statements: nothing stays on the server connection.
Result readAlone(PGconn* db, const std::string& sql, const Parameters& parameters, int format,
                 const std::string& name) {
  if (PQenterPipelineMode(db) == 0) throw statementFailure(db, nullptr, name);
  if (PQsendQueryParams(db, kReadSettings, 0, nullptr, nullptr, nullptr, nullptr, 0) == 0 ||
      PQsendQueryParams(db, sql.c_str(), parameters.size(), nullptr, parameters.values(),
                        parameters.lengths(), parameters.formats(), format) == 0 ||
      PQpipelineSync(db) == 0) {
    throw statementFailure(db, nullptr, name);
  }
  // Answers: the settings', the statement's, each followed by a null, then the sync.
  Result answer;
  std::optional<Failure> failure;
  for (int statement = 0; statement < 2; ++statement) {
    Result result(PQgetResult(db));
    if (result == nullptr) throw failure ? *failure : statementFailure(db, nullptr, name);
    const auto status = PQresultStatus(result.get());
    if (status != PGRES_TUPLES_OK && !failure) {
      failure =
          statementFailure(db, status == PGRES_PIPELINE_ABORTED ? nullptr : result.get(), name);
    }
    if (statement == 1) answer = std::move(result);
    while (Result(PQgetResult(db)) != nullptr) {
    }
  }
  const Result sync(PQgetResult(db));
  const bool synced = sync != nullptr && PQresultStatus(sync.get()) == PGRES_PIPELINE_SYNC &&
                      PQexitPipelineMode(db) != 0;
  if (failure) throw *failure;  // the first cause, also of a session lost after it
  if (!synced) throw statementFailure(db, nullptr, name);
  return answer;
}

}  // namespace

PostgresqlReadConnection::PostgresqlReadConnection(std::string uri,
                                                   std::chrono::steady_clock::duration standbyRetry)
    : uri_(std::move(uri)), name_(displayUri(uri_)), standbyRetry_(standbyRetry) {
  connect();
}

void PostgresqlReadConnection::connect() {
  connection_.reset();
  inTransaction_ = false;
  commitSent_ = false;
  forgetCaches();
  cache_ = {};
  dropAttempt();
  connection_ = connectToServer(uri_, name_);
  checkServerSchema(connection_.get(), name_);
  awayFromStandby_ = prefersStandby(connection_.get(), uri_) && !onStandby(connection_.get());
  nextTry_ = std::chrono::steady_clock::now() + standbyRetry_;
}

void PostgresqlReadConnection::dropAttempt() noexcept {
  attempt_.reset();
  attemptPoll_ = PGRES_POLLING_WRITING;  // libpq's first step: as if it asked to write
}

void PostgresqlReadConnection::returnToStandby() noexcept {
  if (!awayFromStandby_ || lost(connection_.get())) return;
  const auto now = std::chrono::steady_clock::now();
  if (attempt_ == nullptr) {
    if (now < nextTry_) return;
    nextTry_ = now + standbyRetry_;
    attempt_ = startOnStandby(uri_);
    attemptStarted_ = now;
    if (attempt_ == nullptr) return;
  }
  // libpq's steps, as far as they go without waiting for the network.
  while (attemptPoll_ != PGRES_POLLING_OK) {
    if (attemptPoll_ == PGRES_POLLING_FAILED || now - attemptStarted_ > kConnectWaitSeconds) {
      dropAttempt();  // no standby answered: the next try after standbyRetry
      return;
    }
    pollfd ready{PQsocket(attempt_.get()),
                 static_cast<short>(attemptPoll_ == PGRES_POLLING_READING ? POLLIN : POLLOUT), 0};
    if (ready.fd < 0 || poll(&ready, 1, 0) == 0) return;  // not yet: at the next procedure
    attemptPoll_ = PQconnectPoll(attempt_.get());
  }
  ServerConnection standby = std::move(attempt_);
  dropAttempt();
  quietNotices(standby.get());
  try {
    checkServerSchema(standby.get(), name_);
  } catch (const Failure&) {
    return;  // the session in use stays; the next try after standbyRetry
  }
  // Nothing of the other server is kept: the standby may lag behind it.
  connection_ = std::move(standby);
  commitSent_ = false;
  forgetCaches();
  cache_ = {};
  awayFromStandby_ = false;
}

void PostgresqlReadConnection::connectIfLost() {
  settle();
  returnToStandby();
  if (lost(connection_.get())) connect();
}

void PostgresqlReadConnection::settle() noexcept {
  if (!commitSent_) return;
  commitSent_ = false;
  // Its failure is nothing to undo; a lost session shows at the next statement.
  while (Result(PQgetResult(connection_.get())) != nullptr) {
  }
}

Result PostgresqlReadConnection::read(const std::string& sql, const Parameters& parameters,
                                      int format) {
  // In a snapshot, a statement of its transaction. Outside, a read is a transaction of its
  // own: if the session was lost since the last one, it is opened again and the read made
  // once more.
  if (inTransaction_) {
    PGconn* db = connection_.get();
    Result result(PQexecParams(db, sql.c_str(), parameters.size(), nullptr, parameters.values(),
                               parameters.lengths(), parameters.formats(), format));
    if (result == nullptr || PQresultStatus(result.get()) != PGRES_TUPLES_OK) {
      throw statementFailure(db, result.get(), name_);
    }
    return result;
  }
  for (int attempt = 0;; ++attempt) {
    connectIfLost();
    try {
      return readAlone(connection_.get(), sql, parameters, format, name_);
    } catch (const Failure&) {
      // A pipeline left unfinished leaves the session in an unknown state: opened again.
      if (!lost(connection_.get()) && PQpipelineStatus(connection_.get()) != PQ_PIPELINE_OFF) {
        connection_.reset();
      }
      if (attempt > 0 || !lost(connection_.get())) throw;
    }
  }
}

std::uint64_t PostgresqlReadConnection::beginSnapshot() {
  // Nothing is read yet: a session found lost at the first statement is opened again.
  for (int attempt = 0;; ++attempt) {
    connectIfLost();
    try {
      const Result result =
          execute(connection_.get(),
                  std::string("BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY; ") + kReadSettings +
                      "; SELECT generation, xmin FROM velmora_store",
                  name_);
      inTransaction_ = true;
      if (PQntuples(result.get()) != 1) {
        endSnapshot();
        checkServerSchema(connection_.get(), name_);  // says what is wrong
      }
      const auto number = [&](int column) {
        const char* text = PQgetvalue(result.get(), 0, column);
        std::uint64_t value = 0;
        std::from_chars(text, text + std::strlen(text), value);
        return value;
      };
      const std::pair state(number(0), number(1));
      if (cache_.state != state || cache_.bytes > kMostCachedBytes) {
        cache_ = {};
        cache_.state = state;
      }
      return state.first;
    } catch (const Failure&) {
      if (inTransaction_) endSnapshot();
      if (attempt > 0 || !lost(connection_.get())) throw;
    }
  }
}

void PostgresqlReadConnection::endSnapshot() noexcept {
  inTransaction_ = false;
  // Ending a read-only transaction cannot lose anything: the procedure need not wait for
  // its answer, which the next statement takes first.
  commitSent_ = !lost(connection_.get()) && PQsendQuery(connection_.get(), "COMMIT") != 0;
}

}  // namespace velmora::store
