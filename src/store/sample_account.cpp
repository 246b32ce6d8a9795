#include <velmora/store/sample_account.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <vector>

#include <velmora/base/failure.h>
#include <velmora/store/exchange.h>
#include <velmora/store/writer.h>

namespace velmora {

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

}  // namespace

SampleBuild buildSampleDatabase(const std::string& target, const std::string& directory) {
  const auto files = exchangeFiles(directory);
  const Batch batch = readAll(files);
  const std::string building = target + ".building";
  std::error_code ec;
  fs::remove(building, ec);
  try {
    StoreWriter(building).apply(batch);
    fs::rename(building, target);
  } catch (const Failure&) {
    fs::remove(building, ec);
    throw;
  } catch (const fs::filesystem_error& e) {
    fs::remove(building, ec);
    throw Failure(errors::kDatabase, e.what());
  }
  return {batch.size(), files.size()};
}

}  // namespace velmora
