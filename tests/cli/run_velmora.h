// Runs the built velmora tool as a user does, its output read back whole.
#pragma once

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace velmora::cli_test {

struct Outcome {
  int status = -1;
  std::string out;
  std::string err;
};

// One word for the shell, whatever it holds.
inline std::string shellWord(const std::string& word) {
  std::string q = "'";
  for (const char c : word) {
    if (c == '\'') {
      q += "'\\''";
    } else {
      q += c;
    }
  }
  return q + "'";
}

inline std::string slurp(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

// Runs velmora with these arguments, no input, and its output captured in workDir.
inline Outcome runVelmora(const std::vector<std::string>& args,
                          const std::filesystem::path& workDir) {
  std::string command = shellWord(VELMORA_CLI);
  for (const auto& a : args) command += " " + shellWord(a);
  const auto out = workDir / "stdout.txt";
  const auto err = workDir / "stderr.txt";
  command += " >" + shellWord(out.string()) + " 2>" + shellWord(err.string()) + " </dev/null";
  const int raw = std::system(command.c_str());
  return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, slurp(out), slurp(err)};
}

}  // namespace velmora::cli_test
