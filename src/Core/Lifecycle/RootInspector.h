#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "Core/Storage/DayStore.h"

namespace nomely {

// Reads everything under the root and tells what is wrong with it. Changes nothing.
class RootInspector {
 public:
  struct Unreadable {
    std::filesystem::path path;  // relative to the root
    std::string reason;
  };
  struct MissingAttachment {
    Day date;
    std::int64_t seqNumber = 0;
    std::optional<std::string> memoId;
    std::string filename;
  };
  struct Report {
    std::size_t days = 0;
    std::size_t memos = 0;  // that can be read
    std::vector<Unreadable> unreadableMemos;
    std::vector<Unreadable> unreadableVersions;
    std::vector<Unreadable> unreadableTrash;  // folders that show no memo, or not the one they hold
    std::vector<MissingAttachment> missingAttachments;
    std::vector<std::filesystem::path> staleTemporaryFiles;  // relative to the root
    std::vector<std::filesystem::path> unreadableFolders;    // relative to the root

    [[nodiscard]] bool isClean() const {
      return unreadableMemos.empty() && unreadableVersions.empty() && unreadableTrash.empty() &&
             missingAttachments.empty() && staleTemporaryFiles.empty() && unreadableFolders.empty();
    }
  };

  explicit RootInspector(const DayStore& store) : store_(store) {}

  // `progress` gets the share done, 0 to 1. Throws CancellationError when asked to stop, FileError
  // when the root itself can't be listed.
  [[nodiscard]] Report inspect(const std::function<void(double)>& progress,
                               const std::stop_token& stop) const;

 private:
  // Of a folder of versions: one memo's, or those of any memos.
  enum class Layout { byIdentity, former };

  void inspectDay(Day day, Report& report) const;
  void inspectMemo(Day day, const std::string& fileName, Report& report) const;
  void inspectVersions(Report& report, const std::stop_token& stop) const;
  void inspectVersionFolder(const std::filesystem::path& folder, Layout layout,
                            Report& report) const;
  void inspectTrash(Report& report, const std::stop_token& stop) const;
  // Why an entry of the trash does not show what it holds; empty when it does.
  [[nodiscard]] std::string faultOfTrashFolder(const std::filesystem::path& folder) const;
  void collectTemporaries(const std::filesystem::path& folder, int depth, Report& report) const;

  const DayStore& store_;
};

}  // namespace nomely
