#include "Media/SampleTable.h"

#include <algorithm>
#include <cerrno>
#include <string_view>

#include <sys/stat.h>
#include <unistd.h>

namespace nomely::media {
namespace {

constexpr std::uint64_t largestSample = std::uint64_t{1} << 20U;
constexpr std::uint64_t largestCopiedBox = std::uint64_t{1} << 16U;
constexpr std::size_t mostBoxes = 1000;
constexpr int deepestBox = 4;  // moov, trak, mdia, minf, stbl

std::size_t readAt(int file, void* to, std::size_t size, std::uint64_t offset) {
  ssize_t count = -1;
  do {
    count = ::pread(file, to, size, static_cast<off_t>(offset));
  } while (count < 0 && errno == EINTR);
  return count > 0 ? static_cast<std::size_t>(count) : 0;
}

std::uint64_t bigEndian(const unsigned char* bytes, unsigned size) {
  std::uint64_t value = 0;
  for (unsigned i = 0; i < size; ++i) value = value << 8U | bytes[i];
  return value;
}

// 0 outside the file.
std::uint64_t numberAt(int file, std::uint64_t offset, unsigned size = 4) {
  std::array<unsigned char, 8> bytes{};
  return readAt(file, bytes.data(), size, offset) == size ? bigEndian(bytes.data(), size) : 0;
}

void appendNumber(std::string& to, std::uint64_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) to += static_cast<char>(value >> shift);
}

bool isOneOf(std::string_view type, std::initializer_list<std::string_view> types) {
  return std::ranges::find(types, type) != types.end();
}

}  // namespace

std::uint64_t TableReader::at(std::uint64_t index) {
  if (index >= count_) return 0;
  if (index / window != loaded_) {
    loaded_ = index / window;
    const std::uint64_t first = loaded_ * window;
    bytes_.assign(std::min(window, count_ - first) * integerSize_, 0);
    (void)readAt(file_, bytes_.data(), bytes_.size(), begin_ + first * integerSize_);
  }
  return bigEndian(bytes_.data() + index % window * integerSize_, integerSize_);
}

struct SampleTable::Box {
  std::string type;
  std::uint64_t begin = 0;    // of its head
  std::uint64_t payload = 0;  // after it
  std::uint64_t end = 0;
};

std::vector<SampleTable::Box> SampleTable::boxesIn(int file, std::uint64_t begin,
                                                   std::uint64_t end) {
  std::vector<Box> boxes;
  while (begin + 8 <= end && boxes.size() < mostBoxes) {
    std::array<char, 4> type{};
    (void)readAt(file, type.data(), type.size(), begin + 4);
    std::uint64_t size = numberAt(file, begin);
    const bool isLarge = size == 1;
    if (isLarge) size = numberAt(file, begin + 8, 8);
    const std::uint64_t head = isLarge ? 16 : 8;
    if (size < head || size > end - begin) break;
    boxes.push_back({{type.data(), type.size()}, begin, begin + head, begin + size});
    begin += size;
  }
  return boxes;
}

std::unique_ptr<SampleTable> SampleTable::ofLongFile(int file, std::uint64_t least) {
  std::unique_ptr<SampleTable> table(new SampleTable(file));
  return table->read(least) ? std::move(table) : nullptr;
}

bool SampleTable::read(std::uint64_t least) {
  struct stat status {};
  if (::fstat(file_, &status) != 0) return false;
  const auto all = boxesIn(file_, 0, static_cast<std::uint64_t>(status.st_size));
  const auto movie = std::ranges::find(all, "moov", &Box::type);
  if (all.empty() || all.front().type != "ftyp" || movie == all.end()) return false;
  const auto parts = boxesIn(file_, movie->payload, movie->end);
  const auto isSoundTrack = [this](const Box& box) { return box.type == "trak" && isSound(box); };
  // One of several is for the library to choose, and fragments are for it to join.
  if (std::ranges::count_if(parts, isSoundTrack) != 1 ||
      std::ranges::find(parts, "mvex", &Box::type) != parts.end())
    return false;
  const Box track = *std::ranges::find_if(parts, isSoundTrack);
  // Samples of one size are bare numbers, thousands of which make a packet.
  if (!readTables(track, 0) || sizeOfAll_ != 0 || sizes_.count() < least || chunkRuns_.count() == 0)
    return false;
  appendEmptied(all.front(), track, header_);
  appendEmptied(*movie, track, header_);
  return true;
}

