#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Models/Memo.h"
#include "Platform/Error.h"
#include "Platform/Time/Day.h"
#include "bench/CorpusMedia.h"

namespace nomely::bench {

// Made-up diaries for tests and measurements. The same options give the same bytes on every
// machine; nothing asks the clock, the zone or the kernel's random source. Memory stays the same
// however many memos there are.

struct CorpusOptions {
  std::uint64_t memos = 0;
  std::uint64_t seed = 1;
  // What the attachments have together; each has at least the few bytes that make it one.
  std::uint64_t mediaBytes = 0;
};

struct CorpusMemo {
  Day day;
  std::int64_t number;
  MemoFrontmatter frontmatter;
  std::string body;
  std::vector<MediaKind> media;  // one for each of frontmatter.attachments
};

// The corpus ends on this day. It has three to nine memos on each of its days, six on average,
// spread over thirty years; when those are full, days have up to nine, and beyond that there are
// more years.
inline const Day corpusEnd{std::chrono::year(2026) / 2 / 28};

// Each of these words stands in exactly one memo of a corpus of a hundred memos or more.
inline constexpr std::array<std::string_view, 8> rareWords{"龘靐", "爨邡",    "饕餮鼎", "耄耋叟",
                                                           "囹圄", "zyzzyva", "氍毹",   "魑魅"};

// In the order of days and numbers.
void visitCorpus(const CorpusOptions& options, const std::function<void(const CorpusMemo&)>& visit);

struct CorpusSummary {
  std::uint64_t days = 0;
  std::uint64_t memos = 0;
  std::uint64_t memoBytes = 0;
  std::uint64_t attachments = 0;
  std::uint64_t mediaBytes = 0;
};

class CorpusError : public Error {
 public:
  explicit CorpusError(const std::string& text) : Error("corpus.folderNotEmpty", text) {}
};

// Writes a corpus as a data root into `folder`, which is missing or empty, and returns when it has
// reached the disk. `progress` is told how many memos are written, some times a second. Throws
// CorpusError, FileError; what was written by then stays.
CorpusSummary writeCorpus(const CorpusOptions& options, const std::filesystem::path& folder,
                          const std::function<void(std::uint64_t)>& progress = {});

}  // namespace nomely::bench
