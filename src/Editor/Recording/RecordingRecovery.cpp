#include "Editor/Recording/RecordingRecovery.h"

#include <algorithm>
#include <optional>
#include <set>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Query/RootScan.h"
#include "Core/Storage/DraftStore.h"
#include "Core/Storage/SyncedFolder.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

// Where the folder of drafts is synchronised, too, another machine may find the same recording.
std::string identityOf(const std::filesystem::path& recording, Day day, const MemoService& memos) {
  const auto attributes = memos.context().files.attributes(recording);
  return memos.identityFor(
      day, "left recording",
      {recording.filename().string(), std::to_string(attributes ? attributes->size : 0)});
}

// Whether a recording may be another machine's, which goes on with it: the lock doesn't travel.
bool doDraftsTravel(const StoreContext& context) {
  const SyncedFolder synced(context);
  return synced.isBy(SyncedFolder::Engine::cloud) || !synced.gaps().empty();
}

class Recovery {
 public:
  Recovery(const MemoService& memos, const std::stop_token& stop)
      : memos_(memos), context_(memos.context()), stop_(stop) {}

  std::optional<RecordingRecovery::Recovered> take(LockedRecording& recording) {
    if (recording.isEmpty() || isInMemo(recording)) {
      recording.remove();
      return std::nullopt;
    }
    try {
      recording.makePlain(stop_);
    } catch (const CancellationError&) {
      throw;
    } catch (const Error& error) {
      Log::error(LogChannel::app, "⚠️ RecordingRecovery: {}", error.what());
    }
    auto recovered = context_.write([&] { return memoOf(recording); });
    recording.remove();
    return recovered;
  }

 private:
  // Whether its process died after it had given the recording to a memo, of whatever day.
  [[nodiscard]] bool isInMemo(const LockedRecording& recording) const {
    const std::string name = recording.path().filename().string();
    bool isFound = false;
    RootScan(context_, stop_)
        .forEach({.audio = true}, RootScan::Order::newestFirst, [&](const MemoEntry& entry) {
          for (const auto& [stored, original] : entry.memo->originalNames)
            isFound = isFound || (original == name && isCopy(recording, entry.date, stored));
          return !isFound;
        });
    return isFound;
  }

  [[nodiscard]] bool isCopy(const LockedRecording& recording, Day day,
                            const std::string& name) const {
    const std::filesystem::path file = context_.paths.dayFolder(day) / name;
    return AttachmentManager::isSafeName(name) && context_.files.exists(file) &&
           context_.files.contentsEqual(file, recording.path());
  }

  // Or the copy that it had made for one. Inside a write.
  [[nodiscard]] std::optional<std::string> copyIn(Day day, const LockedRecording& recording) const {
    const std::filesystem::path folder = context_.paths.dayFolder(day);
    if (!context_.files.exists(folder)) return std::nullopt;
    for (const DirectoryEntry& entry : context_.files.listVisible(folder))
      if (entry.type == FileType::regular && entry.name.ends_with(".m4a") &&
          isCopy(recording, day, entry.name))
        return entry.name;
    return std::nullopt;
  }

  // Absent when a memo or a draft names a copy of it.
  [[nodiscard]] std::optional<RecordingRecovery::Recovered> memoOf(
      const LockedRecording& recording) const {
    const Day day = Day::of(recording.begun());
    const auto copy = copyIn(day, recording);
    if (!copy) return RecordingRecovery::intoMemo(recording.path(), recording.begun(), memos_);
    const auto inMemos = memos_.days().filesNamed(day);
    const auto inDrafts = DraftStore(context_).pendingAttachmentReferences();
    // Where that can't be told, the sound is safe in the day's folder and a look later decides.
    if (!inMemos || !inDrafts) throw FileError("读取", context_.paths.dayFolder(day), EIO);
    if (inMemos->contains(*copy) || inDrafts->contains(*copy)) return std::nullopt;
    DayStore::NewMemo content{.tags = {MemoService::recordingTag}, .attachments = {*copy}};
    content.time = DateFormatters::timeOnly.format(recording.begun());
    content.originalNames[*copy] = recording.path().filename().string();
    content.memoId = identityOf(recording.path(), day, memos_);
    content.made = recording.begun();
    return RecordingRecovery::Recovered{day, memos_.create(day, std::move(content))};
  }

  const MemoService& memos_;
  const StoreContext& context_;
  const std::stop_token& stop_;
};

}  // namespace

std::vector<RecordingRecovery::Recovered> RecordingRecovery::run(const MemoService& memos,
                                                                 const std::stop_token& stop) {
  std::vector<Recovered> all;
  const DraftStore drafts(memos.context());
  const auto folder = drafts.ensureRecordingsDir();
  // Whoever opens the draft that it belongs to finds it there.
  const auto needed = drafts.pendingAttachmentReferences();
  if (!needed) return all;
  const bool travels = doDraftsTravel(memos.context());
  for (LockedRecording& recording : LockedRecording::leftBehind(folder)) {
    throwIfStopped(stop);
    if (travels && SyncedFolder::isNewHere(memos.context(), recording.path())) continue;
    if (needed->contains(recording.path().filename().string())) continue;
    try {
      if (auto recovered = Recovery(memos, stop).take(recording))
        all.push_back(std::move(*recovered));
    } catch (const CancellationError&) {
      throw;
    } catch (const Error& error) {
      Log::error(LogChannel::app, "录音恢复失败：{}", error.what());
    }
  }
  return all;
}

RecordingRecovery::Recovered RecordingRecovery::intoMemo(const std::filesystem::path& recording,
                                                         Moment begun, const MemoService& memos) {
  const Day day = Day::of(begun);
  DayStore::NewMemo content{.tags = {MemoService::recordingTag}};
  content.time = DateFormatters::timeOnly.format(begun);
  content.memoId = identityOf(recording, day, memos);
  content.made = begun;
  return {day, memos.create(day, std::move(content), {recording})};
}

}  // namespace nomely
