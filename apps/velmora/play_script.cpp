#include "play_script.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>

#include "base/message.h"

namespace velmora::cli {

namespace {

class LineReader {
 public:
  LineReader(std::vector<std::string> words, int line, const std::string& script)
      : words_(std::move(words)), line_(line), script_(script) {}

  [[noreturn]] void fail(const std::string& what) const {
    throw ScriptError(say("{}:{}: {}", {script_, std::to_string(line_), what}));
  }

  bool atEnd() const { return next_ >= words_.size(); }
  std::size_t left() const { return words_.size() - next_; }

  // `what` names the word awaited, a pattern of the catalogue (toSay).
  const std::string& take(const char* what) {
    if (atEnd()) fail(say("missing {} after \"{}\"", {say(what), excerpt(words_[next_ - 1])}));
    return words_[next_++];
  }

  // A word that must be one of the choices.
  const std::string& takeOneOf(const char* what, std::initializer_list<std::string_view> choices) {
    const std::string& word = take(what);
    if (std::find(choices.begin(), choices.end(), word) != choices.end()) return word;
    std::string list;
    for (const auto c : choices) list += (list.empty() ? "" : ", ") + std::string(c);
    fail(say("unknown {} \"{}\" (expected {})", {say(what), excerpt(word), list}));
  }

  int takeRow() {
    const std::string& word = take(toSay("row number"));
    int row = -1;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), row);
    if (error != std::errc() || end != word.data() + word.size() || row < 0) {
      fail(say("\"{}\" is not a row number (rows count from 0)", {excerpt(word)}));
    }
    return row;
  }

  void expectEnd() const {
    if (!atEnd()) fail(say("unexpected word \"{}\"", {excerpt(words_[next_])}));
  }

  const std::string& command() const { return words_.front(); }

 private:
  std::vector<std::string> words_;
  std::size_t next_ = 1;
  int line_;
  const std::string& script_;
};

Step parseInit(LineReader& in, Step step) {
  // init KIND CODE [DATEDEB [DATEFIN [HEUREDE [HEUREA [JOUR]]]]]
  step.kind = Step::Kind::Init;
  step.words.push_back(in.take(toSay("kind of activity (AUTRE or SSIAD)")));
  step.words.push_back(in.take(toSay("client code")));
  step.clientCode = true;  // checked as propose checks it, before anything runs
  if (in.left() > 5) in.fail(say("init takes at most 7 arguments"));
  while (!in.atEnd()) step.words.push_back(in.take(toSay("argument")));
  step.words.resize(7);
  return step;
}

Step parseInitKey(LineReader& in, Step step) {
  // init-key KIND KEY [DATE]
  step.kind = Step::Kind::Init;
  step.words.push_back(in.take(toSay("kind of activity (AUTRE or SSIAD)")));
  step.words.push_back(in.take(toSay("full key")));
  if (step.words.back().find_first_of("\"[]") != std::string::npos) {
    in.fail(
        say("the key holds a double quote or a bracket; the control would write it into "
            "its queries, where it changes what they select"));
  }
  if (!in.atEnd()) step.words.push_back(in.take(toSay("date")));
  in.expectEnd();
  step.words.resize(7);
  return step;
}

Step parseObservation(LineReader& in, Step step) {
  // observation [TEXT] {close} ok|cancel
  step.kind = Step::Kind::Observation;
  std::string first = in.take(toSay("text or button (ok, cancel, close)"));
  if (first != "ok" && first != "cancel" && first != "close") {
    step.hasText = true;
    step.words.push_back(first);
    first = in.takeOneOf(toSay("dialog button"), {"ok", "cancel", "close"});
  }
  step.words.push_back(first);
  while (step.words.back() == "close") {
    step.words.push_back(in.takeOneOf(toSay("dialog button"), {"ok", "cancel", "close"}));
  }
  in.expectEnd();
  return step;
}

