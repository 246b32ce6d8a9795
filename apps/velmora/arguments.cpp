#include "command.h"

#include <algorithm>

namespace velmora::cli {

bool Arguments::wantsHelp() {
  const auto it = std::find_if(words_.begin(), words_.end(),
                               [](const std::string& w) { return w == "--help" || w == "-h"; });
  if (it == words_.end()) return false;
  words_.erase(it);
  return true;
}

std::optional<std::string> Arguments::option(std::string_view name) {
  const std::string flag = "--" + std::string(name);
  std::optional<std::string> value;
  for (std::size_t i = 0; i < words_.size();) {
    const std::string& word = words_[i];
    std::optional<std::string> found;
    std::size_t taken = 0;
    if (word == flag) {
      if (i + 1 >= words_.size()) throw UsageError(flag + " needs a value");
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
    if (value) throw UsageError(flag + " is given twice");
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
    if (word.rfind("--", 0) == 0) throw UsageError("unknown option " + word);
  }
  return words_;
}

std::vector<std::string> Arguments::positionals(std::size_t min, std::size_t max) const {
  auto words = positionals();
  if (words.size() < min) throw UsageError("missing argument");
  if (words.size() > max) throw UsageError("unexpected argument \"" + words[max] + "\"");
  return words;
}

std::string requiredDatabase(Arguments& args) {
  auto db = args.option("db");
  if (!db || db->empty()) throw UsageError("--db PATH is required");
  return *db;
}

}  // namespace velmora::cli
