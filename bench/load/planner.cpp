// One planner of the load harness: a control of its own (own Session) on its own
// connection, replaying journeys of the account in a loop for a given time, timing each
// line (a host call or a gesture), and checking what each journey showed against the same
// journey played once, before the clock starts, on a quiet SQLite copy of the same
// committed state. Prints one JSON line: its counts and its latencies.
//
//   velmora_load_planner --uri URI --reference FILE --seconds S [--id N] JOURNEY.play...
//
// Once the reference is played and the connection open it prints {"ready": true} and waits
// for a line (or the end) on its standard input, so that the planners of a run start
// together.
//
// A line whose failures outnumber the reference's at that line is an error: the journey
// stops there and the next one starts (a host shows the failure and the planner goes on).
// A journey played to its end whose shows or messages differ from the reference's is a
// wrong answer.
#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include <velmora/base/failure.h>
#include <velmora/store/sqlite_database.h>
#include "play_player.h"
#include "play_script.h"

namespace {

using Json = nlohmann::ordered_json;
using Clock = std::chrono::steady_clock;
using velmora::cli::Player;
using velmora::cli::Step;

struct Options {
  std::string uri;
  std::string reference;
  double seconds = 10;
  int id = 0;
  std::vector<std::string> journeys;
};

[[noreturn]] void usage(const std::string& why) {
  std::cerr << "velmora_load_planner: " << why
            << "\nUsage: velmora_load_planner --uri URI --reference FILE --seconds S [--id N] "
               "JOURNEY.play...\n";
  std::exit(2);
}

template <typename Number>
Number number(const std::string& text, const char* what) {
  Number value{};
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec != std::errc{} || end != text.data() + text.size())
    usage(std::string(what) + " is a number");
  return value;
}

Options parse(int argc, char** argv) {
  Options o;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    const auto value = [&]() -> std::string {
      if (i + 1 >= argc) usage(word + " needs a value");
      return argv[++i];
    };
    if (word == "--uri")
      o.uri = value();
    else if (word == "--reference")
      o.reference = value();
    else if (word == "--seconds")
      o.seconds = number<double>(value(), "--seconds");
    else if (word == "--id")
      o.id = number<int>(value(), "--id");
    else if (word.starts_with("--"))
      usage("unknown option " + word);
    else
      o.journeys.push_back(word);
  }
  if (o.uri.empty() || o.reference.empty() || o.journeys.empty()) {
    usage("--uri, --reference and a journey are needed");
  }
  return o;
}

struct Journey {
  std::string name;
  std::vector<Step> steps;
  std::vector<int> failuresAfter;  // on the reference, after each line
  Json seen;                       // what the reference showed
};

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) usage("cannot read " + path);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

// The procedure a line stands for, as the table names it; nothing for the lines that only
// look (show) or queue an answer for a question still to come.
std::optional<std::string> procedure(const Step& step) {
  using K = Step::Kind;
  const auto first = [&] { return step.words.empty() ? std::string() : " " + step.words[0]; };
  switch (step.kind) {
    case K::Init:
      return "Init";
    case K::Click:
      return "click" + first();
    case K::DoubleClick:
      return "double-click" + first();
    case K::Press:
      return "press" + first();
    case K::Type:
      return "type";
    case K::Paste:
      return "paste";
    case K::Clear:
      return "clear";
    case K::Tick:
      return "tick";
    case K::Host:
      return "host" + first();
    case K::Answer:
    case K::Observation:
    case K::Show:
      return std::nullopt;
  }
  return std::nullopt;
}

Journey reference(const std::string& path, const velmora::DatabaseRef& quiet) {
  Journey j{path, velmora::cli::parseScript(readFile(path), path), {}, {}};
  Player player(quiet, true);
  for (const Step& step : j.steps) {
    player.step(step);
    j.failuresAfter.push_back(player.failures());
  }
  j.seen = player.seen();
  return j;
}

class Tally {
 public:
  void played(const std::string& name, double micros) {
    latencies_[name].push_back(std::llround(micros));
    ++procedures_;
    run_ = 0;
  }
  void failed(const std::string& name, const Json& messages, double at) {
    ++errors_;
    maxRun_ = std::max(maxRun_, ++run_);
    if (samples_.size() < 3) {
      samples_.push_back({{"procedure", name},
                          {"at_seconds", at},
                          {"message", messages.empty() ? Json() : messages.back()["text"]}});
    }
  }
  // The last procedure failed: the planner has yet to show that the next one succeeds.
  bool failing() const { return run_ > 0; }
  // A journey played to its end: right when it showed what the reference showed.
  void finished(const Journey& j, const Json& seen, double at) {
    ++journeys_;
    if (seen == j.seen) return;
    ++wrong_;
    if (wrongSamples_.size() < 2) {
      wrongSamples_.push_back(difference(j, seen));
      wrongSamples_.back()["at_seconds"] = at;
    }
  }
  Json json(const Options& o, double elapsed) const {
    Json lat = Json::object();
    for (const auto& [name, values] : latencies_) lat[name] = values;
    return Json{{"id", o.id},
                {"seconds", elapsed},
                {"journeys", journeys_},
                {"procedures", procedures_},
                {"errors", errors_},
                {"wrong", wrong_},
                // the longest run of failed procedures, and whether the last one succeeded
                {"max_failed_in_a_row", maxRun_},
                {"recovered", run_ == 0},
                {"error_samples", samples_},
                {"wrong_samples", wrongSamples_},
                {"latencies_us", lat}};
  }

