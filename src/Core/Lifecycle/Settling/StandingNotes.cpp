#include "Core/Lifecycle/Settling/StandingNotes.h"

#include <algorithm>
#include <tuple>

#include "Core/Lifecycle/Settling/ConflictMarkers.h"
#include "Core/Storage/AttachmentManager.h"
#include "Core/Storage/MemoFile.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"

namespace nomely {

StandingNotes::StandingNotes(const DayStore& days, const MemoCensus& census,
                             const std::stop_token& stop)
    : days_(days) {
  if (census) census([this](const Memo& memo, Day day) { count(memo, day); });
  for (const Day day : days_.dayFolders()) {
    throwIfStopped(stop);
    countFiles(day);
  }
}

void StandingNotes::count(const Memo& memo, Day day) {
  counted_[day].insert(memo.seqNumber);
  if (ConflictMarkers::mayBeIn(memo.body)) suspects_.push_back({day, memo.seqNumber});
  if (memo.memoId && !memo.memoId->empty()) add(*memo.memoId, day, memo.seqNumber);
  const std::filesystem::path folder = days_.paths().dayFolder(day);
  if (std::ranges::any_of(memo.attachments, [&](const std::string& name) {
        return AttachmentManager::isSafeName(name) && !days_.context().files.exists(folder / name);
      }))
    lacking_.push_back({day, memo.seqNumber});
}

void StandingNotes::countFiles(Day day) {
  const auto known = counted_.find(day);
  for (const std::int64_t number : days_.listNumbers(day)) {
    if (known != counted_.end() && known->second.contains(number)) continue;
    try {
      if (const auto memo = days_.memoStore().read(day, number)) count(*memo, day);
    } catch (const FileError& error) {
      // A note that is passed over would be taken for one that stands nowhere.
      if (error.kind() != FileError::Kind::tooLarge) throw;
    } catch (const Error&) {
      suspects_.push_back({day, number});
    }
  }
}

void StandingNotes::add(const std::string& memoId, Day day, std::int64_t seqNumber) {
  const MemoPlace place{day, seqNumber};
  std::vector<MemoPlace>& places = places_[memoId];
  if (std::ranges::find(places, place) == places.end()) places.push_back(place);
}

std::optional<StandingNotes::Note> StandingNotes::read(const DayStore& days, Day day,
                                                       std::int64_t seqNumber) {
  const FileManager& files = days.context().files;
  const std::filesystem::path file = days.paths().memoFile(day, seqNumber);
  const auto attributes = files.attributes(file);
  auto bytes = attributes ? files.read(file, MemoFile::maxSize) : std::nullopt;
  if (!bytes) return std::nullopt;
  auto text = MemoText::read(*std::move(bytes), attributes->permissions, {});
  if (!text || !text->found.empty()) return std::nullopt;
  return Note{day, seqNumber, *std::move(text), attributes->modified, attributes->changed};
}

std::vector<StandingNotes::Note> StandingNotes::of(const std::string& memoId) const {
  std::vector<Note> notes;
  const auto found = places_.find(memoId);
  if (found == places_.end()) return notes;
  for (const auto& [day, seqNumber] : found->second)
    if (auto note = read(days_, day, seqNumber); note && note->text.id() == memoId)
      notes.push_back(*std::move(note));
  std::ranges::sort(notes, {},
                    [](const Note& note) { return std::tuple(note.day, note.seqNumber); });
  return notes;
}

std::vector<std::string> StandingNotes::shared() const {
  std::vector<std::string> shared;
  for (const auto& [memoId, places] : places_)
    if (places.size() > 1) shared.push_back(memoId);
  return shared;
}

}  // namespace nomely
