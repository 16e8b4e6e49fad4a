#include "bench/Corpus.h"

#include <algorithm>

#include <fmt/format.h>

#include "bench/CorpusText.h"
#include "bench/CorpusVocabulary.h"

namespace nomely::bench {
namespace {

constexpr std::uint64_t thirtyYears = 10957;  // days
constexpr std::uint64_t leastPerDay = 3;
constexpr std::uint64_t mostPerDay = 9;

// Random streams, so that a change of one thing leaves the others as they were.
enum Purpose : std::uint64_t { days, header, text };

struct CorpusDay {
  Day day;
  std::uint64_t firstIndex;
  std::uint64_t memos;
};

// Which days have memos and how many.
class Calendar {
 public:
  explicit Calendar(const CorpusOptions& options) : seed_(options.seed), memosLeft_(options.memos) {
    constexpr std::uint64_t usual = 6;
    constexpr std::uint64_t full = 8;  // a mean that leaves days their variety
    count_ = std::min(std::max<std::uint64_t>(options.memos / usual, 1), thirtyYears);
    count_ = std::max(count_, (options.memos + full - 1) / full);
    span_ = std::max(count_, thirtyYears);
  }

  [[nodiscard]] bool atEnd() const { return memosLeft_ == 0; }

  CorpusDay next() {
    Random random(seed_, Purpose::days, index_);
    // One day out of each of `count_` equal stretches; the last is the very last.
    const std::uint64_t begin = index_ * span_ / count_;
    const std::uint64_t end = (index_ + 1) * span_ / count_;
    const std::uint64_t daysAfter = count_ - ++index_;
    const std::uint64_t at =
        daysAfter == 0 ? span_ - 1 : begin + random.below(static_cast<std::uint32_t>(end - begin));
    CorpusDay day{corpusEnd.plusDays(static_cast<int>(at + 1) - static_cast<int>(span_)),
                  memosBefore_, drawMemos(daysAfter, random)};
    memosBefore_ += day.memos;
    memosLeft_ -= day.memos;
    return day;
  }

 private:
  [[nodiscard]] std::uint64_t drawMemos(std::uint64_t daysAfter, Random& random) const {
    if (daysAfter == 0) return memosLeft_;
    // Rounded up now and then, so that what rounding leaves over doesn't gather at the end.
    const auto daysLeft = static_cast<std::uint32_t>(daysAfter + 1);
    const std::uint64_t mean = (memosLeft_ + random.below(daysLeft)) / daysLeft;
    const std::uint64_t spread = std::min(mean - leastPerDay, mostPerDay - mean);
    const std::uint64_t drawn =
        mean + random.below(static_cast<std::uint32_t>(2 * spread + 1)) - spread;
    // What is left must fit the days that are left.
    const std::uint64_t reserved = daysAfter * leastPerDay;
    const std::uint64_t room = daysAfter * mostPerDay;
    const std::uint64_t least = std::max(leastPerDay, memosLeft_ > room ? memosLeft_ - room : 0);
    const std::uint64_t most = std::min(mostPerDay, memosLeft_ - reserved);
    return std::clamp(drawn, least, most);
  }

