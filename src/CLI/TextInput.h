#pragma once

#include <optional>
#include <string>

#include "CLI/EditorDraft.h"
#include "CLI/Session.h"

namespace nomely {

// Where the text of a memo comes from: an argument, standard input for "-" or without a terminal,
// else the user's editor. Throws UsageError, and Error for text that is not UTF-8.
class TextInput {
 public:
  explicit TextInput(Session& session) : session_(session) {}
  ~TextInput();
  TextInput(const TextInput&) = delete;
  TextInput& operator=(const TextInput&) = delete;

  // `argument` is what was given on the command line; `original` is what an editor starts with.
  // Absent when an editor left the text as it was.
  [[nodiscard]] std::optional<std::string> read(const std::optional<std::string>& argument,
                                                const std::string& original);

  // The text has been saved: what the editor left can go. Without this call it is kept, and the
  // user is told where.
  void accept();

 private:
  [[nodiscard]] std::optional<std::string> fromEditor(const std::string& original);

  Session& session_;
  std::optional<EditorDraft> draft_;  // holds text that is not saved yet
};

}  // namespace nomely
