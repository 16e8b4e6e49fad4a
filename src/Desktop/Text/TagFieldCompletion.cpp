#include "Desktop/Text/TagFieldCompletion.h"

#include <algorithm>

#include "Desktop/Base/Qt.h"

namespace nomely {

void TagFieldCompletion::type(const QString& text) {
  field_ = text.trimmed();
  if (field_.startsWith(u'#')) field_.remove(0, 1);
  if (field_.isEmpty())
    close();
  else
    offer(field_);
}

bool TagFieldCompletion::isOffered(const QString& tag) const {
  return std::ranges::find(present_, utf8(tag)) == present_.end();
}

}  // namespace nomely
