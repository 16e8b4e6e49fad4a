#include "Core/Storage/DraftStore.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "Core/Storage/AttachmentManager.h"
#include "Core/Storage/DraftCoding.h"
#include "Core/Storage/DraftMerging.h"
#include "Core/Storage/MemoUpgrade.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

bool isFocusName(std::string_view name) {
  return name.starts_with(DraftStore::focusPrefix) && name.ends_with(".json");
}

bool isDraftName(std::string_view name) {
  return name == DraftStore::quickInputName ||
         (isFocusName(name) && name.find('/') == std::string_view::npos);
}

bool canBeDecoded(const std::filesystem::path& file, std::string_view bytes) {
  return file.filename() == DraftStore::quickInputName ? DraftCoding::quickInput(bytes).has_value()
                                                       : DraftCoding::focus(bytes).has_value();
}

template <typename Draft>
std::string mergedBytes(const std::optional<Draft>& standing, const std::optional<Draft>& other) {
  return DraftCoding::encoded(DraftMerging::merged(standing.value(), other.value()));
}

bool hasChanges(const FocusMemoDraft& draft, const Memo& stored) {
  Memo changed = stored;
  changed.body = draft.bodyText;
  changed.tags = draft.tags;
  changed.mood = draft.mood;
  changed.attachments = draft.attachments;
  changed.audioTranscripts = draft.audioTranscripts;
  return !isStoredAs(changed, stored);
}

using Names = std::set<std::string>;

void addRecording(Names& names, const std::optional<std::string>& path) {
  if (path) names.insert(std::filesystem::path(*path).filename().string());
}

void addAll(Names& names, const std::vector<std::string>& attachments,
            const std::map<std::string, AudioTranscript>& transcripts) {
  std::ranges::copy(PendingMemoAttachments::merged(attachments, transcripts),
                    std::inserter(names, names.end()));
}

Names namesIn(const QuickInputDraft& draft) {
  Names names;
  addAll(names, draft.pendingAttachments, draft.pendingAudioTranscripts);
  // Taking back what an AI action did brings these back too.
  if (const auto& snapshot = draft.attachmentsSnapshotBeforeAI)
    addAll(names, snapshot->attachments, snapshot->transcripts);
  addRecording(names, draft.activeRecordingPath);
  return names;
}

Names namesIn(const FocusMemoDraft& draft) {
  Names names;
  addAll(names, draft.attachments, draft.audioTranscripts);
  addRecording(names, draft.activeRecordingPath);
  return names;
}

template <typename Draft>
bool take(const std::optional<Draft>& draft, Names& names) {
  if (draft) names.merge(namesIn(*draft));
  return draft.has_value();
}

// What typing must not be interrupted by.
template <typename Step>
void logged(const Step& step) {
  try {
    step();
  } catch (const Error& error) {
    Log::error(LogChannel::storage, "DraftStore save failed: {}", error.what());
  }
}

// Absent when there is no such file, or it can't be read.
std::optional<std::string> readLogged(const FileManager& files, const std::filesystem::path& file) {
  try {
    return files.read(file);
  } catch (const FileError& error) {
    Log::error(LogChannel::storage, "⚠️ DraftStore.load: {}", error.what());
    return std::nullopt;
  }
}

}  // namespace

bool QuickInputDraft::hasContent() const {
  return !trimSpaceAndBreaks(text).empty() || originalTextBeforeAI || !pendingAttachments.empty() ||
         !pendingAudioTranscripts.empty() || selectedMood || activeRecordingPath;
}

struct DraftStore::Shared {
  struct Waiting {
    std::string bytes;
    std::filesystem::path file;  // of this machine
    bool isWritten = false;      // there, with these bytes
  };

  std::mutex mutex;
  // The rest is guarded by it. By the names of the root's files:
  std::map<std::string, std::optional<std::string>> known;  // bytes as last read or written here
  std::map<std::string, Waiting> waiting;
  std::optional<FolderIdentity> root;  // as last seen

  void know(const std::string& name, std::optional<std::string> bytes) {
    const std::lock_guard lock(mutex);
    known.insert_or_assign(name, std::move(bytes));
  }
  [[nodiscard]] bool isWaiting(const std::string& name, const std::string& bytes) {
    const std::lock_guard lock(mutex);
    const auto found = waiting.find(name);
    return found != waiting.end() && found->second.bytes == bytes;
  }
  // Ends the waiting and returns the file in which it did, if it did.
  std::filesystem::path stopWaiting(const std::string& name) {
    const std::lock_guard lock(mutex);
    const auto found = waiting.find(name);
    if (found == waiting.end()) return {};
    std::filesystem::path file = std::move(found->second.file);
    waiting.erase(found);
    return file;
  }
};

