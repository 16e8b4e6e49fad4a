#pragma once

#include <array>
#include <fstream>
#include <map>
#include <random>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "Core/Lifecycle/Maintenance/StartupMaintenance.h"
#include "Core/Lifecycle/Settling/RootSettling.h"
#include "Core/Storage/ConfigStore.h"
#include "Core/Storage/DraftStore.h"
#include "Core/Storage/TagConfig.h"
#include "Support/ManualClock.h"
#include "Sync/SyncEngine.h"

namespace nomely::test {

// What was stored on any machine: a word of each state, by which it is found again.
struct SyncLedger {
  struct State {
    std::string memoId;  // empty: of a text that was no note yet, or of something else
    std::string word;
  };
  // The words in a text.
  [[nodiscard]] static std::vector<std::string> wordsIn(std::string_view text) {
    constexpr std::string_view mark = "word";
    std::vector<std::string> words;
    for (auto at = text.find(mark); at != std::string_view::npos; at = text.find(mark, at + 1)) {
      const auto end = text.find_first_not_of("0123456789", at + mark.size());
      if (end != std::string_view::npos && text[end] == '.')
        words.emplace_back(text.substr(at, end + 1 - at));
    }
    return words;
  }

  std::vector<State> saved;
  std::set<std::string> givenUp;            // words that their writer replaced or threw away
  std::map<std::string, unsigned> changes;  // of each note, whose history holds only so many
};

// Somebody at one of the machines, who does one thing or another, and the program there.
class SyncUser {
 public:
  SyncUser(const fs::path& home, std::chrono::seconds clockIsAhead, SyncLedger& ledger,
           std::mt19937& random)
      : home_(home),
        context_({home / "root"}, FileManager(files_), clock_),
        defaults_(home / "state", context_.files),
        ledger_(ledger),
        random_(random) {
    fs::create_directories(root());
    wait(clockIsAhead);
  }

  // Does something and says what; empty when there was nothing to do it with.
  std::string act() {
    // As often as a letter stands here.
    constexpr std::string_view habits = "CCCCCCeeeeeeeeppttaaaddmmmxxxxRRRvvHhDfK";
    switch (const char habit = habits[random_() % habits.size()]) {
      case 'C':
        return createNote();
      case 'R':
        return restoreNote();
      case 'H':
        return writeByHand();
      case 'D':
        return typeDraft();
      case 'K':
        return colourTag();
      default:
        return changeNote(habit);
    }
  }

  // What the program does by itself: settle what it finds, counting what became of it, or all that
  // it does at a start.
  std::string settle(std::map<std::string, std::size_t>& ends) {
    std::string told = "settle";
    const SettlingResult result = RootSettling(service_).run({});
    isWaiting_ = result.isWaiting;
    for (const auto& [path, end] : result.told) {
      told += fmt::format("\n   {}: {}", path.string(), end);
      // Without the numbers of notes.
      ++ends[std::regex_replace(end, std::regex("[-0-9A-F]{8}[.][a-z0-9]+|[-0-9_/a-f]{3,}"), "#")];
    }
    return told;
  }

  std::string start() {
    (void)StartupMaintenance(service_, defaults_, {}).run({});
    return "start";
  }

  void wait(std::chrono::seconds time) { clock_.advance(time); }
  [[nodiscard]] const fs::path& root() const { return context_.paths.rootURL; }
  [[nodiscard]] const ManualClock& clock() const { return clock_; }
  [[nodiscard]] SyncFiles& files() { return files_; }
  // Whether there was something too young to be settled.
  [[nodiscard]] bool isWaiting() const { return isWaiting_; }

 private:
  [[nodiscard]] Day anyDay() { return day(fmt::format("2090-03-0{}", 1 + random_() % 3)); }

  // A new word, which the ledger has from then on.
  std::string newWord(const std::optional<std::string>& memoId = {}) {
    const std::string word = fmt::format("word{}.", ledger_.saved.size());
    ledger_.saved.push_back({memoId.value_or(""), word});
    return word;
  }

  fs::path newFile() {
    constexpr std::array extensions{"jpg", "m4a", "md", "txt"};
    fs::path file = home_ / fmt::format("file.{}", extensions.at(random_() % extensions.size()));
    writeFile(file, newWord());
    return file;
  }

  void giveUp(std::string_view text) {
    for (std::string& word : SyncLedger::wordsIn(text)) ledger_.givenUp.insert(std::move(word));
  }

  std::string createNote() {
    const Day day = anyDay();
    std::vector<fs::path> files;
    if (random_() % 4 == 0) files.push_back(newFile());
    const std::string word = newWord();
    const Memo memo = service_.create(day, {.body = word}, files);
    ledger_.saved.back().memoId = *memo.memoId;
    return fmt::format("create {}/{} {} {}", day.string(), memo.seqNumber, *memo.memoId, word);
  }

