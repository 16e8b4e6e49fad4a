#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <stop_token>
#include <string>
#include <vector>

#include "Core/Lifecycle/Settling/QuietTime.h"
#include "Core/Lifecycle/Settling/SettlingResult.h"
#include "Core/Lifecycle/Settling/StandingNotes.h"
#include "Core/Service/MemoService.h"

namespace nomely {

// Puts in order what a program that keeps the folders of two machines alike has left: second forms
// of files that both machines wrote, git's markers, notes that stand twice. Every text is in the
// diary, in a history or in the trash afterwards, and each note stands once.
//
// What is done depends on the contents of the files alone, so that two machines which settle the
// same state come to the same bytes under the same names. What can't be decided stays and is told
// of by strays(). Idempotent; each note is one write of the gate. For a background thread.
class RootSettling {
 public:
  // How long the root has to have been quiet: what is younger is left to a later pass.
  static constexpr auto quietInterval = QuietTime::interval;

  // `service` must outlive it. `census` is of who has all memos in memory; without one, memo files
  // are read where that is needed.
  explicit RootSettling(const MemoService& service, MemoCensus census = {});

  // `histories` are folders below `.versions` that HistorySettling concerns, for who has listed
  // them. What fails is logged, and the pass goes on. Throws CancellationError between two notes
  // when asked to stop, FileError when the root can't be listed or written, WriteError when it is
  // frozen.
  [[nodiscard]] SettlingResult run(const std::stop_token& stop,
                                   const std::vector<std::filesystem::path>& histories = {}) const;

  // The folders of versions, and of their attachments, with second forms of files in them. Lists
  // them all. Throws FileError.
  [[nodiscard]] std::vector<std::filesystem::path> histories() const;

  // What there is to settle, and what can't be settled and why. Changes nothing. Throws FileError
  // when the root can't be listed.
  [[nodiscard]] std::vector<Stray> strays() const;

 private:
  // What the names of files in the days show.
  struct Names {
    struct Attachment {
      Day day;
      std::string name;
      std::string base;
    };
    std::map<Day, std::vector<std::string>> strays;
    std::vector<Attachment> attachments;
    [[nodiscard]] bool areNone() const { return strays.empty() && attachments.empty(); }
  };

  [[nodiscard]] Names namesInDays() const;
  void addStraysOfDays(const Names& names, std::vector<Stray>& strays) const;
  void settleNotes(const Names& names, SettlingResult& result, const std::stop_token& stop) const;
  void settleTrash(const StandingNotes* notes, SettlingResult& result,
                   const std::stop_token& stop) const;
  // Settings, drafts, the bot's files.
  void settleOtherFiles(SettlingResult& result, const std::stop_token& stop) const;

  const MemoService& service_;
  const StoreContext& context_;
  MemoCensus census_;
};

}  // namespace nomely
