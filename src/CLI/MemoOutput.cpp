#include "CLI/MemoOutput.h"

#include <algorithm>

#include <fmt/format.h>

#include "CLI/MarkdownDrawing.h"
#include "Core/Extensions/DateFormatters.h"
#include "Core/Extensions/TagNames.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Core/Models/MemoJson.h"
#include "Platform/Files/FileError.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

std::string heading(const TimelineEntry& entry, const Style& style) {
  const Memo& memo = entry.memo;
  std::string line =
      fmt::format("{}  {}", style.bold(Terminal::printable(memo.time)),
                  style.dim(fmt::format("{}/{}", entry.date.string(), memo.seqNumber)));
  if (memo.lockedOnTop) line += "  🔒置顶锁定";
  if (memo.pinned && !memo.lockedOnTop) line += "  📌置顶";
  if (memo.mood) line += fmt::format("  心情 {}", *memo.mood);
  for (const std::string& tag : memo.tags)
    if (!TagNames::isHidden(tag)) line += "  " + style.tag("#" + Terminal::printable(tag));
  return line + "\n";
}

std::string attachmentLines(const Memo& memo, const Style& style) {
  std::string lines;
  for (const std::string& name : memo.attachments) {
    const auto original = memo.originalNames.find(name);
    const auto description = memo.attachmentDescriptions.find(name);
    std::string line = "📎 " + Terminal::printable(name);
    if (original != memo.originalNames.end())
      line += fmt::format("（{}）", Terminal::printable(original->second));
    if (description != memo.attachmentDescriptions.end())
      line += fmt::format("：{}", Terminal::printable(description->second));
    lines += style.dim(line) + "\n";
  }
  return lines;
}

}  // namespace

Json MemoOutput::json(const TimelineEntry& entry) {
  Json json{{"date", entry.date.string()}};
  json.update(MemoJson::json(entry.memo));
  return json;
}

std::string MemoOutput::drawn(const TimelineEntry& entry, const Style& style, std::size_t width) {
  return heading(entry, style) + MarkdownDrawing::drawBody(entry.memo.body, style, width) +
         attachmentLines(entry.memo, style);
}

std::string MemoOutput::firstLine(std::string_view body) {
  const std::string shown = MemoTextUtilities::textForEditing(body);
  const std::string_view text = trimSpaceAndBreaks(shown);
  std::string line = Terminal::printable(text.substr(0, text.find('\n')));
  std::ranges::replace(line, '\t', ' ');
  return line;
}

std::string MemoOutput::oneLine(std::string_view reference, std::string_view time,
                                std::string_view body) {
  return fmt::format("{}\t{}\t{}\n", reference, Terminal::printable(time), firstLine(body));
}

std::string MemoOutput::text(const TimelineEntry& entry, const Style& style) {
  std::string text = heading(entry, style);
  text += Terminal::printable(entry.memo.body);
  if (!text.ends_with('\n')) text += '\n';
  return text + attachmentLines(entry.memo, style);
}

void MemoOutput::print(const TimelineEntry& entry, const Session& session) {
  if (session.isJson())
    session.printJson(json(entry));
  else
    session.print(text(entry, session.style()));
}

namespace {

// Runs `print` and sees to it that all has left the program.
template <typename Print>
void printingStored(std::string_view what, const Session& session, Print print) {
  try {
    print();
    session.flush();
  } catch (const FileError& error) {
    throw Error("output.failed", fmt::format("{}已保存，但结果没能输出：{}", what, error.what()));
  }
}

}  // namespace

void MemoOutput::printStored(const TimelineEntry& entry, const Session& session) {
  printingStored(fmt::format("笔记 {}/{} ", entry.date.string(), entry.memo.seqNumber), session,
                 [&] { print(entry, session); });
}

void MemoOutput::printStored(const std::vector<TimelineEntry>& entries, const Session& session) {
  if (entries.size() == 1) return printStored(entries.front(), session);
  printingStored(fmt::format("{} 条笔记", entries.size()), session, [&] {
    MemoListPrinter printer(session);
    for (const TimelineEntry& entry : entries) printer.add(entry);
    printer.finish();
  });
}

void MemoListPrinter::add(const TimelineEntry& entry) {
  if (session_.isJson()) {
    session_.print(count_ == 0 ? "[" : ",\n ");
    std::string item = MemoOutput::json(entry).dump(-1, ' ', false, Json::error_handler_t::replace);
    session_.print(item);
  } else if (form_ == ListForm::oneLine) {
    session_.print(
        MemoOutput::oneLine(fmt::format("{}/{}", entry.date.string(), entry.memo.seqNumber),
                            entry.memo.time, entry.memo.body));
  } else {
    if (day_ != entry.date)
      session_.print(fmt::format("{}{}\n\n", count_ == 0 ? "" : "\n",
                                 style_.bold(DateFormatters::dayHeading(entry.date))));
    else
      session_.print("\n");
    session_.print(MemoOutput::text(entry, style_));
  }
  day_ = entry.date;
  ++count_;
}

void MemoListPrinter::finish() {
  if (session_.isJson()) session_.print(count_ == 0 ? "[]\n" : "]\n");
}

}  // namespace nomely
