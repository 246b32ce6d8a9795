#include "store/replacement_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <system_error>
#include <vector>

#include <velmora/base/failure.h>

namespace velmora::store {

namespace fs = std::filesystem;

ReplacementFile::ReplacementFile(const fs::path& target) : target_(target) {
  const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
  // mkstemp makes the name unique and the file ours: no other run can share it.
  std::string leaf = ".";  // appended, not concatenated: GCC 12 warns falsely on "." + s
  leaf += target.filename().string();
  leaf += ".XXXXXX";
  const std::string pattern = (folder / leaf).string();
  std::vector<char> name(pattern.begin(), pattern.end());
  name.push_back('\0');
  const int fd = mkstemp(name.data());
  if (fd < 0) {
    throw Failure(errors::kDatabase, "cannot create a temporary file in " + folder.string() + ": " +
                                         std::strerror(errno) +
                                         "; check that the folder exists and may be written");
  }
  // The file gets the usual rights of a new file, not mkstemp's owner-only ones.
  const mode_t mask = umask(0);
  umask(mask);
  fchmod(fd, 0666 & ~mask);
  close(fd);
  temporary_ = name.data();
}

ReplacementFile::~ReplacementFile() {
  if (committed_) return;
  std::error_code ec;
  fs::remove(temporary_, ec);
}

void ReplacementFile::commit() {
  std::error_code ec;
  fs::rename(temporary_, target_, ec);
  if (ec) {
    throw Failure(errors::kDatabase, "cannot put " + temporary_.string() + " in place of " +
                                         target_.string() + ": " + ec.message());
  }
  committed_ = true;
}

}  // namespace velmora::store
