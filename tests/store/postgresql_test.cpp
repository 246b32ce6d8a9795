// The store on a PostgreSQL server: the failures a server brings reach the caller as a
// numbered failure with a French message, never a crash or a hang, and the next read
// works once the cause is gone. Then an office as scripts/office-setup makes it.
#include <gtest/gtest.h>
#include <libpq-fe.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <velmora/base/failure.h>
#include "cli/run_velmora.h"
#include "store/postgresql/postgresql_support.h"
#include "support/account.h"
#include "support/failure_number.h"

namespace velmora::testing {
namespace {

using Pg = std::unique_ptr<PGconn, decltype(&PQfinish)>;

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
ALTER TABLE files RENAME TO stored_files;
INSERT INTO stored_files VALUES ('TACHE');
CREATE FUNCTION ended() RETURNS bigint LANGUAGE sql AS
  'SELECT pg_stat_get_db_sessions_killed(oid) FROM pg_database WHERE datname = current_database()';
CREATE TABLE cuts AS SELECT 0 AS allowed, ended() AS since;
CREATE FUNCTION cut() RETURNS boolean LANGUAGE plpgsql AS $$ BEGIN
  IF (SELECT allowed FROM cuts) < 0 THEN RAISE EXCEPTION E'une\ttabulation\net une ligne'; END IF;
  PERFORM pg_sleep(0.2), pg_stat_clear_snapshot();
  IF ended() < (SELECT since + allowed FROM cuts) THEN
    PERFORM pg_terminate_backend(pg_backend_pid()), pg_sleep(5);
  END IF;
  RETURN true;
END $$;
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
  account.put("TACHE", "A2", {{"deux"}});
  DatabaseRef db;
  Pg locker(nullptr, &PQfinish);  // an administrator's session holding a lock until it goes
  std::vector<Pg> sessions;       // administrators' sessions that fill the server
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
         const Pg french(PQconnectdb("dbname=velmora_nulle_part"), &PQfinish);
         throw Failure(errors::kDatabase,
                       std::string(PQerrorMessage(french.get())) + unknown + " | " + refused);
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
           sessions.emplace_back(PQconnectdb(""), &PQfinish);
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
      // A read alone is made again once on a new session, not twice.
      {"a read alone whose session is ended twice in a row", [] { administerServer(kCutStore); },
       [] {
         EXPECT_EQ(failureNumber([] { openCut(1); }), 0);
         openCut(2);
       },
       [] { administerServer("DROP SCHEMA velmora_coupe CASCADE"); }, errors::kDatabase,
       "La connexion au serveur de la base postgresql://?options=-csearch_path%3Dvelmora_coupe a "
       "été perdue (FATAL:  terminating connection due to administrator command"},
      {"a server's message on several lines, with a tab", [] { administerServer(kCutStore); },
       [] { openCut(-1); }, [] { administerServer("DROP SCHEMA velmora_coupe CASCADE"); },
       errors::kDatabase, "ne peut pas être utilisée (ERROR:  une tabulation et une ligne "},
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
  const Pg first(PQconnectdb("options=-csearch_path=velmora_vide"), &PQfinish);
  PQclear(PQexec(first.get(), (std::string("BEGIN; ") + store::kServerSchema).c_str()));
  std::string message;
  std::thread second([&] {
    Batch batch;
    batch.putRecord(u"TACHE", u"A1", makeRecord({{"un"}}));
    failureNumber([&] { StoreWriter(uri).apply(batch); }, &message);
  });
  // The second waits for the first's names; once it does, the first commits.
  for (int tries = 0; tries < 200; ++tries) {
    const Pg admin(PQconnectdb(""), &PQfinish);
    const std::unique_ptr<PGresult, decltype(&PQclear)> result(
        PQexec(admin.get(), "SELECT count(*) FROM pg_locks WHERE NOT granted"), &PQclear);
    if (std::string(PQgetvalue(result.get(), 0, 0)) != "0") break;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  PQclear(PQexec(first.get(), "COMMIT"));
  second.join();
  EXPECT_EQ(message, "");
  DatabaseRef db = openDatabase(uri);
  EXPECT_EQ(readValue(db), "un");
  administerServer("DROP SCHEMA velmora_vide CASCADE");
}

// An office as scripts/office-setup makes it on the test server, once for the tests below:
// its database, its two roles, their passwords in a pgpass file of its own.
class Office : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    if (!TempAccount::onServer()) return;
    office_ = std::make_unique<Made>();
    office_->setupOutput = setUpAgain();
  }
  static void TearDownTestSuite() { office_.reset(); }

