#include "AI/Transcription/SpeechTranscriber.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "Platform/Audio/MediaFile.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"
#include "Platform/Files/FileManager.h"
#include "Platform/Files/PrivateFolder.h"
#include "Platform/System/Log.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

std::string textOf(TranscriberError::Kind kind, const std::string& detail) {
  switch (kind) {
    case TranscriberError::Kind::recognitionFailed:
      return "语音识别失败: " + detail;
    case TranscriberError::Kind::audioExportFailed:
      return "音频切片失败: " + detail;
    case TranscriberError::Kind::notAuthorized:
      break;
  }
  return "未授权语音识别，请在系统设置中允许";
}

void append(std::string& bytes, std::uint32_t value, int size) {
  for (int i = 0; i < size; ++i) bytes += static_cast<char>(value >> (8 * i));
}

// A WAV file of those samples.
std::string waveOf(std::span<const std::int16_t> samples) {
  static_assert(std::endian::native == std::endian::little);
  constexpr std::uint32_t headerSize = 36;
  const auto size = static_cast<std::uint32_t>(samples.size_bytes());
  std::string bytes;
  bytes.reserve(headerSize + 8 + size);
  bytes += "RIFF";
  append(bytes, headerSize + size, 4);
  bytes += "WAVEfmt ";
  append(bytes, 16, 4);
  append(bytes, 1, 2);  // PCM
  append(bytes, 1, 2);  // channel
  append(bytes, SampleStream::rate, 4);
  append(bytes, SampleStream::rate * 2, 4);
  append(bytes, 2, 2);   // bytes a sample
  append(bytes, 16, 2);  // bits a sample
  bytes += "data";
  append(bytes, size, 4);
  return bytes.append(reinterpret_cast<const char*>(samples.data()), size);
}

// One file from its first piece to its last.
class Transcription {
 public:
  Transcription(const std::filesystem::path& source, SpeechRecognizer& recognizer,
                const std::filesystem::path& temporaryFolder, const std::stop_token& stop)
      : recognizer_(recognizer),
        folder_(temporaryFolder, "transcription"),
        samples_(source),
        stop_(stop) {}

  // Throws TranscriberError.
  [[nodiscard]] Recognition recognize(std::size_t index, const SegmentRange& range) {
    const std::filesystem::path piece = exportSegment(index, range);
    // A piece of a moment at the end may turn out to have nothing in it.
    if (piece.empty()) return {};
    Recognition heard = recognizing(piece);
    FileManager(posixFileSystem()).removeFile(piece);
    for (AudioTranscriptSegment& segment : heard.segments) segment.start += range.start;
    return heard;
  }

 private:
  std::filesystem::path exportSegment(std::size_t index, const SegmentRange& range) {
    try {
      const auto samples = samplesOf(range);
      if (samples.empty()) return {};
      std::filesystem::path piece = folder_.path() / fmt::format("segment_{}.wav", index);
      FileManager(posixFileSystem()).writeAtomically(piece, waveOf(samples));
      return piece;
    } catch (const CancellationError&) {
      throw;
    } catch (const Error& error) {
      throw TranscriberError(TranscriberError::Kind::audioExportFailed, error.what());
    }
  }

  // The stream goes on where the piece before ended.
  std::span<const std::int16_t> samplesOf(const SegmentRange& range) {
    // Servers refuse what is shorter than a tenth of a second.
    constexpr std::size_t least = SampleStream::rate / 2;
    const double end =
        range.duration > 0 ? range.start + range.duration : SpeechTranscriber::segmentLength;
    const auto last = static_cast<std::size_t>(std::llround(end * SampleStream::rate));
    buffer_.resize(last - taken_);
    const std::size_t count = samples_.read(buffer_, stop_);
    taken_ = last;
    buffer_.resize(count);
    if (count > 0 && count < least) buffer_.resize(least);
    return buffer_;
  }

