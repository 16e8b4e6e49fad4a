#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Storage/DayStore.h"
#include "Platform/Files/OpenFolder.h"

namespace nomely {

// Finds files in day folders that no memo names and no draft needs. Where a memo of the day or a
// draft can't be read, nothing is called an orphan: it may be what names the file. Changes nothing.
// Stateless but for a buffer: one thread at a time.
class OrphanAttachmentFinder {
 public:
  enum class Kind { audio, image, other };
  // By the extension, of a name or alone: "B.M4A" → audio.
  [[nodiscard]] static Kind kindOf(std::string_view name);

  struct OrphanReport {
    Day date;
    std::string dateKey;  // the day folder's name
    std::string filename;
    Kind kind = Kind::other;
    std::filesystem::path fileURL;
    std::uint64_t fileSize = 0;  // bytes
    Moment modifiedDate;
  };

  explicit OrphanAttachmentFinder(StoreContext context)
      : context_(std::move(context)), days_(context_) {}

  // Whether an entry of a day folder is a file beside the memos that one of them should name.
  [[nodiscard]] static bool isAttachment(const DirectoryEntry& entry);

  // By day, then by name. What can't be listed or read makes the list shorter. Reads memos of days
  // alone that hold a file of that kind.
  [[nodiscard]] std::vector<OrphanReport> scan(std::optional<Kind> kindFilter);

  // The same for these days alone.
  [[nodiscard]] std::vector<OrphanReport> scan(const std::vector<Day>& days,
                                               std::optional<Kind> kindFilter);

  // Whether the memo of a file may be on its way: in a root that a program keeps alike on several
  // machines, the file came here less than a day ago.
  [[nodiscard]] bool mayBeAwaited(const OrphanReport& report) const;

  // Whether a file is an orphan still. To be asked in the gate.
  [[nodiscard]] bool isStillOrphan(const OrphanReport& report) const;

 private:
  void scanDay(Day day, std::optional<Kind> kindFilter, const std::set<std::string>& needed,
               std::vector<OrphanReport>& reports);
  // Takes the names out of `files` that memos of the day say in so many letters.
  void eraseNamed(const std::filesystem::path& folder, const std::vector<DirectoryEntry>& entries,
                  std::set<std::string>& files);
  [[nodiscard]] std::optional<std::set<std::string>> filesNamed(Day day) const;

  StoreContext context_;
  DayStore days_;
  ReadBuffer buffer_;
};

}  // namespace nomely
