#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace nomely::bench {

// What is measured says little by itself, on a machine that does other things too. So each subject
// comes with a floor that does no more than what can't be avoided, and both take turns step by
// step: what slows the machine for a while slows both. Medians of the steps are compared.

struct Steps {
  using Step = std::function<void(std::size_t turn)>;

  Step floor = {};               // absent: only ours is told
  Step ours;                     // for the same turn does the same work as the floor
  std::function<void()> tidy{};  // after each step of either, untimed
  std::size_t units = 1;         // how many of what is measured a step does
  double bytes = 0;              // that a step goes through, where that is of interest
  std::string note{};            // to be told beside the times
  // The memory that the latest step took, where that is measured in place of its time.
  std::function<double()> bytesTaken{};
};

// Bounds that a result is held to; absent: told for information.
struct Goal {
  std::optional<double> ratio = {};               // of ours to the floor, at most
  std::optional<double> perSecond = {};           // ours, at least
  std::optional<double> millisecondsBeyond = {};  // ours less the floor, at most
};

// Thrown by `prepare` when something that the comparison needs isn't there.
class Skipped : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Comparison {
  std::string what;
  std::function<Steps()> prepare;
  Goal goal = {};
  std::size_t turns = 0;  // 0: as many as a second holds, at least five
};

// Makes the comparison known to the benchmark library.
void registerComparison(Comparison comparison);

// The subjects, one file each.
void registerParsing();
void registerWriting();
void registerProcesses();
void registerText();
void registerSearching();
void registerColdReading();
void registerMarkdown();
void registerPages();
void registerMedia();
void registerImports();
void registerSummaries();
void registerFrames();
void registerBot();
void registerBackups();
void registerUpkeep();

// A row for each comparison that was run, and how many were skipped or cut short. Returns whether
// none was cut and all their goals are met.
bool printTable();

}  // namespace nomely::bench
