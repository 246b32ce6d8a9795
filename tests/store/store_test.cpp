// The store as the control and the tool use it: records read back as written, batches
// all or nothing, a read-only connection that opens clearly or fails clearly, dates.
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <vector>

#include <filesystem>
#include <fstream>

#include <velmora/base/failure.h>
#include <velmora/store/dates.h>
#include <velmora/store/sqlite_database.h>
#include "store/account_layout.h"
#include "support/account.h"

namespace velmora {
namespace {

using testing::TempAccount;

// The number of the failure the call raised, 0 when none; its message goes to *message.
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

const Text AM(1, kAttributeMark);
const Text VM(1, kValueMark);

TEST(Record, ReadsEmptyOutsideWhatItHoldsAndGrowsWhereItIsWritten) {
  NorvikRecord record;
  for (const auto& [a, v] : {std::pair{1, 0}, {3, 2}, {0, 1}, {1, 0}, {-4, -1}}) {
    EXPECT_EQ(record.r(a, v), u"") << a << "," << v;
  }
  EXPECT_EQ(record.DCount(), 0);
  EXPECT_EQ(record.DCount(1), 0);
  record.set(3, u"c");
  EXPECT_EQ(record.r(), AM + AM + u"c");
  EXPECT_EQ(record.DCount(), 3);
  EXPECT_EQ(record.DCount(1), 0);
  record.set(2, 3, u"v");
  EXPECT_EQ(record.r(), AM + VM + VM + u"v" + AM + u"c");
  EXPECT_EQ(record.DCount(2), 3);
  EXPECT_EQ(record.r(2, 3), u"v");
  EXPECT_EQ(record.r(2, 4), u"");
  record.set(5, 2, u"w");
  EXPECT_EQ(record.r(5), VM + u"w");
  record.set(6, u"");  // a trailing empty attribute that was written counts
  EXPECT_EQ(record.DCount(), 6);
  EXPECT_EQ(NorvikRecord(record.r()).DCount(), 6);
  // Marks in a written value reshape the record.
  record.set(u"a" + AM + u"b" + AM + u"c");
  record.set(2, u"x" + AM + u"y");
  EXPECT_EQ(record.r(), u"a" + AM + u"x" + AM + u"y" + AM + u"c");
  record.set(4, 2, u"m" + VM + u"n");
  EXPECT_EQ(record.DCount(4), 3);
  // Delete moves later attributes up; numbers outside the record change nothing.
  record.Delete(2);
  record.Delete(9);
  record.Delete(0);
  EXPECT_EQ(record.r(), u"a" + AM + u"y" + AM + u"c" + VM + u"m" + VM + u"n");
  EXPECT_TRUE(record == NorvikRecord(record.r()));
  EXPECT_FALSE(record == NorvikRecord(u"a"));
  record.set(u"");
  EXPECT_EQ(record.DCount(), 0);
  for (const auto& [a, v] : {std::pair{0, 1}, {1, 0}, {-1, 1}}) {
    EXPECT_EQ(failureOf([&, a = a, v = v] { record.set(a, v, u"x"); }), errors::kInvalidCall)
        << a << "," << v;
  }
  EXPECT_EQ(failureOf([&] { record.set(0, u"x"); }), errors::kInvalidCall);
  EXPECT_EQ(record.DCount(), 0);
}

TEST(Store, ReadsBackEveryCharacterAsANewRecordEachTime) {
  TempAccount account;
  account.put("TPSSEMAINETYPE", "0001221186110002A",
              {{""}, {"1150"}, {"A"}, {"T1", "T2"}, {"30", "15"}, {""}, {""}, {"", "Sonner"}});
  account.put("TACHE", "Tâche été", {{"Ménage à fond"}, {"G-ÉTÉ"}});
  account.put("TACHE", "tache", {{"lower"}});
  account.put("EXTRA", "k", {{"one"}, {"two"}});
  account.put("EXTRA", "k", {{"three"}});
  account.put("EXTRA", "gone", {{"x"}});
  account.remove("EXTRA", "gone");
  account.remove("EXTRA", "never");
  FileRef tache;
  DatabaseRef db = account.open();
  const auto semType = db->OpenFile(u"TPSSEMAINETYPE")->ReadRecord(u"0001221186110002A");
  EXPECT_EQ(semType->DCount(), 8);
  EXPECT_EQ(semType->r(4), u"T1" + VM + u"T2");
  EXPECT_EQ(semType->r(8, 2), u"Sonner");
  tache = db->OpenFile(u"TACHE");
  db = DatabaseRef();  // the files keep the connection
  const auto first = tache->ReadRecord(u"Tâche été");
  EXPECT_EQ(first->r(), u"Ménage à fond" + AM + u"G-ÉTÉ");
  first->set(1, u"changed");
  EXPECT_EQ(tache->ReadRecord(u"Tâche été")->r(1), u"Ménage à fond");
  EXPECT_EQ(tache->ReadRecord(u"tache")->r(1), u"lower");
  std::string message;
  EXPECT_EQ(failureOf([&] { tache->ReadRecord(u"Tache"); }, &message), errors::kRecordNotFound);
  EXPECT_NE(message.find("TACHE"), std::string::npos) << message;
  EXPECT_NE(message.find("Tache"), std::string::npos) << message;
  const auto extra = account.open()->OpenFile(u"EXTRA");
  EXPECT_EQ(extra->ReadRecord(u"k")->r(), u"three");
  EXPECT_EQ(failureOf([&] { extra->ReadRecord(u"gone"); }), errors::kRecordNotFound);
  for (const char16_t* name : kAccountFiles)
    EXPECT_EQ(account.open()->OpenFile(name)->name(), name);
  EXPECT_EQ(failureOf([&] { account.open()->OpenFile(u"NOSUCHFILE"); }, &message),
            errors::kUnknownFile);
  EXPECT_NE(message.find("NOSUCHFILE"), std::string::npos) << message;
}

TEST(Store, ABatchIsAllOrNothingAndRefusesBadNamesAtOnce) {
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
  std::string message;
  EXPECT_EQ(failureOf([&] { account.apply(batch); }, &message), errors::kDatabase);
  EXPECT_NE(message.find("refused"), std::string::npos) << message;
  const auto db = account.open();
  EXPECT_EQ(db->OpenFile(u"TACHE")->ReadRecord(u"Keep")->r(1), u"kept");
  EXPECT_EQ(failureOf([&] { db->OpenFile(u"TACHE")->ReadRecord(u"New"); }),
            errors::kRecordNotFound);
  EXPECT_EQ(failureOf([&] { db->OpenFile(u"REFUSED"); }), errors::kUnknownFile);

  Batch bad;
  EXPECT_EQ(failureOf([&] { bad.createFile(u""); }), errors::kInvalidCall);
  EXPECT_EQ(failureOf([&] { bad.createFile(u"TWO WORDS"); }), errors::kInvalidCall);
  EXPECT_EQ(failureOf([&] { bad.putRecord(u"T", VM, NorvikRecord()); }), errors::kInvalidCall);
  for (const DictionaryItem& item :
       {DictionaryItem{u"T", u"12", 1, 0, 0}, DictionaryItem{u"T", u"X", -1, 0, 5},
        DictionaryItem{u"T", u"@ID", 0, 0, 0}}) {
    EXPECT_EQ(failureOf([&] { bad.defineItem(item); }), errors::kInvalidCall) << toUtf8(item.name);
  }
  EXPECT_EQ(bad.size(), 0u);
}

// A store of many pages, so that damage can hit the first page or one deep inside.
void damage(const std::string& path, std::streamoff at, int bytes) {
  std::fstream io(path, std::ios::in | std::ios::out | std::ios::binary);
  io.seekp(at);
  for (int i = 0; i < bytes; ++i) io.put(static_cast<char>(0xA5 ^ i));
}

// Each way a file can fail the open has its own words, naming the file: a planner may
// read them. A reader never creates a file.
TEST(Store, OpenFailsClearlyOnWhatIsNotAReadableStore) {
  TempAccount account;
  Batch pages;
  for (int i = 0; i < 200; ++i) {
    pages.putRecord(u"TACHE", fromUtf8("key" + std::to_string(1000 + i)),
                    testing::makeRecord({{std::string(200, 'x')}}));
  }
  account.apply(pages);
  const std::string dir = account.directory();
  std::filesystem::copy_file(account.path(), dir + "/damaged.db");
  damage(dir + "/damaged.db", 100, 3000);  // past the file header, into the schema's page
  std::filesystem::copy_file(account.path(), dir + "/deep.db");
  damage(dir + "/deep.db",
         static_cast<std::streamoff>(std::filesystem::file_size(account.path()) / 2), 8192);
  std::ofstream(dir + "/notes.txt") << std::string(2000, 'x');
  sqlite3* raw = nullptr;
  ASSERT_EQ(sqlite3_open((dir + "/other.db").c_str(), &raw), SQLITE_OK);
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
  const std::vector<Case> cases{
      {account.path(), errors::kBusy, "verrouillée par un autre programme"},
      {dir + "/notes.txt", errors::kDatabase, "n'est pas une base de données"},
      {dir + "/damaged.db", errors::kDatabase, "est endommagée"},
      {dir + "/deep.db", errors::kDatabase, "endommagée"},
      {dir + "/other.db", errors::kDatabase, "n'est pas une base Velmora"},
      {dir, errors::kDatabase, "est un dossier"},
      {dir + "/missing.db", errors::kDatabase, "n'existe pas"},
  };
  for (const auto& c : cases) {
    std::string message;
    const auto openAndReadAll = [&] {
      long count = 0;
      openDatabase(c.path)->RunQuery(u"SSELECT TACHE\uF8FETACHE\uF8FE0 1", u"", count);
    };
    EXPECT_EQ(failureOf(openAndReadAll, &message), c.number) << c.path;
    EXPECT_NE(message.find(c.words), std::string::npos) << message;
    EXPECT_NE(message.find(c.path), std::string::npos) << message;
  }
  sqlite3_close(writer);
  EXPECT_FALSE(std::filesystem::exists(dir + "/missing.db"));
  EXPECT_EQ(failureOf([&] { StoreWriter taken(dir + "/other.db"); }), errors::kDatabase);
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
    EXPECT_EQ(db->OpenFile(u"TACHE")->ReadRecord(u"Vitres")->r(1), u"committed") << wal;
    long hits = 0;
    db->RunQuery(u"SSELECT TACHE\xF8FETACHE", u"", hits);
    EXPECT_EQ(hits, 1) << wal;
    auto& sqlite = dynamic_cast<SqliteDatabase&>(db.get());
    const int rc =
        sqlite3_exec(sqlite.nativeHandle(), "DELETE FROM records", nullptr, nullptr, nullptr);
    EXPECT_EQ(rc & 0xFF, SQLITE_READONLY);
    EXPECT_EQ(db->OpenFile(u"TACHE")->ReadRecord(u"Vitres")->r(1), u"committed") << wal;
  }
}

// A held snapshot keeps one read lock until the outermost hold goes: holds and queries
// inside share it, a writer cannot commit under it, and each record is read from the file
// once inside it (each read still gives a record of its own).
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
      EXPECT_EQ(failureOf([&] { tache->ReadRecord(u"absent"); }), errors::kRecordNotFound);
    }
  }
  EXPECT_EQ(statistics(db).decodedRecords, 3u);
  EXPECT_EQ(tryWrite(), SQLITE_OK);
  EXPECT_EQ(failureOf([&] { tache->ReadRecord(u"Repassage"); }), errors::kRecordNotFound);
  sqlite3_close(writer);
}

