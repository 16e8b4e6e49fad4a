#include "Export/HTMLExporter.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Extensions/PathNames.h"
#include "Core/Extensions/TagNames.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Export/InlineHTML.h"
#include "Platform/Text/Base64.h"

namespace nomely {
namespace {

using HTMLExporter::Sink;

constexpr std::string_view pageStart =
    "<!DOCTYPE html>\n"
    "<html lang=\"zh-CN\">\n"
    "<head>\n"
    "<meta charset=\"utf-8\">\n"
    "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
    "<title>Nomely 导出</title>\n"
    "<style type=\"text/css\">\n"
    "* { margin: 0; padding: 0; }\n"
    "body { background: #fafafa; }\n"
    "header, .memos { width: 600px; margin: 0 auto; }\n"
    "header { padding: 40px 0 10px; }\n"
    "header h1 { font-size: 18px; color: #454545; font-weight: 600; }\n"
    "header .date { font-size: 12px; color: #9d9d9d; margin-top: 6px; }\n"
    ".memo {\n"
    "    margin: 16px 0;\n"
    "    background: #fff;\n"
    "    padding: 20px 24px;\n"
    "    border-radius: 6px;\n"
    "    word-wrap: break-word;\n"
    "}\n"
    ".memo:hover { box-shadow: 0 2px 10px #dddddd; }\n"
    ".memo .time { color: #8d8d8d; font-size: 12px; margin-bottom: 8px; }\n"
    ".memo .content { color: #323232; font-size: 14px; }\n"
    ".memo .content p { line-height: 1.8; min-height: 20px; margin: 0 0 8px; }\n"
    ".memo .content h1, .memo .content h2, .memo .content h3 { margin: 12px 0 6px; line-height: "
    "1.5; }\n"
    ".memo .content h1 { font-size: 20px; }\n"
    ".memo .content h2 { font-size: 17px; }\n"
    ".memo .content h3 { font-size: 15px; }\n"
    ".memo .content ul, .memo .content ol { padding-inline-start: 22px; margin: 0; }\n"
    ".memo .content li { line-height: 1.8; }\n"
    ".memo .content blockquote {\n"
    "    border-left: 3px solid #e0e0e0;\n"
    "    padding: 4px 14px;\n"
    "    color: #8d8d8d;\n"
    "    margin: 8px 0;\n"
    "}\n"
    ".memo .content pre {\n"
    "    background: #f6f6f6;\n"
    "    padding: 12px 16px;\n"
    "    border-radius: 4px;\n"
    "    overflow-x: auto;\n"
    "    font-size: 13px;\n"
    "    margin: 8px 0;\n"
    "}\n"
    ".memo .content code {\n"
    "    background: #f0f0f0;\n"
    "    padding: 0.2em 0.4em;\n"
    "    border-radius: 3px;\n"
    "    font-size: 0.85em;\n"
    "}\n"
    ".memo .content pre code { background: transparent; padding: 0; }\n"
    ".memo .content a { color: #30cf79; text-decoration: none; }\n"
    ".memo .content a:hover { text-decoration: underline; }\n"
    ".memo .files { margin-top: 4px; }\n"
    ".memo .files img {\n"
    "    max-width: 100%;\n"
    "    border: 1px solid #e6e6e6;\n"
    "    border-radius: 4px;\n"
    "    margin: 6px 0;\n"
    "}\n"
    "</style>\n"
    "</head>\n"
    "<body>\n"
    "<header>\n"
    "<h1>Nomely 导出</h1>\n"
    "<div class=\"date\">共 ";
constexpr std::string_view pageEnd = "\n</div>\n</body>\n</html>";

// A reader of the page has no use for the comment that keeps an older text.
std::string contentOf(const Memo& memo, const DiagramElement& diagrams = {}) {
  const std::string& body = memo.body;
  return MemoTextUtilities::hasOriginalComment(body)
             ? markdownToHTML(MemoTextUtilities::stripOriginalComment(body), RenderMode::plain,
                              diagrams)
             : markdownToHTML(body, RenderMode::plain, diagrams);
}

constexpr struct {
  std::string_view extension;
  std::string_view mimeType;
} pictureTypes[] = {{"jpg", "image/jpeg"}, {"jpeg", "image/jpeg"}, {"png", "image/png"},
                    {"gif", "image/gif"},  {"heic", "image/heic"}, {"webp", "image/webp"}};

// Empty for what is no picture.
std::string_view mimeTypeOfPicture(std::string_view name) {
  const std::string extension = lowerCaseExtension(name);
  const auto* const found =
      std::ranges::find(pictureTypes, extension, [](const auto& type) { return type.extension; });
  return found == std::end(pictureTypes) ? std::string_view() : found->mimeType;
}

void writeBase64(std::string_view bytes, const Sink& sink) {
  // Whole groups of three, so that no padding comes before the end.
  constexpr std::size_t step = std::size_t{3} << 15U;
  for (; bytes.size() > step; bytes.remove_prefix(step)) sink(encodeBase64(bytes.substr(0, step)));
  sink(encodeBase64(bytes));
}

// Writes the memo's pictures between `before` and `after`, and nothing without any.
struct Pictures {
  std::string_view before;
  std::string_view after;

