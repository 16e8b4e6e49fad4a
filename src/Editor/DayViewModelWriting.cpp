#include <algorithm>

#include <fmt/format.h>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Storage/WriteError.h"
#include "Editor/DayViewModel.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

std::string textOf(const std::exception_ptr& failure) {
  try {
    std::rethrow_exception(failure);
  } catch (const std::exception& error) {
    return error.what();
  }
}

// What is called from a queue reports by its return value, null for success.
template <typename Body>
std::exception_ptr failureOf(Body&& body) {
  try {
    std::forward<Body>(body)();
    return nullptr;
  } catch (const std::exception&) {
    return std::current_exception();
  }
}

bool isSameMemo(const Memo& listed, const Memo& memo) {
  return listed.memoId && listed.memoId == memo.memoId;
}

}  // namespace

Day DayViewModel::resolvedDate(const Memo& memo, std::optional<Day> date) const {
  if (date) return *date;
  if (memo.memoId && !memo.memoId->empty()) {
    const auto listed = std::ranges::find_if(
        allMemos.get(), [&](const MemoEntry& entry) { return isSameMemo(*entry.memo, memo); });
    if (listed != allMemos.get().end()) return listed->date;
  }
  return selectedDate.get();
}

const MemoEntry* DayViewModel::entryOf(Day date, std::int64_t seqNumber) const {
  const auto entry = std::ranges::find_if(allMemos.get(), [&](const MemoEntry& candidate) {
    return candidate.date == date && candidate.memo->seqNumber == seqNumber;
  });
  return entry == allMemos.get().end() ? nullptr : &*entry;
}

void DayViewModel::updateDayList(const Memo& memo, Day date) {
  const auto isIt = [&](const Memo& listed) {
    return memo.memoId ? isSameMemo(listed, memo)
                       : date == selectedDate.get() && listed.seqNumber == memo.seqNumber;
  };
  const auto place = std::ranges::find_if(memos.get(), isIt);
  if (place == memos.get().end()) return;
  memos.modify([&, index = place - memos.get().begin()](std::vector<Memo>& list) {
    list[static_cast<std::size_t>(index)] = memo;
  });
}

// The one way in which a changed memo enters the lists.
void DayViewModel::updateMemoryState(const Memo& memo, Day date) {
  updateDayList(memo, date);
  const MemoEntry* entry = entryOf(date, memo.seqNumber);
  if (!entry) return;
  const bool stays = !(timelineMode.get() == TimelineMode::pinned && !memo.pinned) &&
                     !(filterMembership_ && !filterMembership_(memo));
  allMemos.modify([&, index = entry - allMemos.get().data()](Entries& entries) {
    if (stays)
      entries[static_cast<std::size_t>(index)] = {date, std::make_shared<const Memo>(memo)};
    else
      entries.erase(entries.begin() + index);
  });
  recomputeDisplayMemos();
}

void DayViewModel::announceSaved() {
  if (onSavedSuccessfully) onSavedSuccessfully();
  saveState.set(SaveState::saved(now()));
}

void DayViewModel::announceFailure(const std::string& message) {
  saveState.set(SaveState::failed(message));
  lastError.set(message);
}

std::optional<Memo> DayViewModel::readBack(Day date, std::int64_t seqNumber) const {
  try {
    return dayStore_.memoStore().read(date, seqNumber);
  } catch (const Error& error) {
    Log::error(LogChannel::app, "⚠️ DayViewModel.updateMemo: {}", error.what());
    return std::nullopt;
  }
}

// A later change that has taken the failed one's place is left alone: its own write tells.
void DayViewModel::rollBack(const Memo& failed, Day date, const Memo& onDisk) {
  const MemoEntry* entry = entryOf(date, failed.seqNumber);
  if (entry && *entry->memo == failed) updateMemoryState(onDisk, date);
}

void DayViewModel::updateMemo(Memo memo, std::optional<Day> given) {
  const Day date = resolvedDate(memo, given);
  const MemoEntry* entry = entryOf(date, memo.seqNumber);
  const std::optional<Memo> expected = entry ? std::optional(*entry->memo) : std::nullopt;
  saveState.set(SaveState::saving());
  updateMemoryState(memo, date);
  saveQueue_.async([this, memo = std::move(memo), date, expected] {
    const std::exception_ptr failure = failureOf([&] { service_.commit(date, memo, expected); });
    if (!failure) return onMain([this] { announceSaved(); });
    onMain([this, memo, date, onDisk = readBack(date, memo.seqNumber),
            message = "更新笔记失败：" + textOf(failure)] {
      if (onDisk) rollBack(memo, date, *onDisk);
      announceFailure(message);
    });
  });
}

void DayViewModel::togglePinned(Memo memo, std::optional<Day> date) {
  memo.setPinned(!memo.pinned);
  memo.updatedAt = DateFormatters::timestamp(now());
  updateMemo(std::move(memo), date);
}

