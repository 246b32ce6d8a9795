// Batch and StoreWriter: changes checked as they are added, then applied to a store in one
// transaction by the backend its location names. A bad name, key or item fails before anything is written.
#include <velmora/store/writer.h>

#include <optional>

#include <velmora/base/failure.h>
#include "base/message.h"
#include "store/engine/batch_target.h"
#include "store/engine/read_connection.h"  // isServerUri

namespace velmora {

namespace {

[[noreturn]] void invalid(const std::string& what) {
  throw Failure(errors::kInvalidCall, say("invalid call: {}", {what}));
}

void checkName(TextView name, const char* what) {
  if (name.empty()) invalid(std::string(what) + " name is empty");
  for (const char16_t c : name) {
    if (c == u' ' || c == u'"' || c == kAttributeMark || c == kValueMark || c == kSubvalueMark ||
        c < 0x20) {
      invalid(say("{} name \"{}\" holds a blank, a quote or a control character",
                  {what, excerpt(toUtf8(name))}));
    }
  }
}

void checkKey(TextView key) {
  for (const char16_t c : key) {
    if (c == kAttributeMark || c == kValueMark || c == kSubvalueMark) {
      invalid(say("key \"{}\" holds a record mark", {excerpt(toUtf8(key))}));
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
    invalid(
        say("dictionary name \"{}\" would hide an attribute number", {excerpt(toUtf8(item.name))}));
  }
  if (item.isKeyPart() && (item.keyStart < 1 || item.keyLength < 1)) {
    invalid(
        say("dictionary item {}: a key part needs a start of 1 or more and a length of 1 or "
            "more",
            {excerpt(toUtf8(item.name))}));
  }
  changes_.emplace_back(item);
}

void Batch::append(const Batch& other) {
  changes_.insert(changes_.end(), other.changes_.begin(), other.changes_.end());
}

StoreWriter::StoreWriter(const std::string& path, Sync sync)
    : path_(path),
      target_(isServerUri(path) ? store::serverTarget(path, sync)
                                       : store::sqliteTarget(path, sync)) {}

StoreWriter::~StoreWriter() = default;
StoreWriter::StoreWriter(StoreWriter&&) noexcept = default;
StoreWriter& StoreWriter::operator=(StoreWriter&&) noexcept = default;

void StoreWriter::apply(const Batch& batch) {
  target_->apply(batch);
}

}  // namespace velmora
