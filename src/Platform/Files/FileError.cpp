#include "Platform/Files/FileError.h"

#include <array>
#include <cerrno>

#include <fmt/format.h>

namespace nomely {
namespace {

struct Mapping {
  int errorNumber;
  FileError::Kind kind;
  std::string_view code;
  std::string_view reason;
};

constexpr std::array mappings{
    Mapping{ENOENT, FileError::Kind::notFound, "file.notFound", "文件或文件夹不存在"},
    Mapping{EEXIST, FileError::Kind::alreadyExists, "file.alreadyExists", "同名文件已存在"},
    Mapping{ENOTEMPTY, FileError::Kind::alreadyExists, "file.alreadyExists", "文件夹不是空的"},
    Mapping{EACCES, FileError::Kind::accessDenied, "file.accessDenied", "没有访问权限"},
    Mapping{EPERM, FileError::Kind::accessDenied, "file.accessDenied", "不允许此操作"},
    Mapping{EROFS, FileError::Kind::readOnly, "file.readOnly", "文件系统是只读的"},
    Mapping{ENOSPC, FileError::Kind::noSpace, "file.noSpace", "磁盘空间不足"},
    Mapping{EDQUOT, FileError::Kind::noSpace, "file.noSpace", "磁盘配额已用完"},
    Mapping{EMFILE, FileError::Kind::tooManyOpenFiles, "file.tooManyOpenFiles", "打开的文件过多"},
    Mapping{ENFILE, FileError::Kind::tooManyOpenFiles, "file.tooManyOpenFiles",
            "系统打开的文件过多"},
    Mapping{ENOTDIR, FileError::Kind::notADirectory, "file.notADirectory", "不是文件夹"},
    Mapping{EISDIR, FileError::Kind::isADirectory, "file.isADirectory", "这是一个文件夹"},
    Mapping{ELOOP, FileError::Kind::symbolicLink, "file.symbolicLink", "是符号链接或链接成环"},
    Mapping{ENAMETOOLONG, FileError::Kind::nameTooLong, "file.nameTooLong", "名称过长"},
    Mapping{EIO, FileError::Kind::inputOutput, "file.inputOutput", "磁盘读写出错"},
    Mapping{ENXIO, FileError::Kind::inputOutput, "file.inputOutput", "设备不可用"},
    Mapping{ENODEV, FileError::Kind::inputOutput, "file.inputOutput", "设备不可用"},
    Mapping{ESTALE, FileError::Kind::inputOutput, "file.inputOutput", "网络文件夹已断开或变动"},
    Mapping{EFBIG, FileError::Kind::tooLarge, "file.tooLarge", "文件过大"},
    Mapping{EOVERFLOW, FileError::Kind::tooLarge, "file.tooLarge", "文件过大"},
    Mapping{EBUSY, FileError::Kind::busy, "file.busy", "正被系统或其他程序占用"},
    Mapping{ETXTBSY, FileError::Kind::busy, "file.busy", "正被系统或其他程序占用"},
    Mapping{EOPNOTSUPP, FileError::Kind::unsupported, "file.unsupported", "文件系统不支持此操作"},
    Mapping{ENOSYS, FileError::Kind::unsupported, "file.unsupported", "系统不支持此操作"},
    Mapping{EINVAL, FileError::Kind::unsupported, "file.unsupported", "名称或操作不被文件系统接受"},
    Mapping{EILSEQ, FileError::Kind::unsupported, "file.unsupported", "名称含有不被接受的字符"},
    Mapping{EXDEV, FileError::Kind::unsupported, "file.unsupported", "两处不在同一个文件系统"},
};

Mapping mappingFor(int errorNumber) {
  for (const Mapping& mapping : mappings)
    if (mapping.errorNumber == errorNumber) return mapping;
  return {errorNumber, FileError::Kind::other, "file.other", {}};
}

std::string describe(std::string_view operation, const std::filesystem::path& path,
                     int errorNumber) {
  const std::string_view known = mappingFor(errorNumber).reason;
  const std::string reason =
      known.empty() ? fmt::format("系统错误 {}", errorNumber) : std::string(known);
  return fmt::format("{}“{}”失败：{}", operation, path.string(), reason);
}

}  // namespace

FileError::FileError(std::string_view operation, const std::filesystem::path& path, int errorNumber)
    : Error(mappingFor(errorNumber).code, describe(operation, path, errorNumber)),
      kind_(mappingFor(errorNumber).kind),
      errorNumber_(errorNumber),
      path_(path) {}

}  // namespace nomely
