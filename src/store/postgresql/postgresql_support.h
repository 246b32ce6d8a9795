// What the store's PostgreSQL reader and writer share: libpq handles that free
// themselves, the connection with its settings, statements with binary parameters, the
// schema, and the failures a server brings, in French.
#pragma once

#include <libpq-fe.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <velmora/base/failure.h>

namespace velmora::store {

struct ServerConnectionCloser {
  void operator()(PGconn* connection) const noexcept { PQfinish(connection); }
};
using ServerConnection = std::unique_ptr<PGconn, ServerConnectionCloser>;

struct ResultClearer {
  void operator()(PGresult* result) const noexcept { PQclear(result); }
};
using Result = std::unique_ptr<PGresult, ResultClearer>;

// The server's own words, on one line (no line break, no tab), for the end of a message.
std::string causeOf(const char* message);

// The URI as messages show it: without its password.
std::string displayUri(std::string_view uri);

// Connects to the server the URI names. Fails with errors::kDatabase, in French, telling
// apart a server that does not answer, a refused authentication and a missing database.
// A URI without its own connect_timeout waits at most kConnectWait seconds.
inline constexpr const char* kConnectWait = "10";
inline constexpr std::chrono::seconds kConnectWaitSeconds{10};
// How long a session that a host list preferring standbys opened on another server (its
// standbys were away) stays there before it tries them again, between two procedures.
inline constexpr std::chrono::seconds kStandbyRetry{30};
ServerConnection connectToServer(const std::string& uri, const std::string& name);

// Whether the URI lists several servers and the session prefers standbys among them
// (target_session_attrs prefer-standby or read-only, in the URI or PGTARGETSESSIONATTRS).
bool prefersStandby(PGconn* connection, const std::string& uri);
// Whether the session is on a hot standby, as the server said when it opened.
bool onStandby(PGconn* connection);
// Starts opening a session on a standby of the URI's list without waiting for it
// (libpq's PQconnectStartParams; the caller polls it): nothing when libpq cannot start.
ServerConnection startOnStandby(const std::string& uri);
// Drops what libpq would print on standard error of what the server says outside an
// answer (the "FATAL: terminating connection" of a server stopping under an idle session).
void quietNotices(PGconn* connection);

// The parameters of one statement: texts (UTF-8) and byte strings, sent in binary.
class Parameters {
 public:
  Parameters& text(std::string value);
  Parameters& bytes(std::vector<std::uint8_t> value);
  Parameters& integer(long long value);

  int size() const { return static_cast<int>(values_.size()); }
  const char* const* values() const;
  const int* lengths() const { return lengths_.data(); }
  const int* formats() const { return formats_.data(); }

 private:
  std::vector<std::string> values_;
  mutable std::vector<const char*> pointers_;
  std::vector<int> lengths_;
  std::vector<int> formats_;
};

// The failure of a statement, in French: errors::kBusy for a timeout or a lock the server
// gave up waiting for, errors::kDatabase otherwise (connection lost, no right to read, not
// a store, ...).
Failure statementFailure(PGconn* connection, const PGresult* result, const std::string& name);
// Runs a statement without parameters (text results); fails with statementFailure.
Result execute(PGconn* connection, const std::string& sql, const std::string& name);
// Runs a statement with parameters, results in binary; fails with statementFailure.
Result execute(PGconn* connection, const std::string& sql, const Parameters& parameters,
               const std::string& name);

// A binary column's bytes; a binary integer column's value.
std::span<const std::uint8_t> bytesAt(const PGresult* result, int row, int column);
long long integerAt(const PGresult* result, int row, int column);

// The tables, created by the writer in an empty schema. The generation counts the
// committed batches: readers compare it to know whether what they cached still holds.
extern const char* const kServerSchema;
// Fails with errors::kDatabase (French) when the database is not a store of this version.
void checkServerSchema(PGconn* connection, const std::string& name);

}  // namespace velmora::store
