#include "Editor/Timeline/MemoWriting.h"

#include "Core/Extensions/DateFormatters.h"
#include "Core/Storage/WriteError.h"
#include "Platform/System/Log.h"

namespace nomely {

MemoWriting::MemoWriting(const MemoService& service, const Parts& parts)
    : service_(service), attachmentManager_(service.context()), parts_(parts) {}

std::string MemoWriting::timestamp() const {
  return DateFormatters::timestamp(service_.context().clock.now());
}

Memo MemoWriting::commit(const Memo& written, Day date, std::optional<Memo> expected) {
  Memo memo = written;
  const std::string key = memoKey(date, memo.seqNumber);
  if (expected) {
    Memo last = asStored(*expected, date);
    if (last != *expected && memo.memoId.value_or("").empty()) memo.memoId = last.memoId;
    expected = std::move(last);
  }
  Memo stored = service_.commit(date, memo, expected);
  if (stored == written)
    storedOtherwise_.erase(key);
  else
    storedOtherwise_.insert_or_assign(key, Stored{written, stored});
  return stored;
}

Memo MemoWriting::asStored(const Memo& memo, Day date) const {
  const auto last = storedOtherwise_.find(memoKey(date, memo.seqNumber));
  return last != storedOtherwise_.end() && last->second.written == memo ? last->second.stored
                                                                        : memo;
}

MemoWriting::Update MemoWriting::update(const Memo& memo, Day date, const SharedMemo& expected) {
  Outcome<Memo> committed = outcomeOf(
      [&] { return commit(memo, date, expected ? std::optional(*expected) : std::nullopt); });
  if (committed.value) return {.stored = std::make_shared<const Memo>(*std::move(committed.value))};
  Update failed{.failure = "更新笔记失败：" + committed.message()};
  try {
    std::optional<Memo> onDisk = service_.days().memoStore().read(date, memo.seqNumber);
    failed.isGone = !onDisk;
    if (onDisk) failed.onDisk = std::make_shared<const Memo>(*std::move(onDisk));
  } catch (const Error& error) {
    Log::error(LogChannel::app, "⚠️ DayViewModel.updateMemo: {}", error.what());
  }
  return failed;
}

void MemoWriting::updateMemo(Memo memo, std::optional<Day> given) {
  const Day date = parts_.list.dateOf(memo, given);
  const MemoEntry* entry = parts_.list.entryOf(date, memo.seqNumber);
  write(std::move(memo), date, entry ? entry->memo : nullptr);
}

void MemoWriting::write(Memo changed, Day date, const SharedMemo& expected) {
  const auto memo = std::make_shared<const Memo>(std::move(changed));
  parts_.status.begin();
  std::optional<std::size_t> leftLoad;
  if (!parts_.list.update(memo, date)) leftLoad = parts_.loading.loadNumber();
  parts_.jobs.write(
      [this, memo, date, expected] { return update(*memo, date, expected); },
      [this, memo, date, leftLoad](const Update& update) { finish(memo, date, leftLoad, update); });
}

// Only entries that still are what was written follow: a later change tells of itself.
void MemoWriting::finish(const SharedMemo& written, Day date, std::optional<std::size_t> leftLoad,
                         const Update& update) {
  if (update.stored) {
    if (*update.stored != *written) parts_.list.replace(*written, date, update.stored);
    parts_.status.callBack();
    return parts_.status.succeed();
  }
  if (update.onDisk || update.isGone) parts_.list.replace(*written, date, update.onDisk);
  // Where in the list it stood can only be told by the list's query.
  if (leftLoad == parts_.loading.loadNumber() && !parts_.list.entryOf(date, written->seqNumber))
    parts_.loading.refreshCurrentTimeline(TimelineLoading::Cause::externalWrite);
  parts_.status.fail(update.failure);
}

void MemoWriting::toggle(const Memo& memo, std::optional<Day> given, void (*change)(Memo&)) {
  // A card may hold an older text than the list.
  MemoEntry own = parts_.list.ownEntry(memo, parts_.list.dateOf(memo, given));
  if (!own.memo) own.memo = std::make_shared<const Memo>(memo);
  Memo changed = *own.memo;
  change(changed);
  changed.updatedAt = timestamp();
  write(std::move(changed), own.date, own.memo);
}

void MemoWriting::togglePinned(const Memo& memo, std::optional<Day> date) {
  toggle(memo, date, [](Memo& own) { own.setPinned(!own.pinned); });
}

void MemoWriting::toggleLockedOnTop(const Memo& memo, std::optional<Day> date) {
  toggle(memo, date, [](Memo& own) { own.setLockedOnTop(!own.lockedOnTop); });
}

void MemoWriting::saveMemoAsync(Memo memo, Day date, std::optional<Memo> expected,
                                MemoCompletion completion) {
  parts_.status.begin();
  parts_.jobs.write(
      [this, memo = std::move(memo), date, expected = std::move(expected)] {
        return outcomeOf([&] { return commit(memo, date, expected); });
      },
      [this, date, completion = std::move(completion)](Outcome<Memo> saved) {
        // The data may have been replaced after the write: what was saved is then no longer there.
        if (saved.value && service_.context().gate.isFrozen())
          saved = {{}, std::make_exception_ptr(WriteError(WriteError::Kind::maintenance))};
        if (saved.value) {
          parts_.list.update(std::make_shared<const Memo>(*saved.value), date);
          parts_.status.callBack();
          parts_.status.succeed();
        } else {
          parts_.status.failSilently(saved.message());
        }
        completion(std::move(saved.value), saved.failure);
      });
}

void MemoWriting::createCompleteMemo(CompleteMemo content, MemoCompletion completion) {
  parts_.jobs.write(
      [this, content = std::move(content)] {
        return outcomeOf([&] {
          return service_.create({.body = content.body,
                                  .tags = content.tags,
                                  .mood = content.mood,
                                  .attachments = content.attachments,
                                  .originalNames = content.originalNames,
                                  .audioTranscripts = content.transcripts},
                                 {.sourceDates = content.sourceDates,
                                  .fallbackDate = content.fallbackDate,
                                  .destinationDate = content.date});
        });
      },
      [completion = std::move(completion)](const Outcome<Memo>& created) {
        completion(created.value, created.failure);
      });
}

void MemoWriting::moveMemo(Memo memo, Day from, Day to) {
  parts_.status.begin();
  parts_.jobs.write(
      [this, memo, from, to] {
        return outcomeOf([&] { return service_.move(from, asStored(memo, from), to); });
      },
      [this, number = memo.seqNumber, from, to](const Outcome<Memo>& moved) {
        if (!moved.value) return parts_.status.fail("修改日期失败：" + moved.message());
        if (from != to) parts_.list.moveAway(number, from, *moved.value, to);
        parts_.status.callBack();
        parts_.status.succeed();
      });
}

void MemoWriting::importAttachment(const std::filesystem::path& file, std::optional<Day> given,
                                   ImportCompletion completion) {
  const Day date = given.value_or(parts_.list.selectedDate.get());
  parts_.jobs.write(
      [this, file, date] {
        return outcomeOf([&] { return attachmentManager_.importFile(file, date); });
      },
      [this, completion =
                 std::move(completion)](const Outcome<AttachmentManager::ImportResult>& imported) {
        if (!imported.value) parts_.status.lastError.set("导入附件失败：" + imported.message());
        completion(imported.value);
      });
}

void MemoWriting::importAttachmentToMemo(const std::filesystem::path& file, Memo memo,
                                         std::optional<Day> given) {
  const Day date = parts_.list.dateOf(memo, given);
  importAttachment(file, date, [this, memo = std::move(memo), date](const auto& imported) {
    if (!imported) return;
    // The memo may have changed while the file was copied.
    const MemoEntry own = parts_.list.ownEntry(memo, date);
    Memo copy = own.memo ? *own.memo : memo;
    copy.attachments.push_back(imported->filename);
    copy.originalNames[imported->filename] = imported->originalName;
    copy.updatedAt = timestamp();
    updateMemo(std::move(copy), date);
  });
}

}  // namespace nomely
