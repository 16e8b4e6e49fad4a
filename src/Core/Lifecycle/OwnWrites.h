#pragma once

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

#include "Core/Storage/StoreContext.h"
#include "Platform/Concurrency/Subscription.h"

namespace nomely {

// How this process left the memo files of a root, for whoever is told later that they changed. What
// was written as a part of many changes (MemoChanges::Bulk) is not known. Any thread.
class OwnWrites {
 public:
  explicit OwnWrites(const StoreContext& storage);

  // Whether a memo file, or the lack of one, is as this process left it.
  [[nodiscard]] bool isAsLeft(const std::filesystem::path& file) const;

 private:
  // Absent: there is no such file.
  struct Stamp {
    std::uint64_t size = 0;
    std::uint64_t fileNumber = 0;
    Moment modified;
    friend bool operator==(const Stamp&, const Stamp&) = default;
  };
  using State = std::optional<Stamp>;

  [[nodiscard]] static std::string keyOf(const std::filesystem::path& file);
  [[nodiscard]] State stateOf(const std::filesystem::path& file) const;
  void note(Day day, std::int64_t seqNumber);

  DiskPaths paths_;
  FileManager files_;
  mutable std::mutex mutex_;
  std::unordered_map<std::string, State> left_;  // by day and name
  Subscription changes_;
};

}  // namespace nomely
