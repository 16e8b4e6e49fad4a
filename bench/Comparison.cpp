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
  std::vector<double> floor;  // seconds for each step
  std::vector<double> ours;
};

// A comparison and what its run gave.
struct Result {
  Comparison comparison;
  Samples samples = {};
  std::size_t units = 1;
  double bytes = 0;
  std::string note = {};
  std::string skipped = {};
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

void takeTurns(benchmark::State& state, const Steps& steps, Samples& samples) {
  Random order(1);
  std::size_t turn = 0;
  const auto run = [&](const Steps::Step& step, std::vector<double>& times) {
    if (!step) return;
    times.push_back(timed(step, turn));
    if (steps.tidy) steps.tidy();
  };
  for (auto iteration : state) {
    (void)iteration;
    const bool floorFirst = order.percent(50);
    if (floorFirst) run(steps.floor, samples.floor);
    run(steps.ours, samples.ours);
    if (!floorFirst) run(steps.floor, samples.floor);
    state.SetIterationTime(samples.ours.back());
    ++turn;
  }
}

void measure(benchmark::State& state, Result& result) {
  try {
    const Steps steps = result.comparison.prepare();
    // The library tries fewer iterations first; its last attempt counts.
    result.samples = {};
    result.units = steps.units;
    result.bytes = steps.bytes;
    result.note = steps.note;
    takeTurns(state, steps, result.samples);
  } catch (const std::exception& reason) {
    result.skipped = reason.what();
    state.SkipWithError(reason.what());
  }
}

std::string duration(double seconds) {
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
  fmt::print("{:<52} {:>11} {:>11} {:>6}  {}\n", result.comparison.what,
             floor ? duration(*floor) : "-", duration(ours),
             floor ? fmt::format("{:.2f}", ours / *floor) : "-", verdict.text);
  return verdict.met;
}

}  // namespace

void registerComparison(Comparison comparison) {
  Result& result = *results().emplace_back(std::make_unique<Result>(std::move(comparison)));
  auto* const registered =
      benchmark::RegisterBenchmark(result.comparison.what.c_str(),
                                   [&result](benchmark::State& state) { measure(state, result); });
  registered->UseManualTime();
  if (result.comparison.turns > 0)
    registered->Iterations(static_cast<benchmark::IterationCount>(result.comparison.turns));
}

bool printTable() {
  bool meetsGoals = true;
  fmt::print("\n{:<52} {:>11} {:>11} {:>6}  goal\n", "what (medians of steps)", "floor", "ours",
             "ratio");
  for (const auto& result : results()) {
    if (!result->skipped.empty())
      fmt::print("{:<52} skipped: {}\n", result->comparison.what, result->skipped);
    else if (!result->samples.ours.empty())
      meetsGoals = printRow(*result) && meetsGoals;
  }
  return meetsGoals;
}

}  // namespace nomely::bench
