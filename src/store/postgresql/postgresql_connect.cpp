// Opening a session on a PostgreSQL server: libpq's connection with our wait, a host list
// walked past a server that goes away while it opens, and a refusal told in our words.
#include "store/postgresql/postgresql_support.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmora::store {

namespace {

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

// The text with the URI's password masked, as libpq read it and as it is written (a URI
// libpq cannot read may be quoted in its message).
std::string withoutPassword(std::string text, const std::string& uri) {
  std::vector<std::string> passwords;
  if (PQconninfoOption* options = PQconninfoParse(uri.c_str(), nullptr)) {
    for (const PQconninfoOption* option = options; option->keyword != nullptr; ++option) {
      if (std::string_view(option->keyword) == "password" && option->val != nullptr) {
        passwords.emplace_back(option->val);
      }
    }
    PQconninfoFree(options);
  }
  const auto scheme = uri.find("://");
  const auto at = uri.find('@');
  if (scheme != std::string::npos && at != std::string::npos) {
    const auto colon = uri.find(':', scheme + 3);
    if (colon < at) passwords.push_back(uri.substr(colon + 1, at - colon - 1));
  }
  for (const auto& password : passwords) {
    if (password.empty()) continue;
    for (auto found = text.find(password); found != std::string::npos;
         found = text.find(password, found + 3)) {
      text.replace(found, password.size(), "***");
    }
  }
  return text;
}

// What a refused connection means, told by the words of libpq or of the server (a failed
// connection has no SQLSTATE), in English and in French, whichever language the server
// or the client speaks. The first reason whose words the message holds is the one; what
// none names is a server that does not answer.
struct Reason {
  std::array<std::string_view, 4> words;
  const char* says;
};
constexpr const char* kRefusedLogin =
    " refuse la connexion : l'utilisateur ou le mot de passe n'est pas accepté. Vérifiez "
    "l'utilisateur de l'adresse et son mot de passe dans ~/.pgpass (ou le fichier que "
    "PGPASSFILE nomme), ou demandez-les à l'administrateur de la base.";
constexpr const char* kStarting =
    " est sur un serveur qui démarre et n'accepte pas encore de connexions. Réessayez dans "
    "un instant.";
constexpr std::array<Reason, 13> kReasons = {{
    {{"shutting down", "s'arrête", "", ""},
     " est sur un serveur qui s'arrête. Réessayez quand il aura redémarré ; s'il reste "
     "arrêté, prévenez l'administrateur de la base."},
    {{"is not accepting connections", "n'accepte pas de connexions", "", ""},
     " est sur un serveur de secours qui n'accepte aucune connexion. Utilisez l'adresse du "
     "serveur principal, ou demandez à l'administrateur de la base laquelle prendre."},
    {{"starting up", "se lance", "not yet accepting connections", "recovery mode"}, kStarting},
    {{"n'accepte pas encore de connexions", "en cours de restauration", "", ""}, kStarting},
    {{"slots are reserved", "sont réservés", "", ""},
     " refuse la connexion : les dernières connexions libres du serveur sont réservées à ses "
     "administrateurs. Réessayez quand d'autres postes auront fermé la leur ; si cela dure, "
     "demandez à l'administrateur d'augmenter max_connections."},
    {{"too many connections for role", "trop de connexions pour le rôle", "", ""},
     " refuse la connexion : cet utilisateur a déjà toutes les connexions que la base lui "
     "permet. Fermez celles d'autres postes ou demandez à l'administrateur d'en permettre "
     "plus (CONNECTION LIMIT)."},
    {{"too many", "trop de", "", ""},
     " refuse la connexion : le serveur a déjà toutes les connexions qu'il accepte. Réessayez "
     "quand d'autres postes auront fermé la leur ; si cela dure, demandez à l'administrateur "
     "d'augmenter max_connections."},
    {{"permission denied for database", "droit refusé pour la base", "", ""},
     " refuse la connexion à cet utilisateur : il n'a pas le droit de s'y connecter. "
     "Vérifiez le nom de la base et l'utilisateur dans l'adresse, ou demandez ce droit à "
     "l'administrateur de la base."},
    {{"password authentication", "authentification par mot de passe", "no password",
      "aucun mot de passe"},
     kRefusedLogin},
    {{"authentication failed", "échouée pour l'utilisateur", "pg_hba.conf", ""}, kRefusedLogin},
    {{"role \"", "rôle «", "", ""}, kRefusedLogin},
    {{"database \"", "base de données «", "", ""},
     " n'existe pas sur le serveur. Vérifiez le nom de la base dans l'adresse."},
    {{"closed the connection", "coupée de façon inattendue", "terminating connection",
      "arrêt des connexions"},
     " : le serveur a coupé la connexion pendant son ouverture. Vérifiez que le serveur est "
     "démarré, puis réessayez."},
}};

// The text with what stands between quotes ("…" or « … ») left out, the quotes kept.
std::string unquoted(std::string_view text) {
  std::string kept;
  std::string_view closing;
  for (std::size_t at = 0; at < text.size();) {
    const std::string_view rest = text.substr(at);
    if (closing.empty() && (rest.starts_with('"') || rest.starts_with("«"))) {
      closing = rest.starts_with('"') ? "\"" : "»";
      kept += rest.substr(0, rest.starts_with('"') ? 1 : 2);
      at += rest.starts_with('"') ? 1 : 2;
    } else if (!closing.empty() && rest.starts_with(closing)) {
      kept += closing;
      at += closing.size();
      closing = {};
    } else {
      if (closing.empty()) kept += text[at];
      ++at;
    }
  }
  return kept;
}

bool holdsAny(std::string_view text, const std::array<std::string_view, 4>& words) {
  for (const auto word : words) {
    if (!word.empty() && contains(text, word)) return true;
  }
  return false;
}

// Whether a server that accepted the connection went away while it opened (stopping,
// starting, or ending its sessions): libpq then tries no other host of the address.
bool wentAway(const char* message) {
  const std::string words = unquoted(causeOf(message));
  return holdsAny(words, kReasons[0].words) || holdsAny(words, kReasons[2].words) ||
         holdsAny(words, kReasons[3].words) || holdsAny(words, kReasons.back().words);
}

std::vector<std::string> splitList(const std::string& list) {
  std::vector<std::string> items;
  std::size_t from = 0;
  for (std::size_t comma = list.find(','); comma != std::string::npos;
       from = comma + 1, comma = list.find(',', from)) {
    items.push_back(list.substr(from, comma - from));
  }
  items.push_back(list.substr(from));
  return items;
}

// The hosts and ports of the address listed after the one the failed connection reached
// (libpq's lists, comma-separated); nothing when it was the last or the address names
// servers by hostaddr.
std::optional<std::pair<std::string, std::string>> hostsAfter(PGconn* failed) {
  std::string hosts;
  std::string ports;
  const std::unique_ptr<PQconninfoOption, decltype(&PQconninfoFree)> options(PQconninfo(failed),
                                                                             &PQconninfoFree);
  if (options == nullptr) return std::nullopt;
  for (const PQconninfoOption* option = options.get(); option->keyword != nullptr; ++option) {
    const std::string_view keyword = option->keyword;
    const std::string value = option->val == nullptr ? "" : option->val;
    if (keyword == "hostaddr" && !value.empty()) return std::nullopt;
    if (keyword == "host") hosts = value;
    if (keyword == "port") ports = value;
  }
  const std::vector<std::string> hostList = splitList(hosts);
  std::vector<std::string> portList = splitList(ports);
  if (hostList.size() < 2) return std::nullopt;
  if (portList.size() == 1) portList.resize(hostList.size(), portList.front());
  if (portList.size() != hostList.size()) return std::nullopt;
  const char* host = PQhost(failed);
  const char* port = PQport(failed);
  if (host == nullptr || port == nullptr) return std::nullopt;
  for (std::size_t at = 0; at + 1 < hostList.size(); ++at) {
    if (hostList[at] != host || (!portList[at].empty() && portList[at] != port)) continue;
    std::pair<std::string, std::string> rest;
    for (std::size_t next = at + 1; next < hostList.size(); ++next) {
      rest.first += (next > at + 1 ? "," : "") + hostList[next];
      rest.second += (next > at + 1 ? "," : "") + portList[next];
    }
    return rest;
  }
  return std::nullopt;
}

}  // namespace

