#include "support/account.h"

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <system_error>

#include <velmora/store/sqlite_database.h>
#include "store/account_layout.h"

namespace velmora::testing {

namespace {

std::string makeTemporaryDirectory() {
  std::string pattern = (std::filesystem::temp_directory_path() / "velmora-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) {
    throw std::runtime_error("cannot create a temporary directory from " + pattern);
  }
  return pattern;
}

}  // namespace

NorvikRecord makeRecord(const std::vector<std::vector<std::string>>& attributes) {
  NorvikRecord record;
  for (const auto& values : attributes) {
    std::vector<Text> texts;
    texts.reserve(values.size());
    for (const auto& value : values) texts.push_back(fromUtf8(value));
    record.appendAttribute(std::move(texts));
  }
  return record;
}

TempAccount::TempAccount()
    : directory_(makeTemporaryDirectory()),
      path_(directory_ + "/account.db"),
      writer_(path_, StoreWriter::Sync::Fast) {
  writer_.apply(standardLayout());
}

TempAccount::~TempAccount() {
  std::error_code ec;
  std::filesystem::remove_all(directory_, ec);
}

void TempAccount::put(std::string_view file, std::string_view key,
                      std::vector<std::vector<std::string>> attributes) {
  Batch batch;
  batch.putRecord(fromUtf8(file), fromUtf8(key), makeRecord(attributes));
  apply(batch);
}

void TempAccount::remove(std::string_view file, std::string_view key) {
  Batch batch;
  batch.deleteRecord(fromUtf8(file), fromUtf8(key));
  apply(batch);
}

void TempAccount::apply(const Batch& batch) {
  writer_.apply(batch);
}

DatabaseRef TempAccount::open() const {
  return openDatabase(path_);
}

}  // namespace velmora::testing
