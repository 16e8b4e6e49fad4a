#include "Platform/Network/WebSocket/Wslay.h"

namespace nomely {

const Wslay& Wslay::loaded() {
  static const Wslay wslay;
  return wslay;
}

}  // namespace nomely
