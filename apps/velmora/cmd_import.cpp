#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>

#include <velmora/base/failure.h>
#include <velmora/store/exchange.h>
#include <velmora/store/sqlite_database.h>
#include <velmora/store/writer.h>
#include "base/message.h"
#include "command.h"
#include "progress.h"
#include "store/exchange/replacement_file.h"

namespace velmora::cli {

namespace {

namespace fs = std::filesystem;

void checkExchangeFile(const std::string& file, const std::string& database) {
  std::error_code ec;
  if (fs::is_directory(file, ec)) {
    throw UsageError(say("{} is a folder: give the exchange file to import", {file}));
  }
  if (fs::exists(file, ec) && fs::exists(database, ec) && fs::equivalent(file, database, ec)) {
    throw UsageError(say("{} is the database itself: give the exchange file to import", {file}));
  }
}

int run(Arguments& args) {
  const std::string database = requiredDatabase(args);
  const std::string file = args.positionals(1, 1).front();
  checkExchangeFile(file, database);
  checkStoreTarget(database);
  std::ifstream in(file, std::ios::binary);
  if (!in) {
    throw Failure(errors::kBadImport, say("{} cannot be read: {}; check the path and its rights",
                                          {file, std::strerror(errno)}));
  }
  // The whole file is read before the database is touched.
  const Batch batch = [&] {
    std::error_code ec;
    const auto size = fs::is_regular_file(file, ec) ? fs::file_size(file, ec) : 0;
    Progress progress(say("reading {}", {file}), ec ? 0 : size, true);
    CountingBuffer counted(*in.rdbuf(), progress);
    std::istream through(&counted);
    return readExchange(through, file);
  }();
  // Created when absent and filled in one transaction; a failure leaves the file as it
  // was (a new path at worst an empty file), never removed: another writer may be using it.
  {
    const Progress progress(
        say("importing {} lines into {}",
            {std::to_string(batch.size()), shownLocation(database)}),
        0, false);
    StoreWriter(database).apply(batch);
  }
  std::cout << "velmora: "
            << say("{}: {} lines imported",
                   {shownLocation(database), std::to_string(batch.size())})
            << "\n";
  return 0;
}

}  // namespace

const Command& importCommand() {
  static const Command command{
      "import", toSay("apply an exchange file to a database, all or nothing"),
      toSay("Usage: velmora import FILE --db PATH\n"
            "  Reads FILE (JSON Lines: declarations, dictionary items, records) whole, then\n"
            "  applies it in one transaction; PATH is created when absent. A bad line stops\n"
            "  everything with its line number, and the database is left as it was.\n"),
      &run};
  return command;
}

}  // namespace velmora::cli
