// The storage on a PostgreSQL server: one read-only session with its prepared statements.
#pragma once

#include <array>
#include <string>

#include "store/postgresql_support.h"
#include "store/read_connection.h"

namespace velmora::store {

class PostgresqlReadConnection final : public ReadConnection {
 public:
  // Connects, makes the session read-only on the server and checks that the database
  // holds a store; fails with errors::kDatabase and a French message.
  explicit PostgresqlReadConnection(std::string uri);

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
    kKinds
  };
  // A session lost (server restarted, network cut) is opened again at the next read
  // outside a snapshot or at the next snapshot, so that the next procedure works once the
  // server is back; inside a snapshot its reads fail.
  void connectIfLost();
  void connect();
  // Runs the prepared statement of that kind (prepared at first use in this session).
  Result run(Kind kind, const Parameters& parameters, bool withState = false);

  std::string uri_;
  std::string name_;
  ServerConnection connection_;
  // Per kind, whether it is prepared in this session, without and with the state version.
  std::array<std::array<bool, 2>, kKinds> prepared_{};
  bool inTransaction_ = false;
};

}  // namespace velmora::store
