// Foreign clipboards, as HTML and as RTF: what comes out is text without an end in white space, and
// not much longer than what went in.

#include "Core/Markdown/Clipboard/ClipboardMarkdownImporter.h"
#include "Core/Markdown/Clipboard/RichTextReader.h"
#include "Platform/Text/Unicode.h"
#include "fuzz/Fuzzing.h"

namespace {

using namespace nomely;
using fuzz::require;

struct Clipboard final : Pasteboard {
  explicit Clipboard(std::string bytes) : content(std::move(bytes)) {}

  [[nodiscard]] bool hasImages() const override { return false; }
  [[nodiscard]] std::optional<std::string> html() const override { return content; }
  [[nodiscard]] std::optional<std::string> richText() const override { return content; }

  std::string content;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(fuzz::textOf(data, size));
  if (const auto markdown = ClipboardMarkdownImporter::markdown(text)) {
    require(!markdown->empty() && isValidUtf8(*markdown));
    require(trimSpaceAndBreaks(*markdown) == *markdown);
    // A table is filled up to its longest row; everything else grows by less than its tags were.
    require(markdown->size() <= 4 * text.size() + 1'000'000);
  }
  const auto plain = RichTextReader::plainText(text);
  if (plain) require(RichTextReader::isRichText(text) && isValidUtf8(*plain));
  const PasteDecision decision = decidePaste(Clipboard(text));
  require((decision.action == PasteDecision::Action::insertText) == !decision.text.empty());
  return 0;
}
