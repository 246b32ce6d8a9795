// The storage on a PostgreSQL server: one session, directly or through a pooler, whose
// every transaction is read-only and carries its own settings.
#pragma once

#include <array>
#include <chrono>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "store/engine/read_connection.h"
#include "store/postgresql/postgresql_support.h"

namespace velmora::store {

class PostgresqlReadConnection final : public ReadConnection {
 public:
  // Connects and checks that the database holds a store; fails with errors::kDatabase and
  // a French message. A session that a list preferring standbys opened elsewhere (no
  // standby answered) tries the standbys again after standbyRetry, in the background.
  explicit PostgresqlReadConnection(
      std::string uri, std::chrono::steady_clock::duration standbyRetry = kStandbyRetry);

  const std::string& path() const override { return name_; }
  std::vector<Text> fileNames() override;
  std::vector<DictionaryItem> dictionaryItems() override;

 protected:
  // One repeatable-read, read-only transaction: every statement of the snapshot sees the
  // state of its first one.
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
    kReadAhead,
    kReadAheadTo,
    kKinds
  };
  // What the snapshots read of a file: the records of some key ranges, whole, and records
  // read one by one. Keys are byte strings (std::string compares bytes as unsigned: the
  // server's order).
  struct ReadAhead {
    std::map<std::string, std::string, std::less<>> bodies;  // by key
    // Ranges known whole: first key -> the key past them (nothing: the end of the file).
    std::map<std::string, std::optional<std::string>, std::less<>> ranges;
    std::map<std::string, std::optional<std::string>, std::less<>> points;  // read one by one
    int pointReads = 0;
    int nextRows = kFirstReadAhead;  // doubles at each fetch, up to kMostReadAhead
  };
  // What the snapshots of one committed state read, kept for the next snapshots while that
  // state holds: every commit of a writer changes the store's generation, and a store made
  // again changes its row's version (xmin), so a snapshot that finds both as they were
  // reads the very same tables (on the primary or on a standby). Through a pooler each
  // round trip crosses one more process: a procedure that finds its reads here makes none.
  struct StateCache {
    std::optional<std::pair<std::uint64_t, std::uint64_t>> state;             // generation, xmin
    TextMap<ReadAhead> files;                                                 // by file
    std::optional<std::set<std::string, std::less<>>> fileNames;              // UTF-8
    std::optional<std::map<std::string, DictionaryItem, std::less<>>> items;  // file \0 name
    std::map<std::string, Result, std::less<>> scans;  // by statement and parameters
    std::size_t bytes = 0;                             // of the bodies and scans kept
  };
  // What a state cache may hold; past it, what is read is not kept, and the next
  // snapshot starts a new one.
  static constexpr std::size_t kMostCachedBytes = std::size_t{32} << 20;
  // Whether the key lies in a range already fetched whole; its body then, if any.
  static bool knownAhead(const ReadAhead& ahead, const std::string& key, std::optional<Text>& body);
  // Fetches the next records of the file from key on, up to the next range known whole:
  // rowsAsked of them, or the growing read-ahead's count. Whether it got them all.
  bool readAhead(const Text& file, const std::string& key, ReadAhead& ahead, int rowsAsked = 0);
  // A session lost (server restarted, network cut) is opened again at the next read
  // outside a snapshot or at the next snapshot, so that the next procedure works once the
  // server is back; inside a snapshot its reads fail.
  void connectIfLost();
  void connect();
  // Waits for the answer of the last snapshot's COMMIT, sent without waiting for it.
  void settle() noexcept;
  // Between procedures (never in a snapshot), a session away from the standbys its list
  // prefers starts opening one once standbyRetry has passed, and takes it once it is open,
  // without ever waiting for it: a standby that does not answer holds no procedure up.
  void returnToStandby() noexcept;
  void dropAttempt() noexcept;
  // Runs a statement, unnamed, in the current snapshot or in a read transaction of its
  // own; results in text (format 0) or binary (1).
  Result read(const std::string& sql, const Parameters& parameters, int format);
  // The statement of that kind, results in binary.
  Result run(Kind kind, const Parameters& parameters, bool withState = false);

  std::string uri_;
  std::string name_;
  ServerConnection connection_;
  bool inTransaction_ = false;
  bool commitSent_ = false;
  // Snapshots that read many records of a file one by one (a catalogue's labels) read
  // them by key ranges after their first kPointReadsAlone: one round trip for hundreds of
  // records, none for a key in a range already fetched, and no record fetched twice.
  static constexpr int kPointReadsAlone = 16;
  static constexpr int kFirstReadAhead = 256;
  static constexpr int kMostReadAhead = 4096;
  StateCache cache_;
  // Files found to hold more than kSmallFile records, which are not read whole; kept
  // across states (only a hint: a file that shrank is read by keys).
  static constexpr int kSmallFile = 128;
  std::set<Text> largeFiles_;
  // The return to a standby: due from nextTry_ while awayFromStandby_; the opening under
  // way, its start and libpq's last answer to its polling.
  std::chrono::steady_clock::duration standbyRetry_;
  bool awayFromStandby_ = false;
  std::chrono::steady_clock::time_point nextTry_;
  ServerConnection attempt_;
  std::chrono::steady_clock::time_point attemptStarted_;
  PostgresPollingStatusType attemptPoll_ = PGRES_POLLING_WRITING;
};

}  // namespace velmora::store
