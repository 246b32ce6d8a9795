// Builds the sample account that the demo shows when a host names no account of its
// own. It is built once, beside its place and renamed into it, and reused afterwards.
#include <velmora/qt/sample_database.h>

#include <filesystem>
#include <system_error>

#include <velmora/store/sample_account.h>

namespace velmora::qt {

void ensureSampleDatabase(const std::string& path, const std::string& sampleDir) {
  std::error_code ec;
  if (std::filesystem::exists(path, ec)) return;
  buildSampleDatabase(path, sampleDir);
}

}  // namespace velmora::qt
