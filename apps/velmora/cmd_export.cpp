#include <filesystem>
#include <fstream>
#include <iostream>
#include <system_error>

#include "base/failure.h"
#include "command.h"
#include "store/exchange.h"
#include "store/replacement_file.h"

namespace velmora::cli {

namespace {

namespace fs = std::filesystem;

// Where the export goes: through a symbolic link to the file it names.
fs::path outputTarget(const std::string& file, const std::string& database) {
  std::error_code ec;
  const fs::path target = fs::weakly_canonical(file, ec);
  if (ec) throw Failure(errors::kDatabase, file + ": " + ec.message());
  if (fs::is_directory(target, ec)) {
    throw UsageError(file + " is a folder: give the path of the file to write");
  }
  if (fs::exists(target, ec) && fs::equivalent(target, database, ec)) {
    throw UsageError(file + " is the database itself: give another path for the export");
  }
  return target;
}

int run(Arguments& args) {
  const std::string database = requiredDatabase(args);
  const auto rest = args.positionals(0, 1);
  if (rest.empty()) {
    writeExchange(database, std::cout);
    std::cout.flush();
    return 0;
  }
  const std::string& file = rest.front();
  // Written aside and renamed into place: a failing export leaves FILE as it was.
  store::ReplacementFile output(outputTarget(file, database));
  std::ofstream out(output.path(), std::ios::binary | std::ios::trunc);
  if (!out) throw Failure(errors::kDatabase, output.path().string() + ": cannot be written");
  writeExchange(database, out);
  out.close();
  if (!out) {
    throw Failure(errors::kDatabase, output.path().string() +
                                         ": cannot be written (is the disk full?); " + file +
                                         " is left as it was");
  }
  output.commit();
  return 0;
}

}  // namespace

const Command& exportCommand() {
  static const Command command{
      "export", "write a database as an exchange file",
      "usage: velmora export --db PATH [FILE]\n"
      "  Writes the files, the dictionary, then the records by file and key, one JSON\n"
      "  object per line, to FILE or to the standard output. Importing the result into\n"
      "  an empty database and exporting again gives the same bytes. FILE is written\n"
      "  aside and replaced only once the export is whole; it cannot be the database.\n",
      &run};
  return command;
}

}  // namespace velmora::cli
