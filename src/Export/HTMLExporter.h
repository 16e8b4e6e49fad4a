#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Query/MemoEntry.h"
#include "Core/Storage/AttachmentManager.h"
#include "Export/MarkdownHTML.h"
#include "Platform/Time/Clock.h"

namespace nomely {

// Memos as self-contained HTML, pictures embedded as they are. A picture that can't be read is left
// out. What a memo holds can bring neither elements nor scripts into a page. Safe on any thread.
namespace HTMLExporter {

// Called with each piece of a page, in order.
using Sink = std::function<void(std::string_view piece)>;

// The memos of a page, in the order of the page.
struct Selection {
  std::size_t count = 0;
  // Calls `visit` with each of them; `visit` does not keep the entry.
  std::function<void(const std::function<void(const MemoEntry&)>& visit)> forEach;
};

// Writes the whole page, holding one memo and one picture in memory at a time. Throws what the sink
// or the selection throws.
void writePage(const Selection& selection, const AttachmentManager& attachmentManager,
               const Clock& clock, const Sink& sink);

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
