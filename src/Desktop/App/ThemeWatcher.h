#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QString>
#include <QVariant>
#include <optional>

#include <QtQml/qqmlregistration.h>

namespace nomely {

// How the desktop wants windows to look, as it stands at each moment: asked of its settings portal,
// and guessed from the palette where there is none. Answers come a moment after the start. Main
// thread.
class ThemeWatcher : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the program")
  Q_PROPERTY(bool dark READ isDark NOTIFY changed)
  Q_PROPERTY(bool animated READ isAnimated NOTIFY changed)
  Q_PROPERTY(bool highContrast READ isHighContrast NOTIFY changed)

 public:
  explicit ThemeWatcher(QDBusConnection bus = QDBusConnection::sessionBus(),
                        QObject* parent = nullptr);

  [[nodiscard]] bool isDark() const;
  [[nodiscard]] bool isAnimated() const { return isAnimated_ && hasAnimationSpeed_; }
  [[nodiscard]] bool isHighContrast() const { return isContrastChosen_ || isHighContrast_; }

  // Of the application: its palette changes.
  bool eventFilter(QObject* watched, QEvent* event) override;

 signals:
  void changed();

 private slots:
  void take(const QString& group, const QString& key, const QDBusVariant& value);

 private:
  void ask();

  QDBusConnection bus_;
  bool isSubscribed_ = false;
  std::optional<bool> isDarkChosen_;
  bool isPaletteDark_ = false;
  bool isAnimated_ = true;
  bool hasAnimationSpeed_ = true;
  bool isContrastChosen_ = false;
  bool isHighContrast_ = false;
};

}  // namespace nomely
