#pragma once

#include <QObject>
#include <QString>
#include <functional>

#include <QtQml/qqmlregistration.h>

namespace nomely {

// Which page the window shows, and what a screen has to tell the user. Main thread.
class Navigation : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the window")
  Q_PROPERTY(Page page READ page NOTIFY pageChanged)
  Q_PROPERTY(Panel panel READ panel NOTIFY panelChanged)

 public:
  enum Page { Timeline, Editor, Overview, Trash, Settings };
  Q_ENUM(Page)
  // What stands beside a page, or over it where there is no room.
  enum Panel { NoPanel, History };
  Q_ENUM(Panel)

  [[nodiscard]] Page page() const { return page_; }
  [[nodiscard]] Panel panel() const { return panel_; }

  Q_INVOKABLE void show(Page page);
  Q_INVOKABLE void showPanel(Panel panel);
  // Closes the panel, else returns to the timeline.
  Q_INVOKABLE void back();

  // What the user can do about it. Without words there is nothing to be done.
  struct Action {
    QString text = {};
    std::function<void()> run = {};
  };
  // A success, for four seconds; an offer, for ten; a failure, which stays until it is closed.
  Q_INVOKABLE void toast(const QString& text) { emit toasted(text); }
  void offer(const QString& text, const Action& action) { emit offered(text, action); }
  Q_INVOKABLE void fail(const QString& text) { emit failed(text, {}); }
  void fail(const QString& text, const Action& action) { emit failed(text, action); }

 signals:
  void pageChanged();
  void panelChanged();
  void toasted(const QString& text);
  void offered(const QString& text, const nomely::Navigation::Action& action);
  void failed(const QString& text, const nomely::Navigation::Action& action);

 private:
  Page page_ = Timeline;
  Panel panel_ = NoPanel;
};

}  // namespace nomely
