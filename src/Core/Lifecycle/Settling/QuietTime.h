#pragma once

#include <chrono>
#include <filesystem>

#include "Core/Storage/StoreContext.h"

namespace nomely {

// How long a file has to have lain here untouched before anything is done about it: until then the
// engine that brought it may not be through with it, or with those that belong to it.
namespace QuietTime {

inline constexpr std::chrono::seconds interval{2};
// For what looks alike whether an engine is half-way through with it or people meant it so.
inline constexpr std::chrono::seconds longInterval{600};

// Whether a file that changed then has not lain for that long: see FileAttributes::changed. A clock
// that was set back makes nothing young, since it would stay so for long.
[[nodiscard]] inline bool isYoung(const StoreContext& context, Moment changed,
                                  std::chrono::seconds below = interval) {
  const auto age = context.clock.now() - changed;
  return age >= age.zero() && age < below;
}

// The same of a file; false when there is none. Throws FileError.
[[nodiscard]] inline bool isYoung(const StoreContext& context, const std::filesystem::path& file,
                                  std::chrono::seconds below = interval) {
  const auto attributes = context.files.attributes(file, LinkPolicy::noFollow);
  return attributes && isYoung(context, attributes->changed, below);
}

}  // namespace QuietTime

}  // namespace nomely
