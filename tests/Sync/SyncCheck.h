#pragma once

#include <algorithm>
#include <regex>

#include <fmt/format.h>

#include "Core/Lifecycle/RootInspector.h"
#include "Core/Storage/MemoFile.h"
#include "Platform/Error.h"
#include "Support/TemporaryFolder.h"
#include "Sync/SyncEngine.h"
#include "Sync/SyncUser.h"

namespace nomely::test {
// Names as they are documented, but for drafts that could not be read.
inline const std::regex& ourNames() {
  static const std::regex names(
      R"(\d{4}-\d\d-\d\d/(\d{3,}\.md|[0-9A-F]{8}(\.[a-z0-9]+)?))"
      R"(|\.trash/\d{4}-\d\d-\d\d_\d{3,}[^/]*/(memo\.md|meta\.txt|attachments/[0-9A-F]{8}(\.[a-z0-9]+)?))"
      R"(|\.trash/_attachments/[^/]+/[0-9A-F]{8}[^/]*)"
      R"(|\.versions/by-id/[0-9a-f]+/(\d+\.\d+_[-0-9A-F]{36}\.(md|original)|place\.txt|attachments/[0-9A-F]{8}(\.[a-z0-9]+)?))"
      R"(|\.drafts/(quick-input|focus-[^.]*)\.json|_config/[-a-z]+\.yaml(\.other-[0-9a-f]{8})?|\.meta/[^/]+)");
  return names;
}

class SyncCheck {
 public:
  SyncCheck(const std::vector<fs::path>& roots, SyncEngine::Rules rules) {
    for (const fs::path& root : roots) {
      Tree tree = treeOn(root);
      for (const auto& [path, content] : tree)
        for (const std::string& word : SyncLedger::wordsIn(content)) places_[word].insert(path);
      std::erase_if(tree, [&](const auto& file) {
        return file.first.ends_with('/') || SyncEngine::isIgnored(rules, file.first);
      });
      if (trees_.empty()) lookAt(tree);
      trees_.push_back(std::move(tree));
    }
    compare();
    inspect(roots.front());
  }

  void lookFor(const SyncLedger& ledger) {
    for (const auto& [memoId, word] : ledger.saved) {
      if (!ledger.givenUp.contains(word) && !isKept(memoId, word))
        faults.push_back(fmt::format("lost: {} of {}", word, memoId));
      if (!memoId.empty() && !standing_.contains(memoId) && !trashed_.contains(memoId))
        faults.push_back("neither stands nor lies in the trash: " + memoId);
    }
  }

  std::vector<std::string> faults;

 private:
  void compare() {
    std::set<std::string> uneven;
    for (const Tree& tree : trees_)
      for (const auto& [path, content] : tree)
        for (const Tree& other : trees_)
          if (const auto found = other.find(path); found == other.end() || found->second != content)
            uneven.insert(path);
    for (const std::string& path : uneven) faults.push_back("not alike: " + path);
  }

  void lookAt(const Tree& tree) {
    for (const auto& [path, content] : tree) {
      if (!std::regex_match(path, ourNames())) faults.push_back("stray: " + path);
      const bool isTrashed = path.starts_with(".trash/") && path.ends_with("/memo.md");
      if (!isTrashed && !(std::isdigit(path[0]) != 0 && path.ends_with(".md"))) continue;
      try {
        const Memo memo = MemoFile::parsed(content, 0);
        if (memo.memoId) (isTrashed ? trashed_ : standing_)[*memo.memoId].push_back({path, memo});
      } catch (const Error&) {
        // An attached file, or one that the inspection tells of.
      }
    }
    for (const auto& [memoId, copies] : standing_) {
      for (std::size_t i = 1; i < copies.size(); ++i)
        faults.push_back(fmt::format("stands twice: {} and {}", copies[0].path, copies[i].path));
      for (const Copy& thrownAway : trashed_[memoId])
        if (copies[0].memo.updatedAt > thrownAway.memo.updatedAt &&
            !isStoredAs(copies[0].memo, thrownAway.memo))
          faults.push_back(fmt::format("stands newer than in the trash: {} and {}", copies[0].path,
                                       thrownAway.path));
    }
    std::erase_if(trashed_, [](const auto& copies) { return copies.second.empty(); });
  }

  [[nodiscard]] bool isKept(const std::string& memoId, const std::string& word) const {
    const auto found = places_.find(word);
    if (found == places_.end()) return false;
    if (memoId.empty()) return true;
    const std::string history = ".versions/by-id/" + DiskPaths::identityName(memoId) + "/";
    return std::ranges::any_of(found->second, [&](const std::string& path) {
      if (path.starts_with(history)) return true;
      const auto isCopy = [&](const auto& copies) {
        const auto all = copies.find(memoId);
        return all != copies.end() && std::ranges::any_of(all->second, [&](const Copy& copy) {
                 return copy.path == path;
               });
      };
      return isCopy(standing_) || isCopy(trashed_);
    });
  }

  void inspect(const fs::path& root) {
    const ManualClock clock;
    const MemoService service({{root}, FileManager(posixFileSystem()), clock});
    auto report = RootInspector(service).inspect([](double) {}, {});
    const auto tell = [&](const std::string& kind, const auto& found, const auto& text) {
      for (const auto& each : found) faults.push_back(kind + ": " + text(each));
    };
    const auto path = [](const auto& each) { return each.path.string() + " " + each.reason; };
    const auto name = [](const fs::path& file) { return file.string(); };
    tell("unreadable", report.unreadableMemos, path);
    tell("unreadable", report.unreadableVersions, path);
    tell("unreadable", report.unreadableTrash, path);
    // One that a former state names is a file too many, which is no loss.
    std::erase_if(report.orphanedAttachments, [&](const fs::path& file) {
      return std::ranges::any_of(trees_.front(), [&](const auto& each) {
        return each.second.find(file.filename().string()) != std::string::npos;
      });
    });
    tell("orphan", report.orphanedAttachments, name);
    tell("damaged draft", report.damagedDrafts, name);
    tell("temporary", report.staleTemporaryFiles, name);
    tell("missing", report.missingAttachments, [](const auto& each) {
      return fmt::format("{}/{} {}", each.date.string(), each.seqNumber, each.filename);
    });
    tell("stranded", report.strandedHistories, [](const auto& each) { return each.memoId; });
  }

  struct Copy {
    std::string path;
    Memo memo;
  };
  using Copies = std::map<std::string, std::vector<Copy>>;  // by identity

  std::vector<Tree> trees_;
  std::map<std::string, std::set<std::string>> places_;  // of words, on any machine
  Copies standing_;
  Copies trashed_;
};

// What is wrong with the roots of machines that an engine has made alike and each of which has
// settled what there was: a line each.
//   - All hold the same files, but for those that the engine passes over.
//   - Every state that was stored is in its note, its history or the trash.
//   - Every note stands once, or lies in the trash; both only where the newest text is the one
//     thrown away.
//   - Every file has a name of ours, and RootInspector finds nothing.
[[nodiscard]] inline std::vector<std::string> syncFaults(const std::vector<fs::path>& roots,
                                                         SyncEngine::Rules rules,
                                                         const SyncLedger& ledger) {
  SyncCheck check(roots, rules);
  check.lookFor(ledger);
  return std::move(check.faults);
}

}  // namespace nomely::test
