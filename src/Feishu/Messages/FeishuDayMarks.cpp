#include "Feishu/Messages/FeishuDayMarks.h"

#include <limits>
#include <string_view>

#include "Core/Query/DayReader.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

// Yesterday, today, and days of messages that come late.
constexpr std::size_t mostDays = 4;

// What is out of reach for the moment may be the very memo that is looked for; what is so for good
// must not keep the bot from writing.
bool mayPass(const FileError& error) {
  using Kind = FileError::Kind;
  return error.kind() == Kind::inputOutput || error.kind() == Kind::noSpace ||
         error.kind() == Kind::tooManyOpenFiles;
}

}  // namespace

std::optional<FeishuDayMarks::Stamp> FeishuDayMarks::stampOf(Day day) const {
  const StoreContext& context = days_.context();
  const auto attributes = context.files.attributes(context.paths.dayFolder(day));
  if (!attributes) return std::nullopt;
  return Stamp{attributes->modified, attributes->fileNumber};
}

bool FeishuDayMarks::hasNumberAfter(Day day, std::int64_t highest) const {
  const StoreContext& context = days_.context();
  return highest < std::numeric_limits<std::int64_t>::max() &&
         context.files.exists(context.paths.memoFile(day, highest + 1));
}

const FeishuDayMarks::Marks& FeishuDayMarks::of(Day day) {
  try {
    const auto stamp = stampOf(day);
    if (!stamp) {
      forget(day);
      return none_;
    }
    const auto known = known_.find(day);
    // File systems count time in steps of milliseconds: a memo that came within the same step as
    // ours shows by its number.
    if (known != known_.end() && known->second.stamp == *stamp &&
        !hasNumberAfter(day, known->second.marks.highest))
      return known->second.marks;
    Known found{read(day), *stamp};
    if (known == known_.end() && known_.size() == mostDays)
      known_.erase(known_.begin()->first == day ? std::prev(known_.end()) : known_.begin());
    return known_.insert_or_assign(day, std::move(found)).first->second.marks;
  } catch (const FileError& error) {
    Log::error(LogChannel::feishu, "无法查看 {} 的记录：{}", day.string(), error.what());
    forget(day);
    if (mayPass(error)) throw;
    return none_;
  }
}

FeishuDayMarks::Marks FeishuDayMarks::read(Day day) const {
  DayReader reader(days_.context());
  const std::vector<DirectoryEntry>& entries = reader.open(day);
  Marks marks;
  if (const auto numbers = DayStore::numbersIn(entries); !numbers.empty())
    marks.highest = numbers.back();
  const auto add = [&](const std::string& name) {
    try {
      if (const auto content = reader.read(name)) mark(marks, reader.parsed(name, content->bytes));
    } catch (const FileError& error) {
      if (mayPass(error)) throw;
    } catch (const Error&) {
      // Left out as in every list, which report it.
    }
  };
  for (const DirectoryEntry& entry : entries) {
    if (!DayReader::memoNumber(entry.name)) continue;
    try {
      add(entry.name);
    } catch (const FileError&) {
      add(entry.name);  // or one memo of thousands would end the reading of all
    }
  }
  return marks;
}

void FeishuDayMarks::mark(Marks& marks, const Memo& memo) {
  constexpr std::string_view prefix = messageTag;
  for (const std::string& tag : memo.tags)
    if (tag.starts_with(prefix)) marks.messageIds.insert(tag.substr(prefix.size()));
  if (memo.source == source) marks.bodies.emplace(trimSpaceAndBreaks(memo.body));
}

void FeishuDayMarks::add(const Memo& memo, Day day) {
  const auto known = known_.find(day);
  if (known == known_.end()) return;
  Marks& marks = known->second.marks;
  try {
    const auto stamp = stampOf(day);
    // A number that was taken shows that somebody else writes there too.
    if (!stamp || memo.seqNumber != marks.highest + 1) return forget(day);
    mark(marks, memo);
    marks.highest = memo.seqNumber;
    known->second.stamp = *stamp;
  } catch (const FileError&) {
    forget(day);
  }
}

}  // namespace nomely
