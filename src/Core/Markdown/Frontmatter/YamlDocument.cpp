#include "Core/Markdown/Frontmatter/YamlDocument.h"

#include <algorithm>
#include <map>
#include <new>

#include <fmt/format.h>
#include <yaml.h>

#include "Core/Markdown/Frontmatter/YamlScalar.h"

namespace nomely {
namespace {

class Event {
 public:
  Event() = default;
  ~Event() { yaml_event_delete(&event_); }
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;

  yaml_event_t* operator->() { return &event_; }
  yaml_event_t* get() { return &event_; }

 private:
  yaml_event_t event_{};
};

class Parser {
 public:
  explicit Parser(std::string_view source) {
    if (yaml_parser_initialize(&parser_) == 0) throw std::bad_alloc();
    yaml_parser_set_encoding(&parser_, YAML_UTF8_ENCODING);
    yaml_parser_set_input_string(&parser_, reinterpret_cast<const unsigned char*>(source.data()),
                                 source.size());
  }
  ~Parser() { yaml_parser_delete(&parser_); }
  Parser(const Parser&) = delete;
  Parser& operator=(const Parser&) = delete;

  void next(Event& event) {
    if (yaml_parser_parse(&parser_, event.get()) != 0) return;
    if (parser_.error == YAML_MEMORY_ERROR) throw std::bad_alloc();
    const char* const problem = parser_.problem != nullptr ? parser_.problem : "unreadable";
    // The reader reports a byte offset, the scanner and the parser a place.
    if (parser_.error == YAML_READER_ERROR)
      throw YamlError(fmt::format("byte {}: {}", parser_.problem_offset, problem));
    throw YamlError(fmt::format("line {}, column {}: {}", parser_.problem_mark.line + 1,
                                parser_.problem_mark.column + 1, problem));
  }

 private:
  yaml_parser_t parser_{};
};

std::string_view viewOf(const yaml_char_t* text) {
  return reinterpret_cast<const char*>(text);
}

std::uint64_t saturatingAdd(std::uint64_t left, std::uint64_t right) {
  std::uint64_t sum = 0;
  return __builtin_add_overflow(left, right, &sum) ? UINT64_MAX : sum;
}

bool endsInLineBreak(std::string_view text) {
  return text.ends_with('\n') || text.ends_with('\r') || text.ends_with("\xC2\x85") ||
         text.ends_with("\xE2\x80\xA8") || text.ends_with("\xE2\x80\xA9");
}

// Lines that begin with one. A value of ours has no such line, whatever it says: its second and
// later lines are indented.
std::size_t countTagDirectives(std::string_view source) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = source.find("%TAG", at)) != std::string_view::npos; ++at)
    if (at == 0 || endsInLineBreak(source.substr(0, at))) ++count;
  return count;
}

}  // namespace

class YamlDocumentBuilder {
 public:
  explicit YamlDocumentBuilder(YamlDocument& document) : document_(document) {}

  void build(std::string_view source) {
    // Enough for nearly every header, and no more than a moment's memory for a hostile one.
    constexpr std::size_t bytesForEntry = 8;
    const std::size_t expected = std::min<std::size_t>(source.size(), 1U << 14U);
    document_.entries_.reserve(expected / bytesForEntry);
    document_.text_.reserve(expected);
    levels_.reserve(8);
    Parser parser(source);
    bool ended = false;
    while (!ended) {
      Event event;
      parser.next(event);
      switch (event->type) {
        case YAML_DOCUMENT_START_EVENT:
          if (!document_.entries_.empty()) fail(event, "more than one document");
          break;
        case YAML_SCALAR_EVENT:
          addScalar(event);
          break;
        case YAML_ALIAS_EVENT:
          addAlias(event);
          break;
        case YAML_SEQUENCE_START_EVENT:
          open(event, YamlDocument::Kind::sequence, event->data.sequence_start.anchor);
          break;
        case YAML_MAPPING_START_EVENT:
          open(event, YamlDocument::Kind::mapping, event->data.mapping_start.anchor);
          break;
        case YAML_SEQUENCE_END_EVENT:
        case YAML_MAPPING_END_EVENT:
          close();
          break;
        case YAML_STREAM_END_EVENT:
          ended = true;
          break;
        default:
          break;
      }
    }
    if (document_.entries_.empty()) throw YamlError("empty document");
  }

