#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <vector>

#include "Core/Service/MemoService.h"

namespace nomely {

// Reads everything under the root and tells what is wrong with it. Changes nothing.
class RootInspector {
 public:
  struct Unreadable {
    std::filesystem::path path;  // relative to the root
    std::string reason;
  };
  struct UnreadableMemo : Unreadable {
    Day date;
    std::int64_t seqNumber = 0;
    std::vector<std::string> mends;  // what MemoService::mend would do; empty: it can't
  };
  struct MissingAttachment {
    Day date;
    std::int64_t seqNumber = 0;
    std::optional<std::string> memoId;
    std::string filename;
  };
  // Places of memos below the root that have one identity: deleting one for good would take the
  // history of the other.
  struct SharedIdentity {
    std::string memoId;
    std::vector<std::filesystem::path> places;
  };
  // An identity that has snapshots and no memo, neither in a day nor in the trash.
  struct StrandedHistory {
    std::string memoId;
    std::size_t snapshots = 0;
  };
  struct Report {
    std::size_t days = 0;
    std::size_t memos = 0;  // that can be read
    // Of those, written by other programs such that writing them here would drop a part of their
    // header; it is kept beside their history then.
    std::size_t foreignMemos = 0;
    std::vector<UnreadableMemo> unreadableMemos;
    std::vector<Unreadable> unreadableVersions;
    std::vector<Unreadable> unreadableTrash;  // folders that show no memo, or not the one they hold
    std::vector<MissingAttachment> missingAttachments;
    // Files beside memos that none of these and no draft names, relative to the root; those of days
    // on which a memo can't be read are left out, and all of them while a draft can't be.
    std::vector<std::filesystem::path> orphanedAttachments;
    // Texts of the oldest layout, relative to the root, that were not brought in because the folder
    // of their day was there already.
    std::vector<std::filesystem::path> leftOutTexts;
    std::vector<SharedIdentity> sharedIdentities;
    std::vector<StrandedHistory> strandedHistories;
    std::vector<std::filesystem::path> danglingLinks;        // symbolic ones, relative to the root
    std::vector<std::filesystem::path> damagedDrafts;        // relative to the root
    std::vector<std::filesystem::path> staleTemporaryFiles;  // relative to the root
    std::vector<std::filesystem::path> unreadableFolders;    // relative to the root

    [[nodiscard]] bool isClean() const {
      return unreadableMemos.empty() && unreadableVersions.empty() && unreadableTrash.empty() &&
             missingAttachments.empty() && orphanedAttachments.empty() && leftOutTexts.empty() &&
             sharedIdentities.empty() && strandedHistories.empty() && danglingLinks.empty() &&
             damagedDrafts.empty() && staleTemporaryFiles.empty() && unreadableFolders.empty();
    }
  };

  // `service` must outlive it.
  explicit RootInspector(const MemoService& service) : service_(service), store_(service.days()) {}

  // Reads on all cores; `progress` gets the share done, 0 to 1, on the caller's thread. Throws
  // CancellationError when asked to stop, FileError when the root itself can't be listed.
  [[nodiscard]] Report inspect(const std::function<void(double)>& progress,
                               const std::stop_token& stop) const;

 private:
  // Of a folder of versions: one memo's, or those of any memos.
  enum class Layout { byIdentity, former };

  // Where the memos of an identity lie, below the root.
  using Identities = std::map<std::string, std::vector<std::filesystem::path>>;

  // What a part of the root shows.
  struct Findings {
    Report report;
    Identities identities;

    void append(Findings&& later);
  };
  struct VersionFolder {
    std::filesystem::path path;
    Layout layout;
  };
  class Round;

  [[nodiscard]] std::vector<VersionFolder> versionFolders() const;
  // The names of the folders in the trash. A trash that is a link goes into `report` instead.
  [[nodiscard]] std::vector<std::string> trashFolders(Report& report) const;

  void inspectDay(Day day, Findings& found) const;
  // Takes what the memo names out of `unnamed`; false when it can't be read.
  bool inspectMemo(Day day, const std::string& fileName, std::set<std::string>& unnamed,
                   Findings& found) const;
  void inspectDrafts(Report& report) const;
  void inspectOldTexts(Report& report) const;
  void inspectIdentities(const Identities& identities, Report& report) const;
  void inspectVersionFolder(const VersionFolder& folder, Report& report) const;
  void inspectTrashFolder(const std::string& name, Findings& found) const;
  // Why an entry of the trash does not show what it holds; empty when it does.
  [[nodiscard]] std::string faultOfTrashFolder(const std::string& name,
                                               Identities& identities) const;
  // Temporaries, links that lead nowhere, folders that can't be listed.
  void inspectTree(const std::filesystem::path& folder, int depth, Report& report) const;
  void inspectEntry(const std::filesystem::path& folder, const DirectoryEntry& entry, int depth,
                    Report& report) const;

  const MemoService& service_;
  const DayStore& store_;
};

}  // namespace nomely
