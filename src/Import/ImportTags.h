#pragma once

#include <string_view>

#include "Core/Extensions/TagNames.h"

namespace nomely::ImportTags {

// The hidden tags by which imported memos are known again.
constexpr std::string_view flomo = "_flomo_import";
constexpr std::string_view notes = TagNames::notesImportTag;
// Followed by the identity of the import; identities sort by time as texts.
constexpr std::string_view notesBatchPrefix = "_notes_import_batch_";

}  // namespace nomely::ImportTags