  void SetUp() override {
    if (!TempAccount::onServer()) GTEST_SKIP() << "needs a PostgreSQL server: test_store_pg";
    ASSERT_NE(office_->setupOutput.find("ready in database velmora_probe"), std::string::npos)
        << office_->setupOutput;
    ASSERT_EQ(office_->passwords.size(), 2U);
  }

  // The shell command's output and status, as a user with the office's pgpass file and no
  // password of the administrator's sees them, or as the administrator.
  static std::string shell(const std::string& command, int* status = nullptr, bool asUser = true) {
    const std::string out = office_->directory.directory() + "/out.txt";
    const std::string user = "env -u PGPASSWORD PGPASSFILE=" + cli_test::shellWord(pgpass()) + " ";
    const int raw = std::system(
        ((asUser ? user : "") + command + " >" + cli_test::shellWord(out) + " 2>&1 </dev/null")
            .c_str());
    if (status != nullptr) *status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    std::string output = cli_test::slurp(out);
    office_->outputs += output;
    return output;
  }
  static std::string velmora(const std::vector<std::string>& args, int* status = nullptr) {
    std::string command = cli_test::shellWord(VELMORA_CLI);
    for (const auto& arg : args) command += " " + cli_test::shellWord(arg);
    return shell(command, status);
  }
  // Runs office-setup (again) and reads back the writer's password, then the planner's.
  static std::string setUpAgain() {
    const std::string script = std::string(VELMORA_SAMPLE_DIR) + "/../../scripts/office-setup";
    const std::string output = shell("VELMORA=" + cli_test::shellWord(VELMORA_CLI) + " bash " +
                                         cli_test::shellWord(script) + " --pgpass " +
                                         cli_test::shellWord(pgpass()) + " velmora_probe",
                                     nullptr, false);
    office_->passwords.clear();
    std::istringstream lines(cli_test::slurp(pgpass()));
    for (std::string line; std::getline(lines, line);) {
      office_->passwords.push_back(line.substr(line.rfind(':') + 1));
    }
    return output;
  }
  static std::string pgpass() { return office_->directory.directory() + "/pgpass"; }
  static std::string uri(const std::string& role, const std::string& rest = "") {
    return "postgresql://" + role + "@localhost:" + std::getenv("PGPORT") + "/velmora_probe" + rest;
  }
  // A session as the role, with its password from the office's file (libpq would take the
  // administrator's from PGPASSWORD first).
  static Pg session(const std::string& role, const std::string& database = "velmora_probe") {
    const std::string& password = office_->passwords[role == "velmora_writer" ? 0 : 1];
    return {PQconnectdb(("host=localhost port=" + std::string(std::getenv("PGPORT")) +
                         " dbname=" + database + " user=" + role + " password=" + password)
                            .c_str()),
            &PQfinish};
  }
  // The SQLSTATE of the statement's failure, "" when it went through.
  static std::string refusal(PGconn* connection, const std::string& sql) {
    const std::unique_ptr<PGresult, decltype(&PQclear)> result(PQexec(connection, sql.c_str()),
                                                               &PQclear);
    const auto status = PQresultStatus(result.get());
    if (status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK || status == PGRES_COPY_IN) {
      return "";
    }
    const char* state = PQresultErrorField(result.get(), PG_DIAG_SQLSTATE);
    return state != nullptr ? state : "?";
  }

  struct Made {
    TempAccount directory;  // for its temporary folder
    std::string setupOutput;
    std::vector<std::string> passwords;  // the writer's, then the planner's
    std::string outputs;                 // everything every command printed
  };
  static std::unique_ptr<Made> office_;
};
std::unique_ptr<Office::Made> Office::office_;

TEST_F(Office, APlannerAskingForReadWriteIsRefusedEveryWriteRoute) {
  const Pg planner = session("velmora_planner");
  ASSERT_EQ(PQstatus(planner.get()), CONNECTION_OK) << PQerrorMessage(planner.get());
  ASSERT_EQ(refusal(planner.get(), "SET default_transaction_read_only = off"), "");
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
    EXPECT_EQ(refusal(planner.get(), route), "42501") << route;
    if (PQtransactionStatus(planner.get()) != PQTRANS_IDLE) refusal(planner.get(), "ROLLBACK");
  }
  for (const char* database : {"postgres", "template1"}) {
    const std::string refused = PQerrorMessage(session("velmora_planner", database).get());
    EXPECT_NE(refused.find("permission denied for database"), std::string::npos) << refused;
  }
}

