#include "Core/Markdown/Frontmatter/YamlEvents.h"

#include <algorithm>
#include <new>

#include <fmt/format.h>

#include "Core/Markdown/Frontmatter/YamlError.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

// Where whoever mends it has to look: an open quote or bracket is reported at the end of the text,
// but is to be closed where it was opened.
yaml_mark_t placeOf(const yaml_parser_t& parser) {
  if (parser.context == nullptr) return parser.problem_mark;
  const std::string_view context = parser.context;
  for (const std::string_view opened : {"quoted scalar", "flow", "simple key"})
    if (context.find(opened) != std::string_view::npos) return parser.context_mark;
  return parser.problem_mark;
}

// Goes forward through `text` by the library's positions, which count characters.
class Position {
 public:
  explicit Position(std::string_view text) : rest_(text) {}

  // What lies between here and the character number `index`; goes there.
  std::string_view advanceTo(std::size_t index) {
    const std::string_view from = rest_;
    for (; index_ < index && !rest_.empty(); ++index_)
      rest_.remove_prefix(decodeFirst(rest_).length);
    return from.substr(0, from.size() - rest_.size());
  }
  [[nodiscard]] std::string_view rest() const { return rest_; }

 private:
  std::string_view rest_;
  std::size_t index_ = 0;
};

// A comment may follow the "|" or ">" of a block, on its line.
bool holdsCommentInFirstLine(std::string_view block) {
  return block.substr(0, block.find_first_of("\r\n")).find('#') != std::string_view::npos;
}

bool isOneOfValues(YamlEvents::Event& event) {
  switch (event->type) {
    case YAML_ALIAS_EVENT:
      return false;
    case YAML_DOCUMENT_START_EVENT:
      return event->data.document_start.implicit != 0;
    case YAML_DOCUMENT_END_EVENT:
      return event->data.document_end.implicit != 0;
    case YAML_SCALAR_EVENT:
      return event->data.scalar.anchor == nullptr && event->data.scalar.tag == nullptr;
    case YAML_SEQUENCE_START_EVENT:
      return event->data.sequence_start.anchor == nullptr &&
             event->data.sequence_start.tag == nullptr;
    case YAML_MAPPING_START_EVENT:
      return event->data.mapping_start.anchor == nullptr &&
             event->data.mapping_start.tag == nullptr;
    default:
      return true;
  }
}

}  // namespace

YamlEvents::YamlEvents(std::string_view source) : source_(source) {
  if (yaml_parser_initialize(&parser_) == 0) throw std::bad_alloc();
  yaml_parser_set_encoding(&parser_, YAML_UTF8_ENCODING);
  yaml_parser_set_input_string(&parser_, reinterpret_cast<const unsigned char*>(source.data()),
                               source.size());
}

void YamlEvents::next(Event& event) {
  if (yaml_parser_parse(&parser_, event.get()) != 0) return;
  if (parser_.error == YAML_MEMORY_ERROR) throw std::bad_alloc();
  const std::string problem = parser_.problem != nullptr ? parser_.problem : "unreadable";
  // The reader reports a byte offset, the scanner and the parser a place.
  if (parser_.error == YAML_READER_ERROR) {
    const std::string_view before = source_.substr(0, parser_.problem_offset);
    throw YamlError(chineseYamlReason(problem),
                    fmt::format("byte {}: {}", parser_.problem_offset, problem),
                    1 + static_cast<std::size_t>(std::ranges::count(before, '\n')));
  }
  const yaml_mark_t place = placeOf(parser_);
  throw YamlError(chineseYamlReason(problem),
                  fmt::format("line {}, column {}: {}", place.line + 1, place.column + 1, problem),
                  place.line + 1);
}

bool holdsMoreThanValues(std::string_view source) {
  YamlEvents events(source);
  Position position(source);
  for (bool ended = false; !ended;) {
    YamlEvents::Event event;
    events.next(event);
    if (!isOneOfValues(event)) return true;
    ended = event->type == YAML_STREAM_END_EVENT;
    if (event->type != YAML_SCALAR_EVENT) continue;
    const std::string_view between = position.advanceTo(event->start_mark.index);
    const std::string_view scalar = position.advanceTo(event->end_mark.index);
    const yaml_scalar_style_t style = event->data.scalar.style;
    const bool isBlock = style == YAML_LITERAL_SCALAR_STYLE || style == YAML_FOLDED_SCALAR_STYLE;
    if (between.find('#') != std::string_view::npos || (isBlock && holdsCommentInFirstLine(scalar)))
      return true;
  }
  return position.rest().find('#') != std::string_view::npos;
}

}  // namespace nomely
