#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Markdown/Frontmatter/YamlDocument.h"

namespace nomely {

// Typed values of a document's nodes, for headers of memos and for settings. `key` is what an error
// calls the value. Throw YamlError. Pure.
namespace YamlReading {

using Node = YamlDocument::Node;
using Kind = YamlDocument::Kind;

// What a value has to be, in English for logs and in Chinese for the file's owner.
struct Wanted {
  std::string_view english;
  std::string_view chinese;
};
[[noreturn]] void failType(const Node& node, std::string_view key, Wanted wanted);
// Refuses a key that stands twice: taking one of the two would lose the other with the next write.
[[noreturn]] void failDuplicate(const Node& value, std::string_view key);

[[nodiscard]] std::string stringOf(const Node& node, std::string_view key);
[[nodiscard]] std::int64_t integerOf(const Node& node, std::string_view key);
[[nodiscard]] bool booleanOf(const Node& node, std::string_view key);
[[nodiscard]] double floatingPointOf(const Node& node, std::string_view key);
[[nodiscard]] std::vector<std::string> stringsOf(const Node& node, std::string_view key);

[[nodiscard]] bool isMergeKey(const Node& key);

enum class Origin { own, merged };

// Calls `visit(name, value, origin)` for every pair, those of merge keys after the mapping's own,
// which have precedence over them. Keys that are no scalars are passed over.
template <typename Visit>
void forEachEntry(const Node& mapping, std::string_view key, Visit visit) {
  constexpr Wanted wanted{"a mapping", "“名字: 值”的各行"};
  if (mapping.kind() != Kind::mapping) failType(mapping, key, wanted);
  const auto visitPairs = [&](const auto& self, const Node& node, Origin origin) -> void {
    if (node.kind() != Kind::mapping) failType(node, "<<", wanted);
    bool merges = false;
    node.forEachPair([&](const Node& name, const Node& value) {
      if (isMergeKey(name))
        merges = true;
      else if (name.kind() == Kind::scalar)
        visit(name.text(), value, origin);
    });
    if (!merges) return;
    node.forEachPair([&](const Node& name, const Node& value) {
      if (!isMergeKey(name)) return;
      if (value.kind() == Kind::sequence)
        value.forEachItem([&](const Node& item) { self(self, item, Origin::merged); });
      else
        self(self, value, Origin::merged);
    });
  };
  visitPairs(visitPairs, mapping, Origin::own);
}

template <typename Value, typename Decode>
std::map<std::string, Value> mapOf(const Node& node, std::string_view key, Decode decode) {
  std::map<std::string, Value> values;
  forEachEntry(node, key, [&](std::string_view name, const Node& value, Origin origin) {
    const auto [at, isNew] = values.try_emplace(std::string(name));
    if (isNew)
      at->second = decode(value, key);
    else if (origin == Origin::own)
      failDuplicate(value, name);
  });
  return values;
}

}  // namespace YamlReading

}  // namespace nomely
