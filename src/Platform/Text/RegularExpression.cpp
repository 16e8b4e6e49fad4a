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

// By hand: the library's own templates also give a meaning to backslashes and to a "$" that names
// no group.
void appendReplacement(std::u16string& output, std::u16string_view replacement,
                       std::u16string_view text, const RegularExpression::Match& match) {
  for (std::size_t at = 0; at < replacement.size();) {
    // As many digits as still name a group.
    std::size_t group = 0;
    std::size_t end = at + 1;
    while (replacement[at] == u'$' && end < replacement.size() && replacement[end] >= u'0' &&
           replacement[end] <= u'9') {
      const std::size_t longer = group * 10 + static_cast<std::size_t>(replacement[end] - u'0');
      if (longer >= match.groups.size()) break;
      group = longer;
      ++end;
    }
    if (end == at + 1)
      output += replacement[at];
    else if (const auto& range = match.groups[group])
      output += text.substr(range->begin, range->length());
    at = end;
  }
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

bool RegularExpression::forEachMatch(std::u16string_view text,
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
    if (!visit(std::move(match))) return true;
  }
  return U_SUCCESS(status) != 0;
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
  std::u16string replaced;
  std::size_t copied = 0;
  const bool finished = forEachMatch(text, [&](const Match& match) {
    replaced += text.substr(copied, match.whole().begin - copied);
    appendReplacement(replaced, replacement, text, match);
    copied = match.whole().end;
    return true;
  });
  if (!finished) return std::u16string(text);
  return replaced.append(text.substr(copied));
}

}  // namespace nomely
