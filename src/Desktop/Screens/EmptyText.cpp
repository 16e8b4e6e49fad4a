#include "Desktop/Screens/EmptyText.h"

namespace nomely {
namespace {

EmptyText toWrite(const char* glyph, const QString& text, const QString& note = {}) {
  return {QLatin1String(glyph), text, note, QObject::tr("写一条"), EmptyText::Action::Write};
}

EmptyText toAll(const char* glyph, const QString& text, const QString& note = {}) {
  return {QLatin1String(glyph), text, note, QObject::tr("看全部笔记"), EmptyText::Action::ShowAll};
}

EmptyText toAdd(const char* glyph, const QString& text, const QString& note) {
  return {QLatin1String(glyph), text, note, QObject::tr("添加文件"), EmptyText::Action::AddFile};
}

}  // namespace

EmptyText EmptyText::of(List list, const QString& name, QDate day) {
  switch (list) {
    case List::all:
      return toWrite("edit", QObject::tr("还没有笔记"),
                     QObject::tr("写下第一条，它会出现在这里。"));
    case List::today:
      return toWrite("today", QObject::tr("今天还没有记录"));
    case List::day:
      return toWrite("today", QObject::tr("%1月%2日没有记录").arg(day.month()).arg(day.day()));
    case List::pinned:
      return toAll("pin", QObject::tr("没有置顶的笔记"),
                   QObject::tr("在笔记上按 P，就会留在这里。"));
    case List::onThisDay:
      return toAll("history", QObject::tr("往年的今天没有记录"));
    case List::tag:
      return toAll("hash", QObject::tr("没有带 #%1 的笔记").arg(name));
    case List::untagged:
      return toAll("untag", QObject::tr("每条笔记都有标签"));
    case List::images:
      return toAdd("image", QObject::tr("没有带图片的笔记"),
                   QObject::tr("粘贴或拖进来的图片会出现在这里。"));
    case List::links:
      return toAll("link", QObject::tr("没有带链接的笔记"));
    case List::audio:
      return toAdd("mic", QObject::tr("没有带录音的笔记"),
                   QObject::tr("录音文件拖进输入框就能带上。"));
    case List::attachments:
      return toAdd("clip", QObject::tr("没有带附件的笔记"),
                   QObject::tr("文件拖进输入框就能带上。"));
    case List::search:
      return toAll("search", QObject::tr("没有找到「%1」").arg(name),
                   QObject::tr("换个词，或少写几个词试试。"));
  }
  return {};
}

}  // namespace nomely
