#include "Support/FaultyFileSystem.h"

#include <utility>

#include <unistd.h>

#include "Platform/Files/FileError.h"

namespace nomely::test {

bool FaultyFileSystem::strikes() {
  ++calls_;
  return fault_.atCall != 0 && (fault_.lasting ? calls_ >= fault_.atCall : calls_ == fault_.atCall);
}

template <typename Call>
auto FaultyFileSystem::guarded(const std::filesystem::path& path, Call call) {
  if (!strikes()) return call();
  switch (fault_.mode) {
    case Mode::shortWrite:
    case Mode::fail:
      break;
    case Mode::failAfter:
      call();
      break;
    case Mode::die:
      ::_exit(deathStatus);
    case Mode::dieAfter:
      call();
      ::_exit(deathStatus);
  }
  throw FileError("测试", path, fault_.errorNumber);
}

class FaultyFile final : public File {
 public:
  FaultyFile(FaultyFileSystem& owner, std::unique_ptr<File> inner, std::filesystem::path path)
      : owner_(owner), inner_(std::move(inner)), path_(std::move(path)) {}

  std::size_t read(std::span<char> buffer) override {
    return owner_.guarded(path_, [&] { return inner_->read(buffer); });
  }

  std::size_t write(std::string_view bytes) override {
    if (owner_.fault_.mode == FaultyFileSystem::Mode::shortWrite && bytes.size() > 1) {
      // The disk takes a last byte and has no room for the next.
      if (owner_.strikes()) return inner_->write(bytes.substr(0, 1));
      return inner_->write(bytes);
    }
    return owner_.guarded(path_, [&] { return inner_->write(bytes); });
  }

  void sync() override {
    owner_.guarded(path_, [&] { inner_->sync(); });
  }
  FileAttributes attributes() override {
    return owner_.guarded(path_, [&] { return inner_->attributes(); });
  }
  void copyContents(File& source) override {
    owner_.guarded(path_, [&] { inner_->copyContents(*dynamic_cast<FaultyFile&>(source).inner_); });
  }
  void copyMetadata(File& source) override {
    owner_.guarded(path_, [&] { inner_->copyMetadata(*dynamic_cast<FaultyFile&>(source).inner_); });
  }
  void setPermissions(unsigned permissions) override {
    owner_.guarded(path_, [&] { inner_->setPermissions(permissions); });
  }

 private:
  FaultyFileSystem& owner_;
  std::unique_ptr<File> inner_;
  std::filesystem::path path_;
};

std::unique_ptr<File> FaultyFileSystem::open(const std::filesystem::path& path, OpenMode mode,
                                             LinkPolicy links) {
  return guarded(path, [&]() -> std::unique_ptr<File> {
    auto inner = inner_.open(path, mode, links);
    if (!inner) return nullptr;
    return std::make_unique<FaultyFile>(*this, std::move(inner), path);
  });
}

std::optional<FileAttributes> FaultyFileSystem::attributes(const std::filesystem::path& path,
                                                           LinkPolicy links) {
  return guarded(path, [&] { return inner_.attributes(path, links); });
}

std::vector<DirectoryEntry> FaultyFileSystem::list(const std::filesystem::path& directory) {
  return guarded(directory, [&] { return inner_.list(directory); });
}

bool FaultyFileSystem::makeDirectory(const std::filesystem::path& path, unsigned permissions) {
  return guarded(path, [&] { return inner_.makeDirectory(path, permissions); });
}

void FaultyFileSystem::rename(const std::filesystem::path& from, const std::filesystem::path& to,
                              Replacement replacement) {
  guarded(to, [&] { inner_.rename(from, to, replacement); });
}

bool FaultyFileSystem::remove(const std::filesystem::path& path) {
  return guarded(path, [&] { return inner_.remove(path); });
}

void FaultyFileSystem::syncDirectory(const std::filesystem::path& path) {
  guarded(path, [&] { inner_.syncDirectory(path); });
}

}  // namespace nomely::test
