#include "CLI/SyntaxParsing.h"

#include <algorithm>
#include <ranges>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "CLI/HelpText.h"
#include "CLI/UsageError.h"
#include "Core/Extensions/TextNumbers.h"

namespace nomely {
namespace {

using Words = std::vector<std::string>;

// The library would take "[a,b]" for a list: such words pass it in disguise.
constexpr char disguise = '\x01';

Words disguised(Words words) {
  for (std::string& word : words)
    if (word.starts_with('[') || word.starts_with(disguise)) word.insert(0, 1, disguise);
  return words;
}

Words undisguised(Words words) {
  for (std::string& word : words)
    if (word.starts_with(disguise)) word.erase(0, 1);
  return words;
}

std::int64_t positive(const std::string& word, const Argument& argument) {
  if (const auto number = parseDecimal(word); number && *number >= 1) return *number;
  throw UsageError(
      fmt::format("“{}”不行：{} 需要一个不小于 1 的整数", word, argument.names().front()));
}

void checkChoice(const std::string& word, const Argument& argument) {
  if (argument.choices.empty() || std::ranges::count(argument.choices, word) > 0) return;
  throw UsageError(fmt::format("{} 不能用“{}”：请用 {} 之一", argument.names().front(), word,
                               fmt::join(argument.choices, "、")));
}

struct Put {
  const Argument& argument;
  const Words& words;  // at least one

  void operator()(bool* target) const { *target = true; }
  void operator()(std::string* target) const { *target = words.back(); }
  void operator()(std::optional<std::string>* target) const { *target = words.back(); }
  void operator()(Words* target) const { *target = words; }
  void operator()(std::optional<std::int64_t>* target) const {
    *target = positive(words.back(), argument);
  }
};

void declare(const Argument& argument, CLI::App& app) {
  if (argument.isFlag()) {
    bool* const target = std::get<bool*>(argument.target);
    app.add_flag_callback(argument.name, [target] { *target = true; })
        ->disable_flag_override()
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    return;
  }
  CLI::Option* option = app.add_option(argument.name, [&argument](const Words& given) {
    const Words words = undisguised(given);
    for (const std::string& word : words) checkChoice(word, argument);
    if (!words.empty()) std::visit(Put{argument, words}, argument.target);
    return true;
  });
  option->required(argument.isRequired)->type_name(argument.value);
  const bool collects = argument.collects();
  if (argument.isPositional()) {
    if (collects) option->expected(1, CLI::detail::expected_max_vector_size)->allow_extra_args();
    return;
  }
  option->type_size(argument.words)->allow_extra_args(false);
  option->expected(argument.mayLackValue ? 0 : 1, 1);
  option->multi_option_policy(collects && argument.words == 1 ? CLI::MultiOptionPolicy::TakeAll
                                                              : CLI::MultiOptionPolicy::TakeLast);
}

// The library's own places, each with what it was made of.
using Places = std::map<const CLI::App*, Syntax*>;

// Of commands and actions those alone that may be named by one of the words: the library would
// take longer over the rest than everything else does that a start is made of.
void declare(Syntax& syntax, const Words& words, CLI::App& app, Places& places) {
  places[&app] = &syntax;
  app.set_help_flag("-h,--help");
  for (const Argument& argument : syntax.arguments)
    if (!argument.isAnsweredByParsing()) declare(argument, app);
  if (!syntax.parts.empty()) app.require_subcommand(0, 1);
  for (Syntax& part : syntax.parts)
    if (std::ranges::count(words, part.name) > 0)
      declare(part, words, *app.add_subcommand(part.name), places);
}

// The program, the command and its action, as far as they were named.
std::vector<const CLI::App*> chosenOf(const CLI::App& app) {
  std::vector<const CLI::App*> chain{&app};
  for (auto next = app.get_subcommands(); !next.empty(); next = next.front()->get_subcommands())
    chain.push_back(next.front());
  return chain;
}

class UsageText {
 public:
  UsageText(const CLI::App& app, const Places& places, const Words& words)
      : words_(words), chain_(chosenOf(app)) {
    for (const CLI::App* chosen : chain_) syntaxes_.push_back(places.at(chosen));
  }

