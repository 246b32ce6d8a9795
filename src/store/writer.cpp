#include <velmora/store/writer.h>

#include <optional>

#include <velmora/base/failure.h>
#include "store/sqlite_support.h"

namespace velmora {

namespace {

[[noreturn]] void invalid(const std::string& what) {
  throw Failure(errors::kInvalidCall, "invalid call: " + what);
}

void checkName(TextView name, const char* what) {
  if (name.empty()) invalid(std::string(what) + " name is empty");
  for (const char16_t c : name) {
    if (c == u' ' || c == u'"' || c == kAttributeMark || c == kValueMark || c == kSubvalueMark ||
        c < 0x20) {
      invalid(std::string(what) + " name \"" + toUtf8(name) +
              "\" holds a blank, a quote or a control character");
    }
  }
}

void checkKey(TextView key) {
  for (const char16_t c : key) {
    if (c == kAttributeMark || c == kValueMark || c == kSubvalueMark) {
      invalid("key \"" + toUtf8(key) + "\" holds a record mark");
    }
  }
}

}  // namespace

void checkFileName(TextView name) {
  checkName(name, "file");
}

void Batch::createFile(const Text& name) {
  checkFileName(name);
  changes_.emplace_back(CreateFile{name});
}

void Batch::putRecord(const Text& file, const Text& key, const NorvikRecord& record) {
  checkFileName(file);
  checkKey(key);
  changes_.emplace_back(PutRecord{file, key, record.r()});
}

void Batch::deleteRecord(const Text& file, const Text& key) {
  checkFileName(file);
  checkKey(key);
  changes_.emplace_back(DeleteRecord{file, key});
}

void Batch::defineItem(const DictionaryItem& item) {
  checkFileName(item.file);
  checkName(item.name, "dictionary");
  const bool nameIsNumber =
      !item.name.empty() && item.name.find_first_not_of(u"0123456789") == Text::npos;
  if (nameIsNumber || item.name == u"@ID") {
    invalid("dictionary name \"" + toUtf8(item.name) + "\" would hide an attribute number");
  }
  if (item.isKeyPart() && (item.keyStart < 1 || item.keyLength < 1)) {
    invalid("dictionary item " + toUtf8(item.name) +
            ": a key part needs a start of 1 or more and a length of 1 or more");
  }
  changes_.emplace_back(item);
}

void Batch::append(const Batch& other) {
  changes_.insert(changes_.end(), other.changes_.begin(), other.changes_.end());
}

namespace {

// True when the file holds no table yet: a new file, or one whose creation was rolled back.
bool holdsNoTable(sqlite3* db, const std::string& path) {
  store::Statement count(db, "SELECT count(*) FROM sqlite_master", path);
  return count.step() && count.intColumn(0) == 0;
}

}  // namespace

StoreWriter::StoreWriter(const std::string& path, Sync sync) : path_(path) {
  db_ = store::openConnection(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
  if (sync == Sync::Fast) store::execute(db_.get(), "PRAGMA synchronous = OFF", path_);
  // A file with tables must be a store; a new one gets its tables in the first batch's
  // transaction, so that two writers creating it at once cannot see it half made.
  if (!holdsNoTable(db_.get(), path_)) store::checkSchema(db_.get(), path_);
}

void StoreWriter::apply(const Batch& batch) {
  using store::Statement;
  // The write lock first (a second writer waits here, then fails with errors::kBusy),
  // then the tables if the file has none yet: creation and batch commit as one.
  store::execute(db_.get(), "BEGIN IMMEDIATE", path_);
  std::optional<Statement> addFile, put, remove, define;
  try {
    if (holdsNoTable(db_.get(), path_)) {
      store::createSchema(db_.get(), path_);
    } else {
      store::checkSchema(db_.get(), path_);
    }
    addFile.emplace(db_.get(), "INSERT OR IGNORE INTO files (name) VALUES (?1)", path_);
    put.emplace(db_.get(), "INSERT OR REPLACE INTO records (file, key, body) VALUES (?1, ?2, ?3)",
                path_);
    remove.emplace(db_.get(), "DELETE FROM records WHERE file = ?1 AND key = ?2", path_);
    define.emplace(db_.get(),
                   "INSERT OR REPLACE INTO dictionary (file, name, attribute, key_start, "
                   "key_length) VALUES (?1, ?2, ?3, ?4, ?5)",
                   path_);
  } catch (...) {
    sqlite3_exec(db_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    throw;
  }
  try {
    for (const auto& change : batch.changes()) {
      std::visit(
          [&](const auto& c) {
            using T = std::decay_t<decltype(c)>;
            if constexpr (std::is_same_v<T, Batch::CreateFile>) {
              addFile->reset().bind(1, toUtf8(c.name)).run();
            } else if constexpr (std::is_same_v<T, Batch::PutRecord>) {
              addFile->reset().bind(1, toUtf8(c.file)).run();
              put->reset()
                  .bind(1, toUtf8(c.file))
                  .bindBlob(2, store::encodeText(c.key))
                  .bindBlob(3, store::encodeText(c.body))
                  .run();
            } else if constexpr (std::is_same_v<T, Batch::DeleteRecord>) {
              remove->reset().bind(1, toUtf8(c.file)).bindBlob(2, store::encodeText(c.key)).run();
            } else {
              addFile->reset().bind(1, toUtf8(c.file)).run();
              define->reset()
                  .bind(1, toUtf8(c.file))
                  .bind(2, toUtf8(c.name))
                  .bind(3, static_cast<long long>(c.attribute))
                  .bind(4, static_cast<long long>(c.isKeyPart() ? c.keyStart : 0))
                  .bind(5, static_cast<long long>(c.isKeyPart() ? c.keyLength : 0))
                  .run();
            }
          },
          change);
    }
    store::execute(db_.get(), "COMMIT", path_);
  } catch (...) {
    // Statements must let go of the transaction before it can be rolled back.
    addFile.reset();
    put.reset();
    remove.reset();
    define.reset();
    sqlite3_exec(db_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    throw;
  }
}

}  // namespace velmora
