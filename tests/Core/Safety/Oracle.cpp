#include "Core/Safety/Oracle.h"

#include <algorithm>
#include <sstream>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "Core/Extensions/PathNames.h"
#include "Core/Lifecycle/Backup/BackupArchive.h"
#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Storage/DiskPaths.h"
#include "Platform/Files/FileManager.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view root = "root/";
constexpr std::string_view thrownAway = "root/.trash/_attachments/";
constexpr std::string_view setAside = ".corrupt-";  // what could not be read

bool isKeptElsewhere(const std::string& path) {
  return path.starts_with(thrownAway) || path.find(setAside) != std::string::npos;
}

// Work of a backup that was ended, of no use to the next one.
bool isAbandoned(const std::string& path) {
  return path.find(".nomely-backup-work-") != path.npos ||
         path.find(".nomely-archive-") != path.npos;
}

// Of an archive what it holds, less its manifest, which tells the time and the place.
std::string legible(const std::string& bytes) {
  if (!bytes.starts_with("PK")) return bytes;
  try {
    MemoryFileSystem files("/archive", {{"zip", bytes}});
    const BackupArchive archive(files, "/archive/zip");
    (void)archive.prove({});
    std::string text;
    for (const ZipEntry& entry : archive.zip().entries())
      if (entry.name != BackupManifest::fileName)
        text += fmt::format("{} {}\n", entry.name, entry.checksum);
    return text;
  } catch (const BackupError& error) {
    return error.what();
  }
}

bool isWordPart(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-';
}

// Calls `visit` with each word and each piece between two.
template <typename Visit>
void forEachWord(std::string_view text, Visit visit) {
  while (!text.empty()) {
    const auto end = std::ranges::find_if_not(text, isWordPart);
    const auto length = std::max<std::ptrdiff_t>(end - text.begin(), 1);
    visit(text.substr(0, static_cast<std::size_t>(length)));
    text.remove_prefix(static_cast<std::size_t>(length));
  }
}

// An identity, whole or its first eight digits, with or without hyphens.
bool looksRandom(std::string_view word) {
  if (constexpr std::string_view rescue = "nomely-rescue-"; word.starts_with(rescue))
    word.remove_prefix(rescue.size());
  const bool hexadecimal = word.find_first_not_of("0123456789abcdefABCDEF-") == word.npos;
  const bool fits = word.size() == 8 || word.size() >= 32;
  return hexadecimal && fits && word.find_first_not_of('-') != word.npos;
}

bool liesInDay(const fs::path& path) {
  const fs::path folder = path.parent_path();
  return folder.parent_path() == "root" && Day::parse(folder.filename().string());
}

bool isMemo(const fs::path& path) {
  return (liesInDay(path) && DiskPaths::seqNumber(path.filename().string())) ||
         (path.filename() == "memo.md" && path.native().starts_with("root/.trash/"));
}

bool isSnapshot(const std::string& path) {
  return path.starts_with("root/.versions/") &&
         fs::path(path).parent_path().filename() != "attachments";
}

bool isHidden(const std::string& path) {
  return path.starts_with("root/.");
}

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);)
    lines.push_back(line.size() > 60 ? line.substr(0, 20) + "..." : line);
  return lines;
}

// The lines of the one that the other lacks.
std::string linesMissing(const std::string& from, const std::string& to, char mark) {
  const auto has = linesOf(to);
  std::string text;
  for (const std::string& line : linesOf(from))
    if (std::ranges::find(has, line) == has.end()) text += fmt::format("    {} {}\n", mark, line);
  return text;
}

}  // namespace

bool Oracle::isTemporary(const std::string& path) {
  return FileManager::isTemporaryName(fs::path(path).filename().native()) ||
         path.starts_with("root/.migrating/");
}

Oracle::Oracle(const Tree& before, const Tree& after) : beforeTree_(before), afterTree_(after) {
  for (const auto& [name, bytes] : before)
    for (const std::string& text : {name, bytes})
      forEachWord(text, [&](std::string_view word) { known_.emplace(word); });
  before_ = viewOf(before);
  after_ = viewOf(after);
}

