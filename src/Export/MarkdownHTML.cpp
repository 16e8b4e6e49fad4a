#include "Export/MarkdownHTML.h"

#include <optional>
#include <vector>

#include <fmt/format.h>

#include "Core/Markdown/Blocks/LineRules.h"
#include "Core/Markdown/Tables/MarkdownTableParser.h"
#include "Core/Markdown/Text/TextLines.h"
#include "Export/InlineHTML.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

std::optional<std::string_view> after(std::string_view line, std::string_view prefix) {
  if (!line.starts_with(prefix)) return std::nullopt;
  return line.substr(prefix.size());
}

bool isRule(std::string_view line) {
  return line.size() >= 3 && (line[0] == '-' || line[0] == '*' || line[0] == '_') &&
         line.find_first_not_of(line[0]) == std::string_view::npos;
}

struct ChecklistItem {
  std::string_view state;
  std::string_view text;
};
std::optional<ChecklistItem> checklistItem(std::string_view line) {
  for (const std::string_view mark : {"- [ ]", "- [x]", "- [X]"}) {
    auto text = after(line, mark);
    if (!text) continue;
    if (text->starts_with(' ')) text->remove_prefix(1);
    return ChecklistItem{mark == "- [ ]" ? "disabled" : "checked disabled", *text};
  }
  return std::nullopt;
}

class Converter {
 public:
  Converter(std::string_view text, RenderMode mode, const DiagramElement& diagrams)
      : lines_(linesOf(text)), mode_(mode), diagrams_(diagrams) {
    html_.reserve(text.size() + text.size() / 4);
  }

  std::string convert() {
    for (std::size_t index = 0; index < lines_.size();) index = readFrom(index);
    if (code_) closeCode();
    closeList();
    return std::move(html_);
  }

 private:
  // Converts the block that begins at line `index` and returns the index of the line after it.
  std::size_t readFrom(std::size_t index) {
    const std::string_view line = trimHorizontal(lines_[index]);
    if (line.starts_with("```")) {
      toggleCode(line);
    } else if (code_) {
      code_->push_back(lines_[index]);
    } else if (const auto table = MarkdownTableParser::parse(lines_, index)) {
      closeList();
      emitTable(table->table);
      return table->nextIndex;
    } else {
      readLine(line);
    }
    return index + 1;
  }

  void readLine(std::string_view line) {
    if (line.empty()) return closeList();
    if (readHeading(line)) return;
    if (isRule(line)) return emitBlock("<hr>");
    if (const auto item = checklistItem(line))
      return emitItem("<ul class=\"checklist\">",
                      fmt::format("<input type=\"checkbox\" {}>{}", item->state,
                                  InlineHTML::convert(item->text)));
    for (const std::string_view bullet : {"- ", "* "})
      if (const auto text = after(line, bullet))
        return emitItem("<ul>", InlineHTML::convert(*text));
    if (const auto item = LineRules::numberedLine(line))
      return emitItem("<ol>", InlineHTML::convert(item->text));
    if (const auto text = after(line, "> "))
      return emitBlock("<blockquote>" + InlineHTML::convert(*text) + "</blockquote>");
    emitBlock(
        (mode_ == RenderMode::plain ? "<p>" : "<p style=\"color:#f4f4f4;margin:0 0 12px 0;\">") +
        InlineHTML::convert(line) + "</p>");
  }

  bool readHeading(std::string_view line) {
    constexpr std::string_view signs = "### ";
    for (std::size_t level = 3; level > 0; --level) {
      const auto text = after(line, signs.substr(3 - level));
      if (!text) continue;
      emitBlock(headingStart(level) + InlineHTML::convert(*text) + fmt::format("</h{}>", level));
      return true;
    }
    return false;
  }

