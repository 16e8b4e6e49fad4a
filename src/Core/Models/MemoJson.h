#pragma once

#include "Core/Models/Memo.h"
#include "Platform/Text/Json.h"

namespace nomely {

// A memo as a JSON object: the record's own field names and order, absent optional fields left out,
// `id` never stored. Reading takes members it doesn't know for nothing, and throws
// nlohmann::json::exception for one that is missing or of another type. Pure.
namespace MemoJson {

[[nodiscard]] Json json(const Memo& memo);
[[nodiscard]] Json json(const AudioTranscript& transcript);
[[nodiscard]] Json json(const std::map<std::string, AudioTranscript>& transcripts);

[[nodiscard]] Memo memo(const Json& json);
[[nodiscard]] std::map<std::string, AudioTranscript> transcripts(const Json& json);

}  // namespace MemoJson

}  // namespace nomely
