#include "Core/Lifecycle/Maintenance/MemoSchemaMigration.h"

#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Extensions/TextNumbers.h"
#include "Core/Service/MemoService.h"

namespace nomely {

Memo IdentityBackfillMigration::apply(Memo memo, const MigrationContext& context) const {
  if (memo.memoId.value_or("").empty()) memo.memoId = idProvider_(memo, context);
  if (!memo.createdAt) memo.createdAt = legacyTimestamp(context.directoryDate, memo.time);
  if (!memo.updatedAt) memo.updatedAt = memo.createdAt;
  if (memo.source.value_or("").empty()) memo.source = MemoService::typedHere;
  return memo;
}

std::string IdentityBackfillMigration::legacyTimestamp(Day directoryDate, const std::string& time) {
  std::vector<std::int64_t> numbers;
  for (std::string_view rest = time;;) {
    const std::size_t colon = rest.find(':');
    if (const auto number = parseDecimal(rest.substr(0, colon))) numbers.push_back(*number);
    if (colon == std::string_view::npos) break;
    rest.remove_prefix(colon + 1);
  }
  if (numbers.size() < 2) numbers = {0, 0};
  // No moment has the hour 25, nor one that a change of the clock left out.
  const auto moment = DateFormatters::isoDateTime.parse(
      fmt::format("{} {:02}:{:02}:00", directoryDate.string(), numbers[0], numbers[1]));
  return DateFormatters::timestamp(moment.value_or(directoryDate.start()));
}

}  // namespace nomely
