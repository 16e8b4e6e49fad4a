#include "Core/Markdown/Text/LinkDetector.h"

#include <algorithm>
#include <array>
#include <optional>
#include <unordered_set>

#include "Core/Extensions/PathNames.h"
#include "Platform/Text/Ascii.h"
#include "Platform/Text/HostNames.h"
#include "Platform/Text/PercentEncoding.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr auto npos = std::string_view::npos;
constexpr std::string_view authorityMark = "://";
constexpr std::size_t longestHost = 253;
constexpr std::size_t longestLabel = 63;

// Endings of host names that people write as the endings of files more often.
constexpr std::array<std::string_view, 12> fileEndings{"md", "mk", "ml", "mov", "pl", "pm",
                                                       "ps", "py", "rs", "sh",  "tf", "zip"};

bool isDigit(char32_t c) {
  return c >= '0' && c <= '9';
}
bool isAsciiWord(char32_t c) {
  return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
// Of scripts that are written without blanks.
bool isEastAsian(char32_t c) {
  return c >= 0x2E80;
}
bool isWord(char32_t c) {
  return c < 0x80 ? isAsciiWord(c) : isLetterOrNumber(c) || isMark(c);
}
bool isOneOf(std::string_view characters, char32_t c) {
  return c < 0x80 && characters.find(static_cast<char>(c)) != npos;
}

bool isHostOfLabels(std::string_view host) {
  if (host.size() > longestHost) return false;
  for (std::size_t begin = 0; begin <= host.size();) {
    const std::size_t end = std::min(host.find('.', begin), host.size());
    const std::string_view label = host.substr(begin, end - begin);
    if (label.empty() || label.size() > longestLabel || label.starts_with('-') ||
        label.ends_with('-'))
      return false;
    begin = end + 1;
  }
  return true;
}

bool mayBeFileName(std::string_view lowerCaseHost) {
  return std::ranges::find(fileEndings, lowerCaseHost.substr(lowerCaseHost.rfind('.') + 1)) !=
         fileEndings.end();
}

// Goes through the text once, from one dot or colon to the next, as no link lacks both.
class LinkScanner {
 public:
  explicit LinkScanner(std::string_view text) : text_(text) {}

  std::vector<LinkDetector::Place> scan() {
    for (std::size_t at = 0; at < text_.size();) {
      if (text_[at] == ':')
        at = consumed_ = passColon(at);
      else if (text_[at] == '.')
        at = consumed_ = passDot(at);
      else
        ++at;
    }
    return std::move(places_);
  }

 private:
  // Both add the link around that place, if there is one, and tell where to go on. What lies
  // before that is never looked at again.
  std::size_t passColon(std::size_t colon);
  std::size_t passDot(std::size_t dot);

  [[nodiscard]] char at(std::size_t place) const {
    return place < text_.size() ? text_[place] : '\0';
  }
  [[nodiscard]] std::optional<std::size_t> schemeBefore(std::size_t colon) const;
  [[nodiscard]] std::size_t userEnd(std::size_t begin) const;
  [[nodiscard]] std::size_t hostEnd(std::size_t begin) const;
  [[nodiscard]] std::size_t bareBegin(std::size_t dot) const;
  [[nodiscard]] std::size_t bareEnd(std::size_t dot) const;
  [[nodiscard]] std::size_t portEnd(std::size_t hostEnd) const;
  [[nodiscard]] std::size_t tailEnd(std::size_t begin) const;
  [[nodiscard]] std::size_t endInSentence(std::size_t begin, std::size_t end) const;

  std::string_view text_;
  std::vector<LinkDetector::Place> places_;
  std::size_t consumed_ = 0;
};

std::size_t LinkScanner::passColon(std::size_t colon) {
  const auto scheme = schemeBefore(colon);
  if (!scheme) return colon + 1;
  const std::size_t host = userEnd(colon + authorityMark.size());
  const std::size_t end = hostEnd(host);
  if (end == host) return host;
  if (end - host > longestHost) return end;
  const std::size_t stop = tailEnd(portEnd(end));
  places_.push_back({*scheme, endInSentence(*scheme, stop), true});
  return stop;
}

std::optional<std::size_t> LinkScanner::schemeBefore(std::size_t colon) const {
  if (!text_.substr(colon).starts_with(authorityMark)) return std::nullopt;
  for (const std::string_view scheme : {"http", "https"}) {
    if (colon - consumed_ < scheme.size()) break;
    const std::size_t begin = colon - scheme.size();
    if (loweredAscii(text_.substr(begin, scheme.size())) == scheme &&
        (begin == 0 || !isAsciiWord(static_cast<unsigned char>(text_[begin - 1]))))
      return begin;
  }
  return std::nullopt;
}

// After the "@" of a user's name that a host follows, `begin` without one.
std::size_t LinkScanner::userEnd(std::size_t begin) const {
  std::size_t end = begin;
  while (isAsciiWord(static_cast<unsigned char>(at(end))) ||
         (end < text_.size() && isOneOf("-._~%!$&*+,;=:", static_cast<unsigned char>(text_[end]))))
    ++end;
  return end > begin && at(end) == '@' ? end + 1 : begin;
}

std::size_t LinkScanner::hostEnd(std::size_t begin) const {
  if (at(begin) == '[') {
    const std::size_t end = text_.find_first_not_of("0123456789abcdefABCDEF:.", begin + 1);
    return end != npos && end > begin + 1 && text_[end] == ']' ? end + 1 : begin;
  }
  std::size_t end = begin;
  char32_t previous = 0;
  while (end < text_.size()) {
    const DecodedCharacter next = decodeFirst(text_.substr(end));
    const bool joins = end > begin && isOneOf("-_.", next.value);
    const bool isProse = isEastAsian(next.value) && isAsciiWord(previous);
    if (isProse || !(joins || isWord(next.value))) break;
    previous = next.value;
    end += next.length;
  }
  return end;
}

std::size_t LinkScanner::passDot(std::size_t dot) {
  const std::size_t begin = bareBegin(dot);
  const std::size_t end = bareEnd(dot);
  // A sentence may end right before a scheme.
  if (text_.substr(end).starts_with(authorityMark)) return text_.rfind('.', end - 1) + 1;
  const bool isPartOfMore =
      (begin > 0 && isOneOf("@/\\_#%&+~$", static_cast<unsigned char>(text_[begin - 1]))) ||
      (end < text_.size() && isOneOf("@\\_%&+=~$", static_cast<unsigned char>(text_[end])));
  std::size_t first = begin;
  std::size_t last = end;
  while (first < last && isOneOf("-.", static_cast<unsigned char>(text_[first]))) ++first;
  while (first < last && isOneOf("-.", static_cast<unsigned char>(text_[last - 1]))) --last;
  if (isPartOfMore || !isHostOfLabels(text_.substr(first, last - first))) return end;
  const std::string host = loweredAscii(text_.substr(first, last - first));
  if (!hasPublicSuffix(host)) return end;
  // Marks after the name end it.
  const std::size_t port = last == end ? portEnd(last) : last;
  if (mayBeFileName(host) && !host.starts_with("www.") && at(port) != '/') return end;
  const std::size_t stop = last == end ? tailEnd(port) : last;
  places_.push_back({first, endInSentence(first, stop), false});
  return std::max(stop, end);
}

// Bare names are of ASCII and such letters as are not written beside them in Chinese text, each of
// those two bytes.
std::size_t LinkScanner::bareBegin(std::size_t dot) const {
  std::size_t begin = dot;
  while (begin > consumed_) {
    const auto before = static_cast<unsigned char>(text_[begin - 1]);
    if (isAsciiWord(before) || before == '-' || before == '.')
      --begin;
    else if (before >= 0x80 && begin - consumed_ >= 2 &&
             decodeFirst(text_.substr(begin - 2)).length == 2 &&
             isWord(decodeFirst(text_.substr(begin - 2)).value))
      begin -= 2;
    else
      break;
  }
  return begin;
}

std::size_t LinkScanner::bareEnd(std::size_t dot) const {
  std::size_t end = dot;
  while (end < text_.size()) {
    const DecodedCharacter next = decodeFirst(text_.substr(end));
    if (next.length > 2 || !(isWord(next.value) || isOneOf("-.", next.value))) break;
    end += next.length;
  }
  return end;
}

std::size_t LinkScanner::portEnd(std::size_t hostEnd) const {
  constexpr std::size_t mostDigits = 5;
  if (at(hostEnd) != ':') return hostEnd;
  std::size_t end = hostEnd + 1;
  while (isDigit(static_cast<unsigned char>(at(end)))) ++end;
  const std::size_t digits = end - hostEnd - 1;
  return digits > 0 && digits <= mostDigits ? end : hostEnd;
}

// The end of path, query and fragment, `begin` where none begins.
std::size_t LinkScanner::tailEnd(std::size_t begin) const {
  std::size_t end = begin;
  if (at(begin) != '/' && at(begin) != '?' && at(begin) != '#') return end;
  std::string open;  // the brackets that close what is open
  char32_t previous = 0;
  while (end < text_.size()) {
    const DecodedCharacter next = decodeFirst(text_.substr(end));
    if (next.value < 0x80) {
      const char c = text_[end];
      if (next.value <= ' ' || next.value == 0x7F || isOneOf("\"<>\\^`{|}", next.value)) break;
      if (c == '(') open += ')';
      if (c == '[') open += ']';
      if (c == ')' || c == ']') {
        if (!open.ends_with(c)) break;
        open.pop_back();
      }
    } else if (!isWord(next.value) || (isEastAsian(next.value) && isAsciiWord(previous))) {
      break;
    }
    previous = next.value;
    end += next.length;
  }
  return end;
}

std::size_t LinkScanner::endInSentence(std::size_t begin, std::size_t end) const {
  while (end > begin && isOneOf(".,;:!?'*_~([", static_cast<unsigned char>(text_[end - 1]))) --end;
  return end;
}

// UTF-16 units of a text up to places that come in rising order.
class UnitCounter {
 public:
  explicit UnitCounter(std::string_view text) : text_(text) {}

  std::size_t upTo(std::size_t place) {
    for (; counted_ < place; ++counted_) {
      const auto byte = static_cast<unsigned char>(text_[counted_]);
      if ((byte & 0xC0U) != 0x80U) units_ += byte >= 0xF0 ? 2 : 1;
    }
    return units_;
  }

 private:
  std::string_view text_;
  std::size_t counted_ = 0;  // bytes that `units_` stands for
  std::size_t units_ = 0;
};

// As it is where it can't be decoded to a text.
std::string readable(std::string_view text) {
  auto decoded = percentDecoded(text);
  return decoded && isValidUtf8(*decoded) ? *std::move(decoded) : std::string(text);
}

}  // namespace

