#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace nomely {

// What is wrong with a command line that CLI11 refused, in Chinese. `app` is the whole command line
// as parsing left it, `arguments` what it was given.
[[nodiscard]] std::string usageText(const CLI::ParseError& error, const CLI::App& app,
                                    const std::vector<std::string>& arguments);

// The commands of `app`, or the actions of a command; groups of options are none.
[[nodiscard]] std::vector<const CLI::App*> namedSubcommands(const CLI::App& app);

}  // namespace nomely
