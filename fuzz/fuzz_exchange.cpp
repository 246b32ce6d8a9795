// Any exchange file: a batch or a Failure that starts with the source's name (and its
// line, unless the whole file is refused, as a store given in place of an exchange file).
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include <velmora/base/failure.h>
#include <velmora/store/exchange.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
  try {
    (void)velmora::readExchange(in, "fuzz.jsonl");
  } catch (const velmora::Failure& failure) {
    if (std::string(failure.what()).rfind("fuzz.jsonl", 0) != 0) __builtin_trap();
  }
  return 0;
}
