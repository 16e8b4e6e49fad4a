#include "Import/KnownNotes.h"

#include <functional>
#include <ranges>

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
    for (const Memo& memo : days_.readMemos(day, {number}))
      fresh.notes.try_emplace(digestOf(memo.body), Known{number, !memo.attachments.empty()});
  return fresh;
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
