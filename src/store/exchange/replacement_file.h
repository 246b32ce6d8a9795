// A file written aside and put in place whole: the new content goes to a temporary file
// of a unique name beside the target, which is renamed over the target on commit. Until
// then the target stays as it was, and a temporary left uncommitted is removed.
#pragma once

#include <filesystem>
#include <string>

namespace velmora::store {

// The path that a chain of symbolic links ends at (the path itself when it is not a link):
// a file reached through a link is replaced there, and the link is kept.
std::filesystem::path followLinks(std::filesystem::path path);

// What a node that is not a regular file is, in words: "a folder", "a named pipe"...
std::string kindOfNode(std::filesystem::file_type type);

class ReplacementFile {
 public:
  // Creates the temporary beside the file that target names (through its links); fails with
  // errors::kDatabase naming the folder when it cannot.
  explicit ReplacementFile(const std::filesystem::path& target);
  ~ReplacementFile();
  ReplacementFile(const ReplacementFile&) = delete;
  ReplacementFile& operator=(const ReplacementFile&) = delete;

  const std::filesystem::path& path() const { return temporary_; }
  const std::filesystem::path& target() const { return target_; }
  // Renames the temporary over the target; fails with errors::kDatabase naming both.
  void commit();

 private:
  std::filesystem::path target_;
  std::filesystem::path temporary_;
  bool committed_ = false;
};

}  // namespace velmora::store
