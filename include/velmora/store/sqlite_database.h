// The embedded store: NorvikDatabase over one SQLite file, opened read-only.
#pragma once

#include <velmora/export.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include <velmora/store/database.h>

struct sqlite3;

namespace velmora {

namespace store {
class ReadConnection;
}

// Counters of one connection, for tests and benchmarks.
struct VELMORA_EXPORT StoreStatistics {
  std::uint64_t decodedRecords = 0;  // record bodies turned back into text
  std::uint64_t scannedKeys = 0;     // keys visited by queries
  std::uint64_t queries = 0;
};

// A NorvikDatabase over one SQLite file, opened read-only: it never changes the file (a
// journal left by a writer that stopped is recovered on open, as SQLite does). Threads
// and ownership as NorvikDatabase: the object owns a share of the connection, which
// closes when the object and the last file opened from it are gone.
class VELMORA_EXPORT SqliteDatabase final : public NorvikDatabase {
 public:
  // Opens the file. Fails with errors::kDatabase, in French, naming the path and the
  // cause, when the file is missing, a folder, not SQLite, damaged or holds no store;
  // errors::kInvalidCall for a server URI (use openDatabase); errors::kBusy when a writer
  // keeps the lock past store::ReadConnection::kLockWait.
  explicit SqliteDatabase(const std::string& path);

  FileRef OpenFile(const Text& Nom) override;
  RecordRef RunQuery(const Text& Requete, const Text& Options, long& Nombre) override;
  // One read transaction of this connection; fails with errors::kBusy when a writer keeps
  // the lock past store::ReadConnection::kLockWait.
  std::unique_ptr<Snapshot> holdSnapshot() override;

  // The path the file was opened by.
  const std::string& path() const;
  // Counters of this connection, for tests and benchmarks; reset puts them to zero.
  const StoreStatistics& statistics() const;
  void resetStatistics();
  // The read-only SQLite handle, for tools and tests that check what it allows.
  sqlite3* nativeHandle() const;

 private:
  std::shared_ptr<store::ReadConnection> connection_;
};

// A new read-only connection to the store at that location: a file path, or a PostgreSQL
// server's URI (postgresql://user@host/database or postgres://...; several hosts,
// postgresql://user@h1:5432,h2:5432/database?target_session_attrs=prefer-standby, are
// tried in turn), whose every transaction is then read-only on the server. It works
// through a pooler in transaction mode (PgBouncer): nothing is kept in the session. A
// session that such a list, preferring standbys (prefer-standby or read-only), opened on a
// server that is not a standby tries the standbys again 30 s later, then every 30 s,
// between two procedures and without waiting for them. Fails with
// errors::kDatabase and a French message that says what to do (no password in it), or
// errors::kBusy as SqliteDatabase does.
VELMORA_EXPORT DatabaseRef openDatabase(const std::string& location);

// Whether the location names a PostgreSQL server (a postgresql:// or postgres:// URI)
// rather than a file.
VELMORA_EXPORT bool isServerUri(std::string_view location);
// The location as output and logs may show it: a server URI with its password masked, a
// file path as it is.
VELMORA_EXPORT std::string shownLocation(std::string_view location);

// The counters of a connection made by openDatabase; fails with errors::kInvalidCall
// for any other kind of database.
VELMORA_EXPORT StoreStatistics statistics(const DatabaseRef& database);

}  // namespace velmora