  void write(const MemoFrontmatter& memo, Day date, const AttachmentManager& attachments,
             const Sink& sink) const {
    bool isAnyWritten = false;
    for (const std::string& name : memo.attachments) {
      const std::string_view type = mimeTypeOfPicture(name);
      if (type.empty()) continue;
      const auto bytes = attachments.read(name, date);
      if (!bytes) continue;
      if (!isAnyWritten) sink(before);
      isAnyWritten = true;
      sink(fmt::format("<img src=\"data:{};base64,", type));
      writeBase64(*bytes, sink);
      sink("\" alt=\"" + InlineHTML::escapeAttribute(name) + "\">");
    }
    if (isAnyWritten) sink(after);
  }
};

// Times are whatever text a file holds.
std::string dateAndTime(const MemoFrontmatter& memo, Day date) {
  return date.string() + " " + InlineHTML::escapeText(memo.time);
}

void writeBlock(const Memo& memo, Day date, const AttachmentManager& attachments, const Sink& sink,
                const DiagramElement& diagrams = {}) {
  sink("<div class=\"memo\">\n  <div class=\"time\">");
  sink(dateAndTime(memo, date));
  sink("</div>\n  <div class=\"content\">");
  sink(contentOf(memo, diagrams));
  sink("</div>\n  ");
  Pictures{"<div class=\"files\">\n", "  </div>"}.write(memo, date, attachments, sink);
  sink("\n</div>");
}

std::string tagsBlock(const std::vector<std::string>& tags) {
  std::string spans;
  for (const std::string& tag : tags)
    if (!TagNames::isHidden(tag))
      spans += "<span class=\"tag\">#" + InlineHTML::escapeText(tag) + "</span>";
  return spans.empty() ? spans : "\n    <div class=\"tags\">" + spans + "</div>";
}

// What `write` gives its sink, in one text.
template <typename Write>
std::string collected(Write write) {
  std::string text;
  write([&](std::string_view piece) { text += piece; });
  return text;
}

}  // namespace

void HTMLExporter::writePage(const Selection& selection, const AttachmentManager& attachmentManager,
                             const Clock& clock, const Sink& sink, const DiagramElement& diagrams) {
  sink(pageStart);
  sink(fmt::format("{} 条记录 · 生成于 {}</div>\n</header>\n<div class=\"memos\">\n",
                   selection.count, DateFormatters::chineseDateTime.format(clock.now())));
  bool isFirst = true;
  selection.forEach([&](const MemoEntry& entry) {
    if (!isFirst) sink("\n");
    isFirst = false;
    writeBlock(*entry.memo, entry.date, attachmentManager, sink, diagrams);
  });
  sink(pageEnd);
}

std::string HTMLExporter::pictureElement(std::string_view png, double width,
                                         std::string_view name) {
  return fmt::format(
      "<img src=\"data:image/png;base64,{}\" style=\"width:{:.0f}px;max-width:100%\" alt=\"{}\">",
      encodeBase64(png), width, InlineHTML::escapeAttribute(name));
}

std::string HTMLExporter::exportMemosFlomo(const std::vector<MemoEntry>& entries,
                                           const AttachmentManager& attachmentManager,
                                           const Clock& clock) {
  const Selection selection{entries.size(), [&](const auto& visit) {
                              for (const MemoEntry& entry : entries) visit(entry);
                            }};
  return collected([&](const Sink& sink) { writePage(selection, attachmentManager, clock, sink); });
}

std::string HTMLExporter::exportMemoFlomo(const Memo& memo, Day date,
                                          const AttachmentManager& attachmentManager) {
  return collected([&](const Sink& sink) { writeBlock(memo, date, attachmentManager, sink); });
}

std::string HTMLExporter::exportMemo(const Memo& memo, Day date,
                                     const AttachmentManager& attachmentManager) {
  return collected([&](const Sink& sink) {
    sink("<div class=\"memo\">\n    <div class=\"time\">" + dateAndTime(memo, date) +
         "</div>\n    <div class=\"body\">" + contentOf(memo) + "</div>");
    Pictures{"\n    <div class=\"images\">", "</div>"}.write(memo, date, attachmentManager, sink);
    sink(tagsBlock(memo.tags) + "\n</div>");
  });
}

}  // namespace nomely
