#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace nomely {

// Writes one YAML document in block style: sequences at the indent of their key, no document
// markers, Unicode as it is. Calls follow the document's structure, keys and values alternating
// inside a mapping. Throws YamlError, for text that is not well-formed UTF-8 among others.
class YamlWriter {
 public:
  enum class Layout {
    folded,      // long values are folded at 80 columns
    singleLine,  // every scalar stays on one line
  };

  explicit YamlWriter(Layout layout);
  ~YamlWriter();
  YamlWriter(const YamlWriter&) = delete;
  YamlWriter& operator=(const YamlWriter&) = delete;

  void beginMapping();
  void endMapping();
  void beginSequence();
  void endSequence();

  // Plain where a YAML 1.1 reader takes that for the same string, else quoted.
  void string(std::string_view value);
  void integer(std::int64_t value);
  void boolean(bool value);
  void floatingPoint(double value);

  // The document, ending in a line feed. Ends the writing.
  [[nodiscard]] std::string finish();

 private:
  struct Emitter;

  [[nodiscard]] std::string withPlaceholders(std::string_view value);

  std::unique_ptr<Emitter> emitter_;
  std::string placeheld_;  // what the placeholders in the output stand for, in order
};

}  // namespace nomely
