#include "support/summary.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>

namespace velmora::bench {

namespace {

// Prints as usual and keeps the processor time per iteration of each plain run by name.
class RecordingReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration || run.iterations == 0) continue;
      // Processor time: the machine is shared, and wall time would count the others' work.
      seconds_[run.run_name.function_name] =
          run.cpu_accumulated_time / static_cast<double>(run.iterations);
    }
  }

  const double* seconds(const std::string& name) const {
    const auto found = seconds_.find(name);
    return found == seconds_.end() ? nullptr : &found->second;
  }

 private:
  std::map<std::string, double> seconds_;
};

}  // namespace

int runWithSummary(int argc, char** argv, const std::vector<RatioGoal>& ratios,
                   const std::vector<TimeGoal>& times) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  RecordingReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();

  std::printf("\n%-34s %-34s %10s %10s %7s %6s\n", "operation", "floor", "op cpu us", "floor us",
              "ratio", "goal");
  for (const RatioGoal& goal : ratios) {
    const double* subject = reporter.seconds(goal.subject);
    const double* floor = reporter.seconds(goal.floor);
    if (subject == nullptr || floor == nullptr) continue;  // filtered out of this run
    const double ratio = *subject / *floor;
    std::printf("%-34s %-34s %10.1f %10.1f %7.2f %5s%s\n", goal.subject.c_str(), goal.floor.c_str(),
                *subject * 1e6, *floor * 1e6, ratio, ratio <= goal.most ? "ok" : "MISS",
                ratio <= goal.most ? "" : " (over the goal)");
  }
  for (const TimeGoal& goal : times) {
    const double* subject = reporter.seconds(goal.subject);
    if (subject == nullptr) continue;
    std::printf("%-34s %10.1f us, goal under %.0f us: %s\n", goal.subject.c_str(), *subject * 1e6,
                goal.mostSeconds * 1e6, *subject < goal.mostSeconds ? "ok" : "MISS");
  }
  return 0;
}

}  // namespace velmora::bench
