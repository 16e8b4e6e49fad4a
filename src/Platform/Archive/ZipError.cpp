#include "Platform/Archive/ZipError.h"

#include <fmt/format.h>

#include "Platform/Text/Printable.h"

namespace nomely {
namespace {

std::string_view codeOf(ZipError::Kind kind) {
  switch (kind) {
    case ZipError::Kind::notAnArchive:
      return "zip.notAnArchive";
    case ZipError::Kind::truncated:
      return "zip.truncated";
    case ZipError::Kind::damaged:
      return "zip.damaged";
    case ZipError::Kind::inconsistent:
      return "zip.inconsistent";
    case ZipError::Kind::unsupported:
      return "zip.unsupported";
    case ZipError::Kind::tooLarge:
      return "zip.tooLarge";
  }
  return "zip.damaged";
}

std::string textOf(ZipError::Kind kind, const std::string& entry) {
  const std::string subject =
      entry.empty() ? "压缩包" : fmt::format("压缩包中的“{}”", printable(entry));
  switch (kind) {
    case ZipError::Kind::notAnArchive:
      return "这不是 ZIP 压缩包，请另选文件";
    case ZipError::Kind::truncated:
      return fmt::format("{}不完整，请重新取得这个压缩包", subject);
    case ZipError::Kind::damaged:
      return fmt::format("{}已损坏，请重新取得这个压缩包", subject);
    case ZipError::Kind::inconsistent:
      return fmt::format("{}前后记录不一致，请重新取得这个压缩包", subject);
    case ZipError::Kind::unsupported:
      return fmt::format("{}已加密、分卷或使用了不支持的压缩方式，请重新打包后再试", subject);
    case ZipError::Kind::tooLarge:
      return fmt::format("{}过大，请重新打包后再试", subject);
  }
  return {};
}

}  // namespace

ZipError::ZipError(Kind kind, const std::string& entry)
    : Error(codeOf(kind), textOf(kind, entry)), kind_(kind) {}

}  // namespace nomely