void quietNotices(PGconn* connection) {
  PQsetNoticeReceiver(
      connection, [](void*, const PGresult*) {}, nullptr);
}

bool prefersStandby(PGconn* connection, const std::string& uri) {
  // The list from the URI: a session opened again past a host that went away was given
  // only the hosts after it.
  bool several = false;
  if (PQconninfoOption* options = PQconninfoParse(uri.c_str(), nullptr)) {
    for (const PQconninfoOption* option = options; option->keyword != nullptr; ++option) {
      const std::string_view keyword = option->keyword;
      if ((keyword == "host" || keyword == "hostaddr") && option->val != nullptr) {
        several = several || contains(option->val, ",");
      }
    }
    PQconninfoFree(options);
  }
  const std::unique_ptr<PQconninfoOption, decltype(&PQconninfoFree)> options(PQconninfo(connection),
                                                                             &PQconninfoFree);
  if (!several || options == nullptr) return false;
  for (const PQconninfoOption* option = options.get(); option->keyword != nullptr; ++option) {
    if (std::string_view(option->keyword) == "target_session_attrs" && option->val != nullptr) {
      const std::string_view value = option->val;
      return value == "prefer-standby" || value == "read-only";
    }
  }
  return false;
}

bool onStandby(PGconn* connection) {
  const char* standby = PQparameterStatus(connection, "in_hot_standby");
  return standby != nullptr && std::string_view(standby) == "on";
}

