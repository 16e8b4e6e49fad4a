#include "Platform/Network/ReplyBody.h"

#include <cerrno>
#include <new>

#include <fcntl.h>
#include <unistd.h>

namespace nomely {
namespace {

constexpr auto writing = "写入";

}  // namespace

ReplyBody::ReplyBody(std::uint64_t most, std::optional<std::filesystem::path> file)
    : most_(most), path_(std::move(file)) {
  if (!path_) return;
  if (::unlink(path_->c_str()) != 0 && errno != ENOENT) throw FileError(writing, *path_, errno);
  file_ = Descriptor(::open(path_->c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (file_.get() < 0) throw FileError(writing, *path_, errno);
}

ReplyBody::~ReplyBody() {
  if (file_.get() >= 0) ::unlink(path_->c_str());
}

bool ReplyBody::take(std::string_view bytes) noexcept {
  size_ += bytes.size();
  isTooLarge_ = size_ > most_;
  if (isTooLarge_) return false;
  if (path_) return write(bytes);
  try {
    text_ += bytes;
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

bool ReplyBody::write(std::string_view bytes) noexcept {
  while (!bytes.empty()) {
    const ssize_t count = ::write(file_.get(), bytes.data(), bytes.size());
    if (count >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      failure_ = errno;
      return false;
    }
  }
  return true;
}

void ReplyBody::throwIfUnwritten() const {
  if (failure_ != 0) throw FileError(writing, *path_, failure_);
}

std::string ReplyBody::finished() {
  throwIfUnwritten();
  // A network's file system tells of a full disk only here.
  if (path_ && ::close(file_.release()) != 0) {
    failure_ = errno;
    ::unlink(path_->c_str());
    throwIfUnwritten();
  }
  return std::move(text_);
}

}  // namespace nomely
