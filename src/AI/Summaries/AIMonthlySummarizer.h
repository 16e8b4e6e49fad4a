#pragma once

#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "AI/Summaries/NoteCorpus.h"
#include "AI/Summaries/SummaryStyle.h"
#include "AI/Vendor/AIService.h"
#include "Core/Service/MemoService.h"

namespace nomely {

// Has a model sum up the notes of a month or a year, and saves what it writes as a memo of today
// below the tag 个人专栏, which keeps it out of later summaries. Blocking and stateless; any
// thread.
//
// What would go to the model is made first, so that it can be shown before anything is sent. Of a
// note it holds the text as a reader sees it: the text from before an AI action stays here.
class AIMonthlySummarizer {
 public:
  using Style = SummaryStyle;

  struct Month {
    int year;
    int month;
  };
  // What goes to the model, and what is put before its reply.
  struct Question {
    AIService::Prompt prompt;
    std::string overview;
    std::size_t notes = 0;
  };

  // Notes with one of the tags, or one below it, stay out of every question. `memos` must outlive
  // it.
  explicit AIMonthlySummarizer(const MemoService& memos, std::vector<std::string> excludedTags = {})
      : memos_(memos), excludedTags_(std::move(excludedTags)) {}

  // Both throw SummarizerError (noNotes, invalidDate, unsupportedStyle), FileError when the root
  // can't be listed, and CancellationError. A note that can't be read is left out.
  [[nodiscard]] Question monthQuestion(Month month, Style style, const std::stop_token& stop) const;
  [[nodiscard]] Question yearQuestion(int year, Style style, const std::stop_token& stop) const;

  // The text to save. Throws as AIService::chat, and SummarizerError::emptyReply.
  [[nodiscard]] static AIService::Reply ask(const Question& question, AIService& service,
                                            const std::stop_token& stop);

  // Return the memo. Throw SummarizerError::invalidDate, WriteError, FileError.
  Memo saveSummary(const std::string& content, Month month, Style style) const;
  Memo saveAnnualSummary(const std::string& content, int year, Style style) const;

  // By ascending days, within a day by descending numbers.
  [[nodiscard]] std::vector<NoteEntry> collectNotes(Month month, bool excludePersonalColumn,
                                                    const std::stop_token& stop) const;
  [[nodiscard]] std::vector<NoteEntry> collectNotesForYear(int year,
                                                           const std::stop_token& stop) const;
  // The text of the latest summary of the month before, whichever its style.
  [[nodiscard]] std::optional<std::string> previousMonthSummary(Month month,
                                                                const std::stop_token& stop) const;

 private:
  [[nodiscard]] std::vector<NoteEntry> notesBetween(Day first, Day last, bool excludePersonalColumn,
                                                    const std::stop_token& stop) const;
  [[nodiscard]] bool isExcluded(const Memo& memo) const;
  [[nodiscard]] Memo save(const std::string& title, const std::string& tag,
                          const std::string& content) const;

  const MemoService& memos_;
  std::vector<std::string> excludedTags_;
};

}  // namespace nomely
