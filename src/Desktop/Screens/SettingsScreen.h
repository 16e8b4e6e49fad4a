#pragma once

#include <QObject>
#include <QString>
#include <QUrl>
#include <deque>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include <QtQml/qqmlregistration.h>

#include "Core/Storage/DisplayConfig.h"
#include "Core/Storage/TagConfig.h"
#include "Desktop/Base/BackgroundWork.h"
#include "Desktop/Base/ScreenContext.h"
#include "Desktop/Models/Question.h"
#include "Platform/Concurrency/Subscription.h"

namespace nomely {

class BannerScreen;

// The settings that the window shows and goes by. A change shows at once and is saved behind it,
// one after the other; what other processes change in the files appears within seconds. Main
// thread.
class SettingsScreen : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the window")
  Q_PROPERTY(Look look READ look WRITE setLook NOTIFY lookChanged)
  Q_PROPERTY(double bodyFontSize READ bodyFontSize WRITE setBodyFontSize NOTIFY displayChanged)
  Q_PROPERTY(double tagFontSize READ tagFontSize WRITE setTagFontSize NOTIFY displayChanged)
  Q_PROPERTY(bool seriesNumberAscending READ seriesNumberAscending WRITE setSeriesNumberAscending
                 NOTIFY displayChanged)
  Q_PROPERTY(bool showsSeriesNumber READ showsSeriesNumber WRITE setShowsSeriesNumber NOTIFY
                 displayChanged)
  Q_PROPERTY(bool linksAsCards READ linksAsCards WRITE setLinksAsCards NOTIFY displayChanged)
  Q_PROPERTY(TagOrder tagOrder READ tagOrder WRITE setTagOrder NOTIFY tagOrderChanged)

  Q_PROPERTY(QString rootName READ rootName CONSTANT)
  // What stands against the choice of another root; empty when nothing does.
  Q_PROPERTY(QString rootNote READ rootNote CONSTANT)
  Q_PROPERTY(QString version READ version CONSTANT)
  Q_PROPERTY(QString backupNote READ backupNote NOTIFY backupChanged)
  Q_PROPERTY(bool isBackupOld READ isBackupOld NOTIFY backupChanged)
  Q_PROPERTY(nomely::Question question READ question NOTIFY questionChanged)
  // Until the first note is saved into a root that held none.
  Q_PROPERTY(bool isFirstRun READ isFirstRun NOTIFY isFirstRunChanged)

 public:
  enum Look { FollowDesktop, Light, Dark };
  Q_ENUM(Look)
  enum TagOrder { ByDate, ByCount, ByName, ByActivity };
  Q_ENUM(TagOrder)

  // Reads how the window looks: it is made before anything is drawn.
  SettingsScreen(const ScreenContext& context, BannerScreen& banner);
  ~SettingsScreen() override;

  [[nodiscard]] Look look() const { return look_; }
  void setLook(Look look);
  [[nodiscard]] double bodyFontSize() const { return display_.bodyFontSize; }
  void setBodyFontSize(double size);
  [[nodiscard]] double tagFontSize() const { return display_.tagFontSize; }
  void setTagFontSize(double size);
  [[nodiscard]] bool seriesNumberAscending() const { return display_.seriesNumberAscending; }
  void setSeriesNumberAscending(bool isAscending);
  [[nodiscard]] bool showsSeriesNumber() const { return display_.defaultShowsSeriesNumber; }
  void setShowsSeriesNumber(bool isShown);
  [[nodiscard]] bool linksAsCards() const {
    return display_.linkDisplayMode == DisplayConfig::LinkDisplayMode::card;
  }
  void setLinksAsCards(bool areCards);
  [[nodiscard]] TagOrder tagOrder() const;
  void setTagOrder(TagOrder order);

  [[nodiscard]] QString rootName() const;
  [[nodiscard]] QString rootNote() const;
  [[nodiscard]] static QString version();
  [[nodiscard]] QString backupNote() const { return backupNote_; }
  [[nodiscard]] bool isBackupOld() const { return isBackupOld_; }
  [[nodiscard]] Question question() const { return question_; }
  [[nodiscard]] bool isFirstRun() const { return isFirstRun_; }

  // Looks at what the page tells of the disk: to be called when it is shown.
  Q_INVOKABLE void open();
  // In the desktop's file manager.
  Q_INVOKABLE void openRoot();
  // Asks whether to go on with that folder as the data root.
  Q_INVOKABLE void chooseRoot(const QUrl& folder);
  Q_INVOKABLE void accept();
  Q_INVOKABLE void dismiss();

 signals:
  void lookChanged();
  void displayChanged();
  void tagOrderChanged();
  void backupChanged();
  void questionChanged();
  void isFirstRunChanged();
  // The user has settled on another root: the window goes on there.
  void rootChosen(const QString& root);

 private:
  // What lies on the disk.
  struct Files {
    std::string stamp;
    bool areRead = false;  // the rest; else nothing has changed
    DisplayConfig display = {};
    std::optional<TagConfig> tags = {};
    std::string tagsProblem = {};
    Look look = FollowDesktop;
  };

  [[nodiscard]] Files readFiles(const std::string& lastStamp) const;
  [[nodiscard]] Look storedLook() const;
  void lookAtFiles();
  void show(const Files& files);
  void showDisplay(const DisplayConfig& display);
  void change(const char* key, const QString& value, const DisplayConfig& shown);
  void save(std::function<void()> write);
  void saveNext();
  void watchFiles();
  void findOutFirstRun();
  void ask(const std::filesystem::path& root);

  const ScreenContext context_;
  BannerScreen& banner_;
  Look look_ = FollowDesktop;
  DisplayConfig display_;
  std::string stamp_;
  std::deque<std::function<void()>> unsaved_;  // the first is under way
  std::size_t changeNumber_ = 0;
  QString backupNote_;
  bool isBackupOld_ = false;
  Question question_;
  std::filesystem::path asked_;  // the root that is asked about
  bool isFirstRun_ = false;
  Timers::Timer timer_;
  Subscription tags_;
  Subscription saved_;
  Lifetime lifetime_;
  BackgroundWork work_;
};

}  // namespace nomely
