// velmora play: plays a script of host calls and planner's gestures on the control, with
// no screen, and prints the state where the script asks for it. The question box and
// the observations dialog take their answers from the script.
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include <velmora/base/failure.h>
#include <velmora/store/sqlite_database.h>
#include "base/message.h"
#include "command.h"
#include "play_player.h"
#include "play_script.h"

namespace velmora::cli {

namespace {

std::string readScript(const std::string& path) {
  std::error_code ec;
  if (std::filesystem::is_directory(path, ec)) {
    throw UsageError(say("{} is a folder: give the script file to play", {path}));
  }
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    throw Failure(errors::kInvalidCall, say("the script {} cannot be read: {}; check the path "
                                            "and its rights",
                                            {path, std::strerror(errno)}));
  }
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

int play(Arguments& args) {
  const std::string path = requiredDatabase(args);
  const bool json = args.flag("json");
  const std::string scriptPath = args.positionals(1, 1).front();
  std::vector<Step> steps;
  try {
    steps = parseScript(readScript(scriptPath), scriptPath);
  } catch (const ScriptError& e) {
    throw UsageError(e.what());  // a mistake of what the command was given: nothing runs
  }
  // A client code as propose checks it: a bare code, or one followed by FLOT.
  for (const Step& step : steps) {
    if (!step.clientCode) continue;
    const std::string& code = step.words[1];
    const bool floating = code.size() == 9 && code.ends_with("FLOT");
    if (const auto refusal = clientCodeRefusal(floating ? code.substr(0, 5) : code)) {
      throw UsageError(
          say("{}:{}: client code {}", {scriptPath, std::to_string(step.line), *refusal}));
    }
  }
  const DatabaseRef db = openDatabase(path);
  Player player(db, json);
  player.play(steps);
  return 0;
}

}  // namespace

const Command& playCommand() {
  static const Command command{
      "play", toSay("play a script of host calls and planner's gestures"),
      toSay("Usage: velmora play --db PATH SCRIPT [--json]\n"
            "  Plays SCRIPT on the control, one host call or gesture a line, and prints the\n"
            "  state at each \"show\". The whole script is read first: a mistake names its line\n"
            "  and word and nothing runs (exit status 2). Errors that the control reports while\n"
            "  playing are printed with their line, and the script goes on.\n"
            "  Lines ('#' starts a comment, \"...\" quotes, with \\n for a new line):\n"
            "    init KIND CODE [DATEDEB DATEFIN HEUREDE HEUREA JOUR]   init-key KIND KEY [DATE]\n"
            "    mark possible N | click possible|selected N | double-click possible|selected N\n"
            "    press select|ok|cancel|remove|obs    tick all\n"
            "    type duration TEXT | paste duration TEXT | clear duration\n"
            "    answer yes|no                        (the next question box)\n"
            "    observation [TEXT] [close] ok|cancel (the next dialog)\n"
            "    host maj-enr|vider-tache|vider-liste|affiche   (affiche shows W_Enr again)\n"
            "    host affiche CODE DURATION OBSERVATION...        (W_Aff given item by item)\n"
            "    show\n"
            "  --json  print {\"shows\": [...], \"messages\": [...]} instead\n"),
      &play};
  return command;
}

}  // namespace velmora::cli
