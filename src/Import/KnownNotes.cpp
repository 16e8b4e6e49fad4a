#include "Import/KnownNotes.h"

#include <functional>
#include <ranges>

#include "Platform/Files/FileError.h"
#include "Platform/Text/Unicode.h"

namespace nomely {

// 128 bits: among all notes of a life no two are taken for each other.
KnownNotes::Digest KnownNotes::digestOf(std::string_view body) {
  const std::string_view text = trimSpaceAndBreaks(body);
  std::uint64_t fnv = 14695981039346656037U;
  for (const char c : text) fnv = (fnv ^ static_cast<unsigned char>(c)) * 1099511628211U;
  return {std::hash<std::string_view>()(text), fnv};
}

KnownNotes::KnownDay& KnownNotes::known(Day day) {
  const auto found = known_.find(day);
  if (found != known_.end()) return found->second;
  const std::vector<std::int64_t> numbers = days_.listNumbers(day);
  KnownDay& fresh = known_[day];
  if (!numbers.empty()) fresh.highest = numbers.back();
  // One at a time: a day may hold more than memory should.
  for (const std::int64_t number : std::views::reverse(numbers))
    if (const auto memo = read(day, number))
      fresh.notes.try_emplace(digestOf(memo->body), Known{number, !memo->attachments.empty()});
  return fresh;
}

// A damaged file is no note's; one that the disk won't give may be any.
std::optional<Memo> KnownNotes::read(Day day, std::int64_t number) const {
  try {
    return days_.memoStore().read(day, number);
  } catch (const FileError& error) {
    if (error.kind() != FileError::Kind::isADirectory && error.kind() != FileError::Kind::tooLarge)
      throw;
  } catch (const Error&) {
    (void)days_.readMemos(day, {number});  // which tells of it
  }
  return std::nullopt;
}

KnownNotes::Known* KnownNotes::find(Day day, std::string_view body) {
  auto& notes = known(day).notes;
  const auto found = notes.find(digestOf(body));
  return found == notes.end() ? nullptr : &found->second;
}

KnownNotes::Known& KnownNotes::add(Day day, std::string_view body, bool hasAttachments) {
  KnownDay& there = known(day);
  return there.notes[digestOf(body)] = {++there.highest, hasAttachments, false};
}

}  // namespace nomely
