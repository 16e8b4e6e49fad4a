#include "Core/Models/Memo.h"

#include <algorithm>
#include <bit>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Extensions/TagNames.h"

namespace nomely {
namespace {

bool excludesFromTimeline(std::string_view tag) {
  return tag == TagNames::notesImportTag ||
         std::ranges::any_of(TagNames::sectionRoots, [&](std::string_view root) {
           return TagNames::isOrIsBelow(tag, root);
         });
}

class Hasher {
 public:
  void add(const std::string& text) { mix(std::hash<std::string>()(text)); }
  void add(std::int64_t number) { mix(static_cast<std::size_t>(number)); }
  void add(double number) { mix(std::hash<double>()(number)); }
  void add(const Uuid& id) { add(id.compact()); }
  template <typename Value>
  void add(const std::optional<Value>& value) {
    mix(value ? 1 : 0);
    if (value) add(*value);
  }
  template <typename Value>
  void add(const std::vector<Value>& values) {
    mix(values.size());
    for (const Value& value : values) add(value);
  }
  template <typename Value>
  void add(const std::map<std::string, Value>& values) {
    mix(values.size());
    for (const auto& [key, value] : values) {
      add(key);
      add(value);
    }
  }
  void add(const AudioTranscriptSegment& segment) {
    add(segment.id);
    add(segment.text);
    add(segment.start);
    add(segment.duration);
  }
  void add(const AudioTranscript& transcript) {
    add(transcript.text);
    add(transcript.segments);
  }

  [[nodiscard]] std::size_t value() const { return state_; }

 private:
  void mix(std::size_t value) {
    state_ = std::rotl(state_ ^ value, 23) * std::size_t{0x9E3779B97F4A7C15U};
  }

  std::size_t state_ = 0;
};

}  // namespace

Memo Memo::empty(std::int64_t seqNumber, const Clock& clock) {
  Memo memo;
  memo.seqNumber = seqNumber;
  memo.time = currentTimeString(clock);
  return memo;
}

std::string Memo::currentTimeString(const Clock& clock) {
  return DateFormatters::timeOnly.format(clock.now());
}

std::string Memo::makeMemoId() {
  return "memo_" + Uuid::random().compact();
}

bool Memo::isExcludedFromTimeline() const {
  return std::ranges::any_of(tags, excludesFromTimeline);
}

bool Memo::hasTranscriptSegments() const {
  return std::ranges::any_of(audioTranscripts,
                             [](const auto& entry) { return !entry.second.segments.empty(); });
}

std::optional<Day> Memo::dayMade() const {
  constexpr std::string_view form = "2026-03-01";
  return Day::parse(std::string_view(createdAt.value_or("")).substr(0, form.size()));
}

void Memo::setPinned(bool wanted) {
  pinned = wanted;
  if (!wanted) lockedOnTop = false;
}

void Memo::setLockedOnTop(bool wanted) {
  lockedOnTop = wanted;
  if (wanted) pinned = true;
}

bool isStoredAs(const Memo& left, const Memo& right) {
  if (left.seqNumber != right.seqNumber || left.body != right.body) return false;
  const auto withoutIds = [](MemoFrontmatter header) {
    for (auto& [name, transcript] : header.audioTranscripts)
      for (AudioTranscriptSegment& segment : transcript.segments) segment.id = Uuid();
    return header;
  };
  return withoutIds(left.frontmatter()) == withoutIds(right.frontmatter());
}

}  // namespace nomely

std::size_t std::hash<nomely::Memo>::operator()(const nomely::Memo& memo) const noexcept {
  nomely::Hasher hasher;
  hasher.add(memo.memoId);
  hasher.add(memo.schemaVersion);
  hasher.add(memo.createdAt);
  hasher.add(memo.updatedAt);
  hasher.add(memo.source);
  hasher.add(memo.sourceId);
  hasher.add(memo.seqNumber);
  hasher.add(memo.time);
  hasher.add(memo.tags);
  hasher.add(memo.mood);
  hasher.add(static_cast<std::int64_t>(memo.pinned));
  hasher.add(static_cast<std::int64_t>(memo.lockedOnTop));
  hasher.add(memo.body);
  hasher.add(memo.attachments);
  hasher.add(memo.attachmentDescriptions);
  hasher.add(memo.originalNames);
  hasher.add(memo.audioTranscripts);
  return hasher.value();
}
