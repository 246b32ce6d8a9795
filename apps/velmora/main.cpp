// velmora: the store's command line. Each subcommand lives in its own file and is listed
// once in command_list.h.
#include <csignal>
#include <iostream>
#include <string_view>
#include <vector>

#include <velmora/base/failure.h>
#include <velmora/version.h>
#include "command.h"

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

void printHelp(std::ostream& out) {
  out << "usage: velmora COMMAND [OPTIONS]\n       velmora --version\n\n"
         "Builds, fills, reads and queries a Velmora store: an SQLite file, or a PostgreSQL\n"
         "database given as a URI (postgresql://user@host/database).\n\n"
         "commands:\n";
  for (const Command* command : commands()) {
    out << "  " << command->name << std::string(10 - std::string_view(command->name).size(), ' ')
        << command->summary << "\n";
  }
  out << "\n'velmora COMMAND --help' tells more about a command.\n"
         "Exit status: 0 done, 1 the work failed, 2 the command line is wrong.\n";
}

const Command* find(std::string_view name) {
  for (const Command* command : commands()) {
    if (command->name == name) return command;
  }
  return nullptr;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  if (words.empty()) {
    printHelp(std::cerr);
    return 2;
  }
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
    std::cerr << "velmora: unknown command \"" << words.front() << "\" (see velmora --help)\n";
    return 2;
  }
  Arguments args(std::vector<std::string>(words.begin() + 1, words.end()));
  try {
    if (args.wantsHelp()) {
      std::cout << command->usage;
      return 0;
    }
    return command->run(args);
  } catch (const UsageError& e) {
    std::cerr << "velmora: " << command->name << ": " << e.what() << "\n" << command->usage;
    return 2;
  } catch (const Failure& e) {
    std::cerr << "velmora: " << e.what() << "\n";
    return 1;
  } catch (const std::exception& e) {
    std::cerr << "velmora: " << e.what() << "\n";
    return 1;
  }
}

}  // namespace velmora::cli

int main(int argc, char** argv) {
  // Past a file-size limit (ulimit -f) a write then fails, and the store rolls the
  // transaction back, instead of the tool being killed half way through it.
  std::signal(SIGXFSZ, SIG_IGN);
  return velmora::cli::main(argc, argv);
}
