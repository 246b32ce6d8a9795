// The store on a PostgreSQL server: the failures a server brings reach the caller as a
// numbered failure with a French message, never a crash or a hang, and the next read
// works once the cause is gone. Then an office as scripts/office-setup makes it.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <libpq-fe.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <velmora/base/failure.h>
#include "cli/run_velmora.h"
#include "store/postgresql/postgresql_read_connection.h"
#include "store/postgresql/postgresql_support.h"
#include "support/account.h"
#include "support/failure_number.h"

namespace velmora::testing {
namespace {

using Pg = store::ServerConnection;
Pg session(const std::string& at) {
  return Pg(PQconnectdb(at.c_str()));
}
// The first value of the statement's answer, "" for a command, or "!" and its SQLSTATE.
std::string answer(PGconn* connection, const std::string& sql) {
  const store::Result result(PQexec(connection, sql.c_str()));
  const auto status = PQresultStatus(result.get());
  if (status == PGRES_TUPLES_OK) return PQgetvalue(result.get(), 0, 0);
  if (status == PGRES_COMMAND_OK || status == PGRES_COPY_IN) return "";
  const char* state = PQresultErrorField(result.get(), PG_DIAG_SQLSTATE);
  return std::string("!") + (state != nullptr ? state : "?");
}

// A command of PostgreSQL's cluster tools on the cluster pg_virtualenv made.
std::string tool(const std::string& name, const std::string& rest) {
  const char* version = std::getenv("PGVERSION");
  return name + " " + (version ? version : "15") + " regress " + rest;
}
// On a loaded machine a stop or a start may give up waiting once: more tries keep the
// cases after it from running on a server in the wrong state.
void run(const std::string& command, int tries = 1) {
  int status = std::system(command.c_str());
  for (int retry = 1; status != 0 && retry < tries; ++retry) {
    std::this_thread::sleep_for(std::chrono::seconds(2));
    status = std::system(command.c_str());
  }
  ASSERT_EQ(status, 0) << command;
}
void cluster(const std::string& action) {
  run(tool("pg_ctlcluster", action + " -m fast") + " >/dev/null 2>&1", 3);
}
void configure(const std::string& change) {
  run(tool("pg_conftool", change));
}
void serverMessagesIn(const std::string& locale) {
  configure("set lc_messages " + locale);
  administerServer("SELECT pg_reload_conf()");
}
const std::string kStandbySignal =
    "\"$(" + tool("pg_conftool -s", "show data_directory") + ")/standby.signal\"";
const std::string kIntruder =
    "DROP ROLE IF EXISTS velmora_intrus; CREATE ROLE velmora_intrus LOGIN PASSWORD 'juste'; ";

// A store whose reads of the file COUPE run cut(): it ends its own session while fewer than
// `allowed` sessions were ended since the count was taken, and fails in two lines with a
// tab when none is allowed (the sessions ended before have counted themselves after 0.2 s).
const std::string kCutStore =
    std::string(
        "DROP SCHEMA IF EXISTS velmora_coupe CASCADE; CREATE SCHEMA velmora_coupe; "
        "SET search_path = velmora_coupe; ") +
    store::kServerSchema + R"sql(
ALTER TABLE files RENAME TO stored_files; INSERT INTO stored_files VALUES ('TACHE');
CREATE FUNCTION ended() RETURNS bigint LANGUAGE sql AS
  'SELECT pg_stat_get_db_sessions_killed(oid) FROM pg_database WHERE datname = current_database()';
CREATE TABLE cuts AS SELECT 0 AS allowed, ended() AS since;
CREATE FUNCTION cut() RETURNS boolean LANGUAGE plpgsql AS $$ BEGIN
  IF (SELECT allowed FROM cuts) < 0 THEN RAISE EXCEPTION E'une\ttabulation\net une ligne'; END IF;
  PERFORM pg_sleep(0.2), pg_stat_clear_snapshot();
  IF ended() < (SELECT since + allowed FROM cuts) THEN
    PERFORM pg_terminate_backend(pg_backend_pid()), pg_sleep(5);
  END IF; RETURN true; END $$;
CREATE VIEW files AS SELECT name FROM stored_files UNION ALL SELECT 'COUPE' WHERE cut();
)sql";
// Opens the file COUPE, outside any snapshot, with that many sessions ended under it.
void openCut(int allowed) {
  administerServer("UPDATE velmora_coupe.cuts SET allowed = " + std::to_string(allowed) +
                   ", since = velmora_coupe.ended()");
  openDatabase("postgresql://?options=-csearch_path%3Dvelmora_coupe")->OpenFile(u"COUPE");
}

std::string readValue(DatabaseRef& db) {
  const auto snapshot = db->holdSnapshot();
  return toUtf8(db->OpenFile(u"TACHE")->ReadRecord(u"A1")->r());
}

TEST(ServerStore, EachFailureIsNumberedAndFrenchAndTheNextReadWorksOnceItIsGone) {
  if (!TempAccount::onServer()) GTEST_SKIP() << "needs a PostgreSQL server: test_store_pg";
  TempAccount account;
  account.put("TACHE", "A1", {{"un"}});
  DatabaseRef db;
  Pg locker;                 // an administrator's session holding a lock until it goes
  std::vector<Pg> sessions;  // administrators' sessions that fill the server
  const auto nothing = [] {};
  struct Case {
    const char* what;
    std::function<void()> arrange, call, undo;
    long number;
    const char* message;
  };
  const std::vector<Case> cases = {
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
         locker = session("");
         answer(locker.get(), "BEGIN; LOCK TABLE " + schema + ".records IN ACCESS EXCLUSIVE MODE");
       },
       [&] { readValue(db); }, [&] { locker.reset(); }, errors::kBusy, "n'a pas répondu à temps"},
      {"authentication refused", [] { administerServer(kIntruder); },
       [] { openDatabase("postgresql://velmora_intrus:faux@/?password=faux&connect_timeout=5"); },
       [] { administerServer("DROP ROLE velmora_intrus"); }, errors::kDatabase,
       "La base postgresql://velmora_intrus:***@/?password=***&connect_timeout=5 refuse la "
       "connexion"},
      // Names that hold the words of other reasons, in quotes, say nothing.
      {"unknown database", nothing, [] { openDatabase("postgresql:///invalid_option"); }, nothing,
       errors::kDatabase, "La base postgresql:///invalid_option n'existe pas"},
      {"unknown server name", nothing,
       [] { openDatabase("postgresql://velmora-too-many.invalid/velmora"); }, nothing,
       errors::kDatabase, "est sur un serveur dont le nom est inconnu"},
      {"a database the role may not connect to",
       [] { administerServer(kIntruder + "REVOKE CONNECT ON DATABASE postgres FROM PUBLIC"); },
       [] { openDatabase("postgresql://velmora_intrus:juste@/postgres"); },
       [] {
         administerServer("DROP ROLE velmora_intrus; GRANT CONNECT ON DATABASE postgres TO PUBLIC");
       },
       errors::kDatabase, "n'a pas le droit de s'y connecter"},
      {"server shutting down, a session still open",
       [] { run(tool("pg_ctlcluster", "stop -m smart") + " >/dev/null 2>&1 &"); },
       [&] {
         // The smart shutdown refuses new sessions once it has begun.
         for (int tries = 0; tries < 100; ++tries) {
           if (failureNumber([&] { account.open(); }) != 0) break;
           std::this_thread::sleep_for(std::chrono::milliseconds(50));
         }
         account.open();
       },
       [] {
         cluster("stop");
         cluster("start");
       },
       errors::kDatabase, "est sur un serveur qui s'arrête"},
      {"a standby that takes no session",
       [] {
         cluster("stop");
         run("touch " + kStandbySignal);
         configure("set hot_standby off");
         cluster("start");
       },
       [&] { account.open(); },
       [] {
         cluster("stop");
         run("rm " + kStandbySignal);
         configure("remove hot_standby");
         cluster("start");
       },
       errors::kDatabase, "est sur un serveur de secours qui n'accepte aucune connexion"},
      // Back to English explicitly after it: without the setting a server speaks the
      // language of the environment it was last started from.
      {"a server that speaks French: an unknown database, then a refused password",
       [] { serverMessagesIn("fr_FR.UTF-8"); },
       [] {
         std::string unknown, refused;
         failureNumber([] { openDatabase("postgresql:///velmora_nulle_part"); }, &unknown);
         failureNumber([] { openDatabase("postgresql://postgres:faux@/"); }, &refused);
         throw Failure(errors::kDatabase,
                       std::string(PQerrorMessage(session("dbname=velmora_nulle_part").get())) +
                           unknown + " | " + refused);
       },
       [] { serverMessagesIn("C"); }, errors::kDatabase,
       "la base de données « velmora_nulle_part » n'existe pas\nLa base "
       "postgresql:///velmora_nulle_part n'existe pas sur le serveur. Vérifiez le nom de la "
       "base dans l'adresse. | La base postgresql://postgres:***@/ refuse la connexion : "
       "l'utilisateur ou le mot de passe n'est pas accepté"},
      {"every connection taken, then the last ones kept for the administrators",
       [&] {
         configure("set max_connections 12");
         configure("set superuser_reserved_connections 3");
         cluster("restart");
         administerServer(kIntruder);
       },
       [&] {
         std::string full, reserved;
         for (int open = 0; open < 20; ++open) {
           sessions.push_back(session(""));
           if (PQstatus(sessions.back().get()) != CONNECTION_OK) break;
         }
         failureNumber([&] { account.open(); }, &full);
         sessions.erase(sessions.end() - 2, sessions.end());
         failureNumber([] { openDatabase("postgresql://velmora_intrus:juste@/"); }, &reserved);
         throw Failure(errors::kDatabase, full + " | " + reserved);
       },
       [&] {
         sessions.clear();
         administerServer("DROP ROLE velmora_intrus");
         configure("remove max_connections");
         configure("remove superuser_reserved_connections");
         cluster("restart");
       },
       errors::kDatabase,
       "le serveur a déjà toutes les connexions qu'il accepte. Réessayez quand d'autres postes "
       "auront fermé la leur ; si cela dure, demandez à l'administrateur d'augmenter "
       "max_connections. | La base postgresql://velmora_intrus:***@/ refuse la connexion : les "
       "dernières connexions libres du serveur sont réservées à ses administrateurs"},
      // A read alone is made again once on a new session, not twice; a server's message
      // in several lines, with a tab, is quoted on one.
      {"a read alone whose session is ended twice in a row", [] { administerServer(kCutStore); },
       [] {
         std::string tab;
         EXPECT_EQ(failureNumber([] { openCut(1); }), 0);
         failureNumber([] { openCut(-1); }, &tab);
         EXPECT_NE(tab.find("utilisée (ERROR:  une tabulation et une ligne "), std::string::npos);
         openCut(2);
       },
       [] { administerServer("DROP SCHEMA velmora_coupe CASCADE"); }, errors::kDatabase,
       "La connexion au serveur de la base postgresql://?options=-csearch_path%3Dvelmora_coupe a "
       "été perdue (FATAL:  terminating connection due to administrator command CONTEXT:  SQL "
       "statement \"SELECT pg_terminate_backend(pg_backend_pid()), pg_sleep(5)\" PL/pgSQL "
       "function cut() line 5 at PERFORM). Vérifiez"},
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

// A server of a list of hosts that goes away while a connection opens (a standby
// stopping: closed, or ending its sessions) is left for the next host of the list, and
// what a server says outside an answer is never printed by libpq.
TEST(ServerStore, AHostGoingAwayIsLeftForTheNextOneAndNothingOfLibpqIsPrinted) {
  if (!TempAccount::onServer()) GTEST_SKIP() << "needs a PostgreSQL server: test_store_pg";
  using namespace std::string_view_literals;
  TempAccount account;
  account.put("TACHE", "A1", {{"un"}});
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), size), 0);
  ASSERT_EQ(listen(listener, 4), 0);
  getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
  const std::string going = "127.0.0.1:" + std::to_string(ntohs(address.sin_port));
  const std::string rest = account.path().substr(std::string("postgresql://").size());
  const std::string uri = "postgresql://" + going + ",localhost:" + std::getenv("PGPORT") + rest +
                          "&sslmode=disable&gssencmode=disable";
  for (const bool withMessage : {false, true}) {
    SCOPED_TRACE(withMessage ? "FATAL at the opening" : "closed at the opening");
    std::thread server([&] {
      const int session = accept(listener, nullptr, nullptr);
      std::array<char, 512> startup{};
      static_cast<void>(recv(session, startup.data(), startup.size(), 0));
      // An ErrorResponse's fields, each ended by a zero byte, and a zero byte after them.
      const std::string fields(std::string_view("SFATAL\0C57P01\0Mterminating connection\0\0"sv));
      const auto length = htonl(static_cast<std::uint32_t>(fields.size() + 4));
      const std::string fatal =
          "E" + std::string(reinterpret_cast<const char*>(&length), 4) + fields;
      if (withMessage) static_cast<void>(send(session, fatal.data(), fatal.size(), 0));
      close(session);
    });
    std::string message;
    DatabaseRef db;
    EXPECT_EQ(failureNumber([&] { db = openDatabase(uri); }, &message), 0) << message;
    server.join();
    if (db) EXPECT_EQ(readValue(db), "un");
  }
  close(listener);
  // A session the server ends while idle: its FATAL, read before any statement asks
  // (here by PQconsumeInput and PQisBusy; under load, at the end of a pipeline), goes nowhere.
  const store::ServerConnection idle = store::connectToServer(account.path(), "idle");
  ::testing::internal::CaptureStderr();
  administerServer(
      "SELECT pg_terminate_backend(pid) FROM pg_stat_activity WHERE "
      "application_name = 'velmora' AND pid <> pg_backend_pid()");
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  static_cast<void>(PQconsumeInput(idle.get()));
  static_cast<void>(PQisBusy(idle.get()));
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

