#include "Core/Query/DiskSignature.h"

#include <algorithm>
#include <memory>
#include <mutex>

#include "Core/Extensions/PathNames.h"
#include "Platform/Files/FileError.h"

namespace nomely {
namespace {

std::vector<Day> daysIn(const StoreContext& context) {
  std::vector<Day> days;
  try {
    for (const DirectoryEntry& entry : context.files.listVisible(context.paths.rootURL))
      if (const auto day = Day::parse(entry.name)) days.push_back(*day);
  } catch (const FileError&) {
    // No days then.
  }
  return days;
}

bool isMemoFile(const DirectoryEntry& entry) {
  return pathExtension(entry.name) == "md";
}

// Readers, so that each of those that work at the same time has one with a buffer.
class IdleReaders {
 public:
  explicit IdleReaders(const StoreContext& context) : context_(context) {}

  [[nodiscard]] std::unique_ptr<DayReader> take() {
    const std::lock_guard lock(mutex_);
    if (idle_.empty()) return std::make_unique<DayReader>(context_);
    std::unique_ptr<DayReader> reader = std::move(idle_.back());
    idle_.pop_back();
    return reader;
  }
  void give(std::unique_ptr<DayReader> reader) {
    const std::lock_guard lock(mutex_);
    idle_.push_back(std::move(reader));
  }

 private:
  const StoreContext& context_;
  std::mutex mutex_;
  std::vector<std::unique_ptr<DayReader>> idle_;
};

}  // namespace

FileStamp FileStamp::of(const FileAttributes& attributes) {
  return {attributes.modified, attributes.size, attributes.fileNumber};
}

std::optional<FileStamp> FileStamp::of(const std::filesystem::path& file,
                                       const FileManager& files) {
  try {
    const auto attributes = files.attributes(file);
    return attributes ? std::optional(of(*attributes)) : std::nullopt;
  } catch (const FileError&) {
    return std::nullopt;
  }
}

DiskSignature::Files DiskSignature::stampsOf(Day day, std::size_t index, DayReader& reader,
                                             const StoreContext& context, const Visitor& visitor) {
  Files stamps;
  try {
    const std::vector<DirectoryEntry>& entries = reader.open(day);
    if (std::ranges::none_of(entries, isMemoFile)) return stamps;
    DayFiles files{index, day, reader, entries, {}};
    files.stamps.resize(entries.size());
    if (visitor.day) visitor.day(files);
    const std::filesystem::path folder = context.paths.dayFolder(day);
    stamps.reserve(static_cast<std::size_t>(std::ranges::count_if(entries, isMemoFile)));
    for (std::size_t i = 0; i < entries.size(); ++i) {
      if (!isMemoFile(entries[i])) continue;
      std::optional<FileStamp>& stamp = files.stamps[i];
      if (!stamp) stamp = FileStamp::of(folder / entries[i].name, context.files);
      if (stamp) stamps.push_back({entries[i].name, *stamp});
    }
  } catch (const FileError&) {
    // The day's folder can't be listed.
  }
  return stamps;
}

DiskSignature DiskSignature::read(const StoreContext& context, JobPool& jobs,
                                  const Visitor& visitor) {
  std::vector<Day> days = daysIn(context);
  std::ranges::sort(days);
  return readDays(context, jobs, days, visitor);
}

DiskSignature DiskSignature::readDays(const StoreContext& context, JobPool& jobs,
                                      const std::vector<Day>& days, const Visitor& visitor) {
  if (visitor.begin) visitor.begin(days.size());

  std::vector<Files> stamps(days.size());
  IdleReaders readers(context);
  jobs.parallelFor(days.size(), [&](std::size_t i) {
    std::unique_ptr<DayReader> reader = readers.take();
    stamps[i] = stampsOf(days[i], i, *reader, context, visitor);
    readers.give(std::move(reader));
  });

  DiskSignature signature;
  for (std::size_t i = 0; i < days.size(); ++i)
    if (!stamps[i].empty())
      signature.days_.emplace_hint(signature.days_.end(), days[i], std::move(stamps[i]));
  return signature;
}

std::optional<std::vector<Day>> DiskSignature::differences(const DiskSignature& other,
                                                           std::size_t most) const {
  std::vector<Day> days;
  auto left = days_.begin();
  auto right = other.days_.begin();
  while (left != days_.end() || right != other.days_.end()) {
    const bool isOnlyRight =
        left == days_.end() || (right != other.days_.end() && right->first < left->first);
    const bool isOnlyLeft =
        !isOnlyRight && (right == other.days_.end() || left->first < right->first);
    if (isOnlyRight)
      days.push_back((right++)->first);
    else if (isOnlyLeft)
      days.push_back((left++)->first);
    else if (const Day day = left->first; (left++)->second != (right++)->second)
      days.push_back(day);
    if (days.size() > most) return std::nullopt;
  }
  return days;
}

void DiskSignature::replaceDays(const std::vector<Day>& days, DiskSignature&& other) {
  for (const Day day : days) days_.erase(day);
  days_.merge(other.days_);
}

void DiskSignature::set(Day day, const std::string& fileName,
                        const std::optional<FileStamp>& stamp) {
  Files& files = days_[day];
  const auto at = std::ranges::lower_bound(files, fileName, {}, &File::name);
  const bool isThere = at != files.end() && at->name == fileName;
  if (stamp && isThere)
    at->stamp = *stamp;
  else if (stamp)
    files.insert(at, {fileName, *stamp});
  else if (isThere)
    files.erase(at);
  if (files.empty()) days_.erase(day);
}

}  // namespace nomely
