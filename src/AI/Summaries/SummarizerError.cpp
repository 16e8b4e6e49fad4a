#include "AI/Summaries/SummarizerError.h"

#include <array>
#include <string>

namespace nomely {
namespace {

struct Case {
  std::string_view code;
  const char* text;
};

const Case& caseOf(SummarizerError::Kind kind) {
  static constexpr std::array<Case, 4> cases{
      {{"summary.noNotes", "该时间段没有任何笔记，无法生成总结。"},
       {"summary.invalidDate", "日期无效。"},
       {"summary.unsupportedStyle", "该视角不支持此总结类型。"},
       {"summary.emptyReply", "AI 的回复是空的，没有保存总结，请重试。"}}};
  return cases.at(static_cast<std::size_t>(kind));
}

}  // namespace

SummarizerError::SummarizerError(Kind kind)
    : Error(caseOf(kind).code, caseOf(kind).text), kind_(kind) {}

}  // namespace nomely
