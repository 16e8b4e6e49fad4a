#include "Core/Storage/ConfigYaml.h"

#include <algorithm>
#include <cmath>
#include <set>

#include <fmt/format.h>

#include "Core/Markdown/Frontmatter/YamlError.h"
#include "Core/Markdown/Frontmatter/YamlReading.h"
#include "Core/Markdown/Frontmatter/YamlWriter.h"
#include "Platform/Text/Replacing.h"
#include "Platform/Text/Unicode.h"

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

// --- blanking ---

bool isBlank(char c) {
  return c == ' ' || c == '\t';
}

// "api_key", "API-Key" and "api key" too: whoever mistyped the name damaged the file by that.
// Returns the length of the name at the start of `text`; 0 when it is none.
std::size_t lengthOfName(std::string_view text, std::string_view name) {
  const auto lowered = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  std::size_t at = 0;
  for (std::size_t i = 0; i < name.size(); ++i) {
    if (i > 0 && at < text.size() && (text[at] == '_' || text[at] == '-' || text[at] == ' ')) ++at;
    if (at == text.size() || lowered(text[at]) != lowered(name[i])) return 0;
    ++at;
  }
  return at;
}

bool isNameCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

// The first place of a secret's name, as a word of its own: {where it begins, where it ends}.
std::optional<std::pair<std::size_t, std::size_t>> findName(std::string_view text, std::size_t from,
                                                            const ConfigFields& fields) {
  for (std::size_t at = from; at < text.size(); ++at) {
    if (at > 0 && isNameCharacter(text[at - 1])) continue;
    for (const ConfigField& field : fields) {
      const std::size_t length =
          field.isSecret() ? lengthOfName(text.substr(at), nameOf(field.key)) : 0;
      const bool isWord =
          length > 0 && (at + length == text.size() || !isNameCharacter(text[at + length]));
      if (isWord) return std::pair(at, at + length);
    }
  }
  return std::nullopt;
}

std::size_t endOfLine(std::string_view text, std::size_t at) {
  return std::min(text.find_first_of("\r\n", at), text.size());
}

// Whether the line is "name:" at the start of a line, and no deeper than `indent`.
bool beginsKey(std::string_view line, std::size_t indent) {
  std::size_t at = 0;
  while (at < line.size() && isBlank(line[at])) ++at;
  if (at > indent) return false;
  const std::size_t name = at;
  while (at < line.size() && isNameCharacter(line[at])) ++at;
  return at > name && at < line.size() && line[at] == ':' &&
         (at + 1 == line.size() || isBlank(line[at + 1]));
}

// Where the value ends that stands after a name whose line begins at `lineBegin`.
std::size_t endOfValue(std::string_view text, std::size_t lineBegin, std::size_t nameEnd) {
  std::size_t indent = lineBegin;
  while (indent < text.size() && isBlank(text[indent])) ++indent;
  indent -= lineBegin;
  std::size_t end = endOfLine(text, nameEnd);
  while (end < text.size()) {
    const std::size_t next = end + (text.substr(end).starts_with("\r\n") ? 2 : 1);
    const std::size_t nextEnd = endOfLine(text, next);
    if (beginsKey(text.substr(next, nextEnd - next), indent)) break;
    end = nextEnd;
  }
  return end;
}

bool saysSomething(std::string_view value) {
  return value.find_first_not_of(" \t\r\n:=\"'{},") != std::string_view::npos;
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

ConfigField::Map ConfigYaml::secretsIn(std::string_view text, const ConfigFields& fields) {
  ConfigField::Map secrets;
  try {
    if (!isValidUtf8(text)) return secrets;
    const YamlDocument document(text);
    forEachField(document.root(), "", fields,
                 [&](const ConfigField& field, const Node& value, Origin) {
                   if (field.isSecret() && value.kind() == Kind::scalar && !value.text().empty())
                     secrets.try_emplace(std::string(field.key), value.text());
                 });
  } catch (const YamlError&) {
    // What came before the fault is known.
  }
  return secrets;
}

ConfigYaml::Blanked ConfigYaml::withoutSecrets(std::string_view text, const ConfigFields& fields) {
  Blanked result;
  std::size_t copied = 0;
  while (const auto name = findName(text, copied, fields)) {
    const auto [begin, nameEnd] = *name;
    const std::size_t lineBegin = text.find_last_of("\r\n", begin);
    const std::size_t end =
        endOfValue(text, lineBegin == std::string_view::npos ? 0 : lineBegin + 1, nameEnd);
    const bool isHeld = saysSomething(text.substr(nameEnd, end - nameEnd));
    result.heldSecrets |= isHeld;
    result.text += text.substr(copied, (isHeld ? nameEnd : end) - copied);
    if (isHeld) result.text += ": ''  # 已隐去";
    copied = end;
  }
  result.text += text.substr(copied);
  for (const auto& [key, secret] : secretsIn(text, fields)) {
    result.heldSecrets = true;
    constexpr std::size_t tooShortToTell = 4;
    if (secret.size() >= tooShortToTell) result.text = replacingAll(result.text, secret, "");
  }
  return result;
}

}  // namespace nomely
