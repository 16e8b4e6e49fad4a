#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "CLI/Session.h"
#include "Core/Query/TimelineQueryStore.h"

namespace nomely {

// The options that choose memos, which `list` and `export` share: a day, a tag, everything, or one
// of the timeline's lists.
class MemoSelection {
 public:
  MemoSelection() = default;
  // The options write into it.
  MemoSelection(const MemoSelection&) = delete;
  MemoSelection& operator=(const MemoSelection&) = delete;

  void declare(CLI::App& app);

  // The chosen memos in the order of their list, as many as were asked for. Throws UsageError
  // before the first.
  void forEach(Session& session, const std::function<void(const MemoEntry&)>& visit) const;
  // The day whose memos are chosen; absent when it is not a day's.
  [[nodiscard]] std::optional<Day> day(const Session& session) const;

 private:
  struct List {
    const char* option;
    const char* help;
    std::function<TimelineQueryStore::Entries(const TimelineQueryStore&, Day today)> query;
    bool chosen = false;
  };

  [[nodiscard]] const List* chosenList() const;
  // A list that is the same on every day.
  template <auto query>
  static TimelineQueryStore::Entries timeless(const TimelineQueryStore& timeline, Day) {
    return (timeline.*query)();
  }

  std::optional<std::string> day_;
  std::optional<std::string> tag_;
  std::array<List, 7> lists_{{
      {"--untagged", "没有标签的", timeless<&TimelineQueryStore::entriesWithoutTags>},
      {"--images", "有图片的", timeless<&TimelineQueryStore::entriesWithImages>},
      {"--links", "有链接的", timeless<&TimelineQueryStore::entriesWithLinks>},
      {"--audio", "有录音的，最大的在前",
       timeless<&TimelineQueryStore::entriesWithAudioSortedBySize>},
      {"--files", "有其他附件的", timeless<&TimelineQueryStore::entriesWithAttachments>},
      {"--pinned", "置顶的", timeless<&TimelineQueryStore::pinnedEntries>},
      {"--on-this-day", "往年今日的",
       [](const TimelineQueryStore& timeline, Day today) {
         return timeline.onThisDayEntries(today);
       }},
  }};
  std::optional<std::int64_t> limit_;
  bool all_ = false;
};

}  // namespace nomely
