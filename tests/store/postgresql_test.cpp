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

namespace velmora::testing {
namespace {

// The server's cluster, stopped and started again as pg_virtualenv made it.
void cluster(const char* action) {
  const char* version = std::getenv("PGVERSION");
  const std::string command = std::string("pg_ctlcluster ") + (version ? version : "15") +
                              " regress " + action + " -m fast >/dev/null 2>&1";
  ASSERT_EQ(std::system(command.c_str()), 0) << command;
}

// An administrator's session that holds what it did until it goes.
class Session {
 public:
  explicit Session(const std::string& sql) : connection_(PQconnectdb(""), &PQfinish) {
    PQclear(PQexec(connection_.get(), sql.c_str()));
  }

 private:
  std::unique_ptr<PGconn, decltype(&PQfinish)> connection_;
};

std::string readValue(DatabaseRef& db) {
  const auto snapshot = db->holdSnapshot();
  return toUtf8(db->OpenFile(u"TACHE")->ReadRecord(u"A1")->r());
}

struct Case {
  const char* what;
  // Breaks something, then makes the call that must fail; gives back what to undo.
  std::function<std::function<void()>(TempAccount&, DatabaseRef&, std::function<void()>& call)>
      arrange;
  long number;
  const char* message;
};

TEST(ServerStore, EachFailureIsNumberedAndFrenchAndTheNextReadWorksOnceItIsGone) {
  if (!TempAccount::onServer()) {
    GTEST_SKIP() << "needs a PostgreSQL server: runs in test_store_pg (pg_virtualenv)";
  }
  const std::string schemaOption = "postgresql://?options=-csearch_path%3D";
  const std::vector<Case> cases = {
      {"server down at open",
       [](TempAccount& account, DatabaseRef&, std::function<void()>& call) {
         cluster("stop");
         call = [&account] { openDatabase(account.path()); };
         return std::function<void()>([] { cluster("start"); });
       },
       errors::kDatabase, "ne répond pas"},
      {"connection lost in the middle of a procedure",
       [](TempAccount&, DatabaseRef& db, std::function<void()>& call) {
         call = [&db] {
           const auto snapshot = db->holdSnapshot();
           const auto file = db->OpenFile(u"TACHE");
           file->ReadRecord(u"A1");
           administerServer(
               "SELECT pg_terminate_backend(pid) FROM pg_stat_activity WHERE "
               "application_name = 'velmora' AND pid <> pg_backend_pid()");
           file->ReadRecord(u"A2");
         };
         return std::function<void()>([] {});
       },
       errors::kDatabase, "a été perdue"},
      {"server restarted between two procedures",
       [](TempAccount&, DatabaseRef& db, std::function<void()>& call) {
         readValue(db);
         cluster("stop");
         call = [&db] { readValue(db); };
         return std::function<void()>([] { cluster("start"); });
       },
       errors::kDatabase, "ne répond pas"},
      {"statement timeout",
       [](TempAccount& account, DatabaseRef& db, std::function<void()>& call) {
         const std::string schema = account.path().substr(account.path().find("%3D") + 3);
         db = openDatabase(account.path() + "%20-cstatement_timeout%3D300");
         auto lock = std::make_shared<Session>("BEGIN; LOCK TABLE " + schema +
                                               ".records IN ACCESS EXCLUSIVE MODE");
         call = [&db] { readValue(db); };
         return std::function<void()>([lock]() mutable { lock.reset(); });
       },
       errors::kBusy, "n'a pas répondu à temps"},
      {"authentication refused",
       [](TempAccount&, DatabaseRef&, std::function<void()>& call) {
         administerServer(
             "DROP ROLE IF EXISTS velmora_intrus; "
             "CREATE ROLE velmora_intrus LOGIN PASSWORD 'juste'");
         call = [] { openDatabase("postgresql://velmora_intrus:faux@/?connect_timeout=5"); };
         return std::function<void()>([] { administerServer("DROP ROLE velmora_intrus"); });
       },
       errors::kDatabase, "refuse la connexion"},
      {"a database that is not a store",
       [schemaOption](TempAccount&, DatabaseRef&, std::function<void()>& call) {
         administerServer("DROP SCHEMA IF EXISTS pas_velmora CASCADE; CREATE SCHEMA pas_velmora");
         call = [schemaOption] { openDatabase(schemaOption + "pas_velmora"); };
         return std::function<void()>([] { administerServer("DROP SCHEMA pas_velmora CASCADE"); });
       },
       errors::kDatabase, "n'est pas une base Velmora"},
  };
  TempAccount account;
  account.put("TACHE", "A1", {{"un"}});
  account.put("TACHE", "A2", {{"deux"}});
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    DatabaseRef db = account.open();
    std::function<void()> call;
    const auto undo = c.arrange(account, db, call);
    try {
      call();
      ADD_FAILURE() << "no failure";
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.number(), c.number) << failure.what();
      EXPECT_NE(std::string(failure.what()).find(c.message), std::string::npos) << failure.what();
    }
    undo();
    EXPECT_EQ(readValue(db), "un");
    DatabaseRef fresh = account.open();
    EXPECT_EQ(readValue(fresh), "un");
  }
}

}  // namespace
}  // namespace velmora::testing