void DayViewModel::toggleLockedOnTop(Memo memo, std::optional<Day> date) {
  memo.setLockedOnTop(!memo.lockedOnTop);
  memo.updatedAt = DateFormatters::timestamp(now());
  updateMemo(std::move(memo), date);
}

void DayViewModel::saveMemoAsync(Memo memo, Day date, std::optional<Memo> expected,
                                 Completion completion) {
  saveState.set(SaveState::saving());
  saveQueue_.async([this, memo = std::move(memo), date, expected = std::move(expected),
                    completion = std::move(completion)] {
    std::exception_ptr failure = failureOf([&] { service_.commit(date, memo, expected); });
    onMain([this, memo, date, completion, failure]() mutable {
      // The data may have been replaced behind the write: what was saved is then no longer there.
      if (!failure && dayStore_.writes().isFrozen())
        failure = std::make_exception_ptr(WriteError(WriteError::Kind::maintenance));
      if (failure) {
        saveState.set(SaveState::failed(textOf(failure)));
      } else {
        updateMemoryState(memo, date);
        announceSaved();
      }
      completion(failure);
    });
  });
}

void DayViewModel::createCompleteMemo(CompleteMemo content, MemoCompletion completion) {
  saveQueue_.async([this, content = std::move(content), completion = std::move(completion)] {
    std::optional<Memo> created;
    const std::exception_ptr failure = failureOf([&] {
      created = service_.create({.body = content.body,
                                 .tags = content.tags,
                                 .mood = content.mood,
                                 .attachments = content.attachments,
                                 .originalNames = content.originalNames,
                                 .audioTranscripts = content.transcripts},
                                {.sourceDates = content.sourceDates,
                                 .fallbackDate = content.fallbackDate,
                                 .destinationDate = content.date});
    });
    onMain([created, failure, completion] { completion(created, failure); });
  });
}

void DayViewModel::moveMemo(Memo memo, Day from, Day to) {
  saveState.set(SaveState::saving());
  // Nothing moves within a day, and no list changes; the queue keeps the order of the saves.
  if (from == to) return saveQueue_.async([this] { onMain([this] { announceSaved(); }); });
  saveQueue_.async([this, memo = std::move(memo), from, to] {
    std::optional<Memo> moved;
    const std::exception_ptr failure = failureOf([&] { moved = service_.move(from, memo, to); });
    if (failure)
      return onMain(
          [this, message = "修改日期失败：" + textOf(failure)] { announceFailure(message); });
    onMain([this, number = memo.seqNumber, from, moved = *moved, to] {
      showMoved(number, from, moved, to);
      announceSaved();
    });
  });
}

// Timelines other than the day's show it again at their next load.
void DayViewModel::showMoved(std::int64_t seqNumber, Day from, const Memo& moved, Day to) {
  allMemos.modify([&](Entries& entries) {
    std::erase_if(entries, [&](const MemoEntry& entry) {
      return entry.date == from && entry.memo->seqNumber == seqNumber;
    });
  });
  recomputeDisplayMemos();
  if (selectedDate.get() == from)
    memos.modify([&](std::vector<Memo>& list) {
      std::erase_if(list, [&](const Memo& memo) { return memo.seqNumber == seqNumber; });
    });
  const auto hasNumber = [&](const Memo& memo) { return memo.seqNumber == moved.seqNumber; };
  if (selectedDate.get() == to && std::ranges::none_of(memos.get(), hasNumber))
    memos.modify([&](std::vector<Memo>& list) {
      list.push_back(moved);
      std::ranges::stable_sort(list, {}, &Memo::seqNumber);
    });
}

void DayViewModel::importAttachment(const std::filesystem::path& file, std::optional<Day> given,
                                    ImportCompletion completion) {
  const Day date = given.value_or(selectedDate.get());
  saveQueue_.async([this, file, date, completion = std::move(completion)] {
    std::optional<AttachmentManager::ImportResult> imported;
    const std::exception_ptr failure =
        failureOf([&] { imported = attachmentManager_.importFile(file, date); });
    onMain([this, imported, failure, completion] {
      if (failure) lastError.set("导入附件失败：" + textOf(failure));
      completion(imported);
    });
  });
}

void DayViewModel::importAttachmentToMemo(const std::filesystem::path& file, Memo memo,
                                          std::optional<Day> given) {
  const Day date = resolvedDate(memo, given);
  importAttachment(file, date, [this, memo = std::move(memo), date](const auto& imported) {
    if (!imported) return;
    // The memo may have changed while the file was copied.
    Memo copy = memo;
    const auto listed = std::ranges::find_if(memos.get(), [&](const Memo& candidate) {
      return date == selectedDate.get() && candidate.seqNumber == memo.seqNumber;
    });
    if (const MemoEntry* entry = entryOf(date, memo.seqNumber))
      copy = *entry->memo;
    else if (listed != memos.get().end())
      copy = *listed;
    copy.attachments.push_back(imported->filename);
    copy.originalNames[imported->filename] = imported->originalName;
    copy.updatedAt = DateFormatters::timestamp(now());
    updateMemo(std::move(copy), date);
  });
}

}  // namespace nomely
