#include <fmt/format.h>

#include "Core/Service/MemoService.h"
#include "Core/Storage/MemoFile.h"

namespace nomely {

std::string MemoService::identityFor(Day day, std::string_view kind,
                                     DerivedIdentity::Parts parts) const {
  std::string identity = DerivedIdentity::memoId(kind, parts);
  for (int next = 2; isTaken(identity, day); ++next)
    identity = DerivedIdentity::memoId(fmt::format("{} {}", kind, next), parts);
  return identity;
}

// The number tells equal texts of one day apart.
std::string MemoService::identityOfNameless(Day day, std::int64_t seqNumber) const {
  const std::string bytes =
      context_.files.read(context_.paths.memoFile(day, seqNumber), MemoFile::maxSize).value_or("");
  return identityFor(day, "file", {day.string(), std::to_string(seqNumber), bytes});
}

// Two notes of one identity would share a history, which goes with either. Only where one has left
// a history is it worth while to go through all of them; without, it may lie in the trash of its
// day.
bool MemoService::isTaken(const std::string& memoId, Day day) const {
  const bool hasHistory = context_.files.exists(versions_.identityDirectory(memoId));
  return trashedMemo(memoId, hasHistory ? "" : day.string()) || (hasHistory && placeOf(memoId));
}

std::optional<Memo> MemoService::trashedMemo(const std::string& memoId,
                                             const std::string& prefix) const {
  const std::filesystem::path folder = context_.paths.trashFolder();
  if (!context_.files.exists(folder)) return std::nullopt;
  for (const DirectoryEntry& entry : context_.files.listAll(folder)) {
    if (!entry.name.starts_with(prefix)) continue;
    auto trashed = trash_.entryNamed(entry.name);
    if (trashed && trashed->memo.memoId == memoId) return std::move(trashed->memo);
  }
  return std::nullopt;
}

std::optional<MemoPlace> MemoService::placeOf(const std::string& memoId) const {
  const auto isIt = [&](Day day, std::int64_t number) {
    const auto bytes = context_.files.read(context_.paths.memoFile(day, number), MemoFile::maxSize);
    // Texts may name other notes.
    if (!bytes || bytes->find(memoId) == std::string::npos) return false;
    try {
      return MemoFile::parsed(*bytes, number).memoId == memoId;
    } catch (const Error&) {
      return true;  // it may be
    }
  };
  for (const Day day : days_.dayFolders())
    for (const std::int64_t number : days_.listNumbers(day))
      if (isIt(day, number)) return MemoPlace{day, number};
  return std::nullopt;
}

}  // namespace nomely