LinkResultCache::Links LinkDetector::links(std::string_view body) {
  LinkResultCache& cache = LinkResultCache::shared();
  if (auto known = cache.get(body)) return known;
  auto links = std::make_shared<const std::vector<DetectedLink>>(computeLinks(body));
  cache.set(links, body);
  return links;
}

std::vector<DetectedLink> LinkDetector::computeLinks(std::string_view text) {
  std::vector<DetectedLink> links;
  std::unordered_set<std::string> seen;
  UnitCounter units(text);
  for (const Place& place : places(text)) {
    const std::string_view source = text.substr(place.begin, place.end - place.begin);
    std::string url = std::string(place.hasScheme ? "" : "http://").append(source);
    if (!seen.insert(url).second) continue;
    const std::size_t location = units.upTo(place.begin);
    const std::size_t length = units.upTo(place.end) - location;
    std::string title = LinkDetector::title(url);
    links.push_back({std::move(url), std::move(title), std::string(source), location, length});
  }
  return links;
}

std::vector<LinkDetector::Place> LinkDetector::places(std::string_view text) {
  return LinkScanner(text).scan();
}

std::string LinkDetector::title(std::string_view url) {
  const std::size_t mark = url.find(authorityMark);
  std::string_view rest = mark == npos ? url : url.substr(mark + authorityMark.size());
  rest = rest.substr(0, rest.find_first_of("?#"));
  const std::size_t slash = std::min(rest.find('/'), rest.size());
  const std::string_view path = rest.substr(slash);
  // What ends in a slash is a folder: the "v1.2" of "/v1.2/" is its whole name.
  const auto name = lastComponent(path.ends_with('/') ? path : withoutExtension(path));
  if (!name.empty() && name != "/") return readable(name);
  std::string_view host = rest.substr(0, slash);
  host.remove_prefix(host.rfind('@') + 1);
  const std::size_t port = host.rfind(':');
  if (port != npos && !host.ends_with(']')) host = host.substr(0, port);
  return std::string(host.empty() ? url : host);
}

}  // namespace nomely
