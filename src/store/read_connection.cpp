#include "store/read_connection.h"

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
  sqlite3_busy_timeout(db.get(), static_cast<int>(ReadConnection::kLockWait.count()));
  return sqlite3_exec(db.get(), "SELECT count(*) FROM sqlite_master", nullptr, nullptr, nullptr) ==
         SQLITE_OK;
}

bool needsRecovery(int code) {
  return code == SQLITE_READONLY_ROLLBACK || code == SQLITE_READONLY_RECOVERY ||
         code == SQLITE_READONLY_CANTINIT || code == SQLITE_READONLY_CANTLOCK;
}

}  // namespace

ReadConnection::ReadConnection(std::string path) : path_(std::move(path)) {
  open();
  try {
    checkSchema(db_.get(), path_);
  } catch (const SchemaFailure& failure) {
    if (!needsRecovery(failure.sqliteCode()) || !recoverAfterAStoppedWriter(path_)) throw;
    open();
    checkSchema(db_.get(), path_);
  }
}

void ReadConnection::open() {
  db_.reset();
  db_ = openConnection(path_, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX);
  sqlite3_busy_handler(db_.get(), &ReadConnection::onBusy, this);
  deadline_ = std::chrono::steady_clock::now() + kLockWait;
}

int ReadConnection::onBusy(void* self, int attempts) {
  auto& connection = *static_cast<ReadConnection*>(self);
  // A statement outside any snapshot starts a wait of its own.
  if (attempts == 0 && connection.snapshotDepth_ == 0) {
    connection.deadline_ = std::chrono::steady_clock::now() + kLockWait;
  }
  if (std::chrono::steady_clock::now() >= connection.deadline_) return 0;
  sqlite3_sleep(attempts < 10 ? 1 : 10);
  return 1;
}

Statement& ReadConnection::statement(Kind kind) {
  auto& slot = statements_[kind];
  if (!slot) slot.emplace(db_.get(), kSql[kind], path_);
  return *slot;
}

ReadConnection::Snapshot::Snapshot(ReadConnection& connection) : connection_(connection) {
  if (connection_.snapshotDepth_ > 0) {
    ++connection_.snapshotDepth_;
    return;
  }
  // The one wait of the snapshot: reading the data version takes the read lock.
  connection_.deadline_ = std::chrono::steady_clock::now() + kLockWait;
  connection_.statement(kBegin).reset().run();
  connection_.snapshotDepth_ = 1;
  try {
    connection_.refreshCaches();
  } catch (...) {
    connection_.snapshotDepth_ = 0;
    sqlite3_exec(connection_.db_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    throw;
  }
}

void ReadConnection::refreshCaches() {
  statement(kDataVersion).reset().run();
  static_cast<void>(cachesHold());
}

unsigned ReadConnection::dataVersion() const {
  unsigned version = 0;
  sqlite3_file_control(db_.get(), "main", SQLITE_FCNTL_DATA_VERSION, &version);
  return version;
}

ReadConnection::Snapshot::~Snapshot() {
  if (--connection_.snapshotDepth_ > 0) return;
  connection_.readInSnapshot_.clear();
  // Ending a read transaction cannot lose anything; a failure here has nothing to undo.
  try {
    connection_.statement(kCommit).reset().run();
  } catch (const std::exception&) {
    sqlite3_exec(connection_.db_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
  }
}

std::optional<bool> ReadConnection::knownFile(TextView name) const {
  const auto known = knownFiles_.find(name);
  if (known == knownFiles_.end()) return std::nullopt;
  return known->second;
}

const std::optional<DictionaryItem>* ReadConnection::knownItem(TextView file, TextView name) const {
  const auto names = knownItems_.find(file);
  if (names == knownItems_.end()) return nullptr;
  const auto known = names->second.find(name);
  return known == names->second.end() ? nullptr : &known->second;
}

bool ReadConnection::hasFile(const Text& name) {
  if (snapshotDepth_ > 0) {
    if (const auto known = knownFile(name)) return *known;
  }
  statement(kFileExists).reset().bind(1, toUtf8(name));
  const bool found = statement(kFileExists).step();
  statement(kFileExists).reset();
  if (snapshotDepth_ > 0) knownFiles_.emplace(name, found);
  return found;
}

std::optional<Text> ReadConnection::readBody(const Text& file, const Text& key) {
  statement(kReadRecord).reset().bind(1, toUtf8(file)).bindBlob(2, encodeText(key));
  if (!statement(kReadRecord).step()) {
    statement(kReadRecord).reset();
    return std::nullopt;
  }
  Text body = decodeText(statement(kReadRecord).blobColumn(0));
  statement(kReadRecord).reset();
  ++statistics_.decodedRecords;
  return body;
}

std::optional<NorvikRecord> ReadConnection::readRecord(const Text& file, const Text& key) {
  if (snapshotDepth_ == 0) {
    auto body = readBody(file, key);
    if (!body) return std::nullopt;
    return NorvikRecord(*body);
  }
  auto& read = readInSnapshot_[file];
  const auto known = read.find(TextView(key));
  if (known != read.end()) return known->second;
  auto body = readBody(file, key);
  std::optional<NorvikRecord> record;
  if (body) record.emplace(*body);
  return read.emplace(key, std::move(record)).first->second;
}

std::optional<DictionaryItem> ReadConnection::dictionaryItem(const Text& file, const Text& name) {
  if (snapshotDepth_ > 0) {
    if (const auto* known = knownItem(file, name)) return *known;
  }
  Statement& read = statement(kReadItem);
  read.reset().bind(1, toUtf8(file)).bind(2, toUtf8(name));
  std::optional<DictionaryItem> item;
  if (read.step()) {
    item = DictionaryItem{file, name, static_cast<int>(read.intColumn(0)),
                          static_cast<int>(read.intColumn(1)), static_cast<int>(read.intColumn(2))};
  }
  read.reset();
  if (snapshotDepth_ > 0) knownItems_[file].emplace(name, item);
  return item;
}

bool ReadConnection::scanRange(const Text& file, const std::vector<std::uint8_t>& lower,
                               const std::vector<std::uint8_t>& upper, bool withBody,
                               const Visitor& visit, bool checkCaches) {
  Statement& statement = this->statement(withBody ? (upper.empty() ? kScanRecords : kScanRecordsTo)
                                                  : (upper.empty() ? kScanKeys : kScanKeysTo));
  statement.reset().bind(1, toUtf8(file)).bindBlob(2, lower);
  if (!upper.empty()) statement.bindBlob(3, upper);
  try {
    bool more = statement.step();
    // The first step began the statement's read transaction (and, with no row, ended it:
    // the version is then still that transaction's).
    if (checkCaches && snapshotDepth_ == 0 && !cachesHold()) {
      statement.reset();
      return false;
    }
    for (; more; more = statement.step()) {
      ++statistics_.scannedKeys;
      visit(statement.blobColumn(0),
            withBody ? statement.blobColumn(1) : std::span<const std::uint8_t>{});
    }
  } catch (...) {
    statement.reset();
    throw;
  }
  statement.reset();
  return true;
}

bool ReadConnection::cachesHold() {
  const unsigned now = dataVersion();
  if (cachedVersion_ == now) return true;
  knownFiles_.clear();
  knownItems_.clear();
  cachedVersion_ = now;
  return false;
}

}  // namespace velmora::store
