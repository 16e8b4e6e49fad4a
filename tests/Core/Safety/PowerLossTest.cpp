#include <algorithm>
#include <array>
#include <iostream>
#include <optional>

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include "Core/Storage/AttachmentManager.h"
#include "Core/Storage/DayStore.h"
#include "Core/Storage/VersionStore.h"
#include "Support/FaultyFileSystem.h"
#include "Support/ForkedRun.h"
#include "Support/ManualClock.h"
#include "Support/Mounts.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;

using Fault = FaultyFileSystem::Fault;
using Mode = FaultyFileSystem::Mode;

enum class Deed { create, createWithFile, commit, dropFile, move, remove, import };

struct Step {
  Deed deed;
  std::size_t memo;  // which of the memos, counted from 0
};

constexpr std::array script{
    Step{Deed::createWithFile, 0}, Step{Deed::create, 1},   Step{Deed::commit, 0},
    Step{Deed::move, 0},           Step{Deed::import, 4},   Step{Deed::create, 2},
    Step{Deed::commit, 1},         Step{Deed::move, 1},     Step{Deed::import, 4},
    Step{Deed::commit, 0},         Step{Deed::remove, 2},   Step{Deed::createWithFile, 3},
    Step{Deed::move, 3},           Step{Deed::dropFile, 3}, Step{Deed::import, 4},
    Step{Deed::dropFile, 0},       Step{Deed::create, 2},
};
constexpr std::size_t memoCount = 5;
constexpr std::size_t imports = 4;  // no memo: the revision counts imported files

// What a memo is after some steps; revision 0: not there.
struct State {
  int revision = 0;
  int dayNumber = 0;

  friend bool operator==(const State&, const State&) = default;
};

using Ledger = std::array<State, memoCount>;

Ledger ledgerAfter(std::size_t steps) {
  Ledger ledger;
  for (std::size_t i = 0; i < steps; ++i) {
    State& state = ledger.at(script.at(i).memo);
    switch (script.at(i).deed) {
      case Deed::create:
      case Deed::createWithFile:
      case Deed::commit:
      case Deed::dropFile:
      case Deed::import:
        ++state.revision;
        break;
      case Deed::move:
        ++state.dayNumber;
        break;
      case Deed::remove:
        state = {};
    }
  }
  return ledger;
}

std::string nameOf(std::size_t memo) {
  return fmt::format("memo {}", memo);
}

std::string bodyOf(std::size_t memo, int revision) {
  return fmt::format("{} revision {}\n{}\n", nameOf(memo), revision, std::string(9000, 'b'));
}

