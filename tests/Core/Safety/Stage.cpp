#include <algorithm>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "Core/Lifecycle/TemporaryFileSweep.h"
#include "Core/Safety/Scenario.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;

bool holds(const std::vector<std::string>& list, const std::string& text) {
  return std::ranges::find(list, text) != list.end();
}

}  // namespace

void PrintTo(const Scenario& scenario, std::ostream* stream) {
  *stream << scenario.name;
}

bool sameButForNumber(const Memo& memo, const Memo& state) {
  Memo wanted = state;
  wanted.seqNumber = memo.seqNumber;
  if (!wanted.memoId) wanted.memoId = memo.memoId;
  return memo == wanted;
}

std::map<std::string, std::string> filesBelow(const fs::path& folder) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder))
    if (entry.is_regular_file() && !FileManager::isTemporaryName(entry.path().filename().native()))
      files[entry.path().lexically_relative(folder).string()] = readFile(entry.path());
  return files;
}

Stage::Stage(const Diary& diary, const Scenario& scenario)
    : diary_(diary), scenario_(scenario), fates_(scenario.fates) {
  const fs::path original = folder_.path() / "original";
  diary.writeTo(original);
  for (const auto& [name, text] : scenario.extra) writeFile(original / "root" / name, text);
  files_ = filesBelow(original / "root");
  for (const Diary::Entry& entry : diary.entries())
    fates_.insert({entry.memo.memoId.value(), {.states = {entry.memo}, .days = {entry.day}}});
}

fs::path Stage::copy() {
  const fs::path folder = folder_.path() / std::to_string(++copies_);
  // Linked, because files are replaced and never changed in place; whoever did would be found out.
  fs::copy(folder_.path() / "original", folder,
           fs::copy_options::recursive | fs::copy_options::create_hard_links);
  return folder;
}

void Stage::checkIntact(const StoreContext& context) const {
  checkFiles(context);
  checkMemos(context);
  if (scenario_.always) scenario_.always(context);
}

void Stage::checkFiles(const StoreContext& context) const {
  const auto now = filesBelow(context.paths.rootURL);
  for (const auto& [name, text] : files_)
    EXPECT_TRUE(holds(scenario_.touched, name) || now.contains(name)) << "gone: " << name;
  std::vector<std::string> known = scenario_.contents;
  for (const auto& [name, text] : files_) known.push_back(text);
  for (const auto& [name, text] : now) {
    const auto before = files_.find(name);
    if (before != files_.end() && !holds(scenario_.touched, name)) {
      EXPECT_EQ(text, before->second) << "changed: " << name;
    } else if (fates_.contains("") && DiskPaths::seqNumber(fs::path(name).filename().native())) {
      // A new memo: only its reader can tell, because its identity is drawn.
    } else {
      EXPECT_TRUE(holds(known, text)) << "not whole: " << name << "\n" << text;
    }
  }
}

void Stage::checkMemos(const StoreContext& context) const {
  const DayStore store(context);
  std::map<std::string, int> counts;
  for (const Day each : store.listAllDates()) {
    for (const std::int64_t number : store.listNumbers(each)) {
      try {
        const Memo memo = store.memoStore().read(each, number).value();
        const std::string fate = fateOf(each, memo);
        ++counts[fate];
        ASSERT_TRUE(fates_.contains(fate)) << each.string() << "/" << number << "\n" << memo.body;
        checkAttachments(context, each, memo);
      } catch (const std::exception& error) {
        ADD_FAILURE() << each.string() << "/" << number << " is no memo: " << error.what();
      }
    }
  }
  for (const auto& [id, fate] : fates_)
    EXPECT_TRUE(fate.survival == Fate::Survival::optional || counts[id] >= 1)
        << "lost: " << fate.states.front().body;
}

void Stage::checkAttachments(const StoreContext& context, Day day, const Memo& memo) const {
  for (const std::string& name : memo.attachments) {
    const fs::path file = placeOf(context, day, name);
    if (!fs::exists(file))
      ADD_FAILURE() << memo.body.substr(0, 20) << " lacks " << name;
    else
      EXPECT_EQ(readFile(file), diary_.attachments.at(name));
  }
}

fs::path Stage::placeOf(const StoreContext& context, Day day, const std::string& attachment) const {
  fs::path usual = context.paths.dayFolder(day) / attachment;
  const fs::path other = context.paths.rootURL / scenario_.attachmentsIn;
  if (fs::exists(usual) || scenario_.attachmentsIn.empty() || !fs::exists(other)) return usual;
  for (const auto& [name, bytes] : filesBelow(other))
    if (fs::path(name).filename() == attachment) return other / name;
  return usual;
}

std::string Stage::fateOf(Day day, const Memo& memo) const {
  for (const auto& [id, fate] : fates_)
    if (std::ranges::find(fate.days, day) != fate.days.end() &&
        std::ranges::any_of(fate.states,
                            [&](const Memo& state) { return sameButForNumber(memo, state); }))
      return id;
  return "unknown";
}

void Stage::checkRepeats(const StoreContext& context) const {
  if (scenario_.repeat)
    scenario_.repeat(context);
  else
    EXPECT_TRUE(scenario_.run(context));
  scenario_.done(context);
  sweepTemporaryFiles(context, {});
  for (const auto& entry : fs::recursive_directory_iterator(context.paths.rootURL))
    EXPECT_FALSE(FileManager::isTemporaryName(entry.path().filename().native()))
        << "left behind: " << entry.path();
  checkIntact(context);
}

}  // namespace nomely::test
