#pragma once

#include "Media/DescriptorIO.h"
#include "Media/Libav.h"
#include "Media/SampleTable.h"

namespace nomely::media {

// The sound of a foreign file: of a film its sound track. Only containers and encodings that sound
// comes in are read, and what the file refers to is not opened: a playlist is refused.
class SourceFile {
 public:
  // Throws Failure: "unreadable" for what is no such file or is damaged, "noAudio".
  explicit SourceFile(int descriptor);
  ~SourceFile();
  SourceFile(const SourceFile&) = delete;
  SourceFile& operator=(const SourceFile&) = delete;

  // The next packet of sound; false at the end, and where a file that was cut off breaks off.
  [[nodiscard]] bool next(AVPacket& packet);
  // Goes to the packet at `moment` seconds, or to one shortly before; false when it stays where it
  // is.
  [[nodiscard]] bool seek(double moment);
  [[nodiscard]] const AVStream& audio() const { return *audio_; }
  // Seconds from the beginning of the file's timeline, of a time in the sound's own units.
  [[nodiscard]] double seconds(std::int64_t timestamp) const;

 private:
  void choose();

  std::unique_ptr<SampleTable> table_;  // of a long file, in place of the demuxer's
  DescriptorIO io_;
  AVFormatContext* format_ = nullptr;
  const AVStream* audio_ = nullptr;
  double origin_ = 0;
};

// A decoder for its sound. Throws Failure "unreadable" for an encoding that isn't known.
[[nodiscard]] Codec openDecoder(const AVStream& audio);

}  // namespace nomely::media
