#include "Platform/Settings/FileSecrets.h"

#include <fmt/format.h>

#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

constexpr unsigned folderPermissions = 0700;
constexpr unsigned filePermissions = 0600;
constexpr std::uint64_t largestFile = std::uint64_t{1} << 20;

bool isStore(const Json& json) {
  if (!json.is_object()) return false;
  for (const auto& accounts : json) {
    if (!accounts.is_object()) return false;
    for (const auto& value : accounts)
      if (!value.is_string()) return false;
  }
  return true;
}

}  // namespace

FileSecrets::FileSecrets(std::filesystem::path folder, const FileManager& files)
    : folder_(std::move(folder)), file_(folder_ / "secrets.json"), files_(files), lock_(folder_) {}

std::optional<Json> FileSecrets::read() const {
  try {
    const auto found = files_.attributes(file_);
    if (!found) return std::nullopt;
    files_.setPermissions(folder_, folderPermissions);
    if (files_.setPermissions(file_, filePermissions))
      Log::error(
          LogChannel::app,
          "⚠️ FileSecrets.read: 密钥文件曾能被他人读取，已收回权限：{}",
          file_.string());
    const auto bytes = files_.read(file_, largestFile);
    if (!bytes) return std::nullopt;
    Json json = Json::parse(*bytes, nullptr, false);
    if (isStore(json)) return json;
  } catch (const FileError& error) {
    throw SecretError(SecretError::Kind::unavailable,
                      fmt::format("密钥文件读不出：{}", error.what()));
  }
  throw SecretError(SecretError::Kind::unavailable,
                    fmt::format("密钥文件已损坏，请移走它再重新设置密钥：{}", file_.string()));
}

SecretLookup FileSecrets::lookUp(std::string_view service, std::string_view account) {
  try {
    const std::lock_guard guard(mutex_);
    const std::optional<Json> all = read();
    if (!all) return {};
    const auto accounts = all->find(std::string(service));
    if (accounts == all->end()) return {};
    const auto found = accounts->find(std::string(account));
    if (found == accounts->end()) return {};
    return {SecretLookup::State::found, found->get<std::string>()};
  } catch (const SecretError& error) {
    return {.state = SecretLookup::State::unavailable, .problem = error.what()};
  }
}

void FileSecrets::change(const std::function<void(Json& secrets)>& apply) {
  const std::lock_guard guard(mutex_);
  try {
    files_.createDirectories(folder_, folderPermissions);
    // Without locks on that file system two processes may still lose one's change to the other.
    const bool isLocked = lock_.lock([] {});
    struct Unlock {
      DirectoryLock* lock;
      ~Unlock() {
        if (lock != nullptr) lock->unlock();
      }
    } const unlock{isLocked ? &lock_ : nullptr};
    if (isLocked) files_.sweepTemporaries(folder_);
    const std::optional<Json> before = read();
    Json secrets = before.value_or(Json::object());
    apply(secrets);
    if (before == secrets || (!before && secrets.empty())) return;
    const std::string bytes = secrets.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
    if (before)
      files_.writeAtomically(file_, bytes);
    else if (files_.createAtomically(file_, bytes, filePermissions))
      Log::information(LogChannel::app,
                       "⚠️ FileSecrets.store: "
                       "没有可用的密钥环，密钥存在只有本人能读的文件里：{}",
                       file_.string());
    else
      throw SecretError(SecretError::Kind::failed, "密钥文件刚被别的程序改动，请再试一次");
  } catch (const FileError& error) {
    throw SecretError(SecretError::Kind::failed, fmt::format("密钥没能存下：{}", error.what()));
  }
}

SecretPlace FileSecrets::store(std::string_view service, std::string_view account,
                               std::string_view value) {
  change([&](Json& secrets) { secrets[std::string(service)][std::string(account)] = value; });
  return SecretPlace::ownFile;
}

void FileSecrets::remove(std::string_view service, std::string_view account) {
  if (!files_.exists(file_)) return;
  change([&](Json& secrets) {
    const auto accounts = secrets.find(service);
    if (accounts != secrets.end()) accounts->erase(std::string(account));
  });
}

}  // namespace nomely