const std::string& Oracle::settled(const std::string& text) const {
  const auto [entry, fresh] = settled_.try_emplace(text);
  if (fresh)
    forEachWord(text, [&](std::string_view word) {
      entry->second += looksRandom(word) && !known_.contains(word) ? "*" : word;
    });
  return entry->second;
}

std::string Oracle::placeOf(const std::string& path) const {
  const fs::path folder = fs::path(path).parent_path();
  if (liesInDay(path) && isMemo(path)) return (folder / "#.md").string();
  if (isSnapshot(path))
    return settled(folder.string()) + "/#" + fs::path(path).extension().string();
  constexpr std::string_view trash = "root/.trash/";
  constexpr std::size_t entryLength = std::string_view("2026-03-01_002").size();
  std::string place = settled(path);
  // A second folder of one memo has a time behind its name.
  if (place.starts_with(trash) && !place.starts_with(thrownAway))
    place.erase(trash.size() + entryLength,
                place.find('/', trash.size()) - trash.size() - entryLength);
  return place;
}

Oracle::View Oracle::viewOf(const Tree& tree) const {
  View view;
  for (const auto& [path, bytes] : tree)
    if (!path.ends_with('/') && !isTemporary(path) && !isAbandoned(path))
      view.files[path] = legible(bytes);
  for (const auto& [path, bytes] : view.files) {
    view.items.emplace(placeOf(path), settled(bytes));
    view.contents.insert(settled(bytes));
    if (isMemo(path)) addMemo(view, path, bytes);
    if (isSnapshot(path)) view.snapshots.insert(settled(bytes));
  }
  for (const auto& [path, bytes] : view.files)
    if (liesInDay(path) && !view.named.contains(path) && placeOf(path).find('*') != path.npos)
      view.strays.insert(placeOf(path));
  return view;
}

void Oracle::addMemo(View& view, const std::string& path, const std::string& text) const {
  const auto [entry, fresh] = headers_.try_emplace(text);
  if (fresh) {
    try {
      entry->second = MemoFrontmatterParser::parse(text).frontmatter;
    } catch (const ParseError&) {
      // Somebody's damaged file, or a torn one, which its place tells.
    }
  }
  const auto& header = entry->second;
  if (!header || !header->memoId) return;
  Copies& copies = view.memos[settled(*header->memoId)];
  ++copies.count;
  copies.inDays &= liesInDay(path);
  if (!liesInDay(path)) return;
  for (const std::string& name : header->attachments) {
    const std::string file = (fs::path(path).parent_path() / name).string();
    view.named.insert(file);
    copies.isLacking |= !view.files.contains(file);
  }
}

bool Oracle::needsAttachments(const std::string& memoId) const {
  const auto before = before_.memos.find(memoId);
  const auto after = after_.memos.find(memoId);
  if (after != after_.memos.end() && after->second.isLacking) return false;
  return before == before_.memos.end() || (before->second.inDays && !before->second.isLacking);
}

void Oracle::expectIntact(const Tree& tree) const {
  const View now = viewOf(tree);
  for (const std::string& content : before_.contents)
    EXPECT_TRUE(!after_.contents.contains(content) || now.contents.contains(content))
        << "lost: " << content;
  for (const auto& [path, bytes] : before_.files) {
    const auto after = after_.files.find(path);
    if (after == after_.files.end() || after->second != bytes || isSnapshot(path)) continue;
    const auto found = now.files.find(path);
    EXPECT_TRUE(found != now.files.end() && found->second == bytes) << "not left alone: " << path;
  }
  for (const Item& item : now.items)
    EXPECT_TRUE(before_.items.contains(item) || after_.items.contains(item) ||
                (item.first.ends_with("/#.md") && (after_.snapshots.contains(item.second) ||
                                                   after_.contents.contains(item.second))) ||
                (isKeptElsewhere(item.first) &&
                 (before_.contents.contains(item.second) || after_.contents.contains(item.second))))
        << "not of the operation: " << item.first << "\n"
        << item.second;
  for (const auto& [memoId, copies] : before_.memos)
    EXPECT_TRUE(!after_.memos.contains(memoId) || now.memos.contains(memoId)) << "gone: " << memoId;
  for (const auto& [path, bytes] : before_.files)
    EXPECT_TRUE(!isMemo(path) || !after_.files.contains(path) || now.files.contains(path))
        << "gone: " << path;
  for (const auto& [memoId, copies] : now.memos)
    EXPECT_FALSE(copies.isLacking && needsAttachments(memoId)) << memoId << " lacks an attachment";
}

