#include "Core/Markdown/Editing/TextSelection.h"

#include <algorithm>

namespace nomely {
namespace {

bool splitsPair(std::u16string_view text, std::size_t at) {
  const auto isHigh = [](char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; };
  const auto isLow = [](char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; };
  return at > 0 && at < text.size() && isHigh(text[at - 1]) && isLow(text[at]);
}

}  // namespace

TextRange normalized(TextSelection selection, std::u16string_view text) {
  const std::size_t begin = std::min(selection.location, text.size());
  const std::size_t end = begin + std::min(selection.length, text.size() - begin);
  const std::size_t wholeBegin = splitsPair(text, begin) ? begin - 1 : begin;
  if (begin == end) return {wholeBegin, wholeBegin};
  return {wholeBegin, splitsPair(text, end) ? end + 1 : end};
}

}  // namespace nomely