// An address libpq refuses before any server is asked: the message quotes what is wrong
// with it, the password masked and nothing else; a list of hosts is an address too.
TEST(ServerAddress, ARefusedAddressIsQuotedWithOnlyItsPasswordMasked) {
  for (const std::string uri :
       {"postgresql://planner:s3cret@/velmora?sslmode=bogus",
        "postgresql:///velmora?password=s3cret&sslmode=bogus",
        "postgresql://planner:s3cret@h1:5433,h2/velmora?target_session_attrs=prefer-standby&"
        "sslmode=bogus"}) {
    EXPECT_TRUE(isServerUri(uri));
    EXPECT_EQ(shownLocation(uri).find("s3cret"), std::string::npos);
    std::string message;
    EXPECT_EQ(failureNumber([&] { openDatabase(uri); }, &message), errors::kDatabase);
    for (const char* words : {"n'est pas valable", "\"bogus\"", "velmora"}) {
      EXPECT_NE(message.find(words), std::string::npos) << message;
    }
    EXPECT_EQ(message.find("s3cret"), std::string::npos) << message;
  }
}

TEST(ServerStore, TwoWritersFillingOneEmptySchemaAtOnceBothCommit) {
  if (!TempAccount::onServer()) GTEST_SKIP() << "needs a PostgreSQL server: test_store_pg";
  administerServer("DROP SCHEMA IF EXISTS velmora_vide CASCADE; CREATE SCHEMA velmora_vide");
  const std::string uri = "postgresql://?options=-csearch_path%3Dvelmora_vide";
  // The first writer has made the tables and not yet committed.
  const Pg first = session("options=-csearch_path=velmora_vide");
  answer(first.get(), std::string("BEGIN; ") + store::kServerSchema);
  std::string message;
  std::thread second([&] {
    Batch batch;
    batch.putRecord(u"TACHE", u"A1", makeRecord({{"un"}}));
    failureNumber([&] { StoreWriter(uri).apply(batch); }, &message);
  });
  // The second waits for the first's names; once it does, the first commits.
  for (int tries = 0; tries < 200; ++tries) {
    if (answer(session("").get(), "SELECT count(*) FROM pg_locks WHERE NOT granted") != "0") break;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  answer(first.get(), "COMMIT");
  second.join();
  EXPECT_EQ(message, "");
  DatabaseRef db = openDatabase(uri);
  EXPECT_EQ(readValue(db), "un");
  administerServer("DROP SCHEMA velmora_vide CASCADE");
}

// An office as scripts/office-cluster makes it (scripts/office-setup's roles and sample
// account on a primary, a streaming standby, PgBouncer in transaction mode), in the
// folder tests/support/on-cluster names; the PG* variables name its administrator.
class Office : public ::testing::Test {
 protected:
  void SetUp() override {
    if (std::getenv("VELMORA_TEST_CLUSTER") == nullptr) GTEST_SKIP() << "runs in office_cluster";
  }
  static std::string at(const std::string& name) {
    return std::string(std::getenv("VELMORA_TEST_CLUSTER")) + "/" + name;
  }
  // The value of that name in DIR/uris, or the server's port in DIR/ports.
  static std::string uri(const std::string& name, const char* file = "uris") {
    std::istringstream lines(cli_test::slurp(at(file)));
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with(name + "=")) return line.substr(name.size() + 1);
    }
    return "postgresql://absent";
  }
  static std::string port(const std::string& name) { return uri(name, "ports"); }
  // The tool's output and status, each output kept to look for passwords in.
  std::string velmora(const std::vector<std::string>& args, int* status = nullptr) {
    const auto outcome = cli_test::runVelmora(args, work_.directory());
    if (status != nullptr) *status = outcome.status;
    outputs_ += outcome.out + outcome.err;
    return outcome.out + outcome.err;
  }
  // The administrator's view of a server.
  static std::string administrator(const std::string& server, const std::string& sql) {
    return answer(session("port=" + port(server)).get(), sql);
  }
  static void standby(const std::string& action) {
    run(std::string(VELMORA_SAMPLE_DIR) + "/../../scripts/office-cluster " + action + " " + at("") +
        " standby >/dev/null");
  }
  // The task's record, "" when there is none.
  static std::string label(DatabaseRef& db, const char16_t* key) {
    try {
      return toUtf8(db->OpenFile(u"TACHE")->ReadRecord(key)->r());
    } catch (const Failure& failure) {
      if (failure.number() != errors::kRecordNotFound) throw;
      return "";
    }
  }

  TempAccount work_;  // a folder for the tool's output
  std::string outputs_;
};

