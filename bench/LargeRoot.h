#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "bench/Corpus.h"

namespace nomely::bench {

// A root of a hundred thousand memos, written when it is first asked for.
struct LargeRoot {
  std::filesystem::path folder;
  CorpusSummary summary;
  std::vector<std::filesystem::path> days;  // their folders
};

// In memory where the machine has that: what is measured there is our own work and the kernel's.
[[nodiscard]] const LargeRoot& rootInMemory();
// On the disk of the workspace, every byte written out.
[[nodiscard]] const LargeRoot& rootOnDisk();

// The least that going through the memo files of a day can take.
template <typename Visit>
void forEachMemoFile(const std::filesystem::path& day, Visit visit) {
  for (const auto& entry : std::filesystem::directory_iterator(day))
    if (entry.path().extension() == ".md") visit(entry.path().c_str());
}

// The whole program nomely-bench-bare-read over the root.
void readAndParse(const LargeRoot& root, std::size_t threads);

// The whole program ripgrep over the folder. False when there is none.
[[nodiscard]] bool searchWithRipgrep(const std::string& word, const std::filesystem::path& folder);

}  // namespace nomely::bench
