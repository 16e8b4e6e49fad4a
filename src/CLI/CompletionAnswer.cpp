#include "CLI/CompletionAnswer.h"

#include <algorithm>
#include <exception>
#include <functional>

#include "App/ChosenRoot.h"
#include "CLI/BashLine.h"
#include "CLI/Completion.h"
#include "CLI/CompletionCandidates.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

// The folder that the shell would make of "~/日记" or "$HOME/日记".
std::string expanded(const std::string& word, const Environment& environment) {
  if (word == "~" || word.starts_with("~/"))
    return environment.homeFolder().string() + word.substr(1);
  if (!word.starts_with('$')) return word;
  const std::size_t end = std::min(word.find('/'), word.size());
  std::string name = word.substr(1, end - 1);
  if (name.starts_with('{') && name.ends_with('}')) name = name.substr(1, name.size() - 2);
  return environment.get(name).value_or("") + word.substr(end);
}

// Whether there is a root to look into; one that is missing is not made.
bool findRoot(const Completion& completion, Session& session) {
  const Environment& environment = session.environment();
  if (completion.root) session.options.root = expanded(*completion.root, environment);
  return session.files().isDirectory(
      ChosenRoot::of(session.options.root, environment, session.files()));
}

CompletionCandidates candidates(const Completion& completion, Session& session) {
  const bool isOfSettings =
      completion.kind == WordKind::setting || completion.kind == WordKind::settingValue;
  if (completion.kind == WordKind::text || (!findRoot(completion, session) && !isOfSettings))
    return {};
  try {
    return candidatesFor(completion, session);
  } catch (const std::exception&) {
    return {};
  }
}

bool isOneLine(const std::string& text) {
  return std::ranges::none_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x20; });
}

using Writing = std::function<std::string(const std::string& word)>;

std::string answer(const Completion& completion, Session& session, bool isDescribed,
                   const Writing& written) {
  if (completion.kind == WordKind::file) return "files\n";
  if (completion.kind == WordKind::folder) return "folders\n";
  CompletionCandidates found = candidates(completion, session);
  if (completion.kind == WordKind::backup && found.words.empty()) return "files\n";
  std::string text = found.arePartial && completion.words.empty() ? "partial\n" : "words\n";
  found.words.insert(found.words.begin(), completion.words.begin(), completion.words.end());
  for (const auto& [word, help] : found.words) {
    if (!isOneLine(word)) continue;
    text += written(completion.before + word);
    if (isDescribed && !help.empty() && isOneLine(help)) text += "\t" + help;
    text += "\n";
  }
  return text;
}

std::string answerBash(const std::vector<std::string>& request, const Syntax& program,
                       Session& session) {
  constexpr std::size_t expected = 3;
  if (request.size() != expected) return {};
  const BashLine line(request[1], request[2]);
  if (line.isRedirection()) return "files\n";
  const auto& words = line.words();
  if (words.empty()) return {};
  const Completion completion = completionOf(program, std::span(words).subspan(1), line.current());
  return answer(completion, session, false,
                [&](const std::string& word) { return line.replacement(word); });
}

// Fish gives the word at the cursor as it is written, with quotes and backslashes, zsh without.
std::string answerOthers(const std::vector<std::string>& request, const Syntax& program,
                         Session& session) {
  constexpr std::size_t least = 2;
  if (request.size() < least) return {};
  const std::string& typed = request.back();
  const std::string current = request.front() == "fish" ? BashLine(typed, "").current() : typed;
  const auto words = std::span(request).subspan(1, request.size() - 2);
  return answer(completionOf(program, words, current), session, true,
                [](const std::string& word) { return word; });
}

}  // namespace

std::string CompletionAnswer::to(const std::vector<std::string>& request, const Syntax& program,
                                 Session& session) noexcept {
  try {
    Log::setEcho(Log::Echo::nothing);
    session.options.quiet = true;
    if (request.empty()) return {};
    return request.front() == "bash" ? answerBash(request, program, session)
                                     : answerOthers(request, program, session);
  } catch (const std::exception&) {
    return {};
  }
}

}  // namespace nomely
