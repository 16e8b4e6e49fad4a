#include "bench/CorpusText.h"

#include <array>

#include <fmt/format.h>

#include "bench/CorpusVocabulary.h"

namespace nomely::bench {
namespace {

void appendWord(std::string& text, char kind, Random& random) {
  const Vocabulary& words = Vocabulary::shared();
  switch (kind) {
    case 'T':
      return words.times.appendTo(text, random);
    case 'P':
      return words.people.appendTo(text, random);
    case 'L':
      return words.places.appendTo(text, random);
    case 'V':
      return words.verbs.appendTo(text, random);
    case 'N':
      return words.nouns.appendTo(text, random);
    case 'A':
      return words.adjectives.appendTo(text, random);
    case 'D':
      return words.adverbs.appendTo(text, random);
    case 'E':
      return words.english.appendTo(text, random);
    case 'C':
      text += std::to_string(random.between(2, 90));
      return;
    default:
      text += kind;
  }
}

void appendPattern(std::string& text, std::string_view pattern, Random& random) {
  for (const char c : pattern) appendWord(text, c, random);
}

void appendChineseSentence(std::string& text, Random& random) {
  appendPattern(text, random.percent(12) ? drawMixedPattern(random) : drawChinesePattern(random),
                random);
}

void appendEnglishSentence(std::string& text, Random& random) {
  const std::size_t start = text.size();
  appendPattern(text, drawEnglishPattern(random), random);
  text[start] = static_cast<char>(text[start] - 'a' + 'A');
}

// "早上咖啡", for headings and items.
std::string phrase(Random& random) {
  constexpr std::array<std::string_view, 8> patterns{"VN",  "AN",   "LVN",     "N和N",
                                                     "TVN", "N：A", "VN（C）", "E N"};
  std::string text;
  appendPattern(text, random.pick(patterns), random);
  return text;
}

void appendLink(std::string& text, Random& random) {
  constexpr std::array<std::string_view, 6> hosts{"example.com",      "blog.example.org",
                                                  "docs.example.net", "news.example.cn",
                                                  "a.example.io",     "www.example.com"};
  std::string path;
  for (std::uint32_t parts = random.between(0, 2); parts > 0; --parts) {
    path += '/';
    Vocabulary::shared().english.appendTo(path, random);
  }
  const std::string_view host = random.pick(hosts);
  switch (random.below(4)) {
    case 0:
      text += fmt::format("[{}](https://{}{})", phrase(random), host, path);
      return;
    case 1:
      text += fmt::format("{}{}", host, path);
      return;
    case 2:
      text += fmt::format("https://{}{}?id={}", host, path, random.below(100000));
      return;
    default:
      text += fmt::format("<https://{}{}>", host, path);
  }
}

void appendInlineMarkup(std::string& text, Random& random) {
  constexpr std::array<std::string_view, 5> marks{"**", "*", "~~", "`", "=="};
  const std::string_view mark = random.pick(marks);
  text += fmt::format("{}{}{}", mark, phrase(random), mark);
}

void appendParagraph(std::string& text, Random& random) {
  for (std::uint32_t left = random.between(1, 6); left > 0; --left) {
    appendChineseSentence(text, random);
    if (random.percent(6)) appendInlineMarkup(text, random);
    if (random.percent(5)) Vocabulary::shared().emoji.appendTo(text, random);
    if (random.percent(3)) {
      text += " ";
      appendLink(text, random);
      text += " ";
    }
    if (left > 1 && random.percent(8)) text += "\n";
  }
  text += "\n";
}

void appendEnglishParagraph(std::string& text, Random& random) {
  for (std::uint32_t left = random.between(2, 5); left > 0; --left)
    appendEnglishSentence(text, random);
  text.back() = '\n';
}

void appendHeading(std::string& text, Random& random) {
  text += fmt::format("{} {}\n", std::string(random.between(1, 4), '#'), phrase(random));
}

void appendList(std::string& text, Random& random) {
  const std::uint32_t style = random.below(4);
  const std::uint32_t count = random.between(2, 7);
  for (std::uint32_t i = 1; i <= count; ++i) {
    if (i > 1 && random.percent(15)) text += style == 1 ? "   " : "  ";
    if (style == 0) text += "- ";
    if (style == 1) text += fmt::format("{}. ", i);
    if (style >= 2) text += random.percent(55) ? "- [x] " : "- [ ] ";
    text += phrase(random);
    if (random.percent(25)) {
      text += "，";
      appendChineseSentence(text, random);
    }
    text += "\n";
  }
}

void appendTable(std::string& text, Random& random) {
  const std::uint32_t columns = random.between(2, 4);
  const auto appendRow = [&](auto cell) {
    for (std::uint32_t i = 0; i < columns; ++i) text += fmt::format("| {} ", cell());
    text += "|\n";
  };
  appendRow([&] { return phrase(random); });
  constexpr std::array<std::string_view, 3> rules{"---", ":--", "--:"};
  appendRow([&] { return std::string(random.pick(rules)); });
  for (std::uint32_t left = random.between(2, 5); left > 0; --left)
    appendRow([&] {
      return random.percent(40) ? fmt::format("{}.{}", random.below(500), random.below(100))
                                : phrase(random);
    });
}

void appendCode(std::string& text, Random& random) {
  constexpr std::array<std::string_view, 5> languages{"cpp", "python", "bash", "json", ""};
  text += fmt::format("```{}\n", random.pick(languages));
  for (std::uint32_t left = random.between(2, 8); left > 0; --left) {
    std::string name;
    Vocabulary::shared().english.appendTo(name, random);
    constexpr std::array<std::string_view, 4> lines{
        "auto {} = load(\"{}\");  // {}\n", "for {} in range({}): print(\"{}\")\n",
        "git checkout {} -- {} # {}\n", "  \"{}\": {}, \"note\": \"{}\",\n"};
    text += fmt::format(fmt::runtime(random.pick(lines)), name, random.below(1000), phrase(random));
  }
  text += "```\n";
}

void appendQuote(std::string& text, Random& random) {
  for (std::uint32_t left = random.between(1, 3); left > 0; --left) {
    text += "> ";
    appendChineseSentence(text, random);
    text += "\n";
  }
}

void appendLinkLine(std::string& text, Random& random) {
  appendLink(text, random);
  text += "\n";
}

using Append = void (*)(std::string& text, Random& random);
struct Block {
  Append append;
  std::uint32_t weight;
};
constexpr std::array<Block, 8> blocks{{{appendParagraph, 60},
                                       {appendList, 14},
                                       {appendHeading, 8},
                                       {appendEnglishParagraph, 5},
                                       {appendQuote, 5},
                                       {appendLinkLine, 4},
                                       {appendCode, 2},
                                       {appendTable, 2}}};

void appendBlock(std::string& text, Random& random) {
  std::uint32_t at = random.below(100);
  for (const Block& block : blocks) {
    if (at < block.weight) return block.append(text, random);
    at -= block.weight;
  }
}

// Many notes are a line or two; a few are essays.
std::uint32_t drawBlockCount(Random& random) {
  const std::uint32_t at = random.below(100);
  if (at < 28) return 1;
  if (at < 55) return random.between(2, 5);
  if (at < 92) return random.between(6, 14);
  return random.between(14, 36);
}

}  // namespace

std::string drawSentence(Random& random) {
  std::string text;
  if (random.percent(10))
    appendEnglishSentence(text, random);
  else
    appendChineseSentence(text, random);
  return text;
}

std::string drawBody(Random& random, const std::vector<std::string>& tags) {
  std::string text;
  for (const std::string& tag : tags)
    if (random.percent(30)) text += fmt::format("#{} ", tag);
  if (!text.empty() && random.percent(40)) text += "\n\n";
  for (std::uint32_t left = drawBlockCount(random); left > 0; --left) {
    appendBlock(text, random);
    if (left > 1) text += "\n";
  }
  return text;
}

}  // namespace nomely::bench
