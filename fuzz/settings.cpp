// A settings file of any bytes is refused with a typed error or gives a record that survives
// writing, and no secret in its place gets into the copy of a damaged one.

#include "Core/Markdown/Frontmatter/YamlError.h"
#include "Core/Storage/ConfigYaml.h"
#include "Core/Storage/SecretBlanking.h"
#include "Platform/Text/Unicode.h"
#include "fuzz/Fuzzing.h"

namespace {

struct Sample {
  std::string name;
  std::string apiKey;
  std::optional<std::string> url;
  std::optional<std::int64_t> count;
  bool on = false;
  double size = 0;
  nomely::ConfigField::Map colors;

  friend bool operator==(const Sample&, const Sample&) = default;
};

nomely::ConfigFields fieldsOf(Sample& sample) {
  using enum nomely::ConfigField::Presence;
  return {{.key = "name", .target = &sample.name, .presence = defaulted},
          {.key = "apiKey", .target = &sample.apiKey, .presence = defaulted, .account = "a"},
          {.key = "url", .target = &sample.url, .presence = optional},
          {.key = "count", .target = &sample.count, .presence = optional},
          {.key = "group.on", .target = &sample.on, .presence = defaulted},
          {.key = "group.size", .target = &sample.size, .presence = defaulted},
          {.key = "colors", .target = &sample.colors, .presence = defaulted}};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace nomely;
  const std::string_view text = fuzz::textOf(data, size);
  Sample sample;
  const ConfigFields fields = fieldsOf(sample);
  const std::string blanked = SecretBlanking::withoutSecrets(text, fields).text;
  for (const auto& [key, secret] : SecretBlanking::secretsIn(text, fields).byKey)
    fuzz::require(secret.size() < 8 || blanked.find(secret) == std::string::npos);
  if (!isValidUtf8(text)) return 0;
  try {
    ConfigYaml::decode(text, fields);
  } catch (const YamlError&) {
    return 0;
  }
  Sample again;
  ConfigYaml::decode(ConfigYaml::encode(fields), fieldsOf(again));
  fuzz::require(again == sample);
  return 0;
}
