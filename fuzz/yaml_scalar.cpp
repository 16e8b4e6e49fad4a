// What a scalar means, and that what is written as a string or a number means the same when read.

#include <bit>
#include <cmath>
#include <cstring>

#include "Core/Markdown/Frontmatter/YamlDocument.h"
#include "Core/Markdown/Frontmatter/YamlScalar.h"
#include "Core/Markdown/Frontmatter/YamlWriter.h"
#include "Platform/Text/Unicode.h"
#include "fuzz/Fuzzing.h"

namespace {

using namespace nomely;
using fuzz::require;
using Type = YamlScalar::Type;

void checkMeaning(std::string_view text) {
  const Type type = YamlScalar::resolvePlain(text);
  const auto integer = YamlScalar::integer(text);
  const auto number = YamlScalar::floatingPoint(text);
  require(YamlScalar::boolean(text).has_value() == (type == Type::boolean));
  if (integer) require(type == Type::integer && number == static_cast<double>(*integer));
  if (type == Type::string || type == Type::timestamp) require(!integer);
}

void checkString(std::string_view text) {
  if (!isValidUtf8(text)) return;
  for (const auto layout : {YamlWriter::Layout::folded, YamlWriter::Layout::singleLine}) {
    YamlWriter writer(layout);
    writer.beginSequence();
    writer.string(text);
    writer.endSequence();
    const YamlDocument document(writer.finish());
    document.root().forEachItem([&](const YamlDocument::Node& item) {
      require(item.text() == text);
      if (item.isPlain()) require(YamlScalar::resolvePlain(text) == Type::string);
    });
  }
}

void checkNumber(double number) {
  const std::string text = YamlScalar::text(number);
  require(YamlScalar::resolvePlain(text) == Type::floatingPoint);
  const auto read = YamlScalar::floatingPoint(text);
  require(read && (std::isnan(number) ? std::isnan(*read)
                                      : std::bit_cast<std::uint64_t>(*read) ==
                                            std::bit_cast<std::uint64_t>(number)));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = fuzz::textOf(data, size);
  checkMeaning(text);
  checkString(text);
  double number = 0;
  std::memcpy(&number, data, std::min(size, sizeof number));
  checkNumber(number);
  return 0;
}
