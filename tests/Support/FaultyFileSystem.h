#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Files/FileSystem.h"

namespace nomely::test {

// A file system over another whose calls, opened files' included, fail or end the process at the
// n-th of them. Calls count from 1. For one thread.
class FaultyFileSystem final : public FileSystem {
 public:
  enum class Mode {
    fail,        // the call does nothing and fails with `errorNumber`
    shortWrite,  // a write takes one byte and succeeds, or fails with `errorNumber` when repeated
    failAfter,   // the call is done, and then fails all the same
    die,         // the process ends with `deathStatus` before the call
    dieAfter,    // and after it
  };
  static constexpr int deathStatus = 77;

  struct Fault {
    Mode mode = Mode::fail;
    std::uint64_t atCall = 0;  // 0: never
    int errorNumber = 5;
    bool lasting = false;  // every later call too
  };

  FaultyFileSystem(FileSystem& inner, Fault fault) : inner_(inner), fault_(fault) {}

  [[nodiscard]] std::uint64_t calls() const { return calls_; }
  // Calls pass untouched from here on.
  void heal() { fault_ = {}; }

  std::unique_ptr<File> open(const std::filesystem::path& path, OpenMode mode,
                             LinkPolicy links) override;
  std::optional<FileAttributes> attributes(const std::filesystem::path& path,
                                           LinkPolicy links) override;
  std::vector<DirectoryEntry> list(const std::filesystem::path& directory) override;
  bool makeDirectory(const std::filesystem::path& path, unsigned permissions) override;
  void rename(const std::filesystem::path& from, const std::filesystem::path& to,
              Replacement replacement) override;
  bool remove(const std::filesystem::path& path) override;
  void syncDirectory(const std::filesystem::path& path) override;

 private:
  friend class FaultyFile;

  // Runs one call of the inner file system under the fault.
  template <typename Call>
  auto guarded(const std::filesystem::path& path, Call call);
  // Whether the fault strikes this call; counts it.
  [[nodiscard]] bool strikes();

  FileSystem& inner_;
  Fault fault_;
  std::uint64_t calls_ = 0;
};

}  // namespace nomely::test