TEST_F(Office, ThroughThePoolerPlannersTakeTurnsOnOneServerConnectionAndLeaveNothing) {
  const Pg other = session(uri("pooler"));  // another planner's host
  std::vector<DatabaseRef> planners = {openDatabase(uri("pooler")), openDatabase(uri("pooler"))};
  for (int turn = 0; turn < 3; ++turn) {
    for (auto& planner : planners) {
      {
        const auto snapshot = planner->holdSnapshot();
        EXPECT_NE(label(planner, u"Aspirateur").find("Ménage courant"), std::string::npos);
      }
      EXPECT_NE(label(planner, u"Aspirateur").find("Ménage courant"), std::string::npos);
      // What the planner's transactions set or prepared ended with them.
      EXPECT_EQ(answer(other.get(),
                       "SELECT current_setting('enable_sort') || ' ' || "
                       "(SELECT count(*) FROM pg_prepared_statements)"),
                "on 0");
    }
  }
  EXPECT_EQ(administrator("primary",
                          "SELECT count(*) FROM pg_stat_activity WHERE usename = "
                          "'velmora_planner'"),
            "1");
}

TEST_F(Office, APlannerAskingForReadWriteIsRefusedEveryWriteRouteDirectlyAndThroughThePooler) {
  for (const auto* server : {"primary", "pooler"}) {
    SCOPED_TRACE(server);
    const Pg planner = session(uri(server));
    ASSERT_EQ(answer(planner.get(), "SET default_transaction_read_only = off"), "");
    for (const char* route : {"SELECT lo_from_bytea(0, 'plein')",
                              "SELECT lo_create(0)",
                              "SELECT lo_creat(-1)",
                              "SELECT lo_import('/etc/hostname')",
                              "CREATE TEMP TABLE t (x int)",
                              "INSERT INTO files VALUES ('X')",
                              "UPDATE velmora_store SET generation = 0",
                              "TRUNCATE records",
                              "COPY files FROM STDIN",
                              "COPY files FROM '/etc/hostname'",
                              "COPY files TO PROGRAM 'cat'",
                              "COPY files TO '/tmp/velmora-probe'",
                              "SET ROLE velmora_writer",
                              "CREATE TABLE public.t (x int)",
                              "CREATE SCHEMA planner",
                              "ALTER DEFAULT PRIVILEGES GRANT ALL ON TABLES TO PUBLIC",
                              "BEGIN; LOCK TABLE velmora_store IN SHARE ROW EXCLUSIVE MODE",
                              "SELECT * FROM velmora_store FOR KEY SHARE",
                              "SELECT pg_advisory_lock(g) FROM generate_series(1, 100000) g",
                              "SELECT pg_try_advisory_xact_lock(1)"}) {
      EXPECT_EQ(answer(planner.get(), route), "!42501") << route;
      if (PQtransactionStatus(planner.get()) != PQTRANS_IDLE) answer(planner.get(), "ROLLBACK");
    }
    answer(planner.get(), "RESET default_transaction_read_only");
  }
  const std::string pgpass = cli_test::slurp(at("pgpass"));
  const auto from = pgpass.find(":velmora_planner:") + 17;
  const std::string password = pgpass.substr(from, pgpass.find('\n', from) - from);
  for (const char* database : {"postgres", "template1"}) {
    const std::string refused =
        PQerrorMessage(session("postgresql://velmora_planner@localhost:" + port("primary") + "/" +
                               database + "?password=" + password)
                           .get());
    EXPECT_NE(refused.find("permission denied for database"), std::string::npos) << refused;
  }
}

