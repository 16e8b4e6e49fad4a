#pragma once

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Files/FileSystem.h"

namespace nomely::test {

// A file system over another of whose calls, opened files' included, the n-th fails. Calls count
// from 1. Safe on any thread.
class FaultyFileSystem : public FileSystem {
 public:
  enum class Mode {
    fail,      // the call does nothing and fails with `errorNumber`
    partial,   // it reads or writes half of what it could; a copy fails half-way; others: untouched
    failLate,  // the call is done, and then fails all the same
  };

  struct Fault {
    Mode mode = Mode::fail;
    std::uint64_t atCall = 0;  // 0: never
    int errorNumber = EIO;
    std::uint64_t every = 0;  // after how many calls it strikes again; 0: it does not
  };

  struct Call {
    std::string_view name;
    std::filesystem::path path;
  };

  // `observer` is called before each call, struck or not.
  using Observer = std::function<void(const Call&)>;
  FaultyFileSystem(FileSystem& inner, Fault fault, Observer observer = {})
      : inner_(inner), fault_(fault), observer_(std::move(observer)) {}

  [[nodiscard]] std::uint64_t calls() const { return calls_; }  // so far

  // Whether Mode::partial makes a difference to such a call.
  [[nodiscard]] static bool canBePartial(const Call& call);

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
  bool exchange(const std::filesystem::path& left, const std::filesystem::path& right) override;
  bool link(const std::filesystem::path& from, const std::filesystem::path& to) override;
  void syncFileSystem(const std::filesystem::path& directory) override;
  std::uint64_t freeSpace(const std::filesystem::path& directory) override;
  bool isMountPoint(const std::filesystem::path& directory) override;

 private:
  friend class FaultyFile;

  // Runs one call of the inner file system under the fault. `half` does it by half.
  template <typename Whole, typename Half>
  auto guarded(std::string_view name, const std::filesystem::path& path, Whole whole, Half half);
  template <typename Whole>
  auto guarded(std::string_view name, const std::filesystem::path& path, Whole whole);
  // Whether the fault strikes this call, which it counts.
  [[nodiscard]] bool strikes(std::string_view name, const std::filesystem::path& path);
  [[noreturn]] void fail(const std::filesystem::path& path) const;

  FileSystem& inner_;
  Fault fault_;
  Observer observer_;
  std::atomic<std::uint64_t> calls_ = 0;
};

}  // namespace nomely::test
