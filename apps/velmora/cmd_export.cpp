#include <filesystem>
#include <fstream>
#include <iostream>
#include <system_error>

#include <velmora/base/failure.h>
#include <velmora/store/exchange.h>
#include "command.h"

namespace velmora::cli {

namespace {

int run(Arguments& args) {
  const std::string database = requiredDatabase(args);
  const auto rest = args.positionals(0, 1);
  if (rest.empty()) {
    writeExchange(database, std::cout);
    std::cout.flush();
    return 0;
  }
  const std::string& file = rest.front();
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  if (!out) throw Failure(errors::kDatabase, file + ": cannot be written");
  try {
    writeExchange(database, out);
    out.close();
    if (!out) throw Failure(errors::kDatabase, file + ": cannot be written");
  } catch (...) {
    std::error_code ec;
    std::filesystem::remove(file, ec);
    throw;
  }
  return 0;
}

}  // namespace

const Command& exportCommand() {
  static const Command command{
      "export", "write a database as an exchange file",
      "usage: velmora export --db PATH [FILE]\n"
      "  Writes the files, the dictionary, then the records by file and key, one JSON\n"
      "  object per line, to FILE or to the standard output. Importing the result into\n"
      "  an empty database and exporting again gives the same bytes.\n",
      &run};
  return command;
}

}  // namespace velmora::cli