  [[nodiscard]] std::string headingStart(std::size_t level) const {
    if (mode_ == RenderMode::plain) return fmt::format("<h{}>", level);
    constexpr int sizes[] = {34, 28, 23};
    return fmt::format(
        "<h{} style=\"color:#ffffff;font-size:{}px;font-weight:850;line-height:1.35;"
        "margin:0 0 22px 0;\">",
        level, sizes[level - 1]);
  }

  void toggleCode(std::string_view fence) {
    if (code_) return closeCode();
    closeList();
    code_.emplace();
    isDiagram_ = diagrams_ && LineRules::isDiagram(fence.substr(3));
  }

  // The open block as a picture; false where there is none.
  bool closeDiagram() {
    const std::string element =
        isDiagram_ ? diagrams_(fmt::format("{}", fmt::join(*code_, "\n"))) : "";
    if (element.empty()) return false;
    code_.reset();
    emit(element);
    return true;
  }

  void closeCode() {
    if (closeDiagram()) return;
    std::string block = "<pre><code>";
    for (std::size_t i = 0; i < code_->size(); ++i)
      block.append(i > 0 ? "\n" : "").append(InlineHTML::escapeText((*code_)[i]));
    code_.reset();
    emit(block + "</code></pre>");
  }

  void emitTable(const MarkdownTable& table) {
    const bool isPlain = mode_ == RenderMode::plain;
    std::string html =
        isPlain ? "<table>"
                : "<div style=\"background:#1f1f1f;border-radius:18px;padding:26px 32px;"
                  "margin:16px 0;display:inline-block;max-width:100%;\">\n<table style=\""
                  "border-collapse:collapse;width:100%;background:#1f1f1f;color:#f4f4f4;"
                  "border-radius:18px;overflow:hidden;font-size:20px;font-weight:650;"
                  "line-height:1.55;margin:16px 0;\">";
    const std::string_view header =
        isPlain ? "<th>"
                : "<th style=\"padding:18px 24px;text-align:left;border-bottom:1px solid #3d3d3d;"
                  "color:#ffffff;font-weight:800;white-space:nowrap;\">";
    const std::string_view cell =
        isPlain ? "<td>"
                : "<td style=\"padding:18px 24px;text-align:left;border-bottom:1px solid #333333;"
                  "color:#f5f5f5;font-weight:650;white-space:nowrap;\">";
    html += "<thead>";
    appendRow(html, table.headers, header);
    html += "</thead><tbody>";
    for (const auto& row : table.rows) appendRow(html, row, cell);
    emit(html + (isPlain ? "</tbody></table>" : "</tbody></table>\n</div>"));
  }

  static void appendRow(std::string& html, const std::vector<std::string>& cells,
                        std::string_view startTag) {
    const std::string_view endTag = startTag.starts_with("<th") ? "</th>" : "</td>";
    html += "<tr>";
    for (const std::string& cell : cells)
      html.append(startTag).append(InlineHTML::convert(cell)).append(endTag);
    html += "</tr>";
  }

  // An item of the kind of list that `startTag` opens.
  void emitItem(std::string_view startTag, const std::string& content) {
    if (list_ != startTag) {
      closeList();
      emit(startTag);
      list_ = startTag;
    }
    emit("<li>" + content + "</li>");
  }

  void emitBlock(const std::string& block) {
    closeList();
    emit(block);
  }

  void closeList() {
    if (list_.empty()) return;
    emit(list_ == "<ol>" ? "</ol>" : "</ul>");
    list_ = {};
  }

  void emit(std::string_view piece) {
    if (!html_.empty()) html_ += '\n';
    html_ += piece;
  }

  std::vector<std::string_view> lines_;
  RenderMode mode_;
  const DiagramElement& diagrams_;
  std::string html_;
  std::optional<std::vector<std::string_view>> code_;  // the open block's lines
  bool isDiagram_ = false;                             // that block
  std::string_view list_;                              // the start tag of the open list
};

}  // namespace

std::string markdownToHTML(std::string_view text, RenderMode mode, const DiagramElement& diagrams) {
  return Converter(text, mode, diagrams).convert();
}

}  // namespace nomely
