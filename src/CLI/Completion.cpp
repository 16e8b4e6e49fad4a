#include "CLI/Completion.h"

#include <algorithm>
#include <ranges>
#include <set>

namespace nomely {
namespace {

constexpr std::string_view endOfOptions = "--";

// Goes along a command line word by word.
class LineWalk {
 public:
  explicit LineWalk(const Syntax& program) : chain_{&program} {}

  void pass(const std::string& word);
  [[nodiscard]] Completion at(const std::string& current) const;

 private:
  // A word that begins as an option; absent where none is meant.
  struct Option {
    const Argument* argument;
    std::string before;                // "--tag=", "-n"
    std::optional<std::string> value;  // what follows in the same word
  };

  [[nodiscard]] const Argument* named(std::string_view name) const;
  [[nodiscard]] std::optional<Option> option(const std::string& word) const;
  [[nodiscard]] bool isOption(const std::string& word) const {
    return !optionsEnded_ && word.size() > 1 && word.front() == '-';
  }
  // The argument to which the next word goes by its place; null where there is none.
  [[nodiscard]] const Argument* nextPlace() const;
  // The part of the program that the words after "help" name.
  [[nodiscard]] const Syntax& helpSubject() const;
  void take(const Argument& argument, const std::string& value);
  bool passOption(const std::string& word);

  void addParts(Completion& completion, const Syntax& syntax) const;
  void addOptions(Completion& completion) const;
  void addPlace(Completion& completion) const;
  static void addWord(Completion& completion, const std::string& text, const std::string& help);
  static void addValue(Completion& completion, const Argument& argument, int index);

  std::vector<const Syntax*> chain_;  // the program, the command, its action
  std::vector<std::string> places_;   // words of the last of these that go by their place
  std::set<const Argument*> used_;
  const Argument* open_ = nullptr;  // the option whose values come next
  int taken_ = 0;                   // that it has already
  bool optionsEnded_ = false;
  std::optional<std::string> root_;
  std::string reference_;
};

const Argument* LineWalk::named(std::string_view name) const {
  for (const Syntax* syntax : chain_ | std::views::reverse)
    for (const Argument& argument : syntax->arguments)
      if (!argument.isPositional() && std::ranges::count(argument.names(), name) > 0)
        return &argument;
  return nullptr;
}

std::optional<LineWalk::Option> LineWalk::option(const std::string& word) const {
  const bool isLong = word.starts_with("--");
  const std::size_t nameEnd = isLong ? std::min(word.find('='), word.size()) : 2;
  const Argument* argument = named(word.substr(0, nameEnd));
  if (argument == nullptr) return std::nullopt;
  if (nameEnd == word.size()) return Option{argument, word, std::nullopt};
  const std::size_t valueBegin = nameEnd + (isLong ? 1 : 0);
  return Option{argument, word.substr(0, valueBegin), word.substr(valueBegin)};
}

const Argument* LineWalk::nextPlace() const {
  std::size_t left = places_.size();
  for (const Argument& argument : chain_.back()->arguments) {
    if (!argument.isPositional()) continue;
    if (left == 0 || argument.collects()) return &argument;
    --left;
  }
  return nullptr;
}

const Syntax& LineWalk::helpSubject() const {
  const Syntax* subject = chain_.front();
  for (const std::string& name : places_)
    if (const Syntax* part = subject->part(name)) subject = part;
  return *subject;
}

void LineWalk::take(const Argument& argument, const std::string& value) {
  if (argument.kind == WordKind::reference || argument.kind == WordKind::pastReference ||
      argument.kind == WordKind::setting)
    reference_ = value;
  if (argument.name == "--root") root_ = value;
}

bool LineWalk::passOption(const std::string& word) {
  const auto found = option(word);
  if (!found) return false;
  const Argument& argument = *found->argument;
  used_.insert(&argument);
  if (argument.isFlag()) {
    // "-yq" is "-y -q".
    if (found->value && !word.starts_with("--")) passOption("-" + *found->value);
    return true;
  }
  taken_ = found->value ? 1 : 0;
  if (found->value) take(argument, *found->value);
  if (taken_ < argument.words) open_ = &argument;
  return true;
}

void LineWalk::pass(const std::string& word) {
  if (open_ != nullptr && !(open_->mayLackValue && isOption(word))) {
    if (taken_ == 0) take(*open_, word);
    if (++taken_ == open_->words) open_ = nullptr;
    return;
  }
  open_ = nullptr;
  if (!optionsEnded_ && word == endOfOptions) {
    optionsEnded_ = true;
    return;
  }
  if (isOption(word) && passOption(word)) return;
  if (const Syntax* part = optionsEnded_ ? nullptr : chain_.back()->part(word)) {
    chain_.push_back(part);
    places_.clear();
    return;
  }
  if (const Argument* place = nextPlace()) take(*place, word);
  places_.push_back(word);
}

void LineWalk::addWord(Completion& completion, const std::string& text, const std::string& help) {
  if (text.starts_with(completion.typed)) completion.words.push_back({text, help});
}

void LineWalk::addValue(Completion& completion, const Argument& argument, int index) {
  for (const std::string& choice : argument.choices) addWord(completion, choice, {});
  // What further words of an option are is told by its help alone: "--describe FILE TEXT".
  if (index == 0) completion.kind = argument.kind;
}

void LineWalk::addParts(Completion& completion, const Syntax& syntax) const {
  for (const Syntax* part : syntax.shownParts()) addWord(completion, part->name, part->summary);
}

// The command's own before the program's, none twice that is of no use twice.
void LineWalk::addOptions(Completion& completion) const {
  for (const Syntax* syntax : chain_ | std::views::reverse)
    for (const Argument& argument : syntax->arguments)
      if (!argument.isPositional() && (argument.collects() || !used_.contains(&argument)))
        for (const std::string& name : argument.names()) addWord(completion, name, argument.help);
}

void LineWalk::addPlace(Completion& completion) const {
  const Argument* place = nextPlace();
  if (place != nullptr && place->kind == WordKind::command)
    return addParts(completion, helpSubject());
  if (place != nullptr) addValue(completion, *place, 0);
  // An action comes after what its command needs: "history REF show".
  const bool isMissing = place != nullptr && place->isRequired && places_.empty();
  if (!optionsEnded_ && !isMissing) addParts(completion, *chain_.back());
}

Completion LineWalk::at(const std::string& current) const {
  Completion completion{.typed = current, .root = root_, .reference = reference_};
  if (open_ != nullptr && !(open_->mayLackValue && isOption(current))) {
    addValue(completion, *open_, taken_);
    return completion;
  }
  if (optionsEnded_ || !current.starts_with('-')) {
    addPlace(completion);
    const bool isNothing = completion.words.empty() && completion.kind == WordKind::text;
    if (!optionsEnded_ && isNothing && current.empty()) addOptions(completion);
    return completion;
  }
  const auto begun = isOption(current) ? option(current) : std::nullopt;
  if (begun && begun->value && !begun->argument->isFlag()) {
    completion.before = begun->before;
    completion.typed = *begun->value;
    addValue(completion, *begun->argument, 0);
  } else {
    addOptions(completion);
  }
  return completion;
}

}  // namespace

Completion completionOf(const Syntax& program, std::span<const std::string> words,
                        const std::string& current) {
  LineWalk walk(program);
  for (const std::string& word : words) walk.pass(word);
  return walk.at(current);
}

}  // namespace nomely
