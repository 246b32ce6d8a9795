// The writable side of the store, for the host and the tools: the control itself only
// ever reads. Changes are gathered in a Batch and applied in one transaction.
#pragma once

#include <velmora/export.h>

#include <memory>
#include <string>
#include <variant>
#include <vector>

#include <velmora/base/text.h>
#include <velmora/store/record.h>

struct sqlite3;

namespace velmora {

namespace store {
// An open SQLite file that closes itself.
struct VELMORA_EXPORT ConnectionCloser {
  void operator()(sqlite3* db) const noexcept;
};
using Connection = std::unique_ptr<sqlite3, ConnectionCloser>;
// Where a writer's batches go: one backend of the store.
class BatchTarget;
}  // namespace store

// A name that queries may use for a field of a file: either an attribute (0 is the key)
// or a run of characters of the key.
struct VELMORA_EXPORT DictionaryItem {
  Text file;
  Text name;
  int attribute = -1;  // >= 0: the item is that attribute (0 is the key)
  int keyStart = 0;    // attribute == -1: the item is keyLength characters of the key
  int keyLength = 0;   //   from 1-based position keyStart

  bool isKeyPart() const { return attribute < 0; }
  friend bool operator==(const DictionaryItem&, const DictionaryItem&) = default;
};

// Changes gathered in order, checked as they are added, applied later by a StoreWriter.
// A value: copy or append batches freely; nothing is written until apply.
class VELMORA_EXPORT Batch {
 public:
  struct CreateFile {
    Text name;
  };
  struct PutRecord {
    Text file;
    Text key;
    Text body;  // the record's text form
  };
  struct DeleteRecord {
    Text file;
    Text key;
  };
  using Change = std::variant<CreateFile, PutRecord, DeleteRecord, DictionaryItem>;

  // Each of these checks its arguments and fails with errors::kInvalidCall on a bad
  // name, so that a batch never holds something the store would refuse.
  void createFile(const Text& name);
  // Creates the file if needed; replaces a record already under that key.
  void putRecord(const Text& file, const Text& key, const NorvikRecord& record);
  // Nothing happens when there is no such record.
  void deleteRecord(const Text& file, const Text& key);
  // Creates the file if needed; replaces an item of the same name in that file.
  void defineItem(const DictionaryItem& item);

  // The changes in the order added; append adds other's after them.
  std::size_t size() const { return changes_.size(); }
  const std::vector<Change>& changes() const { return changes_; }
  void append(const Batch& other);

 private:
  std::vector<Change> changes_;
};

// File names are words of the query language: not empty, no blank, no double quote,
// no mark. Fails with errors::kInvalidCall otherwise.
VELMORA_EXPORT void checkFileName(TextView name);

// A connection able to write, of its own: the only way anything is written to a store.
// One thread at a time; move-only, the connection closes with the writer. Writers of one
// store wait for each other (a bounded wait, then errors::kBusy); readers never wait for
// a writer's transaction, except SQLite readers while it commits.
class VELMORA_EXPORT StoreWriter {
 public:
  // Durable waits for the disk at each commit; Fast does not, for throw-away files
  // (tests, a sample built aside and renamed into place).
  enum class Sync { Durable, Fast };

  // path is a file, or a PostgreSQL URI (postgresql://... or postgres://...). Creates the
  // database file when absent, the tables in an empty server database (or schema); fails
  // with errors::kDatabase when the file or the database holds something else than a
  // store. The writer has a connection of its own, able to write.
  explicit StoreWriter(const std::string& path, Sync sync = Sync::Durable);
  ~StoreWriter();
  StoreWriter(StoreWriter&&) noexcept;
  StoreWriter& operator=(StoreWriter&&) noexcept;

  // Applies the batch in one transaction: all or nothing. Fails with errors::kDatabase
  // (the store refused a change; nothing of the batch is kept) or errors::kBusy (another
  // writer held the lock too long).
  void apply(const Batch& batch);

  const std::string& path() const { return path_; }

 private:
  std::string path_;
  std::unique_ptr<store::BatchTarget> target_;
};

}  // namespace velmora
