// The SQLite backend's reads: one read-only handle and its prepared statements, for files,
// dictionary items, records and range scans. Snapshots are read transactions on that handle.
#include "store/sqlite/sqlite_read_connection.h"

namespace velmora::store {

constexpr std::array<const char*, 10> kSql = {
    "SELECT 1 FROM files WHERE name = ?1",
    "SELECT body FROM records WHERE file = ?1 AND key = ?2",
    "SELECT attribute, key_start, key_length FROM dictionary WHERE file = ?1 AND name = ?2",
    "SELECT key FROM records WHERE file = ?1 AND key >= ?2 ORDER BY key",
    "SELECT key FROM records WHERE file = ?1 AND key >= ?2 AND key < ?3 ORDER BY key",
    "SELECT key, body FROM records WHERE file = ?1 AND key >= ?2 ORDER BY key",
    "SELECT key, body FROM records WHERE file = ?1 AND key >= ?2 AND key < ?3 ORDER BY key",
    "BEGIN",
    "COMMIT",
    "PRAGMA data_version",  // read only to take the read lock at the start of a snapshot
};

namespace {

// A writer that stopped half way (killed, disk full) leaves a journal that must be rolled
// back, or a write-ahead log whose index must be rebuilt, before the file can be read;
// a read-only handle may do neither. A short read-write open does it, as any SQLite
// reader that may write would: it puts back the last committed state and writes nothing
// else. False when the file or its folder cannot be written.
bool recoverAfterAStoppedWriter(const std::string& path) {
  sqlite3* raw = nullptr;
  const int opened = sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READWRITE, nullptr);
  const Connection db(raw);
  if (opened != SQLITE_OK) return false;
  sqlite3_busy_timeout(db.get(), static_cast<int>(SqliteReadConnection::kLockWait.count()));
  return sqlite3_exec(db.get(), "SELECT count(*) FROM sqlite_master", nullptr, nullptr, nullptr) ==
         SQLITE_OK;
}

bool needsRecovery(int code) {
  return code == SQLITE_READONLY_ROLLBACK || code == SQLITE_READONLY_RECOVERY ||
         code == SQLITE_READONLY_CANTINIT || code == SQLITE_READONLY_CANTLOCK;
}

}  // namespace

SqliteReadConnection::SqliteReadConnection(std::string path) : path_(std::move(path)) {
  open();
  try {
    checkSchema(db_.get(), path_);
  } catch (const SchemaFailure& failure) {
    if (!needsRecovery(failure.sqliteCode()) || !recoverAfterAStoppedWriter(path_)) throw;
    open();
    checkSchema(db_.get(), path_);
  }
}

void SqliteReadConnection::open() {
  db_.reset();
  db_ = openConnection(path_, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX);
  sqlite3_busy_handler(db_.get(), &SqliteReadConnection::onBusy, this);
  deadline_ = std::chrono::steady_clock::now() + kLockWait;
}

int SqliteReadConnection::onBusy(void* self, int attempts) {
  auto& connection = *static_cast<SqliteReadConnection*>(self);
  // A statement outside any snapshot starts a wait of its own.
  if (attempts == 0 && !connection.inTransaction_) {
    connection.deadline_ = std::chrono::steady_clock::now() + kLockWait;
  }
  if (std::chrono::steady_clock::now() >= connection.deadline_) return 0;
  sqlite3_sleep(attempts < 10 ? 1 : 10);
  return 1;
}

Statement& SqliteReadConnection::statement(Kind kind) {
  auto& slot = statements_[kind];
  if (!slot) slot.emplace(db_.get(), kSql[kind], path_);
  return *slot;
}

std::uint64_t SqliteReadConnection::beginSnapshot() {
  // The one wait of the snapshot: reading the data version takes the read lock.
  deadline_ = std::chrono::steady_clock::now() + kLockWait;
  statement(kBegin).reset().run();
  inTransaction_ = true;
  try {
    statement(kDataVersion).reset().run();
  } catch (...) {
    inTransaction_ = false;
    sqlite3_exec(db_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    throw;
  }
  return dataVersion();
}

void SqliteReadConnection::endSnapshot() noexcept {
  inTransaction_ = false;
  // Ending a read transaction cannot lose anything; a failure here has nothing to undo.
  try {
    statement(kCommit).reset().run();
  } catch (const std::exception&) {
    sqlite3_exec(db_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
  }
}

unsigned SqliteReadConnection::dataVersion() const {
  unsigned version = 0;
  sqlite3_file_control(db_.get(), "main", SQLITE_FCNTL_DATA_VERSION, &version);
  return version;
}

bool SqliteReadConnection::lookupFile(const Text& name) {
  statement(kFileExists).reset().bind(1, toUtf8(name));
  const bool found = statement(kFileExists).step();
  statement(kFileExists).reset();
  return found;
}

std::optional<Text> SqliteReadConnection::lookupBody(const Text& file, const Text& key) {
  statement(kReadRecord).reset().bind(1, toUtf8(file)).bindBlob(2, encodeText(key));
  if (!statement(kReadRecord).step()) {
    statement(kReadRecord).reset();
    return std::nullopt;
  }
  Text body = decodeText(statement(kReadRecord).blobColumn(0));
  statement(kReadRecord).reset();
  return body;
}

std::optional<DictionaryItem> SqliteReadConnection::lookupItem(const Text& file, const Text& name) {
  Statement& read = statement(kReadItem);
  read.reset().bind(1, toUtf8(file)).bind(2, toUtf8(name));
  std::optional<DictionaryItem> item;
  if (read.step()) {
    item = DictionaryItem{file, name, static_cast<int>(read.intColumn(0)),
                          static_cast<int>(read.intColumn(1)), static_cast<int>(read.intColumn(2))};
  }
  read.reset();
  return item;
}

std::vector<Text> SqliteReadConnection::fileNames() {
  std::vector<Text> names;
  Statement list(db_.get(), "SELECT name FROM files", path_);
  while (list.step()) names.push_back(fromUtf8(list.textColumn(0)));
  return names;
}

std::vector<DictionaryItem> SqliteReadConnection::dictionaryItems() {
  std::vector<DictionaryItem> items;
  Statement list(db_.get(), "SELECT file, name, attribute, key_start, key_length FROM dictionary",
                 path_);
  while (list.step()) {
    items.push_back({fromUtf8(list.textColumn(0)), fromUtf8(list.textColumn(1)),
                     static_cast<int>(list.intColumn(2)), static_cast<int>(list.intColumn(3)),
                     static_cast<int>(list.intColumn(4))});
  }
  return items;
}

bool SqliteReadConnection::scanRecords(const Range& range, const Visitor& visit, bool checkState) {
  const bool bounded = !range.upper.empty();
  Statement& statement = this->statement(range.withBody ? (bounded ? kScanRecordsTo : kScanRecords)
                                                        : (bounded ? kScanKeysTo : kScanKeys));
  statement.reset().bind(1, toUtf8(range.file)).bindBlob(2, range.lower);
  if (bounded) statement.bindBlob(3, range.upper);
  try {
    bool more = statement.step();
    // The first step began the statement's read transaction (and, with no row, ended it:
    // the version is then still that transaction's).
    if (checkState && !stateHolds(dataVersion())) {
      statement.reset();
      return false;
    }
    for (; more; more = statement.step()) {
      ++statistics().scannedKeys;
      visit(statement.blobColumn(0),
            range.withBody ? statement.blobColumn(1) : std::span<const std::uint8_t>{});
    }
  } catch (...) {
    statement.reset();
    throw;
  }
  statement.reset();
  return true;
}

}  // namespace velmora::store
