#include "AI/Summaries/NoteCorpus.h"

#include <algorithm>
#include <optional>
#include <unordered_map>

#include <fmt/format.h>

#include "Core/Extensions/TagNames.h"
#include "Platform/Time/ChineseDates.h"

namespace nomely {
namespace {

// "`a` `b`"; empty when all are hidden.
std::string shownTags(const std::vector<std::string>& tags) {
  std::string line;
  for (const std::string& tag : tags)
    if (!TagNames::isHidden(tag)) line += fmt::format("{}`{}`", line.empty() ? "" : " ", tag);
  return line;
}

}  // namespace

std::string NoteCorpus::text(const std::vector<NoteEntry>& notes) {
  const ChineseDates dates("M月d日 EEEE");
  std::string corpus;
  std::optional<Day> day;
  std::string heading;
  for (const NoteEntry& note : notes) {
    if (day != note.date) heading = "### " + dates.format(note.date) + "\n\n";
    day = note.date;
    if (!corpus.empty()) corpus += "\n\n---\n\n";
    corpus += heading;
    corpus += note.body;
    if (const std::string tags = shownTags(note.tags); !tags.empty()) corpus += "\n\n标签：" + tags;
  }
  return corpus;
}

std::size_t NoteCorpus::dayCount(const std::vector<NoteEntry>& notes) {
  std::size_t count = 0;
  std::optional<Day> day;
  for (const NoteEntry& note : notes) {
    if (day != note.date) ++count;
    day = note.date;
  }
  return count;
}

std::string NoteCorpus::months(const std::vector<NoteEntry>& notes) {
  std::string words;
  unsigned last = 0;
  for (const NoteEntry& note : notes) {
    const auto month = static_cast<unsigned>(note.date.civil().month());
    if (month != last) words += fmt::format("{}{}月", words.empty() ? "" : "、", month);
    last = month;
  }
  return words;
}

std::string NoteCorpus::tagFrequency(const std::vector<NoteEntry>& notes) {
  struct Use {
    std::string_view tag;
    std::size_t count;
  };
  std::vector<Use> uses;
  std::unordered_map<std::string_view, std::size_t> places;
  for (const NoteEntry& note : notes)
    for (const std::string& tag : note.tags) {
      if (TagNames::isHidden(tag)) continue;
      const auto [place, isNew] = places.emplace(tag, uses.size());
      if (isNew) uses.push_back({tag, 0});
      ++uses[place->second].count;
    }
  std::ranges::stable_sort(uses, std::greater(), &Use::count);
  if (constexpr std::size_t most = 8; uses.size() > most) uses.resize(most);
  std::string words;
  for (const Use& use : uses)
    words += fmt::format("{}`{}`({}次)", words.empty() ? "" : " ", use.tag, use.count);
  return words;
}

}  // namespace nomely
