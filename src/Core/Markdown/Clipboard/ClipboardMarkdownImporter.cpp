#include "Core/Markdown/Clipboard/ClipboardMarkdownImporter.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "Core/Markdown/Clipboard/HtmlScanner.h"
#include "Core/Markdown/Clipboard/HtmlText.h"
#include "Core/Markdown/Clipboard/RichTextReader.h"
#include "Platform/Text/LineEnds.h"
#include "Platform/Text/Replacing.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

using HtmlScanner::Element;
using HtmlScanner::TagKind;
using Names = HtmlScanner::Names;

// The part of a document that a clipboard means.
std::string_view htmlFragment(std::string_view html) {
  constexpr std::string_view start = "<!--StartFragment-->";
  constexpr std::string_view stop = "<!--EndFragment-->";
  const std::size_t begin = html.find(start);
  if (begin != std::string_view::npos) {
    const std::string_view rest = html.substr(begin + start.size());
    const std::size_t end = rest.find(stop);
    if (end != std::string_view::npos) return rest.substr(0, end);
  }
  const auto bodies = HtmlScanner::tags(html, {"body"}, TagKind::startTags);
  if (bodies.empty()) return html;
  const char* const content = bodies.front().data() + bodies.front().size();
  const std::string_view rest = html.substr(static_cast<std::size_t>(content - html.data()));
  return rest.substr(0, HtmlScanner::closingTag(rest, "body").value_or(rest.size()));
}

template <typename Replacement>
void replaceElements(std::string& text, Names names, Replacement replacement) {
  text = HtmlText::replacing(text, HtmlScanner::elements(text, names), replacement);
}

void replaceTags(std::string& text, const std::vector<std::string_view>& tags,
                 std::string_view with) {
  text = HtmlText::replacing(text, tags, [&](std::string_view) { return with; });
}

std::string_view trimLineBreaks(std::string_view text) {
  constexpr std::string_view breaks[] = {"\n", "\v", "\f", "\r", "\u0085", "\u2028", "\u2029"};
  for (bool trimmed = true; trimmed;) {
    trimmed = false;
    for (const std::string_view each : breaks) {
      if (text.starts_with(each)) {
        text.remove_prefix(each.size());
        trimmed = true;
      }
      if (text.ends_with(each)) {
        text.remove_suffix(each.size());
        trimmed = true;
      }
    }
  }
  return text;
}

std::string codeBlock(const Element& block) {
  std::string markdown = "\n```";
  markdown.append(HtmlScanner::codeLanguage(block.whole)).append("\n");
  const std::string content = HtmlText::decodeEntities(HtmlText::withoutTags(block.content));
  return HtmlText::hidingMarkup(markdown.append(trimLineBreaks(content)).append("\n```\n"));
}

using Row = std::vector<std::string>;

std::vector<Row> tableRows(std::string_view table) {
  std::vector<Row> rows;
  for (const Element& row : HtmlScanner::elements(table, {"tr"})) {
    Row cells;
    for (const Element& cell :
         HtmlScanner::elements(row.content, {"th", "td"}, HtmlScanner::Closing::anyOfTheNames)) {
      const std::string text = replacingAll(HtmlText::labelText(cell.content), "\n", " ");
      cells.push_back(replacingAll(text, "|", "\\|"));
    }
    if (!cells.empty()) rows.push_back(std::move(cells));
  }
  return rows;
}

std::string tableLine(const Row& cells, std::size_t width) {
  std::string line = "|";
  for (std::size_t i = 0; i < std::max(width, cells.size()); ++i) {
    line += ' ';
    if (i < cells.size()) line += cells[i];
    line += " |";
  }
  return line + "\n";
}

