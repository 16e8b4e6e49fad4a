#include "Core/Safety/Diary.h"

#include <fmt/format.h>

#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Storage/VersionStore.h"

namespace nomely::test {
namespace {

Memo memoOf(std::int64_t number, const std::string& name, const std::string& title,
            std::vector<std::string> attachments) {
  Memo memo;
  memo.schemaVersion = MemoFrontmatter::currentSchemaVersion;
  memo.memoId = "memo_" + name;
  memo.createdAt = memo.updatedAt = "2026-03-01T08:00:00+08:00";
  memo.time = "08:00";
  memo.tags = {"生活", title};
  memo.attachments = std::move(attachments);
  memo.seqNumber = number;
  // So that a text cut in the middle is still a text, and only its end tells.
  memo.body = title + "\n" + std::string(600, '-') + "\n";
  return memo;
}

}  // namespace

Diary::Diary()
    : plain{first, memoOf(1, "plain", "无附件", {})},
      changed{first, memoOf(2, "changed", "要改的", {"shared.png", "own.png"})},
      sharing{first, memoOf(3, "sharing", "共用附件", {"shared.png"})},
      single{first, memoOf(4, "single", "独有附件", {"single.png"})},
      distant{second, memoOf(1, "distant", "另一天", {"distant.bin"})} {
  for (Entry* entry : {&sharing, &distant}) {
    entry->memo.tags.emplace_back("旅行/海边");
    entry->memo.body += "又去了 #旅行/海边 一次。\n";
  }
  for (const Entry* entry : {&plain, &changed, &sharing, &single, &distant}) {
    const std::string folder = "root/" + entry->day.string() + "/";
    tree[folder + DiskPaths::memoFileName(entry->memo.seqNumber)] = textOf(entry->memo);
    for (const std::string& name : entry->memo.attachments) tree[folder + name] = bytesOf(name);
  }
  tree["root/2026-03-01/loose.bin"] = bytesOf("loose.bin");
  tree["Photo.JPG"] = bytesOf("Photo.JPG");
  // What writers that died have left.
  tree["root/2026-03-01/.nomely-0f8fad5bd9cb469f.tmp"] = "half a mem";
  tree["root/.versions/by-id/.nomely-70867728950e.tmp"] = "";
}

Tree Diary::with(const Tree& files) const {
  Tree all = tree;
  for (const auto& [name, bytes] : files) all[name] = bytes;
  return all;
}

Tree Diary::snapshot(const Memo& memo, const std::string& seconds) {
  std::string folder = "root/.versions/by-id/";
  for (const char byte : memo.memoId.value()) folder += fmt::format("{:02x}", byte);
  return {{folder + "/" + seconds + "_0F8FAD5B.md", textOf(memo)}};
}

Tree Diary::stranded(const Entry& vanished) {
  Tree files = snapshot(vanished.memo, "1600000000.5");
  const std::string folder = std::filesystem::path(files.begin()->first).parent_path().string();
  files[folder + "/place.txt"] = MemoPlace{vanished.day, vanished.memo.seqNumber}.string();
  return files;
}

Tree Diary::manySnapshots() const {
  Memo draft = changed.memo;
  draft.body = "草稿\n";
  Tree files;
  for (std::size_t i = 0; i < VersionStore::defaultMaxVersions + 2; ++i)
    files.merge(snapshot(draft, fmt::format("{}.5", 1'600'000'000 + i)));
  return files;
}

Diary::Entry Diary::trashed(std::int64_t number, const std::string& attachment) const {
  return {first, memoOf(number, fmt::format("trashed{}", number), "扔掉的", {attachment})};
}

std::string Diary::trashFolder(Day date, const Memo& memo) {
  return fmt::format("{}_{:03}", date.string(), memo.seqNumber);
}

Tree Diary::trash(const Entry& entry) {
  const auto& [date, memo] = entry;
  const std::string folder = "root/.trash/" + trashFolder(date, memo) + "/";
  Memo draft = memo;
  draft.body = "扔掉以前的一稿\n";
  Tree files = snapshot(draft, "1600000000.5");
  files[folder + "memo.md"] = textOf(memo);
  files[folder + "meta.txt"] = fmt::format("{},{}", date.string(), memo.seqNumber);
  files[folder + "attachments/" + memo.attachments.at(0)] = "thrown away with " + *memo.memoId;
  return files;
}

std::string Diary::textOf(const Memo& memo) {
  return MemoFrontmatterParser::serialize(memo, memo.body);
}

std::string Diary::bytesOf(const std::string& attachment) {
  std::string bytes;
  while (bytes.size() < 300) bytes += attachment + " ";
  return bytes;
}

const Diary& diary() {
  static const Diary theDiary;
  return theDiary;
}

}  // namespace nomely::test
