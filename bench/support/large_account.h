// A large account for the benchmarks: a full-size care-act catalogue, a large task
// catalogue and many clients with templates and task lists. Written once into a file and
// reused by every later run.
#pragma once

#include <string>

#include <velmora/store/database.h>

namespace velmora::bench {

struct LargeAccountShape {
  int acts = 32767;  // the most a 16-bit row counter can walk
  int tasks = 20000;
  int groups = 2000;
  int types = 50;
  int clients = 10000;
  int fixedTemplatesPerClient = 12;
  int floatingTemplatesPerClient = 5;
  int taskListsPerClient = 10;
};

// Client codes run from "00001"; odd clients get home help, even clients care.
std::string clientCode(int number);
// A code that no record of the account names: no template, no task list.
inline constexpr const char* kClientWithoutAnything = "99999";

// Writes the account into path, replacing what was there. The file appears under its name
// only once complete, so that an interrupted run never leaves half an account behind.
void writeLargeAccount(const std::string& path, const LargeAccountShape& shape = {});

// The path of the shared large account: $VELMORA_LARGE_ACCOUNT, else a file in the build
// tree. Builds it first when the file is absent.
std::string largeAccount();

// One read-only connection to the shared large account, opened at first use.
DatabaseRef largeAccountDatabase();

}  // namespace velmora::bench
