#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <system_error>

#include "base/failure.h"
#include "command.h"
#include "store/exchange.h"
#include "store/writer.h"

namespace velmora::cli {

namespace fs = std::filesystem;

namespace {

std::vector<fs::path> exchangeFiles(const fs::path& directory) {
  std::error_code ec;
  if (!fs::is_directory(directory, ec)) {
    throw Failure(errors::kBadImport, directory.string() + ": no such directory");
  }
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(directory)) {
    if (entry.is_regular_file() && entry.path().extension() == ".jsonl") {
      files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  if (files.empty()) throw Failure(errors::kBadImport, directory.string() + ": no *.jsonl file");
  return files;
}

Batch readAll(const std::vector<fs::path>& files) {
  Batch all;
  for (const auto& file : files) {
    std::ifstream in(file, std::ios::binary);
    if (!in) throw Failure(errors::kBadImport, file.string() + ": cannot be read");
    all.append(readExchange(in, file.string()));
  }
  return all;
}

// Builds beside the target and renames over it, so that the old database stays whole
// until the new one is complete.
void buildInPlace(const fs::path& target, const Batch& batch) {
  fs::path temporary = target;
  temporary += ".building";
  std::error_code ec;
  fs::remove(temporary, ec);
  try {
    StoreWriter(temporary.string()).apply(batch);
    fs::rename(temporary, target);
  } catch (...) {
    fs::remove(temporary, ec);
    throw;
  }
}

int run(Arguments& args) {
  const fs::path target = args.option("db").value_or("velmora-sample.db");
  const fs::path from = args.option("from").value_or(VELMORA_SAMPLE_DIR);
  args.positionals(0, 0);
  const auto files = exchangeFiles(from);
  const Batch batch = readAll(files);
  buildInPlace(target, batch);
  std::cout << "velmora: " << target.string() << ": " << batch.size() << " lines from "
            << files.size() << " files\n";
  return 0;
}

}  // namespace

const Command& sampleCommand() {
  static const Command command{
      "sample", "build the sample database from the sample files",
      "usage: velmora sample [--db PATH] [--from DIR]\n"
      "  Builds a new store from the *.jsonl files of DIR, read in name order\n"
      "  (default DIR: " VELMORA_SAMPLE_DIR
      ").\n"
      "  PATH (default velmora-sample.db) is replaced whole once the new store is built;\n"
      "  a bad file leaves it as it was.\n",
      &run};
  return command;
}

}  // namespace velmora::cli