DraftStore::DraftStore(StoreContext context, const std::filesystem::path& machineFolder)
    : context_(std::move(context)),
      memos_(context_),
      stranded_(context_, machineFolder),
      shared_(std::make_shared<Shared>()) {}

std::filesystem::path DraftStore::fileOf(const std::string& name) const {
  return context_.paths.draftsFolder() / name;
}

std::string DraftStore::numberName(Day date, std::int64_t seqNumber) {
  return fmt::format("focus-{}-{:03}.json", date.string(), seqNumber);
}

std::string DraftStore::identityName(std::string_view memoId) {
  return fmt::format("focus-id-{}.json", DiskPaths::identityName(memoId));
}

std::optional<Memo> DraftStore::memoOnDisk(Day date, std::int64_t seqNumber) const {
  try {
    return memos_.read(date, seqNumber);
  } catch (const Error&) {
    return std::nullopt;
  }
}

bool DraftStore::saveQuickInputDraft(const QuickInputDraft& draft) const {
  if (draft.hasContent()) return put(std::string(quickInputName), DraftCoding::encoded(draft));
  clearQuickInputDraft();
  return true;
}

std::optional<QuickInputDraft> DraftStore::loadQuickInputDraft() const {
  const auto bytes = bytesOf(std::string(quickInputName));
  return bytes ? DraftCoding::quickInput(*bytes) : std::nullopt;
}

void DraftStore::clearQuickInputDraft() const {
  clear(std::string(quickInputName));
}

bool DraftStore::saveFocusDraft(const FocusMemoDraft& draft, Day date,
                                std::int64_t seqNumber) const {
  const std::optional<Memo> memo = memoOnDisk(date, seqNumber);
  const bool isSameMemo = memo && (!draft.memoId || memo->memoId == draft.memoId);
  const std::optional<std::string> memoId = draft.memoId || !memo ? draft.memoId : memo->memoId;
  if (isSameMemo && !hasChanges(draft, *memo)) {
    clearFocusDraft(date, seqNumber, memoId);
    return true;
  }
  const bool isKept = put(memoId ? identityName(*memoId) : numberName(date, seqNumber),
                          DraftCoding::encoded(draft));
  if (isKept && memoId && draftByNumber(date, seqNumber, memo)) clear(numberName(date, seqNumber));
  return isKept;
}

std::optional<FocusMemoDraft> DraftStore::loadFocusDraft(
    Day date, std::int64_t seqNumber, const std::optional<std::string>& memoId) const {
  const std::optional<Memo> memo = memoOnDisk(date, seqNumber);
  const std::optional<std::string> wanted = memoId || !memo ? memoId : memo->memoId;
  const auto bytes = bytesOf(wanted ? identityName(*wanted) : numberName(date, seqNumber));
  if (!bytes) return wanted ? draftByNumber(date, seqNumber, memo) : std::nullopt;
  auto draft = DraftCoding::focus(*bytes);
  if (draft && draft->memoId && draft->memoId != wanted) return std::nullopt;
  return draft;
}

std::optional<FocusMemoDraft> DraftStore::draftByNumber(Day date, std::int64_t seqNumber,
                                                        const std::optional<Memo>& memo) const {
  if (!memo) return std::nullopt;
  const auto bytes = bytesOf(numberName(date, seqNumber));
  auto draft = bytes ? DraftCoding::focus(*bytes) : std::nullopt;
  if (!draft || draft->memoId || !draft->baseMemo) return std::nullopt;
  const Memo& base = *draft->baseMemo;
  const bool isSame = base.time == memo->time && base.createdAt == memo->createdAt;
  return isSame || MemoUpgrade::isOf(*memo, base) ? draft : std::nullopt;
}

void DraftStore::clearFocusDraft(Day date, std::int64_t seqNumber,
                                 const std::optional<std::string>& memoId) const {
  const std::optional<Memo> memo = memoOnDisk(date, seqNumber);
  const std::optional<std::string> known = memoId || !memo ? memoId : memo->memoId;
  if (!known) return clear(numberName(date, seqNumber));
  clear(identityName(*known));
  if (draftByNumber(date, seqNumber, memo)) clear(numberName(date, seqNumber));
}

