// The store on a PostgreSQL server: the failures a server brings reach the caller as a
// numbered failure with a French message, never a crash or a hang, and the next read
// works once the cause is gone.
#include <gtest/gtest.h>
#include <libpq-fe.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <velmora/base/failure.h>
#include <velmora/store/sqlite_database.h>
#include "support/account.h"
#include "support/failure_number.h"

namespace velmora::testing {
namespace {

// The server's cluster, stopped and started again as pg_virtualenv made it.
void cluster(const char* action) {
  const char* version = std::getenv("PGVERSION");
  const std::string command = std::string("pg_ctlcluster ") + (version ? version : "15") +
                              " regress " + action + " -m fast >/dev/null 2>&1";
  ASSERT_EQ(std::system(command.c_str()), 0) << command;
}

std::string readValue(DatabaseRef& db) {
  const auto snapshot = db->holdSnapshot();
  return toUtf8(db->OpenFile(u"TACHE")->ReadRecord(u"A1")->r());
}

TEST(ServerStore, EachFailureIsNumberedAndFrenchAndTheNextReadWorksOnceItIsGone) {
  if (!TempAccount::onServer()) {
    GTEST_SKIP() << "needs a PostgreSQL server: runs in test_store_pg (pg_virtualenv)";
  }
  TempAccount account;
  account.put("TACHE", "A1", {{"un"}});
  account.put("TACHE", "A2", {{"deux"}});
  DatabaseRef db;
  // An administrator's session that holds a lock until it goes.
  std::unique_ptr<PGconn, decltype(&PQfinish)> locker(nullptr, &PQfinish);
  const auto nothing = [] {};
  struct Case {
    const char* what;
    std::function<void()> arrange, call, undo;
    long number;
    const char* message;
  };
  const std::vector<Case> cases = {
      {"connection lost in the middle of a procedure", nothing,
       [&] {
         const auto snapshot = db->holdSnapshot();
         const auto file = db->OpenFile(u"TACHE");
         file->ReadRecord(u"A1");
         administerServer(
             "SELECT pg_terminate_backend(pid) FROM pg_stat_activity WHERE "
             "application_name = 'velmora' AND pid <> pg_backend_pid()");
         file->ReadRecord(u"A2");
       },
       nothing, errors::kDatabase, "a été perdue"},
      {"server down between two procedures (the reconnection opens as a first open does)",
       [&] {
         readValue(db);
         cluster("stop");
       },
       [&] { readValue(db); }, [] { cluster("start"); }, errors::kDatabase, "ne répond pas"},
      {"statement timeout",
       [&] {
         const std::string schema = account.path().substr(account.path().find("%3D") + 3);
         db = openDatabase(account.path() + "%20-cstatement_timeout%3D300");
         locker.reset(PQconnectdb(""));
         PQclear(
             PQexec(locker.get(),
                    ("BEGIN; LOCK TABLE " + schema + ".records IN ACCESS EXCLUSIVE MODE").c_str()));
       },
       [&] { readValue(db); }, [&] { locker.reset(); }, errors::kBusy, "n'a pas répondu à temps"},
      {"authentication refused",
       [] {
         administerServer(
             "DROP ROLE IF EXISTS velmora_intrus; "
             "CREATE ROLE velmora_intrus LOGIN PASSWORD 'juste'");
       },
       [] { openDatabase("postgresql://velmora_intrus:faux@/?password=faux&connect_timeout=5"); },
       [] { administerServer("DROP ROLE velmora_intrus"); }, errors::kDatabase,
       "La base postgresql://velmora_intrus:***@/?password=***&connect_timeout=5 refuse la connexion"},
      {"a database that is not a store",
       [] {
         administerServer("DROP SCHEMA IF EXISTS pas_velmora CASCADE; CREATE SCHEMA pas_velmora");
       },
       [] { openDatabase("postgresql://?options=-csearch_path%3Dpas_velmora"); },
       [] { administerServer("DROP SCHEMA pas_velmora CASCADE"); }, errors::kDatabase,
       "n'est pas une base Velmora"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    db = account.open();
    c.arrange();
    std::string message;
    EXPECT_EQ(failureNumber(c.call, &message), c.number) << message;
    EXPECT_NE(message.find(c.message), std::string::npos) << message;
    c.undo();
    EXPECT_EQ(readValue(db), "un");
    DatabaseRef fresh = account.open();
    EXPECT_EQ(readValue(fresh), "un");
  }
}

}  // namespace
}  // namespace velmora::testing
