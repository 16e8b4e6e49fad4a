#include <stdexcept>
#include <string_view>

#include <yaml.h>

#include "Core/Markdown/MemoFrontmatterParser.h"
#include "bench/Comparison.h"
#include "bench/Workspace.h"

namespace nomely::bench {
namespace {

std::vector<std::string_view> headers() {
  constexpr std::string_view opening = "---\n";
  std::vector<std::string_view> all;
  for (const MemoryFile& file : filesInMemory()) {
    const std::string_view content = file.content;
    const std::size_t end = content.find("\n---\n");
    all.push_back(content.substr(opening.size(), end + 1 - opening.size()));
  }
  return all;
}

// Nothing but the library's own work on a header.
void readEvents(std::string_view header) {
  yaml_parser_t parser;
  yaml_parser_initialize(&parser);
  yaml_parser_set_input_string(&parser, reinterpret_cast<const unsigned char*>(header.data()),
                               header.size());
  bool ended = false;
  while (!ended) {
    yaml_event_t event;
    if (yaml_parser_parse(&parser, &event) == 0) throw std::runtime_error("unreadable header");
    ended = event.type == YAML_STREAM_END_EVENT;
    yaml_event_delete(&event);
  }
  yaml_parser_delete(&parser);
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
