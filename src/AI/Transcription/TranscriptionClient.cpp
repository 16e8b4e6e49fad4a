#include "AI/Transcription/TranscriptionClient.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include <fmt/format.h>

#include "AI/Transcription/SpeechTranscriber.h"
#include "AI/Vendor/ReplyText.h"
#include "Platform/Text/JsonReading.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr auto path = "/v1/audio/transcriptions";
constexpr int ok = 200;

[[noreturn]] void fail(const std::string& detail) {
  throw TranscriberError(TranscriberError::Kind::recognitionFailed, detail);
}

std::optional<std::string> textIn(const Json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end() || !found->is_string()) return std::nullopt;
  return found->get<std::string>();
}

// 0 for what is no time.
double secondsIn(const Json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end() || !found->is_number()) return 0;
  const auto seconds = found->get<double>();
  return std::isfinite(seconds) ? std::max(seconds, 0.0) : 0;
}

std::vector<AudioTranscriptSegment> segmentsIn(const Json& reply, const char* list,
                                               const char* textKey) {
  std::vector<AudioTranscriptSegment> segments;
  const auto found = reply.find(list);
  if (found == reply.end() || !found->is_array()) return segments;
  for (const Json& item : *found) {
    if (!item.is_object()) continue;
    const std::string text = textIn(item, textKey).value_or("");
    const double start = secondsIn(item, "start");
    const std::string_view trimmed = trimSpaceAndBreaks(text);
    if (trimmed.empty()) continue;
    AudioTranscriptSegment segment;
    segment.text = trimmed;
    segment.start = start;
    segment.duration = std::max(secondsIn(item, "end") - start, 0.0);
    segments.push_back(std::move(segment));
  }
  return segments;
}

Recognition read(const Json& reply) {
  const auto text = reply.is_object() ? textIn(reply, "text") : std::nullopt;
  if (!text) fail("识别服务的回答里没有文字");
  Recognition heard{.text = std::string(trimSpaceAndBreaks(*text)), .segments = {}};
  heard.segments = segmentsIn(reply, "words", "word");
  if (heard.segments.empty()) heard.segments = segmentsIn(reply, "segments", "text");
  if (heard.segments.empty() && !heard.text.empty()) {
    AudioTranscriptSegment whole;
    whole.text = heard.text;
    whole.duration = secondsIn(reply, "duration");
    heard.segments.push_back(std::move(whole));
  }
  return heard;
}

}  // namespace

Recognition TranscriptionClient::recognize(const std::filesystem::path& file,
                                           const std::stop_token& stop) {
  const HttpResponse response = http_.send(request(file), stop);
  if (response.status != ok)
    fail(fmt::format("HTTP {}: {}", response.status,
                     quotedReply(response.body, std::array{config_.apiKey})));
  return read(readJson(response.body));
}

HttpRequest TranscriptionClient::request(const std::filesystem::path& file) const {
  // A server on one's own machine says nothing while it works, and may be slow.
  constexpr std::chrono::minutes patience(5);
  HttpRequest request;
  request.url = config_.baseURL + path;
  request.idleTimeout = patience;
  request.wholeTimeout = patience;
  if (!config_.apiKey.empty())
    request.headers.emplace_back("Authorization", "Bearer " + config_.apiKey);
  request.parts = {{.name = "model", .value = config_.model},
                   {.name = "response_format", .value = "verbose_json"},
                   {.name = "timestamp_granularities[]", .value = "word"},
                   {.name = "file",
                    .file = file,
                    .fileName = file.filename().string(),
                    .contentType = "audio/wav"}};
  if (!config_.language.empty())
    request.parts.push_back({.name = "language", .value = config_.language});
  return request;
}

}  // namespace nomely
