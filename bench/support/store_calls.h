// The store calls that an operation of the control makes, recorded once so that the same
// opens, reads and queries can be run again directly: the floor under that operation.
#pragma once

#include <memory>
#include <vector>

#include <velmora/store/database.h>

namespace velmora::bench {

struct StoreCall {
  enum class Kind { Open, Read, Query };
  Kind kind;
  Text file;  // Open, Read: the file name
  Text text;  // Read: the key; Query: the whole request
};

using StoreCalls = std::vector<StoreCall>;

// A database that passes every call to inner and notes it in calls.
DatabaseRef recordingDatabase(DatabaseRef inner, std::shared_ptr<StoreCalls> calls);

// Makes the same calls on database, failures included (a read of an absent key fails
// there as it did for the control).
void replay(const StoreCalls& calls, const DatabaseRef& database);

struct CallCounts {
  int opens = 0;
  int reads = 0;
  int queries = 0;
};
CallCounts count(const StoreCalls& calls);

}  // namespace velmora::bench
