#include <algorithm>
#include <cerrno>
#include <functional>

#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Storage/MemoFile.h"
#include "Core/Storage/VersionStore.h"
#include "Platform/Files/FileError.h"

namespace nomely {
namespace {

// Neither listing nor pruning of snapshots looks at files with this extension.
constexpr std::string_view extension = ".original";

}  // namespace

bool VersionStore::isOriginalName(std::string_view fileName) {
  return fileName.ends_with(extension) && timestampOf(fileName);
}

bool VersionStore::keepOriginal(Day day, std::int64_t seqNumber, std::string_view memoId) const {
  return context_.write([&] {
    const std::filesystem::path file = context_.paths.memoFile(day, seqNumber);
    const std::optional<std::string> content = MemoFile::text(context_.files, file);
    if (!content || !MemoFrontmatterParser::losesOnRewrite(*content)) return false;
    const auto attributes = context_.files.attributes(file);
    return attributes && keepBytes(memoId, *content, attributes->permissions);
  });
}

bool VersionStore::keepBytes(std::string_view memoId, std::string_view content,
                             unsigned permissions) const {
  return context_.write([&] {
    const bool isKept = std::ranges::any_of(originals(memoId), [&](const OriginalFile& original) {
      return contentOf(original) == content;
    });
    if (isKept) return false;
    const std::filesystem::path folder = identityDirectory(memoId);
    context_.prepareFolder(folder);
    return context_.files.createAtomically(folder / newestName(folder, extension.substr(1)),
                                           content, permissions);
  });
}

std::vector<OriginalFile> VersionStore::originals(std::string_view memoId) const {
  std::vector<OriginalFile> found;
  try {
    const std::filesystem::path folder = identityDirectory(memoId);
    if (!context_.files.exists(folder)) return found;
    for (const DirectoryEntry& entry : context_.files.listAll(folder))
      if (isOriginalName(entry.name))
        found.push_back({.timestamp = timestampOf(entry.name).value(),
                         .filename = (folder / entry.name)
                                         .lexically_relative(context_.paths.versionsFolder())
                                         .string()});
  } catch (const FileError&) {
    return {};
  }
  std::ranges::stable_sort(found, std::greater(), &OriginalFile::timestamp);
  return found;
}

std::string VersionStore::contentOf(const OriginalFile& original) const {
  const std::filesystem::path file = fileBelowVersions(original.filename);
  auto content = context_.files.read(file);
  if (!content) throw FileError("读取", file, ENOENT);
  return *std::move(content);
}

}  // namespace nomely
