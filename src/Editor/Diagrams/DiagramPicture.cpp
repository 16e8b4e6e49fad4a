#include "Editor/Diagrams/DiagramPicture.h"

namespace nomely {
namespace {

std::string_view codeOf(DiagramError::Kind kind) {
  using enum DiagramError::Kind;
  switch (kind) {
    case missing:
      return "diagram.missing";
    case pages:
      return "diagram.pages";
    case diagram:
      return "diagram.source";
    case nothing:
      return "diagram.nothing";
    case large:
      return "diagram.large";
    case slow:
      return "diagram.slow";
    case crashed:
      break;
  }
  return "diagram.crashed";
}

}  // namespace

DiagramError::DiagramError(Kind kind, const std::string& text)
    : Error(codeOf(kind), text), kind_(kind) {}

}  // namespace nomely
