#pragma once

#include <QString>
#include <string>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Text/TagChoices.h"

namespace nomely {

// The tags that fit what is typed into a field for one tag. Main thread.
class TagFieldCompletion final : public nomely::TagChoices {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by a screen")

 public:
  // `present` are those that are there already; it has to outlive this.
  TagFieldCompletion(const ScreenContext& context, const std::vector<std::string>& present)
      : TagChoices(context), present_(present) {}

  // The user has typed; a "#" before it doesn't count.
  Q_INVOKABLE void type(const QString& text);

 signals:
  void chosen(const QString& tag);

 protected:
  [[nodiscard]] bool isOffered(const QString& tag) const override;
  [[nodiscard]] bool isTyped(const QString& typed) const override { return typed == field_; }
  void take(const QString& tag) override { emit chosen(tag); }

 private:
  const std::vector<std::string>& present_;
  QString field_;
};

}  // namespace nomely
