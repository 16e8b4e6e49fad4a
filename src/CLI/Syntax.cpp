#include "CLI/Syntax.h"

#include <algorithm>

namespace nomely {

std::vector<std::string> Argument::names() const {
  std::vector<std::string> all;
  for (std::size_t begin = 0; begin <= name.size();) {
    const std::size_t end = std::min(name.find(',', begin), name.size());
    all.push_back(name.substr(begin, end - begin));
    begin = end + 1;
  }
  return all;
}

Argument referenceArgument(Argument::Target target) {
  Argument argument{.name = "REF",
                    .help = "笔记：日期/编号、@（最新）、@3，或 memo_ 标识",
                    .target = target,
                    .kind = WordKind::reference,
                    .isRequired = true};
  if (argument.collects()) argument.help += "，可多条";
  return argument;
}

Syntax& Syntax::addPart(std::string partName, std::string partSummary) {
  return parts.emplace_back(Syntax{.name = std::move(partName), .summary = std::move(partSummary)});
}

const Syntax* Syntax::part(std::string_view partName) const {
  const auto found = std::ranges::find_if(
      parts, [&](const Syntax& part) { return part.name == partName && !part.summary.empty(); });
  return found == parts.end() ? nullptr : &*found;
}

std::vector<const Syntax*> Syntax::shownParts() const {
  std::vector<const Syntax*> shown;
  for (const Syntax& part : parts)
    if (!part.summary.empty()) shown.push_back(&part);
  return shown;
}

}  // namespace nomely
