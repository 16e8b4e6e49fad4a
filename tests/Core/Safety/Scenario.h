#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "Core/Safety/Diary.h"

namespace nomely::test {

// One operation on a diary. What it has to leave, however it is disturbed, is read off a run that
// nothing disturbs (Oracle); a scenario only tells where that is too much to ask.
struct Scenario {
  // Does what is left to be done, as a person would who looks at the disk through `sight`: after a
  // failure it is called again. `context` is the one that is disturbed.
  using Run = std::function<void(const StoreContext& context, const StoreContext& sight)>;

  std::string name;
  Run run;
  Tree before = diary().tree;
  // Contents may go without a trace, because that is what is asked for.
  bool destroys = false;
  // Stopped in the middle it is not taken up again: nothing is lost, but some of it is hidden.
  bool strands = false;
  // What could not be done is not always told.
  bool quiet = false;

  friend void PrintTo(const Scenario& scenario, std::ostream* stream) { *stream << scenario.name; }
};

[[nodiscard]] std::vector<Scenario> scenarios();
// Those of them that settle what another machine wrote.
[[nodiscard]] std::vector<Scenario> settlingScenarios();
// Not one of them, since one root or another has to stand whole: RestoreTest judges it.
[[nodiscard]] Scenario restoring(bool canExchange);

}  // namespace nomely::test
