#pragma once

namespace nomely::media {

// The form in which sound goes from its decoder to a speaker. Devices convert it where they must.
inline constexpr int playedRate = 48000;  // frames a second
inline constexpr int playedChannels = 2;

}  // namespace nomely::media