  std::string restoreNote() {
    const std::vector<TrashEntry> entries = service_.trashed();
    if (entries.empty()) return "";
    const TrashEntry& entry = entries[random_() % entries.size()];
    return fmt::format("restore {} to {}", entry.trashSubdir, service_.restore(entry).string());
  }

  std::string writeByHand() {
    MemoPlace place{anyDay(), 901};
    while (fs::exists(context_.paths.memoFile(place.day, place.seqNumber))) ++place.seqNumber;
    const std::string word = newWord();
    writeFile(context_.paths.memoFile(place.day, place.seqNumber),
              fmt::format("---\ntime: '10:00'\n# by hand\n---\n\n{}\n", word));
    return fmt::format("write {} {}", place.string(), word);
  }

  std::string typeDraft() {
    const DraftStore drafts(context_);
    const auto former = drafts.loadQuickInputDraft();
    if (former) giveUp(former->text);
    QuickInputDraft draft;
    if (!former || random_() % 2 == 0) draft.text = newWord();
    draft.selectedDate = day("2090-03-03");
    draft.updatedAt = clock_.now();
    drafts.saveQuickInputDraft(draft);
    return "type " + draft.text;
  }

  std::string colourTag() {
    const std::string word = newWord();
    (void)ConfigStore(context_).change(TagConfig::fileName, TagConfig(),
                                       [&](TagConfig& tags) { tags.colors[word] = "red"; });
    return "colour " + word;
  }

  std::string changeNote(char how) {
    constexpr unsigned most = 12;
    const Day day = anyDay();
    const std::vector<Memo> memos = service_.days().listMemos(day);
    if (memos.empty()) return "";
    const Memo& memo = memos[random_() % memos.size()];
    if (++ledger_.changes[memo.memoId.value_or("")] > most) return "";
    const std::size_t states = ledger_.saved.size();
    if (!changeText(how, day, memo) && !changePlace(how, day, memo)) return "";
    return fmt::format("{} {}/{} {}", how, day.string(), memo.seqNumber,
                       states < ledger_.saved.size() ? ledger_.saved.back().word : "");
  }

  // False when that can't be done with this one.
  bool changeText(char how, Day day, const Memo& memo) {
    switch (how) {
      case 'e': {
        const std::string word = newWord(memo.memoId);
        (void)service_.edit(day, memo, random_() % 2 == 0 ? word : memo.body + "\n" + word);
        return true;
      }
      case 'h':  // by hand
        std::ofstream(context_.paths.memoFile(day, memo.seqNumber), std::ios::app)
            << "\n"
            << newWord(memo.memoId);
        return true;
      case 'p':
        (void)service_.change(day, memo, [](Memo& it) { it.setPinned(!it.pinned); });
        return true;
      case 't':
        (void)service_.change(day, memo, [&](Memo& it) { it.tags = {newWord(memo.memoId)}; });
        return true;
      case 'f': {  // in the focus editor
        const DraftStore drafts(context_);
        const auto former = drafts.loadFocusDraft(day, memo.seqNumber, memo.memoId);
        if (former) giveUp(former->bodyText);
        FocusMemoDraft draft{.memoId = memo.memoId, .baseMemo = memo, .bodyText = newWord()};
        draft.updatedAt = clock_.now();
        drafts.saveFocusDraft(draft, day, memo.seqNumber);
        return true;
      }
      case 'v': {
        const auto versions = service_.versions().listVersions(day, memo.seqNumber, memo.memoId);
        if (versions.empty()) return false;
        const VersionEntry& version = versions[random_() % versions.size()];
        // Files that the snapshot doesn't name would stay in the day, named by nobody.
        if (version.memo.attachments != memo.attachments) return false;
        (void)service_.restoreVersion(day, memo, version);
        return true;
      }
      default:
        return false;
    }
  }

  bool changePlace(char how, Day day, const Memo& memo) {
    switch (how) {
      case 'a':
        (void)service_.attach(day, memo, {newFile()});
        return true;
      case 'd':
        if (memo.attachments.empty()) return false;
        (void)service_.detach(day, memo, {memo.attachments[random_() % memo.attachments.size()]});
        return true;
      case 'm':
        (void)service_.move(day, memo, anyDay());
        return true;
      case 'x':
        (void)service_.trash(day, memo);
        return true;
      default:
        return false;
    }
  }

  bool isWaiting_ = false;
  fs::path home_;
  ManualClock clock_{"2090-03-03 09:00:00"};
  SyncFiles files_{clock_};
  StoreContext context_;
  MemoService service_{context_};
  UserDefaults defaults_;
  SyncLedger& ledger_;
  std::mt19937& random_;
};

}  // namespace nomely::test
