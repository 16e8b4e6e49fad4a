#include "Core/Storage/MemoUpgrade.h"

namespace nomely {
namespace {

bool lacks(const std::optional<std::string>& text) {
  return text.value_or("").empty();
}

}  // namespace

bool MemoUpgrade::isDue(const Memo& memo) {
  return lacks(memo.memoId) || memo.schemaVersion.value_or(0) < Memo::currentSchemaVersion;
}

bool MemoUpgrade::isOf(const Memo& current, const Memo& before) {
  if (!isDue(before) || lacks(current.memoId)) return false;
  Memo upgraded = before;
  carryInto(upgraded, current);
  return isStoredAs(upgraded, current);
}

void MemoUpgrade::carryInto(Memo& changed, const Memo& current) {
  if (lacks(changed.memoId)) changed.memoId = current.memoId;
  if (!changed.createdAt) changed.createdAt = current.createdAt;
  if (!changed.updatedAt) changed.updatedAt = current.updatedAt;
  if (lacks(changed.source)) changed.source = current.source;
  changed.schemaVersion = current.schemaVersion;
}

}  // namespace nomely
