#include "Core/Lifecycle/Settling/StateKeeping.h"

#include <algorithm>

#include "Core/Extensions/PathNames.h"
#include "Core/Lifecycle/Settling/ConflictNames.h"
#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Storage/DraftStore.h"
#include "Core/Storage/MemoFile.h"

namespace nomely {
namespace {

bool names(const Memo& memo, const std::string& filename) {
  return std::ranges::find(memo.attachments, filename) != memo.attachments.end();
}

bool isText(const DirectoryEntry& entry) {
  return entry.type == FileType::regular &&
         (DiskPaths::seqNumber(entry.name) || ConflictNames::isStrayNote(entry.name));
}

}  // namespace

std::set<std::filesystem::path> StateKeeping::keep(const Side& going, const Side& staying) const {
  const FileManager& files = service_.context().files;
  const std::string memoId = going.text.id();
  // Where another machine takes the other of two equal texts away, this is the last of it.
  service_.versions().keepState(memoId, going.text.state(),
                                going.text.isIn(staying.text) ? VersionStore::Kept::ofRemoval
                                                              : VersionStore::Kept::asSnapshot);
  keepFound(going.text);
  std::set<std::filesystem::path> free = bring(staying.text.memo, going.home, staying.home);
  for (const std::string& name : going.text.memo.attachments) {
    const std::filesystem::path file = going.home.files / name;
    if (!AttachmentManager::isSafeName(name) || free.contains(file) || !files.exists(file))
      continue;
    if (going.home == staying.home && names(staying.text.memo, name)) continue;
    if (service_.versions().keepAttachment(memoId, file)) free.insert(file);
  }
  return free;
}

std::set<std::filesystem::path> StateKeeping::bring(const Memo& memo, const Home& from,
                                                    const Home& to) const {
  const FileManager& files = service_.context().files;
  std::set<std::filesystem::path> brought;
  if (from == to) return brought;
  for (const std::string& name : memo.attachments) {
    const std::filesystem::path file = from.files / name;
    const std::filesystem::path target = to.files / name;
    if (!AttachmentManager::isSafeName(name) || !files.exists(file)) continue;
    if (!files.exists(target)) {
      service_.context().prepareFolder(to.files);
      files.copyFile(file, target);
    }
    if (files.contentsEqual(file, target)) brought.insert(file);
  }
  return brought;
}

void StateKeeping::letGo(const std::set<std::filesystem::path>& files,
                         const std::filesystem::path& texts, const std::string& except) const {
  for (const std::filesystem::path& file : files)
    if (!isNamed(file.filename().string(), texts, except))
      service_.context().files.removeFile(file);
}

void StateKeeping::keepFound(const MemoText& text) const {
  if (text.found.empty()) return;
  VersionStore::ForeignState state = text.state();
  state.content = text.found;
  service_.versions().keepState(text.id(), state, VersionStore::Kept::asOriginal);
}

// What can't be read may name anything that its bytes hold.
bool StateKeeping::isNamed(const std::string& filename, const std::filesystem::path& texts,
                           const std::string& except) const {
  const StoreContext& context = service_.context();
  const auto needed = DraftStore(context).pendingAttachmentReferences();
  if (!needed || needed->contains(filename)) return true;
  for (const DirectoryEntry& entry : context.files.listVisible(texts)) {
    if (!isText(entry) || entry.name == except || entry.name == filename) continue;
    const auto bytes = context.files.read(texts / entry.name, MemoFile::maxSize);
    if (!bytes ||
        (bytes->find(filename) == std::string::npos && !MemoFrontmatterParser::mayEscape(*bytes)))
      continue;
    const auto text = MemoText::read(*bytes, 0, {});
    if (!text || names(text->memo, filename)) return true;
  }
  return false;
}

}  // namespace nomely
