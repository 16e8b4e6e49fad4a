#include "Desktop/Models/MemoHandle.h"

#include "Core/Extensions/TagNames.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Core/Service/MemoService.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Models/Moods.h"

namespace nomely {

QString MemoHandle::key() const {
  if (!isValid()) return {};
  return qt(entry.memo->memoId ? *entry.memo->memoId : memoKey(entry.date, entry.memo->seqNumber));
}

QDate MemoHandle::date() const {
  return isValid() ? qtDate(entry.date) : QDate();
}

QString MemoHandle::time() const {
  return isValid() ? qt(entry.memo->time) : QString();
}

QString MemoHandle::body() const {
  return isValid() ? qt(MemoTextUtilities::stripOriginalComment(entry.memo->body)) : QString();
}

QStringList MemoHandle::tags() const {
  QStringList shown;
  if (!isValid()) return shown;
  for (const std::string& tag : entry.memo->tags)
    if (!TagNames::isHidden(tag)) shown.append(qt(tag));
  return shown;
}

QString MemoHandle::mood() const {
  return isValid() && entry.memo->mood ? Moods::face(*entry.memo->mood) : QString();
}

QString MemoHandle::source() const {
  if (!isValid() || !entry.memo->source || *entry.memo->source == MemoService::typedHere) return {};
  return qt(*entry.memo->source);
}

int MemoHandle::seqNumber() const {
  return isValid() ? static_cast<int>(entry.memo->seqNumber) : 0;
}

}  // namespace nomely
