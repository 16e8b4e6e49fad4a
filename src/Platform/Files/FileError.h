#pragma once

#include <filesystem>
#include <string_view>

#include "Platform/Error.h"

namespace nomely {

// A refusal of the file system. The one place where an errno becomes an error of ours.
class FileError : public Error {
 public:
  enum class Kind {
    notFound,
    alreadyExists,
    accessDenied,
    readOnly,
    noSpace,
    tooManyOpenFiles,
    notADirectory,
    isADirectory,
    symbolicLink,
    nameTooLong,
    inputOutput,
    tooLarge,
    busy,
    unsupported,
    other,
  };

  // `operation` is a Chinese verb phrase as in "读取"; `errorNumber` is an errno.
  FileError(std::string_view operation, const std::filesystem::path& path, int errorNumber);

  [[nodiscard]] Kind kind() const noexcept { return kind_; }
  [[nodiscard]] int errorNumber() const noexcept { return errorNumber_; }
  [[nodiscard]] const std::filesystem::path& path() const noexcept { return path_; }

 private:
  Kind kind_;
  int errorNumber_;
  std::filesystem::path path_;
};

}  // namespace nomely