TEST_F(Office, NoLockAPlannerCanTakeHoldsUpAnImportAndOnlyAWriterIsWaitedFor) {
  // A planner takes every lock it can reach and leaves its transaction open.
  const Pg planner = session(uri("primary"));
  ASSERT_NE(answer(planner.get(),
                   "BEGIN; LOCK TABLE velmora_store, files, records, dictionary "
                   "IN ACCESS SHARE MODE; SELECT count(*) FROM records")[0],
            '!');
  const std::string exchange = work_.directory() + "/tache.jsonl";
  cli_test::spit(exchange,
                 R"({"file":"TACHE","key":"Vitres","record":["1","G-VITRES","","N","45"]})"
                 "\n");
  // A writer waits at most this long, then says so; the planners are no reason to wait.
  const std::string writer = uri("writer") + "?options=-clock_timeout%3D2s";
  int status = -1;
  const std::string imported = velmora({"import", exchange, "--db", writer}, &status);
  EXPECT_EQ(status, 0) << imported;
  EXPECT_NE(imported.find("velmora_writer@localhost"), std::string::npos) << imported;
  const std::string read = velmora({"get", "--db", uri("pooler"), "TACHE", "Vitres"}, &status);
  EXPECT_EQ(status, 0) << read;
  EXPECT_NE(read.find("45"), std::string::npos) << read;

  // Another import in progress is waited for, then named.
  const Pg other = session(uri("writer"));
  ASSERT_EQ(answer(other.get(), "BEGIN; LOCK TABLE velmora_store IN SHARE ROW EXCLUSIVE MODE"), "");
  const std::string pid = std::to_string(PQbackendPID(other.get()));
  const std::string refused = velmora({"import", exchange, "--db", writer}, &status);
  EXPECT_EQ(status, 1) << refused;
  EXPECT_EQ(std::count(refused.begin(), refused.end(), '\n'), 1) << refused;
  EXPECT_NE(
      refused.find("est en cours d'écriture par le rôle velmora_writer (processus " + pid + ")"),
      std::string::npos)
      << refused;
}

