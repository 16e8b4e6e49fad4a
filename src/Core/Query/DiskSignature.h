#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Core/Query/DayReader.h"
#include "Core/Storage/StoreContext.h"
#include "Platform/Concurrency/JobPool.h"
#include "Platform/Time/Day.h"

namespace nomely {

// The attributes by which a changed file is recognised without reading it.
struct FileStamp {
  Moment modified;
  std::uint64_t size = 0;
  std::uint64_t fileNumber = 0;

  [[nodiscard]] static FileStamp of(const FileAttributes& attributes);
  // Absent when the file's attributes can't be read.
  [[nodiscard]] static std::optional<FileStamp> of(const std::filesystem::path& file,
                                                   const FileManager& files);

  friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

// The stamps of all memo files of a root: two equal signatures mean that no memo file has changed
// between them. A value; for one thread at a time.
class DiskSignature {
 public:
  // The files of a day that holds a memo file, while they are gone through.
  struct DayFiles {
    std::size_t index;  // of the day, below the count that `begin` got
    Day day;
    DayReader& reader;  // has the day open
    const std::vector<DirectoryEntry>& entries;
    std::vector<std::optional<FileStamp>> stamps;  // one for each of the entries
  };
  // `day` is called once for each such day, on any thread, several at a time. Whoever reads a file
  // there puts in the stamp that it had before; the others are stamped afterwards.
  struct Visitor {
    std::function<void(std::size_t days)> begin = {};
    std::function<void(DayFiles& files)> day = {};
  };

  // Stamps every memo file, several days in parallel. Folders that can't be listed and files
  // without a stamp are left out. Never throws FileError.
  [[nodiscard]] static DiskSignature read(const StoreContext& context, JobPool& jobs,
                                          const Visitor& visitor);

  // The same of these days alone, which ascend; `day` gets their indices among them.
  [[nodiscard]] static DiskSignature readDays(const StoreContext& context, JobPool& jobs,
                                              const std::vector<Day>& days, const Visitor& visitor);

  // The days for which the two differ, ascending. Absent when there are more than `most`.
  [[nodiscard]] std::optional<std::vector<Day>> differences(const DiskSignature& other,
                                                            std::size_t most) const;
  // Takes over what `other` has of these days.
  void replaceDays(const std::vector<Day>& days, DiskSignature&& other);

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

  [[nodiscard]] static Files stampsOf(Day day, std::size_t index, DayReader& reader,
                                      const StoreContext& context, const Visitor& visitor);

  std::map<Day, Files> days_;  // none of them empty
};

}  // namespace nomely
