// The store as the control and the tool use it: records read back as written, batches
// all or nothing, a read-only connection that opens clearly or fails clearly, dates.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <charconv>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string_view>

#include <velmora/store/dates.h>
#include "support/account.h"
#include "support/failure_number.h"

namespace velmora {
namespace {

using testing::failureNumber;
using testing::TempAccount;

const Text AM(1, kAttributeMark);
const Text VM(1, kValueMark);

// Runs SQL on a file through a connection of its own, as another program would: the
// first column of the first row, -1 when there is none, -2 when the SQL fails.
long long sql(const std::string& path, const std::string& statements) {
  sqlite3* raw = nullptr;
  sqlite3_open(path.c_str(), &raw);
  long long value = -1;
  const int rc = sqlite3_exec(
      raw, statements.c_str(),
      [](void* out, int, char** values, char**) {
        auto& first = *static_cast<long long*>(out);
        if (first != -1 || values[0] == nullptr) return 0;
        const std::string_view text(values[0]);
        std::from_chars(text.data(), text.data() + text.size(), first);
        return 0;
      },
      &value, nullptr);
  sqlite3_close(raw);
  return rc == SQLITE_OK ? value : -2;
}

// Reading what isn't there gives "", attribute or value 0 and below included; writing
// there fails with kInvalidCall and leaves the record as it was.
TEST(Record, ReadsEmptyOutsideWhatItHoldsAndGrowsWhereItIsWritten) {
  NorvikRecord record(u"a" + VM + u"b" + AM + u"c");
  for (const auto& [a, v] : {std::pair{0, 0}, {0, 1}, {1, 0}, {-1, 1}, {1, -1}, {3, 1}, {1, 3}}) {
    EXPECT_EQ(record.r(a, v), u"") << a << ", " << v;
  }
  for (const int a : {0, -1, 3}) {
    EXPECT_EQ(record.r(a), u"") << a;
    EXPECT_EQ(record.DCount(a), 0) << a;
  }
  const std::vector<std::function<void()>> writesOutside{
      [&] { record.set(0, u"x"); }, [&] { record.set(0, 1, u"x"); },
      [&] { record.set(1, 0, u"x"); }, [&] { record.set(-1, 1, u"x"); },
      [&] { record.swapAttributes(0, 1); }};
  for (const auto& write : writesOutside) {
    EXPECT_EQ(failureNumber(write), errors::kInvalidCall);
    EXPECT_EQ(record.r(), u"a" + VM + u"b" + AM + u"c");
  }
  EXPECT_EQ(record.r(1), u"a" + VM + u"b");
  EXPECT_EQ(record.DCount(), 2);
  EXPECT_EQ(NorvikRecord().DCount(), 0);
  record.set(u"");
  record.set(3, u"c");
  record.set(2, 3, u"v");
  EXPECT_EQ(record.r(), AM + VM + VM + u"v" + AM + u"c");
  EXPECT_EQ(record.DCount(1), 0);
  EXPECT_EQ(record.DCount(2), 3);
  record.set(6, u"");  // a trailing empty attribute that was written counts
  EXPECT_EQ(NorvikRecord(record.r()).DCount(), 6);
  // Marks in a written value reshape the record.
  record.set(u"a" + AM + u"b" + AM + u"c");
  record.set(2, u"x" + AM + u"y");
  record.set(4, 2, u"m" + VM + u"n");
  EXPECT_EQ(record.DCount(4), 3);
  // Delete moves later attributes up; numbers outside the record change nothing.
  for (const int a : {2, 9, 0}) record.Delete(a);
  EXPECT_EQ(record.r(), u"a" + AM + u"y" + AM + u"c" + VM + u"m" + VM + u"n");
  record.swapAttributes(1, 4);
  EXPECT_EQ(record.r(), AM + u"y" + AM + u"c" + VM + u"m" + VM + u"n" + AM + u"a");
  EXPECT_TRUE(record == NorvikRecord(record.r()));
  EXPECT_FALSE(record == NorvikRecord(u"a"));
}

TEST(Store, ReadsBackEveryCharacterAsANewRecordEachTime) {
  TempAccount account;
  account.put("TACHE", "Tâche été", {{"Ménage à fond"}, {"G-ÉTÉ"}});
  account.put("TACHE", "tache", {{"lower"}});
  account.put("EXTRA", "k", {{"one"}, {"two"}});
  account.put("EXTRA", "k", {{"three"}});
  account.put("EXTRA", "gone", {{"x"}});
  account.remove("EXTRA", "gone");
  DatabaseRef db = account.open();
  const FileRef tache = db->OpenFile(u"TACHE");
  db = DatabaseRef();  // the files keep the connection
  const auto first = tache->ReadRecord(u"Tâche été");
  EXPECT_EQ(first->r(), u"Ménage à fond" + AM + u"G-ÉTÉ");
  first->set(1, u"changed");
  EXPECT_EQ(tache->ReadRecord(u"Tâche été")->r(1), u"Ménage à fond");
  EXPECT_EQ(tache->ReadRecord(u"tache")->r(1), u"lower");
  std::string message;
  EXPECT_EQ(failureNumber([&] { tache->ReadRecord(u"Tache"); }, &message), errors::kRecordNotFound);
  EXPECT_NE(message.find("Tache"), std::string::npos) << message;
  const auto extra = account.open()->OpenFile(u"EXTRA");
  EXPECT_EQ(extra->ReadRecord(u"k")->r(), u"three");
  EXPECT_EQ(failureNumber([&] { extra->ReadRecord(u"gone"); }), errors::kRecordNotFound);
  EXPECT_EQ(failureNumber([&] { account.open()->OpenFile(u"NOSUCHFILE"); }, &message),
            errors::kUnknownFile);
  EXPECT_NE(message.find("NOSUCHFILE"), std::string::npos) << message;
  // Read one by one in a snapshot, well past what a server reads ahead at once.
  Batch many;
  const auto keyOf = [](int i) { return fromUtf8("K" + std::to_string(1000 + i)); };
  for (int i = 0; i < 700; ++i) many.putRecord(u"MANY", keyOf(i), NorvikRecord(u"v" + keyOf(i)));
  account.apply(many);
  const auto manyDb = account.open();
  const auto snapshot = manyDb->holdSnapshot();
  const auto file = manyDb->OpenFile(u"MANY");
  for (int i = 0; i < 700; ++i) ASSERT_EQ(file->ReadRecord(keyOf(i))->r(), u"v" + keyOf(i));
}

TEST(Store, ABatchIsAllOrNothingAndRefusesBadNamesAtOnce) {
  TempAccount account;
  account.put("TACHE", "Keep", {{"kept"}});
  // A trigger refuses the last change, after the others have run.
  ASSERT_EQ(sql(account.path(),
                "CREATE TRIGGER refuse BEFORE INSERT ON records "
                "WHEN NEW.file = 'REFUSED' BEGIN SELECT RAISE(ABORT, 'refused'); END"),
            -1);
  Batch batch;
  batch.putRecord(u"TACHE", u"New", testing::makeRecord({{"new"}}));
  batch.deleteRecord(u"TACHE", u"Keep");
  batch.defineItem(DictionaryItem{u"TACHE", u"Groupe", 2, 0, 0});
  batch.putRecord(u"REFUSED", u"x", testing::makeRecord({{"x"}}));
  std::string message;
  EXPECT_EQ(failureNumber([&] { account.apply(batch); }, &message), errors::kDatabase);
  EXPECT_NE(message.find("refused"), std::string::npos) << message;
  const auto db = account.open();
  EXPECT_EQ(db->OpenFile(u"TACHE")->ReadRecord(u"Keep")->r(1), u"kept");
  EXPECT_EQ(failureNumber([&] { db->OpenFile(u"TACHE")->ReadRecord(u"New"); }),
            errors::kRecordNotFound);
  EXPECT_EQ(failureNumber([&] { db->OpenFile(u"REFUSED"); }), errors::kUnknownFile);

  Batch bad;
  EXPECT_EQ(failureNumber([&] { bad.putRecord(u"T", VM, NorvikRecord()); }), errors::kInvalidCall);
  for (const DictionaryItem& item :
       {DictionaryItem{u"T", u"12", 1, 0, 0}, DictionaryItem{u"T", u"X", -1, 0, 5},
        DictionaryItem{u"T", u"@ID", 0, 0, 0}}) {
    EXPECT_EQ(failureNumber([&] { bad.defineItem(item); }), errors::kInvalidCall)
        << toUtf8(item.name);
  }
  EXPECT_EQ(bad.size(), 0u);
}

// `file` and SQLite's tools tell a Velmora store by its header; stores made before, whose
// header holds zeros, are read and written all the same.
TEST(Store, ANewFileNamesItselfInItsHeaderAndAnOlderOneStillOpens) {
  if (testing::TempAccount::onServer()) GTEST_SKIP() << "a file's header";
  TempAccount account;
  account.put("TACHE", "old", {{"one"}});
  EXPECT_EQ(sql(account.path(), "PRAGMA application_id"), 0x566C6D72);  // "Vlmr"
  EXPECT_EQ(sql(account.path(), "PRAGMA user_version"), 1);
  ASSERT_EQ(
      sql(account.path(),
          "PRAGMA application_id = 0; PRAGMA user_version = 0; "
          "SELECT application_id + user_version FROM pragma_application_id, pragma_user_version"),
      0);
  account.put("TACHE", "new", {{"two"}});
  const FileRef tache = account.open()->OpenFile(u"TACHE");
  EXPECT_EQ(tache->ReadRecord(u"old")->r() + tache->ReadRecord(u"new")->r(), u"onetwo");
}

// Each way a file can fail the open has its own words, naming the file: a planner may
// read them. (A lock and a folder are the control's and the tool's cases.)
TEST(Store, OpenFailsClearlyOnWhatIsNotAReadableStore) {
  TempAccount account;
  Batch pages;  // many pages, so that damage can hit the first page or one deep inside
  for (int i = 0; i < 200; ++i) {
    pages.putRecord(u"TACHE", fromUtf8("key" + std::to_string(1000 + i)),
                    testing::makeRecord({{std::string(200, 'x')}}));
  }
  account.apply(pages);
  const std::string dir = account.directory();
  const auto damage = [&](const std::string& name, std::streamoff at, int bytes) {
    std::filesystem::copy_file(account.path(), dir + name);
    std::fstream io(dir + name, std::ios::in | std::ios::out | std::ios::binary);
    io.seekp(at);
    for (int i = 0; i < bytes; ++i) io.put(static_cast<char>(0xA5 ^ i));
  };
  damage("/damaged.db", 100, 3000);  // past the file header, into the schema's page
  damage("/deep.db", static_cast<std::streamoff>(std::filesystem::file_size(account.path()) / 2),
         8192);
  std::ofstream(dir + "/notes.txt") << std::string(2000, 'x');
  ASSERT_EQ(sql(dir + "/other.db", "CREATE TABLE t (x)"), -1);
  for (const auto& [name, words] : std::vector<std::pair<std::string, std::string>>{
           {"/notes.txt", "n'est pas une base de données"},
           {"/damaged.db", "est endommagée"},
           {"/deep.db", "endommagée"},
           {"/other.db", "n'est pas une base Velmora"},
           {"/missing.db", "n'existe pas"}}) {
    std::string message;
    const auto openAndReadAll = [&, path = dir + name] {
      long count = 0;
      openDatabase(path)->RunQuery(u"SSELECT TACHE\uF8FETACHE\uF8FE0 1", u"", count);
    };
    EXPECT_EQ(failureNumber(openAndReadAll, &message), errors::kDatabase) << name;
    EXPECT_NE(message.find(words), std::string::npos) << message;
    EXPECT_NE(message.find(dir + name), std::string::npos) << message;
  }
  EXPECT_FALSE(std::filesystem::exists(dir + "/missing.db"));  // a reader never creates one
  EXPECT_EQ(failureNumber([&] { StoreWriter taken(dir + "/other.db"); }), errors::kDatabase);
}

// A writer killed in the middle of a transaction leaves a hot journal, or a log without
// its index: the control's read-only open puts back the last committed state and reads.
TEST(Store, ReadOnlyOpenReadsPastAWriterKilledHalfWayAndCannotWrite) {
  for (const bool wal : {false, true}) {
    TempAccount account;
    account.put("TACHE", "Vitres", {{"committed"}});
    testing::killWriterHalfWay(account.path(), wal);
    ASSERT_TRUE(std::filesystem::exists(account.path() + (wal ? "-wal" : "-journal")));
    if (wal) std::filesystem::remove(account.path() + "-shm");
    const auto db = account.open();
    auto& sqlite = dynamic_cast<SqliteDatabase&>(db.get());
    const int rc =
        sqlite3_exec(sqlite.nativeHandle(), "DELETE FROM records", nullptr, nullptr, nullptr);
    EXPECT_EQ(rc & 0xFF, SQLITE_READONLY);
    EXPECT_EQ(db->OpenFile(u"TACHE")->ReadRecord(u"Vitres")->r(1), u"committed") << wal;
  }
}

// A held snapshot keeps one read lock until the outermost hold goes, shared by what runs
// inside; a writer cannot commit under it; each record is read once (a copy each time).
TEST(Store, AHeldSnapshotKeepsOneReadLockAndReadsEachRecordOnce) {
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
  for (int i = 0; i < 2; ++i) tache->ReadRecord(u"Repassage");
  EXPECT_EQ(statistics(db).decodedRecords, 2u);
  {
    const auto outer = db->holdSnapshot();
    {
      const auto inner = db->holdSnapshot();
      long hits = 0;
      db->RunQuery(u"SSELECT TACHE\xF8FETACHE", u"", hits);
      EXPECT_EQ(hits, 1);
    }
    EXPECT_EQ(tryWrite(), SQLITE_BUSY);
    for (int i = 0; i < 3; ++i) {
      const RecordRef record = tache->ReadRecord(u"Repassage");
      EXPECT_EQ(record->r(1), u"avant");
      record->set(1, u"changed by the reader");
      EXPECT_EQ(failureNumber([&] { tache->ReadRecord(u"absent"); }), errors::kRecordNotFound);
    }
  }
  EXPECT_EQ(statistics(db).decodedRecords, 3u);
  EXPECT_EQ(tryWrite(), SQLITE_OK);
  EXPECT_EQ(failureNumber([&] { tache->ReadRecord(u"Repassage"); }), errors::kRecordNotFound);
  sqlite3_close(writer);
}

// Known days both ways, other spellings one way; bad input fails with kTypeMismatch naming
// it (2100 is no leap year).
TEST(Dates, KnownDaysBothWaysAndBadInputNamed) {
  const NorvikDates dates;
  const std::vector<std::pair<Text, Text>> days{
      {u"0", u"31/12/1967"},     {u"11748", u"29/02/2000"}, {u"21512", u"23/11/2026"},
      {u"48273", u"01/03/2100"}, {u"-1", u"30/12/1967"},    {u"", u""}};
  for (const auto& [internal, text] : days) {
    EXPECT_EQ(dates.DateVersTexte(internal), text) << toUtf8(internal);
    EXPECT_EQ(dates.TexteVersDate(text), internal) << toUtf8(internal);
  }
  const std::vector<std::pair<Text, Text>> spellings{
      {u"2026-11-23", u"21512"}, {u" 23/11/2026 ", u"21512"}, {u"3/1/2026", u"21188"}};
  for (const auto& [text, internal] : spellings) {
    EXPECT_EQ(dates.TexteVersDate(text), internal) << toUtf8(text);
  }
  for (const char16_t* bad :
       {u"29/02/2100", u"29/02/2026", u"31/02/2026", u"abc", u"32/01/2026", u"01/13/2026",
        u"1/1/26", u"2026-1-23", u"23-11-2026", u"23/11/2026/1", u"0/1/2026"}) {
    std::string message;
    EXPECT_EQ(failureNumber([&] { dates.TexteVersDate(bad); }, &message), errors::kTypeMismatch)
        << toUtf8(bad);
    EXPECT_NE(message.find(toUtf8(bad)), std::string::npos) << message;
  }
  for (const char16_t* bad : {u"12.5", u"abc", u"21512x", u"--1", u"99999999"}) {
    EXPECT_EQ(failureNumber([&] { dates.DateVersTexte(bad); }), errors::kTypeMismatch)
        << toUtf8(bad);
  }
}

}  // namespace
}  // namespace velmora
