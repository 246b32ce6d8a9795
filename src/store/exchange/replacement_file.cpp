// A file written aside and renamed over its target on commit, so that the target stays as it
// was until the new content is whole. A temporary left uncommitted is removed.
#include "store/exchange/replacement_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <system_error>
#include <vector>

#include <velmora/base/failure.h>
#include "base/message.h"

namespace velmora::store {

namespace fs = std::filesystem;

fs::path followLinks(fs::path path) {
  // As the system does, a chain longer than 40 links is a loop; its end is then refused.
  for (int hop = 0; hop < 40; ++hop) {
    std::error_code ec;
    if (!fs::is_symlink(path, ec)) break;
    const fs::path next = fs::read_symlink(path, ec);
    if (ec) break;
    path = next.is_absolute() ? next : path.parent_path() / next;
  }
  return path;
}

std::string kindOfNode(fs::file_type type) {
  switch (type) {
    case fs::file_type::directory:
      return say("a folder");
    case fs::file_type::fifo:
      return say("a named pipe");
    case fs::file_type::socket:
      return say("a socket");
    case fs::file_type::block:
      return say("a block device");
    case fs::file_type::character:
      return say("a character device");
    case fs::file_type::symlink:
      return say("a loop of symbolic links");
    default:
      return say("not a regular file");
  }
}

ReplacementFile::ReplacementFile(const fs::path& target) : target_(followLinks(target)) {
  const fs::path folder = target_.has_parent_path() ? target_.parent_path() : fs::path(".");
  // mkstemp makes the name unique and the file ours: no other run can share it.
  std::string leaf = ".";  // appended, not concatenated: GCC 12 warns falsely on "." + s
  leaf += target_.filename().string();
  leaf += ".XXXXXX";
  const std::string pattern = (folder / leaf).string();
  std::vector<char> name(pattern.begin(), pattern.end());
  name.push_back('\0');
  const int fd = mkstemp(name.data());
  if (fd < 0) {
    throw Failure(errors::kDatabase,
                  say("cannot create a temporary file in {}: {}; check that the folder exists "
                      "and may be written",
                      {folder.string(), std::strerror(errno)}));
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
    throw Failure(errors::kDatabase, say("cannot put {} in place of {}: {}",
                                         {temporary_.string(), target_.string(), ec.message()}));
  }
  committed_ = true;
}

}  // namespace velmora::store
