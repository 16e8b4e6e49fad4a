#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Media/Libav.h"

namespace nomely::media {

// Integers of a table in a file, big-endian and of one size, read a window at a time.
class TableReader {
 public:
  TableReader() = default;
  TableReader(int file, std::uint64_t begin, unsigned integerSize, std::uint64_t count)
      : file_(file), begin_(begin), integerSize_(integerSize), count_(count) {}

  [[nodiscard]] std::uint64_t count() const { return count_; }
  // 0 for what lies outside the table or the file.
  [[nodiscard]] std::uint64_t at(std::uint64_t index);

 private:
  static constexpr std::uint64_t window = 8192;  // integers

  int file_ = -1;
  std::uint64_t begin_ = 0;
  unsigned integerSize_ = 4;
  std::uint64_t count_ = 0;
  std::uint64_t loaded_ = UINT64_MAX;  // the number of the window
  std::vector<unsigned char> bytes_;
};

// The samples of a plain MP4 file with hours of sound, one after the other. The library's demuxer
// keeps tens of bytes for each of them in memory, a million and a half for ten hours; this reads
// the file's own tables a window at a time.
class SampleTable {
 public:
  // Fewer samples cost the library's demuxer a few megabytes: the sound of forty minutes.
  static constexpr std::uint64_t usualLeast = 100'000;

  // Null for a file with fewer than `least` samples, and for any other kind of file.
  [[nodiscard]] static std::unique_ptr<SampleTable> ofLongFile(int file,
                                                               std::uint64_t least = usualLeast);

  // A file with the same sound track and no samples, from which the demuxer learns the encoding.
  [[nodiscard]] const std::string& header() const { return header_; }
  // The next sample; false at the end, and where the file breaks off. Times are in units of the
  // track's.
  [[nodiscard]] bool next(AVPacket& packet);
  // Leaves out the samples that end before `time`.
  void skipTo(std::int64_t time);

 private:
  struct Box;
  struct Parts;

  explicit SampleTable(int file) : file_(file) {}
  [[nodiscard]] static std::vector<Box> boxesIn(int file, std::uint64_t begin, std::uint64_t end);
  [[nodiscard]] bool read(std::uint64_t least);
  [[nodiscard]] bool readTables(const Box& track, int depth);
  [[nodiscard]] bool isSound(const Box& track) const;
  void appendEmptied(const Box& box, const Box& track, std::string& to, int depth = 0) const;
  [[nodiscard]] bool beginChunk();
  [[nodiscard]] bool findNext();
  [[nodiscard]] std::int64_t duration();
  void advance();

  int file_;
  std::string header_;
  TableReader sizes_;
  std::uint64_t sizeOfAll_ = 0;  // 0: sizes_ has each
  TableReader chunkOffsets_;
  TableReader chunkRuns_;     // first chunk (from 1), samples of each, an index
  TableReader durationRuns_;  // samples, duration of each

  std::uint64_t sample_ = 0;
  std::uint64_t chunk_ = 0;  // the next one
  std::uint64_t chunkRun_ = 0;
  std::uint64_t leftInChunk_ = 0;
  std::uint64_t offset_ = 0;
  std::uint64_t durationRun_ = 0;
  std::uint64_t usedOfRun_ = 0;
  std::int64_t time_ = 0;
};

}  // namespace nomely::media
