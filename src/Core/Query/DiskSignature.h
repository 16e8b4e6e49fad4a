#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Core/Storage/StoreContext.h"
#include "Platform/Concurrency/JobPool.h"
#include "Platform/Time/Day.h"

namespace nomely {

// What tells one state of a file from another without reading it.
struct FileStamp {
  std::optional<Moment> modified;
  std::uint64_t size = 0;
  std::uint64_t fileNumber = 0;

  // Absent when the file's attributes can't be read.
  [[nodiscard]] static std::optional<FileStamp> of(const std::filesystem::path& file,
                                                   const FileManager& files);

  friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

// The stamps of all memo files of a root: two equal signatures mean that nothing has changed in
// between. A value; not safe on several threads at once.
class DiskSignature {
 public:
  // Called once for each day that holds a memo file, on any thread, several at a time; `index` is
  // the day's place among `days`, `folder` its visible entries. The day's stamps are taken before.
  using VisitDay =
      std::function<void(std::size_t index, Day day, const std::vector<DirectoryEntry>& folder)>;
  struct Visitor {
    std::function<void(std::size_t days)> begin = {};
    VisitDay day = {};
  };

  // Stamps every memo file, days at a time in parallel. Folders that can't be listed and files
  // without a stamp are left out. Never throws FileError.
  [[nodiscard]] static DiskSignature read(const StoreContext& context, JobPool& jobs,
                                          const Visitor& visitor);

  // Sets the stamp of one memo file; absent removes it.
  void set(Day day, const std::string& fileName, const std::optional<FileStamp>& stamp);

  friend bool operator==(const DiskSignature&, const DiskSignature&) = default;

 private:
  struct File {
    std::string name;
    FileStamp stamp;
    friend bool operator==(const File&, const File&) = default;
  };
  using Files = std::vector<File>;  // by name

  [[nodiscard]] static Files stampsOf(const std::filesystem::path& folder,
                                      const std::vector<DirectoryEntry>& entries,
                                      const FileManager& files);

  std::map<Day, Files> days_;  // none of them empty
};

}  // namespace nomely
