#include "Core/Markdown/Editing/NumberedListContinuation.h"

#include "Core/Markdown/Editing/ListMarkers.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

std::u16string_view lastLine(std::u16string_view text) {
  return text.substr(text.rfind(u'\n') + 1);
}

std::optional<ListMarkers::Number> countedNumber(std::u16string_view line) {
  constexpr std::int64_t last = 99;
  const auto number = ListMarkers::number(line);
  if (!number || !number->value || *number->value < 1 || *number->value > last) return std::nullopt;
  return number;
}

}  // namespace

std::optional<NumberedListContinuation::Result> NumberedListContinuation::continuation(
    std::u16string_view afterNewline) {
  if (!afterNewline.ends_with(u'\n')) return std::nullopt;
  afterNewline.remove_suffix(1);
  const std::u16string_view line = lastLine(afterNewline);
  const auto number = countedNumber(line);
  if (!number) return std::nullopt;
  std::u16string_view rest = line.substr(number->length);
  // One white space belongs to the number, a line break too; what is left has to be blanks.
  if (ListMarkers::spaceLength(rest) > 0) rest.remove_prefix(1);
  return Result{*number->value + 1, trimHorizontal(toUtf8(rest)).empty()};
}

std::int64_t NumberedListContinuation::nextNumber(std::u16string_view fromCurrentLine) {
  const auto number = countedNumber(lastLine(fromCurrentLine));
  return number ? *number->value + 1 : 1;
}

std::optional<std::u16string> PlainAutoNumbering::handleAutoNumbering(
    std::u16string_view oldValue, std::u16string_view newValue) {
  if (newValue.size() <= oldValue.size() || !newValue.ends_with(u'\n')) {
    nextNumber_ = NumberedListContinuation::nextNumber(newValue);
    return std::nullopt;
  }
  const auto next = NumberedListContinuation::continuation(newValue);
  nextNumber_ = next && !next->endsList ? next->nextNumber : 1;
  if (!next) return std::nullopt;
  if (next->endsList) return std::u16string(newValue.substr(0, newValue.size() - 1));
  std::u16string numbered(newValue);
  return numbered.append(toUtf16(std::to_string(nextNumber_))).append(u". ");
}

}  // namespace nomely
