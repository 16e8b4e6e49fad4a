#include "Desktop/Screens/EditedMemo.h"

#include <algorithm>

#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Desktop/Base/Qt.h"

namespace nomely {

QString EditedMemo::shownText(const std::string& body) {
  return qt(MemoTextUtilities::textForEditing(body));
}

std::vector<std::string> EditedMemo::without(const std::vector<std::string>& all,
                                             const std::vector<std::string>& kept) {
  std::vector<std::string> gone;
  for (const std::string& name : all)
    if (std::ranges::find(kept, name) == kept.end()) gone.push_back(name);
  return gone;
}

bool EditedMemo::saySame(const Memo& left, const Memo& right) {
  Memo compared = left;
  compared.body = right.body;
  compared.tags = right.tags;
  compared.mood = right.mood;
  compared.attachments = right.attachments;
  compared.attachmentDescriptions = right.attachmentDescriptions;
  compared.originalNames = right.originalNames;
  compared.audioTranscripts = right.audioTranscripts;
  return isStoredAs(compared, left);
}

}  // namespace nomely
