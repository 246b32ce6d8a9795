#include <iostream>
#include <string>

#include <velmora/store/sample_account.h>
#include <velmora/store/sqlite_database.h>
#include "base/message.h"
#include "command.h"
#include "progress.h"
#include "sample_directory.h"

namespace velmora::cli {

namespace {

int run(Arguments& args) {
  const std::string target = args.option("db").value_or("velmora-sample.db");
  if (target.empty()) throw UsageError(say("--db needs a path (default velmora-sample.db)"));
  const std::string from = args.option("from").value_or(apps::sampleDirectory());
  args.positionals(0, 0);
  checkStoreTarget(target);
  const SampleBuild built = [&] {
    const Progress progress(say("building the sample store {}", {shownLocation(target)}),
                            0, false);
    return buildSampleDatabase(target, from);
  }();
  std::cout << "velmora: "
            << say("{}: {} lines from {} files",
                   {shownLocation(target), std::to_string(built.lines),
                    std::to_string(built.files)})
            << "\n";
  return 0;
}

}  // namespace

const Command& sampleCommand() {
  static const Command command{
      "sample", toSay("build the sample database from the sample files"),
      toSay("Usage: velmora sample [--db PATH] [--from DIR]\n"
            "  Builds a new store from the *.jsonl files of DIR, read in name order\n"
            "  (default DIR: the sample account installed with velmora, or the source\n"
            "  tree's data/sample).\n"
            "  PATH (default velmora-sample.db) is replaced whole once the new store is built;\n"
            "  a bad file leaves it as it was. PATH may also be a PostgreSQL URI\n"
            "  (postgresql://user@host/database): an empty database or schema is filled\n"
            "  in one transaction; one that holds a store is left as it is.\n"),
      &run};
  return command;
}

}  // namespace velmora::cli
