#include "Core/Storage/ConfigYaml.h"

#include <algorithm>
#include <cmath>
#include <set>

#include <fmt/format.h>

#include "Core/Markdown/Frontmatter/YamlError.h"
#include "Core/Markdown/Frontmatter/YamlReading.h"
#include "Core/Markdown/Frontmatter/YamlWriter.h"

namespace nomely {
namespace {

using namespace YamlReading;
using Presence = ConfigField::Presence;

std::size_t choiceIn(const ConfigField::Choice& choice, const Node& node, std::string_view key) {
  const std::string name = stringOf(node, key);
  const auto found = std::ranges::find(choice.names, name);
  if (found == choice.names.end())
    throw YamlError(fmt::format("{} 应当是 {} 之一，请改正", key, fmt::join(choice.names, "、")),
                    fmt::format("{}: no such choice", key), node.line());
  return static_cast<std::size_t>(found - choice.names.begin());
}

// A number that can be reckoned with: no ".inf".
double numberIn(const Node& node, std::string_view key) {
  const double number = floatingPointOf(node, key);
  if (!std::isfinite(number)) failType(node, key, {"a finite number", "数字"});
  return number;
}

struct Reader {
  const Node& node;
  std::string_view key;

  void operator()(std::string* target) const { *target = stringOf(node, key); }
  void operator()(bool* target) const { *target = booleanOf(node, key); }
  void operator()(double* target) const { *target = numberIn(node, key); }
  void operator()(std::optional<std::string>* target) const { *target = stringOf(node, key); }
  void operator()(std::optional<std::int64_t>* target) const { *target = integerOf(node, key); }
  void operator()(ConfigField::Map* target) const {
    *target = mapOf<std::string>(node, key, stringOf);
  }
  void operator()(const ConfigField::Choice& choice) const {
    choice.assign(choiceIn(choice, node, key));
  }
};

struct Writer {
  YamlWriter& yaml;

  void operator()(const std::string* value) const { yaml.string(*value); }
  void operator()(const bool* value) const { yaml.boolean(*value); }
  void operator()(const double* value) const { yaml.floatingPoint(*value); }
  void operator()(const std::optional<std::string>* value) const { yaml.string(**value); }
  void operator()(const std::optional<std::int64_t>* value) const { yaml.integer(**value); }
  void operator()(const ConfigField::Map* map) const {
    yaml.beginMapping();
    for (const auto& [name, value] : *map) {
      yaml.string(name);
      yaml.string(value);
    }
    yaml.endMapping();
  }
  void operator()(const ConfigField::Choice& choice) const {
    yaml.string(choice.names[choice.index()]);
  }
};

bool isSet(const ConfigField& field) {
  if (const auto* text = std::get_if<std::optional<std::string>*>(&field.target))
    return (*text)->has_value();
  if (const auto* number = std::get_if<std::optional<std::int64_t>*>(&field.target))
    return (*number)->has_value();
  return true;
}

// "features" of "features.beautify"; empty for a key of the file's own.
std::string_view groupOf(std::string_view key) {
  const std::size_t dot = key.find('.');
  return dot == std::string_view::npos ? std::string_view() : key.substr(0, dot);
}

std::string_view nameOf(std::string_view key) {
  return key.substr(key.find('.') + 1);
}

using Visit = std::function<void(const ConfigField&, const Node&, Origin)>;

// Calls `visit` for each pair whose key is a field's.
void forEachField(const Node& mapping, const std::string& group, const ConfigFields& fields,
                  const Visit& visit) {
  const std::string what = group.empty() ? "文件" : group;
  forEachEntry(mapping, what, [&](std::string_view name, const Node& value, Origin origin) {
    const bool isGroup = group.empty() && std::ranges::any_of(fields, [&](const auto& field) {
                           return groupOf(field.key) == name;
                         });
    if (isGroup) return forEachField(value, std::string(name), fields, visit);
    for (const ConfigField& field : fields)
      if (groupOf(field.key) == group && nameOf(field.key) == name) visit(field, value, origin);
  });
}

}  // namespace

void ConfigYaml::decode(std::string_view text, const ConfigFields& fields) {
  const YamlDocument document(text);
  std::set<std::string_view> seen;
  forEachField(document.root(), "", fields,
               [&](const ConfigField& field, const Node& value, Origin origin) {
                 const bool isFirst = seen.insert(field.key).second;
                 if (!isFirst && origin == Origin::own) failDuplicate(value, field.key);
                 if (!isFirst) return;
                 const bool keepsDefault = field.presence != Presence::required && value.isNull();
                 if (!keepsDefault) std::visit(Reader{value, field.key}, field.target);
               });
  for (const ConfigField& field : fields)
    if (field.presence == Presence::required && !seen.contains(field.key))
      throw YamlError(fmt::format("缺少 {}，请补上", field.key),
                      fmt::format("{}: missing", field.key));
}

std::string ConfigYaml::encode(const ConfigFields& fields) {
  YamlWriter yaml(YamlWriter::Layout::folded);
  yaml.beginMapping();
  std::string_view group;
  for (const ConfigField& field : fields) {
    if (groupOf(field.key) != group) {
      if (!group.empty()) yaml.endMapping();
      group = groupOf(field.key);
      if (!group.empty()) {
        yaml.string(group);
        yaml.beginMapping();
      }
    }
    if (!isSet(field)) continue;
    yaml.string(nameOf(field.key));
    std::visit(Writer{yaml}, field.target);
  }
  if (!group.empty()) yaml.endMapping();
  yaml.endMapping();
  return yaml.finish();
}

}  // namespace nomely
