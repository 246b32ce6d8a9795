// The storage on one SQLite file: a read-only handle with its prepared statements.
#pragma once

#include <array>
#include <chrono>
#include <optional>
#include <string>

#include "store/engine/read_connection.h"
#include "store/sqlite/sqlite_support.h"

namespace velmora::store {

class SqliteReadConnection final : public ReadConnection {
 public:
  explicit SqliteReadConnection(std::string path);

  const std::string& path() const override { return path_; }
  sqlite3* handle() const { return db_.get(); }
  std::vector<Text> fileNames() override;
  std::vector<DictionaryItem> dictionaryItems() override;

 protected:
  // The lock is taken at the start of the snapshot, waiting at most kLockWait, and fails
  // with errors::kBusy past it: each statement on its own would lock, check and unlock
  // the file again.
  std::uint64_t beginSnapshot() override;
  void endSnapshot() noexcept override;
  bool lookupFile(const Text& name) override;
  std::optional<Text> lookupBody(const Text& file, const Text& key) override;
  std::optional<DictionaryItem> lookupItem(const Text& file, const Text& name) override;
  bool scanRecords(const Range& range, const Visitor& visit, bool checkState) override;

 private:
  enum Kind {
    kFileExists,
    kReadRecord,
    kReadItem,
    kScanKeys,
    kScanKeysTo,
    kScanRecords,
    kScanRecordsTo,
    kBegin,
    kCommit,
    kDataVersion,
    kKinds
  };
  // SQLite's count of the changes it has seen in the file, as of the current (or, past
  // its end, the last) read transaction: a file control, not a statement.
  unsigned dataVersion() const;
  // The control never writes: a read-only handle makes that a property of the file
  // access, not a promise of the code.
  void open();
  // SQLite's busy handler: waits while the deadline of the current wait is ahead.
  static int onBusy(void* self, int attempts);
  // Prepared at first use and kept: opening stays cheap, and the hot paths reuse them.
  Statement& statement(Kind kind);

  std::string path_;
  Connection db_;
  std::array<std::optional<Statement>, kKinds> statements_;
  bool inTransaction_ = false;
  std::chrono::steady_clock::time_point deadline_;
};

}  // namespace velmora::store
