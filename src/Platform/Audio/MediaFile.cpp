#include "Platform/Audio/MediaFile.h"

#include <cerrno>
#include <charconv>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include "Platform/Files/FileError.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/System/Log.h"
#include "Platform/System/Uuid.h"

namespace nomely {
namespace {

constexpr auto program = "nomely-media";

void requireSuccess(HelperProcess& process, const std::stop_token& stop) {
  if (const auto line = process.readLine(stop); !line || *line != "done") throw mediaError(line);
}

}  // namespace

MediaError mediaError(const std::optional<std::string>& answer) {
  Log::information(LogChannel::app, "nomely-media: {}", answer.value_or("ended without an answer"));
  const std::string_view told = answer ? std::string_view(*answer) : "";
  using Kind = MediaError::Kind;
  if (told.starts_with("error noAudio")) return {Kind::noAudio, "文件里没有声音"};
  if (told.starts_with("error noSpace")) return {Kind::noSpace, "磁盘空间不足"};
  if (!answer || told.starts_with("error unreadable"))
    return {Kind::unreadable, "不是可读的音频文件，或者文件已损坏"};
  if (told.starts_with("error tooLong")) return {Kind::other, "声音太长"};
  return {Kind::other, "音频处理失败，详情见日志"};
}

Descriptor MediaFile::open(const std::filesystem::path& file) {
  // Of a pipe nobody writes to, opening alone would wait for ever.
  Descriptor opened(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status {};
  if (opened.get() < 0 || ::fstat(opened.get(), &status) != 0) throw FileError("读取", file, errno);
  if (!S_ISREG(status.st_mode)) throw FileError("读取", file, EINVAL);
  return opened;
}

double MediaFile::duration(const std::filesystem::path& file, const std::stop_token& stop) {
  const Descriptor source = open(file);
  HelperProcess process({.program = program, .arguments = {"probe"}, .input = source.get()});
  constexpr std::string_view answer = "duration ";
  const auto line = process.readLine(stop);
  if (!line || !line->starts_with(answer)) throw mediaError(line);
  double seconds = 0;
  std::from_chars(line->data() + answer.size(), line->data() + line->size(), seconds);
  return seconds;
}

MediaFile::Shape MediaFile::shape(const std::filesystem::path& file, std::size_t parts,
                                  const std::stop_token& stop) {
  const Descriptor source = open(file);
  HelperProcess process(
      {.program = program, .arguments = {"shape", std::to_string(parts)}, .input = source.get()});
  const auto line = process.readLine(stop);
  if (!line || !line->starts_with("shape ")) throw mediaError(line);
  std::istringstream words(line->substr(line->find(' ')));
  Shape shape;
  words >> shape.seconds;
  for (double peak = 0; shape.peaks.size() < parts && words >> peak;) shape.peaks.push_back(peak);
  return shape;
}

void MediaFile::remux(int source, int target, const std::stop_token& stop) {
  HelperProcess process(
      {.program = program, .arguments = {"remux"}, .input = source, .file = target});
  requireSuccess(process, stop);
}

void MediaFile::convertToM4A(const std::filesystem::path& source,
                             const std::filesystem::path& target, const std::stop_token& stop) {
  const Descriptor foreign = open(source);
  const auto hidden = target.parent_path() / fmt::format(".{}.part", Uuid::random().compact());
  const Descriptor made(::open(hidden.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (made.get() < 0) throw FileError("写入", target, errno);
  try {
    HelperProcess process(
        {.program = program, .arguments = {"convert"}, .input = foreign.get(), .file = made.get()});
    requireSuccess(process, stop);
    posixFileSystem().rename(hidden, target, Replacement::allow);
    posixFileSystem().syncDirectory(target.parent_path());
  } catch (...) {
    ::unlink(hidden.c_str());
    throw;
  }
}

SampleStream::SampleStream(const std::filesystem::path& file)
    : source_(MediaFile::open(file)),
      samples_(makePipe()),
      process_({.program = program,
                .arguments = {"decode"},
                .input = source_.get(),
                .file = samples_.writing.get()}) {
  // Else the pipe would never end.
  samples_.writing.close();
}

std::size_t SampleStream::read(std::span<std::int16_t> samples, const std::stop_token& stop) {
  const std::span<char> bytes(reinterpret_cast<char*>(samples.data()), samples.size_bytes());
  std::size_t filled = 0;
  while (filled < bytes.size()) {
    const std::size_t count = readFromPipe(samples_.reading.get(), bytes.subspan(filled), stop);
    if (count == 0) {
      if (filled == 0 && !std::exchange(hasEnded_, true)) requireSuccess(process_, stop);
      break;
    }
    filled += count;
  }
  return filled / sizeof(std::int16_t);
}

}  // namespace nomely
