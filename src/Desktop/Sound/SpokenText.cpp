#include "Desktop/Sound/SpokenText.h"

#include <algorithm>
#include <utility>

#include "Desktop/Base/Qt.h"

namespace nomely {

SpokenWords::SpokenWords(const AudioTranscript& transcript) {
  if (transcript.isEmpty()) return;
  if (!findWords(transcript)) joinWords(transcript);
  std::ranges::stable_sort(words_, {}, &Word::start);
}

bool SpokenWords::findWords(const AudioTranscript& transcript) {
  // A recogniser leaves out no more than that between two words: further off is another place.
  constexpr qsizetype farthest = 40;
  text_ = qt(transcript.text);
  qsizetype from = 0;
  for (const AudioTranscriptSegment& segment : transcript.segments) {
    const QString word = qt(segment.text).trimmed();
    if (word.isEmpty()) continue;
    const qsizetype begin = text_.indexOf(word, from);
    if (begin < 0 || begin > from + farthest) return words_.clear(), false;
    from = begin + word.size();
    words_.push_back({segment.start, {begin, from}});
  }
  return !words_.empty();
}

void SpokenWords::joinWords(const AudioTranscript& transcript) {
  text_.clear();
  for (const AudioTranscriptSegment& segment : transcript.segments) {
    const QString word = qt(segment.text).trimmed();
    if (word.isEmpty()) continue;
    // Latin words need a blank between them.
    if (!text_.isEmpty() && text_.back().unicode() < 0x250 && word.front().unicode() < 0x250)
      text_ += u' ';
    const qsizetype begin = text_.size();
    text_ += word;
    words_.push_back({segment.start, {begin, text_.size()}});
  }
}

SpokenWords::Range SpokenWords::at(double second) const {
  const auto next = std::ranges::upper_bound(words_, second, {}, &Word::start);
  return next == words_.begin() ? Range{} : std::prev(next)->range;
}

double SpokenWords::secondOf(qsizetype place) const {
  const auto word =
      std::ranges::find_if(words_, [place](const Word& each) { return place < each.range.end; });
  if (word != words_.end()) return word->start;
  return words_.empty() ? 0 : words_.back().start;
}

void SpokenText::setMemo(const MemoHandle& memo) {
  if (memo_ == memo) return;
  memo_ = memo;
  emit memoChanged();
  rebuild();
}

void SpokenText::setFileName(const QString& fileName) {
  if (std::exchange(fileName_, fileName) == fileName) return;
  emit fileNameChanged();
  rebuild();
}

void SpokenText::setPosition(double position) {
  if (std::exchange(position_, position) == position) return;
  emit positionChanged();
  findWord();
}

void SpokenText::rebuild() {
  SpokenWords words;
  if (memo_.isValid()) {
    const auto& transcripts = memo_.entry.memo->audioTranscripts;
    const auto found = transcripts.find(utf8(fileName_));
    if (found != transcripts.end()) words = SpokenWords(found->second);
  }
  words_ = std::move(words);
  emit textChanged();
  findWord();
}

void SpokenText::findWord() {
  const SpokenWords::Range word = words_.at(position_);
  if (std::exchange(word_, word) != word) emit wordChanged();
}

}  // namespace nomely
