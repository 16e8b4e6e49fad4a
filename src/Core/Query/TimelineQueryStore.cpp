#include "Core/Query/TimelineQueryStore.h"

#include <algorithm>
#include <ranges>

#include "Core/Extensions/AttachmentKinds.h"
#include "Core/Extensions/TagNames.h"
#include "Platform/Error.h"
#include "Platform/Files/FileError.h"

namespace nomely {
namespace {

using AttachmentKinds::isAudio;
using AttachmentKinds::isImage;

bool isOtherFile(std::string_view name) {
  return !isImage(name) && !isAudio(name);
}

template <typename Belongs>
bool hasAttachment(const MemoEntry& entry, Belongs belongs) {
  return std::ranges::any_of(entry.memo->attachments, belongs);
}

std::uint64_t audioBytes(const MemoEntry& entry, const StoreContext& context) {
  std::uint64_t bytes = 0;
  for (const std::string& name : entry.memo->attachments) {
    if (!isAudio(name)) continue;
    try {
      const auto file = context.files.attributes(context.paths.dayFolder(entry.date) / name);
      bytes += file ? file->size : 0;
    } catch (const FileError&) {
      // A file whose size can't be read counts as 0 bytes.
    }
  }
  return bytes;
}

}  // namespace

std::vector<Memo> TimelineQueryStore::visibleMemos(Day day) const {
  try {
    std::vector<Memo> memos = dayStore_.listMemos(day);
    std::erase_if(memos, [](const Memo& memo) { return !isVisible(memo); });
    return memos;
  } catch (const Error&) {
    return {};
  }
}

void TimelineQueryStore::forEach(const Test& test,
                                 const std::function<bool(const MemoEntry&)>& visit) const {
  if (searchIndex_ != nullptr) {
    searchIndex_->forEachEntry([&](const MemoEntry& entry) {
      return !stop_.stop_requested() && (!isVisible(*entry.memo) || !test(entry) || visit(entry));
    });
    return;
  }
  std::vector<Day> days;
  try {
    days = dayStore_.listAllDates();
  } catch (const Error&) {
    return;
  }
  for (const Day day : std::views::reverse(days)) {
    if (stop_.stop_requested()) return;
    Entries entries;
    for (Memo& memo : visibleMemos(day))
      entries.push_back({day, std::make_shared<const Memo>(std::move(memo))});
    std::erase_if(entries, [&](const MemoEntry& entry) { return !test(entry); });
    std::ranges::stable_sort(entries, orderedBefore);
    for (const MemoEntry& entry : entries)
      if (!visit(entry)) return;
  }
}

TimelineQueryStore::Entries TimelineQueryStore::select(const Test& test) const {
  Entries entries;
  forEach(test, [&](const MemoEntry& entry) {
    entries.push_back(entry);
    return true;
  });
  return entries;
}

void TimelineQueryStore::forEachVisibleEntry(
    const std::function<bool(const MemoEntry&)>& visit) const {
  forEach([](const MemoEntry& entry) { return !entry.memo->isExcludedFromTimeline(); }, visit);
}

TimelineQueryStore::Entries TimelineQueryStore::visibleEntries() const {
  return select([](const MemoEntry& entry) { return !entry.memo->isExcludedFromTimeline(); });
}

TimelineQueryStore::Entries TimelineQueryStore::entriesWithTag(std::string_view tag) const {
  return select([&](const MemoEntry& entry) {
    return std::ranges::any_of(
        entry.memo->tags, [&](std::string_view own) { return TagNames::isOrIsBelow(own, tag); });
  });
}

TimelineQueryStore::Entries TimelineQueryStore::entriesWithoutTags() const {
  return select([](const MemoEntry& entry) { return entry.memo->tags.empty(); });
}

TimelineQueryStore::Entries TimelineQueryStore::entriesWithImages() const {
  return select([](const MemoEntry& entry) { return hasAttachment(entry, isImage); });
}

TimelineQueryStore::Entries TimelineQueryStore::entriesWithLinks() const {
  return select([](const MemoEntry& entry) {
    const std::string& body = entry.memo->body;
    return body.find("http://") != std::string::npos || body.find("https://") != std::string::npos;
  });
}

TimelineQueryStore::Entries TimelineQueryStore::entriesWithAudioSortedBySize() const {
  struct Sized {
    std::uint64_t bytes;
    MemoEntry entry;
  };
  std::vector<Sized> found;
  for (MemoEntry& entry :
       select([](const MemoEntry& candidate) { return hasAttachment(candidate, isAudio); })) {
    const std::uint64_t bytes = audioBytes(entry, dayStore_.context());
    found.push_back({bytes, std::move(entry)});
  }
  std::ranges::stable_sort(found, [](const Sized& left, const Sized& right) {
    return left.bytes != right.bytes ? left.bytes > right.bytes
                                     : orderedBefore(left.entry, right.entry);
  });
  Entries entries;
  for (Sized& sized : found) entries.push_back(std::move(sized.entry));
  return entries;
}

TimelineQueryStore::Entries TimelineQueryStore::entriesWithAttachments() const {
  return select([](const MemoEntry& entry) { return hasAttachment(entry, isOtherFile); });
}

TimelineQueryStore::Entries TimelineQueryStore::pinnedEntries() const {
  return select([](const MemoEntry& entry) { return entry.memo->pinned; });
}

TimelineQueryStore::Entries TimelineQueryStore::onThisDayEntries(Day referenceDate) const {
  const std::chrono::year_month_day reference = referenceDate.civil();
  return select([&](const MemoEntry& entry) {
    const std::chrono::year_month_day date = entry.date.civil();
    return date.month() == reference.month() && date.day() == reference.day() &&
           date.year() < reference.year();
  });
}

}  // namespace nomely
