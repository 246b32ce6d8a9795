// The sample account: a new store built from the exchange files of a directory.
#pragma once

#include <velmora/export.h>

#include <cstddef>
#include <string>

namespace velmora {

struct VELMORA_EXPORT SampleBuild {
  std::size_t lines = 0;  // changes applied
  std::size_t files = 0;  // exchange files read
};

// Reads every *.jsonl file of directory, in name order, and builds a new store at target.
// The store is built aside and renamed over target, so that target stays whole until the
// new one is complete, and a bad file leaves it as it was (errors::kBadImport, also for a
// folder that is missing or holds no *.jsonl file). A target that is not absent, an empty
// file or a store is refused with errors::kDatabase before any work. A server URI as
// target is filled in one transaction only when its database holds no store yet
// (errors::kDatabase otherwise, nothing changed).
VELMORA_EXPORT SampleBuild buildSampleDatabase(const std::string& target,
                                               const std::string& directory);

}  // namespace velmora
