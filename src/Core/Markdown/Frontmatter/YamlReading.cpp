#include "Core/Markdown/Frontmatter/YamlReading.h"

#include <fmt/format.h>

#include "Core/Markdown/Frontmatter/YamlError.h"
#include "Core/Markdown/Frontmatter/YamlScalar.h"

namespace nomely {

void YamlReading::failType(const Node& node, std::string_view key, Wanted wanted) {
  throw YamlError(fmt::format("{} 应当是{}，请改正", key, wanted.chinese),
                  fmt::format("{}: expected {}", key, wanted.english), node.line());
}

void YamlReading::failDuplicate(const Node& value, std::string_view key) {
  throw YamlError(fmt::format("{} 出现了两次，请只留一个", key),
                  fmt::format("{}: key stands twice", key), value.line());
}

std::string YamlReading::stringOf(const Node& node, std::string_view key) {
  if (node.kind() != Kind::scalar)
    failType(node, key, {"a string", "一段文字，文字里有特殊符号时加上引号"});
  return std::string(node.text());
}

std::int64_t YamlReading::integerOf(const Node& node, std::string_view key) {
  const auto value = node.kind() == Kind::scalar ? YamlScalar::integer(node.text()) : std::nullopt;
  if (!value) failType(node, key, {"an integer of 64 bits", "整数"});
  return *value;
}

bool YamlReading::booleanOf(const Node& node, std::string_view key) {
  const auto value = node.kind() == Kind::scalar ? YamlScalar::boolean(node.text()) : std::nullopt;
  if (!value) failType(node, key, {"true or false", " true 或 false"});
  return *value;
}

double YamlReading::floatingPointOf(const Node& node, std::string_view key) {
  const auto value =
      node.kind() == Kind::scalar ? YamlScalar::floatingPoint(node.text()) : std::nullopt;
  if (!value) failType(node, key, {"a number", "数字"});
  return *value;
}

std::vector<std::string> YamlReading::stringsOf(const Node& node, std::string_view key) {
  if (node.kind() != Kind::sequence) failType(node, key, {"a sequence", "列表，各项以 - 开头"});
  std::vector<std::string> items;
  node.forEachItem([&](const Node& item) { items.push_back(stringOf(item, key)); });
  return items;
}

bool YamlReading::isMergeKey(const Node& key) {
  return key.kind() == Kind::scalar && key.isPlain() && key.text() == "<<";
}

}  // namespace nomely
