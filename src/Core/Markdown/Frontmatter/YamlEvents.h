#pragma once

#include <string_view>

#include <yaml.h>

namespace nomely {

// The events of libyaml's parser, one after another. For this folder's sources.
class YamlEvents {
 public:
  class Event {
   public:
    Event() = default;
    ~Event() { yaml_event_delete(&event_); }
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    yaml_event_t* operator->() { return &event_; }
    yaml_event_t* get() { return &event_; }

   private:
    yaml_event_t event_{};
  };

  // Borrows `source`, which is well-formed UTF-8.
  explicit YamlEvents(std::string_view source);
  ~YamlEvents() { yaml_parser_delete(&parser_); }
  YamlEvents(const YamlEvents&) = delete;
  YamlEvents& operator=(const YamlEvents&) = delete;

  // Fills an `event` that is empty. Throws YamlError.
  void next(Event& event);

 private:
  std::string_view source_;
  yaml_parser_t parser_{};
};

// Whether `source`, a valid YamlDocument, holds anything besides keys and values: comments, anchors
// and aliases, tags, document markers.
[[nodiscard]] bool holdsMoreThanValues(std::string_view source);

}  // namespace nomely
