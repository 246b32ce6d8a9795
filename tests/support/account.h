// A real store in a fresh temporary directory, laid out as an account, for tests. With
// VELMORA_TEST_STORE=postgresql in the environment, the store is a fresh schema of the
// PostgreSQL server the PG* variables name (pg_virtualenv sets them), and path() its URI.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <velmora/store/database.h>
#include <velmora/store/sqlite_database.h>
#include <velmora/store/writer.h>

namespace velmora::testing {

class TempAccount {
 public:
  TempAccount();  // creates the file with standardLayout()
  ~TempAccount();
  TempAccount(const TempAccount&) = delete;
  TempAccount& operator=(const TempAccount&) = delete;

  // The store's location: a file path, or a server URI.
  const std::string& path() const { return path_; }
  // Whether accounts are made on a server (VELMORA_TEST_STORE=postgresql).
  static bool onServer();
  const std::string& directory() const { return directory_; }

  // Puts one record. attributes: one entry per attribute, each a list of values (UTF-8).
  void put(std::string_view file, std::string_view key,
           const std::vector<std::vector<std::string>>& attributes);
  void remove(std::string_view file, std::string_view key);
  void apply(const Batch& batch) { writer_.apply(batch); }
  DatabaseRef open() const { return openDatabase(path_); }  // a new read-only connection

 private:
  std::string directory_;
  std::string schema_;  // the account's schema on the server; empty for a file
  std::string path_;
  StoreWriter writer_;
};

// Runs statements as the administrator of the server the PG* variables name; fails with
// std::runtime_error.
void administerServer(const std::string& sql);

// Leaves the file as a writer killed inside a large transaction does: a hot journal, or
// (wal) a write-ahead log, beside it; the committed content is unchanged.
void killWriterHalfWay(const std::string& path, bool wal);

// The record of those attributes, each a list of UTF-8 values.
NorvikRecord makeRecord(const std::vector<std::vector<std::string>>& attributes);

}  // namespace velmora::testing
