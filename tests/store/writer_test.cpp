#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>

#include <velmora/base/failure.h>
#include <velmora/store/sqlite_database.h>
#include "store/account_layout.h"
#include "support/account.h"

namespace velmora {
namespace {

using testing::TempAccount;

// The number of the failure the call raised, 0 when it raised none; the message goes
// to *message when asked for.
template <class Call>
long failureOf(Call&& call, std::string* message = nullptr) {
  try {
    call();
  } catch (const Failure& f) {
    if (message != nullptr) *message = f.what();
    return f.number();
  }
  return 0;
}

TEST(Store, ReadsBackWhatWasWrittenAsANewRecordEachTime) {
  TempAccount account;
  account.put("TACHE", "Repassage", {{"Entretien linge"}, {"G-LINGE"}, {""}, {"N"}, {"30"}});
  account.put("TPSSEMAINETYPE", "0001221186110002A",
              {{""}, {"1150"}, {"A"}, {"T1", "T2"}, {"30", "15"}, {""}, {""}, {"", "Sonner"}});
  const auto db = account.open();
  auto tache = db->OpenFile(u"TACHE");
  EXPECT_EQ(tache->name(), u"TACHE");
  const auto first = tache->ReadRecord(u"Repassage");
  EXPECT_EQ(first->DCount(), 5);
  EXPECT_EQ(first->r(1), u"Entretien linge");
  EXPECT_EQ(first->r(5), u"30");
  first->set(1, u"changed");
  const auto second = tache->ReadRecord(u"Repassage");
  EXPECT_FALSE(first == second);
  EXPECT_EQ(second->r(1), u"Entretien linge");

  const auto semType = db->OpenFile(u"TPSSEMAINETYPE")->ReadRecord(u"0001221186110002A");
  EXPECT_EQ(semType->DCount(), 8);
  EXPECT_EQ(semType->DCount(4), 2);
  EXPECT_EQ(semType->r(4, 2), u"T2");
  EXPECT_EQ(semType->r(5, 1), u"30");
  EXPECT_EQ(semType->r(8, 1), u"");
  EXPECT_EQ(semType->r(8, 2), u"Sonner");
}

TEST(Store, KeysAndValuesKeepEveryCharacter) {
  TempAccount account;
  account.put("TACHE", "Tâche été", {{"Ménage à fond"}, {"G-ÉTÉ"}});
  account.put("TACHE", "tache", {{"lower"}});
  const auto file = account.open()->OpenFile(u"TACHE");
  EXPECT_EQ(file->ReadRecord(u"Tâche été")->r(1), u"Ménage à fond");
  EXPECT_EQ(file->ReadRecord(u"tache")->r(1), u"lower");
  EXPECT_EQ(failureOf([&] { file->ReadRecord(u"Tache"); }), errors::kRecordNotFound);
}

TEST(Store, MissingKeyFailsWithRecordNotFoundNamingFileAndKey) {
  TempAccount account;
  const auto file = account.open()->OpenFile(u"TACHE");
  std::string message;
  EXPECT_EQ(failureOf([&] { file->ReadRecord(u"Nope"); }, &message), errors::kRecordNotFound);
  EXPECT_EQ(errors::kRecordNotFound, -2147221493);
  EXPECT_NE(message.find("TACHE"), std::string::npos) << message;
  EXPECT_NE(message.find("Nope"), std::string::npos) << message;
}

TEST(Store, UnknownFileFailsNamingIt) {
  TempAccount account;
  std::string message;
  EXPECT_EQ(failureOf([&] { account.open()->OpenFile(u"NOSUCHFILE"); }, &message),
            errors::kUnknownFile);
  EXPECT_NE(message.find("NOSUCHFILE"), std::string::npos) << message;
}

TEST(Store, StandardLayoutHasTheThirteenFiles) {
  TempAccount account;
  const auto db = account.open();
  for (const char16_t* name : kAccountFiles) {
    EXPECT_EQ(db->OpenFile(name)->name(), name);
  }
  EXPECT_EQ(kAccountFiles.size(), 13u);
}

TEST(Store, BatchIsAllOrNothing) {
  TempAccount account;
  account.put("TACHE", "Keep", {{"kept"}});
  {
    // A trigger refuses the last change of the batch, after the others have run.
    sqlite3* raw = nullptr;
    ASSERT_EQ(sqlite3_open(account.path().c_str(), &raw), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(raw,
                           "CREATE TRIGGER refuse BEFORE INSERT ON records "
                           "WHEN NEW.file = 'REFUSED' BEGIN SELECT RAISE(ABORT, 'refused'); END",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(raw);
  }
  Batch batch;
  batch.putRecord(u"TACHE", u"New", testing::makeRecord({{"new"}}));
  batch.deleteRecord(u"TACHE", u"Keep");
  batch.defineItem(DictionaryItem{u"TACHE", u"Groupe", 2, 0, 0});
  batch.putRecord(u"REFUSED", u"x", testing::makeRecord({{"x"}}));
  EXPECT_EQ(batch.size(), 4u);
  std::string message;
  EXPECT_EQ(failureOf([&] { account.apply(batch); }, &message), errors::kDatabase);
  EXPECT_NE(message.find("refused"), std::string::npos) << message;

  const auto db = account.open();
  const auto file = db->OpenFile(u"TACHE");
  EXPECT_EQ(file->ReadRecord(u"Keep")->r(1), u"kept");
  EXPECT_EQ(failureOf([&] { file->ReadRecord(u"New"); }), errors::kRecordNotFound);
  EXPECT_EQ(failureOf([&] { db->OpenFile(u"REFUSED"); }), errors::kUnknownFile);
}

TEST(Store, PutCreatesTheFileAndReplacesTheRecord) {
  TempAccount account;
  account.put("EXTRA", "k", {{"one"}, {"two"}});
  account.put("EXTRA", "k", {{"three"}});
  const auto record = account.open()->OpenFile(u"EXTRA")->ReadRecord(u"k");
  EXPECT_EQ(record->DCount(), 1);
  EXPECT_EQ(record->r(1), u"three");
}

TEST(Store, RemoveDeletesOnlyThatRecordAndAbsentKeysAreNoError) {
  TempAccount account;
  account.put("TACHE", "a", {{"1"}});
  account.put("TACHE", "b", {{"2"}});
  account.remove("TACHE", "a");
  account.remove("TACHE", "never");
  const auto file = account.open()->OpenFile(u"TACHE");
  EXPECT_EQ(failureOf([&] { file->ReadRecord(u"a"); }), errors::kRecordNotFound);
  EXPECT_EQ(file->ReadRecord(u"b")->r(1), u"2");
}

TEST(Store, BatchRefusesBadNamesAtOnce) {
  Batch batch;
  EXPECT_EQ(failureOf([&] { batch.createFile(u""); }), errors::kInvalidCall);
  EXPECT_EQ(failureOf([&] { batch.createFile(u"TWO WORDS"); }), errors::kInvalidCall);
  EXPECT_EQ(failureOf([&] { batch.putRecord(u"T", Text(1, kValueMark), NorvikRecord()); }),
            errors::kInvalidCall);
  EXPECT_EQ(failureOf([&] {
              batch.defineItem(DictionaryItem{u"T", u"12", 1, 0, 0});
            }),
            errors::kInvalidCall);
  EXPECT_EQ(failureOf([&] {
              batch.defineItem(DictionaryItem{u"T", u"X", -1, 0, 5});
            }),
            errors::kInvalidCall);
  EXPECT_EQ(failureOf([&] {
              batch.defineItem(DictionaryItem{u"T", u"@ID", 0, 0, 0});
            }),
            errors::kInvalidCall);
  EXPECT_EQ(batch.size(), 0u);
}

TEST(Store, ConnectionOutlivesTheDatabaseObjectThroughItsFiles) {
  TempAccount account;
  account.put("TACHE", "a", {{"1"}});
  FileRef file;
  {
    auto db = account.open();
    file = db->OpenFile(u"TACHE");
  }
  EXPECT_EQ(file->ReadRecord(u"a")->r(1), u"1");
}

TEST(Store, OpenFailsClearlyOnAMissingFile) {
  TempAccount account;
  const std::string missing = account.directory() + "/missing.db";
  std::string message;
  EXPECT_EQ(failureOf([&] { openDatabase(missing); }, &message), errors::kDatabase);
  EXPECT_NE(message.find(missing), std::string::npos) << message;
  EXPECT_FALSE(std::filesystem::exists(missing));  // a reader never creates the file
}

TEST(Store, OpenFailsClearlyOnGarbage) {
  TempAccount account;
  const std::string garbage = account.directory() + "/garbage.db";
  {
    std::ofstream out(garbage, std::ios::binary);
    for (int i = 0; i < 4096; ++i) out.put(static_cast<char>((i * 37 + 11) % 256));
  }
  std::string message;
  EXPECT_EQ(failureOf([&] { openDatabase(garbage); }, &message), errors::kDatabase);
  EXPECT_NE(message.find(garbage), std::string::npos) << message;
}

// A store of many pages, so that damage can hit the first page or one deep inside.
void fillPages(TempAccount& account) {
  Batch batch;
  for (int i = 0; i < 200; ++i) {
    batch.putRecord(u"TACHE", fromUtf8("key" + std::to_string(1000 + i)),
                    testing::makeRecord({{std::string(200, 'x')}}));
  }
  account.apply(batch);
}

void damage(const std::string& path, std::streamoff at, int bytes) {
  std::fstream io(path, std::ios::in | std::ios::out | std::ios::binary);
  io.seekp(at);
  for (int i = 0; i < bytes; ++i) io.put(static_cast<char>(0xA5 ^ i));
}

TEST(Store, OpenFailsClearlyWhenTheSchemaPageIsDamaged) {
  TempAccount account;
  fillPages(account);
  damage(account.path(), 100, 3000);  // past the file header, into the schema's page
  std::string message;
  EXPECT_EQ(failureOf([&] { openDatabase(account.path()); }, &message), errors::kDatabase);
  EXPECT_NE(message.find(account.path()), std::string::npos) << message;
}

TEST(Store, ADamagedPageDeeperInFailsAtOpenOrAtTheReadThatReachesIt) {
  TempAccount account;
  fillPages(account);
  const auto size = std::filesystem::file_size(account.path());
  damage(account.path(), static_cast<std::streamoff>(size / 2), 8192);  // two whole pages
  std::string message;
  const auto openAndReadAll = [&] {
    long count = 0;
    account.open()->RunQuery(u"SSELECT TACHE\uF8FETACHE\uF8FE0 1", u"", count);
  };
  EXPECT_EQ(failureOf(openAndReadAll, &message), errors::kDatabase);
  EXPECT_NE(message.find(account.path()), std::string::npos) << message;
}

TEST(Store, OpenFailsClearlyOnAnSqliteFileThatIsNotAStore) {
  TempAccount account;
  const std::string other = account.directory() + "/other.db";
  sqlite3* raw = nullptr;
  ASSERT_EQ(sqlite3_open(other.c_str(), &raw), SQLITE_OK);
  sqlite3_exec(raw, "CREATE TABLE t (x)", nullptr, nullptr, nullptr);
  sqlite3_close(raw);
  std::string message;
  EXPECT_EQ(failureOf([&] { openDatabase(other); }, &message), errors::kDatabase);
  EXPECT_NE(message.find("n'est pas une base Velmora"), std::string::npos) << message;
  // Nor may a writer take it over.
  EXPECT_EQ(failureOf([&] { StoreWriter writer(other); }), errors::kDatabase);
}

// Each way a file can fail the open has its own words: a planner may read them.
TEST(Store, OpenTellsApartLockedNotADatabaseDamagedNotAStoreAndAFolder) {
  TempAccount account;
  fillPages(account);
  const std::string damaged = account.directory() + "/damaged.db";
  std::filesystem::copy_file(account.path(), damaged);
  damage(damaged, 100, 3000);
  const std::string text = account.directory() + "/notes.txt";
  std::ofstream(text) << std::string(2000, 'x');
  const std::string other = account.directory() + "/other.db";
  sqlite3* raw = nullptr;
  ASSERT_EQ(sqlite3_open(other.c_str(), &raw), SQLITE_OK);
  sqlite3_exec(raw, "CREATE TABLE t (x)", nullptr, nullptr, nullptr);
  sqlite3_close(raw);
  sqlite3* writer = nullptr;
  ASSERT_EQ(sqlite3_open(account.path().c_str(), &writer), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(writer, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
  struct Case {
    std::string path;
    long number;
    const char* words;
  };
  for (const Case& c : std::vector<Case>{
           {account.path(), errors::kBusy, "verrouillée par un autre programme"},
           {text, errors::kDatabase, "n'est pas une base de données"},
           {damaged, errors::kDatabase, "est endommagée"},
           {other, errors::kDatabase, "n'est pas une base Velmora"},
           {account.directory(), errors::kDatabase, "est un dossier"},
       }) {
    std::string message;
    EXPECT_EQ(failureOf([&] { openDatabase(c.path); }, &message), c.number) << c.path;
    EXPECT_NE(message.find(c.words), std::string::npos) << message;
  }
  sqlite3_close(writer);
}

// A writer killed in the middle of a transaction leaves a hot journal, or a log without
// its index: the control's read-only open puts back the last committed state and reads.
TEST(Store, ReadOnlyOpenReadsPastAWriterKilledHalfWay) {
  for (const bool wal : {false, true}) {
    TempAccount account;
    account.put("TACHE", "Vitres", {{"committed"}});
    testing::killWriterHalfWay(account.path(), wal);
    const std::string left = account.path() + (wal ? "-wal" : "-journal");
    ASSERT_TRUE(std::filesystem::exists(left)) << left;
    if (wal) std::filesystem::remove(account.path() + "-shm");
    const auto db = account.open();
    EXPECT_EQ(db->OpenFile(u"TACHE")->ReadRecord(u"Vitres")->r(1), u"committed") << wal;
    long hits = 0;
    db->RunQuery(u"SSELECT TACHE\xF8FETACHE", u"", hits);
    EXPECT_EQ(hits, 1) << wal;
  }
}

TEST(Store, TheControlsConnectionCannotWrite) {
  TempAccount account;
  account.put("TACHE", "a", {{"1"}});
  const auto db = account.open();
  auto& sqlite = dynamic_cast<SqliteDatabase&>(db.get());
  EXPECT_EQ(sqlite3_db_readonly(sqlite.nativeHandle(), "main"), 1);
  const int rc =
      sqlite3_exec(sqlite.nativeHandle(), "DELETE FROM records", nullptr, nullptr, nullptr);
  EXPECT_EQ(rc & 0xFF, SQLITE_READONLY);
  EXPECT_EQ(db->OpenFile(u"TACHE")->ReadRecord(u"a")->r(1), u"1");
}

// A held snapshot keeps one read lock until the outermost hold goes: holds and queries
// inside share it, and a writer cannot commit under it.
TEST(Store, AHeldSnapshotKeepsOneReadLockUntilTheOutermostHoldGoes) {
  TempAccount account;
  account.put("TACHE", "Repassage", {{"avant"}});
  const auto db = account.open();
  const auto tache = db->OpenFile(u"TACHE");
  sqlite3* writer = nullptr;
  ASSERT_EQ(sqlite3_open(account.path().c_str(), &writer), SQLITE_OK);
  const auto tryWrite = [&] {
    const int rc =
        sqlite3_exec(writer, "BEGIN; DELETE FROM records; COMMIT", nullptr, nullptr, nullptr);
    if (rc != SQLITE_OK) sqlite3_exec(writer, "ROLLBACK", nullptr, nullptr, nullptr);
    return rc;
  };
  {
    const auto outer = db->holdSnapshot();
    {
      const auto inner = db->holdSnapshot();
      long hits = 0;
      db->RunQuery(u"SSELECT TACHE\xF8FETACHE", u"", hits);
      EXPECT_EQ(hits, 1);
    }
    EXPECT_EQ(tryWrite(), SQLITE_BUSY);
    EXPECT_EQ(tache->ReadRecord(u"Repassage")->r(1), u"avant");
  }
  EXPECT_EQ(tryWrite(), SQLITE_OK);
  EXPECT_EQ(failureOf([&] { tache->ReadRecord(u"Repassage"); }), errors::kRecordNotFound);
  sqlite3_close(writer);
}

TEST(Store, ReadsCountAsDecodedRecords) {
  TempAccount account;
  account.put("TACHE", "a", {{"1"}});
  const auto db = account.open();
  const auto file = db->OpenFile(u"TACHE");
  for (int i = 0; i < 3; ++i) file->ReadRecord(u"a");
  EXPECT_EQ(statistics(db).decodedRecords, 3u);
  // Inside one snapshot a record, or its absence, is read from the file once; each read
  // still gives a record of its own.
  {
    const auto held = db->holdSnapshot();
    for (int i = 0; i < 3; ++i) {
      const RecordRef record = file->ReadRecord(u"a");
      EXPECT_EQ(record->r(1), u"1");
      record->set(1, u"changed by the reader");
      EXPECT_EQ(failureOf([&] { file->ReadRecord(u"absent"); }), errors::kRecordNotFound);
    }
  }
  EXPECT_EQ(statistics(db).decodedRecords, 4u);
}

}  // namespace
}  // namespace velmora
