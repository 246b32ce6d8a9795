// Where the tools find the sample account: beside the installed tool
// (<prefix>/share/velmora/sample), else in the source tree they were built from.
#pragma once

#include <filesystem>
#include <string>
#include <system_error>

namespace velmora::apps {

inline std::string sampleDirectory() {
  std::error_code error;
  const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
  if (!error) {
    const auto installed = self.parent_path().parent_path() / "share" / "velmora" / "sample";
    if (std::filesystem::is_directory(installed, error)) return installed.string();
  }
  return VELMORA_SAMPLE_DIR;
}

}  // namespace velmora::apps