std::filesystem::path DraftStore::ensureRecordingsDir() const {
  std::filesystem::path folder = context_.paths.draftsFolder() / "recordings";
  if (!context_.files.isDirectory(folder))
    context_.write([&] { context_.files.createDirectories(folder); });
  return folder;
}

std::optional<std::set<std::string>> DraftStore::pendingAttachmentReferences() const {
  try {
    Names names;
    const std::filesystem::path folder = context_.paths.draftsFolder();
    if (!context_.files.exists(folder)) return names;
    for (const DirectoryEntry& entry : context_.files.listAll(folder)) {
      const bool isQuickInput = entry.name == quickInputName;
      if (!isQuickInput && !isFocusName(entry.name)) continue;
      const auto bytes = context_.files.read(folder / entry.name);
      if (!bytes) continue;  // cleared since the folder was listed
      if (!(isQuickInput ? take(DraftCoding::quickInput(*bytes), names)
                         : take(DraftCoding::focus(*bytes), names)))
        return std::nullopt;
    }
    return names;
  } catch (const FileError& error) {
    Log::error(LogChannel::storage, "⚠️ DraftStore.pendingAttachmentReferences: {}",
               error.what());
    return std::nullopt;
  }
}

std::vector<std::filesystem::path> DraftStore::damagedDrafts() const {
  const std::filesystem::path folder = context_.paths.draftsFolder();
  std::vector<std::filesystem::path> damaged;
  if (!context_.files.exists(folder)) return damaged;
  for (const DirectoryEntry& entry : context_.files.listAll(folder)) {
    const bool isDraft = entry.name == quickInputName || isFocusName(entry.name);
    const auto bytes = isDraft ? readLogged(context_.files, folder / entry.name) : std::nullopt;
    if (entry.name.find(corruptMark) != std::string::npos ||
        (isDraft && !(bytes && canBeDecoded(entry.name, *bytes))))
      damaged.push_back(folder / entry.name);
  }
  return damaged;
}

std::optional<std::string> DraftStore::bytesOf(const std::string& name) const {
  {
    const std::lock_guard lock(shared_->mutex);
    const auto waiting = shared_->waiting.find(name);
    if (waiting != shared_->waiting.end()) return waiting->second.bytes;
  }
  auto bytes = readLogged(context_.files, fileOf(name));
  shared_->know(name, bytes);
  return bytes;
}

bool DraftStore::put(const std::string& name, const std::string& bytes) const {
  if (!putIntoRoot(name, bytes, Occasion::first)) return keepWaiting(name, bytes, Occasion::first);
  // What hindered it may have hindered others that nobody types in any more.
  keepWaitingOnes(Which::inMemory);
  return true;
}

bool DraftStore::putIntoRoot(const std::string& name, const std::string& bytes,
                             Occasion occasion) const {
  bool isDone = false;
  std::filesystem::path waited;
  logged([&] {
    try {
      context_.write([&] {
        if (occasion == Occasion::again && !shared_->isWaiting(name, bytes)) return;
        if (isAnothers(name)) return;
        context_.prepareFolder(context_.paths.draftsFolder());
        setAsideUndecodable(fileOf(name));
        context_.files.writeAtomically(fileOf(name), bytes);
        shared_->know(name, bytes);
        waited = shared_->stopWaiting(name);
        isDone = true;
      });
    } catch (const Error&) {
      // What failed at its very end stands there all the same, and is not another's.
      if (readLogged(context_.files, fileOf(name)) == bytes) shared_->know(name, bytes);
      throw;
    }
  });
  if (!isDone) return false;
  lookAtRoot();
  forget(waited);
  return true;
}

void DraftStore::lookAtRoot() const {
  logged([&] {
    const auto root = stranded_.presentRoot();
    const std::lock_guard lock(shared_->mutex);
    if (root) shared_->root = root;
  });
}

bool DraftStore::keepWaiting(const std::string& name, const std::string& bytes,
                             Occasion occasion) const {
  StrandedDrafts::Draft draft{name, bytes};
  std::filesystem::path file;
  std::optional<FolderIdentity> root;
  {
    const std::lock_guard lock(shared_->mutex);
    const auto found = shared_->waiting.find(name);
    const bool isNewest = found != shared_->waiting.end() && found->second.bytes == bytes;
    if (occasion == Occasion::again && !isNewest) return true;
    Shared::Waiting& waiting = shared_->waiting[name];
    if (waiting.file.empty()) waiting.file = stranded_.newFile();
    waiting.bytes = bytes;
    waiting.isWritten = false;
    file = waiting.file;
    root = shared_->root;
    if (const auto known = shared_->known.find(name); known != shared_->known.end())
      draft.inPlaceOf = known->second;
  }
  if (!stranded_.isPossible()) return false;
  bool isWritten = false;
  logged([&] {
    stranded_.write(file, draft, root);
    isWritten = true;
  });
  const std::lock_guard lock(shared_->mutex);
  const auto waiting = shared_->waiting.find(name);
  if (waiting != shared_->waiting.end() && waiting->second.bytes == bytes)
    waiting->second.isWritten = isWritten;
  return isWritten;
}