TEST_F(Office, NoLockAPlannerCanTakeHoldsUpAnImportAndOnlyAWriterIsWaitedFor) {
  // A planner takes every lock it can reach and leaves its transaction open.
  const Pg planner = session("velmora_planner");
  ASSERT_EQ(refusal(planner.get(),
                    "BEGIN; LOCK TABLE velmora_store, files, records, dictionary IN ACCESS SHARE "
                    "MODE; SELECT count(*) FROM records"),
            "");
  const std::string exchange = office_->directory.directory() + "/tache.jsonl";
  cli_test::spit(exchange,
                 R"({"file":"TACHE","key":"Vitres","record":["1","G-VITRES","","N","45"]})"
                 "\n");
  // A writer waits at most this long, then says so; the planners are no reason to wait.
  const std::string writer = uri("velmora_writer", "?options=-clock_timeout%3D2s");
  int status = -1;
  const std::string imported = velmora({"import", exchange, "--db", writer}, &status);
  EXPECT_EQ(status, 0) << imported;
  EXPECT_NE(imported.find("velmora_writer@localhost"), std::string::npos) << imported;
  const std::string read =
      velmora({"get", "--db", uri("velmora_planner"), "TACHE", "Vitres"}, &status);
  EXPECT_EQ(status, 0) << read;
  EXPECT_NE(read.find("45"), std::string::npos) << read;

  // Another import in progress is waited for, then named.
  const Pg other = session("velmora_writer");
  ASSERT_EQ(refusal(other.get(), "BEGIN; LOCK TABLE velmora_store IN SHARE ROW EXCLUSIVE MODE"),
            "");
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
  ASSERT_EQ(stat(pgpass().c_str(), &file), 0);
  EXPECT_EQ(file.st_mode & 0777, 0600U);
  // A refused password, given in the URI, is shown masked.
  const std::string wrong = "faux-secret-4711";
  int status = -1;
  const std::string refused =
      velmora({"get", "--db",
               "postgresql://velmora_planner:" + wrong + "@localhost:" + std::getenv("PGPORT") +
                   "/velmora_probe?password=" + wrong,
               "TACHE", "Vitres"},
              &status);
  EXPECT_EQ(status, 1);
  EXPECT_NE(refused.find("velmora_planner:***@"), std::string::npos) << refused;
  EXPECT_NE(refused.find("refuse la connexion"), std::string::npos) << refused;
  // office-setup run again: new passwords in the same file, the store kept and read.
  std::vector<std::string> passwords = office_->passwords;
  EXPECT_NE(setUpAgain().find("already holds a store: kept"), std::string::npos);
  EXPECT_NE(velmora({"get", "--db", uri("velmora_planner"), "TACHE", "Aspirateur"}, &status)
                .find("Ménage courant"),
            std::string::npos);
  passwords.insert(passwords.end(), office_->passwords.begin(), office_->passwords.end());
  passwords.push_back(wrong);
  ASSERT_EQ(passwords.size(), 5U);
  for (const auto& password : passwords) {
    EXPECT_EQ(office_->outputs.find(password), std::string::npos) << office_->outputs;
  }
}

// The office's cluster of scripts/office-cluster, in the folder tests/support/on-cluster
// names: planners through PgBouncer in transaction mode, and on the streaming standby.
class OfficeCluster : public ::testing::Test {
 protected:
  void SetUp() override {
    if (std::getenv("VELMORA_TEST_CLUSTER") == nullptr) GTEST_SKIP() << "runs in office_cluster";
  }
  static std::string uri(const std::string& name) {
    std::istringstream lines(
        cli_test::slurp(std::string(std::getenv("VELMORA_TEST_CLUSTER")) + "/uris"));
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with(name + "=")) return line.substr(name.size() + 1);
    }
    return "postgresql://absent";
  }
  static std::string port(const std::string& name) {
    const std::string whole = uri(name);
    const auto colon = whole.rfind(':');
    return whole.substr(colon + 1, whole.rfind('/') - colon - 1);
  }
  // The first value of the statement's answer, or "!" and its SQLSTATE.
  static std::string value(PGconn* connection, const std::string& sql) {
    const std::unique_ptr<PGresult, decltype(&PQclear)> result(PQexec(connection, sql.c_str()),
                                                               &PQclear);
    if (PQresultStatus(result.get()) == PGRES_TUPLES_OK) return PQgetvalue(result.get(), 0, 0);
    const char* state = PQresultErrorField(result.get(), PG_DIAG_SQLSTATE);
    return std::string("!") + (state != nullptr ? state : "?");
  }
  // The administrator's view of a server (the PG* variables name the primary's).
  static std::string administrator(const std::string& server, const std::string& sql) {
    const Pg admin(PQconnectdb(("port=" + port(server)).c_str()), &PQfinish);
    return value(admin.get(), sql);
  }
  static void standby(const std::string& action) {
    run(std::string(VELMORA_SAMPLE_DIR) + "/../../scripts/office-cluster " + action + " " +
        std::getenv("VELMORA_TEST_CLUSTER") + " standby >/dev/null");
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
};

