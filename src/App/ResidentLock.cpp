#include "App/ResidentLock.h"

#include "Platform/Error.h"
#include "Platform/System/Log.h"

namespace nomely {

bool ResidentLock::acquire() {
  storage_.write([&] { storage_.files.createDirectories(storage_.paths.metaFolder(), 0700); });
  const DirectoryLock::Attempt attempt = lock_.attempt();
  if (attempt == DirectoryLock::Attempt::unsupported)
    Log::error(LogChannel::app, "{} 所在的文件系统没有锁，不能防止运行两个 nomely run",
               storage_.paths.metaFolder().string());
  return attempt != DirectoryLock::Attempt::busy;
}

bool ResidentLock::isHeld(const StoreContext& storage) noexcept {
  try {
    return DirectoryLock(storage.paths.metaFolder()).attempt() == DirectoryLock::Attempt::busy;
  } catch (const Error&) {
    return false;  // no such folder: nobody has been resident here
  }
}

}  // namespace nomely
