// The floor of the store's operations: the same reads written directly against the
// store's SQLite tables, with nothing but the decoding that the answer needs.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include <velmora/base/text.h>
#include <velmora/store/record.h>

namespace velmora::bench {

class SqlFloor {
 public:
  explicit SqlFloor(const std::string& path);  // read-only, as the control's connection

  // "SSELECT <file> PAR <attribute>" with the columns key, attribute, extra: every record
  // of the file decoded, sorted on the attribute then the key.
  NorvikRecord sortedColumns(const Text& file, int sortAttribute, int extraAttribute);

  // One record by key, as a new record.
  std::shared_ptr<NorvikRecord> read(const Text& file, const Text& key);

  // One client's templates: the records whose key starts with the client code, with a
  // start date (key characters 6-10) up to lastDay when it is not empty, an end date
  // (attribute 1) empty or from firstDay on, items, and the kind "S" or not "S".
  NorvikRecord clientTemplates(const Text& file, const Text& client, const Text& firstDay,
                               const Text& lastDay, bool care);

  // Every key of a file, in key order.
  std::vector<Text> keys(const Text& file);

 private:
  struct Closer {
    void operator()(sqlite3* db) const noexcept { sqlite3_close_v2(db); }
  };
  struct Finalizer {
    void operator()(sqlite3_stmt* s) const noexcept { sqlite3_finalize(s); }
  };
  using Statement = std::unique_ptr<sqlite3_stmt, Finalizer>;

  Statement prepare(const char* sql);

  std::unique_ptr<sqlite3, Closer> db_;
  Statement wholeFile_;
  Statement oneRecord_;
  Statement keyRange_;
  Statement keysOnly_;
};

}  // namespace velmora::bench
