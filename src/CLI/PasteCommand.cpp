#include "CLI/Command.h"
#include "CLI/InputFile.h"
#include "CLI/UsageError.h"
#include "Core/Markdown/Clipboard/ClipboardMarkdownImporter.h"
#include "Core/Markdown/Clipboard/RichTextReader.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

// The bytes of one format, as a clipboard offers them.
class Clipping final : public Pasteboard {
 public:
  explicit Clipping(std::string bytes)
      : bytes_(std::move(bytes)), isRichText_(RichTextReader::isRichText(bytes_)) {
    if (!isRichText_ && !isValidUtf8(bytes_))
      throw UsageError("输入不是有效的 UTF-8 文本。请先转换编码");
  }

  [[nodiscard]] bool hasImages() const override { return false; }
  [[nodiscard]] std::optional<std::string> html() const override {
    return isRichText_ ? std::nullopt : std::optional(bytes_);
  }
  [[nodiscard]] std::optional<std::string> richText() const override {
    return isRichText_ ? std::optional(bytes_) : std::nullopt;
  }

 private:
  std::string bytes_;
  bool isRichText_;
};

class PasteCommand final : public Command {
 public:
  void declare(Syntax& syntax) override {
    syntax.add({.name = "FILE",
                .help = "剪贴板里的 HTML 或 RTF，省略或 - 为标准输入",
                .target = &file_,
                .kind = WordKind::file});
    syntax.examples = {"wl-paste -t text/html | nomely paste | nomely add -"};
  }

  void run(Session& session) override {
    const auto markdown =
        ClipboardMarkdownImporter::markdown(Clipping(InputFile::read(session.files(), file_)));
    if (!markdown) throw Error("paste.nothing", "其中没有可以粘贴的文字");
    if (session.isJson()) return session.printJson({{"markdown", *markdown}});
    session.print(session.isOutputTerminal() ? Terminal::printable(*markdown) : *markdown);
    session.print("\n");
  }

 private:
  std::optional<std::string> file_;
};

}  // namespace

std::unique_ptr<Command> makePasteCommand() {
  return std::make_unique<PasteCommand>();
}

}  // namespace nomely