std::string markdownTable(const Element& table) {
  // Beyond this many cells, rows stay as short as they are: one long row above many short ones
  // would make a page of megabytes out of a few kilobytes. Readers fill up rows by themselves.
  constexpr std::size_t mostPaddedCells = 100'000;
  const std::vector<Row> rows = tableRows(table.whole);
  if (rows.empty()) return {};
  std::size_t width = 0;
  for (const Row& row : rows) width = std::max(width, row.size());
  const bool isPadded = rows.size() <= mostPaddedCells / width;
  std::string markdown = "\n";
  for (std::size_t i = 0; i < rows.size(); ++i) {
    markdown += tableLine(rows[i], isPadded || i == 0 ? width : 0);
    if (i == 0) markdown += tableLine(Row(width, "---"), width);
  }
  return HtmlText::hidingMarkup(std::move(markdown));
}

std::string heading(const Element& element) {
  return "\n" + std::string(element.name + 1, '#') + " " + HtmlText::labelText(element.content) +
         "\n";
}

std::string blockquote(const Element& element) {
  const std::string text = HtmlText::normalizeBlankLines(HtmlText::withoutTags(element.content));
  return "\n" + HtmlText::prefixingLines(text, "> ") + "\n";
}

std::string link(const HtmlScanner::Link& link) {
  const std::string label = HtmlText::labelText(link.label);
  const std::string address = HtmlText::decodeEntities(link.address, HtmlText::hiddenLess);
  return label.empty() ? address : "[" + label + "](" + address + ")";
}

void replaceMarked(std::string& text, Names names, std::string_view mark) {
  replaceElements(text, names, [&](const Element& element) {
    std::string marked(mark);
    return marked.append(HtmlText::labelText(element.content)).append(mark);
  });
}

}  // namespace

std::optional<std::string> ClipboardMarkdownImporter::markdown(std::string_view fromHTML) {
  const std::string html =
      withLineFeeds(isValidUtf8(fromHTML) ? fromHTML : toUtf8(toUtf16(fromHTML)));
  std::string text(htmlFragment(html));

  // The order decides: code and tables first, so that no later step touches what is in them, and
  // the marks of running text last, so that none takes them away.
  replaceElements(text, {"script", "style"}, [](const Element&) { return ""; });
  replaceElements(text, {"pre"}, codeBlock);
  replaceElements(text, {"table"}, markdownTable);
  replaceElements(text, {"h1", "h2", "h3", "h4", "h5", "h6"}, heading);
  replaceTags(text, HtmlScanner::tags(text, {"hr"}, TagKind::startTags), "\n---\n");
  replaceTags(text, HtmlScanner::lineBreaks(text), "\n");
  replaceElements(text, {"blockquote"}, blockquote);
  replaceElements(text, {"li"}, [](const Element& element) {
    return "\n- " + HtmlText::labelText(element.content);
  });
  text = HtmlText::replacing(text, HtmlScanner::links(text), link);
  replaceMarked(text, {"strong", "b"}, "**");
  replaceMarked(text, {"em", "i"}, "*");
  replaceMarked(text, {"code"}, "`");
  replaceTags(text, HtmlScanner::tags(text, {"p", "div", "section", "article"}, TagKind::allTags),
              "\n");
  text = HtmlText::decodeEntities(HtmlText::withoutTags(text));
  text = HtmlText::normalizeBlankLines(HtmlText::showingMarkup(std::move(text)));
  if (text.empty()) return std::nullopt;
  return text;
}

std::optional<std::string> ClipboardMarkdownImporter::markdown(const Pasteboard& pasteboard) {
  if (const auto html = pasteboard.html())
    if (auto text = markdown(*html)) return text;
  const auto rtf = pasteboard.richText();
  if (!rtf) return std::nullopt;
  const auto plain = RichTextReader::plainText(*rtf);
  if (!plain) return std::nullopt;
  const std::string text = withLineFeeds(trimSpaceAndBreaks(*plain));
  if (text.empty()) return std::nullopt;
  return text;
}

PasteDecision decidePaste(const Pasteboard& pasteboard) {
  if (pasteboard.hasImages()) return {PasteDecision::Action::takeImages, {}};
  if (auto text = ClipboardMarkdownImporter::markdown(pasteboard))
    return {PasteDecision::Action::insertText, *std::move(text)};
  return {};
}

}  // namespace nomely
