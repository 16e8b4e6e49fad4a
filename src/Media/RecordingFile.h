#pragma once

#include <cstdint>
#include <span>

#include "Media/AacEncoder.h"
#include "Media/DescriptorIO.h"
#include "Media/Libav.h"

namespace nomely::media {

inline constexpr int recordingRate = 44100;  // samples a second, of one channel

// Writes a recording as MPEG-4 AAC of 128 kbit/s in fragments of less than a second, each of which
// has reached the disk when the next one begins: whatever ends the program, what was recorded until
// then can be played.
class RecordingFile {
 public:
  // `descriptor` is an empty file. Throws Failure like every call.
  explicit RecordingFile(int descriptor);
  ~RecordingFile();
  RecordingFile(const RecordingFile&) = delete;
  RecordingFile& operator=(const RecordingFile&) = delete;

  void write(std::span<const std::int16_t> samples);
  // Nothing can be written after it.
  void finish();
  // Seconds that are safe.
  [[nodiscard]] double seconds() const;

 private:
  void put(AVPacket& packet);
  void endFragment();
  void cutOffDamage() noexcept;

  int descriptor_;
  DescriptorIO io_;
  AVFormatContext* format_ = nullptr;
  AacEncoder encoder_;
  std::int64_t safeSamples_ = 0;  // in fragments that are on the disk
  std::int64_t safeSize_ = 0;     // bytes up to their end
  int packets_ = 0;               // in the fragment under way
};

}  // namespace nomely::media
