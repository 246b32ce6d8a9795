#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <system_error>

#include <velmora/base/failure.h>
#include <velmora/store/exchange.h>
#include <velmora/store/sqlite_database.h>
#include "base/message.h"
#include "command.h"
#include "progress.h"
#include "store/exchange/replacement_file.h"

namespace velmora::cli {

namespace {

namespace fs = std::filesystem;

void writeAndCheck(const std::string& database, std::ostream& out, const std::string& shown) {
  {
    Progress progress(say("exporting {}", {shownLocation(database)}), 0, true);
    CountingBuffer counted(*out.rdbuf(), progress);
    std::ostream through(&counted);
    writeExchange(database, through);
    through.flush();
    if (!through) out.setstate(std::ios::badbit);
  }
  out.flush();
  if (!out) {
    throw Failure(errors::kDatabase, say("cannot write to {}: {}", {shown, std::strerror(errno)}));
  }
}

// A regular file, or a new path, is written aside and renamed into place: a failing export
// leaves it as it was. Through a link, the file the link names is replaced, and the link
// kept.
void replaceFile(const std::string& database, const std::string& file, const fs::path& target) {
  std::error_code ec;
  if (fs::exists(target, ec) && fs::equivalent(target, database, ec)) {
    throw UsageError(say("{} is the database itself: give another path for the export", {file}));
  }
  store::ReplacementFile output(target);
  std::ofstream out(output.path(), std::ios::binary | std::ios::trunc);
  if (!out)
    throw Failure(errors::kDatabase, say("{}: cannot be written", {output.path().string()}));
  try {
    writeAndCheck(database, out, output.path().string());
    out.close();
    if (!out) throw Failure(errors::kDatabase, say("cannot close {}", {output.path().string()}));
  } catch (const Failure& failure) {
    throw Failure(failure.number(),
                  say("the export failed and {} is left as it was: {}", {file, inOurWords(failure.what())}));
  }
  output.commit();
}

// A pipe or a device (a terminal, /dev/null...) is written in place, as a stream: renaming
// a file over it would destroy it.
void writeStream(const std::string& database, const std::string& file, const fs::path& target) {
  std::ofstream out(target, std::ios::binary);
  if (!out) {
    throw Failure(errors::kDatabase,
                  say("{} cannot be opened for writing: {}", {file, std::strerror(errno)}));
  }
  writeAndCheck(database, out, file);
}

int run(Arguments& args) {
  const std::string database = requiredDatabase(args);
  const auto rest = args.positionals(0, 1);
  const std::string file = rest.empty() ? "-" : rest.front();
  if (file == "-" || file == "/dev/stdout") {
    writeAndCheck(database, std::cout, say("the standard output"));
    return 0;
  }
  const fs::path target = store::followLinks(file);
  std::error_code ec;
  const fs::file_status status = fs::status(target, ec);
  switch (status.type()) {
    case fs::file_type::not_found:
    case fs::file_type::regular:
      replaceFile(database, file, target);
      return 0;
    case fs::file_type::fifo:
    case fs::file_type::character:
      writeStream(database, file, target);
      return 0;
    case fs::file_type::none:
      throw Failure(errors::kDatabase, say("{} cannot be examined: {}", {file, ec.message()}));
    default:
      throw UsageError(
          say("{} is {}: give the path of a file, a named pipe or - for the "
              "standard output",
              {file, store::kindOfNode(status.type())}));
  }
}

}  // namespace

const Command& exportCommand() {
  static const Command command{
      "export", toSay("write a database as an exchange file"),
      toSay("Usage: velmora export --db PATH [FILE]\n"
            "  Writes the files, the dictionary, then the records by file and key, one JSON\n"
            "  object per line, to FILE or to the standard output (FILE - or absent).\n"
            "  Importing the result into an empty database and exporting again gives the same\n"
            "  bytes. A regular FILE (or the file a link names) is written aside and replaced\n"
            "  only once the export is whole; it cannot be the database. A named pipe or a\n"
            "  character device is written in place; a folder, a socket or a block device is\n"
            "  refused.\n"),
      &run};
  return command;
}

}  // namespace velmora::cli
