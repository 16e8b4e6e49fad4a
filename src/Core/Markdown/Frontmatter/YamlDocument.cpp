#include "Core/Markdown/Frontmatter/YamlDocument.h"

#include <algorithm>
#include <map>
#include <utility>

#include <fmt/format.h>

#include "Core/Markdown/Frontmatter/YamlError.h"
#include "Core/Markdown/Frontmatter/YamlEvents.h"
#include "Core/Markdown/Frontmatter/YamlScalar.h"

namespace nomely {
namespace {

// Bytes that a thread keeps from a document for its next one.
constexpr std::size_t mostSpare = std::size_t{1} << 16;

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
    YamlEvents events(source);
    bool ended = false;
    while (!ended) {
      Event event;
      events.next(event);
      switch (event->type) {
        case YAML_DOCUMENT_START_EVENT:
          if (!document_.entries_.empty())
            fail(event, "more than one document", "有不止一份 YAML，请只留一份");
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
    if (document_.entries_.empty())
      throw YamlError("里面什么都没有，请至少写一行", "empty document");
  }

 private:
  using Entry = YamlDocument::Entry;
  using Event = YamlEvents::Event;
  static constexpr std::uint64_t unfinished = UINT64_MAX;

  struct Anchor {
    std::uint32_t node;
    std::uint64_t weight;  // nodes and bytes of it with aliases expanded
  };
  struct Level {
    std::uint32_t node;
    Anchor* anchor = nullptr;
    std::uint32_t lastChild = YamlDocument::none;
    std::uint64_t weight = 1;
  };

  [[noreturn]] static void fail(Event& event, std::string_view problem, const char* reason) {
    throw YamlError(reason,
                    fmt::format("line {}, column {}: {}", event->start_mark.line + 1,
                                event->start_mark.column + 1, problem),
                    event->start_mark.line + 1);
  }

  static Entry entryAt(Event& event) {
    Entry entry;
    entry.line = static_cast<std::uint32_t>(event->start_mark.line + 1);
    return entry;
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
    Entry entry = entryAt(event);
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
    if (found == anchors_.end())
      fail(event, "undefined alias", "以 * 引用的名字没有用 & 定义过，请改正或给值加上引号");
    const Anchor target = found->second;
    if (target.weight == unfinished) fail(event, "alias into itself", "以 * 引用了它自己，请改正");
    expansion_ = saturatingAdd(expansion_, target.weight);
    if (expansion_ > YamlDocument::maxAliasExpansion)
      fail(event, "aliases expand to too much", "以 * 引用的内容太多，请直接写出");
    Entry entry = entryAt(event);
    entry.alias = target.node;
    add(entry, target.weight);
  }

  void open(Event& event, YamlDocument::Kind kind, const yaml_char_t* anchor) {
    if (levels_.size() == YamlDocument::maxDepth)
      fail(event, "nested too deeply", "层次太深，请减少嵌套");
    Entry entry = entryAt(event);
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

YamlDocument::Storage& YamlDocument::spare() {
  thread_local Storage storage;
  return storage;
}

YamlDocument::YamlDocument(std::string_view source)
    : entries_(std::exchange(spare().entries, {})), text_(std::exchange(spare().text, {})) {
  entries_.clear();
  text_.clear();
  if (source.size() >= none) throw YamlError("文件头太长，请缩短", "too long");
  // The library compares each tag directive with all before it.
  if (countTagDirectives(source) > maxDirectives)
    throw YamlError("有太多 %TAG 行，请删去", "too many tag directives");
  YamlDocumentBuilder(*this).build(source);
}

YamlDocument::~YamlDocument() {
  if (entries_.capacity() * sizeof(Entry) + text_.capacity() > mostSpare) return;
  spare() = {std::move(entries_), std::move(text_)};
}

YamlDocument::Node::Node(const YamlDocument& document, std::uint32_t index)
    : document_(&document), index_(index), line_(document.entries_[index].line) {
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
