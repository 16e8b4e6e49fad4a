#include "Core/Extensions/AttachmentKinds.h"

#include <algorithm>
#include <array>

#include "Core/Extensions/PathNames.h"

namespace nomely::AttachmentKinds {
namespace {

constexpr std::array<std::string_view, 6> imageExtensions{"jpg", "jpeg", "png",
                                                          "gif", "heic", "webp"};
constexpr std::array<std::string_view, 5> audioExtensions{"mp3", "wav", "m4a", "aac", "ogg"};

}  // namespace

bool isImage(std::string_view name) {
  return std::ranges::find(imageExtensions, lowerCaseExtension(name)) != imageExtensions.end();
}

bool isAudio(std::string_view name) {
  return std::ranges::find(audioExtensions, lowerCaseExtension(name)) != audioExtensions.end();
}

}  // namespace nomely::AttachmentKinds
