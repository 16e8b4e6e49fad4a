#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "Core/Safety/Diary.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {

// What may become of a memo while an operation on the diary is disturbed.
struct Fate {
  enum class Survival { required, optional };

  std::vector<Memo> states;  // it is one of these, but for its number
  std::vector<Day> days;     // in at least one of these
  Survival survival = Survival::required;
};

// One operation on the diary, and what has to hold of it however it ends.
struct Scenario {
  using Check = std::function<void(const StoreContext&)>;

  std::string name;
  // Whether it reported success. An Error that it throws is a reported failure.
  std::function<bool(const StoreContext&)> run;
  // What a person does about a failure, looking at what is there; run() when empty.
  Check repeat = {};
  // Holds whenever success was reported.
  Check done;
  // Holds after a run that nothing disturbed.
  Check tidy = {};
  // Holds at any time.
  Check always = {};

  // By memoId; those left out stay as they are. A fate under "" is that of a memo yet to be made.
  std::map<std::string, Fate> fates = {};
  // Files, below the root, that may change or go. All others stay as they are.
  std::vector<std::string> touched = {};
  // Contents that new files may have, besides those of the diary.
  std::vector<std::string> contents = {};
  // A folder below the root where attachments may lie instead of beside their memo.
  std::string attachmentsIn = {};
  // Further files of the diary, contents by path below the root.
  std::map<std::string, std::string> extra = {};
};

void PrintTo(const Scenario& scenario, std::ostream* stream);

[[nodiscard]] std::vector<Scenario> scenarios(const Diary& diary);

// A scenario with a diary on disk that is copied for each run.
class Stage {
 public:
  Stage(const Diary& diary, const Scenario& scenario);

  [[nodiscard]] const Diary& diary() const { return diary_; }
  [[nodiscard]] const Scenario& scenario() const { return scenario_; }
  // A fresh copy, for its own root.
  [[nodiscard]] std::filesystem::path copy();
  // Expects that nothing is lost, half written, or changed beside what the scenario may change.
  void checkIntact(const StoreContext& context) const;
  // Expects that the operation can be done once more, and that the sweep then leaves nothing
  // behind. For a run that ended early.
  void checkRepeats(const StoreContext& context) const;

 private:
  void checkFiles(const StoreContext& context) const;
  void checkMemos(const StoreContext& context) const;
  void checkAttachments(const StoreContext& context, Day day, const Memo& memo) const;
  [[nodiscard]] std::filesystem::path placeOf(const StoreContext& context, Day day,
                                              const std::string& attachment) const;
  [[nodiscard]] std::string fateOf(Day day, const Memo& memo) const;

  const Diary& diary_;
  const Scenario& scenario_;
  TemporaryFolder folder_{quickParent()};
  std::map<std::string, std::string> files_;  // by path below the root
  std::map<std::string, Fate> fates_;
  int copies_ = 0;
};

// Whether two memos are one but for their numbers; `state` may lack an identity.
[[nodiscard]] bool sameButForNumber(const Memo& memo, const Memo& state);

// The regular files below `folder`, temporaries of ours left out, contents by path.
[[nodiscard]] std::map<std::string, std::string> filesBelow(const std::filesystem::path& folder);

}  // namespace nomely::test
