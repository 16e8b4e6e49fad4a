#include "Core/Storage/AttachmentManager.h"

#include <algorithm>

#include <fmt/format.h>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Extensions/PathNames.h"
#include "Core/Storage/StoredFileName.h"
#include "Core/Storage/VersionStore.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"
#include "Platform/System/Uuid.h"
#include "Platform/Text/CodePage.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

using ImportError = AttachmentManager::ImportError;

std::string withExtension(std::string name, std::string_view extension) {
  return extension.empty() ? name : fmt::format("{}.{}", name, extension);
}

ImportError notFound(std::string_view name) {
  return {ImportError::Kind::fileNotFound, fmt::format("找不到附件文件：{}", name)};
}

}  // namespace

AttachmentManager::ImportError::ImportError(Kind kind, const std::string& text)
    : Error(kind == Kind::copyFailed ? "attachment.copyFailed" : "attachment.fileNotFound", text),
      kind_(kind) {}

AttachmentManager::ImportResult AttachmentManager::importFile(
    const std::filesystem::path& source, Day day,
    const std::optional<std::string>& extension) const {
  return context_.write([&] {
    if (!context_.files.attributes(source)) throw notFound(source.string());
    const std::filesystem::path folder = context_.paths.dayFolder(day);
    context_.prepareFolder(folder);
    const std::string original = readableName(lastComponent(source.native()));
    std::string name = freshName(extension ? *extension : lowerCaseExtension(original));
    try {
      context_.files.copyFile(source, folder / name);
    } catch (const FileError& error) {
      throw ImportError(ImportError::Kind::copyFailed, error.what());
    }
    return ImportResult{std::move(name), original};
  });
}

void AttachmentManager::removeImported(const std::string& filename, Day day) const {
  if (!isSafeName(filename)) return;
  context_.write([&] { context_.files.removeFile(context_.paths.dayFolder(day) / filename); });
}

std::optional<std::string> AttachmentManager::read(const std::string& filename, Day day) const {
  if (!isSafeName(filename)) return std::nullopt;
  try {
    return context_.files.read(context_.paths.dayFolder(day) / filename);
  } catch (const FileError&) {
    return std::nullopt;
  }
}

void AttachmentManager::deleteFile(const std::string& filename, Day day) const {
  if (isSafeName(filename)) discard(context_.paths.dayFolder(day) / filename);
}

void AttachmentManager::discard(const std::filesystem::path& file) const {
  context_.write([&] {
    if (!context_.files.exists(file)) return;
    const std::string filename = file.filename().string();
    const std::filesystem::path folder =
        context_.paths.attachmentTrashFolder() /
        DateFormatters::fileNameTimestamp.format(context_.clock.now());
    context_.prepareFolder(folder);
    std::filesystem::path place = folder / filename;
    if (context_.files.exists(place))
      place = folder / fmt::format("{}_{}", Uuid::random().string(), filename);
    context_.files.moveFile(file, place);
  });
}

void AttachmentManager::preparePendingAttachments(const std::vector<std::string>& filenames,
                                                  const PendingPlaces& places) const {
  context_.write([&] {
    for (const std::string& name : filenames) {
      if (!isSafeName(name)) throw notFound(name);
      const auto dated = places.sourceDates.find(name);
      const Day sourceDay = dated == places.sourceDates.end() ? places.fallbackDate : dated->second;
      const std::filesystem::path source = context_.paths.dayFolder(sourceDay) / name;
      const std::filesystem::path folder = context_.paths.dayFolder(places.destinationDate);
      const std::filesystem::path destination = folder / name;
      if (!context_.files.exists(source)) throw notFound(name);
      if (source == destination) continue;
      context_.prepareFolder(folder);
      if (!context_.files.exists(destination))
        context_.files.copyFile(source, destination);
      else if (!context_.files.contentsEqual(source, destination))
        throw ImportError(ImportError::Kind::copyFailed, "目标日期有同名的不同附件，已停止保存");
    }
  });
}

// Short, and never the name of a memo: eight digits may all be decimal.
std::string AttachmentManager::freshName(std::string_view extension) {
  // With a backslash in it no name would ever be safe.
  if (!VersionStore::isSafeFilename(extension)) extension = {};
  for (;;) {
    std::string name = withExtension(Uuid::random().string().substr(0, 8), extension);
    if (isSafeName(name)) return name;
  }
}

// Old archives hold names in the encoding of the machine that made them, most often this one.
// Characters that can't be told show as U+FFFD, for a memo can hold nothing but UTF-8.
std::string AttachmentManager::readableName(std::string_view name) {
  if (isValidUtf8(name)) return std::string(name);
  constexpr int gb18030 = 54936;
  return toUtf8(CodePage(gb18030).decode(name));
}

bool AttachmentManager::isSafeName(std::string_view name) {
  return VersionStore::isSafeFilename(name) && !DiskPaths::seqNumber(name);
}

std::optional<std::string> AttachmentStorage::save(const StoreContext& context,
                                                   std::string_view data,
                                                   const std::optional<std::string>& extName,
                                                   const std::filesystem::path& folder) {
  return context.write([&]() -> std::optional<std::string> {
    try {
      context.prepareFolder(folder);
    } catch (const FileError& error) {
      Log::error(LogChannel::storage, "⚠️ AttachmentStorage.save: {}", error.what());
      return std::nullopt;
    }
    std::optional<std::string> name = StoredFileName::fresh(extName.value_or(""));
    if (name) context.files.writeAtomically(folder / *name, data);
    return name;
  });
}

std::vector<std::string> PendingMemoAttachments::merged(
    const std::vector<std::string>& pendingAttachments,
    const std::map<std::string, AudioTranscript>& pendingAudioTranscripts) {
  std::vector<std::string> names = pendingAttachments;
  for (const auto& [name, transcript] : pendingAudioTranscripts)
    if (std::ranges::find(names, name) == names.end()) names.push_back(name);
  return names;
}

}  // namespace nomely