TEST_F(Office, NoPasswordInAnyOutputEvenAWrongOne) {
  struct stat file {};
  ASSERT_EQ(stat(at("pgpass").c_str(), &file), 0);
  EXPECT_EQ(file.st_mode & 0777, 0600U);
  // A refused password, given in the URI, is shown masked.
  const std::string wrong = "faux-secret-4711";
  int status = -1;
  const std::string refused =
      velmora({"get", "--db",
               "postgresql://velmora_planner:" + wrong + "@localhost:" + port("pooler") +
                   "/velmora_office?password=" + wrong,
               "TACHE", "Aspirateur"},
              &status);
  EXPECT_EQ(status, 1);
  EXPECT_NE(refused.find("velmora_planner:***@"), std::string::npos) << refused;
  EXPECT_NE(refused.find("refuse la connexion"), std::string::npos) << refused;
  // office-setup run again: new passwords in the same file, the store kept and read; then
  // the roles' former verifiers and file back, for PgBouncer's auth file.
  const std::string before = cli_test::slurp(at("pgpass"));
  const std::string verifiers =
      administrator("primary",
                    "SELECT string_agg(format('ALTER ROLE %I PASSWORD %L', rolname, rolpassword), "
                    "'; ') FROM pg_authid WHERE rolname LIKE 'velmora\\_%'");
  const std::string setup = std::string(VELMORA_SAMPLE_DIR) + "/../../scripts/office-setup";
  EXPECT_EQ(cli_test::shell("bash " + cli_test::shellWord(setup) + " --pgpass " +
                            cli_test::shellWord(at("pgpass")) + " velmora_office >" +
                            cli_test::shellWord(at("again.log")) + " 2>&1"),
            0);
  for (const char* log :
       {"again.log", "office-setup.log", "primary.log", "pgbouncer/pgbouncer.log"}) {
    outputs_ += cli_test::slurp(at(log));
  }
  EXPECT_NE(outputs_.find("already holds a store: kept"), std::string::npos) << outputs_;
  EXPECT_NE(velmora({"get", "--db", uri("primary"), "TACHE", "Aspirateur"}).find("Ménage courant"),
            std::string::npos);
  std::istringstream lines(before + cli_test::slurp(at("pgpass")));
  administerServer(verifiers);
  cli_test::spit(at("pgpass"), before);
  std::vector<std::string> passwords = {wrong};
  for (std::string line; std::getline(lines, line);) {
    passwords.push_back(line.substr(line.rfind(':') + 1));
  }
  ASSERT_EQ(passwords.size(), 1U + 6U + 6U);
  for (const auto& password : passwords) {
    EXPECT_EQ(outputs_.find(password), std::string::npos) << outputs_;
  }
}