TEST(Dates, KnownDaysBothWaysAndEveryDayOfTwoCenturies) {
  const NorvikDates dates;
  struct Case {
    const char* internal;
    const char16_t* text;
  };
  const std::vector<Case> cases{{"0", u"31/12/1967"},     {"1", u"01/01/1968"},
                                {"60", u"29/02/1968"},    {"366", u"31/12/1968"},
                                {"11748", u"29/02/2000"}, {"21512", u"23/11/2026"},
                                {"-1", u"30/12/1967"},    {"", u""}};
  for (const auto& c : cases) {
    EXPECT_EQ(dates.DateVersTexte(fromUtf8(c.internal)), c.text) << c.internal;
    EXPECT_EQ(dates.TexteVersDate(c.text), fromUtf8(c.internal)) << c.internal;
  }
  for (const char16_t* other : {u"2026-11-23", u"23/11/2026 ", u" 23/11/2026"}) {
    EXPECT_EQ(dates.TexteVersDate(other), u"21512") << toUtf8(other);
  }
  EXPECT_EQ(dates.TexteVersDate(u"3/1/2026"), u"21188");
  EXPECT_EQ(dates.TexteVersDate(u"29/02/2024"), u"20514");
  EXPECT_EQ(dates.DateVersTexte(u"48273"), u"01/03/2100");  // 2100 is no leap year
  long previous = daysFromCivil(1899, 12, 31);
  for (int year = 1900; year <= 2100; ++year) {
    for (int month = 1; month <= 12; ++month) {
      for (int day = 1; day <= 31; ++day) {
        int y = 0, m = 0, d = 0;
        const long n = daysFromCivil(year, month, day);
        civilFromDays(n, y, m, d);
        if (y != year || m != month || d != day) continue;  // no such day: skipped
        ASSERT_EQ(n, previous + 1) << year << "-" << month << "-" << day;
        previous = n;
      }
    }
  }
  EXPECT_EQ(previous, daysFromCivil(2100, 12, 31));
}

TEST(Dates, BadInputFailsWithTypeMismatchNamingIt) {
  const NorvikDates dates;
  for (const char16_t* bad :
       {u"29/02/2100", u"29/02/2026", u"31/02/2026", u"abc", u"32/01/2026", u"01/13/2026",
        u"1/1/26", u"2026-1-23", u"23-11-2026", u"23/11/2026/1", u"0/1/2026"}) {
    std::string message;
    EXPECT_EQ(failureOf([&] { dates.TexteVersDate(bad); }, &message), errors::kTypeMismatch)
        << toUtf8(bad);
    EXPECT_NE(message.find(toUtf8(bad)), std::string::npos) << message;
  }
  for (const char16_t* bad : {u"12.5", u"abc", u"21512x", u"--1", u"99999999"}) {
    EXPECT_EQ(failureOf([&] { dates.DateVersTexte(bad); }), errors::kTypeMismatch) << toUtf8(bad);
  }
}

}  // namespace
}  // namespace velmora