  std::uint64_t seed_;
  std::uint64_t memosLeft_;
  std::uint64_t memosBefore_ = 0;
  std::uint64_t count_ = 0;  // days with memos
  std::uint64_t span_ = 0;   // days from the first to the end
  std::uint64_t index_ = 0;
};

std::string hexadecimal(Random& random) {
  return fmt::format("{:016x}{:016x}", random.next(), random.next());
}

std::string timestamp(Day day, std::uint32_t minutes, Random& random) {
  return fmt::format("{}T{:02}:{:02}:{:02}+08:00", day.string(), minutes / 60, minutes % 60,
                     random.below(60));
}

void addTags(MemoFrontmatter& memo, Random& random) {
  static const Zipf frequency(tagLabels().size());
  const std::uint32_t at = random.below(100);
  const std::uint32_t count = at < 25 ? 0 : at < 70 ? 1 : at < 92 ? 2 : 3;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::string& label = tagLabels()[frequency.draw(random)];
    if (std::ranges::find(memo.tags, label) == memo.tags.end()) memo.tags.push_back(label);
  }
}

// Most memos were typed; some came from elsewhere, and some before memos had an identity.
void addOrigin(MemoFrontmatter& memo, Day day, std::uint32_t minutes, Random& random) {
  const std::uint32_t at = random.below(100);
  const bool isLegacy = at < 6;
  if (!isLegacy) {
    memo.schemaVersion = MemoFrontmatter::currentSchemaVersion;
    memo.memoId = "memo_" + hexadecimal(random);
  }
  if (!isLegacy || random.percent(50)) {
    memo.createdAt = timestamp(day, minutes, random);
    memo.updatedAt = random.percent(80)
                         ? *memo.createdAt
                         : timestamp(day.plusDays(static_cast<int>(random.below(60))),
                                     random.below(1440), random);
  }
  if (at >= 6 && at < 16) {
    memo.source = "feishu";
    memo.sourceId = "om_" + hexadecimal(random);
  } else if (at >= 16 && at < 24) {
    memo.source = "flomo";
    memo.sourceId = fmt::format("flomo-{}", random.below(1000000));
  } else if (at >= 24 && at < 28) {
    memo.source = "apple_notes";
    memo.sourceId =
        fmt::format("x-coredata://{:08X}/ICNote/p{}", random.below(UINT32_MAX), random.below(9999));
    memo.tags = {random.oneIn(8) ? "_notes_import" : "备忘录/" + tagLabels()[random.below(9)]};
  }
}

AudioTranscript drawTranscript(Random& random) {
  AudioTranscript transcript;
  std::uint32_t tenths = 0;
  for (std::uint32_t left = random.between(1, 12); left > 0; --left) {
    AudioTranscriptSegment segment;
    segment.text = drawSentence(random);
    const std::uint32_t length = random.between(8, 90);
    segment.start = static_cast<double>(tenths) / 10;
    segment.duration = static_cast<double>(length) / 10;
    tenths += length + random.below(12);
    transcript.text += segment.text;
    transcript.segments.push_back(std::move(segment));
  }
  return transcript;
}

std::string originalName(MediaKind kind, Random& random) {
  if (kind == MediaKind::m4a) return fmt::format("录音 {}.m4a", random.between(1, 999));
  if (random.percent(60)) return fmt::format("IMG_{:04}.{}", random.below(9999), extensionOf(kind));
  std::string name;
  Vocabulary::shared().nouns.appendTo(name, random);
  Vocabulary::shared().nouns.appendTo(name, random);
  return fmt::format("{}.{}", name, extensionOf(kind));
}

void addAttachments(CorpusMemo& memo, std::uint64_t index, Random& random) {
  if (!random.percent(9)) return;
  MemoFrontmatter& header = memo.frontmatter;
  const std::uint32_t count = random.percent(75) ? 1 : random.between(2, 5);
  for (std::uint32_t i = 0; i < count; ++i) {
    constexpr std::array kinds{MediaKind::jpg, MediaKind::jpg, MediaKind::jpg, MediaKind::png,
                               MediaKind::png, MediaKind::m4a, MediaKind::m4a, MediaKind::pdf};
    const MediaKind kind = random.pick(kinds);
    // An odd factor maps the numbers below 2^32 onto each other: no name comes twice.
    const auto serial = static_cast<std::uint32_t>((index * 5 + i) * 0x9E3779B1U);
    const std::string name = fmt::format("{:08X}.{}", serial, extensionOf(kind));
    header.attachments.push_back(name);
    memo.media.push_back(kind);
    if (random.percent(70)) header.originalNames[name] = originalName(kind, random);
    if (random.percent(20)) header.attachmentDescriptions[name] = drawSentence(random);
    if (kind == MediaKind::m4a && random.percent(60))
      header.audioTranscripts[name] = drawTranscript(random);
  }
}

std::string_view rareWordOf(std::uint64_t index, std::uint64_t memos) {
  for (std::size_t i = 0; i < rareWords.size(); ++i)
    if (index == memos * (i + 1) / (rareWords.size() + 1)) return rareWords[i];
  return {};
}

CorpusMemo makeMemo(const CorpusOptions& options, const CorpusDay& day, std::uint64_t place) {
  const std::uint64_t index = day.firstIndex + place;
  Random random(options.seed, Purpose::header, index);
  CorpusMemo memo{day.day, static_cast<std::int64_t>(place + 1), {}, {}, {}};
  // Some days miss a number: a memo was deleted.
  if (place > 0 && day.firstIndex % 41 == 0) ++memo.number;
  constexpr std::uint32_t wakeUp = 7 * 60;
  const auto slot = static_cast<std::uint32_t>(16 * 60 / day.memos);
  const std::uint32_t minutes =
      wakeUp + static_cast<std::uint32_t>(place) * slot + random.below(slot);
  MemoFrontmatter& header = memo.frontmatter;
  header.time = fmt::format("{:02}:{:02}", minutes / 60, minutes % 60);
  addTags(header, random);
  addOrigin(header, day.day, minutes, random);
  if (random.percent(30)) header.mood = random.between(1, 5);
  header.pinned = random.oneIn(200);
  header.lockedOnTop = random.oneIn(2000);
  addAttachments(memo, index, random);

  Random words(options.seed, Purpose::text, index);
  memo.body = drawBody(words, header.tags);
  memo.body += rareWordOf(index, options.memos);
  return memo;
}

}  // namespace

void visitCorpus(const CorpusOptions& options,
                 const std::function<void(const CorpusMemo&)>& visit) {
  Calendar calendar(options);
  while (!calendar.atEnd()) {
    const CorpusDay day = calendar.next();
    for (std::uint64_t place = 0; place < day.memos; ++place) visit(makeMemo(options, day, place));
  }
}

}  // namespace nomely::bench
