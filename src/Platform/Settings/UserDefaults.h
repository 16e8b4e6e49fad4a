#pragma once

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Files/DirectoryLock.h"
#include "Platform/Files/FileManager.h"

namespace nomely {

// Small markers and window states by key, outside the user's data: a JSON object in the file
// defaults.json of a folder. Every call reads the file, so that processes see each other's changes;
// a change is atomic and excludes other processes. A file that can't be parsed counts as empty for
// reading and is kept under the name defaults.json.corrupt by the next change.
//
// Safe on any thread. Changes throw FileError; reads never throw.
class UserDefaults {
 public:
  UserDefaults(std::filesystem::path folder, const FileManager& files);

  // Absent when the key is missing or holds another type.
  [[nodiscard]] std::optional<bool> boolean(std::string_view key) const;
  [[nodiscard]] std::optional<std::int64_t> integer(std::string_view key) const;
  [[nodiscard]] std::optional<std::string> string(std::string_view key) const;
  [[nodiscard]] std::optional<std::vector<std::string>> strings(std::string_view key) const;

  void setBoolean(std::string_view key, bool value);
  void setInteger(std::string_view key, std::int64_t value);
  void setString(std::string_view key, const std::string& value);
  void setStrings(std::string_view key, const std::vector<std::string>& values);
  void remove(std::string_view key);

 private:
  template <typename Value>
  [[nodiscard]] std::optional<Value> value(std::string_view key) const;
  template <typename Change>
  void change(Change apply);

  std::filesystem::path folder_;
  FileManager files_;
  std::mutex mutex_;
  DirectoryLock lock_;
};

}  // namespace nomely
