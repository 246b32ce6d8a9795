// A main for the benchmark programs: runs what is registered, then prints how each
// operation compares with its floor (the same work written by hand) and with its goal.
#pragma once

#include <string>
#include <vector>

namespace velmora::bench {

struct RatioGoal {
  std::string subject;  // benchmark name of the operation
  std::string floor;    // benchmark name of the hand-written equivalent
  double most;          // the ratio subject / floor it should stay within
};

struct TimeGoal {
  std::string subject;
  double mostSeconds;  // the time per iteration it should stay under
};

int runWithSummary(int argc, char** argv, const std::vector<RatioGoal>& ratios,
                   const std::vector<TimeGoal>& times);

}  // namespace velmora::bench
