#pragma once

#include <QJsonObject>
#include <QObject>

namespace nomely {

// What a page may say to this program. It comes from a page that has drawn a stranger's diagram,
// and is checked like anything a stranger says. Main thread.
class PageHandlers : public QObject {
  Q_OBJECT

 public:
  using QObject::QObject;

  static constexpr double greatestHeight = 20000;
  static constexpr double leastHeight = 50;

  // Forgets what the former page said.
  void clear();
  // The answer as far as it is known.
  [[nodiscard]] const QJsonObject& answer() const { return answer_; }

  // Called by the page.
  Q_INVOKABLE void mermaidHeight(const QJsonValue& points);
  Q_INVOKABLE void mermaidSVG(const QJsonValue& svg);
  Q_INVOKABLE void mermaidPicture(const QJsonValue& picture);
  Q_INVOKABLE void mermaidError(const QJsonValue& message);
  Q_INVOKABLE void mermaidNothing(const QJsonValue& message);

 signals:
  // The page has done what it can.
  void finished();

 private:
  QJsonObject answer_;
};

}  // namespace nomely
