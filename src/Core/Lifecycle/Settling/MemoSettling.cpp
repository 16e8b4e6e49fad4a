#include "Core/Lifecycle/Settling/MemoSettling.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <functional>
#include <limits>
#include <tuple>
#include <utility>

#include <fmt/format.h>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Lifecycle/Settling/ConflictMarkers.h"
#include "Core/Lifecycle/Settling/ConflictNames.h"
#include "Core/Lifecycle/Settling/QuietTime.h"
#include "Core/Lifecycle/Settling/SecondForms.h"
#include "Core/Lifecycle/Settling/TrashSettling.h"
#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Storage/DerivedIdentity.h"
#include "Core/Storage/MemoFile.h"
#include "Core/Storage/SyncedFolder.h"
#include "Platform/Files/FileError.h"

namespace nomely {
namespace {

using Note = StandingNotes::Note;
using Home = StateKeeping::Home;

constexpr auto unreadable = "不是笔记，也无法修复成笔记，保持原样";
constexpr auto attached = "是一条笔记的附件，保持原样";
constexpr auto bothUnreadable = "里面是 git 的冲突标记，分开后两边都不是笔记，保持原样";

std::string nameOf(const Note& note) {
  return fmt::format("{}/{}", note.day.string(), DiskPaths::memoFileName(note.seqNumber));
}

// The order in which strays get their numbers, and which of two notes keeps the one they share.
bool isMadeBefore(const MemoText& left, const MemoText& right) {
  const auto made = [](const MemoText& text) {
    return DateFormatters::parseTimestamp(text.memo.createdAt.value_or(""));
  };
  return std::tuple(made(left), std::string_view(left.bytes)) <
         std::tuple(made(right), std::string_view(right.bytes));
}

}  // namespace

MemoSettling::MemoSettling(const MemoService& service, StandingNotes& notes, SettlingResult& result)
    : service_(service),
      context_(service.context()),
      days_(service.days()),
      notes_(notes),
      result_(result),
      keeping_(service) {
  const SyncedFolder synced(context_);
  isInGit_ = synced.isBy(SyncedFolder::Engine::git);
  carriesTimes_ = !isInGit_ || synced.places().size() > 1;
}

std::filesystem::path MemoSettling::inDay(Day day, const std::string& name) const {
  return context_.paths.dayFolder(day) / name;
}

void MemoSettling::tell(const std::filesystem::path& path, const std::string& outcome) {
  result_.told.push_back({path.lexically_relative(context_.paths.rootURL), outcome});
}

std::optional<MemoSettling::Sides> MemoSettling::sidesIn(const std::filesystem::path& file) const {
  const auto attributes = context_.files.attributes(file, LinkPolicy::noFollow);
  if (!attributes || attributes->type != FileType::regular) return std::nullopt;
  auto bytes = context_.files.read(file, MemoFile::maxSize);
  if (!bytes) return std::nullopt;
  Sides sides;
  const auto add = [&](std::string text) {
    if (auto side = MemoText::read(std::move(text), attributes->permissions,
                                   DateFormatters::timeOnly.format(attributes->modified)))
      sides.texts.push_back(*std::move(side));
  };
  auto marked = ConflictMarkers::in(*bytes);
  // Inside a body they may be what somebody wrote, unless git was at work here.
  if (!marked || !(marked->touchHeader || (isInGit_ && !marked->areInCode))) {
    add(*std::move(bytes));
    return sides;
  }
  sides.whole = *std::move(bytes);
  add(std::move(marked->ours));
  add(std::move(marked->theirs));
  return sides;
}

void MemoSettling::settleStrays(Day day, const std::vector<std::string>& names) {
  std::vector<std::pair<MemoText, std::string>> strays;
  for (const std::string& name : names)
    if (auto sides = sidesIn(inDay(day, name)); sides && !sides->texts.empty())
      strays.emplace_back(std::move(sides->texts.front()), name);
  std::ranges::stable_sort(strays, isMadeBefore, &std::pair<MemoText, std::string>::first);
  for (const auto& [text, name] : strays) settleStray(day, name);
}

void MemoSettling::settleStray(Day day, const std::string& name) {
  context_.write([&] {
    const std::filesystem::path file = inDay(day, name);
    auto sides = sidesIn(file);
    if (!sides || !faultOf(day, name).empty()) return;
    if (QuietTime::isYoung(context_, file)) {
      result_.isWaiting = true;
      return;
    }
    std::string outcome;
    for (MemoText& text : sides->texts) {
      // Half of a file is not all that it held.
      if (sides->areMarked() && sides->texts.size() == 1) text.found = sides->whole;
      outcome = takeIn(std::move(text), day, sides->areMarked() ? "" : name);
      if (outcome.empty()) return;
    }
    context_.files.removeFile(file);
    tell(file, outcome);
  });
}

std::string MemoSettling::takeIn(MemoText text, Day day, const std::string& stray) {
  bool isWhole = !stray.empty();
  if (text.id().empty()) {
    if (const auto twin = twinOf(text, day)) {
      if (QuietTime::isYoung(context_, twin->changed)) return wait();
      if (auto outcome = joinTwin(text, *twin); !outcome.empty()) return outcome;
    }
    identify(text, day);
    isWhole = false;
  }
  const auto standing = notes_.of(text.id());
  if (!standing.empty()) return merge(text, day, stray, standing.front());
  const auto trashed = TrashSettling::textOf(service_, text.id());
  if (!trashed || text.staysBefore(*trashed)) return place(text, day, stray, isWhole);
  ++result_.others;
  keeping_.keepFound(text);
  // An equal text is kept, too: somebody may have taken the note out of the trash elsewhere.
  const Home home = Home::of(context_.paths, day);
  keeping_.letGo(keeping_.keep({text, home}, {*trashed, home}), home.texts, stray);
  return fmt::format("{}，存入它的历史", text.isIn(*trashed) ? "和回收站里的同一条笔记内容相同"
                                                             : "比回收站里的同一条笔记更早");
}

std::string MemoSettling::wait() {
  result_.isWaiting = true;
  return {};
}

std::string MemoSettling::joinTwin(MemoText text, const Note& twin) {
  if (text.found.empty() && MemoFrontmatterParser::losesOnRewrite(text.bytes))
    text.found = text.bytes;
  if (!text.found.empty()) {
    if (twin.text.id().empty()) return {};
    text.memo.memoId = twin.text.id();
    keeping_.keepFound(text);
  }
  ++result_.others;
  return fmt::format("和 {} 内容相同，已移除", nameOf(twin));
}

void MemoSettling::identify(MemoText& text, Day day) {
  const std::string bytes = text.found.empty() ? text.bytes : text.found;
  text.setId(DerivedIdentity::memoId("stray", {day.string(), bytes}));
}

std::optional<Note> MemoSettling::twinOf(const MemoText& text, Day day) const {
  for (const std::int64_t number : days_.listNumbers(day))
    if (auto note = StandingNotes::read(days_, day, number); note && note->text.showsAs(text))
      return note;
  return std::nullopt;
}

std::string MemoSettling::merge(const MemoText& text, Day day, const std::string& stray,
                                const Note& standing) {
  if (isLastCopy(text, day, stray, standing)) return {};
  if (QuietTime::isYoung(context_, standing.changed)) return wait();
  keeping_.keepFound(text);
  const bool isSame = text.isIn(standing.text);
  ++(isSame ? result_.others : result_.notes);
  const Home home = Home::of(context_.paths, day);
  const Home place = Home::of(context_.paths, standing.day);
  if (isSame || standing.text.staysBefore(text)) {
    // An equal text is kept, too: the engine may be about to replace the note with a third one.
    keeping_.letGo(keeping_.keep({text, home}, {standing.text, place}), home.texts, stray);
    return fmt::format("{} {} {}，存入它的历史", isSame ? "和" : "比", nameOf(standing),
                       isSame ? "内容相同" : "更早");
  }
  const auto free = keeping_.keep({standing.text, place}, {text, place});
  const auto moved = keeping_.bring(text.memo, home, place);
  write(text, standing.day, standing.seqNumber);
  keeping_.letGo(free, place.texts);
  keeping_.letGo(moved, home.texts, stray);
  return fmt::format("比 {} 更新，已换上；原来的存入历史", nameOf(standing));
}

bool MemoSettling::isLastCopy(const MemoText& text, Day day, const std::string& stray,
                              const Note& standing) const {
  return standing.day == day && text.isIn(standing.text) &&
         ConflictNames::isCopyOf(stray, DiskPaths::memoFileName(standing.seqNumber)) &&
         SecondForms::mayBeLast(context_, inDay(day, stray));
}

void MemoSettling::write(const MemoText& text, Day day, std::int64_t seqNumber) {
  Memo memo = text.memo;
  memo.seqNumber = seqNumber;
  days_.memoStore().writeAs(memo, day, text.bytes);
  result_.changedMemos = true;
}

std::string MemoSettling::place(const MemoText& text, Day day, const std::string& stray,
                                bool isWhole) {
  keeping_.keepFound(text);
  Memo memo = text.memo;
  for (memo.seqNumber = days_.nextSeqNumber(day);; ++memo.seqNumber) {
    if (isWhole ? moveIn(inDay(day, stray), day, memo.seqNumber)
                : days_.memoStore().createAs(memo, day, text.bytes, text.permissions))
      break;
    if (memo.seqNumber == std::numeric_limits<std::int64_t>::max())
      throw FileError("编号", inDay(day, stray), EOVERFLOW);
  }
  notes_.add(text.id(), day, memo.seqNumber);
  ++result_.notes;
  result_.changedMemos = true;
  return "成为 " + DiskPaths::memoFileName(memo.seqNumber);
}

bool MemoSettling::moveIn(const std::filesystem::path& file, Day day, std::int64_t seqNumber) {
  try {
    days_.memoStore().moveIn(file, day, seqNumber);
    return true;
  } catch (const FileError& error) {
    if (error.kind() != FileError::Kind::alreadyExists) throw;
    return false;
  }
}

void MemoSettling::settleMarked(const MemoPlace& place) {
  context_.write([&] {
    const std::string name = DiskPaths::memoFileName(place.seqNumber);
    const std::filesystem::path file = inDay(place.day, name);
    auto sides = sidesIn(file);
    if (!sides || !sides->areMarked() || sides->texts.empty()) return;
    if (QuietTime::isYoung(context_, file)) return void(wait());
    std::vector<MemoText>& texts = sides->texts;
    // Half of a file is not all that it held.
    if (texts.size() == 1) texts.front().found = sides->whole;
    for (MemoText& text : texts)
      if (text.id().empty()) identify(text, place.day);
    std::ranges::sort(texts, isMadeBefore);
    const Home home = Home::of(context_.paths, place.day);
    std::set<std::filesystem::path> free;
    if (texts.size() == 2) {
      if (texts[0].id() != texts[1].id()) {
        if (takeIn(texts[1], place.day, {}).empty()) return;
      } else {
        if (texts[1].staysBefore(texts[0])) std::swap(texts[0], texts[1]);
        keeping_.keepFound(texts[1]);
        free = keeping_.keep({texts[1], home}, {texts[0], home});
        ++result_.notes;
      }
    } else {
      ++result_.others;
    }
    keeping_.keepFound(texts[0]);
    write(texts[0], place.day, place.seqNumber);
    notes_.add(texts[0].id(), place.day, place.seqNumber);
    keeping_.letGo(free, home.texts);
    tell(file, "git 的冲突标记已拆开，两边都在");
  });
}

void MemoSettling::settleShared(const std::string& memoId) {
  context_.write([&] {
    const std::vector<Note> notes = notes_.of(memoId);
    if (notes.size() < 2) return;
    if (std::ranges::any_of(
            notes, [&](const Note& note) { return QuietTime::isYoung(context_, note.changed); }))
      return void(wait());
    const Ranks ranks = ranksOf(notes);
    for (const Note* going : ranks.going) {
      remove(*going, *ranks.staying.front());
      ++(going->text.isIn(ranks.staying.front()->text) ? result_.others : result_.notes);
    }
  });
}

// Later texts stay; of equal ones that which a person put where it is. Moving a note makes a new
// file, taking it out of the trash where its number is taken gives it a higher one. The file that
// it left may still lie here, if the engine brings that news later.
MemoSettling::Ranks MemoSettling::ranksOf(const std::vector<Note>& notes) const {
  const auto& latest = *std::ranges::max_element(
      notes, [](const Note& a, const Note& b) { return b.text.staysBefore(a.text); });
  Ranks ranks;
  for (const Note& note : notes)
    (isStoredAs(note.text.memo, latest.text.memo) ? ranks.staying : ranks.going).push_back(&note);
  if (ranks.staying.size() < 2) return ranks;
  const Moment newest = (*std::ranges::max_element(ranks.staying, {}, [](const Note* note) {
                          return note->modified;
                        }))->modified;
  const auto isOlder = [&](const Note* note) {
    return note->modified < newest - DayStore::distinctTimes;
  };
  if (carriesTimes_ && std::ranges::any_of(ranks.staying, isOlder)) {
    const auto older = std::ranges::stable_partition(ranks.staying, std::not_fn(isOlder));
    ranks.going.insert(ranks.going.end(), older.begin(), older.end());
    ranks.staying.erase(older.begin(), older.end());
  }
  const bool isOneDay = ranks.staying.front()->day == ranks.staying.back()->day;
  // What is still there after a day is not on its way out.
  const bool isOld = std::ranges::none_of(ranks.staying, [&](const Note* note) {
    return QuietTime::isYoung(context_, note->changed, std::chrono::days(1));
  });
  if (isOneDay || !carriesTimes_ || isOld) {
    ranks.going.insert(ranks.going.end(), ranks.staying.begin(), ranks.staying.end() - 1);
    ranks.staying.erase(ranks.staying.begin(), ranks.staying.end() - 1);
  }
  return ranks;
}

// Its text is kept even where it is that of the note that stays: should the engine take that away,
// as it may where two machines see the same files in different order, it is not gone.
void MemoSettling::remove(const Note& going, const Note& staying) {
  const Home home = Home::of(context_.paths, going.day);
  const auto free =
      keeping_.keep({going.text, home}, {staying.text, Home::of(context_.paths, staying.day)});
  days_.memoStore().remove(going.day, going.seqNumber);
  keeping_.letGo(free, home.texts);
  result_.changedMemos = true;
  tell(inDay(going.day, DiskPaths::memoFileName(going.seqNumber)),
       fmt::format("和 {} 是同一条笔记，存入它的历史", nameOf(staying)));
}

void MemoSettling::settleAttachment(Day day, const std::string& name, const std::string& base) {
  context_.write([&] {
    const std::filesystem::path file = inDay(day, name);
    if (!context_.files.exists(file) || !context_.files.exists(inDay(day, base))) return;
    if (QuietTime::isYoung(context_, file)) return void(wait());
    if (!faultOfAttachment(day, name, base).empty()) return;
    context_.files.removeFile(file);
    ++result_.others;
    tell(file, fmt::format("和 {} 内容相同，已移除", base));
  });
}

std::string MemoSettling::faultOfAttachment(Day day, const std::string& name,
                                            const std::string& base) const {
  if (!context_.files.contentsEqual(inDay(day, name), inDay(day, base)))
    return fmt::format("和 {} 内容不同，保持原样", base);
  return keeping_.isNamed(name, context_.paths.dayFolder(day), {}) ? attached : "";
}

std::string MemoSettling::faultOf(Day day, const std::string& name) const {
  const auto sides = sidesIn(inDay(day, name));
  if (!sides) return {};
  if (sides->texts.empty()) return sides->areMarked() ? bothUnreadable : unreadable;
  const auto standing = notes_.of(sides->texts.front().id());
  if (!standing.empty() && isLastCopy(sides->texts.front(), day, name, standing.front()))
    return SettlingResult::waitsForADay;
  return keeping_.isNamed(name, context_.paths.dayFolder(day), {}) ? attached : "";
}

std::optional<std::string> MemoSettling::faultOfMarked(const MemoPlace& place) const {
  const auto sides = sidesIn(context_.paths.memoFile(place.day, place.seqNumber));
  if (!sides || !sides->areMarked()) return std::nullopt;
  return sides->texts.empty() ? bothUnreadable : "";
}

std::vector<MemoPlace> MemoSettling::placesOf(const std::string& memoId, bool& canBeSettled) const {
  const std::vector<Note> notes = notes_.of(memoId);
  std::vector<MemoPlace> places;
  if (notes.size() < 2) return places;
  for (const Note& note : notes) places.push_back({note.day, note.seqNumber});
  canBeSettled = ranksOf(notes).staying.size() == 1;
  return places;
}

}  // namespace nomely
