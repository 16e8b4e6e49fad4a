#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nomely {

// One YAML 1.1 document read into memory. Aliases are resolved without copying what they name.
//
// The source may be hostile: nesting deeper than `maxDepth`, aliases that would expand to more than
// `maxAliasExpansion` bytes and nodes, aliases into themselves, and more than `maxDirectives` tag
// directives are refused, so that reading takes time and memory in proportion to the source and a
// walk over all nodes ends soon.
class YamlDocument {
 public:
  static constexpr std::size_t maxDepth = 64;
  static constexpr std::uint64_t maxAliasExpansion = 1 << 20;
  static constexpr std::size_t maxDirectives = 64;

  enum class Kind : std::uint8_t { scalar, sequence, mapping };

 private:
  static constexpr std::uint32_t none = UINT32_MAX;

  struct Entry {
    Kind kind = Kind::scalar;
    bool plain = false;
    std::uint32_t firstChild = none;
    std::uint32_t next = none;
    std::uint32_t alias = none;  // the node meant, when this is an alias
    std::uint32_t begin = 0;     // a scalar's place in text_
    std::uint32_t length = 0;
    std::uint32_t line = 0;
  };

 public:
  // Borrows from its document.
  class Node {
   public:
    [[nodiscard]] Kind kind() const { return entry().kind; }
    // A scalar's text with quoting and escapes undone.
    [[nodiscard]] std::string_view text() const;
    // Whether a scalar stood unquoted, so that its text decides its type.
    [[nodiscard]] bool isPlain() const { return entry().plain; }
    // Whether it is a plain scalar that spells null.
    [[nodiscard]] bool isNull() const;

    // The line of the source on which it begins, the first being 1; of an alias, where that stands.
    [[nodiscard]] std::size_t line() const { return line_; }

    // Calls `visit(Node)` for each item of a sequence.
    template <typename Visit>
    void forEachItem(Visit visit) const {
      for (std::uint32_t at = entry().firstChild; at != none; at = document_->entries_[at].next)
        visit(Node(*document_, at));
    }
    // Calls `visit(Node key, Node value)` for each pair of a mapping, merge keys as they stand.
    template <typename Visit>
    void forEachPair(Visit visit) const {
      for (std::uint32_t at = entry().firstChild; at != none;) {
        const std::uint32_t value = document_->entries_[at].next;
        visit(Node(*document_, at), Node(*document_, value));
        at = document_->entries_[value].next;
      }
    }

   private:
    friend class YamlDocument;
    Node(const YamlDocument& document, std::uint32_t index);
    [[nodiscard]] const Entry& entry() const { return document_->entries_[index_]; }

    const YamlDocument* document_;
    std::uint32_t index_;
    std::uint32_t line_;
  };

  // Throws YamlError, also when `source` holds no document or more than one. `source` is
  // well-formed UTF-8.
  explicit YamlDocument(std::string_view source);
  ~YamlDocument();
  YamlDocument(const YamlDocument&) = delete;
  YamlDocument& operator=(const YamlDocument&) = delete;

  [[nodiscard]] Node root() const { return {*this, 0}; }

 private:
  friend class YamlDocumentBuilder;
  struct Storage {
    std::vector<Entry> entries;
    std::string text;
  };
  // What the thread's last document leaves to the next: programs read many thousands in a row.
  static Storage& spare();

  std::vector<Entry> entries_;
  std::string text_;
};

}  // namespace nomely
