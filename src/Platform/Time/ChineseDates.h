#pragma once

#include <memory>
#include <string>

#include "Platform/Time/Day.h"

namespace nomely {

// Days in words, as ICU's locale zh_CN has them. For one thread at a time; making one takes longer
// than a thousand answers.
class ChineseDates {
 public:
  // `pattern` is of Unicode's date fields (UTS #35): "M月d日 EEEE" → "3月1日 星期日".
  explicit ChineseDates(const std::string& pattern);
  ~ChineseDates();
  ChineseDates(const ChineseDates&) = delete;
  ChineseDates& operator=(const ChineseDates&) = delete;

  [[nodiscard]] std::string format(Day day) const;

 private:
  struct Formatter;
  std::unique_ptr<Formatter> formatter_;
};

}  // namespace nomely
