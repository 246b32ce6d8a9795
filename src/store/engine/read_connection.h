// The storage beneath the query engine: one read-only connection to a store, on SQLite or
// on a PostgreSQL server, shared by the database object and the files opened from it, so
// that a file stays usable as long as it is held. This class keeps what both backends
// share (the snapshot nesting, the caches of files, dictionary items and records read in a
// snapshot, the counters); a backend answers the few reads below it.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <velmora/store/record.h>
#include <velmora/store/sqlite_database.h>  // StoreStatistics
#include <velmora/store/writer.h>           // DictionaryItem
#include "base/text_map.h"
#include "store/engine/key_bytes.h"

namespace velmora::store {

class ReadConnection {
 public:
  // How long a connection waits, in all, for a writer's lock: at the open, or at the
  // start of an outermost snapshot for everything read inside it.
  static constexpr std::chrono::milliseconds kLockWait{3000};

  ReadConnection() = default;
  virtual ~ReadConnection() = default;
  ReadConnection(const ReadConnection&) = delete;
  ReadConnection& operator=(const ReadConnection&) = delete;

  // The store as messages name it: a file path, or a server URI without its password.
  virtual const std::string& path() const = 0;

  bool hasFile(const Text& name);
  // The text form of the record, nothing when the key has none.
  std::optional<Text> readBody(const Text& file, const Text& key);
  // The record stored under the key, nothing when the key has none. Inside a snapshot a
  // key read once is answered again from memory, since the snapshot sees one state of the
  // store: a procedure that reads the same records many times reads each from it once.
  std::optional<NorvikRecord> readRecord(const Text& file, const Text& key);
  std::optional<DictionaryItem> dictionaryItem(const Text& file, const Text& name);

  // Visits the records of a file whose key bytes lie in [lower, upper) in key order, that
  // is UTF-16 code-unit order (no upper bound when upper is empty). The body is read only
  // when withBody is set.
  using Visitor =
      std::function<void(std::span<const std::uint8_t> key, std::span<const std::uint8_t> body)>;
  struct Range {
    const Text& file;
    const std::vector<std::uint8_t>& lower;
    const std::vector<std::uint8_t>& upper;
    bool withBody;
  };
  void scan(const Text& file, const std::vector<std::uint8_t>& lower,
            const std::vector<std::uint8_t>& upper, bool withBody, const Visitor& visit) {
    static_cast<void>(scanRange({file, lower, upper, withBody}, visit, false));
  }
  // The same scan for a caller that took names from the caches below. Outside a snapshot
  // the scan is one statement, and so one read transaction of its own: false, with no
  // record visited and the caches emptied, when that transaction sees another state of
  // the store than the one the caches were filled in. Inside a snapshot they always hold.
  [[nodiscard]] bool scanInCachedState(const Text& file, const std::vector<std::uint8_t>& lower,
                                       const std::vector<std::uint8_t>& upper, bool withBody,
                                       const Visitor& visit) {
    return scanRange({file, lower, upper, withBody}, visit, true);
  }

  // Every file and every dictionary item, for an export: read as they are, not cached.
  virtual std::vector<Text> fileNames() = 0;
  virtual std::vector<DictionaryItem> dictionaryItems() = 0;

  // What the caches know, without a statement: nothing when a name was not looked up
  // since the store last changed. Only a scan's answer tells whether they still hold.
  std::optional<bool> knownFile(TextView name) const;
  const std::optional<DictionaryItem>* knownItem(TextView file, TextView name) const;
  bool inSnapshot() const { return snapshotDepth_ > 0; }

  StoreStatistics& statistics() { return statistics_; }

  // Holds one read transaction over several statements, so that they see one state of
  // the store. A snapshot taken inside another shares it.
  class Snapshot {
   public:
    explicit Snapshot(ReadConnection& connection);
    ~Snapshot();
    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;

   private:
    ReadConnection& connection_;
  };

 protected:
  // What a backend answers. A state version is a number that changes whenever a writer
  // commits: the caches of files and names hold while it does not.
  //
  // Begins the read transaction of an outermost snapshot; its state version.
  virtual std::uint64_t beginSnapshot() = 0;
  // Ends it; cannot fail (ending a read loses nothing).
  virtual void endSnapshot() noexcept = 0;
  virtual bool lookupFile(const Text& name) = 0;
  virtual std::optional<Text> lookupBody(const Text& file, const Text& key) = 0;
  virtual std::optional<DictionaryItem> lookupItem(const Text& file, const Text& name) = 0;
  // Visits the range in key order. With checkState (only outside a snapshot), the scan
  // calls stateHolds with the state version its own statement sees before it visits the
  // first record, and stops, returning false, when that says no. Counts each key visited
  // in statistics().scannedKeys.
  virtual bool scanRecords(const Range& range, const Visitor& visit, bool checkState) = 0;

  // Whether the caches were filled in that state; empties them and keeps that state
  // when not.
  bool stateHolds(std::uint64_t version);
  // Empties the caches: after a reconnection nothing is known of the store.
  void forgetCaches();

 private:
  bool scanRange(const Range& range, const Visitor& visit, bool checkCaches);

  StoreStatistics statistics_;
  int snapshotDepth_ = 0;
  // The state version the caches were filled in; nothing while they are empty.
  std::optional<std::uint64_t> cachedVersion_;
  TextMap<bool> knownFiles_;
  TextMap<TextMap<std::optional<DictionaryItem>>> knownItems_;  // by file, then name
  // The records read in the current snapshot, by file and key; emptied when it ends.
  TextMap<TextMap<std::optional<NorvikRecord>>> readInSnapshot_;
};

// A new read-only connection to the store at that location: a file path or a server URI.
// Fails with errors::kDatabase (or kBusy) and a French message saying what to do.
std::shared_ptr<ReadConnection> connectToStore(const std::string& location);

}  // namespace velmora::store
