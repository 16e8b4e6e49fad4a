#include "Core/Service/MemoService.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Extensions/TagUtilities.h"
#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Core/Markdown/Text/TagParser.h"
#include "Core/Storage/MemoUpgrade.h"
#include "Core/Storage/WriteError.h"
#include "Platform/Concurrency/NotificationCenter.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

void forget(Memo& memo, const std::string& filename) {
  std::erase(memo.attachments, filename);
  memo.attachmentDescriptions.erase(filename);
  memo.originalNames.erase(filename);
  memo.audioTranscripts.erase(filename);
}

template <typename Value>
void renameKey(std::map<std::string, Value>& values, const std::string& from,
               const std::string& to) {
  if (auto node = values.extract(from)) {
    node.key() = to;
    values.insert(std::move(node));
  }
}

// A clock that is a little behind another machine's must not make a change older than what was
// changed: of two texts of a note the later one stays.
void dateAfter(const Memo& current, Memo& changed) {
  if (changed.updatedAt == current.updatedAt || !changed.updatedAt || !current.updatedAt) return;
  const auto before = DateFormatters::parseTimestamp(*current.updatedAt);
  const auto after = DateFormatters::parseTimestamp(*changed.updatedAt);
  if (before && after && *after < *before && *before - *after < std::chrono::days(1))
    changed.updatedAt = DateFormatters::timestamp(*before + std::chrono::seconds(1));
}

std::vector<MemoService::IncomingFile> incoming(const std::vector<std::filesystem::path>& files) {
  std::vector<MemoService::IncomingFile> all;
  all.reserve(files.size());
  for (const std::filesystem::path& file : files) all.push_back({file});
  return all;
}

}  // namespace

MemoService::MemoService(StoreContext context)
    : context_(std::move(context)),
      days_(context_),
      attachments_(context_),
      versions_(context_),
      trash_(context_) {}

void MemoService::addTagsIn(std::string_view text, std::vector<std::string>& tags) {
  for (std::string& tag : TagParser::tags(text)) tags.push_back(std::move(tag));
  tags = TagUtilities::uniqueTags(tags);
}

void MemoService::keepOriginal(Day day, std::int64_t seqNumber, const std::string& memoId) const {
  if (versions_.keepOriginal(day, seqNumber, memoId))
    NotificationCenter::shared().post(Notifications::originalKept, memoId);
}

void MemoService::adopt(Day day, const Memo& current, Memo& changed) const {
  const bool isNameless = current.memoId.value_or("").empty();
  if (isNameless && changed.memoId.value_or("").empty())
    changed.memoId = identityOfNameless(day, current.seqNumber);
  keepOriginal(day, current.seqNumber, *changed.memoId);
  if (!isNameless) return;
  // With its identity in the file the next step finds the old text a place in its history.
  Memo named = current;
  named.memoId = changed.memoId;
  days_.memoStore().write(named, day);
}

Memo MemoService::commit(Day day, const Memo& memo, const std::optional<Memo>& expected) const {
  return context_.write([&] {
    Memo stored = memo;
    bool isUpgraded = false;
    if (expected && MemoUpgrade::isDue(*expected)) {
      const std::optional<Memo> onDisk = days_.memoStore().read(day, memo.seqNumber);
      isUpgraded = onDisk && MemoUpgrade::isOf(*onDisk, *expected);
      if (isUpgraded) MemoUpgrade::carryInto(stored, *onDisk);
    }
    const Memo current = days_.memoStore().validateUpdate(stored, day, std::nullopt);
    if (expected && !isUpgraded && !isStoredAs(current, *expected))
      throw WriteError(WriteError::Kind::conflict);
    stored.body = std::string(MemoFrontmatterParser::bodyAsRead(memo.body));
    dateAfter(current, stored);
    adopt(day, current, stored);
    days_.commitMemo(stored, day, std::nullopt);
    return stored;
  });
}

Memo MemoService::change(Day day, const Memo& original,
                         const std::function<void(Memo&)>& change) const {
  return context_.write([&] {
    const Memo current = days_.memoStore().validateUnchanged(original, day);
    Memo changed = original;
    MemoUpgrade::carryInto(changed, current);
    change(changed);
    if (isStoredAs(changed, current)) return changed;
    changed.updatedAt = DateFormatters::timestamp(context_.clock.now());
    return commit(day, changed, std::nullopt);
  });
}

Memo MemoService::edit(Day day, const Memo& original, std::string_view text) const {
  return change(day, original, [&](Memo& memo) {
    memo.body = MemoTextUtilities::editedBody(memo.body, text);
    addTagsIn(text, memo.tags);
  });
}

Memo MemoService::append(Day day, const Memo& original, std::string_view paragraph) const {
  return edit(day, original, MemoTextUtilities::textWithParagraph(original.body, paragraph));
}

Memo MemoService::withImported(
    Day day, const std::vector<IncomingFile>& files,
    const std::function<Memo(const std::function<void(Memo&)>&)>& save) const {
  std::vector<AttachmentManager::ImportResult> imported;
  try {
    for (const IncomingFile& file : files)
      imported.push_back(attachments_.importFile(file.path, day, file.extension));
    return save([&](Memo& memo) {
      for (std::size_t i = 0; i < files.size(); ++i) {
        const auto& [filename, ownName] = imported[i];
        memo.attachments.push_back(filename);
        const std::string originalName = files[i].originalName.value_or(ownName);
        if (!originalName.empty()) memo.originalNames[filename] = originalName;
        if (files[i].transcript) memo.audioTranscripts[filename] = *files[i].transcript;
      }
    });
  } catch (...) {
    takeBack(imported, day);
    throw;
  }
}

