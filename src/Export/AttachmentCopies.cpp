#include "Export/AttachmentCopies.h"

#include <cerrno>
#include <ranges>

#include <fmt/format.h>

#include "Core/Extensions/PathNames.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"
#include "Platform/System/Uuid.h"

namespace nomely {
namespace {

using std::filesystem::path;

// ("图.png", 2) → "图-2.png"
std::string numbered(const std::string& name, int number) {
  if (number == 1) return name;
  const std::string_view extension = pathExtension(name);
  return fmt::format("{}-{}{}{}", withoutExtension(name), number, extension.empty() ? "" : ".",
                     extension);
}

}  // namespace

AttachmentCopies::AttachmentCopies(const FileManager& files, path folder)
    : files_(files),
      folder_(std::move(folder)),
      hidden_(folder_.parent_path() / fmt::format(".{}-{}", folder_.filename().string(),
                                                  Uuid::random().string().substr(0, 8))) {}

AttachmentCopies::~AttachmentCopies() {
  const auto takeAway = [&](const path& name) {
    try {
      files_.removeTree(name);
    } catch (const FileError& error) {
      Log::error(LogChannel::storage, "{}", error.what());
    }
  };
  for (const path& name : std::views::reverse(placed_)) takeAway(name);
  takeAway(hidden_);
}

std::optional<path> AttachmentCopies::add(const path& source, Day day, const std::string& name) {
  const auto found = files_.attributes(source);
  if (!found || found->type != FileType::regular) return std::nullopt;
  for (int number = 1;; ++number) {
    const path place = path(day.string()) / numbered(name, number);
    try {
      bool isTaken = false;
      for (const path& there : {folder_ / place, hidden_ / place}) {
        if (!files_.exists(there)) continue;
        const auto other = files_.attributes(there);
        if (other && other->type == FileType::regular && files_.contentsEqual(source, there))
          return folder_.filename() / place;
        isTaken = true;
      }
      if (isTaken) continue;
      files_.createDirectories((hidden_ / place).parent_path());
      files_.copyFile(source, hidden_ / place);
      return folder_.filename() / place;
    } catch (const FileError& error) {
      if (error.path() != source) throw;
      return std::nullopt;
    }
  }
}

void AttachmentCopies::place() {
  if (files_.exists(hidden_)) place(hidden_, folder_);
}

// Whole folders go in one step where theirs is missing.
void AttachmentCopies::place(const path& from, const path& to) {
  if (!files_.exists(to)) {
    try {
      files_.moveFile(from, to);
      placed_.push_back(to);
      return;
    } catch (const FileError& error) {
      if (!files_.exists(from)) placed_.push_back(to);
      // Some file systems move folders only where something may be replaced.
      if (error.errorNumber() != EPERM || !files_.isDirectory(from)) throw;
    }
    files_.createDirectories(to);
    placed_.push_back(to);
  }
  for (const DirectoryEntry& entry : files_.listAll(from))
    place(from / entry.name, to / entry.name);
}

}  // namespace nomely
