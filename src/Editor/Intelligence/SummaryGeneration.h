#pragma once

#include <functional>
#include <optional>
#include <stop_token>
#include <string>

#include "AI/Summaries/AIMonthlySummarizer.h"
#include "Editor/Intelligence/AIAccess.h"
#include "Editor/Intelligence/AIJobs.h"
#include "Platform/Concurrency/Observable.h"

namespace nomely {

// Has summaries written and saved, one at a time: a new one cancels the one that is under way. The
// end of each posts Notifications::monthlySummaryCompleted. Main executor alone.
class SummaryGeneration {
 public:
  template <typename Value>
  using Property = Published<SummaryGeneration, Value>;
  using Style = SummaryStyle;

  struct Shown {
    std::function<void()> reload;                          // the timeline's lists
    std::function<void(const std::string& text)> failure;  // the timeline's error text
  };

  // Titles of the commands, and of the one that cancels.
  static constexpr std::string_view monthlyTitle = "生成月度总结";
  static constexpr std::string_view annualTitle = "生成年度总结";
  static constexpr std::string_view cancelTitle = "生成中，点此取消";

  // `memos` must outlive it.
  SummaryGeneration(const MemoService& memos, AIAccess access, Shown shown);

  Property<bool> isGenerating{false};
  // What has to be said of the last summary besides: that it was cut off.
  Property<std::optional<std::string>> notice;

  void generateSummary(Style style, AIMonthlySummarizer::Month month);
  void generateAnnualSummary(Style style, int year);
  // Once the reply is there the memo is saved all the same.
  void cancel();

 private:
  struct Saved {
    bool isCutOff;
  };
  using Questioning = std::function<AIMonthlySummarizer::Question(const std::stop_token&)>;
  using Saving = std::function<void(const std::string& content)>;

  void generate(Questioning question, Saving save, const std::string& failurePrefix);
  void finish(const Outcome<Saved>& outcome, const std::string& failurePrefix);

  AIMonthlySummarizer summarizer_;
  AIAccess access_;
  Shown shown_;
  std::stop_source running_;
  std::size_t generation_ = 0;
  AIJobs jobs_;
};

}  // namespace nomely
