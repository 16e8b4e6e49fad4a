#include "Export/MarkdownExporter.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <string>

#include <fmt/format.h>

#include "Core/Extensions/AttachmentKinds.h"
#include "Core/Extensions/AttachmentNamingKit.h"
#include "Core/Extensions/DateFormatters.h"
#include "Core/Extensions/PathNames.h"
#include "Core/Extensions/TagNames.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Core/Storage/AttachmentManager.h"
#include "Export/AttachmentCopies.h"
#include "Export/NestedBody.h"
#include "Platform/Files/FileError.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

using MarkdownExporter::Result;
using std::filesystem::path;

// A file beside a memo, and what it is called in the document and in a folder of copies.
struct Attachment {
  Day date;
  std::string stored;
  std::string shown;
  std::string copied;
};

// Where the document's reader finds an attachment; absent when it can't be read.
using Finding = std::function<std::optional<path>(const Attachment& attachment)>;

bool isControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

// Text of a single line that Markdown shows as it stands: "a[1]" → "a\[1\]".
std::string escaped(std::string_view text) {
  std::string line;
  for (const char c : text) {
    if (std::string_view("\\`*[]<>&").find(c) != std::string_view::npos) line += '\\';
    line += isControl(c) ? ' ' : c;
  }
  return line;
}

// The address of a file in a link: "a b.png" → "a%20b.png". Letters of all scripts stay readable.
std::string addressOf(const path& file) {
  const std::string& text = file.native();
  const bool isReadable = isValidUtf8(text);
  std::string address;
  for (const char c : text) {
    const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    const bool stays = isLetter || (c >= '0' && c <= '9') ||
                       std::string_view("-._~/").find(c) != std::string_view::npos ||
                       (isReadable && static_cast<unsigned char>(c) >= 0x80);
    if (stays)
      address += c;
    else
      fmt::format_to(std::back_inserter(address), "%{:02X}", static_cast<unsigned char>(c));
  }
  return address;
}

Attachment attachmentOf(const MemoFrontmatter& memo, Day date, const std::string& stored) {
  Attachment attachment{date, stored, stored, stored};
  const auto original = memo.originalNames.find(stored);
  if (original == memo.originalNames.end() || original->second.empty()) return attachment;
  attachment.shown = original->second;
  // Some file systems take no longer names, and a number may have to be put to it.
  constexpr std::size_t longestName = 240;
  const std::string name =
      AttachmentNamingKit::suggestedDownloadName(stored, withoutExtension(attachment.shown));
  if (AttachmentManager::isSafeName(name) && !name.starts_with('.') && name.size() <= longestName &&
      std::ranges::none_of(name, isControl))
    attachment.copied = name;
  return attachment;
}

// Writes one document, piece by piece.
class DocumentWriter {
 public:
  DocumentWriter(const Finding& find, const ExportSink& sink) : find_(find), sink_(sink) {}

  void add(const MemoEntry& entry) {
    if (entry.date != day_) {
      put(fmt::format("{}# {}\n", result_.bytes == 0 ? "" : "\n",
                      DateFormatters::dayHeading(entry.date)));
      day_ = entry.date;
    }
    const Memo& memo = *entry.memo;
    put(fmt::format("\n## {}\n", escaped(memo.time)));
    putMarks(memo);
    // Without the comment for the editors; what has none stays as it is to the last blank.
    const std::string_view body = memo.body;
    if (MemoTextUtilities::hasOriginalComment(body))
      putBody(MemoTextUtilities::stripOriginalComment(body));
    else
      putBody(body);
    for (const std::string& name : memo.attachments)
      putAttachment(attachmentOf(memo, entry.date, name), memo);
  }

  [[nodiscard]] const Result& result() const { return result_; }

 private:
  void put(std::string_view piece) {
    result_.bytes += piece.size();
    sink_(piece);
  }

  void putMarks(const MemoFrontmatter& memo) {
    std::string line;
    for (const std::string& tag : memo.tags)
      if (!TagNames::isHidden(tag)) line += fmt::format(" #{}", escaped(tag));
    if (memo.mood) line += fmt::format(" 心情 {}", *memo.mood);
    if (!line.empty()) put("\n" + line.substr(1) + "\n");
  }

  void putBody(std::string_view body) {
    if (!body.empty()) put("\n" + nestedBody(body));
  }

  void putAttachment(const Attachment& attachment, const MemoFrontmatter& memo) {
    const auto place =
        AttachmentManager::isSafeName(attachment.stored) ? find_(attachment) : std::nullopt;
    std::string line;
    if (place) {
      line = fmt::format("{}[{}]({})", AttachmentKinds::isImage(attachment.stored) ? "!" : "",
                         escaped(attachment.shown), addressOf(*place));
    } else {
      ++result_.missing;
      line = fmt::format("*缺少附件：{}*", escaped(attachment.shown));
    }
    const auto description = memo.attachmentDescriptions.find(attachment.stored);
    if (description != memo.attachmentDescriptions.end())
      line += " " + escaped(description->second);
    put("\n" + line + "\n");
  }

  const Finding& find_;
  const ExportSink& sink_;
  std::optional<Day> day_;
  Result result_;
};

Result writeDocument(const ExportSelection& selection, const Finding& find,
                     const ExportSink& sink) {
  DocumentWriter writer(find, sink);
  selection.forEach([&](const MemoEntry& entry) { writer.add(entry); });
  return writer.result();
}

}  // namespace

Result MarkdownExporter::write(const ExportSelection& selection, const StoreContext& storage,
                               const ExportSink& sink) {
  const Finding find = [&](const Attachment& attachment) -> std::optional<path> {
    path file = storage.paths.dayFolder(attachment.date) / attachment.stored;
    const auto found = storage.files.attributes(file);
    if (!found || found->type != FileType::regular) return std::nullopt;
    return std::filesystem::absolute(file);
  };
  return writeDocument(selection, find, sink);
}

path MarkdownExporter::attachmentFolder(const path& document) {
  return document.parent_path() / (document.stem().string() + "-附件");
}

Result MarkdownExporter::exportTo(const path& document, const ExportSelection& selection,
                                  const StoreContext& storage, Replacement replacement) {
  const FileManager& files = storage.files;
  AttachmentCopies copies(files, attachmentFolder(document));
  const Finding find = [&](const Attachment& attachment) {
    return copies.add(storage.paths.dayFolder(attachment.date) / attachment.stored, attachment.date,
                      attachment.copied);
  };
  Result result;
  const FileManager::Producer produce = [&](const FileManager::Sink& sink) {
    result = writeDocument(selection, find, sink);
    // A document is never there without what it leads to.
    copies.place();
  };
  if (replacement == Replacement::forbid) {
    if (!files.createAtomically(document, produce))
      throw Error("export.exists", fmt::format("文件已存在：{}", document.string()));
  } else {
    const auto before = files.attributes(document, LinkPolicy::noFollow);
    try {
      files.writeAtomically(document, produce);
    } catch (const FileError&) {
      // What could not be made durable is there all the same, and needs its attachments.
      const auto after = files.attributes(document, LinkPolicy::noFollow);
      if (after && (!before || before->fileNumber != after->fileNumber)) copies.keep();
      throw;
    }
  }
  copies.keep();
  return result;
}

}  // namespace nomely
