#pragma once

#include <optional>
#include <string>

#include "Core/Storage/MemoPlace.h"

namespace nomely {

// Something that the bot did, for whoever watches it. Holds nothing of what a message says.
struct BotEvent {
  enum class Kind {
    recorded,   // a message has become the memo at `place`
    answered,   // a command or query was replied to
    failed,     // a message could not be written; it is tried again
    keptAside,  // a message could not be written for a week; it stays in the inbox's folder
    paired,     // a sender has become the bot's only user
  };
  Kind kind = Kind::recorded;
  std::optional<MemoPlace> place = {};
  std::string detail = {};  // why, in Chinese
};

}  // namespace nomely
