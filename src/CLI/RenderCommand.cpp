#include <fmt/format.h>

#include "CLI/Arguments.h"
#include "CLI/Command.h"
#include "CLI/InputFile.h"
#include "CLI/MarkdownDrawing.h"
#include "CLI/PagedOutput.h"
#include "CLI/UsageError.h"
#include "Core/Markdown/Inline/MemoBodyKit.h"
#include "Core/Markdown/MarkdownTextView.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Export/MarkdownHTML.h"
#include "Platform/Text/LineEnds.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

// What a block holds, each under its field's name.
struct Payload {
  Json& json;

  void operator()(const markdown::Paragraph& block) const { json["text"] = block.text; }
  void operator()(const markdown::Heading& block) const {
    json["level"] = block.level;
    json["text"] = block.text;
  }
  void operator()(const markdown::BulletItem& block) const { json["text"] = block.text; }
  void operator()(const markdown::NumberedItem& block) const {
    json["number"] = block.number;
    json["text"] = block.text;
  }
  void operator()(const markdown::CheckItem& block) const {
    json["checked"] = block.checked;
    json["text"] = block.text;
  }
  void operator()(const markdown::Blockquote& block) const { json["text"] = block.text; }
  // Its own kind would hide that of the block.
  void operator()(const MarkdownCallout& block) const {
    json["callout"] = {{"kind", MarkdownCallout::nameOf(block.kind)},
                       {"title", block.title},
                       {"body", block.body}};
  }
  void operator()(const markdown::CodeBlock& block) const {
    json["code"] = block.code;
    if (block.language) json["language"] = *block.language;
  }
  void operator()(const markdown::Mermaid& block) const { json["code"] = block.code; }
  void operator()(const MarkdownTable& block) const {
    json["headers"] = block.headers;
    json["rows"] = block.rows;
  }
  void operator()(const markdown::HorizontalRule&) const {}
};

Json jsonOf(const MarkdownBlocks& blocks) {
  Json all = Json::array();
  for (const MarkdownBlock& block : blocks) {
    Json& json = all.emplace_back(Json{{"kind", kindName(block)}});
    std::visit(Payload{json}, block);
  }
  return all;
}

// A block in lines: its kind, then each field with its value; further lines of a value are
// indented.
std::string listed(const Json& block, const Style& style) {
  std::string text = style.bold(block["kind"].get<std::string>()) + "\n";
  for (const auto& [name, value] : block.items()) {
    if (name == "kind") continue;
    const std::string shown = value.is_string()
                                  ? value.get<std::string>()
                                  : value.dump(-1, ' ', false, Json::error_handler_t::replace);
    std::string indented;
    for (const char c : Terminal::printable(shown)) {
      indented += c;
      if (c == '\n') indented += "    ";
    }
    text += fmt::format("  {} {}\n", style.dim(name + ":"), indented);
  }
  return text;
}

class RenderCommand final : public Command {
 public:
  void declare(Syntax& syntax) override {
    syntax.add({.name = "FILE",
                .help = "Markdown 文件，省略或为 - 时读标准输入",
                .target = &file_,
                .kind = WordKind::file});
    syntax.add({.name = "--html", .help = "网页片段，与导出的网页相同", .target = &html_});
    syntax.add({.name = "--blocks", .help = "列出各块及其内容", .target = &blocks_});
    syntax.add({.name = "--preview", .help = "卡片上折叠后的文字", .target = &preview_});
    syntax.examples = {"nomely render 会议.md"};
  }

  void run(Session& session) override {
    Arguments::atMostOne({{"--html", html_}, {"--blocks", blocks_}, {"--preview", preview_}});
    const std::string text = read(session);
    if (preview_) return printPreview(text, session);
    if (html_) return printHtml(text, session);
    const auto blocks = MarkdownTextView::blocks(text);
    if (session.isJson()) return session.printJson(jsonOf(*blocks));
    const PagedOutput pager(session);
    if (!blocks_)
      return session.print(MarkdownDrawing::drawBody(text, session.style(), session.columns()));
    for (const Json& block : jsonOf(*blocks)) session.print(listed(block, session.style()));
  }

 private:
  [[nodiscard]] std::string read(const Session& session) const {
    const std::string text = InputFile::read(session.files(), file_);
    if (!isValidUtf8(text)) throw UsageError("输入不是有效的 UTF-8 文本。请先转换编码");
    return withLineFeeds(text);
  }

  static void printHtml(const std::string& text, const Session& session) {
    const std::string html =
        markdownToHTML(MemoTextUtilities::stripOriginalComment(text), RenderMode::plain);
    if (session.isJson()) return session.printJson({{"html", html}});
    session.print(html + "\n");
  }

  static void printPreview(const std::string& text, const Session& session) {
    const std::string preview =
        MemoBodyKit::collapsedPreview(MemoTextUtilities::stripOriginalComment(text));
    if (session.isJson()) return session.printJson({{"preview", preview}});
    session.print(Terminal::printable(preview) + "\n");
  }

  std::optional<std::string> file_;
  bool html_ = false;
  bool blocks_ = false;
  bool preview_ = false;
};

}  // namespace

std::unique_ptr<Command> makeRenderCommand() {
  return std::make_unique<RenderCommand>();
}

}  // namespace nomely