  [[nodiscard]] std::string of(const CLI::ParseError& error) const {
    std::string text;
    if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) text = ofRequired();
    if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) text = ofExtras();
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr) text = ofMismatch();
    return text.empty() ? "命令行写法不对，见 nomely help" : text;
  }

 private:
  [[nodiscard]] std::string usage() const {
    return HelpText::usage({syntaxes_.begin(), syntaxes_.end()});
  }

  [[nodiscard]] std::string ofRequired() const {
    Words missing;
    for (std::size_t i = 0; i < chain_.size(); ++i)
      for (const Argument& argument : syntaxes_[i]->arguments)
        if (argument.isRequired && chain_[i]->count(argument.name) == 0)
          missing.push_back(argument.name);
    return fmt::format("缺少 {}。用法：{}", fmt::join(missing, "、"), usage());
  }

  [[nodiscard]] std::string ofExtras() const {
    Words extra = undisguised(chain_.front()->remaining(true));
    std::erase(extra, "--");
    const std::string extras = fmt::format("{}", fmt::join(extra, " "));
    const bool isOption = extras.starts_with('-');
    if (chain_.size() == 1)
      return fmt::format("没有“{}”这个{}。全部命令：nomely help", extras,
                         isOption ? "选项" : "命令");
    Words actions;
    for (const Syntax* part : syntaxes_.back()->shownParts()) actions.push_back(part->name);
    if (!actions.empty() && !isOption)
      return fmt::format("没有“{}”这个操作：请用 {}", extras, fmt::join(actions, "、"));
    if (isOption)
      return fmt::format("没有“{}”这个选项。以“-”开头的文字请放在 -- 之后。用法：{}", extras,
                         usage());
    return fmt::format("多余的参数：{}。用法：{}", extras, usage());
  }

  // The option whose values are too few is the last one; a flag that was given one has it after
  // "=".
  [[nodiscard]] std::string ofMismatch() const {
    for (const std::string& word : std::views::reverse(words_)) {
      if (!word.starts_with('-')) continue;
      const std::string name = word.substr(0, word.find('='));
      const Argument* argument = optionNamed(name);
      if (argument == nullptr) continue;
      if (argument->isFlag() && name.size() < word.size())
        return fmt::format("{} 后面不能有值", name);
      if (!argument->isFlag()) return fmt::format("{} 后面缺少 {}", name, argument->value);
    }
    return {};
  }

  [[nodiscard]] const Argument* optionNamed(const std::string& name) const {
    for (const Syntax* syntax : syntaxes_)
      for (const Argument& argument : syntax->arguments)
        if (!argument.isPositional() && std::ranges::count(argument.names(), name) > 0)
          return &argument;
    return nullptr;
  }

  const Words& words_;
  std::vector<const CLI::App*> chain_;
  std::vector<const Syntax*> syntaxes_;  // of the same
};

}  // namespace

ParsedAs parseWords(Syntax& program, const Words& words) {
  CLI::App app("", program.name);
  app.fallthrough();
  Places places;
  declare(program, words, app, places);
  app.set_version_flag("--version", "");
  try {
    // In the order in which the library takes them.
    app.parse(disguised(Words(words.rbegin(), words.rend())));
  } catch (const CLI::CallForVersion&) {
    return ParsedAs::version;
  } catch (const CLI::CallForHelp&) {
    for (const CLI::App* chosen : chosenOf(app)) places.at(chosen)->isChosen = true;
    return ParsedAs::help;
  } catch (const CLI::ParseError& error) {
    throw UsageError(UsageText(app, places, words).of(error));
  }
  for (const CLI::App* chosen : chosenOf(app)) places.at(chosen)->isChosen = true;
  return ParsedAs::command;
}

}  // namespace nomely
