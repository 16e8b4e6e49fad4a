#include "Core/Models/MemoJson.h"

namespace nomely {
namespace {

template <typename Value>
void put(Json& json, const char* name, const std::optional<Value>& value) {
  if (value) json[name] = *value;
}

template <typename Value>
void take(const Json& json, const char* name, std::optional<Value>& value) {
  if (const auto found = json.find(name); found != json.end() && !found->is_null())
    value = found->get<Value>();
}

template <typename Value>
void take(const Json& json, const char* name, Value& value) {
  json.at(name).get_to(value);
}

AudioTranscript transcriptOf(const Json& json) {
  AudioTranscript transcript{.text = json.at("text").get<std::string>(), .segments = {}};
  const Json& segments = json.at("segments");
  transcript.segments.reserve(segments.size());
  for (const Json& segment : segments)
    transcript.segments.push_back({.text = segment.at("text").get<std::string>(),
                                   .start = segment.at("start").get<double>(),
                                   .duration = segment.at("duration").get<double>()});
  return transcript;
}

}  // namespace

Json MemoJson::json(const AudioTranscript& transcript) {
  Json segments = Json::array();
  for (const AudioTranscriptSegment& segment : transcript.segments)
    segments.push_back(
        {{"text", segment.text}, {"start", segment.start}, {"duration", segment.duration}});
  return {{"text", transcript.text}, {"segments", std::move(segments)}};
}

Json MemoJson::json(const std::map<std::string, AudioTranscript>& transcripts) {
  Json all = Json::object();
  for (const auto& [name, transcript] : transcripts) all[name] = json(transcript);
  return all;
}

Json MemoJson::json(const Memo& memo) {
  Json json = Json::object();
  put(json, "memoId", memo.memoId);
  put(json, "schemaVersion", memo.schemaVersion);
  put(json, "createdAt", memo.createdAt);
  put(json, "updatedAt", memo.updatedAt);
  put(json, "source", memo.source);
  put(json, "sourceId", memo.sourceId);
  json["seqNumber"] = memo.seqNumber;
  json["time"] = memo.time;
  json["tags"] = memo.tags;
  put(json, "mood", memo.mood);
  json["pinned"] = memo.pinned;
  json["lockedOnTop"] = memo.lockedOnTop;
  json["body"] = memo.body;
  json["attachments"] = memo.attachments;
  json["attachmentDescriptions"] = memo.attachmentDescriptions;
  json["originalNames"] = memo.originalNames;
  json["audioTranscripts"] = MemoJson::json(memo.audioTranscripts);
  return json;
}

Memo MemoJson::memo(const Json& json) {
  Memo memo;
  take(json, "memoId", memo.memoId);
  take(json, "schemaVersion", memo.schemaVersion);
  take(json, "createdAt", memo.createdAt);
  take(json, "updatedAt", memo.updatedAt);
  take(json, "source", memo.source);
  take(json, "sourceId", memo.sourceId);
  take(json, "seqNumber", memo.seqNumber);
  take(json, "time", memo.time);
  take(json, "tags", memo.tags);
  take(json, "mood", memo.mood);
  take(json, "pinned", memo.pinned);
  take(json, "lockedOnTop", memo.lockedOnTop);
  take(json, "body", memo.body);
  take(json, "attachments", memo.attachments);
  take(json, "attachmentDescriptions", memo.attachmentDescriptions);
  take(json, "originalNames", memo.originalNames);
  memo.audioTranscripts = transcripts(json.at("audioTranscripts"));
  return memo;
}

std::map<std::string, AudioTranscript> MemoJson::transcripts(const Json& json) {
  std::map<std::string, AudioTranscript> all;
  for (const auto& [name, transcript] : json.get_ref<const Json::object_t&>())
    all.emplace(name, transcriptOf(transcript));
  return all;
}

}  // namespace nomely