TEST_F(OfficeCluster, ThroughThePoolerPlannersTakeTurnsOnOneServerConnectionAndLeaveNothing) {
  const Pg other(PQconnectdb(uri("pooler").c_str()), &PQfinish);  // another planner's host
  std::vector<DatabaseRef> planners = {openDatabase(uri("pooler")), openDatabase(uri("pooler"))};
  for (int turn = 0; turn < 3; ++turn) {
    for (auto& planner : planners) {
      {
        const auto snapshot = planner->holdSnapshot();
        EXPECT_NE(label(planner, u"Aspirateur").find("Ménage courant"), std::string::npos);
      }
      EXPECT_NE(label(planner, u"Aspirateur").find("Ménage courant"), std::string::npos);
      // What the planner's transactions set or prepared ended with them.
      EXPECT_EQ(value(other.get(),
                      "SELECT current_setting('enable_sort') || ' ' || "
                      "(SELECT count(*) FROM pg_prepared_statements)"),
                "on 0");
    }
  }
  EXPECT_EQ(value(other.get(), "INSERT INTO files VALUES ('X') RETURNING name"), "!25006");
  EXPECT_EQ(administrator("primary",
                          "SELECT count(*) FROM pg_stat_activity WHERE usename = "
                          "'velmora_planner'"),
            "1");
}

TEST_F(OfficeCluster, OnTheStandbyAPlannerSeesWhatThePrimaryShowsAfterTheReplicationLag) {
  TempAccount work;  // a folder for the tool's output
  const auto propose = [&](const std::string& at) {
    const auto outcome = cli_test::runVelmora(
        {"propose", "--db", at, "--client", "00001", "--json"}, work.directory());
    EXPECT_EQ(outcome.status, 0) << at << outcome.err;
    return outcome.out;
  };
  const std::string onPrimary = propose(uri("primary"));
  EXPECT_NE(onPrimary.find("Ménage courant"), std::string::npos) << onPrimary;
  const std::string both = "postgresql://velmora_planner@localhost:" + port("primary") +
                           ",localhost:" + port("standby") +
                           "/velmora_office?target_session_attrs=read-only";
  for (const auto& at : {uri("standby"), uri("pooler"), both}) EXPECT_EQ(propose(at), onPrimary);

  DatabaseRef standby = openDatabase(uri("standby"));
  Batch batch;
  batch.putRecord(u"TACHE", u"Retard", makeRecord({{"1"}, {"G-RETARD"}}));
  StoreWriter(uri("writer")).apply(batch);
  const auto written = std::chrono::steady_clock::now();  // committed on the primary
  while (label(standby, u"Retard").empty() &&
         std::chrono::steady_clock::now() - written < std::chrono::seconds(10)) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  const auto lag = std::chrono::steady_clock::now() - written;
  EXPECT_NE(label(standby, u"Retard"), "");
  std::printf(
      "replication lag: %lld ms\n",
      static_cast<long long>(std::chrono::duration_cast<std::chrono::milliseconds>(lag).count()));
}

TEST_F(OfficeCluster, AStandbyLostUnderAProcedureFailsItOnceAndTheNextRunsOnThePrimary) {
  const std::string both = "postgresql://velmora_planner@localhost:" + port("standby") +
                           ",localhost:" + port("primary") +
                           "/velmora_office?target_session_attrs=prefer-standby&"
                           "application_name=velmora_secours";
  DatabaseRef db = openDatabase(both);
  const std::string planners =
      "SELECT count(*) FROM pg_stat_activity WHERE application_name = 'velmora_secours'";
  ASSERT_EQ(administrator("standby", planners), "1");
  std::string message;
  {
    const auto snapshot = db->holdSnapshot();
    const auto file = db->OpenFile(u"TACHE");
    EXPECT_NE(label(db, u"Aspirateur"), "");
    standby("stop");
    EXPECT_EQ(failureNumber([&] { file->ReadRecord(u"Poussière"); }, &message), errors::kDatabase);
  }
  EXPECT_NE(message.find("La connexion au serveur de la base " + both + " a été perdue"),
            std::string::npos)
      << message;
  EXPECT_NE(label(db, u"Aspirateur").find("Ménage courant"), std::string::npos);
  EXPECT_EQ(administrator("primary", planners), "1");
  standby("start");
}

}  // namespace
}  // namespace velmora::testing
