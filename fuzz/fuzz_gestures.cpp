// Any sequence of the host's calls and the planner's gestures on the sample account: the
// control fails only through its documented failures, and what a host reads of it keeps
// the documented promises (see control_player.h).
#include <cstddef>
#include <cstdint>

#include <velmora/store/sqlite_database.h>
#include "control_player.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace velmora;
  static const DatabaseRef db = openDatabase(fuzz::sampleStorePath());
  fuzz::Bytes in(data, size);
  fuzz::Player player(db, true);
  // A host starts with Init; the bytes choose its arguments, then every step.
  player.init(in);
  while (player.step(in)) {
  }
  return 0;
}
