// The tools' sentences for people. Each goes through say(): one English pattern with {}
// for each value, looked up in the "velmora" catalogue (gettext) so that a French
// messages locale reads it whole in French, and no sentence is ever built from pieces of
// two languages. A French text of the store or the control is a value, quoted whole.
#pragma once

#include <libintl.h>

#include <array>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

namespace velmora {

// The catalogue's domain; the velmora tool binds it (messages_locale.cpp). A program that
// never binds it, or runs under an English or C locale, gets the English patterns.
inline constexpr const char* kMessageDomain = "velmora";

// Marks a pattern for the catalogue where it is kept to be said later (a command's help).
constexpr const char* toSay(const char* pattern) {
  return pattern;
}

namespace detail {
// The last sentences said on this thread, so that the tool can tell its own words from a
// French text of the store or the control that reaches it inside a Failure.
struct SaidRing {
  std::array<std::string, 8> lines;
  std::size_t next = 0;
};
inline SaidRing& said() {
  thread_local SaidRing ring;
  return ring;
}
}  // namespace detail

inline std::string say(std::string_view pattern,
                       std::initializer_list<std::string_view> values = {}) {
  const std::string english(pattern);
  // gettext answers the catalogue's header for an empty msgid: an empty pattern stays empty.
  const std::string_view local = english.empty() ? "" : dgettext(kMessageDomain, english.c_str());
  std::string out;
  auto value = values.begin();
  for (std::size_t i = 0; i < local.size(); ++i) {
    if (local[i] == '{' && i + 1 < local.size() && local[i + 1] == '}' && value != values.end()) {
      out += *value++;
      ++i;
    } else {
      out.push_back(local[i]);
    }
  }
  auto& ring = detail::said();
  ring.lines[ring.next] = out;
  ring.next = (ring.next + 1) % ring.lines.size();
  return out;
}

// Whether this text is one of the last sentences said through say() on this thread: the
// tool's own words, as opposed to a text of the store or the control written in French.
inline bool saidByUs(std::string_view text) {
  for (const auto& line : detail::said().lines) {
    if (!line.empty() && line == text) return true;
  }
  return false;
}

// A failure's message as the tool shows it: its own words as they are, a French text of
// the store or the control for planners quoted whole (in French, simply as it is).
inline std::string inOurWords(const std::string& message) {
  return saidByUs(message) ? message : say("as planners read it: \"{}\"", {message});
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
