#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace nomely {

// Reads text in one of the old encodings that go by numbers: 1252, 936 and the like. For one thread
// at a time.
class CodePage {
 public:
  // An unknown number counts as 1252.
  explicit CodePage(int number);
  ~CodePage();
  CodePage(CodePage&&) noexcept;
  CodePage& operator=(CodePage&&) noexcept;

  // Bytes that the encoding does not define become U+FFFD.
  [[nodiscard]] std::u16string decode(std::string_view bytes);

 private:
  struct Converter;
  std::unique_ptr<Converter> converter_;
};

}  // namespace nomely
