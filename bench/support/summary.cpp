#include "support/summary.h"

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <map>

namespace velmora::bench {

namespace {

double userSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec) +
         static_cast<double>(usage.ru_utime.tv_usec) * 1e-6;
}

// The times of one benchmark at one size, one per repetition.
struct Samples {
  std::vector<double> process;  // processor time per iteration
  std::vector<double> user;     // user processor time per iteration, when measured

  const std::vector<double>& of(bool userCpu) const {
    return userCpu && !user.empty() ? user : process;
  }
};

double minimum(std::vector<double> values) {
  return *std::min_element(values.begin(), values.end());
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t n = values.size();
  return n % 2 == 1 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

// Prints as usual and keeps the times of every repetition of every run, by name and size.
class RecordingReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration || run.iterations == 0 || run.error_occurred) continue;
      Samples& samples = runs_[run.run_name.function_name][run.run_name.args];
      // Processor time: the machine is shared, and wall time would count the others' work.
      samples.process.push_back(run.cpu_accumulated_time / static_cast<double>(run.iterations));
      const auto user = run.counters.find("user");
      if (user != run.counters.end()) samples.user.push_back(user->second.value);
    }
  }

  // Every size of a benchmark, by its arguments ("" when it has none).
  const std::map<std::string, Samples>* sizes(const std::string& name) const {
    const auto found = runs_.find(name);
    return found == runs_.end() ? nullptr : &found->second;
  }

 private:
  std::map<std::string, std::map<std::string, Samples>> runs_;
};

std::string named(const std::string& name, const std::string& size) {
  return size.empty() ? name : name + "/" + size;
}

}  // namespace

UserCpu::UserCpu(benchmark::State& state) : state_(state), start_(userSeconds()) {}

UserCpu::~UserCpu() {
  state_.counters["user"] =
      benchmark::Counter(userSeconds() - start_, benchmark::Counter::kAvgIterations);
}

int runWithSummary(int argc, char** argv, const std::vector<RatioGoal>& ratios,
                   const std::vector<TimeGoal>& times) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  RecordingReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();

  std::printf(
      "\nTimes per iteration in microseconds, min and median over the repetitions;\n"
      "\"user\": user processor time, else process processor time. Ratio of medians.\n");
  std::printf("\n%-30s %-30s %5s %10s %10s %10s %10s %6s %6s\n", "operation", "floor", "time",
              "op min", "op median", "floor min", "fl median", "ratio", "goal");
  for (const RatioGoal& goal : ratios) {
    const auto* subjects = reporter.sizes(goal.subject);
    const auto* floors = reporter.sizes(goal.floor);
    if (subjects == nullptr || floors == nullptr) continue;  // filtered out of this run
    for (const auto& [size, subject] : *subjects) {
      const auto floor = floors->find(size);
      if (floor == floors->end()) continue;
      const auto& s = subject.of(goal.userCpu);
      const auto& f = floor->second.of(goal.userCpu);
      const bool user = goal.userCpu && !subject.user.empty() && !floor->second.user.empty();
      const double ratio = median(s) / median(f);
      std::printf("%-30s %-30s %5s %10.1f %10.1f %10.1f %10.1f %6.2f %6s\n",
                  named(goal.subject, size).c_str(), named(goal.floor, size).c_str(),
                  user ? "user" : "cpu", minimum(s) * 1e6, median(s) * 1e6, minimum(f) * 1e6,
                  median(f) * 1e6, ratio, ratio <= goal.most ? "ok" : "MISS");
    }
  }
  for (const TimeGoal& goal : times) {
    const auto* subjects = reporter.sizes(goal.subject);
    if (subjects == nullptr) continue;
    for (const auto& [size, subject] : *subjects) {
      const auto& s = subject.of(goal.userCpu);
      std::printf("%-30s %5s min %10.1f us, median %10.1f us, goal under %.0f us: %s\n",
                  named(goal.subject, size).c_str(),
                  goal.userCpu && !subject.user.empty() ? "user" : "cpu", minimum(s) * 1e6,
                  median(s) * 1e6, goal.mostSeconds * 1e6,
                  median(s) < goal.mostSeconds ? "ok" : "MISS");
    }
  }
  return 0;
}

}  // namespace velmora::bench
