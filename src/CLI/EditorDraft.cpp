#include "CLI/EditorDraft.h"

#include <fmt/format.h>

#include "Platform/Files/FileError.h"
#include "Platform/System/Uuid.h"

namespace nomely {
namespace {

constexpr auto fileName = "memo.md";
constexpr unsigned ownerOnly = 0700;

std::filesystem::path folderOfAll(const Session& session) {
  return session.environment().stateFolder() / "editing";
}

bool isLeft(const std::filesystem::path& folder) {
  try {
    return DirectoryLock(folder).tryLock();
  } catch (const FileError&) {
    return false;
  }
}

}  // namespace

EditorDraft::EditorDraft(const Session& session, std::string_view text)
    : files_(session.files()),
      folder_(folderOfAll(session) / Uuid::random().compact()),
      file_(folder_ / fileName),
      lock_(folder_) {
  files_.createDirectories(folder_, ownerOnly);
  // Without locks on that file system the draft counts as left behind while it is being edited.
  (void)lock_.tryLock();
  files_.writeAtomically(file_, text);
}

std::string EditorDraft::text() const {
  return files_.read(file_).value_or("");
}

void EditorDraft::discard() noexcept {
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

std::vector<std::filesystem::path> EditorDraft::leftBehind(const Session& session) {
  const FileManager files = session.files();
  const std::filesystem::path all = folderOfAll(session);
  std::vector<std::filesystem::path> left;
  try {
    if (!files.exists(all)) return left;
    for (const DirectoryEntry& entry : files.listVisible(all))
      if (files.exists(all / entry.name / fileName) && isLeft(all / entry.name))
        left.push_back(all / entry.name / fileName);
  } catch (const FileError&) {
    // What can't be listed can't be told of.
  }
  return left;
}

void EditorDraft::tellOfLeftBehind(const Session& session) {
  for (const auto& file : leftBehind(session))
    session.say(
        fmt::format("有一段没有存成笔记的文字：{}。存成笔记：nomely add - < 文件；不要了就删除它。",
                    Terminal::printable(file.string())));
}

}  // namespace nomely