bool DraftStore::keepAll() const {
  return keepWaitingOnes(Which::all);
}

bool DraftStore::keepWaitingOnes(Which which) const {
  std::vector<std::pair<std::string, std::string>> left;
  {
    const std::lock_guard lock(shared_->mutex);
    for (const auto& [name, waiting] : shared_->waiting)
      if (which == Which::all || !waiting.isWritten) left.emplace_back(name, waiting.bytes);
  }
  bool areKept = true;
  for (const auto& [name, bytes] : left)
    if (!putIntoRoot(name, bytes, Occasion::again) && !keepWaiting(name, bytes, Occasion::again))
      areKept = false;
  return areKept;
}

void DraftStore::forget(const std::filesystem::path& waited) const {
  if (stranded_.isPossible() && !waited.empty()) logged([&] { stranded_.remove(waited); });
}

void DraftStore::clear(const std::string& name) const {
  logged([&] {
    if (!context_.files.exists(fileOf(name))) return;
    context_.write([&] {
      if (isAnothers(name)) return;
      setAsideUndecodable(fileOf(name));
      context_.files.removeFile(fileOf(name));
      shared_->know(name, std::nullopt);
    });
  });
  forget(shared_->stopWaiting(name));
}

bool DraftStore::isAnothers(const std::string& name) const {
  const auto standing = readLogged(context_.files, fileOf(name));
  if (!standing || !canBeDecoded(fileOf(name), *standing)) return false;
  const std::lock_guard lock(shared_->mutex);
  const auto known = shared_->known.find(name);
  if (known == shared_->known.end() || known->second == standing) return false;
  const auto waiting = shared_->waiting.find(name);
  if (waiting != shared_->waiting.end() && waiting->second.bytes == standing) return false;
  Log::error(LogChannel::storage, "⚠️ DraftStore: 草稿 {} 已由别处改写，没有覆盖",
             name);
  return true;
}

void DraftStore::bringHome() const {
  lookAtRoot();
  logged([&] {
    for (const auto& [file, draft] : stranded_.ofRoot()) {
      {
        const std::lock_guard lock(shared_->mutex);
        if (std::ranges::any_of(shared_->waiting, [&, &path = file](const auto& each) {
              return each.second.file == path;
            }))
          continue;
      }
      logged([&, &path = file, &from = draft] {
        if (!isDraftName(from.name) || !canBeDecoded(fileOf(from.name), from.bytes)) return;
        context_.write([&] { takeIn(from); });
        stranded_.remove(path);
      });
    }
  });
}

void DraftStore::takeIn(const StrandedDrafts::Draft& draft) const {
  const std::filesystem::path file = fileOf(draft.name);
  context_.prepareFolder(file.parent_path());
  setAsideUndecodable(file);
  const auto standing = context_.files.read(file);
  if (!standing || standing == draft.inPlaceOf)
    return context_.files.writeAtomically(file, draft.bytes);
  const std::string both =
      draft.name == quickInputName
          ? mergedBytes(DraftCoding::quickInput(*standing), DraftCoding::quickInput(draft.bytes))
          : mergedBytes(DraftCoding::focus(*standing), DraftCoding::focus(draft.bytes));
  if (both != standing) context_.files.writeAtomically(file, both);
}

void DraftStore::setAsideUndecodable(const std::filesystem::path& file) const {
  if (!context_.files.exists(file)) return;
  const auto bytes = readLogged(context_.files, file);
  if (bytes && canBeDecoded(file, *bytes)) return;
  const auto seconds = std::chrono::floor<std::chrono::seconds>(context_.clock.now());
  for (auto number = seconds.time_since_epoch().count();; ++number) {
    const std::filesystem::path aside = fmt::format("{}.corrupt-{}", file.string(), number);
    if (context_.files.exists(aside)) continue;
    context_.files.moveFile(file, aside);
    Log::error(LogChannel::storage, "⚠️ DraftStore: 草稿 {} 读不出，已移到 {}",
               file.filename().string(), aside.filename().string());
    return;
  }
}

}  // namespace nomely
