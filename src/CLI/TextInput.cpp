#include "CLI/TextInput.h"

#include <fmt/format.h>

#include "CLI/InputFile.h"
#include "CLI/Programs.h"
#include "CLI/UsageError.h"
#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Platform/Text/LineEnds.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

// The body that `text` is: without what reading would drop from it, and without the line feed that
// ends a text file but is no part of what was said.
std::string asBody(const std::string& text, std::string_view from) {
  if (!isValidUtf8(text))
    throw UsageError(fmt::format("{}不是有效的 UTF-8 文本，未作任何改动。请先转换编码", from));
  const std::string plain = withLineFeeds(text);
  std::string_view body = MemoFrontmatterParser::bodyAsRead(plain);
  if (body.ends_with('\n')) body.remove_suffix(1);
  return std::string(body);
}

// The command line of the user's editor, else of one that every system has.
std::string editorOf(const Environment& environment) {
  for (const char* variable : {"VISUAL", "EDITOR"})
    if (const auto chosen = environment.get(variable); chosen && !chosen->empty()) return *chosen;
  for (const char* usual : {"vi", "nano"})
    if (Programs::find(usual, environment)) return usual;
  throw UsageError("没有给出正文，也没有找到编辑器。请把正文写在命令后，或设置 $EDITOR");
}

}  // namespace

TextInput::~TextInput() {
  if (draft_) session_.say(fmt::format("你写的内容保存在：{}", draft_->file().string()));
}

void TextInput::accept() {
  if (draft_) draft_->discard();
  draft_.reset();
}

std::optional<std::string> TextInput::read(const std::optional<std::string>& argument,
                                           const std::string& original) {
  if (argument && *argument != "-") return asBody(*argument, "正文");
  if (!argument && Terminal::isInput() && session_.options.noInput) return "";
  if (argument || !Terminal::isInput()) return asBody(InputFile::readStandardInput(), "标准输入");
  return fromEditor(original);
}

std::optional<std::string> TextInput::fromEditor(const std::string& original) {
  const std::string editor = editorOf(session_.environment());
  const std::string shown = original.empty() ? "" : original + "\n";
  draft_.emplace(session_, shown);

  const int status = Programs::run({"/bin/sh", "-c", editor + " \"$1\"", "sh", draft_->file()});
  const std::string edited = draft_->text();
  const bool isUnchanged = edited == shown;
  if (isUnchanged) accept();
  if (status != 0)
    throw Error("editor.failed", fmt::format("编辑器以状态 {} 退出，笔记未改动", status));
  if (isUnchanged) return std::nullopt;
  return asBody(edited, "编辑器保存的文件");
}

}  // namespace nomely
