#pragma once

#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>

#include "Platform/Files/DirectoryLock.h"
#include "Platform/Files/FileManager.h"
#include "Platform/Settings/SecretBackend.h"
#include "Platform/Text/Json.h"

namespace nomely {

// Secrets in the file secrets.json of a folder, both for their owner alone: for machines without a
// keyring. A change is atomic and excludes other processes. Wider permissions, which somebody gave
// since, are taken back. A file that can't be read or parsed makes its secrets unavailable and is
// never written. Safe on any thread.
class FileSecrets final : public SecretBackend {
 public:
  FileSecrets(std::filesystem::path folder, const FileManager& files);

  [[nodiscard]] SecretLookup lookUp(std::string_view service, std::string_view account) override;
  SecretPlace store(std::string_view service, std::string_view account,
                    std::string_view value) override;
  void remove(std::string_view service, std::string_view account) override;

 private:
  // All secrets by service and account; absent without a file. Throws SecretError.
  [[nodiscard]] std::optional<Json> read() const;
  void change(const std::function<void(Json& secrets)>& apply);

  std::filesystem::path folder_;
  std::filesystem::path file_;
  FileManager files_;
  std::mutex mutex_;
  DirectoryLock lock_;
};

}  // namespace nomely
