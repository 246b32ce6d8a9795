// What the PostgreSQL reader and writer share: libpq handles, statements with binary
// parameters, the schema, and the server's failures in our words.
#include "store/postgresql/postgresql_support.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velmora::store {

// The server's own words, on one line, for the end of a message.
std::string causeOf(const char* message) {
  std::string cause = message != nullptr ? message : "";
  for (char& c : cause) {
    if (c == '\n' || c == '\t') c = ' ';
  }
  while (!cause.empty() && cause.back() == ' ') cause.pop_back();
  return cause;
}

std::string displayUri(std::string_view uri) {
  std::string shown(uri);
  // user:password@host, in the part before the path or the query
  const auto scheme = shown.find("://");
  if (scheme != std::string::npos) {
    const auto authority = scheme + 3;
    const auto end = std::min(shown.find_first_of("/?", authority), shown.size());
    const auto at = shown.rfind('@', end);
    const auto colon = shown.find(':', authority);
    if (at != std::string::npos && at >= authority && colon < at) {
      shown.replace(colon + 1, at - colon - 1, "***");
    }
  }
  // ?password=... or &password=...
  for (std::size_t at = shown.find("password="); at != std::string::npos;
       at = shown.find("password=", at + 1)) {
    const auto end = shown.find('&', at);
    shown.replace(at + 9, (end == std::string::npos ? shown.size() : end) - (at + 9), "***");
  }
  return shown;
}

Parameters& Parameters::text(std::string value) {
  lengths_.push_back(static_cast<int>(value.size()));
  formats_.push_back(0);
  values_.push_back(std::move(value));
  return *this;
}

Parameters& Parameters::bytes(std::vector<std::uint8_t> value) {
  lengths_.push_back(static_cast<int>(value.size()));
  formats_.push_back(1);
  values_.emplace_back(value.begin(), value.end());
  return *this;
}

Parameters& Parameters::integer(long long value) {
  return text(std::to_string(value));
}

const char* const* Parameters::values() const {
  pointers_.clear();
  for (const auto& value : values_) pointers_.push_back(value.data());
  return pointers_.data();
}

Failure statementFailure(PGconn* connection, const PGresult* result, const std::string& name) {
  const char* state = result != nullptr ? PQresultErrorField(result, PG_DIAG_SQLSTATE) : nullptr;
  const std::string code = state != nullptr ? state : "";
  const std::string cause =
      causeOf(result != nullptr ? PQresultErrorMessage(result) : nullptr).empty()
          ? causeOf(PQerrorMessage(connection))
          : causeOf(PQresultErrorMessage(result));
  const std::string base = "La base " + name;
  if (PQstatus(connection) == CONNECTION_BAD || code.starts_with("08") || code == "57P01") {
    return {errors::kDatabase,
            "La connexion au serveur de la base " + name + " a été perdue (" + cause +
                "). Vérifiez que le serveur est démarré et joignable ; l'opération suivante "
                "se reconnectera."};
  }
  if (code == "57014" || code == "55P03" || code == "40001" || code == "40P01") {
    return {errors::kBusy, base + " n'a pas répondu à temps : le serveur a abandonné la lecture (" +
                               cause +
                               "). Réessayez dans un instant ; si cela dure, prévenez "
                               "l'administrateur de la base."};
  }
  if (code == "42P01" || code == "42703" || code == "3F000") {
    return {errors::kDatabase, base + " n'est pas une base Velmora : il lui manque ses tables (" +
                                   cause + "). Vérifiez l'adresse."};
  }
  if (code == "42501") {
    return {errors::kDatabase, base + " refuse cette opération à cet utilisateur (" + cause +
                                   "). Demandez à l'administrateur de la base le droit qu'il "
                                   "faut : lire pour un planificateur, écrire pour l'import."};
  }
  if (code == "25006") {
    return {errors::kDatabase, base + " est ouverte en lecture seule (" + cause +
                                   "). Pour y écrire, utilisez le rôle prévu pour l'import."};
  }
  return {errors::kDatabase, base + " ne peut pas être utilisée (" + cause +
                                 "). Vérifiez le serveur et la base, puis réessayez."};
}

namespace {

Result checked(PGconn* connection, PGresult* raw, const std::string& name) {
  Result result(raw);
  const auto status = result != nullptr ? PQresultStatus(result.get()) : PGRES_FATAL_ERROR;
  if (status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK) return result;
  throw statementFailure(connection, result.get(), name);
}

}  // namespace

Result execute(PGconn* connection, const std::string& sql, const std::string& name) {
  return checked(connection, PQexec(connection, sql.c_str()), name);
}

Result execute(PGconn* connection, const std::string& sql, const Parameters& parameters,
               const std::string& name) {
  return checked(connection,
                 PQexecParams(connection, sql.c_str(), parameters.size(), nullptr,
                              parameters.values(), parameters.lengths(), parameters.formats(), 1),
                 name);
}

std::span<const std::uint8_t> bytesAt(const PGresult* result, int row, int column) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(PQgetvalue(result, row, column));
  return {bytes, static_cast<std::size_t>(PQgetlength(result, row, column))};
}

long long integerAt(const PGresult* result, int row, int column) {
  const auto bytes = bytesAt(result, row, column);
  unsigned long long value = 0;
  for (const std::uint8_t byte : bytes) value = (value << 8) | byte;
  // A 4-byte integer is sign-extended from its own width.
  if (bytes.size() == 4 && (value & 0x80000000ULL) != 0) value |= ~0xFFFFFFFFULL;
  return static_cast<long long>(value);
}

const char* const kServerSchema = R"sql(
CREATE TABLE velmora_store (version INTEGER NOT NULL, generation BIGINT NOT NULL);
INSERT INTO velmora_store (version, generation) VALUES (1, 0);
CREATE TABLE files (name TEXT PRIMARY KEY);
CREATE TABLE records (
  file TEXT NOT NULL,
  key BYTEA NOT NULL,
  body BYTEA NOT NULL,
  PRIMARY KEY (file, key)
);
CREATE TABLE dictionary (
  file TEXT NOT NULL,
  name TEXT NOT NULL,
  attribute INTEGER NOT NULL,
  key_start INTEGER NOT NULL,
  key_length INTEGER NOT NULL,
  PRIMARY KEY (file, name)
);
)sql";

void checkServerSchema(PGconn* connection, const std::string& name) {
  const Result result = execute(connection,
                                "SELECT version, EXISTS (SELECT 1 FROM files), EXISTS (SELECT 1 "
                                "FROM records), EXISTS (SELECT 1 FROM dictionary) FROM "
                                "velmora_store",
                                name);
  if (PQntuples(result.get()) != 1) {
    throw Failure(errors::kDatabase, "La base " + name +
                                         " n'est pas une base Velmora : sa version n'est pas "
                                         "inscrite. Vérifiez l'adresse.");
  }
  const std::string version = PQgetvalue(result.get(), 0, 0);
  if (version != "1") {
    throw Failure(errors::kDatabase, "La base " + name + " est d'une version (" + version +
                                         ") que ce programme ne sait pas lire. Installez la "
                                         "version de Velmora qui l'a écrite.");
  }
}

}  // namespace velmora::store
