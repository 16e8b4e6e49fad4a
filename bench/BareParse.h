#pragma once

#include <stdexcept>
#include <string_view>

#include <yaml.h>

namespace nomely::bench {

// What stands between the two lines "---" of a memo file.
inline std::string_view headerOf(std::string_view content) {
  constexpr std::string_view opening = "---\n";
  const std::size_t end = content.find("\n---\n");
  return content.substr(opening.size(), end + 1 - opening.size());
}

// Nothing but the library's own work on a header.
inline void readEvents(std::string_view header) {
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

}  // namespace nomely::bench
