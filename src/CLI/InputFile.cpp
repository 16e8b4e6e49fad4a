#include "CLI/InputFile.h"

#include <array>
#include <cerrno>

#include <fmt/format.h>
#include <unistd.h>

#include "CLI/Terminal.h"
#include "CLI/UsageError.h"
#include "Platform/Files/FileError.h"

namespace nomely {

std::string InputFile::readStandardInput() {
  std::string text;
  std::array<char, 65536> buffer{};
  for (;;) {
    const ssize_t count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw FileError("读取", "标准输入", errno);
    if (count == 0) return text;
    text.append(buffer.data(), static_cast<std::size_t>(count));
  }
}

std::string InputFile::read(const FileManager& files, const std::optional<std::string>& name) {
  if (!name && Terminal::isInput()) throw UsageError("请给出文件名，或用管道送入内容");
  if (!name || *name == "-") return readStandardInput();
  auto bytes = files.read(*name);
  if (!bytes) throw NameNotFoundError(fmt::format("找不到文件：{}", *name));
  return *std::move(bytes);
}

}  // namespace nomely
