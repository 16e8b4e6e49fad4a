#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Platform/Text/Unicode.h"
#include "bench/Comparison.h"
#include "bench/Workspace.h"

namespace nomely::bench {
namespace {

template <typename Work>
Steps overFiles(Work work) {
  return {
      .ours =
          [work](std::size_t turn) {
            for (std::size_t i = 0; i < filesInStep; ++i) {
              auto result = work(fileInMemory(turn * filesInStep + i));
              benchmark::DoNotOptimize(result);
            }
          },
      .units = filesInStep,
      .bytes = bytesInStep(),
  };
}

Steps validation() {
  return overFiles([](const MemoryFile& file) { return isValidUtf8(file.content); });
}

Steps serialization() {
  return overFiles([](const MemoryFile& file) {
    return MemoFrontmatterParser::serialize(file.memo.frontmatter, file.memo.body);
  });
}

}  // namespace

void registerText() {
  registerComparison({.what = "isValidUtf8 of a memo", .prepare = validation});
  registerComparison({.what = "serialize a memo", .prepare = serialization});
}

}  // namespace nomely::bench
