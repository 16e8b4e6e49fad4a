#include "Platform/Text/RegularExpression.h"

#include <stdexcept>

#include <fmt/format.h>
#include <unicode/regex.h>
#include <unicode/unistr.h>

namespace nomely {
namespace {

// ICU counts time in steps of its match engine, roughly milliseconds on slow machines.
constexpr int32_t timeLimit = 500;
constexpr int32_t stackLimit = 8 << 20;  // bytes

// Shares the caller's buffer, which outlives the matcher.
icu::UnicodeString aliasOf(std::u16string_view text) {
  return icu::UnicodeString(false, text.data(), static_cast<int32_t>(text.size()));
}

}  // namespace

struct RegularExpression::Compiled {
  std::unique_ptr<icu::RegexPattern> pattern;

  [[nodiscard]] std::unique_ptr<icu::RegexMatcher> matcher(const icu::UnicodeString& text) const {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::RegexMatcher> made(pattern->matcher(text, status));
    if (U_SUCCESS(status)) {
      made->setTimeLimit(timeLimit, status);
      made->setStackLimit(stackLimit, status);
    }
    if (U_FAILURE(status)) throw std::bad_alloc();
    return made;
  }
};

RegularExpression::RegularExpression(std::string_view pattern)
    : compiled_(std::make_unique<Compiled>()) {
  UErrorCode status = U_ZERO_ERROR;
  UParseError where{};
  const auto source = icu::UnicodeString::fromUTF8(
      icu::StringPiece(pattern.data(), static_cast<int32_t>(pattern.size())));
  compiled_->pattern.reset(icu::RegexPattern::compile(source, where, status));
  if (U_FAILURE(status))
    throw std::invalid_argument(
        fmt::format("{} at {} in {}", u_errorName(status), where.offset, pattern));
}

RegularExpression::~RegularExpression() = default;
RegularExpression::RegularExpression(RegularExpression&&) noexcept = default;
RegularExpression& RegularExpression::operator=(RegularExpression&&) noexcept = default;

void RegularExpression::forEachMatch(std::u16string_view text,
                                     const std::function<bool(Match)>& visit) const {
  const icu::UnicodeString source = aliasOf(text);
  const auto matcher = compiled_->matcher(source);
  UErrorCode status = U_ZERO_ERROR;
  while (matcher->find(status) != 0 && U_SUCCESS(status)) {
    Match match;
    for (int32_t group = 0; group <= matcher->groupCount(); ++group) {
      const int32_t begin = matcher->start(group, status);
      const int32_t end = matcher->end(group, status);
      if (begin < 0)
        match.groups.emplace_back();
      else
        match.groups.emplace_back(
            TextRange{static_cast<std::size_t>(begin), static_cast<std::size_t>(end)});
    }
    if (!visit(std::move(match))) return;
  }
}

bool RegularExpression::matchesIn(std::u16string_view text) const {
  return firstMatch(text).has_value();
}

std::optional<RegularExpression::Match> RegularExpression::firstMatch(
    std::u16string_view text) const {
  std::optional<Match> first;
  forEachMatch(text, [&](Match match) {
    first = std::move(match);
    return false;
  });
  return first;
}

std::vector<RegularExpression::Match> RegularExpression::matches(std::u16string_view text) const {
  std::vector<Match> all;
  forEachMatch(text, [&](Match match) {
    all.push_back(std::move(match));
    return true;
  });
  return all;
}

std::u16string RegularExpression::replacingMatches(std::u16string_view text,
                                                   std::u16string_view replacement) const {
  const icu::UnicodeString source = aliasOf(text);
  const auto matcher = compiled_->matcher(source);
  UErrorCode status = U_ZERO_ERROR;
  const icu::UnicodeString replaced = matcher->replaceAll(aliasOf(replacement), status);
  if (U_FAILURE(status)) return std::u16string(text);
  return {replaced.getBuffer(), static_cast<std::size_t>(replaced.length())};
}

}  // namespace nomely
