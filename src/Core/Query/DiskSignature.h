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

// The attributes by which a changed file is recognised without reading it.
struct FileStamp {
  std::optional<Moment> modified;
  std::uint64_t size = 0;
  std::uint64_t fileNumber = 0;

  // Absent when the file's attributes can't be read.
  [[nodiscard]] static std::optional<FileStamp> of(const std::filesystem::path& file,
                                                   const FileManager& files);

  friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

// The stamps of all memo files of a root: two equal signatures mean that no memo file has changed
// between them. A value; for one thread at a time.
class DiskSignature {
 public:
  // Called once for each day that holds a memo file, on any thread, several at a time; `index` is
  // the day's index, below the count that `begin` got; `folder` holds the day's visible entries.
  // The stamps of the day's files have been taken by then.
  using VisitDay =
      std::function<void(std::size_t index, Day day, const std::vector<DirectoryEntry>& folder)>;
  struct Visitor {
    std::function<void(std::size_t days)> begin = {};
    VisitDay day = {};
  };

  // Stamps every memo file, several days in parallel. Folders that can't be listed and files
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
