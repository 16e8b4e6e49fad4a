#include "Core/Storage/ConfigValue.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "Core/Markdown/Frontmatter/YamlScalar.h"
#include "Core/Storage/ConfigStore.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

[[noreturn]] void refuse(const ConfigField& field, std::string_view wanted) {
  throw ConfigError(ConfigError::Kind::badValue, fmt::format("{} 应当是{}", field.key, wanted));
}

std::string numberText(double number) {
  return fmt::format("{}", number);
}

void checkRange(const ConfigField& field, double number) {
  if (!std::isfinite(number) || number < field.least || number > field.most)
    refuse(field,
           fmt::format(" {} 到 {} 之间的数", numberText(field.least), numberText(field.most)));
}

bool isWebAddress(std::string_view text) {
  const bool hasScheme = text.starts_with("https://") || text.starts_with("http://");
  return hasScheme && text.find(' ') == std::string_view::npos && !text.ends_with("//");
}

struct Parser {
  const ConfigField& field;
  const std::string& text;

  void operator()(std::string* target) const { *target = checkedText(); }
  void operator()(std::optional<std::string>* target) const {
    if (text.empty())
      target->reset();
    else
      *target = checkedText();
  }
  void operator()(bool* target) const {
    const auto value = YamlScalar::boolean(text);
    if (!value) refuse(field, " true 或 false");
    *target = *value;
  }
  void operator()(double* target) const {
    const auto value = YamlScalar::floatingPoint(text);
    if (!value) refuse(field, "数字");
    checkRange(field, *value);
    *target = *value;
  }
  void operator()(std::optional<std::int64_t>* target) const {
    if (text.empty()) return target->reset();
    const auto value = YamlScalar::integer(text);
    if (!value) refuse(field, "整数");
    checkRange(field, static_cast<double>(*value));
    *target = *value;
  }
  void operator()(const ConfigField::Choice& choice) const {
    const auto found = std::ranges::find(choice.names, text);
    if (found == choice.names.end())
      refuse(field, fmt::format(" {} 之一", fmt::join(choice.names, "、")));
    choice.choose(static_cast<std::size_t>(found - choice.names.begin()));
  }
  void operator()(ConfigField::Map*) const { refuse(field, "在别处修改的表"); }

 private:
  [[nodiscard]] const std::string& checkedText() const {
    if (!isOneLine(text)) refuse(field, "一行文字，没有控制字符");
    if (field.isURL && !text.empty() && !isWebAddress(text))
      refuse(field, "以 https:// 或 http:// 开头的网址");
    return text;
  }
};

struct Value {
  ConfigValue operator()(const std::string* value) const { return *value; }
  ConfigValue operator()(const bool* value) const { return *value; }
  ConfigValue operator()(const double* value) const { return *value; }
  ConfigValue operator()(const std::optional<std::string>* value) const {
    return *value ? ConfigValue(**value) : ConfigValue();
  }
  ConfigValue operator()(const std::optional<std::int64_t>* value) const {
    return *value ? ConfigValue(**value) : ConfigValue();
  }
  ConfigValue operator()(const ConfigField::Choice& choice) const {
    return std::string(choice.names[choice.index()]);
  }
  ConfigValue operator()(const ConfigField::Map*) const { return {}; }
};

}  // namespace

bool isOneLine(std::string_view text) {
  if (!isValidUtf8(text)) return false;
  while (!text.empty()) {
    const DecodedCharacter character = decodeFirst(text);
    const char32_t value = character.value;
    if (value < 0x20 || (value >= 0x7F && value < 0xA0) || isLineBreak(value)) return false;
    text.remove_prefix(character.length);
  }
  return true;
}

ConfigValue valueOf(const ConfigField& field) {
  return std::visit(Value{}, field.target);
}

void setFromText(const ConfigField& field, const std::string& text) {
  if (!field.whyNot.empty() && !text.empty())
    throw ConfigError(ConfigError::Kind::badValue, std::string(field.whyNot));
  std::visit(Parser{field, text}, field.target);
}

}  // namespace nomely