  Recognition recognizing(const std::filesystem::path& piece) {
    try {
      return recognizer_.recognize(piece, stop_);
    } catch (const CancellationError&) {
      throw;
    } catch (const TranscriberError&) {
      throw;
    } catch (const Error& error) {
      throw TranscriberError(TranscriberError::Kind::recognitionFailed, error.what());
    }
  }

  SpeechRecognizer& recognizer_;
  PrivateFolder folder_;
  SampleStream samples_;
  const std::stop_token& stop_;
  std::vector<std::int16_t> buffer_;
  std::size_t taken_ = 0;  // samples of the stream
};

bool isAscii(char byte) {
  return static_cast<unsigned char>(byte) < 0x80;
}

void add(Recognition heard, TranscriptionResult& result) {
  const std::string_view text = trimSpaceAndBreaks(heard.text);
  if (!text.empty()) {
    // Chinese goes on without a blank.
    if (!result.text.empty() && isAscii(result.text.back()) && isAscii(text.front()))
      result.text += ' ';
    result.text += text;
  }
  std::ranges::move(heard.segments, std::back_inserter(result.transcript.segments));
}

}  // namespace

TranscriberError::TranscriberError(Kind kind, const std::string& detail)
    : Error("transcriber", textOf(kind, detail)), kind_(kind) {}

std::string TranscriptionProgress::message() const {
  if (total < 2) return "正在转文字...";
  return fmt::format("正在转文字 {}/{}", current, total);
}

SpeechTranscriber::Authorization SpeechTranscriber::requestAuthorization() const {
  return recognizer_ ? Authorization::authorized : Authorization::notDetermined;
}

std::vector<SegmentRange> SpeechTranscriber::segmentRanges(double duration) {
  if (!std::isfinite(duration) || duration <= 0) return {{0, 0}};
  std::vector<SegmentRange> ranges;
  ranges.reserve(static_cast<std::size_t>(duration / segmentLength) + 1);
  for (double start = 0; start < duration; start += segmentLength)
    ranges.push_back({start, std::min(segmentLength, duration - start)});
  return ranges;
}

TranscriptionResult SpeechTranscriber::transcribeWithTimeline(const std::filesystem::path& file,
                                                              const OnProgress& onProgress,
                                                              const std::stop_token& stop) {
  using Kind = TranscriberError::Kind;
  const std::lock_guard lock(mutex_);
  if (requestAuthorization() != Authorization::authorized)
    throw TranscriberError(Kind::notAuthorized);
  if (!recognizer_->isAvailable())
    throw TranscriberError(Kind::recognitionFailed, "语音识别服务不可用");
  double duration = 0;
  try {
    duration = MediaFile::duration(file, stop);
  } catch (const MediaError& error) {
    throw TranscriberError(Kind::audioExportFailed, error.what());
  }

  const std::vector<SegmentRange> ranges = segmentRanges(duration);
  TranscriptionResult result;
  result.totalSegmentCount = static_cast<int>(ranges.size());
  Transcription transcription(file, *recognizer_, temporaryFolder_, stop);
  for (std::size_t i = 0; i < ranges.size(); ++i) {
    throwIfStopped(stop);
    if (onProgress)
      onProgress({.current = static_cast<int>(i + 1), .total = result.totalSegmentCount});
    try {
      add(transcription.recognize(i + 1, ranges[i]), result);
    } catch (const TranscriberError& error) {
      if (ranges.size() == 1) throw;
      Log::error(LogChannel::app, "⚠️ SpeechTranscriber: {}/{}: {}", i + 1, ranges.size(),
                 error.what());
      ++result.failedSegmentCount;
    }
  }
  if (result.failedSegmentCount == result.totalSegmentCount)
    throw TranscriberError(Kind::recognitionFailed,
                           fmt::format("长录音共 {} 段，全部转写失败", result.totalSegmentCount));
  result.transcript.text = result.text;
  return result;
}

}  // namespace nomely
