// velmora: the store's command line. Each subcommand lives in its own file and is listed
// once in command_list.h.
#include <algorithm>
#include <csignal>
#include <iostream>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include <velmora/base/failure.h>
#include <velmora/version.h>
#include "base/message.h"
#include "command.h"
#include "language.h"
#include "progress.h"

namespace velmora::cli {

#define VELMORA_COMMAND(function) const Command& function();
#include "command_list.h"
#undef VELMORA_COMMAND

namespace {

const std::vector<const Command*>& commands() {
  static const std::vector<const Command*> table = {
#define VELMORA_COMMAND(function) &function(),
#include "command_list.h"
#undef VELMORA_COMMAND
  };
  return table;
}

// The first line starts with "Usage:" (or its translation) as help2man expects.
void printHelp(std::ostream& out) {
  out << say(
      "Usage: velmora COMMAND [OPTIONS] [--quiet]\n"
      "   or: velmora --version\n\n"
      "Builds, fills, reads and queries a Velmora store: a file (SQLite), or a database\n"
      "on a PostgreSQL server given as postgresql://user@host/database.\n\n"
      "Commands:\n");
  for (const Command* command : commands()) {
    out << "  " << command->name << std::string(10 - std::string_view(command->name).size(), ' ')
        << say(command->summary) << "\n";
  }
  out << say(
      "\n'velmora COMMAND --help' tells more about a command.\n"
      "--quiet: no progress line on the standard error, even on a terminal.\n"
      "Messages are in French when the messages locale is French (LANG, LC_MESSAGES,\n"
      "LC_ALL), in English otherwise.\n"
      "Exit status: 0 done, 1 the work failed, 2 the command line is wrong.\n");
}

const Command* find(std::string_view name) {
  for (const Command* command : commands()) {
    if (command->name == name) return command;
  }
  return nullptr;
}

// An error ends with one line that points at the help, never with the help itself.
int usageError(const std::string& message, const std::string& helpCommand) {
  std::cerr << "velmora: " << message << "\n" << say("See '{} --help'.", {helpCommand}) << "\n";
  return 2;
}

// The failure's number beside its message; with --json, also as an object on the
// standard output, where a program reading the answer looks.
int failed(long number, const std::string& message, bool json) {
  std::cerr << "velmora: " << say("error {}: {}", {std::to_string(number), inOurWords(message)})
            << "\n";
  if (json) {
    std::cout << nlohmann::ordered_json{{"error", {{"number", number}, {"message", message}}}}.dump(
                     2, ' ', false, nlohmann::ordered_json::error_handler_t::replace)
              << "\n";
  }
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  speakTheUsersLanguage();
  std::vector<std::string> words(argv + 1, argv + argc);
  Progress::setQuiet(std::erase(words, "--quiet") > 0);
  if (words.empty()) return usageError(say("a command is missing"), "velmora");
  if (words.front() == "--help" || words.front() == "-h" || words.front() == "help") {
    printHelp(std::cout);
    return 0;
  }
  if (words.front() == "--version") {
    std::cout << "velmora " VELMORA_VERSION "\n";
    return 0;
  }
  const Command* command = find(words.front());
  if (command == nullptr) {
    return usageError(say("unknown command \"{}\"", {excerpt(words.front())}), "velmora");
  }
  Arguments args(std::vector<std::string>(words.begin() + 1, words.end()));
  const bool json = std::find(words.begin(), words.end(), "--json") != words.end();
  try {
    if (args.wantsHelp()) {
      std::cout << say(command->usage);
      return 0;
    }
    return command->run(args);
  } catch (const UsageError& e) {
    return usageError(say("{}: {}", {command->name, e.what()}),
                      std::string("velmora ") + command->name);
  } catch (const Failure& e) {
    return failed(e.number(), e.what(), json);
  } catch (const std::exception& e) {
    // Not one of ours (memory, the file system): the number of an unusable store.
    return failed(errors::kDatabase, say("unexpected failure: {}", {e.what()}), json);
  }
}

}  // namespace velmora::cli

int main(int argc, char** argv) {
  // Past a file-size limit (ulimit -f) a write then fails, and the store rolls the
  // transaction back, instead of the tool being killed half way through it.
  std::signal(SIGXFSZ, SIG_IGN);
  return velmora::cli::main(argc, argv);
}
