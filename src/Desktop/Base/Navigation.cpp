#include "Desktop/Base/Navigation.h"

namespace nomely {

void Navigation::show(Page page) {
  if (page_ == page) return;
  page_ = page;
  emit pageChanged();
}

void Navigation::showPanel(Panel panel) {
  if (panel_ == panel) return;
  panel_ = panel;
  emit panelChanged();
}

void Navigation::back() {
  if (panel_ != NoPanel)
    showPanel(NoPanel);
  else
    show(Timeline);
}

}  // namespace nomely
