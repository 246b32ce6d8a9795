// The sample account for hosts that show the control without an account of their own:
// built once from the exchange files of the sample directory, then reused.
#pragma once

#include <velmora/export.h>

#include <string>

namespace velmora::qt {

// Builds the store at path from the *.jsonl files of sampleDir, read in name order,
// unless something is at path already (then it is left as it is, whatever it holds).
// The store is written beside path and renamed into place. Fails with
// errors::kBadImport when the sample files cannot be read, and leaves no half-built
// store behind. It touches no widget: any thread may call it.
VELMORA_EXPORT void ensureSampleDatabase(const std::string& path, const std::string& sampleDir);

}  // namespace velmora::qt
