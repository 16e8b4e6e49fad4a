#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <vector>

#include "Platform/Audio/HelperProcess.h"

namespace nomely {

// A file of sound, or a film with its sound, that can't be used; `what()` is Chinese.
class MediaError : public Error {
 public:
  enum class Kind { unreadable, noAudio, noSpace, other };
  MediaError(Kind kind, const std::string& text) : Error("media", text), kind_(kind) {}
  [[nodiscard]] Kind kind() const noexcept { return kind_; }

 private:
  Kind kind_;
};

// What an answer "error KIND DETAIL" of `nomely-media` about a file tells; none is that of a crash.
// The answer goes into the log.
[[nodiscard]] MediaError mediaError(const std::optional<std::string>& answer);

// What `nomely-media` does with files. Foreign ones are safe to give it: it opens nothing that they
// refer to, and a crash of its decoder is an error here. Any thread; throws MediaError, FileError,
// and CancellationError at once when asked to stop.
namespace MediaFile {

// A file to give it: a pipe or a device is refused. Throws FileError.
[[nodiscard]] Descriptor open(const std::filesystem::path& file);

// Seconds of sound; what is there counts, not what the file claims.
[[nodiscard]] double duration(const std::filesystem::path& file, const std::stop_token& stop);

// How loud a sound is over its time.
struct Shape {
  double seconds = 0;
  std::vector<double> peaks;  // of equal parts of it, 0 to 1
};
// Of a file whose sound, all of which has to be decoded, is cut into at most `parts`.
[[nodiscard]] Shape shape(const std::filesystem::path& file, std::size_t parts,
                          const std::stop_token& stop);

// Writes the recording on `source`, even one that was cut off, into the empty file on `target`, as
// a plain m4a that is on the disk when this returns.
void remux(int source, int target, const std::stop_token& stop);

// Makes an m4a of the sound in `source`, of one channel, and puts it in the place of `target`:
// there and on the disk, or not there. Throws MediaError for more than six hours of it.
void convertToM4A(const std::filesystem::path& source, const std::filesystem::path& target,
                  const std::stop_token& stop);

}  // namespace MediaFile

// The sound of a file from its beginning to its end, in memory that doesn't grow with it.
class SampleStream {
 public:
  static constexpr int rate = 16000;  // samples a second, of one channel

  explicit SampleStream(const std::filesystem::path& file);

  // Fills `samples` and returns how many there are: fewer only at the end, then none.
  [[nodiscard]] std::size_t read(std::span<std::int16_t> samples, const std::stop_token& stop);

 private:
  Descriptor source_;
  Pipe samples_;
  HelperProcess process_;
  bool hasEnded_ = false;
};

}  // namespace nomely
