#include "bench/Comparison.h"

#include <algorithm>
#include <chrono>
#include <memory>

#include <fmt/format.h>

#include "bench/Random.h"

namespace nomely::bench {
namespace {

using Seconds = std::chrono::duration<double>;

struct Samples {
  std::vector<double> floor;  // seconds for each step, or bytes
  std::vector<double> ours;
};

// A comparison and what its run gave.
struct Result {
  Comparison comparison;
  Samples samples = {};
  std::size_t units = 1;
  double bytes = 0;
  std::string note = {};
  bool isMemory = false;
  std::string skipped = {};
  std::string cut = {};  // why it took fewer turns than it should
};

std::vector<std::unique_ptr<Result>>& results() {
  static std::vector<std::unique_ptr<Result>> all;
  return all;
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::ranges::nth_element(values, middle);
  return *middle;
}

double timed(const Steps::Step& step, std::size_t turn) {
  const auto start = std::chrono::steady_clock::now();
  step(turn);
  return Seconds(std::chrono::steady_clock::now() - start).count();
}

// Whether the turns that the comparison names were taken, or as many as a second holds.
bool isEnough(const Result& result, double seconds) {
  constexpr std::size_t least = 5;
  const std::size_t taken = result.samples.ours.size();
  return result.comparison.turns > 0 ? taken >= result.comparison.turns
                                     : taken >= least && seconds >= 1;
}

void takeTurns(const Steps& steps, Result& result) {
  // The whole set is to end within minutes, whatever becomes of one row.
  constexpr Seconds longest{30};
  const auto begun = std::chrono::steady_clock::now();
  Random order(1);
  std::size_t turn = 0;
  double seconds = 0;
  const auto run = [&](const Steps::Step& step, std::vector<double>& times) {
    if (!step) return;
    times.push_back(timed(step, turn));
    seconds += times.back();
    if (steps.bytesTaken) times.back() = steps.bytesTaken();
    if (steps.tidy) steps.tidy();
  };
  while (!isEnough(result, seconds)) {
    if (turn > 0 && std::chrono::steady_clock::now() - begun > longest) {
      result.cut = fmt::format("cut after {} steps", turn);
      return;
    }
    const bool floorFirst = order.percent(50);
    if (floorFirst) run(steps.floor, result.samples.floor);
    run(steps.ours, result.samples.ours);
    if (!floorFirst) run(steps.floor, result.samples.floor);
    ++turn;
  }
}

void measure(benchmark::State& state, Result& result) {
  try {
    const Steps steps = result.comparison.prepare();
    result.units = steps.units;
    result.bytes = steps.bytes;
    result.note = steps.note;
    result.isMemory = static_cast<bool>(steps.bytesTaken);
    for (auto iteration : state) {
      (void)iteration;
      takeTurns(steps, result);
      state.SetIterationTime(median(result.samples.ours));
    }
  } catch (const Skipped& reason) {
    result.skipped = reason.what();
    state.SkipWithError(reason.what());
  } catch (const std::exception& reason) {
    result.cut = fmt::format("cut after {} steps: {}", result.samples.ours.size(), reason.what());
    state.SkipWithError(reason.what());
  }
}

std::string figure(const Result& result, double seconds) {
  if (result.isMemory) return fmt::format("{:.1f} MB", seconds / 1e6);
  return seconds < 1e-3 ? fmt::format("{:.1f} us", seconds * 1e6)
                        : fmt::format("{:.2f} ms", seconds * 1e3);
}

struct Verdict {
  std::string text = {};
  bool met = true;

  void add(const std::string& goal, bool isMet) {
    tell(fmt::format("{}: {}", goal, isMet ? "met" : "MISSED"));
    met = met && isMet;
  }
  void tell(const std::string& figure) { text += (text.empty() ? "" : ", ") + figure; }
};

Verdict judge(const Goal& goal, std::optional<double> floor, double ours) {
  Verdict verdict;
  if (goal.ratio && floor)
    verdict.add(fmt::format("ratio <= {:.2f}", *goal.ratio), ours / *floor <= *goal.ratio);
  if (goal.perSecond && floor && 1 / *floor < *goal.perSecond)
    verdict.tell(fmt::format("{:.0f} a second (the disk gives {:.0f})", 1 / ours, 1 / *floor));
  else if (goal.perSecond)
    verdict.add(fmt::format(">= {:.0f} a second (is {:.0f})", *goal.perSecond, 1 / ours),
                1 / ours >= *goal.perSecond);
  if (goal.millisecondsBeyond && floor) {
    const double beyond = (ours - *floor) * 1e3;
    verdict.add(fmt::format("<= {:.0f} ms beyond (is {:.2f})", *goal.millisecondsBeyond, beyond),
                beyond <= *goal.millisecondsBeyond);
  }
  return verdict;
}

// Returns whether the goals are met.
bool printRow(const Result& result) {
  const auto units = static_cast<double>(result.units);
  std::optional<double> floor;
  if (!result.samples.floor.empty()) floor = median(result.samples.floor) / units;
  const double ours = median(result.samples.ours) / units;
  Verdict verdict = judge(result.comparison.goal, floor, ours);
  if (result.bytes > 0) verdict.tell(fmt::format("{:.0f} MB/s", result.bytes / units / ours / 1e6));
  if (!result.note.empty()) verdict.tell(result.note);
  if (!result.cut.empty()) verdict.tell(result.cut);
  fmt::print("{:<52} {:>11} {:>11} {:>6}  {}\n", result.comparison.what,
             floor ? figure(result, *floor) : "-", figure(result, ours),
             floor ? fmt::format("{:.2f}", ours / *floor) : "-", verdict.text);
  return verdict.met;
}

}  // namespace

void registerComparison(Comparison comparison) {
  Result& result = *results().emplace_back(std::make_unique<Result>(std::move(comparison)));
  auto* const registered =
      benchmark::RegisterBenchmark(result.comparison.what.c_str(),
                                   [&result](benchmark::State& state) { measure(state, result); });
  // One iteration is all the turns: the library's way of finding out how many there should be
  // prepares and runs everything several times.
  registered->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
}

bool printTable() {
  bool meetsGoals = true;
  std::size_t ran = 0;
  std::size_t skipped = 0;
  std::size_t cut = 0;
  fmt::print("\n{:<52} {:>11} {:>11} {:>6}  goal\n", "what (medians of steps)", "floor", "ours",
             "ratio");
  for (const auto& result : results()) {
    cut += result->cut.empty() ? 0 : 1;
    if (!result->skipped.empty()) {
      ++skipped;
      fmt::print("{:<52} skipped: {}\n", result->comparison.what, result->skipped);
    } else if (!result->samples.ours.empty()) {
      ++ran;
      meetsGoals = printRow(*result) && meetsGoals;
    } else if (!result->cut.empty()) {
      fmt::print("{:<52} {}\n", result->comparison.what, result->cut);
    }
  }
  fmt::print("{} of {} ran, {} skipped, {} cut short\n", ran, results().size(), skipped, cut);
  return meetsGoals && cut == 0;
}

}  // namespace nomely::bench