// But for what a memo names: saving it may have failed when it stood there already.
void MemoService::takeBack(const std::vector<AttachmentManager::ImportResult>& imported,
                           Day day) const noexcept {
  try {
    const auto named = days_.filesNamed(day);
    if (!named) return;
    for (const auto& file : imported)
      if (!named->contains(file.filename)) attachments_.removeImported(file.filename, day);
  } catch (const std::exception& error) {
    Log::error(LogChannel::storage, "⚠️ MemoService.takeBack: {}", error.what());
  }
}

Memo MemoService::create(Day day, DayStore::NewMemo content,
                         const std::vector<std::filesystem::path>& files) const {
  if (!content.source) content.source = typedHere;
  addTagsIn(content.body, content.tags);
  return receive(day, std::move(content), incoming(files));
}

Memo MemoService::receive(Day day, DayStore::NewMemo content,
                          const std::vector<IncomingFile>& files) const {
  return context_.write([&] {
    return withImported(day, files, [&](const auto& name) {
      Memo named;
      name(named);
      content.attachments.insert(content.attachments.end(), named.attachments.begin(),
                                 named.attachments.end());
      content.originalNames.merge(named.originalNames);
      content.audioTranscripts.merge(named.audioTranscripts);
      return days_.createMemo(day, std::move(content));
    });
  });
}

Memo MemoService::receiveCopy(Day day, const Memo& memo,
                              const std::map<std::string, std::filesystem::path>& files) const {
  std::vector<IncomingFile> copies;
  copies.reserve(files.size());
  for (const auto& [name, path] : files) copies.push_back({path});
  return context_.write([&] {
    return withImported(day, copies, [&](const auto& name) {
      Memo named;
      name(named);
      Memo copy = memo;
      for (std::size_t i = 0; const auto& [former, path] : files) {
        const std::string& present = named.attachments[i++];
        std::ranges::replace(copy.attachments, former, present);
        renameKey(copy.attachmentDescriptions, former, present);
        renameKey(copy.originalNames, former, present);
        renameKey(copy.audioTranscripts, former, present);
      }
      return days_.createCopy(day, std::move(copy));
    });
  });
}

Memo MemoService::create(DayStore::NewMemo content,
                         const AttachmentManager::PendingPlaces& places) const {
  return context_.write([&] {
    attachments_.preparePendingAttachments(content.attachments, places);
    return create(places.destinationDate, std::move(content));
  });
}

Memo MemoService::attach(Day day, const Memo& original,
                         const std::vector<std::filesystem::path>& files) const {
  return context_.write([&] {
    return withImported(day, incoming(files),
                        [&](const auto& name) { return change(day, original, name); });
  });
}

Memo MemoService::detach(Day day, const Memo& original,
                         const std::vector<std::string>& filenames) const {
  return context_.write([&] {
    Memo changed = change(day, original, [&](Memo& memo) {
      for (const std::string& name : filenames) forget(memo, name);
    });
    days_.trashUnnamedFiles(filenames, day);
    return changed;
  });
}

Memo MemoService::move(Day from, const Memo& memo, Day to) const {
  return from == to ? memo : days_.moveMemo(memo, from, to);
}

TrashEntry MemoService::trash(Day day, const Memo& memo) const {
  trash_.finishInterrupted();
  return {day, memo, trash_.trashMemo(day, memo)};
}

std::vector<TrashEntry> MemoService::trashed() const {
  trash_.finishInterrupted();
  return trash_.listTrash();
}

TrashContents MemoService::trashContents() const {
  trash_.finishInterrupted();
  return trash_.contents();
}

MemoPlace MemoService::restore(const TrashEntry& entry) const {
  trash_.finishInterrupted();
  return {entry.originalDate, trash_.restoreMemo(entry)};
}

void MemoService::destroy(const std::vector<TrashEntry>& entries) const {
  trash_.finishInterrupted();
  trash_.deleteTrashEntries(entries);
}

void MemoService::emptyTrash() const {
  trash_.finishInterrupted();
  trash_.emptyTrash();
}

std::optional<Memo> MemoService::rewrite(Day day, std::int64_t seqNumber,
                                         const std::function<bool(Memo&)>& rewrite) const {
  return context_.write([&]() -> std::optional<Memo> {
    std::optional<Memo> memo = days_.memoStore().read(day, seqNumber);
    if (!memo || !rewrite(*memo)) return std::nullopt;
    return commit(day, *memo, std::nullopt);
  });
}

void MemoService::upgrade(Day day, const Memo& original, const Memo& upgraded) const {
  context_.write([&] {
    const Memo current = days_.memoStore().validateUnchanged(original, day);
    // Another process may have come first: the identity that a note has stays.
    if (!isStoredAs(current, original)) throw WriteError(WriteError::Kind::conflict);
    versions_.keepOriginal(day, original.seqNumber, upgraded.memoId.value());
    days_.memoStore().write(upgraded, day);
  });
}

Memo MemoService::restoreVersion(Day day, const Memo& original, const VersionEntry& version) const {
  return context_.write([&] {
    Memo current = days_.memoStore().validateUnchanged(original, day);
    if (current.memoId) keepOriginal(day, current.seqNumber, *current.memoId);
    versions_.restore(day, current.seqNumber, version, std::nullopt);
    return days_.memoStore().read(day, current.seqNumber).value();
  });
}

}  // namespace nomely
