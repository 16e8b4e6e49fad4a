#include "Core/Storage/EngineRules.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace nomely {
namespace {

// Wherever in the root: names that nothing else has.
constexpr auto anywhere = {".nomely-*", ".DS_Store"};

// Of one machine alone. Markers in ".meta" tell of the root and go with it.
constexpr auto inRoot = {"/.backups",   "/.updates",           "/.drafts",
                         "/.migrating", "/.meta/feishu-inbox", "/.meta/feishu-log.jsonl"};

// Each engine leaves the other's alone.
constexpr auto ofGitItself = {"/.git"};
constexpr auto ofSyncthingItself = {"/.stfolder", "/.stversions", ".syncthing.*.tmp",
                                    "~syncthing~*.tmp"};

void add(std::vector<std::string>& lines, std::initializer_list<const char*> patterns,
         const std::string& folder = "") {
  for (const std::string pattern : patterns)
    lines.push_back(pattern.starts_with('/') ? folder + pattern : pattern);
}

// As a pattern that matches these characters alone.
std::string literally(std::string_view path) {
  std::string pattern;
  for (const char byte : path) {
    if (std::string_view("\\*?[]{}").find(byte) != std::string_view::npos) pattern += '\\';
    pattern += byte;
  }
  return pattern;
}

std::vector<std::string_view> linesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) line.remove_suffix(1);
    lines.push_back(line);
  }
  return lines;
}

}  // namespace

EngineRules::EngineRules(std::string name, std::string remark, Precedence precedence,
                         std::vector<std::string> lines)
    : name_(std::move(name)),
      remark_(std::move(remark)),
      precedence_(precedence),
      lines_(std::move(lines)) {}

EngineRules EngineRules::syncthingIgnore(const std::filesystem::path& root) {
  const std::string folder = root.empty() ? "" : "/" + literally(root.generic_string());
  std::vector<std::string> lines;
  add(lines, anywhere);
  add(lines, inRoot, folder);
  add(lines, ofGitItself, folder);
  return {".stignore", "// Nomely：每台电脑自己的文件，不同步", Precedence::first,
          std::move(lines)};
}

EngineRules EngineRules::gitIgnore() {
  std::vector<std::string> lines;
  add(lines, anywhere);
  add(lines, inRoot);
  add(lines, ofSyncthingItself);
  return {".gitignore", "# Nomely：每台电脑自己的文件，不提交", Precedence::last, std::move(lines)};
}

// Line ends stay as they are, and two sides of a note are merged as text whatever else is
// configured: what is left is markers with both sides, never one side alone.
EngineRules EngineRules::gitAttributes() {
  return {".gitattributes",
          "# Nomely：按原样存取；两边都改过的笔记留下两边的内容",
          Precedence::last,
          {"* -text", "*.md -text merge=text"}};
}

// A memo that goes into the trash is a renamed file to git, which would put what the other side
// wrote meanwhile into the trash, too, and new notes of its day, and say nothing. git before 2.50
// looks for renames whatever it is told, unless it merges in its former way.
EngineRules EngineRules::gitSettings() {
  return {".git/config",
          "# Nomely：一边删除、一边改过的笔记留着，不跟着进回收站",
          Precedence::last,
          {"[merge] renames = false", "[merge] directoryRenames = false", "[pull] rebase = false",
           "[pull] twohead = recursive"}};
}

std::vector<std::string> EngineRules::missingFrom(std::string_view text) const {
  const std::vector<std::string_view> present = linesOf(text);
  std::vector<std::string> missing;
  std::ranges::copy_if(lines_, std::back_inserter(missing), [&](const std::string& line) {
    return std::ranges::find(present, line) == present.end();
  });
  return missing;
}

std::string EngineRules::completed(std::string_view text) const {
  const std::vector<std::string> missing = missingFrom(text);
  if (missing.empty()) return std::string(text);
  std::string block = remark_ + "\n";
  for (const std::string& line : missing) block += line + "\n";
  if (text.empty()) return block;
  if (precedence_ == Precedence::first) return block + "\n" + std::string(text);
  return fmt::format("{}{}\n{}", text, text.ends_with('\n') ? "" : "\n", block);
}

}  // namespace nomely
