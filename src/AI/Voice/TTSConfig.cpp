#include "AI/Voice/TTSConfig.h"

#include <algorithm>
#include <array>

namespace nomely {
namespace {

constexpr std::string_view firstGeneration = "seed-tts-1.0";
constexpr std::string_view secondGeneration = "seed-tts-2.0";

constexpr std::array<TTSConfig::Voice, 2> offered{{
    {"zh_female_xiaohe_uranus_bigtts", "小何", secondGeneration},
    {"zh_male_shaonianzixin_uranus_bigtts", "少年梓辛", secondGeneration},
}};

}  // namespace

std::span<const TTSConfig::Voice> TTSConfig::voices() {
  return offered;
}

std::string TTSConfig::effectiveVoiceType() const {
  return voiceType.empty() ? std::string(offered.front().id) : voiceType;
}

std::string TTSConfig::resourceID() const {
  const std::string id = effectiveVoiceType();
  if (id.find("_moon_bigtts") != std::string::npos) return std::string(firstGeneration);
  if (id.find("_uranus_bigtts") != std::string::npos) return std::string(secondGeneration);
  const auto listed = std::ranges::find(offered, id, &Voice::id);
  return std::string((listed == offered.end() ? offered.front() : *listed).resourceID);
}

ConfigFields configFields(TTSConfig& config) {
  constexpr double slowest = 0.2;
  constexpr double fastest = 3;
  return {{.key = "appid", .target = &config.appid, .account = "Nomely.ttsAppID"},
          {.key = "apiKey", .target = &config.apiKey, .account = "Nomely.ttsAPIKey"},
          {.key = "voiceType", .target = &config.voiceType},
          {.key = "speedRatio", .target = &config.speedRatio, .least = slowest, .most = fastest}};
}

}  // namespace nomely
