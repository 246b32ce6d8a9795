// A record from any text, then reads, writes and deletes at positions the input chooses:
// the text form must come back as written, and no position may break the record.
#include <cstddef>
#include <cstdint>
#include <string>

#include <velmora/base/failure.h>
#include <velmora/store/record.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace velmora;
  // The first bytes drive the operations, the rest is the record's text.
  const std::size_t ops = size < 8 ? size : 8;
  const Text body = fromUtf8(std::string(reinterpret_cast<const char*>(data) + ops, size - ops));
  NorvikRecord record(body);
  if (record.r() != body) __builtin_trap();
  try {
    for (std::size_t i = 0; i + 1 < ops; i += 2) {
      const int a = data[i] % 40 - 2;
      const int v = data[i + 1] % 40 - 2;
      const int op = data[i] % 4;
      if (op == 0) (void)record.r(a, v);
      if (op == 1) record.set(a, v, u"x");
      if (op == 2) record.Delete(a);
      if (op == 3) record.set(a, record.r(v));
      (void)record.DCount(a);
    }
    (void)record.DCount();
  } catch (const Failure&) {
  }
  return 0;
}
