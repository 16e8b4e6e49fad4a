#include "Platform/System/LazyLibrary.h"

#include <dlfcn.h>
#include <fmt/format.h>

namespace nomely {

LazyLibrary::MissingError::MissingError(const std::string& name)
    : Error("library.missing",
            fmt::format("这台电脑缺少组件 {}，请用系统的软件包管理器安装后再试", name)) {}

void* LazyLibrary::symbol(const char* name) const {
  const std::lock_guard lock(mutex_);
  if (handle_ == nullptr) handle_ = ::dlopen(fileName_.c_str(), RTLD_LAZY | RTLD_LOCAL);
  if (handle_ == nullptr) throw MissingError(fileName_);
  void* const found = ::dlsym(handle_, name);
  if (found == nullptr) throw MissingError(fmt::format("{}（{}）", fileName_, name));
  return found;
}

}  // namespace nomely
