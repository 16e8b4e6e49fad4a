#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "CLI/Session.h"
#include "Core/Query/TimelineQueryStore.h"
#include "Core/Storage/MemoPlace.h"

namespace nomely {

// What the words of a command line mean. Each throws UsageError with a sentence that says what
// would be right.
namespace Arguments {

// As DateWords reads it.
[[nodiscard]] Day day(const std::string& text, const Clock& clock);
// "2026-03"; the present month for an empty text.
[[nodiscard]] std::chrono::year_month month(const std::string& text, const Clock& clock);
// "9:05" or "09:05", given back as "09:05".
[[nodiscard]] std::string time(const std::string& text);
[[nodiscard]] std::int64_t integer(const std::string& text, std::string_view what);
[[nodiscard]] std::string tag(const std::string& text);
[[nodiscard]] std::vector<std::string> tags(const std::vector<std::string>& texts);

// Throws when more than one of the options was given.
void atMostOne(const std::vector<std::pair<const char*, bool>>& options);

// "多 个 词" of several words; absent for none.
[[nodiscard]] std::optional<std::string> joined(const std::vector<std::string>& words);
// Files that are there and no folders. Throws NameNotFoundError too.
[[nodiscard]] std::vector<std::filesystem::path> files(const std::vector<std::string>& names);

// The memo that is named by "2026-03-01/7", "today/7", "@" (the newest), "@3" (the third newest),
// its identifier, or "memo_" and at least the first 8 characters after that. Throws
// NameNotFoundError too.
[[nodiscard]] TimelineEntry memo(const std::string& reference, Session& session);
// The same among the notes of another place, an archive: by its place or its identifier.
struct MemoSource {
  std::function<std::optional<Memo>(const MemoPlace& place)> read;
  // Goes through all that can be read until `visit` returns false.
  std::function<void(const std::function<bool(TimelineEntry)>& visit)> forEach;
};
[[nodiscard]] TimelineEntry memoIn(const MemoSource& source, const std::string& reference,
                                   const Clock& clock);
// Each of them, those that are named twice once.
[[nodiscard]] std::vector<TimelineEntry> memos(const std::vector<std::string>& references,
                                               Session& session);
// Where the memo stands, be its file readable or not.
[[nodiscard]] MemoPlace place(const std::string& reference, Session& session);

// A note by what is kept of its past.
struct Past {
  std::string memoId;                  // empty: it has none, and no past
  std::optional<TimelineEntry> entry;  // absent for a note that stands nowhere or can't be read
};
// The same for a REF whose note may be broken or gone: then an identifier that has snapshots.
[[nodiscard]] Past past(const std::string& reference, Session& session);

// The stored name of the attachment that `name` names by its stored name or its original one.
[[nodiscard]] std::string attachment(const Memo& memo, const std::string& name);

}  // namespace Arguments

}  // namespace nomely
