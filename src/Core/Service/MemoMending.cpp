#include "Core/Extensions/DateFormatters.h"
#include "Core/Markdown/Frontmatter/MemoFileRepair.h"
#include "Core/Service/MemoService.h"
#include "Core/Storage/MemoFile.h"

namespace nomely {

struct MemoService::Broken {
  std::string content;
  unsigned permissions;
  MendedFile mended;
};

std::optional<MemoService::Broken> MemoService::broken(Day day, std::int64_t seqNumber) const {
  const std::filesystem::path file = context_.paths.memoFile(day, seqNumber);
  const auto attributes = context_.files.attributes(file);
  auto content = context_.files.read(file, MemoFile::maxSize);
  if (!attributes || !content) return std::nullopt;
  // The time of the file is the best guess at when a note without a header was written.
  auto mended =
      MemoFileRepair::mended(*content, DateFormatters::timeOnly.format(attributes->modified));
  if (!mended) return std::nullopt;
  return Broken{*std::move(content), attributes->permissions, *std::move(mended)};
}

std::vector<std::string> MemoService::mendsOf(Day day, std::int64_t seqNumber) const {
  const auto found = broken(day, seqNumber);
  return found ? found->mended.mends : std::vector<std::string>();
}

std::optional<Memo> MemoService::mend(Day day, std::int64_t seqNumber) const {
  return context_.write([&]() -> std::optional<Memo> {
    const auto found = broken(day, seqNumber);
    if (!found) return std::nullopt;
    Memo memo = MemoFile::parsed(found->mended.content, seqNumber);
    const bool isNameless = memo.memoId.value_or("").empty();
    if (isNameless) memo.memoId = identityOfNameless(day, seqNumber);
    versions_.keepBytes(*memo.memoId, found->content, found->permissions);
    if (isNameless)
      days_.memoStore().write(memo, day);
    else
      days_.memoStore().writeAs(memo, day, found->mended.content);
    return memo;
  });
}

}  // namespace nomely