TEST_F(Office, OnTheStandbyAPlannerSeesWhatThePrimaryShowsAndLosesOneProcedureWhenItStops) {
  const auto propose = [&](const std::string& server) {
    int status = -1;
    std::string shown =
        velmora({"propose", "--db", server, "--client", "00001", "--json"}, &status);
    EXPECT_EQ(status, 0) << server << shown;
    return shown;
  };
  const std::string onPrimary = propose(uri("primary"));
  EXPECT_NE(onPrimary.find("Ménage courant"), std::string::npos) << onPrimary;
  std::string both = "postgresql://velmora_planner@localhost:" + port("primary") +
                     ",localhost:" + port("standby") +
                     "/velmora_office?target_session_attrs=read-only";
  for (const auto& server : {uri("standby"), uri("pooler"), both}) {
    EXPECT_EQ(propose(server), onPrimary);
  }

  DatabaseRef onStandby = openDatabase(uri("standby"));
  Batch batch;
  batch.putRecord(u"TACHE", u"Retard", makeRecord({{"1"}, {"G-RETARD"}}));
  StoreWriter(uri("writer")).apply(batch);
  const auto written = std::chrono::steady_clock::now();  // committed on the primary
  while (label(onStandby, u"Retard").empty() &&
         std::chrono::steady_clock::now() - written < std::chrono::seconds(10)) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  const auto lag = std::chrono::steady_clock::now() - written;
  EXPECT_NE(label(onStandby, u"Retard"), "");
  std::printf(
      "replication lag: %lld ms\n",
      static_cast<long long>(std::chrono::duration_cast<std::chrono::milliseconds>(lag).count()));

  // The standby stopped under a procedure: it fails, the next one runs on the primary.
  both = "postgresql://velmora_planner@localhost:" + port("standby") +
         ",localhost:" + port("primary") +
         "/velmora_office?target_session_attrs=prefer-standby&application_name=velmora_secours";
  DatabaseRef db = openDatabase(both);
  const std::string planners =
      "SELECT count(*) FROM pg_stat_activity WHERE application_name = 'velmora_secours'";
  ASSERT_EQ(administrator("standby", planners), "1");
  std::string message;
  {
    const auto snapshot = db->holdSnapshot();
    const auto groups = db->OpenFile(u"GROUPETACHE");  // not read yet: on the server
    EXPECT_NE(label(db, u"Aspirateur"), "");
    standby("stop");
    EXPECT_EQ(failureNumber([&] { groups->ReadRecord(u"G-MENAGE"); }, &message), errors::kDatabase);
  }
  EXPECT_NE(message.find("La connexion au serveur de la base " + both + " a été perdue"),
            std::string::npos)
      << message;
  EXPECT_NE(label(db, u"Aspirateur").find("Ménage courant"), std::string::npos);
  EXPECT_EQ(administrator("primary", planners), "1");
  standby("start");
}

