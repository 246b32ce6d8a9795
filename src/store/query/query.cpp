#include "store/query/query.h"

#include "base/failure.h"

namespace velmora::store {

NorvikRecord runRequest(ReadConnection& /*connection*/, const Text& /*request*/) {
  throw Failure(errors::kBadQuery, "query: not built yet");
}

}  // namespace velmora::store
