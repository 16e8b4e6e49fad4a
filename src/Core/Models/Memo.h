#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Core/Models/AudioTranscript.h"
#include "Platform/System/Uuid.h"
#include "Platform/Time/Clock.h"

namespace nomely {

// What the header of a memo file holds.
struct MemoFrontmatter {
  static constexpr std::int64_t currentSchemaVersion = 2;

  std::optional<std::int64_t> schemaVersion;  // absent: legacy
  std::optional<std::string> memoId;          // stable across moves: "memo_" and 32 hex digits
  std::optional<std::string> createdAt;       // ISO 8601, opaque
  std::optional<std::string> updatedAt;       // ISO 8601, opaque; set by whoever changes the memo
  std::optional<std::string> source;          // absent for memos typed here
  std::optional<std::string> sourceId;        // the memo's identifier in that source
  std::string time;                           // "HH:mm", but any text is kept
  std::vector<std::string> tags;
  std::optional<std::int64_t> mood;
  bool pinned = false;
  bool lockedOnTop = false;
  std::vector<std::string> attachments;  // file names in the memo's day folder, in display order
  // By attachment file name:
  std::map<std::string, std::string> attachmentDescriptions;
  std::map<std::string, std::string> originalNames;
  std::map<std::string, AudioTranscript> audioTranscripts;

  friend bool operator==(const MemoFrontmatter&, const MemoFrontmatter&) = default;
};

// One diary note. A value: whoever reads one owns that copy, and the file is the truth.
struct Memo : MemoFrontmatter {
  Uuid id = Uuid::random();    // for this process only; never stored, compared or hashed
  std::int64_t seqNumber = 0;  // the number in the file's name
  std::string body;            // Markdown

  // A memo with that number, the present local time and nothing else.
  [[nodiscard]] static Memo empty(std::int64_t seqNumber, const Clock& clock);
  // The present local time as "HH:mm".
  [[nodiscard]] static std::string currentTimeString(const Clock& clock);
  // A fresh stable identity.
  [[nodiscard]] static std::string makeMemoId();

  [[nodiscard]] const MemoFrontmatter& frontmatter() const { return *this; }

  // Whether a tag keeps it out of the timeline: notes that were imported or generated.
  [[nodiscard]] bool isExcludedFromTimeline() const;
  // Whether it holds a transcript with segments, which makes every two reads of it unequal.
  [[nodiscard]] bool hasTranscriptSegments() const;

  // The local day that `createdAt` tells.
  [[nodiscard]] std::optional<Day> dayMade() const;

  // Unpinning unlocks, and locking pins.
  void setPinned(bool wanted);
  void setLockedOnTop(bool wanted);

  friend bool operator==(const Memo& left, const Memo& right) {
    return left.seqNumber == right.seqNumber && left.frontmatter() == right.frontmatter() &&
           left.body == right.body;
  }
};

// Whether two memos have the same number and make the same file: equality but for the identities
// of transcript segments, which are drawn anew at each reading.
[[nodiscard]] bool isStoredAs(const Memo& left, const Memo& right);

}  // namespace nomely

template <>
struct std::hash<nomely::Memo> {
  std::size_t operator()(const nomely::Memo& memo) const noexcept;
};