TEST_F(Office, APlannerThatFellBackComesBackToTheStandbyBetweenProceduresOnly) {
  // The cluster's standby list: the standby, then the pooler.
  const std::string list = uri("standby") + "&application_name=velmora_retour";
  ASSERT_NE(list.find("target_session_attrs=prefer-standby"), std::string::npos) << list;
  const auto retry = std::chrono::seconds(10);
  store::PostgresqlReadConnection planner(list, retry);
  const auto procedure = [&] {
    const store::ReadConnection::Snapshot snapshot(planner);
    return planner.readRecord(u"TACHE", u"Aspirateur").has_value();
  };
  const std::string sessions =
      "SELECT count(*) FROM pg_stat_activity WHERE application_name = 'velmora_retour'";
  const auto onStandby = [&] { return administrator("standby", sessions); };
  ASSERT_TRUE(procedure());
  ASSERT_EQ(onStandby(), "1");

  // Stopped between procedures: the next one opens through the pooler.
  standby("stop");
  ASSERT_TRUE(procedure());
  const auto fellBack = std::chrono::steady_clock::now();
  standby("start");
  struct Step {
    const char* what;
    std::function<void()> act;
    const char* seen;
  };
  const std::vector<Step> steps = {
      {"before the delay, the standby back",
       [&] {
         ASSERT_LT(std::chrono::steady_clock::now() - fellBack, retry) << "a slow start";
         EXPECT_TRUE(procedure());
       },
       "0"},
      {"past the delay, inside one snapshot",
       [&] {
         const store::ReadConnection::Snapshot snapshot(planner);
         std::this_thread::sleep_until(fellBack + retry + std::chrono::milliseconds(200));
         for (int read = 0; read < 20; ++read) {  // statements on the server, in the snapshot
           EXPECT_FALSE(planner.fileNames().empty());
           std::this_thread::sleep_for(std::chrono::milliseconds(20));
         }
       },
       "0"},
      {"the procedures after it",
       [&] {
         const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(20);
         while (onStandby() != "1" && std::chrono::steady_clock::now() < until) {
           EXPECT_TRUE(procedure());
           std::this_thread::sleep_for(std::chrono::milliseconds(50));
         }
         EXPECT_TRUE(procedure());
       },
       "1"},
  };
  for (const auto& step : steps) {
    SCOPED_TRACE(step.what);
    step.act();
    EXPECT_EQ(onStandby(), step.seen);
  }
  // Back on the standby, what it reads is the store's.
  EXPECT_NE(toUtf8(planner.readRecord(u"TACHE", u"Aspirateur")->r()).find("Ménage courant"),
            std::string::npos);
}
}  // namespace
}  // namespace velmora::testing
