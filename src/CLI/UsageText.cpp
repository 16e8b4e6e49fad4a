#include "CLI/UsageText.h"

#include <algorithm>
#include <ranges>

#include <fmt/format.h>

namespace nomely {
namespace {

using Options = std::vector<const CLI::Option*>;

// The program, the command and its action, as far as they were named.
std::vector<const CLI::App*> chosen(const CLI::App& app) {
  std::vector<const CLI::App*> chain{&app};
  for (auto next = app.get_subcommands(); !next.empty(); next = next.front()->get_subcommands())
    chain.push_back(next.front());
  return chain;
}

std::vector<const CLI::App*> optionGroups(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App* sub) { return sub->get_name().empty(); });
}

Options usedOptions(const CLI::App& app) {
  return app.get_options([](const CLI::Option* option) { return option->count() > 0; });
}

template <typename Named>
std::string namesOf(const std::vector<const Named*>& all) {
  std::vector<std::string> names;
  names.reserve(all.size());
  for (const Named* each : all) names.push_back(each->get_name());
  return fmt::format("{}", fmt::join(names, "、"));
}

std::string textOfRequired(const std::vector<const CLI::App*>& chain) {
  for (const CLI::App* app : chain) {
    const Options missing = app->get_options(
        [](const CLI::Option* option) { return option->get_required() && option->count() == 0; });
    if (!missing.empty()) return "缺少 " + namesOf(missing);
    for (const CLI::App* group : optionGroups(*app))
      if (const Options used = usedOptions(*group); used.size() > group->get_require_option_max())
        return "这些选项一次只能用一个：" + namesOf(used);
  }
  return {};
}

std::string textOfExcluded(const std::vector<const CLI::App*>& chain) {
  for (const CLI::App* app : chain)
    for (const CLI::Option* option : usedOptions(*app))
      for (const CLI::Option* other : option->get_excludes())
        if (other->count() > 0)
          return fmt::format("{} 与 {} 不能同时使用", option->get_name(), other->get_name());
  return {};
}

std::string textOfExtras(const std::vector<const CLI::App*>& chain) {
  auto words = chain.front()->remaining(true);
  std::erase(words, "--");
  const std::string extras = fmt::format("{}", fmt::join(words, " "));
  const auto known = namedSubcommands(*chain.back());
  const bool isOption = extras.starts_with('-');
  if (chain.size() == 1)
    return fmt::format("没有“{}”这个{}。全部命令：nomely help", extras, isOption ? "选项" : "命令");
  if (!known.empty() && !isOption)
    return fmt::format("没有“{}”这个操作：请用 {}", extras, namesOf(known));
  return fmt::format(
      "不认识或多余的参数：{}。含空格的文字请用引号括起，以“-”开头的文字请放在 -- 之后", extras);
}

// The option whose values are too few is the last one; a flag that was given one has it after "=".
std::string textOfMismatch(const std::vector<const CLI::App*>& chain,
                           const std::vector<std::string>& arguments) {
  const auto named = [&](const std::string& word) -> const CLI::Option* {
    for (const CLI::App* app : chain)
      if (const auto* option = app->get_option_no_throw(word)) return option;
    return nullptr;
  };
  for (const std::string& word : std::views::reverse(arguments)) {
    if (!word.starts_with('-')) continue;
    const std::string name = word.substr(0, word.find('='));
    const CLI::Option* option = named(name);
    if (option == nullptr) continue;
    const bool isFlag = option->get_expected_max() == 0;
    if (isFlag && name.size() < word.size()) return fmt::format("{} 后面不能有值", name);
    if (!isFlag) return fmt::format("{} 后面缺少 {}", name, option->get_type_name());
  }
  return {};
}

}  // namespace

std::vector<const CLI::App*> namedSubcommands(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App* sub) { return !sub->get_name().empty(); });
}

std::string usageText(const CLI::ParseError& error, const CLI::App& app,
                      const std::vector<std::string>& arguments) {
  const auto chain = chosen(app);
  std::string text;
  if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) text = textOfRequired(chain);
  if (dynamic_cast<const CLI::ExcludesError*>(&error) != nullptr) text = textOfExcluded(chain);
  if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) text = textOfExtras(chain);
  if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr)
    text = textOfMismatch(chain, arguments);
  return text.empty() ? "命令行写法不对，见 nomely help" : text;
}

}  // namespace nomely