const std::string& fileBytes() {
  static const std::string bytes(20'000, 'f');
  return bytes;
}

Day dayOf(int number) {
  return day("2026-03-01").plusDays(number);
}

std::vector<Memo> copiesOf(const DayStore& store, Day each, std::size_t memo) {
  std::vector<Memo> memos = store.listMemos(each);
  std::erase_if(memos, [&](const Memo& found) { return found.tags != std::vector{nameOf(memo)}; });
  return memos;
}

// Not on the disk that loses its power.
fs::path photoFile(const StoreContext& context) {
  return context.paths.rootURL.parent_path().parent_path() / "photo.jpg";
}

void perform(const StoreContext& context, const Step& step, const State& before) {
  const DayStore store(context);
  const Day today = dayOf(before.dayNumber);
  if (step.deed == Deed::import) {
    (void)AttachmentManager(context).importFile(photoFile(context), today);
    return;
  }
  if (before.revision == 0) {
    DayStore::NewMemo content{.body = bodyOf(step.memo, 1), .tags = {nameOf(step.memo)}};
    if (step.deed == Deed::createWithFile)
      content.attachments.push_back(
          AttachmentStorage::save(context, fileBytes(), "bin", context.paths.dayFolder(today))
              .value());
    (void)store.createMemo(today, content);
    return;
  }
  const Memo current = copiesOf(store, today, step.memo).at(0);
  Memo changed = current;
  changed.body = bodyOf(step.memo, before.revision + 1);
  if (step.deed == Deed::dropFile) changed.attachments.clear();
  if (step.deed == Deed::commit || step.deed == Deed::dropFile)
    store.commitMemo(changed, today, current);
  if (step.deed == Deed::move) (void)store.moveMemo(current, today, dayOf(before.dayNumber + 1));
  if (step.deed == Deed::remove) store.deleteMemo(today, current);
}

// A number that a child process counts up and this one reads.
class SharedCounter {
 public:
  SharedCounter()
      : value_(
            static_cast<std::size_t*>(::mmap(nullptr, sizeof(std::size_t), PROT_READ | PROT_WRITE,
                                             MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {}
  ~SharedCounter() { ::munmap(value_, sizeof(std::size_t)); }
  SharedCounter(const SharedCounter&) = delete;
  SharedCounter& operator=(const SharedCounter&) = delete;

  std::size_t& operator*() { return *value_; }

 private:
  std::size_t* value_;
};

// One machine whose power goes over and over. Lives in a process with mounts of its own; whatever
// touches the disk is a child of that one, so that nothing keeps the disk from being unmounted.
class Machine {
 public:
  Machine() : image_(folder_.path() / "disk", std::uintmax_t{32} << 20) {
    fs::create_directory(disk_);
    writeFile(folder_.path() / "photo.jpg", fileBytes());
  }

  [[nodiscard]] const std::string& device() const { return image_.device(); }
  [[nodiscard]] const fs::path& disk() const { return disk_; }

  // How many calls the whole script makes.
  std::size_t callCount() {
    const Mount mount(source(), disk_);
    EXPECT_EQ(runInChild([&] { *calls_ = perform({}); }), ChildEnd{});
    EXPECT_EQ(*acknowledged_, script.size());
    return *calls_;
  }

  void runUntilCutAt(Fault fault) {
    {
      Mount mount(source(), disk_);
      fault.onStrike = [&] { cutPower(disk_); };
      fault.lasting = true;
      EXPECT_EQ(runInChild([&] {
                  (void)perform(fault);
                  if (*acknowledged_ == script.size()) cutPower(disk_);
                }),
                ChildEnd{});
      mount.unmount();
    }
    Mount mount(source(), disk_);
    EXPECT_EQ(runInChild([&] { check(*acknowledged_); }), ChildEnd{});
    mount.unmount();
  }

 private:
  [[nodiscard]] Mount::Source source() const { return {.type = "ext4", .device = image_.device()}; }

  // Goes through the script on an empty root until something fails, and tells the calls it made.
  std::size_t perform(const Fault& fault) {
    fs::remove_all(disk_ / "root");
    *acknowledged_ = 0;
    FaultyFileSystem files(posixFileSystem(), fault);
    const StoreContext context{{disk_ / "root"}, FileManager(files), clock_};
    try {
      for (const Step& step : script) {
        test::perform(context, step, ledgerAfter(*acknowledged_).at(step.memo));
        ++*acknowledged_;
      }
    } catch (const std::exception&) {
      // The power is gone, and with it whatever the step would have read.
    }
    return files.calls().size();
  }

  void check(std::size_t acknowledged) {
    const StoreContext context{{disk_ / "root"}, FileManager(posixFileSystem()), clock_};
    const DayStore store(context);
    const Ledger sure = ledgerAfter(acknowledged);
    const Ledger possible = ledgerAfter(std::min(acknowledged + 1, script.size()));
    for (const Day each : store.listAllDates())
      for (const std::int64_t number : store.listNumbers(each))
        EXPECT_NO_THROW((void)store.memoStore().read(each, number).value())
            << each.string() << "/" << number;
    for (std::size_t memo = 0; memo < imports; ++memo)
      checkMemo(store, memo, {sure.at(memo), possible.at(memo)});
    EXPECT_GE(importedFiles(store), sure.at(imports).revision);
    (void)store.createMemo(dayOf(0), {.body = "the power is back\n"});
  }

  // The memo is in one of the two states; in both only while it moves.
  static void checkMemo(const DayStore& store, std::size_t memo,
                        const std::pair<State, State>& states) {
    SCOPED_TRACE(nameOf(memo));
    const auto& [sure, possible] = states;
    std::size_t count = 0;
    for (int number = 0; number < 3; ++number) {
      for (const Memo& found : copiesOf(store, dayOf(number), memo)) {
        ++count;
        EXPECT_TRUE(found.body == bodyOf(memo, sure.revision) ||
                    found.body == bodyOf(memo, possible.revision))
            << found.body.substr(0, 40);
        EXPECT_TRUE(number == sure.dayNumber || number == possible.dayNumber);
        checkFiles(store, dayOf(number), found);
      }
    }
    const bool moving = sure.revision == possible.revision && sure.dayNumber != possible.dayNumber;
    EXPECT_GE(count, sure.revision > 0 && possible.revision > 0 ? 1U : 0U) << "lost";
    EXPECT_LE(count, moving ? 2U : (sure == State{} && possible == State{}) ? 0U : 1U);
  }

  static int importedFiles(const DayStore& store) {
    const fs::path folder = store.paths().dayFolder(dayOf(0));
    int count = 0;
    if (!fs::exists(folder)) return count;
    for (const DirectoryEntry& entry : store.context().files.listVisible(folder)) {
      if (!entry.name.ends_with(".jpg")) continue;
      EXPECT_EQ(readFile(folder / entry.name), fileBytes());
      ++count;
    }
    return count;
  }

  // What the memo names lies beside it; what it has let go of, among its snapshots.
  static void checkFiles(const DayStore& store, Day each, const Memo& memo) {
    for (const std::string& name : memo.attachments)
      EXPECT_EQ(readFile(store.paths().dayFolder(each) / name), fileBytes());
    const bool hadFile = memo.tags == std::vector{nameOf(0)} || memo.tags == std::vector{nameOf(3)};
    if (!hadFile || !memo.attachments.empty()) return;
    const fs::path kept =
        VersionStore(store.context()).identityDirectory(*memo.memoId) / "attachments";
    ASSERT_TRUE(fs::exists(kept));
    const auto files = store.context().files.listVisible(kept);
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(readFile(kept / files[0].name), fileBytes());
  }

  TemporaryFolder folder_{quickParent()};
  fs::path disk_ = folder_.path() / "mounted";
  Ext4Image image_;
  ManualClock clock_;
  SharedCounter acknowledged_;
  SharedCounter calls_;
};

constexpr std::size_t cycles = 100;

TEST(PowerLossTest, WhatWasReportedAsSavedIsThere) {
  const ChildEnd end = runInChild([] {
    if (const auto reason = takePrivateMounts()) GTEST_SKIP() << *reason;
    std::optional<Machine> machine;
    try {
      machine.emplace();
      const Mount probe({.type = "ext4", .device = machine->device()}, machine->disk());
    } catch (const std::system_error& error) {
      GTEST_SKIP() << "no ext4 on a loop device here: " << error.what();
    }
    const std::size_t calls = machine->callCount();
    for (std::size_t i = 0; i < cycles; ++i) {
      const Fault fault{.mode = i % 2 == 0 ? Mode::fail : Mode::failLate,
                        .atCall = 1 + i * calls / (cycles - 1)};
      SCOPED_TRACE(fmt::format("power cut at call {} of {}", fault.atCall, calls));
      machine->runUntilCutAt(fault);
      if (testing::Test::HasFailure()) return;
    }
    std::cout << fmt::format("{} power cuts over {} calls\n", cycles, calls);
  });
  if (end == skippedInChild) GTEST_SKIP() << "for the reason above";
  EXPECT_EQ(end, ChildEnd{});
}

}  // namespace
}  // namespace nomely::test
