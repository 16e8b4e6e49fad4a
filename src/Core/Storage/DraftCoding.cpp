#include "Core/Storage/DraftCoding.h"

#include <stdexcept>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Models/MemoJson.h"

namespace nomely {
namespace {

std::string textOf(Day day) {
  return DateFormatters::utcTimestamp(day.start() + std::chrono::hours(12));
}

Json jsonOf(const AttachmentsSnapshot& snapshot) {
  return {{"attachments", snapshot.attachments},
          {"transcripts", MemoJson::json(snapshot.transcripts)}};
}

template <typename Value>
void put(Json& json, const char* name, const std::optional<Value>& value) {
  if (value) json[name] = *value;
}

std::string dumped(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Moment momentOf(const Json& json) {
  const auto moment = DateFormatters::parseUtcTimestamp(json.get_ref<const std::string&>());
  if (!moment) throw std::invalid_argument("no date");
  return *moment;
}

Day dayOf(const Json& json) {
  return Day::of(momentOf(json));
}

AttachmentsSnapshot snapshotOf(const Json& json) {
  return {json.at("attachments").get<std::vector<std::string>>(),
          MemoJson::transcripts(json.at("transcripts"))};
}

std::map<std::string, Day> daysOf(const Json& json) {
  std::map<std::string, Day> days;
  for (const auto& [name, day] : json.get_ref<const Json::object_t&>())
    days.emplace(name, dayOf(day));
  return days;
}

// The member as `read` reads it; absent when it is missing or null.
template <typename Read>
auto optionalOf(const Json& json, const char* name, Read read)
    -> std::optional<decltype(read(json))> {
  const auto found = json.find(name);
  if (found == json.end() || found->is_null()) return std::nullopt;
  return read(*found);
}

std::optional<std::string> optionalText(const Json& json, const char* name) {
  return optionalOf(json, name, [](const Json& member) { return member.get<std::string>(); });
}

std::optional<std::int64_t> optionalInteger(const Json& json, const char* name) {
  return optionalOf(json, name, [](const Json& member) { return member.get<std::int64_t>(); });
}

std::map<std::string, std::string> namesOf(const Json& json, const char* name) {
  using Names = std::map<std::string, std::string>;
  return optionalOf(json, name, [](const Json& member) { return member.get<Names>(); })
      .value_or(Names());
}

template <typename Decode>
auto decoded(std::string_view bytes, Decode decode) -> std::optional<decltype(decode(Json()))> {
  try {
    return decode(Json::parse(bytes));
  } catch (const nlohmann::json::exception&) {
    return std::nullopt;
  } catch (const std::invalid_argument&) {
    return std::nullopt;
  }
}

}  // namespace

std::string DraftCoding::encoded(const QuickInputDraft& draft) {
  Json json{{"text", draft.text}};
  put(json, "originalTextBeforeAI", draft.originalTextBeforeAI);
  if (draft.attachmentsSnapshotBeforeAI)
    json["attachmentsSnapshotBeforeAI"] = jsonOf(*draft.attachmentsSnapshotBeforeAI);
  Json dates = Json::object();
  for (const auto& [name, day] : draft.pendingAttachmentDates) dates[name] = textOf(day);
  json["pendingAttachmentDates"] = std::move(dates);
  json["pendingAttachments"] = draft.pendingAttachments;
  json["pendingAudioTranscripts"] = MemoJson::json(draft.pendingAudioTranscripts);
  json["pendingOriginalNames"] = draft.pendingOriginalNames;
  put(json, "selectedMood", draft.selectedMood);
  json["selectedDate"] = textOf(draft.selectedDate);
  put(json, "activeRecordingPath", draft.activeRecordingPath);
  if (draft.editingMemo) json["editingMemo"] = MemoJson::json(*draft.editingMemo);
  if (draft.editingMemoDate) json["editingMemoDate"] = textOf(*draft.editingMemoDate);
  json["updatedAt"] = DateFormatters::utcTimestamp(draft.updatedAt);
  return dumped(json);
}

std::string DraftCoding::encoded(const FocusMemoDraft& draft) {
  Json json = Json::object();
  put(json, "memoId", draft.memoId);
  if (draft.baseMemo) json["baseMemo"] = MemoJson::json(*draft.baseMemo);
  json["bodyText"] = draft.bodyText;
  json["tags"] = draft.tags;
  put(json, "mood", draft.mood);
  json["attachments"] = draft.attachments;
  json["audioTranscripts"] = MemoJson::json(draft.audioTranscripts);
  json["originalNames"] = draft.originalNames;
  put(json, "activeRecordingPath", draft.activeRecordingPath);
  json["updatedAt"] = DateFormatters::utcTimestamp(draft.updatedAt);
  return dumped(json);
}

std::optional<QuickInputDraft> DraftCoding::quickInput(std::string_view bytes) {
  return decoded(bytes, [](const Json& json) {
    return QuickInputDraft{
        .text = json.at("text").get<std::string>(),
        .originalTextBeforeAI = optionalText(json, "originalTextBeforeAI"),
        .attachmentsSnapshotBeforeAI = optionalOf(json, "attachmentsSnapshotBeforeAI", snapshotOf),
        .pendingAttachmentDates = optionalOf(json, "pendingAttachmentDates", daysOf)
                                      .value_or(std::map<std::string, Day>()),
        .pendingAttachments = json.at("pendingAttachments").get<std::vector<std::string>>(),
        .pendingAudioTranscripts = MemoJson::transcripts(json.at("pendingAudioTranscripts")),
        .pendingOriginalNames = namesOf(json, "pendingOriginalNames"),
        .selectedMood = optionalInteger(json, "selectedMood"),
        .selectedDate = dayOf(json.at("selectedDate")),
        .activeRecordingPath = optionalText(json, "activeRecordingPath"),
        .editingMemo = optionalOf(json, "editingMemo", MemoJson::memo),
        .editingMemoDate = optionalOf(json, "editingMemoDate", dayOf),
        .updatedAt = momentOf(json.at("updatedAt"))};
  });
}

std::optional<FocusMemoDraft> DraftCoding::focus(std::string_view bytes) {
  return decoded(bytes, [](const Json& json) {
    return FocusMemoDraft{.memoId = optionalText(json, "memoId"),
                          .baseMemo = optionalOf(json, "baseMemo", MemoJson::memo),
                          .bodyText = json.at("bodyText").get<std::string>(),
                          .tags = json.at("tags").get<std::vector<std::string>>(),
                          .mood = optionalInteger(json, "mood"),
                          .attachments = json.at("attachments").get<std::vector<std::string>>(),
                          .audioTranscripts = MemoJson::transcripts(json.at("audioTranscripts")),
                          .originalNames = namesOf(json, "originalNames"),
                          .activeRecordingPath = optionalText(json, "activeRecordingPath"),
                          .updatedAt = momentOf(json.at("updatedAt"))};
  });
}

}  // namespace nomely
