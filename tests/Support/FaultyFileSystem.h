#pragma once

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

// A file system over another whose calls, opened files' included, fail or end the process at the
// n-th of them. Calls count from 1. For one thread.
class FaultyFileSystem final : public FileSystem {
 public:
  enum class Mode {
    fail,      // the call does nothing and fails with `errorNumber`
    partial,   // it reads or writes half of what it could; a copy fails half-way; others: untouched
    failLate,  // the call is done, and then fails all the same
    die,       // the process ends with `deathStatus` before the call
    dieLate,   // and after it
  };
  static constexpr int deathStatus = 77;

  struct Fault {
    Mode mode = Mode::fail;
    std::uint64_t atCall = 0;  // 0: never
    int errorNumber = EIO;
    bool lasting = false;  // every later call too; with Mode::partial they fail
    // Called once, where the fault strikes: before a call that isn't done, after one that is.
    std::function<void()> onStrike = {};
  };

  struct Call {
    std::string_view name;
    std::filesystem::path path;
  };

  FaultyFileSystem(FileSystem& inner, Fault fault) : inner_(inner), fault_(std::move(fault)) {}

  // Every call so far.
  [[nodiscard]] const std::vector<Call>& calls() const { return calls_; }
  // Calls pass untouched from here on.
  void heal() { fault_ = {}; }

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

 private:
  friend class FaultyFile;
  enum class Strike { none, first, repeated };

  // Runs one call of the inner file system under the fault. `half` does it by half.
  template <typename Whole, typename Half>
  auto guarded(std::string_view name, const std::filesystem::path& path, Whole whole, Half half);
  template <typename Whole>
  auto guarded(std::string_view name, const std::filesystem::path& path, Whole whole);
  // Whether the fault strikes this call; counts it.
  [[nodiscard]] Strike next(std::string_view name, const std::filesystem::path& path);
  void announce(Strike strike) const;
  [[noreturn]] void fail(const std::filesystem::path& path) const;

  FileSystem& inner_;
  Fault fault_;
  std::vector<Call> calls_;
};

}  // namespace nomely::test
