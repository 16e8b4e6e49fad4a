#include "Editor/Intelligence/SummaryGeneration.h"

#include "Platform/Cancellation.h"
#include "Platform/Concurrency/NotificationCenter.h"

namespace nomely {

SummaryGeneration::SummaryGeneration(const MemoService& memos, AIAccess access, Shown shown)
    : summarizer_(memos),
      access_(std::move(access)),
      shown_(std::move(shown)),
      jobs_(access_.executor) {}

void SummaryGeneration::generateSummary(Style style, AIMonthlySummarizer::Month month) {
  generate(
      [this, style, month](const std::stop_token& stop) {
        return summarizer_.monthQuestion(month, style, stop);
      },
      [this, style, month](const std::string& content) {
        summarizer_.saveSummary(content, month, style);
      },
      "总结生成失败：");
}

void SummaryGeneration::generateAnnualSummary(Style style, int year) {
  generate([this, style, year](
               const std::stop_token& stop) { return summarizer_.yearQuestion(year, style, stop); },
           [this, style, year](const std::string& content) {
             summarizer_.saveAnnualSummary(content, year, style);
           },
           "年度总结生成失败：");
}

void SummaryGeneration::cancel() {
  running_.request_stop();
}

void SummaryGeneration::generate(Questioning question, Saving save,
                                 const std::string& failurePrefix) {
  cancel();
  isGenerating.set(true);
  notice.set(std::nullopt);
  const std::size_t generation = ++generation_;
  running_ = jobs_.run(
      [this, question = std::move(question), save = std::move(save)](const std::stop_token& stop) {
        throwIfStopped(stop);
        AIService service(access_.config(), access_.http);
        const AIService::Reply reply = AIMonthlySummarizer::ask(question(stop), service, stop);
        save(reply.text);
        return Saved{reply.isCutOff};
      },
      [this, generation, failurePrefix](const Outcome<Saved>& outcome) {
        if (generation == generation_) isGenerating.set(false);
        finish(outcome, failurePrefix);
      });
}

void SummaryGeneration::finish(const Outcome<Saved>& outcome, const std::string& failurePrefix) {
  NotificationCenter& notices = NotificationCenter::shared();
  if (outcome.value) {
    if (outcome.value->isCutOff) notice.set(std::string(AIService::cutOffNotice));
    shown_.reload();
    notices.post(Notifications::refreshSidebarTags);
  } else if (!outcome.isCancelled()) {
    shown_.failure(failurePrefix + outcome.message());
  }
  notices.post(Notifications::monthlySummaryCompleted);
}

}  // namespace nomely
