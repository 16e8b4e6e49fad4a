#pragma once

#include <cstddef>
#include <filesystem>

#include "Core/Storage/StoreContext.h"
#include "Export/ExportSelection.h"

namespace nomely {

// Memos as one Markdown document:
//
//   # 2026年3月1日 周日
//
//   ## 09:30
//
//   #运动 #工作/会议 心情 4
//
//   <the body, with its own headings two levels down>
//
//   ![照片.jpg](旅行-附件/2026-03-01/照片.jpg) <description>
//
// A new day's heading stands wherever the day changes. One that can't be read is named as missing.
// The comment that keeps a body's older text, and tags for programs, are left out. Memory does not
// grow with the number of memos. Safe on any thread.
namespace MarkdownExporter {

struct Result {
  std::size_t bytes = 0;    // of the document
  std::size_t missing = 0;  // attachments that could not be read
};

// The document alone; its links lead to the attachments where they lie under the root. Throws what
// the sink or the selection throws.
Result write(const ExportSelection& selection, const StoreContext& storage, const ExportSink& sink);

// "/a/旅行.md" → "/a/旅行-附件"
[[nodiscard]] std::filesystem::path attachmentFolder(const std::filesystem::path& document);

// Writes the document, and beside it the attachments under the names that they had before they came
// in. All of it appears, or nothing. A folder of that name is added to: nothing in it is replaced
// or removed, so that what the user put there, and what an older export's readers need, stays. With
// Replacement::forbid a document that is there fails (Error "export.exists"). Throws FileError and
// what the selection throws.
Result exportTo(const std::filesystem::path& document, const ExportSelection& selection,
                const StoreContext& storage, Replacement replacement);

}  // namespace MarkdownExporter

}  // namespace nomely
