// What every subcommand of the velmora tool shares: its arguments and its errors.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace velmora::cli {

// A mistake in the command line itself: the tool prints it with a pointer to the
// command's --help.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Arguments {
 public:
  explicit Arguments(std::vector<std::string> words) : words_(std::move(words)) {}

  // True when --help or -h was given.
  bool wantsHelp() const;
  // "--name VALUE" or "--name=VALUE", taken out; nothing when absent. A name given
  // without a value, or twice, is a UsageError.
  std::optional<std::string> option(std::string_view name);
  // "--name" given alone, taken out (all of its occurrences).
  bool flag(std::string_view name);
  // What is left once the options are taken: no word may start with "--".
  std::vector<std::string> positionals() const;
  // The positionals, which must be between min and max in number.
  std::vector<std::string> positionals(std::size_t min, std::size_t max) const;

 private:
  std::vector<std::string> words_;
};

struct Command {
  const char* name;
  const char* summary;  // one line for the tool's own help
  const char* usage;    // the command's --help text
  int (*run)(Arguments&);
};

// The database path of --db, which the command requires.
std::string requiredDatabase(Arguments& args);

// A store that a command writes (import, sample) is a server's URI, a store file or a new
// path, through links as SQLite follows them; a pipe or a device would be written into or
// block, so it is refused here, alike for every command.
void checkStoreTarget(const std::string& database);

// Why the control would refuse this client code (not 5 characters, or a double quote or a
// bracket, which would change what its queries select), in the tool's words with the
// control's own text quoted whole; nothing when it takes it. propose and play both ask.
std::optional<std::string> clientCodeRefusal(const std::string& code);

}  // namespace velmora::cli
