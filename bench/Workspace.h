#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Core/Storage/StoreContext.h"
#include "bench/Corpus.h"

namespace nomely::bench {

// The folder that benchmarks write to, new for each run; it goes when the program ends. On the file
// system of NOMELY_BENCH_FOLDER, else of the folder that the program lies in: the one for
// temporary files is often no disk.
[[nodiscard]] const std::filesystem::path& workspace();

// A folder of the same kind in memory, where making things durable costs nothing; absent on a
// machine without one.
[[nodiscard]] const std::optional<std::filesystem::path>& memoryWorkspace();

// Where this program and those built with it lie.
[[nodiscard]] std::filesystem::path programFolder();

[[nodiscard]] StoreContext contextFor(const std::filesystem::path& root);

struct MemoryFile {
  CorpusMemo memo;
  std::string content;
};
// The memos of a corpus of that many, as files in memory; made once.
[[nodiscard]] const std::vector<MemoryFile>& filesInMemory();
// One of them, in turn.
[[nodiscard]] const MemoryFile& fileInMemory(std::size_t turn);

// Steps too short for the clock go through that many files.
constexpr std::size_t filesInStep = 100;
[[nodiscard]] double bytesInStep();

}  // namespace nomely::bench
