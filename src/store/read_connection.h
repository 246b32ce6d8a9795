// One read-only SQLite connection with its prepared statements, shared by the database
// object and the files opened from it, so that a file stays usable as long as it is held.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include <velmora/store/record.h>
#include <velmora/store/sqlite_database.h>  // StoreStatistics
#include <velmora/store/writer.h>
#include "base/text_map.h"
#include "store/sqlite_support.h"

namespace velmora::store {

class ReadConnection {
 public:
  // How long the connection waits, in all, for a writer's lock: at the open, or at the
  // start of an outermost snapshot for everything read inside it.
  static constexpr std::chrono::milliseconds kLockWait{3000};

  explicit ReadConnection(std::string path);
  ReadConnection(const ReadConnection&) = delete;
  ReadConnection& operator=(const ReadConnection&) = delete;

  const std::string& path() const { return path_; }
  sqlite3* handle() const { return db_.get(); }

  bool hasFile(const Text& name);
  // The text form of the record, nothing when the key has none.
  std::optional<Text> readBody(const Text& file, const Text& key);
  // The record stored under the key, nothing when the key has none. Inside a snapshot a
  // key read once is answered again from memory, since the snapshot sees one state of the
  // file: a procedure that reads the same records many times reads each from the file once.
  std::optional<NorvikRecord> readRecord(const Text& file, const Text& key);
  std::optional<DictionaryItem> dictionaryItem(const Text& file, const Text& name);

  // Visits the records of a file whose key bytes lie in [lower, upper) in key order
  // (no upper bound when upper is empty). The body is read only when withBody is set.
  using Visitor =
      std::function<void(std::span<const std::uint8_t> key, std::span<const std::uint8_t> body)>;
  void scan(const Text& file, const std::vector<std::uint8_t>& lower,
            const std::vector<std::uint8_t>& upper, bool withBody, const Visitor& visit) {
    static_cast<void>(scanRange(file, lower, upper, withBody, visit, false));
  }
  // The same scan for a caller that took names from the caches below. Outside a snapshot
  // the scan is one statement, and so one read transaction of its own: false, with no
  // record visited and the caches emptied, when that transaction sees another state of
  // the file than the one the caches were filled in. Inside a snapshot they always hold.
  [[nodiscard]] bool scanInCachedState(const Text& file, const std::vector<std::uint8_t>& lower,
                                       const std::vector<std::uint8_t>& upper, bool withBody,
                                       const Visitor& visit) {
    return scanRange(file, lower, upper, withBody, visit, true);
  }

  // What the caches know, without a statement: nothing when a name was not looked up
  // since the file last changed. Only a scan's answer tells whether they still hold.
  std::optional<bool> knownFile(TextView name) const;
  const std::optional<DictionaryItem>* knownItem(TextView file, TextView name) const;
  bool inSnapshot() const { return snapshotDepth_ > 0; }

  StoreStatistics& statistics() { return statistics_; }

  // Holds one read transaction over several statements, so that they see one state of
  // the file and take its lock once: each statement on its own would lock, check and
  // unlock the file again. The lock is taken at once, waiting at most kLockWait, and
  // fails with errors::kBusy past it. A snapshot taken inside another shares it.
  class Snapshot {
   public:
    explicit Snapshot(ReadConnection& connection);
    ~Snapshot();
    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;

   private:
    ReadConnection& connection_;
  };

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
  // Files and dictionary items change rarely: they are taken from caches that are
  // emptied whenever another connection has changed the file since they were filled.
  void refreshCaches();
  // SQLite's count of the changes it has seen in the file, as of the current (or, past
  // its end, the last) read transaction: a file control, not a statement.
  unsigned dataVersion() const;
  bool scanRange(const Text& file, const std::vector<std::uint8_t>& lower,
                 const std::vector<std::uint8_t>& upper, bool withBody, const Visitor& visit,
                 bool checkCaches);
  // Whether the caches were filled in the state the current read transaction sees;
  // empties them when not.
  bool cachesHold();
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
  StoreStatistics statistics_;
  int snapshotDepth_ = 0;
  std::chrono::steady_clock::time_point deadline_;
  // The data version the caches were filled in; nothing while they are empty.
  std::optional<unsigned> cachedVersion_;
  TextMap<bool> knownFiles_;
  TextMap<TextMap<std::optional<DictionaryItem>>> knownItems_;  // by file, then name
  // The records read in the current snapshot, by file and key; emptied when it ends.
  TextMap<TextMap<std::optional<NorvikRecord>>> readInSnapshot_;
};

}  // namespace velmora::store
