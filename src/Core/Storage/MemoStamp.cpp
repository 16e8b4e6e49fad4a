#include "Core/Storage/MemoStamp.h"

#include "Core/Extensions/DateFormatters.h"
#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"

namespace nomely {

void stampAsNew(Memo& memo, const Clock& clock) {
  memo.createdAt = DateFormatters::timestamp(clock.now());
  memo.updatedAt = memo.createdAt;
  memo.memoId = Memo::makeMemoId();
  memo.schemaVersion = MemoFrontmatter::currentSchemaVersion;
  memo.body = std::string(MemoFrontmatterParser::bodyAsRead(memo.body));
}

}  // namespace nomely
