// The tools' sentences for people. Each goes through say(): one English pattern with {}
// for each value, so that a catalogue can later give the same pattern in another
// language, and no sentence is ever built from pieces of two languages. A French text of
// the store or the control is a value, quoted whole after a colon.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

namespace velmora {

inline std::string say(std::string_view pattern,
                       std::initializer_list<std::string_view> values = {}) {
  std::string out;
  auto value = values.begin();
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '{' && i + 1 < pattern.size() && pattern[i + 1] == '}' &&
        value != values.end()) {
      out += *value++;
      ++i;
    } else {
      out.push_back(pattern[i]);
    }
  }
  return out;
}

// A piece of the user's input quoted in a message: cut after `most` bytes (on a character
// boundary) and marked with "…", so that a 32 MB line is never echoed whole. No word is
// added: the piece may stand in a French sentence of the store as well as in ours.
inline std::string excerpt(std::string_view text, std::size_t most = 60) {
  if (text.size() <= most) return std::string(text);
  std::size_t cut = most;
  while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) --cut;
  return std::string(text.substr(0, cut)) + "…";
}

}  // namespace velmora
