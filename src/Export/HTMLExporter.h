#pragma once

#include <string>
#include <vector>

#include "Core/Storage/AttachmentManager.h"
#include "Export/ExportSelection.h"
#include "Export/MarkdownHTML.h"
#include "Platform/Time/Clock.h"

namespace nomely {

// Memos as self-contained HTML, pictures embedded as they are. A picture that can't be read is left
// out. What a memo holds can bring neither elements nor scripts into a page. Safe on any thread.
namespace HTMLExporter {

using Sink = ExportSink;
using Selection = ExportSelection;

// Writes the whole page, holding one memo and one picture in memory at a time. Throws what the
// sink, the selection or `diagrams` throws.
void writePage(const Selection& selection, const AttachmentManager& attachmentManager,
               const Clock& clock, const Sink& sink, const DiagramElement& diagrams = {});

// A picture in PNG as an element of a page, so many points wide.
[[nodiscard]] std::string pictureElement(std::string_view png, double width, std::string_view name);

// The whole page as one string.
[[nodiscard]] std::string exportMemosFlomo(const std::vector<MemoEntry>& entries,
                                           const AttachmentManager& attachmentManager,
                                           const Clock& clock);
// One memo's block of the page.
[[nodiscard]] std::string exportMemoFlomo(const Memo& memo, Day date,
                                          const AttachmentManager& attachmentManager);
// One memo as a fragment of its own, outside of any page, with the memo's tags.
[[nodiscard]] std::string exportMemo(const Memo& memo, Day date,
                                     const AttachmentManager& attachmentManager);

}  // namespace HTMLExporter

}  // namespace nomely
