#include "Core/Storage/DraftStore.h"

#include <algorithm>
#include <iterator>

#include <fmt/format.h>

#include "Core/Storage/AttachmentManager.h"
#include "Core/Storage/DraftCoding.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr std::string_view quickInputName = "quick-input.json";
constexpr std::string_view corruptMark = ".json.corrupt-";

bool isFocusName(std::string_view name) {
  return name.starts_with("focus-") && name.ends_with(".json");
}

bool canBeDecoded(const std::filesystem::path& file, std::string_view bytes) {
  return file.filename() == quickInputName ? DraftCoding::quickInput(bytes).has_value()
                                           : DraftCoding::focus(bytes).has_value();
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

std::filesystem::path DraftStore::quickInputFile() const {
  return context_.paths.draftsFolder() / quickInputName;
}

std::filesystem::path DraftStore::numberFile(Day date, std::int64_t seqNumber) const {
  return context_.paths.draftsFolder() /
         fmt::format("focus-{}-{:03}.json", date.string(), seqNumber);
}

std::filesystem::path DraftStore::identityFile(std::string_view memoId) const {
  return context_.paths.draftsFolder() /
         fmt::format("focus-id-{}.json", DiskPaths::identityName(memoId));
}

std::optional<Memo> DraftStore::memoOnDisk(Day date, std::int64_t seqNumber) const {
  try {
    return memos_.read(date, seqNumber);
  } catch (const Error&) {
    return std::nullopt;
  }
}

void DraftStore::saveQuickInputDraft(const QuickInputDraft& draft) const {
  if (!draft.hasContent()) return clearQuickInputDraft();
  put(quickInputFile(), DraftCoding::encoded(draft));
}

std::optional<QuickInputDraft> DraftStore::loadQuickInputDraft() const {
  const auto bytes = readLogged(context_.files, quickInputFile());
  return bytes ? DraftCoding::quickInput(*bytes) : std::nullopt;
}

void DraftStore::clearQuickInputDraft() const {
  clear(quickInputFile());
}

void DraftStore::saveFocusDraft(const FocusMemoDraft& draft, Day date,
                                std::int64_t seqNumber) const {
  const std::optional<Memo> memo = memoOnDisk(date, seqNumber);
  const bool isSameMemo = memo && (!draft.memoId || memo->memoId == draft.memoId);
  const std::optional<std::string> memoId = draft.memoId || !memo ? draft.memoId : memo->memoId;
  if (isSameMemo && !hasChanges(draft, *memo)) return clearFocusDraft(date, seqNumber, memoId);
  put(memoId ? identityFile(*memoId) : numberFile(date, seqNumber), DraftCoding::encoded(draft));
  if (memoId && draftByNumber(date, seqNumber, memo)) clear(numberFile(date, seqNumber));
}

std::optional<FocusMemoDraft> DraftStore::loadFocusDraft(
    Day date, std::int64_t seqNumber, const std::optional<std::string>& memoId) const {
  const std::optional<Memo> memo = memoOnDisk(date, seqNumber);
  const std::optional<std::string> wanted = memoId || !memo ? memoId : memo->memoId;
  const auto bytes =
      readLogged(context_.files, wanted ? identityFile(*wanted) : numberFile(date, seqNumber));
  if (!bytes) return wanted ? draftByNumber(date, seqNumber, memo) : std::nullopt;
  auto draft = DraftCoding::focus(*bytes);
  if (draft && draft->memoId && draft->memoId != wanted) return std::nullopt;
  return draft;
}

std::optional<FocusMemoDraft> DraftStore::draftByNumber(Day date, std::int64_t seqNumber,
                                                        const std::optional<Memo>& memo) const {
  if (!memo) return std::nullopt;
  const auto bytes = readLogged(context_.files, numberFile(date, seqNumber));
  auto draft = bytes ? DraftCoding::focus(*bytes) : std::nullopt;
  if (!draft || draft->memoId || !draft->baseMemo) return std::nullopt;
  const Memo& base = *draft->baseMemo;
  if (base.time != memo->time || base.createdAt != memo->createdAt) return std::nullopt;
  return draft;
}

void DraftStore::clearFocusDraft(Day date, std::int64_t seqNumber,
                                 const std::optional<std::string>& memoId) const {
  const std::optional<Memo> memo = memoOnDisk(date, seqNumber);
  const std::optional<std::string> known = memoId || !memo ? memoId : memo->memoId;
  if (!known) return clear(numberFile(date, seqNumber));
  clear(identityFile(*known));
  if (draftByNumber(date, seqNumber, memo)) clear(numberFile(date, seqNumber));
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

void DraftStore::put(const std::filesystem::path& file, const std::string& bytes) const {
  logged([&] {
    context_.write([&] {
      context_.prepareFolder(file.parent_path());
      setAsideUndecodable(file);
      context_.files.writeAtomically(file, bytes);
    });
  });
}

void DraftStore::clear(const std::filesystem::path& file) const {
  logged([&] {
    if (!context_.files.exists(file)) return;
    context_.write([&] {
      setAsideUndecodable(file);
      context_.files.removeFile(file);
    });
  });
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
