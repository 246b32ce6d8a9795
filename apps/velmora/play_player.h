// The player of `velmora play` scripts: each line a host call or a planner's gesture on a
// control of its own (own Session) over one connection. The play command plays a script
// once; the load harness (bench/load) plays journeys in a loop and times each line.
#pragma once

#include <memory>
#include <vector>

#include <nlohmann/json.hpp>

#include <velmora/control/ctr_velmora_new.h>
#include <velmora/store/database.h>
#include "play_script.h"

namespace velmora::cli {

class Player {
 public:
  // json: gather what "show" sees for seen() (and print it at the end of play) instead
  // of printing it as text.
  Player(DatabaseRef db, bool json);
  ~Player();
  Player(const Player&) = delete;
  Player& operator=(const Player&) = delete;

  // Plays every line, then notes answers left over (and prints the JSON when asked).
  void play(const std::vector<Step>& steps);
  // Plays one line; a failure the control reports, or one it throws, is noted with the
  // line and the script goes on, as a host shows it and goes on.
  void step(const Step& step);
  // Failures noted so far.
  int failures() const;
  // {"shows": [...], "messages": [...]}: what the JSON output holds so far.
  nlohmann::ordered_json seen() const;
  // The control the lines play on, read only: for a caller that checks what a host reads
  // of it after each line (the fuzzers).
  const Ctr_VelmoraNew& control() const;

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace velmora::cli
