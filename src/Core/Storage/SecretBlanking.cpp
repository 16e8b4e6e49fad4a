#include "Core/Storage/SecretBlanking.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "Core/Markdown/Frontmatter/YamlError.h"
#include "Core/Markdown/Frontmatter/YamlReading.h"
#include "Platform/Text/Replacing.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

using namespace YamlReading;

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

// The first place of a secret's name, be it part of a longer word: {where it begins, where it
// ends}.
std::optional<std::pair<std::size_t, std::size_t>> findName(std::string_view text, std::size_t from,
                                                            const ConfigFields& fields) {
  for (std::size_t at = from; at < text.size(); ++at)
    for (const ConfigField& field : fields)
      if (const std::size_t length =
              field.isSecret() ? lengthOfName(text.substr(at), field.key) : 0)
        return std::pair(at, at + length);
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

SecretBlanking::Blanked blankNamed(std::string_view text, const ConfigFields& fields) {
  SecretBlanking::Blanked result;
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
  return result;
}

bool isSecretsName(std::string_view name, const ConfigFields& fields) {
  return std::ranges::any_of(fields, [&](const ConfigField& field) {
    return field.isSecret() && !name.empty() && lengthOfName(name, field.key) == name.size();
  });
}

// How many values, at any depth, stand under a secret's name, rightly written or not.
std::size_t countNamed(const Node& node, const ConfigFields& fields) {
  std::size_t count = 0;
  if (node.kind() == Kind::sequence)
    node.forEachItem([&](const Node& item) { count += countNamed(item, fields); });
  if (node.kind() == Kind::mapping)
    node.forEachPair([&](const Node& name, const Node& value) {
      const bool isNamed = name.kind() == Kind::scalar && isSecretsName(name.text(), fields);
      if (isNamed && !(value.kind() == Kind::scalar && value.text().empty()))
        ++count;
      else
        count += countNamed(value, fields);
    });
  return count;
}

}  // namespace

SecretBlanking::HeldSecrets SecretBlanking::secretsIn(std::string_view text,
                                                      const ConfigFields& fields) {
  HeldSecrets held;
  try {
    if (!isValidUtf8(text)) throw YamlError("");
    const YamlDocument document(text);
    forEachEntry(document.root(), "文件", [&](std::string_view name, const Node& value, Origin) {
      const bool isSecret = std::ranges::any_of(
          fields, [&](const ConfigField& field) { return field.isSecret() && field.key == name; });
      if (isSecret && value.kind() == Kind::scalar && !value.text().empty())
        held.byKey.try_emplace(std::string(name), value.text());
    });
    held.areElsewhere = countNamed(document.root(), fields) > held.byKey.size();
  } catch (const YamlError&) {
    held = {.byKey = {}, .areElsewhere = blankNamed(text, fields).heldSecrets};
  }
  return held;
}

SecretBlanking::Blanked SecretBlanking::withoutSecrets(std::string_view text,
                                                       const ConfigFields& fields) {
  Blanked result = blankNamed(text, fields);
  for (const auto& [key, secret] : secretsIn(text, fields).byKey) {
    constexpr std::size_t tooShortToTell = 4;
    if (secret.size() >= tooShortToTell) result.text = replacingAll(result.text, secret, "");
  }
  return result;
}

}  // namespace nomely
