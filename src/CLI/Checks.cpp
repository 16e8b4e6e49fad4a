#include "CLI/Checks.h"

#include <cstdint>
#include <functional>
#include <limits>

#include <fmt/format.h>

#include "CLI/UsageError.h"

namespace nomely {
namespace {

// What `validator` refuses is told by `refuse`.
CLI::Validator told(CLI::Validator validator, std::function<void(const std::string&)> refuse) {
  return {[validator = std::move(validator), refuse = std::move(refuse)](std::string& value) {
            if (!validator(value).empty()) refuse(value);
            return std::string();
          },
          ""};
}

}  // namespace

CLI::Validator Checks::oneOf(std::vector<std::string> words) {
  std::string listed = fmt::format("{}", fmt::join(words, "、"));
  return told(CLI::IsMember(std::move(words)),
              [listed = std::move(listed)](const std::string& value) {
                throw UsageError(fmt::format("不能用“{}”：请用 {} 之一", value, listed));
              });
}

CLI::Validator Checks::positive(std::string what) {
  return told(CLI::Range(std::int64_t{1}, std::numeric_limits<std::int64_t>::max()),
              [what = std::move(what)](const std::string& value) {
                throw UsageError(fmt::format("“{}”不行：{}需要一个不小于 1 的整数", value, what));
              });
}

CLI::Validator Checks::existingFile() {
  return told(CLI::ExistingFile, [](const std::string& name) {
    if (!CLI::ExistingPath(name).empty())
      throw NameNotFoundError(fmt::format("找不到文件：{}", name));
    throw UsageError(fmt::format("只能附加普通文件：{}", name));
  });
}

}  // namespace nomely
