// A main for the benchmark programs: runs what is registered, then prints how each
// operation compares with its floor (the least work giving the same result) and with its
// goal, for every size, as the minimum and the median over the repetitions.
#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace velmora::bench {

struct RatioGoal {
  std::string subject;  // benchmark name of the operation, without its size
  std::string floor;    // benchmark name of the least work giving the same result
  double most;          // the ratio subject / floor (medians) it should stay within
  // Compare user processor time (see UserCpu) rather than process time: where the lock
  // system calls of a read transaction dominate, their cost moves with the machine's load.
  bool userCpu = false;
};

struct TimeGoal {
  std::string subject;
  double mostSeconds;  // the time per iteration (median) it should stay under
  bool userCpu = false;
};

// Measures the user processor time of the loop it surrounds (getrusage), as the counter
// "user" in seconds per iteration. Not for loops that pause the timing.
class UserCpu {
 public:
  explicit UserCpu(benchmark::State& state);
  ~UserCpu();
  UserCpu(const UserCpu&) = delete;
  UserCpu& operator=(const UserCpu&) = delete;

 private:
  benchmark::State& state_;
  double start_;
};

int runWithSummary(int argc, char** argv, const std::vector<RatioGoal>& ratios,
                   const std::vector<TimeGoal>& times);

}  // namespace velmora::bench