Step parseLine(LineReader& in, int line) {
  Step step;
  step.line = line;
  const std::string& command = in.command();
  if (command == "init") return parseInit(in, step);
  if (command == "init-key") return parseInitKey(in, step);
  if (command == "observation") return parseObservation(in, step);
  if (command == "mark" || command == "click" || command == "double-click") {
    step.kind = command == "double-click" ? Step::Kind::DoubleClick : Step::Kind::Click;
    const std::string& list = command == "mark"
                                  ? in.takeOneOf(toSay("list"), {"possible"})
                                  : in.takeOneOf(toSay("list"), {"possible", "selected"});
    step.words.push_back(list);
    step.row = in.takeRow();
  } else if (command == "press") {
    step.kind = Step::Kind::Press;
    step.words.push_back(
        in.takeOneOf(toSay("button"), {"select", "ok", "cancel", "remove", "obs"}));
  } else if (command == "type" || command == "paste") {
    step.kind = command == "type" ? Step::Kind::Type : Step::Kind::Paste;
    in.takeOneOf(toSay("text box"), {"duration"});
    step.words.push_back(in.take(toSay("text")));
  } else if (command == "clear") {
    step.kind = Step::Kind::Clear;
    in.takeOneOf(toSay("text box"), {"duration"});
  } else if (command == "tick") {
    step.kind = Step::Kind::Tick;
    in.takeOneOf(toSay("check box"), {"all"});
  } else if (command == "answer") {
    step.kind = Step::Kind::Answer;
    step.words.push_back(in.takeOneOf(toSay("answer"), {"yes", "no"}));
  } else if (command == "host") {
    step.kind = Step::Kind::Host;
    step.words.push_back(
        in.takeOneOf(toSay("host call"), {"maj-enr", "vider-tache", "vider-liste", "affiche"}));
    // host affiche [CODE DURATION OBSERVATION]...: the items of W_Aff, three words each.
    if (step.words[0] == "affiche") {
      while (!in.atEnd()) {
        step.words.push_back(in.take(toSay("item code")));
        if (in.atEnd()) in.fail(say("an item of host affiche needs CODE DURATION OBSERVATION"));
        step.words.push_back(in.take(toSay("item duration")));
        if (in.atEnd()) in.fail(say("an item of host affiche needs CODE DURATION OBSERVATION"));
        step.words.push_back(in.take(toSay("item observation")));
      }
    }
  } else if (command == "show") {
    step.kind = Step::Kind::Show;
  } else {
    in.fail(
        say("unknown word \"{}\" (expected init, init-key, mark, click, double-click, "
            "press, type, paste, clear, tick, answer, observation, host or show)",
            {excerpt(command)}));
  }
  in.expectEnd();
  return step;
}

}  // namespace

std::vector<std::string> splitWords(std::string_view line, int lineNumber,
                                    const std::string& scriptName) {
  std::vector<std::string> words;
  std::size_t i = 0;
  while (i < line.size()) {
    const char c = line[i];
    if (c == ' ' || c == '\t' || c == '\r') {
      ++i;
      continue;
    }
    if (c == '#') break;
    std::string word;
    if (c == '"') {
      const std::size_t opened = i;
      ++i;
      bool closed = false;
      while (i < line.size()) {
        const char q = line[i++];
        if (q == '"') {
          closed = true;
          break;
        }
        if (q == '\\' && i < line.size()) {
          const char e = line[i++];
          word += e == 'n' ? '\n' : e == 't' ? '\t' : e;
          continue;
        }
        word += q;
      }
      if (!closed) {
        throw ScriptError(
            say("{}:{}: a quote opened at position {} is not closed on its line",
                {scriptName, std::to_string(lineNumber), std::to_string(opened + 1)}));
      }
    } else {
      while (i < line.size() && line[i] != ' ' && line[i] != '\t' && line[i] != '\r' &&
             line[i] != '#') {
        word += line[i++];
      }
    }
    words.push_back(std::move(word));
  }
  return words;
}

std::vector<Step> parseScript(std::string_view text, const std::string& scriptName) {
  std::vector<Step> steps;
  int lineNumber = 0;
  std::size_t start = 0;
  while (start <= text.size()) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    ++lineNumber;
    auto words = splitWords(text.substr(start, end - start), lineNumber, scriptName);
    if (!words.empty()) {
      LineReader in(std::move(words), lineNumber, scriptName);
      steps.push_back(parseLine(in, lineNumber));
    }
    start = end + 1;
  }
  return steps;
}

}  // namespace velmora::cli
