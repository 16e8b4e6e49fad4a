#include "Core/Lifecycle/OwnWrites.h"

#include "Platform/Files/FileError.h"

namespace nomely {
namespace {

// What is forgotten costs whoever asks one needless look.
constexpr std::size_t most = 4096;

}  // namespace

OwnWrites::OwnWrites(const StoreContext& storage)
    : paths_(storage.paths),
      files_(storage.files),
      changes_(storage.gate.changes().observe(
          {.written = [this](const Memo& memo, Day day) { note(day, memo.seqNumber); },
           .removed = [this](Day day, std::int64_t seqNumber) { note(day, seqNumber); },
           .manyChanged = [] {}})) {}

std::string OwnWrites::keyOf(const std::filesystem::path& file) {
  return (file.parent_path().filename() / file.filename()).string();
}

OwnWrites::State OwnWrites::stateOf(const std::filesystem::path& file) const {
  const auto found = files_.attributes(file, LinkPolicy::noFollow);
  if (!found) return std::nullopt;
  return Stamp{found->size, found->fileNumber, found->modified};
}

bool OwnWrites::isAsLeft(const std::filesystem::path& file) const {
  try {
    const State state = stateOf(file);
    const std::lock_guard lock(mutex_);
    const auto left = left_.find(keyOf(file));
    return left != left_.end() && left->second == state;
  } catch (const FileError&) {
    return false;
  }
}

void OwnWrites::note(Day day, std::int64_t seqNumber) {
  const std::filesystem::path file = paths_.memoFile(day, seqNumber);
  const std::string key = keyOf(file);
  try {
    State state = stateOf(file);
    const std::lock_guard lock(mutex_);
    if (left_.size() >= most) left_.clear();
    left_.insert_or_assign(key, state);
  } catch (const FileError&) {
    const std::lock_guard lock(mutex_);
    left_.erase(key);
  }
}

}  // namespace nomely
