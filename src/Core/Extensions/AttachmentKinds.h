#pragma once

#include <string_view>

namespace nomely {

// What a file beside a memo is, by the lower-cased extension of its name.
namespace AttachmentKinds {
[[nodiscard]] bool isImage(std::string_view name);
[[nodiscard]] bool isAudio(std::string_view name);
}  // namespace AttachmentKinds

}  // namespace nomely
