#include "Core/Storage/ConfigStore.h"

#include <cerrno>

#include <fmt/format.h>

#include "Core/Markdown/Frontmatter/YamlError.h"
#include "Core/Storage/ConfigYaml.h"
#include "Core/Storage/SecretBlanking.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr std::uint64_t largestFile = std::uint64_t{1} << 20;
constexpr unsigned ownerOnly = 0600;

constexpr std::string_view codeOf(ConfigError::Kind kind) {
  switch (kind) {
    case ConfigError::Kind::invalid:
      return "config.invalid";
    case ConfigError::Kind::holdsSecret:
      return "config.holdsSecret";
    case ConfigError::Kind::badValue:
      break;
  }
  return "config.badValue";
}

// Decodes `content` into the record; what is wrong with it, if anything.
std::optional<std::string> faultIn(const std::string& content, const ConfigFields& fields) {
  if (!isValidUtf8(content)) return "不是 UTF-8 编码，请先转换编码";
  try {
    ConfigYaml::decode(content, fields);
    return std::nullopt;
  } catch (const YamlError& error) {
    return error.line() == 0 ? error.what()
                             : fmt::format("第 {} 行：{}", error.line(), error.what());
  }
}

std::int64_t secondsOf(Moment moment) {
  return std::chrono::floor<std::chrono::seconds>(moment).time_since_epoch().count();
}

}  // namespace

ConfigError::ConfigError(Kind kind, const std::string& text)
    : Error(codeOf(kind), text), kind_(kind) {}

std::optional<std::string> ConfigStore::contentOf(std::string_view fileName) const {
  return context_.files.read(file(fileName), largestFile);
}

bool ConfigStore::read(std::string_view fileName, const ConfigFields& fields) const {
  const std::optional<std::string> content = contentOf(fileName);
  if (!content) return false;
  if (const auto fault = faultIn(*content, fields)) {
    const std::string copy = preserveCorrupt(fileName, *content, fields);
    throw ConfigError(ConfigError::Kind::invalid,
                      fmt::format("设置文件 {} 有误，{}{}", file(fileName).string(), *fault,
                                  copy.empty() ? "" : fmt::format("（已留副本 {}）", copy)));
  }
  return true;
}

void ConfigStore::replace(std::string_view fileName, const ConfigFields& fields,
                          const ConfigField::Map& without) const {
  const std::string present = contentOf(fileName).value_or("");
  const auto [held, areElsewhere] = SecretBlanking::secretsIn(present, fields);
  if (areElsewhere)
    throw ConfigError(ConfigError::Kind::holdsSecret,
                      fmt::format("设置文件 {} 里有密钥写错了地方，请先改正它或删除它，再修改设置",
                                  file(fileName).string()));
  for (const ConfigField& field : fields) {
    if (!field.isSecret()) continue;
    const auto kept = held.find(std::string(field.key));
    const auto gone = without.find(std::string(field.key));
    const bool stays =
        kept != held.end() && (gone == without.end() || gone->second != kept->second);
    field.secret() = stays ? kept->second : "";
  }
  context_.prepareFolder(context_.paths.configFolder());
  context_.files.writeAtomically(file(fileName), ConfigYaml::encode(fields));
}

void ConfigStore::restrict(std::string_view fileName) const {
  context_.write([&] { context_.files.setPermissions(file(fileName), ownerOnly); });
}

std::string ConfigStore::preserveCorrupt(std::string_view fileName, const std::string& content,
                                         const ConfigFields& fields) const noexcept {
  try {
    const SecretBlanking::Blanked blanked = SecretBlanking::withoutSecrets(content, fields);
    if (blanked.heldSecrets) restrict(fileName);
    return context_.write([&] {
      const std::string prefix = fmt::format("{}.corrupt-", fileName);
      const std::filesystem::path folder = context_.paths.configFolder();
      for (const DirectoryEntry& entry : context_.files.listAll(folder))
        if (entry.name.starts_with(prefix) &&
            context_.files.read(folder / entry.name) == blanked.text)
          return entry.name;
      // Another content within the same second has the next name.
      std::int64_t seconds = secondsOf(context_.clock.now());
      std::string name = prefix + std::to_string(seconds);
      while (!context_.files.createAtomically(folder / name, blanked.text, ownerOnly))
        name = prefix + std::to_string(++seconds);
      Log::error(LogChannel::storage,
                 "⚠️ ConfigStore: 配置 {} 解析失败，已另存损坏副本 {}", fileName,
                 name);
      return name;
    });
  } catch (const Error&) {
    // Only the evidence is missing; the file itself stays.
    return {};
  }
}

}  // namespace nomely
