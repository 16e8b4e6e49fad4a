#include "AI/Voice/TTSService.h"

#include <array>
#include <optional>

#include <fmt/format.h>

#include "AI/Vendor/ReplyText.h"
#include "AI/Voice/SpeechPieces.h"
#include "Platform/Cancellation.h"
#include "Platform/Network/VendorRoot.h"
#include "Platform/System/Uuid.h"
#include "Platform/Text/Ascii.h"
#include "Platform/Text/Base64.h"
#include "Platform/Text/JsonReading.h"

namespace nomely {
namespace {

constexpr int success = 200;
constexpr std::int64_t done = 3000;
constexpr std::int64_t notGranted = 3001;

struct Case {
  std::string_view code;
  std::string_view text;
};

const Case& caseOf(TTSError::Kind kind) {
  static constexpr std::array<Case, 4> cases{
      {{"tts.connectionFailed", "连接失败: "},
       {"tts.synthesisFailed", "合成失败: "},
       {"tts.notConfigured", "TTS 未配置，请在设置中填写豆包 App ID、Token 和 Secret Key"},
       {"tts.audioDecodeFailed", "音频解码失败"}}};
  return cases.at(static_cast<std::size_t>(kind));
}

std::optional<std::int64_t> codeIn(const Json& reply) {
  if (!reply.is_object() || !reply.contains("code")) return std::nullopt;
  const Json& code = reply["code"];
  return code.is_number_integer() ? std::optional(code.get<std::int64_t>()) : std::nullopt;
}

std::string textIn(const Json& reply, const char* key) {
  if (!reply.is_object() || !reply.contains(key) || !reply[key].is_string()) return {};
  return reply[key].get<std::string>();
}

// An error's body may be anything.
Json readLeniently(std::string_view body) {
  try {
    return readJson(body);
  } catch (const JsonError&) {
    return std::string(body);
  }
}

}  // namespace

TTSError::TTSError(Kind kind, const std::string& detail)
    : Error(caseOf(kind).code, std::string(caseOf(kind).text) + detail), kind_(kind) {}

HttpResponse TTSService::send(std::string_view text, const std::stop_token& stop) const {
  const std::string requestID = Uuid::random().string();
  const Json body{
      {"app", {{"appid", config_.appid}, {"token", config_.apiKey}, {"cluster", "volcano_tts"}}},
      {"user", {{"uid", "nomely"}}},
      {"audio",
       {{"voice_type", config_.effectiveVoiceType()},
        {"encoding", "mp3"},
        {"speed_ratio", config_.speedRatio}}},
      {"request", {{"reqid", requestID}, {"text", text}, {"operation", "query"}}}};
  try {
    const std::string root =
        vendorRoot(environment_, "NOMELY_TTS_ROOT", "https://openspeech.bytedance.com");
    return http_.send({.url = root + "/api/v1/tts",
                       .headers = {{"Content-Type", "application/json"},
                                   // With the semicolon, as the vendor's older console demands.
                                   {"Authorization", "Bearer; " + config_.apiKey},
                                   {"X-Api-Resource-Id", config_.resourceID()},
                                   {"X-Api-Request-Id", requestID}},
                       .body = body.dump(-1, ' ', false, Json::error_handler_t::replace)},
                      stop);
  } catch (const HttpError& error) {
    if (error.kind() == HttpError::Kind::badURL)
      throw TTSError(TTSError::Kind::connectionFailed, "无效 TTS 服务地址");
    if (error.kind() == HttpError::Kind::notHttp)
      throw TTSError(TTSError::Kind::connectionFailed, "无效响应");
    throw;
  }
}

std::string TTSService::failureText(const HttpResponse& response) const {
  const Json reply = readLeniently(response.body);
  const std::string raw = reply.is_string() ? reply.get<std::string>() : textIn(reply, "message");
  const std::string told =
      raw.empty() ? "未知错误" : quotedReply(raw, std::array{config_.apiKey, config_.appid});
  const bool isNotGranted =
      codeIn(reply) == notGranted || loweredAscii(raw).find("not granted") != std::string::npos;
  const std::string message =
      isNotGranted ? fmt::format(
                         "当前音色或 TTS 资源未授权。ResourceId: {}，Voice: {}。请换回已开通音色，"
                         "或在豆包控制台开通对应音色资源。原始错误：{}",
                         config_.resourceID(), config_.effectiveVoiceType(), told)
                   : told;
  return response.status == success ? message
                                    : fmt::format("HTTP {}: {}", response.status, message);
}

std::string TTSService::synthesize(std::string_view text, const std::stop_token& stop) const {
  if (config_.appid.empty() || config_.apiKey.empty())
    throw TTSError(TTSError::Kind::notConfigured);
  const HttpResponse response = send(text, stop);
  if (response.status != success)
    throw TTSError(TTSError::Kind::synthesisFailed, failureText(response));
  const Json reply = readJson(response.body);
  if (codeIn(reply) != done) throw TTSError(TTSError::Kind::synthesisFailed, failureText(response));
  const auto audio = decodeBase64(textIn(reply, "data"));
  if (!audio || audio->empty()) throw TTSError(TTSError::Kind::audioDecodeFailed);
  return *audio;
}

void TTSService::synthesizeLongText(std::string_view text, const FileManager::Sink& sink,
                                    const std::stop_token& stop, const Progress& progress) const {
  const std::vector<std::string> pieces = speechPieces(text, mostCharacters);
  double spoken = 0;
  for (const std::string& piece : pieces) {
    throwIfStopped(stop);
    sink(synthesize(piece, stop));
    if (progress) progress(++spoken / static_cast<double>(pieces.size()));
  }
}

std::filesystem::path TTSService::synthesizeLongText(std::string_view text,
                                                     const FileManager& files,
                                                     const std::filesystem::path& folder,
                                                     const std::stop_token& stop) const {
  std::filesystem::path file = folder / fmt::format("tts_{}.mp3", Uuid::random().string());
  files.writeAtomically(
      file, [&](const FileManager::Sink& sink) { synthesizeLongText(text, sink, stop); });
  return file;
}

}  // namespace nomely
