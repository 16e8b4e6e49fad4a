#include <cstdlib>
#include <memory>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "Platform/System/RandomBytes.h"
#include "Platform/System/Uuid.h"
#include "Sync/SyncCheck.h"

namespace nomely {
namespace {

thread_local std::mt19937 identities(1);
thread_local std::size_t timesDrawn = 0;

}  // namespace

// In this program in place of the kernel's, so that a seed tells all of a round.
void fillWithRandom(std::span<std::uint8_t> bytes) {
  for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(identities());
  ++timesDrawn;
}

}  // namespace nomely

namespace nomely::test {
namespace {

struct Counts {
  std::size_t rounds = 0;
  std::size_t actions = 0;
  std::size_t refused = 0;
  std::size_t carried = 0;
  std::size_t conflicts = 0;
  std::size_t mostPasses = 0;               // until nothing changed any more
  std::map<std::string, std::size_t> ends;  // what became of what settling found
};

// Machines with a person at each and an engine between them, from an empty diary to quiet.
class Round {
 public:
  // `folder` is emptied. Rounds share one: the program keeps a lock open for each root it ever had.
  Round(unsigned seed, const fs::path& folder, Counts& counts) : random_(seed), counts_(counts) {
    identities.seed(seed);
    // What was drawn ahead goes.
    for (const std::size_t before = timesDrawn; timesDrawn == before;) (void)Uuid::random();
    constexpr std::array<std::chrono::minutes, 3> skews{
        {{}, std::chrono::minutes(3), -std::chrono::minutes(4)}};
    std::vector<SyncEngine::Machine> machines;
    for (std::size_t i = 0; i < (random_() % 3 == 0 ? 3 : 2); ++i) {
      const fs::path home = folder / std::to_string(i);
      fs::remove_all(home);
      users_.push_back(std::make_unique<SyncUser>(home, skews.at(i), ledger_, random_));
      machines.push_back({users_[i]->root(), users_[i]->clock(), users_[i]->files()});
    }
    rules_ = random_() % 2 == 0 ? SyncEngine::Rules::peers : SyncEngine::Rules::cloud;
    engine_ = std::make_unique<SyncEngine>(rules_, machines, random_);
  }

  // What is wrong in the end.
  std::vector<std::string> run() try {
    for (std::size_t left = 20 + random_() % 40; left > 0; --left) step();
    std::vector<fs::path> roots;
    for (const auto& user : users_) roots.push_back(user->root());
    const bool isQuiet = comeToRest();
    auto faults = syncFaults(roots, rules_, ledger_);
    if (!isQuiet) faults.emplace_back("does not come to rest");
    counts_.conflicts += engine_->conflicts();
    ++counts_.rounds;
    return faults;
  } catch (const std::exception& error) {
    return {error.what()};
  }

  std::string story;

 private:
  void step() {
    const std::size_t who = random_() % users_.size();
    for (const auto& user : users_) user->wait(std::chrono::seconds(random_() % 20));
    const auto dice = random_() % 10;
    if (dice == 0) return engine_->turnLink();
    if (dice == 1) return settle(who, random_() % 4 == 0);
    if (dice > 4) return act(who);
    for (std::size_t files = random_() % 12; files > 0; --files) (void)carry();
  }

  void act(std::size_t who) {
    try {
      const std::string did = users_[who]->act();
      counts_.actions += did.empty() ? 0 : 1;
      tell(who, did);
    } catch (const Error& error) {
      ++counts_.refused;
      tell(who, std::string("refused: ") + error.what());
    }
    engine_->scan(who);
  }

  void settle(std::size_t who, bool isStart) {
    if (isStart) tell(who, users_[who]->start());
    tell(who, users_[who]->settle(counts_.ends));
    engine_->scan(who);
  }

  bool carry() {
    const std::string did = engine_->carryOne();
    story += did.empty() ? "" : did + "\n";
    counts_.carried += did.empty() ? 0 : 1;
    return !did.empty();
  }

  bool comeToRest() {
    constexpr std::size_t mostPasses = 12;
    engine_->joinAll();
    story += "quiet\n";
    std::size_t passes = 0;
    for (std::size_t calm = 0; calm < 2 && passes < mostPasses; ++passes) {
      // Some machines are off for long before they get the rest.
      if (passes > 0 || random_() % 4 == 0)
        for (const auto& user : users_) user->wait(std::chrono::days(2));
      while (carry()) {
      }
      for (std::size_t i = 0; i < users_.size(); ++i) {
        settle(i, true);
        for (std::size_t files = random_() % 3; files > 0; --files) (void)carry();
      }
      calm = passes == 0 || isAnyWaiting() || carry() ? 0 : calm + 1;
    }
    counts_.mostPasses = std::max(counts_.mostPasses, passes);
    return passes < mostPasses;
  }

  [[nodiscard]] bool isAnyWaiting() const {
    return std::ranges::any_of(users_, [](const auto& user) { return user->isWaiting(); });
  }

  void tell(std::size_t who, const std::string& what) {
    if (!what.empty()) story += fmt::format("{}: {}\n", who, what);
  }

  std::mt19937 random_;
  Counts& counts_;
  SyncLedger ledger_;
  std::vector<std::unique_ptr<SyncUser>> users_;
  SyncEngine::Rules rules_{};
  std::unique_ptr<SyncEngine> engine_;
};

unsigned number(const char* variable, unsigned usual) {
  const char* const told = std::getenv(variable);
  return told == nullptr ? usual : static_cast<unsigned>(std::strtoul(told, nullptr, 10));
}

// NOMELY_SYNC_ROUNDS says how many rounds (`tools/dev sync-model` sets it), NOMELY_SYNC_SEED the
// first one's seed: a round that fails prints its own.
TEST(SyncModelTest, MachinesAreAtOneWithNothingLost) {
  constexpr unsigned usual = 200;
  const unsigned first = number("NOMELY_SYNC_SEED", 1);
  const unsigned end = first + number("NOMELY_SYNC_ROUNDS", usual);
  const TemporaryFolder folder(quickParent());
  Counts counts;
  for (unsigned seed = first; seed < end && !HasFailure(); ++seed) {
    Round round(seed, folder.path(), counts);
    const auto faults = round.run();
    EXPECT_TRUE(faults.empty()) << fmt::format("{}{}\nNOMELY_SYNC_SEED={} NOMELY_SYNC_ROUNDS=1",
                                               round.story, fmt::join(faults, "\n"), seed);
  }
  fmt::print(
      "{} rounds: {} actions, {} refused, {} files carried, {} conflicts, at rest after {} "
      "passes\n",
      counts.rounds, counts.actions, counts.refused, counts.carried, counts.conflicts,
      counts.mostPasses);
  for (const auto& [became, count] : counts.ends) fmt::print("{:8} {}\n", count, became);
}

}  // namespace
}  // namespace nomely::test
