#include <string_view>

#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "bench/BareParse.h"
#include "bench/Comparison.h"
#include "bench/Workspace.h"

namespace nomely::bench {
namespace {

std::vector<std::string_view> headers() {
  std::vector<std::string_view> all;
  for (const MemoryFile& file : filesInMemory()) all.push_back(headerOf(file.content));
  return all;
}

Steps steps() {
  return {
      .floor =
          [all = headers()](std::size_t turn) {
            for (std::size_t i = 0; i < filesInStep; ++i)
              readEvents(all[(turn * filesInStep + i) % all.size()]);
          },
      .ours =
          [](std::size_t turn) {
            for (std::size_t i = 0; i < filesInStep; ++i) {
              auto parsed =
                  MemoFrontmatterParser::parse(fileInMemory(turn * filesInStep + i).content);
              benchmark::DoNotOptimize(parsed);
            }
          },
      .units = filesInStep,
  };
}

}  // namespace

void registerParsing() {
  registerComparison(
      {.what = "parse a memo (floor: YAML events)", .prepare = steps, .goal = {.ratio = 1.5}});
}

}  // namespace nomely::bench