 private:
  std::map<std::string, std::vector<long long>> latencies_;
  long long procedures_ = 0, journeys_ = 0, errors_ = 0, wrong_ = 0;
  int run_ = 0, maxRun_ = 0;
  Json samples_ = Json::array();
  Json wrongSamples_ = Json::array();

  // Where a wrong journey first parted from the reference: the line of the show and the
  // parts of the state that differ, or the messages.
  static Json difference(const Journey& j, const Json& seen) {
    const Json& want = j.seen["shows"];
    const Json& got = seen["shows"];
    for (std::size_t i = 0; i < std::min(want.size(), got.size()); ++i) {
      if (want[i] == got[i]) continue;
      Json parts = Json::array();
      for (const auto& [key, value] : want[i]["state"].items()) {
        const Json other = got[i]["state"].value(key, Json());
        if (other == value) continue;
        // a list by its lengths (wanted, got), anything else by its name
        parts.push_back(value.is_array() && other.is_array() ? Json{key, value.size(), other.size()}
                                                             : Json(key));
      }
      return Json{{"journey", j.name}, {"line", want[i]["line"]}, {"differs", parts}};
    }
    return Json{{"journey", j.name}, {"messages", seen["messages"]}};
  }
};

// Plays one journey, timing each procedure; false when a line failed beyond the reference.
bool playOnce(const Journey& j, const velmora::DatabaseRef& db, Tally& tally, Json& seen,
              Clock::time_point runStart) {
  Player player(db, true);
  for (std::size_t i = 0; i < j.steps.size(); ++i) {
    const auto name = procedure(j.steps[i]);
    const auto before = Clock::now();
    player.step(j.steps[i]);
    const std::chrono::duration<double, std::micro> took = Clock::now() - before;
    if (player.failures() > j.failuresAfter[i]) {
      const std::chrono::duration<double> at = Clock::now() - runStart;
      tally.failed(name.value_or("show"), player.seen()["messages"], at.count());
      return false;
    }
    if (name) tally.played(*name, took.count());
  }
  seen = player.seen();
  return true;
}

int run(const Options& o) {
  std::vector<Journey> journeys;
  {
    const velmora::DatabaseRef quiet = velmora::openDatabase(o.reference);
    for (const std::string& path : o.journeys) journeys.push_back(reference(path, quiet));
  }
  Tally tally;
  velmora::DatabaseRef db;
  try {
    db = velmora::openDatabase(o.uri);
  } catch (const velmora::Failure& f) {
    // Refused: the connection itself failed; the line says so and nothing is timed.
    std::cout << Json{{"id", o.id}, {"refused", f.what()}}.dump() << "\n";
    return 1;
  }
  std::cout << Json{{"ready", true}}.dump() << std::endl;
  std::string go;
  std::getline(std::cin, go);
  const auto t0 = Clock::now();
  const auto end = t0 + std::chrono::duration<double>(o.seconds);
  // Past the end, a planner whose last procedure failed goes on (for a while) until one
  // succeeds or fails again: whether the next one succeeds is what a failover promises.
  const auto grace = end + std::chrono::seconds(20);
  for (auto n = static_cast<std::size_t>(o.id);
       Clock::now() < end || (tally.failing() && Clock::now() < grace); ++n) {
    const Journey& j = journeys[n % journeys.size()];
    Json seen;
    const bool wasFailing = tally.failing();
    if (playOnce(j, db, tally, seen, t0)) {
      tally.finished(j, seen, std::chrono::duration<double>(Clock::now() - t0).count());
    }
    if (Clock::now() >= end && wasFailing) break;
  }
  const std::chrono::duration<double> elapsed = Clock::now() - t0;
  std::cout << tally.json(o, elapsed.count()).dump() << "\n";
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const Options o = parse(argc, argv);
  try {
    return run(o);
  } catch (const std::exception& e) {
    std::cerr << "velmora_load_planner: " << e.what() << "\n";
    return 1;
  }
}
