#include "Core/Lifecycle/Backup/HostileArchives.h"

#include <fmt/format.h>

#include "Core/Lifecycle/Backup/BackupManifest.h"
#include "Core/Safety/Diary.h"
#include "Platform/Archive/Deflater.h"
#include "Platform/Archive/Libdeflate.h"
#include "Platform/Archive/ZipError.h"
#include "Platform/Archive/ZipFormat.h"

namespace nomely::test {
namespace {

// What local and central headers have in common, from the flags on.
std::string common(const RawEntry& entry, const std::string& name, bool isTrue) {
  const auto size = static_cast<std::uint32_t>(entry.contents.size());
  std::string bytes;
  zip::append(bytes, entry.flags);
  zip::append(bytes, entry.method);
  zip::append<std::uint32_t>(bytes, 1U << 21 | 1U << 16);  // 1980-01-01
  zip::append(bytes, Libdeflate::loaded().checksum(0, entry.contents) +
                         (isTrue ? 0 : entry.excessChecksum));
  zip::append(bytes, size);
  zip::append(bytes, size + (isTrue ? 0 : entry.excessSize));
  zip::append(bytes, static_cast<std::uint16_t>(name.size()));
  zip::append<std::uint16_t>(bytes, 0);
  return bytes;
}

}  // namespace

std::string rawZip(const std::vector<RawEntry>& entries, RawEnd end) {
  std::string bytes;
  std::string directory;
  for (const RawEntry& entry : entries) {
    const std::string& localName = entry.localName.empty() ? entry.name : entry.localName;
    const auto offset = static_cast<std::uint32_t>(bytes.size());
    zip::append(bytes, zip::localHeader);
    zip::append<std::uint16_t>(bytes, 20);
    bytes += common(entry, localName, true) + localName + entry.contents;
    zip::append(directory, zip::directoryHeader);
    zip::append<std::uint16_t>(directory, 3 << 8 | 20);
    zip::append<std::uint16_t>(directory, 20);
    directory += common(entry, entry.name, false) + std::string(6, '\0');
    zip::append(directory, entry.mode << 16);
    zip::append(directory, offset + entry.excessOffset);
    directory += entry.name;
  }
  const auto offset = static_cast<std::uint32_t>(bytes.size());
  const auto count = static_cast<std::uint16_t>(entries.size() + end.excessCount);
  bytes += directory;
  zip::append(bytes, zip::endRecord);
  zip::append(bytes, end.disk);
  zip::append(bytes, end.disk);
  zip::append(bytes, count);
  zip::append(bytes, count);
  zip::append(bytes, static_cast<std::uint32_t>(directory.size()));
  zip::append(bytes, offset + end.excessOffset);
  zip::append<std::uint16_t>(bytes, 0);
  return bytes;
}

std::vector<RawEntry> goodEntries() {
  return {{"2026-03-01/001.md", Diary::textOf(diary().plain.memo)},
          {BackupManifest::fileName, BackupManifest().json()}};
}

std::vector<HostileArchive> hostileArchives() {
  using Kind = ZipError::Kind;
  const std::vector<RawEntry> base = goodEntries();
  const std::string good = rawZip(base);
  std::vector<HostileArchive> archives;
  const auto add = [&](const std::string& name, std::vector<RawEntry> entries,
                       const std::string& reason) {
    entries.insert(entries.begin(), base.begin(), base.end());
    archives.push_back(
        {name, rawZip(entries), BackupError(BackupError::Kind::restoreFailed, reason).what()});
  };
  const auto addBytes = [&](const std::string& name, const std::string& bytes, Kind kind) {
    archives.push_back(
        {name, bytes,
         BackupError(BackupError::Kind::verifyFailed, ZipError(kind).status()).what()});
  };
  const auto addBad = [&](const std::string& name, RawEntry entry, Kind kind) {
    if (entry.contents.empty()) entry.contents = "text";
    addBytes(name, rawZip({base[0], base[1], std::move(entry)}), kind);
  };

  const std::string unsafe = "备份含不安全路径或嵌套备份";
  using namespace std::string_literals;
  for (const std::string& name :
       {"../x"s, "a/../b"s, "a/.."s, "/etc/x"s, "//x"s, "a\\b"s, "..\\x"s, "C:/x"s, "c:x"s, "a\0b"s,
        ""s, "/"s, "a//b"s, "./a"s, "a/."s, ".backups/x.zip"s, "a/.backups/"s})
    add(fmt::format("path {}", name),
        {{name, "", name.ends_with('/') ? unsigned{S_IFDIR} : unsigned{S_IFREG}}}, unsafe);
  add("folder with contents", {{"a/", "x", S_IFDIR | 0755}}, unsafe);
  add("link", {{"a", "/etc/passwd", S_IFLNK | 0777}}, "备份包含符号链接，已停止恢复");
  for (const unsigned type : {S_IFIFO, S_IFSOCK, S_IFCHR, S_IFBLK, S_IFDIR})
    add(fmt::format("special file {:o}", type), {{"a", "", type}}, "备份包含特殊文件，已停止恢复");
  const std::string twice = "备份含重复或互相冲突的路径：";
  add("one name twice", {{"a", "1"}, {"a", "2"}}, twice + "a");
  add("two manifests", {base.back()}, twice + BackupManifest::fileName);
  add("file and folder", {{"a"}, {"a/", "", S_IFDIR}}, twice + "a");
  add("file with files in it", {{"b/a/c/d"}, {"b/a.x"}, {"b/a"}}, twice + "b/a");
  add("unreadable note", {{"2026-03-02/003.md", "no header"}}, "备份含无法读取的笔记：003.md");

  // The header of "b" is told to stand within the contents of "a".
  const RawEntry outer{"a", rawZip({{"b", "text"}})};
  const auto back = static_cast<std::uint32_t>(-static_cast<int>(outer.contents.size()));
  addBytes(
      "one inside another",
      rawZip({base[0], base[1], outer, {.name = "b", .contents = "text", .excessOffset = back}}),
      Kind::inconsistent);
  addBad("two names", {.name = "a", .localName = "b"}, Kind::inconsistent);
  addBad("no header there", {.name = "a", .excessOffset = 1}, Kind::inconsistent);
  addBad("two sizes", {.name = "a", .excessSize = 1}, Kind::inconsistent);
  addBad("two checksums", {.name = "a", .excessChecksum = 1}, Kind::inconsistent);
  addBad("encrypted", {.name = "a", .flags = zip::flagEncrypted}, Kind::unsupported);
  addBad("unknown method", {.name = "a", .method = 99}, Kind::unsupported);
  addBad("damaged deflation", {.name = "a", .method = zip::deflated}, Kind::damaged);
  Deflater deflater;
  const std::string bomb(deflater.whole(std::string(10'000'000, 'a')));
  addBad("more than told", {.name = "a", .contents = bomb, .method = zip::deflated}, Kind::damaged);
  std::string flipped = good;
  flipped[100] ^= 1;
  addBytes("flipped bit", flipped, Kind::damaged);
  addBytes("truncated", good.substr(0, good.size() / 2), Kind::notAnArchive);
  addBytes("no archive", "NomelyBackupManifest.json", Kind::notAnArchive);
  addBytes("something before it", "#!/bin/sh\n" + good, Kind::inconsistent);
  addBytes("too many entries", rawZip(base, {.excessCount = 60'000}), Kind::inconsistent);
  addBytes("an entry left out", rawZip(base, {.excessCount = 0xffff}), Kind::inconsistent);
  addBytes("directory beyond the end", rawZip(base, {.excessOffset = 1 << 30}), Kind::truncated);
  addBytes("split", rawZip(base, {.disk = 1}), Kind::unsupported);

  const auto addManifest = [&](const std::string& name, const BackupManifest& manifest) {
    add(name, {}, "备份身份或格式版本不支持");
    archives.back().bytes = rawZip({base.front(), {BackupManifest::fileName, manifest.json()}});
  };
  addManifest("another program's", {.appName = "Other"});
  addManifest("another version", {.schemaVersion = 2});
  addManifest("another layout", {.rootStyle = "folder"});
  archives.push_back(
      {"no manifest", rawZip({base.front()}), BackupError::manifestNotFound().what()});
  archives.push_back({"empty archive", rawZip({}), BackupError::manifestNotFound().what()});
  return archives;
}

}  // namespace nomely::test
