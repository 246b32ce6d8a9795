#include <filesystem>
#include <fstream>
#include <iostream>
#include <system_error>

#include <velmora/base/failure.h>
#include <velmora/store/exchange.h>
#include <velmora/store/writer.h>
#include "command.h"

namespace velmora::cli {

namespace {

int run(Arguments& args) {
  const std::string database = requiredDatabase(args);
  const std::string file = args.positionals(1, 1).front();
  std::ifstream in(file, std::ios::binary);
  if (!in) throw Failure(errors::kBadImport, file + ": cannot be read");
  // The whole file is read before the database is touched.
  const Batch batch = readExchange(in, file);
  std::error_code ec;
  const bool existed = std::filesystem::exists(database, ec);
  try {
    StoreWriter(database).apply(batch);
  } catch (...) {
    if (!existed) std::filesystem::remove(database, ec);
    throw;
  }
  std::cout << "velmora: " << database << ": " << batch.size() << " lines imported\n";
  return 0;
}

}  // namespace

const Command& importCommand() {
  static const Command command{
      "import", "apply an exchange file to a database, all or nothing",
      "usage: velmora import FILE --db PATH\n"
      "  Reads FILE (JSON Lines: declarations, dictionary items, records) whole, then\n"
      "  applies it in one transaction; PATH is created when absent. A bad line stops\n"
      "  everything with its line number, and the database is left as it was.\n",
      &run};
  return command;
}

}  // namespace velmora::cli
