#include "Core/Safety/Diary.h"

#include <fmt/format.h>

#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Storage/VersionStore.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;

Memo memoOf(std::int64_t number, const std::string& title, std::vector<std::string> attachments) {
  Memo memo;
  memo.schemaVersion = MemoFrontmatter::currentSchemaVersion;
  memo.memoId = fmt::format("memo_{:032x}", std::hash<std::string>()(title));
  memo.createdAt = "2026-03-01T08:00:00+08:00";
  memo.updatedAt = memo.createdAt;
  memo.time = "08:00";
  memo.tags = {"生活", title};
  memo.attachments = std::move(attachments);
  memo.seqNumber = number;
  for (int line = 1; line <= 20; ++line) memo.body += fmt::format("{}，第 {} 行。\n", title, line);
  // So that a text cut in the middle is still a text, and only its end tells.
  memo.body += std::string(3000, 'a') + "\n";
  return memo;
}

std::string bytesOf(char seed, std::size_t size) {
  std::string bytes(size, seed);
  for (std::size_t i = 0; i < size; i += 7) bytes[i] = static_cast<char>(seed + i % 31);
  return bytes;
}

}  // namespace

Diary::Diary()
    : plain(memoOf(1, "无附件", {})),
      changed(memoOf(2, "要改的", {"shared.png", "own.png"})),
      sharing(memoOf(3, "共用附件", {"shared.png"})),
      single(memoOf(4, "独有附件", {"single.png"})),
      distant(memoOf(1, "另一天", {"distant.bin"})),
      attachments{{"shared.png", bytesOf('s', 3000)},
                  {"own.png", bytesOf('o', 5000)},
                  {"single.png", bytesOf('i', 100)},
                  {"distant.bin", bytesOf('d', 1)},
                  {"loose.bin", bytesOf('l', 400)}},
      photo(bytesOf('p', 9000)) {
  for (Memo* memo : {&changed, &sharing, &distant}) {
    memo->tags.emplace_back("旅行/海边");
    memo->body += "又去了 #旅行/海边 一次。\n";
  }
}

std::vector<Diary::Entry> Diary::entries() const {
  return {
      {first, plain}, {first, changed}, {first, sharing}, {first, single}, {second, distant},
  };
}

StoreContext Diary::contextFor(const fs::path& folder, FileSystem& fileSystem) const {
  return {{folder / "root"}, FileManager(fileSystem), clock};
}

fs::path Diary::photoFile(const StoreContext& context) {
  return context.paths.rootURL.parent_path() / "Photo.JPG";
}

void Diary::writeTo(const fs::path& folder) const {
  const StoreContext context = contextFor(folder, posixFileSystem());
  for (const Entry& entry : entries())
    writeFile(context.paths.memoFile(entry.day, entry.memo.seqNumber), textOf(entry.memo));
  for (const auto& [name, bytes] : attachments)
    writeFile(context.paths.dayFolder(name == "distant.bin" ? second : first) / name, bytes);
  writeFile(context.paths.dayFolder(first) / ".nomely-0f8fad5bd9cb469f.tmp", "half a mem");
  writeFile(context.paths.versionsByIdFolder() / ".nomely-70867728950e.tmp", "");
  writeFile(photoFile(context), photo);
}

std::map<std::string, std::string> Diary::snapshots() const {
  const StoreContext context = contextFor("", posixFileSystem());
  const fs::path folder = VersionStore(context).identityDirectory(changed.memoId.value());
  std::map<std::string, std::string> texts;
  for (std::size_t i = 0; i < VersionStore::defaultMaxVersions + 2; ++i) {
    Memo old = changed;
    old.body = fmt::format("第 {} 稿\n", i);
    const fs::path file = folder / fmt::format("{}.5_0F8FAD5B.md", 1'600'000'000 + i);
    texts[file.lexically_relative(context.paths.rootURL).string()] = textOf(old);
  }
  return texts;
}

std::string Diary::textOf(const Memo& memo) {
  return MemoFrontmatterParser::serialize(memo, memo.body);
}

}  // namespace nomely::test