ServerConnection startOnStandby(const std::string& uri) {
  // As connectToServer, but what follows the URI overrides it: a standby, or nothing.
  const std::array<const char*, 5> keywords = {"fallback_application_name", "client_encoding",
                                               "dbname", "target_session_attrs", nullptr};
  const std::array<const char*, 5> values = {"velmora", "UTF8", uri.c_str(), "standby", nullptr};
  ServerConnection connection(PQconnectStartParams(keywords.data(), values.data(), 1));
  if (connection == nullptr || PQstatus(connection.get()) == CONNECTION_BAD) return {};
  return connection;
}

ServerConnection connectToServer(const std::string& uri, const std::string& name) {
  // Values given first; the URI, expanded last, overrides them, and the hosts still to try
  // after one that went away (when there are) override its list.
  std::array<const char*, 7> keywords = {"connect_timeout",
                                         "fallback_application_name",
                                         "client_encoding",
                                         "dbname",
                                         nullptr,
                                         nullptr,
                                         nullptr};
  std::array<const char*, 7> values = {kConnectWait, "velmora", "UTF8", uri.c_str(),
                                       nullptr,      nullptr,   nullptr};
  ServerConnection connection;
  std::optional<std::pair<std::string, std::string>> rest;
  for (;;) {
    if (rest) {
      keywords[4] = "host";
      keywords[5] = "port";
      values[4] = rest->first.c_str();
      values[5] = rest->second.c_str();
    }
    connection.reset(PQconnectdbParams(keywords.data(), values.data(), 1));
    if (connection == nullptr)
      throw Failure(errors::kDatabase, "La base " + name + " : mémoire épuisée.");
    if (PQstatus(connection.get()) == CONNECTION_OK) {
      quietNotices(connection.get());  // a lost session shows at its next statement
      return connection;
    }
    if (!wentAway(PQerrorMessage(connection.get()))) break;
    rest = hostsAfter(connection.get());
    if (!rest) break;
  }
  const std::string cause = causeOf(PQerrorMessage(connection.get()));
  // The words are looked for outside quotes: a name of a host, a role or a database may
  // hold any of them.
  const std::string words = unquoted(cause);
  const std::string base = "La base " + name;
  if (contains(words, "could not translate host name") || contains(words, "traduire le nom")) {
    throw Failure(errors::kDatabase, base +
                                         " est sur un serveur dont le nom est inconnu. "
                                         "Vérifiez le nom du serveur dans l'adresse.");
  }
  if (contains(words, "invalid") || contains(words, "URI") || contains(words, "option")) {
    throw Failure(errors::kDatabase, "L'adresse de la base " + name + " n'est pas valable (" +
                                         withoutPassword(cause, uri) + "). Corrigez-la.");
  }
  // A server that asked for a password none gave says so in libpq's words only.
  if (PQconnectionNeedsPassword(connection.get()) != 0) {
    throw Failure(errors::kDatabase, base + kRefusedLogin);
  }
  for (const Reason& reason : kReasons) {
    if (holdsAny(words, reason.words)) throw Failure(errors::kDatabase, base + reason.says);
  }
  throw Failure(errors::kDatabase,
                base +
                    " est sur un serveur qui ne répond pas. Vérifiez que le serveur est "
                    "démarré et que son nom et son port dans l'adresse sont justes, puis "
                    "réessayez.");
}

}  // namespace velmora::store
