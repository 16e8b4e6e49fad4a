#include "Core/Lifecycle/Settling/TrashSettling.h"

#include <algorithm>

#include <fmt/format.h>

#include "Core/Lifecycle/Settling/ConflictMarkers.h"
#include "Core/Lifecycle/Settling/ConflictNames.h"
#include "Core/Lifecycle/Settling/QuietTime.h"
#include "Core/Lifecycle/Settling/SecondForms.h"
#include "Core/Storage/DerivedIdentity.h"
#include "Core/Storage/MemoFile.h"
#include "Core/Storage/SyncedFolder.h"

namespace nomely {
namespace {

using Home = StateKeeping::Home;

Home homeIn(const std::filesystem::path& folder) {
  return {folder, folder / TrashStore::attachmentsName};
}

// The bytes of the file that holds it.
const std::string& bytesOf(const MemoText& text) {
  return text.found.empty() ? text.bytes : text.found;
}

bool saysTheSame(const MemoText& stray, const MemoText& memo) {
  return bytesOf(stray) == bytesOf(memo) || (stray.isIn(memo) && stray.found.empty());
}

}  // namespace

std::filesystem::path TrashSettling::folderOf(const std::string& entry) const {
  return context_.paths.trashFolder() / entry;
}

void TrashSettling::tell(const std::filesystem::path& path, const std::string& outcome) {
  result_.told.push_back({path.lexically_relative(context_.paths.rootURL), outcome});
}

std::vector<std::string> TrashSettling::entries() const {
  std::vector<std::string> names;
  const std::filesystem::path trash = context_.paths.trashFolder();
  const auto attributes = context_.files.attributes(trash, LinkPolicy::noFollow);
  if (!attributes || attributes->type != FileType::directory) return names;
  for (const DirectoryEntry& entry : context_.files.listAll(trash))
    if (entry.type == FileType::directory && TrashStore::parseFolderName(entry.name))
      names.push_back(entry.name);
  return names;
}

std::optional<MemoText> TrashSettling::textIn(const StoreContext& context,
                                              const std::filesystem::path& file) {
  const auto attributes = context.files.attributes(file, LinkPolicy::noFollow);
  if (!attributes || attributes->type != FileType::regular) return std::nullopt;
  auto bytes = context.files.read(file, MemoFile::maxSize);
  return bytes ? MemoText::read(*std::move(bytes), attributes->permissions, {}) : std::nullopt;
}

std::optional<MemoText> TrashSettling::textOf(const MemoService& service,
                                              const std::string& memoId) {
  SettlingResult unused;
  for (const std::string& entry : TrashSettling(service, unused).entries()) {
    auto text = textIn(service.context(),
                       service.context().paths.trashFolder() / entry / TrashStore::memoFileName);
    if (text && text->id() == memoId) return text;
  }
  return std::nullopt;
}

std::vector<std::string> TrashSettling::copiesOf(const std::filesystem::path& folder,
                                                 const std::string& base) const {
  std::vector<std::string> copies;
  for (const DirectoryEntry& file : context_.files.listVisible(folder))
    if (file.type == FileType::regular && ConflictNames::isCopyOf(file.name, base))
      copies.push_back(file.name);
  return copies;
}

void TrashSettling::settleCopies(const std::string& entry) {
  const std::filesystem::path folder = folderOf(entry);
  context_.write([&] {
    settleMarkers(folder / TrashStore::memoFileName);
    settleMarkers(folder / TrashStore::metaFileName);
  });
  for (const std::string& name : copiesOf(folder, TrashStore::memoFileName))
    context_.write([&] { settleMemo(entry, name); });
  for (const std::string& name : copiesOf(folder, TrashStore::metaFileName))
    context_.write([&] { settleMeta(entry, name); });
}

// One side stays in place, the other lies beside it as any engine would have left it.
void TrashSettling::settleMarkers(const std::filesystem::path& file) {
  const auto bytes = context_.files.read(file, MemoFile::maxSize);
  const auto sides = bytes ? ConflictMarkers::in(*bytes) : std::nullopt;
  if (!sides) return;
  if (!sides->touchHeader &&
      (sides->areInCode || !SyncedFolder(context_).isBy(SyncedFolder::Engine::git)))
    return;
  if (QuietTime::isYoung(context_, file)) {
    result_.isWaiting = true;
    return;
  }
  const auto& [lesser, greater] = std::minmax(sides->ours, sides->theirs);
  const std::filesystem::path copy =
      file.parent_path() / fmt::format("{}~{}{}", file.stem().string(),
                                       DerivedIdentity::contentMark(lesser),
                                       file.extension().string());
  if (!context_.files.createAtomically(copy, lesser) && context_.files.read(copy) != lesser) return;
  context_.files.writeAtomically(file, greater);
  ++result_.others;
  tell(file, "git 的冲突标记已拆开，两边都在");
}

// Another machine has taken out or settled what the copy lay beside.
bool TrashSettling::takePlace(const std::filesystem::path& file,
                              const std::filesystem::path& base) {
  if (context_.files.exists(base) || !context_.files.exists(file)) return false;
  if (QuietTime::isYoung(context_, file, QuietTime::longInterval)) return true;
  context_.files.moveFile(file, base);
  ++result_.others;
  tell(file, fmt::format("已改名为 {}", base.filename().string()));
  return true;
}

void TrashSettling::settleMemo(const std::string& entry, const std::string& name) {
  const Home home = homeIn(folderOf(entry));
  const std::filesystem::path file = home.texts / name;
  if (takePlace(file, home.texts / TrashStore::memoFileName)) return;
  const auto stray = textIn(context_, file);
  const auto memo = textIn(context_, home.texts / TrashStore::memoFileName);
  if (!stray || !memo) return;
  if (QuietTime::isYoung(context_, file)) {
    result_.isWaiting = true;
    return;
  }
  std::string outcome = "和 memo.md 内容相同，已移除";
  if (!saysTheSame(*stray, *memo)) {
    const bool isSame = !stray->id().empty() && stray->id() == memo->id();
    if (!isSame) {
      if (!separate(entry, *stray, name)) return;
      outcome = "是另一条笔记，成为回收站里单独的一项";
    } else if (stray->staysBefore(*memo)) {
      const auto free = keeping_.keep({*memo, home}, {*stray, home});
      context_.files.writeAtomically(home.texts / TrashStore::memoFileName, bytesOf(*stray));
      keeping_.letGo(free, home.texts);
      outcome = "比 memo.md 更新，已换上；原来的存入历史";
    } else {
      keeping_.letGo(keeping_.keep({*stray, home}, {*memo, home}), home.texts, name);
      outcome = "比 memo.md 更早，存入它的历史";
    }
    ++result_.notes;
  } else {
    if (SecondForms::mayBeLast(context_, file)) return;
    ++result_.others;
  }
  context_.files.removeFile(file);
  tell(file, outcome);
}

// Half of an entry is taken up again as long as the stray is there, so that goes last.
bool TrashSettling::separate(const std::string& entry, const MemoText& text,
                             const std::string& name) const {
  const std::filesystem::path folder = folderOf(entry);
  const auto meta = context_.files.read(folder / TrashStore::metaFileName);
  const auto read = meta ? MemoPlace::parse(*meta) : std::nullopt;
  const auto place = read ? read : TrashStore::parseFolderName(entry);
  const std::string& bytes = bytesOf(text);
  const std::filesystem::path own =
      folderOf(fmt::format("{}_{}", entry, DerivedIdentity::contentMark(bytes)));
  context_.prepareFolder(own);
  context_.files.writeAtomically(own / TrashStore::metaFileName, place.value().string());
  const std::filesystem::path memo = own / TrashStore::memoFileName;
  if (!context_.files.createAtomically(memo, bytes, text.permissions) &&
      context_.files.read(memo) != bytes)
    return false;
  const Home from = homeIn(folder);
  keeping_.letGo(keeping_.bring(text.memo, from, homeIn(own)), from.texts, name);
  return true;
}

void TrashSettling::settleMeta(const std::string& entry, const std::string& name) {
  const std::filesystem::path folder = folderOf(entry);
  if (takePlace(folder / name, folder / TrashStore::metaFileName)) return;
  const auto meta = context_.files.read(folder / TrashStore::metaFileName);
  if (!meta || (!MemoPlace::parse(*meta) && context_.files.read(folder / name) != meta)) return;
  context_.files.removeFile(folder / name);
  ++result_.others;
  tell(folder / name, "和 meta.txt 说的是同一条笔记，已移除");
}

void TrashSettling::settleStanding(const std::string& entry, const StandingNotes& notes) {
  context_.write([&] {
    const Home home = homeIn(folderOf(entry));
    const std::filesystem::path memo = home.texts / TrashStore::memoFileName;
    const auto trashed = textIn(context_, memo);
    if (!trashed || trashed->id().empty() || !trashed->found.empty()) return;
    const auto standing = notes.of(trashed->id());
    if (standing.empty() || trashed->isIn(standing.front().text)) return;
    if (!standing.front().text.isLaterThan(*trashed)) return bringFilesBack(home, standing.front());
    if (QuietTime::isYoung(context_, memo) ||
        QuietTime::isYoung(context_, standing.front().changed)) {
      result_.isWaiting = true;
      return;
    }
    const Home place = Home::of(context_.paths, standing.front().day);
    (void)keeping_.keep({*trashed, home}, {standing.front().text, place});
    if (!isAllKept(home, trashed->id())) return;
    for (const DirectoryEntry& file : filesIn(home.files))
      context_.files.removeFile(home.files / file.name);
    context_.files.removeFile(home.files);
    context_.files.removeFile(memo);
    context_.files.removeFile(home.texts / TrashStore::metaFileName);
    context_.files.removeFile(home.texts);
    ++result_.notes;
    tell(home.texts, fmt::format("另一台电脑后来又写了这条笔记（{}），存入它的历史",
                                 standing.front().day.string()));
  });
}

// They went to the trash from under a text that someone else was writing. Should that one's file be
// about to go, too, copies of them are left in the day, which is why this takes its time.
void TrashSettling::bringFilesBack(const Home& home, const StandingNotes::Note& standing) {
  const Home place = Home::of(context_.paths, standing.day);
  const auto isMissing = [&](const std::string& name) {
    return AttachmentManager::isSafeName(name) && !context_.files.exists(place.files / name) &&
           context_.files.exists(home.files / name);
  };
  if (std::ranges::none_of(standing.text.memo.attachments, isMissing) ||
      QuietTime::isYoung(context_, home.texts, QuietTime::longInterval) ||
      QuietTime::isYoung(context_, standing.changed, QuietTime::longInterval))
    return;
  (void)keeping_.bring(standing.text.memo, home, place);
  ++result_.others;
  tell(home.files, fmt::format("{} 的笔记还在用这些附件，已复制回去", standing.day.string()));
}

std::vector<DirectoryEntry> TrashSettling::filesIn(const std::filesystem::path& folder) const {
  return context_.files.isDirectory(folder) ? context_.files.listAll(folder)
                                            : std::vector<DirectoryEntry>();
}

// Whatever else lies in the entry is somebody's. That the note's day has a file says nothing: the
// news that it went to the trash may still be on its way there.
bool TrashSettling::isAllKept(const Home& home, const std::string& memoId) const {
  for (const DirectoryEntry& file : context_.files.listAll(home.texts))
    if (file.name != TrashStore::memoFileName && file.name != TrashStore::metaFileName &&
        file.name != TrashStore::attachmentsName)
      return false;
  return std::ranges::all_of(filesIn(home.files), [&](const DirectoryEntry& file) {
    return file.type == FileType::regular &&
           service_.versions().keepAttachment(memoId, home.files / file.name);
  });
}

void TrashSettling::addStrays(const std::string& entry, std::vector<Stray>& strays) const {
  const std::filesystem::path folder = folderOf(entry);
  const auto isAlone = [&](const char* base) { return !context_.files.exists(folder / base); };
  const auto memo = textIn(context_, folder / TrashStore::memoFileName);
  const auto add = [&](const std::string& name, bool canBeSettled, const char* fault) {
    strays.push_back({(folder / name).lexically_relative(context_.paths.rootURL),
                      canBeSettled ? SettlingResult::willBeSettled : fault, canBeSettled});
  };
  for (const std::string& name : copiesOf(folder, TrashStore::memoFileName)) {
    const auto copy = textIn(context_, folder / name);
    if (copy && memo && saysTheSame(*copy, *memo) &&
        SecondForms::mayBeLast(context_, folder / name))
      add(name, false, SettlingResult::waitsForADay);
    else
      add(name, copy && (memo || isAlone(TrashStore::memoFileName)),
          "和 memo.md 有一个不是笔记，保持原样");
  }
  for (const std::string& name : copiesOf(folder, TrashStore::metaFileName)) {
    const auto meta = context_.files.read(folder / TrashStore::metaFileName);
    add(name,
        isAlone(TrashStore::metaFileName) ||
            (meta && (MemoPlace::parse(*meta) || context_.files.read(folder / name) == meta)),
        "meta.txt 读不出来，保持原样");
  }
}

}  // namespace nomely
