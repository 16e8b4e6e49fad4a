#pragma once

#include <QObject>
#include <QString>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Core/Models/AudioTranscript.h"
#include "Desktop/Models/MemoHandle.h"

namespace nomely {

// A transcript as a text, with the place of each word in it and in the sound.
class SpokenWords {
 public:
  // In UTF-16 units of the text.
  struct Range {
    qsizetype begin = 0;
    qsizetype end = 0;

    friend bool operator==(const Range&, const Range&) = default;
  };

  SpokenWords() = default;
  // The transcript's text; where it doesn't hold the words one after the other, the words joined.
  explicit SpokenWords(const AudioTranscript& transcript);

  [[nodiscard]] const QString& text() const { return text_; }
  // Of the word that is spoken at that second, which goes on until the next one; empty before the
  // first.
  [[nodiscard]] Range at(double second) const;
  // When the word begins that stands there, or the next one.
  [[nodiscard]] double secondOf(qsizetype place) const;

 private:
  struct Word {
    double start = 0;  // seconds
    Range range;
  };

  [[nodiscard]] bool findWords(const AudioTranscript& transcript);
  void joinWords(const AudioTranscript& transcript);

  QString text_;
  std::vector<Word> words_;  // by start
};

// The transcript that a memo has of one of its sounds, and the word in it that is spoken.
class SpokenText : public QObject {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(nomely::MemoHandle memo READ memo WRITE setMemo NOTIFY memoChanged)
  Q_PROPERTY(QString fileName READ fileName WRITE setFileName NOTIFY fileNameChanged)
  Q_PROPERTY(double position READ position WRITE setPosition NOTIFY positionChanged)
  Q_PROPERTY(QString text READ text NOTIFY textChanged)
  Q_PROPERTY(int begin READ begin NOTIFY wordChanged)
  Q_PROPERTY(int end READ end NOTIFY wordChanged)

 public:
  [[nodiscard]] MemoHandle memo() const { return memo_; }
  void setMemo(const MemoHandle& memo);
  [[nodiscard]] QString fileName() const { return fileName_; }
  void setFileName(const QString& fileName);
  // Seconds; negative while nothing is spoken.
  [[nodiscard]] double position() const { return position_; }
  void setPosition(double position);
  // Empty without a transcript that has times.
  [[nodiscard]] QString text() const { return words_.text(); }
  [[nodiscard]] int begin() const { return static_cast<int>(word_.begin); }
  [[nodiscard]] int end() const { return static_cast<int>(word_.end); }

  Q_INVOKABLE [[nodiscard]] double secondOf(int place) const { return words_.secondOf(place); }

 signals:
  void memoChanged();
  void fileNameChanged();
  void positionChanged();
  void textChanged();
  void wordChanged();

 private:
  void rebuild();
  void findWord();

  MemoHandle memo_;
  QString fileName_;
  double position_ = -1;
  SpokenWords words_;
  SpokenWords::Range word_;
};

}  // namespace nomely
