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

// Takes a page piece by piece, in order.
using Sink = std::function<void(std::string_view piece)>;

// The memos of a page, in its order.
struct Selection {
  std::size_t count = 0;
  // Calls `visit` with each of them; nothing keeps an entry afterwards.
  std::function<void(const std::function<void(const MemoEntry&)>& visit)> forEach;
};

// Writes the whole page. What is held at a time is one memo and one picture. Throws what the sink
// or the selection throws.
void writePage(const Selection& selection, const AttachmentManager& attachmentManager,
               const Clock& clock, const Sink& sink);

// The same in one text.
[[nodiscard]] std::string exportMemosFlomo(const std::vector<MemoEntry>& entries,
                                           const AttachmentManager& attachmentManager,
                                           const Clock& clock);
// One memo's block of the page.
[[nodiscard]] std::string exportMemoFlomo(const Memo& memo, Day date,
                                          const AttachmentManager& attachmentManager);
// A fragment that stands alone, with the memo's tags.
[[nodiscard]] std::string exportMemo(const Memo& memo, Day date,
                                     const AttachmentManager& attachmentManager);

}  // namespace HTMLExporter

}  // namespace nomely
