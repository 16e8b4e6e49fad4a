#pragma once

#include "Platform/Archive/ZipWriter.h"
#include "Support/StoreFixture.h"

namespace nomely::test {

// A page with that note: "2026-03-05 21:30".
[[nodiscard]] inline std::string flomoNote(const std::string& time, const std::string& content,
                                           const std::string& reference = {}) {
  return "<div class=\"memo\"><div class=\"time\">" + time + "</div><div class=\"content\">" +
         content + "</div>" +
         (reference.empty() ? "" : "<div class=\"files\"><img src=\"" + reference + "\"></div>") +
         "</div>";
}

inline void writeZip(const fs::path& file,
                     const std::vector<std::pair<std::string, std::string>>& entries) {
  fs::remove(file);
  const auto open =
      posixFileSystem().open(file, FileSystem::OpenMode::createNew, LinkPolicy::follow);
  ZipWriter zip(*open);
  for (const auto& [name, content] : entries)
    zip.add({name, 0644, {}}, content, ZipWriter::Compression::deflate);
  zip.finish();
}

}  // namespace nomely::test