 private:
  using Entry = YamlDocument::Entry;
  static constexpr std::uint64_t unfinished = UINT64_MAX;

  struct Anchor {
    std::uint32_t node;
    std::uint64_t weight;  // nodes and bytes behind it with aliases expanded
  };
  struct Level {
    std::uint32_t node;
    Anchor* anchor = nullptr;
    std::uint32_t lastChild = YamlDocument::none;
    std::uint64_t weight = 1;
  };

  [[noreturn]] static void fail(Event& event, std::string_view problem) {
    throw YamlError(fmt::format("line {}, column {}: {}", event->start_mark.line + 1,
                                event->start_mark.column + 1, problem));
  }

  std::uint32_t add(const Entry& entry, std::uint64_t weight) {
    const auto index = static_cast<std::uint32_t>(document_.entries_.size());
    document_.entries_.push_back(entry);
    if (levels_.empty()) return index;
    Level& level = levels_.back();
    if (level.lastChild == YamlDocument::none)
      document_.entries_[level.node].firstChild = index;
    else
      document_.entries_[level.lastChild].next = index;
    level.lastChild = index;
    level.weight = saturatingAdd(level.weight, weight);
    return index;
  }

  void addScalar(Event& event) {
    const auto& scalar = event->data.scalar;
    Entry entry;
    entry.plain = scalar.style == YAML_PLAIN_SCALAR_STYLE && scalar.tag == nullptr;
    entry.begin = static_cast<std::uint32_t>(document_.text_.size());
    entry.length = static_cast<std::uint32_t>(scalar.length);
    document_.text_.append(reinterpret_cast<const char*>(scalar.value), scalar.length);
    const std::uint64_t weight = 1 + scalar.length;
    const std::uint32_t node = add(entry, weight);
    define(scalar.anchor, {node, weight});
  }

  void addAlias(Event& event) {
    const auto found = anchors_.find(viewOf(event->data.alias.anchor));
    if (found == anchors_.end()) fail(event, "undefined alias");
    const Anchor target = found->second;
    if (target.weight == unfinished) fail(event, "alias into itself");
    expansion_ = saturatingAdd(expansion_, target.weight);
    if (expansion_ > YamlDocument::maxAliasExpansion) fail(event, "aliases expand to too much");
    Entry entry;
    entry.alias = target.node;
    add(entry, target.weight);
  }

  void open(Event& event, YamlDocument::Kind kind, const yaml_char_t* anchor) {
    if (levels_.size() == YamlDocument::maxDepth) fail(event, "nested too deeply");
    Entry entry;
    entry.kind = kind;
    const std::uint32_t node = add(entry, 0);
    levels_.push_back({node, define(anchor, {node, unfinished})});
  }

  void close() {
    const Level closed = levels_.back();
    levels_.pop_back();
    if (!levels_.empty())
      levels_.back().weight = saturatingAdd(levels_.back().weight, closed.weight);
    // The name may have been given to another node meanwhile.
    if (closed.anchor != nullptr && closed.anchor->node == closed.node)
      closed.anchor->weight = closed.weight;
  }

  Anchor* define(const yaml_char_t* name, Anchor anchor) {
    if (name == nullptr) return nullptr;
    return &anchors_.insert_or_assign(std::string(viewOf(name)), anchor).first->second;
  }

  YamlDocument& document_;
  std::vector<Level> levels_;
  std::map<std::string, Anchor, std::less<>> anchors_;
  std::uint64_t expansion_ = 0;
};

YamlDocument::YamlDocument(std::string_view source) {
  if (source.size() >= none) throw YamlError("too long");
  // The library compares each tag directive with all before it.
  if (countTagDirectives(source) > maxDirectives) throw YamlError("too many tag directives");
  YamlDocumentBuilder(*this).build(source);
}

YamlDocument::Node::Node(const YamlDocument& document, std::uint32_t index)
    : document_(&document), index_(index) {
  // An alias never names another: its target was resolved when it was read.
  if (entry().alias != none) index_ = entry().alias;
}

std::string_view YamlDocument::Node::text() const {
  return std::string_view(document_->text_).substr(entry().begin, entry().length);
}

bool YamlDocument::Node::isNull() const {
  return kind() == Kind::scalar && isPlain() &&
         YamlScalar::resolvePlain(text()) == YamlScalar::Type::null;
}

}  // namespace nomely
