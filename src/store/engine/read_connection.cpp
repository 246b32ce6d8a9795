// What every read connection does whatever its backend: snapshots that nest, and the caches
// of files, dictionary items and records read in one. A backend answers only the reads beneath.
#include "store/engine/read_connection.h"

#include "store/postgresql/postgresql_support.h"

namespace velmora {

bool isServerUri(std::string_view location) {
  return location.starts_with("postgresql://") || location.starts_with("postgres://");
}

std::string shownLocation(std::string_view location) {
  return isServerUri(location) ? store::displayUri(location) : std::string(location);
}

}  // namespace velmora

namespace velmora::store {

ReadConnection::Snapshot::Snapshot(ReadConnection& connection) : connection_(connection) {
  if (connection_.snapshotDepth_ > 0) {
    ++connection_.snapshotDepth_;
    return;
  }
  const std::uint64_t version = connection_.beginSnapshot();
  connection_.snapshotDepth_ = 1;
  static_cast<void>(connection_.stateHolds(version));
}

ReadConnection::Snapshot::~Snapshot() {
  if (--connection_.snapshotDepth_ > 0) return;
  connection_.readInSnapshot_.clear();
  connection_.endSnapshot();
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
  const bool found = lookupFile(name);
  if (snapshotDepth_ > 0) knownFiles_.emplace(name, found);
  return found;
}

std::optional<Text> ReadConnection::readBody(const Text& file, const Text& key) {
  auto body = lookupBody(file, key);
  if (body) ++statistics_.decodedRecords;
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
  auto item = lookupItem(file, name);
  if (snapshotDepth_ > 0) knownItems_[file].emplace(name, item);
  return item;
}

bool ReadConnection::scanRange(const Range& range, const Visitor& visit, bool checkCaches) {
  return scanRecords(range, visit, checkCaches && snapshotDepth_ == 0);
}

bool ReadConnection::stateHolds(std::uint64_t version) {
  if (cachedVersion_ == version) return true;
  forgetCaches();
  cachedVersion_ = version;
  return false;
}

void ReadConnection::forgetCaches() {
  knownFiles_.clear();
  knownItems_.clear();
  cachedVersion_.reset();
}

}  // namespace velmora::store
