#include "CLI/TextInput.h"

#include <cerrno>

#include <fmt/format.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "CLI/InputFile.h"
#include "CLI/UsageError.h"
#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Uuid.h"
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

// Runs the user's editor on `file` and returns its exit status, 128 plus the signal for a death.
int runEditor(const std::string& editor, const std::filesystem::path& file) {
  const std::string command = editor + " \"$1\"";
  // Interrupts typed while the editor runs are the editor's.
  struct sigaction ignore {};
  ignore.sa_handler = SIG_IGN;
  struct sigaction previous {};
  ::sigaction(SIGINT, &ignore, &previous);
  const pid_t child = ::fork();
  if (child == 0) {
    ::sigaction(SIGINT, &previous, nullptr);
    ::execl("/bin/sh", "sh", "-c", command.c_str(), "sh", file.c_str(), nullptr);
    ::_exit(127);
  }
  int status = -1;
  while (child > 0 && ::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  ::sigaction(SIGINT, &previous, nullptr);
  if (child < 0) return 127;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

TextInput::~TextInput() {
  if (!draft_.empty()) session_.say(fmt::format("你写的内容保存在：{}", draft_.string()));
}

void TextInput::accept() {
  if (draft_.empty()) return;
  std::error_code ignored;
  std::filesystem::remove(draft_, ignored);
  draft_.clear();
}

std::optional<std::string> TextInput::read(const std::optional<std::string>& argument,
                                           const std::string& original) {
  if (argument && *argument != "-") return asBody(*argument, "正文");
  if (!argument && Terminal::isInput() && session_.options.noInput) return "";
  if (argument || !Terminal::isInput()) return asBody(InputFile::readStandardInput(), "标准输入");
  return fromEditor(original);
}

std::optional<std::string> TextInput::fromEditor(const std::string& original) {
  std::string editor = session_.environment().get("VISUAL").value_or("");
  if (editor.empty()) editor = session_.environment().get("EDITOR").value_or("");
  if (editor.empty())
    throw UsageError("没有给出正文，也没有设置编辑器。请把正文写在命令后，或设置 $EDITOR");
  const FileManager files = session_.files();
  const std::filesystem::path folder = session_.environment().stateFolder() / "editing";
  constexpr unsigned ownerOnly = 0700;
  files.createDirectories(folder, ownerOnly);
  draft_ = folder / (Uuid::random().compact() + ".md");
  const std::string shown = original.empty() ? "" : original + "\n";
  files.writeAtomically(draft_, shown);

  const int status = runEditor(editor, draft_);
  const std::string edited = files.read(draft_).value_or("");
  const bool isUnchanged = edited == shown;
  if (isUnchanged) accept();
  if (status != 0)
    throw Error("editor.failed", fmt::format("编辑器以状态 {} 退出，笔记未改动", status));
  if (isUnchanged) return std::nullopt;
  return asBody(edited, "编辑器保存的文件");
}

}  // namespace nomely
