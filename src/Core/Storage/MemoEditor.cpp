#include "Core/Storage/MemoEditor.h"

#include <algorithm>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Storage/AttachmentManager.h"
#include "Core/Storage/WriteError.h"
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

}  // namespace

Memo MemoEditor::change(Day day, const Memo& original,
                        const std::function<void(Memo&)>& change) const {
  return store_.writes().write([&] {
    store_.validateUnchanged(original, day);
    Memo changed = original;
    change(changed);
    if (changed == original) return changed;
    changed.updatedAt = DateFormatters::timestamp(store_.context().clock.now());
    store_.commitMemo(changed, day, std::nullopt);
    return changed;
  });
}

Memo MemoEditor::withImported(
    Day day, const std::vector<std::filesystem::path>& files,
    const std::function<Memo(const std::function<void(Memo&)>&)>& save) const {
  const AttachmentManager attachments(store_.context());
  std::vector<AttachmentManager::ImportResult> imported;
  try {
    for (const std::filesystem::path& file : files)
      imported.push_back(attachments.importFile(file, day));
    return save([&](Memo& memo) {
      for (const auto& [filename, originalName] : imported) {
        memo.attachments.push_back(filename);
        memo.originalNames[filename] = originalName;
      }
    });
  } catch (...) {
    for (const auto& file : imported) {
      try {
        attachments.deleteFile(file.filename, day);
      } catch (const Error& error) {
        Log::error(LogChannel::storage, "⚠️ MemoEditor.withImported: {}", error.what());
      }
    }
    throw;
  }
}

Memo MemoEditor::create(Day day, DayStore::NewMemo content,
                        const std::vector<std::filesystem::path>& files) const {
  return store_.writes().write([&] {
    return withImported(day, files, [&](const auto& name) {
      Memo named;
      name(named);
      content.attachments.insert(content.attachments.end(), named.attachments.begin(),
                                 named.attachments.end());
      content.originalNames.merge(named.originalNames);
      return store_.createMemo(day, std::move(content));
    });
  });
}

Memo MemoEditor::attach(Day day, const Memo& original,
                        const std::vector<std::filesystem::path>& files) const {
  return store_.writes().write([&] {
    return withImported(day, files, [&](const auto& name) { return change(day, original, name); });
  });
}

Memo MemoEditor::detach(Day day, const Memo& original,
                        const std::vector<std::string>& filenames) const {
  return store_.writes().write([&] {
    Memo changed = change(day, original, [&](Memo& memo) {
      for (const std::string& name : filenames) forget(memo, name);
    });
    store_.trashUnnamedFiles(filenames, day);
    return changed;
  });
}

}  // namespace nomely