bool SampleTable::isSound(const Box& track) const {
  constexpr std::uint64_t soun = 0x736F756E;
  for (const Box& media : boxesIn(file_, track.payload, track.end))
    if (media.type == "mdia")
      for (const Box& handler : boxesIn(file_, media.payload, media.end))
        if (handler.type == "hdlr") return numberAt(file_, handler.payload + 8) == soun;
  return false;
}

bool SampleTable::readTables(const Box& track, int depth) {
  bool isUnknown = false;
  for (const Box& box : boxesIn(file_, track.payload, track.end)) {
    // After version and flags.
    const std::uint64_t begin = box.payload + 4;
    const std::uint64_t room = box.end - std::min(box.end, begin + 4);
    const auto table = [&](unsigned integerSize, unsigned integersOfEntry) {
      const std::uint64_t count = numberAt(file_, begin) * integersOfEntry;
      return TableReader(file_, begin + 4, integerSize, std::min(count, room / integerSize));
    };
    if (isOneOf(box.type, {"mdia", "minf", "stbl"}) && depth < 3)
      isUnknown = !readTables(box, depth + 1) || isUnknown;
    if (box.type == "stts") durationRuns_ = table(4, 2);
    if (box.type == "stsc") chunkRuns_ = table(4, 3);
    if (box.type == "stco") chunkOffsets_ = table(4, 1);
    if (box.type == "co64") chunkOffsets_ = table(8, 1);
    if (box.type == "stsz") {
      sizeOfAll_ = numberAt(file_, begin);
      sizes_ = TableReader(file_, begin + 8, 4, std::min(numberAt(file_, begin + 4), room / 4));
    }
    isUnknown = isUnknown || box.type == "stz2";
  }
  return !isUnknown;
}

void SampleTable::appendEmptied(const Box& box, const Box& track, std::string& to,
                                int depth) const {
  if (depth > deepestBox + 1 || (box.type == "trak" && box.begin != track.begin)) return;
  if (isOneOf(box.type, {"udta", "meta", "edts", "free", "skip", "stss", "ctts", "sdtp"})) return;
  std::string content;
  if (isOneOf(box.type, {"moov", "trak", "mdia", "minf", "stbl"})) {
    for (const Box& inner : boxesIn(file_, box.payload, box.end))
      appendEmptied(inner, track, content, depth + 1);
  } else if (isOneOf(box.type, {"stts", "stsc", "stco", "co64"})) {
    content.assign(8, '\0');
  } else if (box.type == "stsz") {
    content.assign(12, '\0');
  } else {
    if (box.end - box.payload > largestCopiedBox) return;
    content.resize(box.end - box.payload);
    (void)readAt(file_, content.data(), content.size(), box.payload);
  }
  appendNumber(to, content.size() + 8);
  to.append(box.type).append(content);
}

bool SampleTable::beginChunk() {
  if (chunk_ >= chunkOffsets_.count()) return false;
  constexpr std::uint64_t fields = 3;
  while ((chunkRun_ + 1) * fields < chunkRuns_.count() &&
         chunkRuns_.at((chunkRun_ + 1) * fields) <= chunk_ + 1)
    ++chunkRun_;
  leftInChunk_ = chunkRuns_.at(chunkRun_ * fields + 1);
  offset_ = chunkOffsets_.at(chunk_++);
  return true;
}

// Makes offset_ and durationRun_ those of the next sample.
bool SampleTable::findNext() {
  if (sample_ >= sizes_.count()) return false;
  while (leftInChunk_ == 0)
    if (!beginChunk()) return false;
  while (usedOfRun_ >= durationRuns_.at(durationRun_ * 2) &&
         durationRun_ * 2 + 2 < durationRuns_.count()) {
    ++durationRun_;
    usedOfRun_ = 0;
  }
  return true;
}

std::int64_t SampleTable::duration() {
  return static_cast<std::int64_t>(durationRuns_.at(durationRun_ * 2 + 1));
}

void SampleTable::advance() {
  time_ += duration();
  offset_ += sizes_.at(sample_);
  ++usedOfRun_;
  --leftInChunk_;
  ++sample_;
}

void SampleTable::skipTo(std::int64_t time) {
  while (findNext() && time_ + duration() <= time) advance();
}

bool SampleTable::next(AVPacket& packet) {
  ::av_packet_unref(&packet);
  if (!findNext()) return false;
  const std::uint64_t size = sizes_.at(sample_);
  if (size > largestSample || ::av_new_packet(&packet, static_cast<int>(size)) < 0) return false;
  if (readAt(file_, packet.data, size, offset_) != size) return false;
  packet.pts = packet.dts = time_;
  packet.duration = duration();
  packet.flags |= AV_PKT_FLAG_KEY;
  advance();
  return true;
}

}  // namespace nomely::media