void Oracle::expectTakenBack(const Tree& tree) const {
  const auto countIn = [](const View& view, const std::string& memoId) {
    const auto found = view.memos.find(memoId);
    return found == view.memos.end() ? 0 : found->second.count;
  };
  const View now = viewOf(tree);
  for (const auto& [memoId, copies] : now.memos)
    EXPECT_LE(copies.count, std::max(countIn(before_, memoId), countIn(after_, memoId))) << memoId;
  for (const std::string& place : now.strays)
    EXPECT_TRUE(after_.strays.contains(place)) << "not taken back: " << place;
  for (const auto& [path, bytes] : now.files)
    EXPECT_TRUE(!path.ends_with("/memo.md") ||
                now.files.contains(path.substr(0, path.size() - 7) + "meta.txt"))
        << "half in the trash: " << path;
}

void Oracle::expectDone(const Tree& tree) const {
  const View now = viewOf(tree);
  for (const Item& item : after_.items) {
    const bool anywhere =
        item.first.starts_with(thrownAway) || (item.first.starts_with("root/.trash/") &&
                                               item.first.find("/attachments/") != item.first.npos);
    EXPECT_TRUE(anywhere ? now.contents.contains(item.second) : now.items.contains(item))
        << "not done: " << item.first;
  }
}

void Oracle::expectNothingLeft(const Tree& tree) const {
  const View now = viewOf(tree);
  for (const auto& [place, content] : now.items) {
    const bool taken =
        before_.items.contains({place, content}) && !after_.items.contains({place, content});
    const bool spare = isSnapshot(place) && after_.contents.contains(content);
    const bool shows = isHidden(place) || place.ends_with("/#.md");
    EXPECT_FALSE(taken && shows && !spare) << "left: " << place;
  }
}

std::vector<std::string> Oracle::lost() const {
  std::vector<std::string> paths;
  for (const auto& [path, bytes] : before_.files)
    if (!after_.contents.contains(settled(bytes)) && !path.ends_with("/meta.txt"))
      paths.push_back(path);
  return paths;
}

std::string Oracle::changes() const {
  // Temporaries and empty folders too.
  const auto shown = [&](const Tree& tree) {
    std::map<std::string, std::string> files;
    for (auto at = tree.begin(); at != tree.end(); ++at) {
      const bool full = at->first.ends_with('/') && std::next(at) != tree.end() &&
                        std::next(at)->first.starts_with(at->first);
      if (!full) files[settled(at->first)] = settled(legible(at->second));
    }
    return files;
  };
  const auto before = shown(beforeTree_);
  const auto after = shown(afterTree_);
  const auto shortened = [](const std::string& path) {
    return path.starts_with(root) ? path.substr(root.size()) : path;
  };
  const auto source = [&](const std::string& bytes) {
    return std::ranges::find_if(
        before, [&](const auto& file) { return file.second == bytes && !bytes.empty(); });
  };
  std::string text;
  std::set<std::string> moved;
  for (const auto& [path, bytes] : after) {
    const auto old = before.find(path);
    if (old != before.end() && old->second == bytes) continue;
    const auto from = source(bytes);
    if (from != before.end()) {
      const bool stays = after.contains(from->first);
      text +=
          fmt::format("  {} {} {}\n", shortened(from->first), stays ? "=" : "→", shortened(path));
      if (!stays) moved.insert(from->first);
    } else {
      text += fmt::format("  {} {}\n", old == before.end() ? "+" : "~", shortened(path));
      const std::string oldBytes = old == before.end() ? "" : old->second;
      text += linesMissing(oldBytes, bytes, '-') + linesMissing(bytes, oldBytes, '+');
    }
  }
  for (const auto& [path, bytes] : before)
    if (!after.contains(path) && !moved.contains(path)) text += "  - " + shortened(path) + "\n";
  return text;
}

}  // namespace nomely::test
