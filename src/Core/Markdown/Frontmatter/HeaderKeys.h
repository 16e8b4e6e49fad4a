#pragma once

#include <string>

#include "Core/Markdown/Frontmatter/YamlDocument.h"
#include "Core/Markdown/Frontmatter/YamlWriter.h"
#include "Core/Models/Memo.h"

namespace nomely {

// The keys of a memo file's header and how each is read and written. Pure.
namespace HeaderKeys {

// Throws YamlError for a value of the wrong type, a key that stands twice, and a root that is no
// mapping.
[[nodiscard]] MemoFrontmatter decode(const YamlDocument::Node& root);

[[nodiscard]] std::string encode(const MemoFrontmatter& memo, YamlWriter::Layout layout);

// Whether a header that decode() accepts has keys that it ignores, merge keys included.
[[nodiscard]] bool holdsOthers(const YamlDocument::Node& root);

}  // namespace HeaderKeys

}  // namespace nomely
