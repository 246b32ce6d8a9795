// Runs the built velmora tool as a user does, on a temporary account, its output read
// back whole (as text, or as JSON under --json).
#pragma once

#include <gtest/gtest.h>
#include <locale.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "support/account.h"

namespace velmora::cli_test {

namespace fs = std::filesystem;

struct Outcome {
  int status = -1;
  std::string out;
  std::string err;
};

// One word for the shell, whatever it holds.
inline std::string shellWord(const std::string& word) {
  std::string q = "'";
  for (const char c : word) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

inline std::string slurp(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

inline void spit(const fs::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

// The exit status of a shell command line.
inline int shell(const std::string& command) {
  const int raw = std::system(command.c_str());
  return WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
}

// Whether the French locale that the French runs ask for is installed (locale-gen).
inline bool frenchLocaleExists() {
  const locale_t french = newlocale(LC_MESSAGES_MASK, "fr_FR.UTF-8", nullptr);
  if (french == nullptr) return false;
  freelocale(french);
  return true;
}

// Runs velmora with these arguments, no input, and its output captured in workDir; its
// messages in the language of `lang` (the locale's name), whatever the test's own.
inline Outcome runVelmora(const std::vector<std::string>& args, const fs::path& workDir,
                          const std::string& lang = "C.UTF-8") {
  std::string command = "env -u LC_ALL -u LC_MESSAGES -u LANGUAGE LANG=" + shellWord(lang) + " " +
                        shellWord(VELMORA_CLI);
  for (const auto& a : args) command += " " + shellWord(a);
  const auto out = workDir / "stdout.txt";
  const auto err = workDir / "stderr.txt";
  command += " >" + shellWord(out.string()) + " 2>" + shellWord(err.string()) + " </dev/null";
  const int status = shell(command);
  return {status, slurp(out), slurp(err)};
}

class Tool : public ::testing::Test {
 protected:
  Outcome run(const std::vector<std::string>& args, const std::string& lang = "C.UTF-8") {
    return runVelmora(args, dir(), lang);
  }
  fs::path dir() const { return account.directory(); }
  std::string at(const std::string& name) const { return (dir() / name).string(); }
  std::string db() const { return account.path(); }

  testing::TempAccount account;
};

}  // namespace velmora::cli_test
