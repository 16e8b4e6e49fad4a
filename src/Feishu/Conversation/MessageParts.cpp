#include "Feishu/Conversation/MessageParts.h"

#include "Platform/Text/Unicode.h"

namespace nomely {

void MessageParts::add(std::string_view part, std::string_view separator) {
  const std::size_t length = graphemeCountUpTo(part, most + 1);
  const std::size_t joined = length_ + graphemeCount(separator) + length;
  if (!messages_.empty() && joined <= most) {
    messages_.back().append(separator).append(part);
    length_ = joined;
    return;
  }
  do {
    const std::string_view piece = graphemePrefix(part, most);
    messages_.emplace_back(piece);
    part.remove_prefix(piece.size());
  } while (!part.empty());
  length_ = graphemeCount(messages_.back());
}

}  // namespace nomely
