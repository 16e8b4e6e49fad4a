#include "Core/Query/TagOperation.h"

#include <fmt/format.h>

namespace nomely {
namespace {

std::string bodiesText(const TagChange& planned) {
  return planned.bodies == 0 ? ""
                             : fmt::format("，其中 {} 条正文里的标签文字也会去掉", planned.bodies);
}

}  // namespace

TagChange TagOperation::run(const TagManagementStore& store, const TagRun& run) const {
  switch (kind) {
    case Kind::rename:
      return store.renameTag(tag, other, run);
    case Kind::merge:
      return store.mergeTag(tag, other, run);
    case Kind::remove:
      return store.deleteTag(tag, run);
    case Kind::removeWithMemos:
      break;
  }
  return store.deleteTagWithMemos(tag, run);
}

std::string TagOperation::question(const TagChange& planned) const {
  if (hasOther())
    return fmt::format("将在 {} 条笔记中把标签“{}”换成“{}”{}。", planned.memos, tag, other,
                       bodiesText(planned));
  if (kind == Kind::remove)
    return fmt::format("将从 {} 条笔记去掉标签“{}”{}。", planned.memos, tag, bodiesText(planned));
  return fmt::format("将把带有标签“{}”的 {} 条笔记移入回收站。", tag, planned.memos);
}

std::string TagOperation::outcome(const TagChange& done) const {
  return fmt::format("已处理 {} 条笔记{}。", done.memos,
                     isRisky() ? "" : "，原文在各条的历史版本里");
}

std::string TagOperation::restored(const TagChange& done) {
  return done.failed == 0 ? fmt::format("已恢复 {} 条笔记。", done.memos)
                          : fmt::format("已恢复 {} 条笔记，{} 条没能恢复，请到回收站里看看。",
                                        done.memos, done.failed);
}

std::string TagOperation::shortfall(const TagChange& done) {
  return done.failed == 0 ? "" : fmt::format("有 {} 处未能更新，其余已完成", done.failed);
}

}  // namespace nomely
