// The sample account: every exchange file of a directory read, then built into a new store
// aside and put in place whole. A server database is filled only when it holds no store yet.
#include <velmora/store/sample_account.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>
#include <vector>

#include <sqlite3.h>

#include <velmora/base/failure.h>
#include <velmora/store/exchange.h>
#include <velmora/store/writer.h>
#include "base/message.h"
#include "store/postgresql/postgresql_support.h"  // displayUri
#include "store/engine/read_connection.h"
#include "store/exchange/replacement_file.h"
#include "store/sqlite/sqlite_support.h"

namespace velmora {

namespace fs = std::filesystem;
using store::ReplacementFile;

namespace {

std::vector<fs::path> exchangeFiles(const fs::path& directory) {
  std::error_code ec;
  if (!fs::is_directory(directory, ec)) {
    throw Failure(errors::kBadImport, say("{}: no such folder", {directory.string()}));
  }
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(directory)) {
    if (entry.is_regular_file() && entry.path().extension() == ".jsonl") {
      files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  if (files.empty()) {
    throw Failure(errors::kBadImport, say("{}: no *.jsonl file", {directory.string()}));
  }
  return files;
}

Batch readAll(const std::vector<fs::path>& files) {
  Batch all;
  for (const auto& file : files) {
    std::ifstream in(file, std::ios::binary);
    if (!in) throw Failure(errors::kBadImport, say("{}: cannot be read", {file.string()}));
    all.append(readExchange(in, file.string()));
  }
  return all;
}

[[noreturn]] void refuse(const fs::path& target, const std::string& why) {
  throw Failure(errors::kDatabase, say("{} {}; nothing was changed", {target.string(), why}));
}

// What a new store may replace: nothing, or a store. A store left by a writer that stopped
// is put right first by SQLite itself (a journal rolled back, a log written back into the
// file and removed), so that no journal of the old file is left beside the new one.
void prepareToReplace(const fs::path& target) {
  std::error_code ec;
  const fs::path journal = target.string() + "-journal";
  const fs::path log = target.string() + "-wal";
  // An empty file is what a failed first import leaves: nothing to keep.
  const auto type = fs::status(target, ec).type();
  if (type != fs::file_type::not_found && type != fs::file_type::regular) {
    refuse(target, say("is {}, not a store file; give another --db", {store::kindOfNode(type)}));
  }
  if (type == fs::file_type::regular && fs::file_size(target, ec) > 0) {
    sqlite3* raw = nullptr;
    const int opened = sqlite3_open_v2(target.c_str(), &raw, SQLITE_OPEN_READWRITE, nullptr);
    const store::Connection db(raw);
    if (opened != SQLITE_OK) {
      refuse(target, say("cannot be opened to be replaced: {}", {sqlite3_errmsg(raw)}));
    }
    sqlite3_busy_timeout(db.get(), 3000);
    try {
      store::checkSchema(db.get(), target.string());
    } catch (const Failure& failure) {
      // The store's own words come last, whole, after the tool's sentence.
      refuse(target, say("is not a Velmora store that sample may replace; give another --db or "
                         "move that file away; the store says: {}",
                         {failure.what()}));
    }
    // Back to a rollback journal (a log is written back and removed), then one write of
    // the header as it is, whose commit removes a journal that was left but not hot.
    int version = 0;
    sqlite3_exec(
        db.get(), "PRAGMA user_version",
        [](void* out, int, char** values, char**) {
          if (values[0] != nullptr) {
            const std::string_view text(values[0]);
            std::from_chars(text.data(), text.data() + text.size(), *static_cast<int*>(out));
          }
          return 0;
        },
        &version, nullptr);
    const std::string putRight =
        "PRAGMA journal_mode = DELETE; BEGIN IMMEDIATE; "
        "PRAGMA user_version = " +
        std::to_string(version) + "; COMMIT";
    if (sqlite3_exec(db.get(), putRight.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
      refuse(target, say("cannot have its journal put right ({}); another program may be "
                         "writing to it",
                         {sqlite3_errmsg(db.get())}));
    }
  }
  for (const fs::path& left : {journal, log}) {
    if (fs::exists(left, ec)) {
      refuse(target, say("has a journal {} left beside it by a program that stopped; open the "
                         "store once (velmora get) to put it right, or move the journal away "
                         "if the store is gone",
                         {left.string()}));
    }
  }
}

// A server's database is shared by an office: the sample fills one that holds no store
// yet, or an empty one, in one transaction, and never replaces what an office wrote.
void fillServerDatabase(const std::string& target, const Batch& batch) {
  StoreWriter writer(target);  // fails when the database holds something else
  bool holdsFiles = false;
  try {
    holdsFiles = !store::connectToStore(target)->fileNames().empty();
  } catch (const Failure&) {
    // No store yet: the writer makes its tables in the batch's transaction.
  }
  if (holdsFiles) {
    throw Failure(errors::kDatabase, store::displayUri(target) +
                                         ": already holds a store; sample fills only an empty "
                                         "database or schema on a server; nothing was changed");
  }
  writer.apply(batch);
}

}  // namespace

SampleBuild buildSampleDatabase(const std::string& target, const std::string& directory) {
  const auto files = exchangeFiles(directory);
  const Batch batch = readAll(files);
  if (isServerUri(target)) {
    fillServerDatabase(target, batch);
    return {batch.size(), files.size()};
  }
  // Built aside under a name of its own, checked against what it replaces (the file a
  // link names; the link is kept), renamed over.
  ReplacementFile building(target);
  std::error_code ec;
  const auto type = fs::status(building.target(), ec).type();
  if (type != fs::file_type::not_found && type != fs::file_type::regular) {
    prepareToReplace(building.target());  // refuses it before the work
  }
  try {
    StoreWriter(building.path().string()).apply(batch);
  } catch (const Failure& failure) {
    throw Failure(failure.number(),
                  say("the sample failed and {} is left as it was: {}", {target, failure.what()}));
  }
  prepareToReplace(building.target());
  building.commit();
  return {batch.size(), files.size()};
}

}  // namespace velmora
