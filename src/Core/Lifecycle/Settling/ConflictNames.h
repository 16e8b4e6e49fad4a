#pragma once

#include <string>
#include <string_view>

// The names under which programs that keep the folders of two machines alike leave what they would
// not put in a file's place. Pure; names are last path components.
namespace nomely::ConflictNames {

// Whether `name` is what such a program calls a second form of the file `base` that lies beside it:
// of "tags.yaml" are "tags.sync-conflict-20261121-101530-ABCDEFG.yaml", "tags (1).yaml",
// "tags 2.yaml", "tags.yaml~HEAD" and "tags.yaml.orig". For folders whose files have known names;
// any "tags-x.yaml" counts.
[[nodiscard]] bool isCopyOf(std::string_view name, std::string_view base);

// The attachment of which `name` is a second form: "3F2504E0.jpg" for "3F2504E0 (1).jpg". Empty for
// any other name, those of attachments among them.
[[nodiscard]] std::string attachmentCopied(std::string_view name);

// Whether a file of a day folder is Markdown that no list shows, because its name is no memo's: any
// but "007.md" and its like. False for hidden names, and for those that an attachment may have
// (eight hexadecimal digits first), whose memo may not have arrived yet.
[[nodiscard]] bool isStrayNote(std::string_view name);

}  // namespace nomely::ConflictNames
