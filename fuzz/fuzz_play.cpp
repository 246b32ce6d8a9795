// Any play script: its steps or a ScriptError naming the script and line.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "play_script.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  try {
    (void)velmora::cli::parseScript(text, "fuzz.play");
  } catch (const velmora::cli::ScriptError& error) {
    if (std::string(error.what()).rfind("fuzz.play:", 0) != 0) __builtin_trap();
  }
  return 0;
}
