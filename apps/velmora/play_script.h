// The little language of `velmora play`: one host call or planner's gesture a line.
// A script is read whole before anything runs, so that a mistake stops it untouched.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace velmora::cli {

// A mistake in a script, naming its line and the word at fault.
class ScriptError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Step {
  enum class Kind {
    Init,         // args: TypeAct, Code, DateDeb, DateFin, HeureDe, HeureA, Jour
    Click,        // list, row
    DoubleClick,  // list, row
    Press,        // button
    Type,         // text, key by key through the filter
    Paste,        // text, replacing what the box holds
    Clear,        // backspace until the box is empty
    Tick,         // Cac_TouteTache
    Answer,       // yes | no, for the next question box
    Observation,  // optional text (text present when hasText), then close/ok/cancel actions
    Host,         // maj-enr | vider-tache | vider-liste | affiche [CODE DURATION OBS]...
    Show,
  };
  Kind kind = Kind::Show;
  int line = 0;
  std::vector<std::string> words;  // the arguments, unquoted
  bool hasText = false;            // Observation: whether words[0] is the text to type
  int row = -1;                    // Click, DoubleClick
  bool clientCode = false;         // Init: words[1] is a client code (init), not a key
};

// Splits a line into words: blanks separate, "..." quotes (with \n, \t, \" and \\),
// "#" outside quotes starts a comment. Fails on an unterminated quote.
std::vector<std::string> splitWords(std::string_view line, int lineNumber,
                                    const std::string& scriptName);

// Reads the whole script; the first mistake is a ScriptError "NAME:LINE: ...".
std::vector<Step> parseScript(std::string_view text, const std::string& scriptName);

}  // namespace velmora::cli
