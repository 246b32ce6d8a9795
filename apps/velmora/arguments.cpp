#include "command.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include <velmora/base/failure.h>
#include <velmora/control/client_code.h>
#include "base/message.h"
#include "store/engine/read_connection.h"  // isServerUri
#include "store/exchange/replacement_file.h"

namespace velmora::cli {

bool Arguments::wantsHelp() const {
  return std::ranges::any_of(words_,
                             [](const std::string& w) { return w == "--help" || w == "-h"; });
}

std::optional<std::string> Arguments::option(std::string_view name) {
  const std::string flag = "--" + std::string(name);
  std::optional<std::string> value;
  for (std::size_t i = 0; i < words_.size();) {
    const std::string& word = words_[i];
    std::optional<std::string> found;
    std::size_t taken = 0;
    if (word == flag) {
      if (i + 1 >= words_.size()) throw UsageError(say("{} needs a value", {flag}));
      found = words_[i + 1];
      taken = 2;
    } else if (word.rfind(flag + "=", 0) == 0) {
      found = word.substr(flag.size() + 1);
      taken = 1;
    }
    if (!found) {
      ++i;
      continue;
    }
    if (value) throw UsageError(say("{} is given twice", {flag}));
    value = std::move(found);
    words_.erase(words_.begin() + static_cast<std::ptrdiff_t>(i),
                 words_.begin() + static_cast<std::ptrdiff_t>(i + taken));
  }
  return value;
}

bool Arguments::flag(std::string_view name) {
  const std::string flag = "--" + std::string(name);
  const auto before = words_.size();
  std::erase(words_, flag);
  return words_.size() != before;
}

std::vector<std::string> Arguments::positionals() const {
  for (const auto& word : words_) {
    if (word.rfind("--", 0) == 0) throw UsageError(say("unknown option {}", {excerpt(word)}));
  }
  return words_;
}

std::vector<std::string> Arguments::positionals(std::size_t min, std::size_t max) const {
  auto words = positionals();
  if (words.size() < min) {
    throw UsageError(say("{} argument(s) missing", {std::to_string(min - words.size())}));
  }
  if (words.size() > max) {
    throw UsageError(say("unexpected argument \"{}\"", {excerpt(words[max])}));
  }
  return words;
}

std::string requiredDatabase(Arguments& args) {
  auto db = args.option("db");
  if (!db || db->empty()) throw UsageError(say("--db PATH is required"));
  return *db;
}

void checkStoreTarget(const std::string& database) {
  if (isServerUri(database)) return;
  std::error_code ec;
  const auto type = std::filesystem::status(store::followLinks(database), ec).type();
  if (type == std::filesystem::file_type::not_found ||
      type == std::filesystem::file_type::regular) {
    return;
  }
  throw UsageError(say("--db {} is {}: give the path of a store file, or a new path",
                       {database, store::kindOfNode(type)}));
}

std::optional<std::string> clientCodeRefusal(const std::string& code) {
  try {
    checkClientCode(fromUtf8(code));
    return std::nullopt;
  } catch (const Failure& failure) {
    return say(
        "\"{}\" is not a client code that the control takes (5 characters, no double "
        "quote, no bracket); the control says: {}",
        {excerpt(code), failure.what()});
  }
}

}  // namespace velmora::cli
