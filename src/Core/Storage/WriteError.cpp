#include "Core/Storage/WriteError.h"

namespace nomely {
namespace {

std::string_view codeOf(WriteError::Kind kind) {
  switch (kind) {
    case WriteError::Kind::maintenance:
      return "write.maintenance";
    case WriteError::Kind::missingMemo:
      return "write.missingMemo";
    case WriteError::Kind::identityChanged:
      return "write.identityChanged";
    case WriteError::Kind::conflict:
      return "write.conflict";
  }
  return {};
}

const char* textOf(WriteError::Kind kind) {
  switch (kind) {
    case WriteError::Kind::maintenance:
      return "数据恢复维护中，请重启 Nomely 后继续。未提交的内容仍保留在编辑器中。";
    case WriteError::Kind::missingMemo:
      return "这条笔记已被删除或移动，未覆盖磁盘。请保留草稿并重新打开笔记。";
    case WriteError::Kind::identityChanged:
      return "此位置已属于另一条笔记，已阻止覆盖。请重新打开原笔记。";
    case WriteError::Kind::conflict:
      return "笔记已在其他位置修改，已保留磁盘内容和当前草稿。请重新打开并核对两份内容。";
  }
  return "";
}

}  // namespace

WriteError::WriteError(Kind kind) : Error(codeOf(kind), textOf(kind)), kind_(kind) {}

}  // namespace nomely
