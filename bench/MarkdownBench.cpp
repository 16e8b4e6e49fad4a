#include <string_view>
#include <vector>

#include <cmark-gfm.h>

#include "Core/Markdown/Inline/MemoBodyKit.h"
#include "Core/Markdown/MarkdownTextView.h"
#include "Core/Markdown/Text/MemoTextSanitizer.h"
#include "Core/Markdown/Text/TagParser.h"
#include "Platform/Text/RegularExpression.h"
#include "Platform/Text/Unicode.h"
#include "bench/Comparison.h"
#include "bench/Workspace.h"

namespace nomely::bench {
namespace {

const std::string& bodyAt(std::size_t index) {
  return fileInMemory(index).memo.body;
}

double bodyBytesInStep() {
  std::size_t bytes = 0;
  for (const MemoryFile& file : filesInMemory()) bytes += file.memo.body.size();
  return static_cast<double>(bytes) * filesInStep / static_cast<double>(filesInMemory().size());
}

// `work(index)` for the bodies of one step.
template <typename Work>
Steps::Step over(Work work) {
  return [work](std::size_t turn) {
    for (std::size_t i = 0; i < filesInStep; ++i) {
      auto result = work(turn * filesInStep + i);
      benchmark::DoNotOptimize(result);
    }
  };
}

template <typename Work>
Steps overBodies(Work work) {
  return {.ours = over([work](std::size_t index) { return work(bodyAt(index)); }),
          .units = filesInStep,
          .bytes = bodyBytesInStep()};
}

Steps blocks() {
  Steps steps =
      overBodies([](const std::string& body) { return MarkdownTextView::parseBlocks(body); });
  steps.floor = over([](std::size_t index) {
    const std::string& body = bodyAt(index);
    cmark_node* const document = cmark_parse_document(body.data(), body.size(), CMARK_OPT_DEFAULT);
    cmark_node_free(document);
    return index;
  });
  return steps;
}

// Each block's text, styled anew.
Steps styling() {
  static const std::vector<std::vector<std::string>> texts = [] {
    std::vector<std::vector<std::string>> all;
    for (const MemoryFile& file : filesInMemory()) {
      std::vector<std::string>& own = all.emplace_back();
      for (const MarkdownBlock& block : MarkdownTextView::parseBlocks(file.memo.body))
        if (const auto* paragraph = std::get_if<markdown::Paragraph>(&block))
          own.push_back(MarkdownTextView::preparedParagraph(paragraph->text));
    }
    return all;
  }();
  Steps steps = overBodies([](const std::string&) { return 0; });
  steps.ours = over([](std::size_t index) {
    std::size_t runs = 0;
    for (const std::string& text : texts[index % texts.size()])
      runs += MarkdownTextView::markdownAttributed(text, {}).runs.size();
    return runs;
  });
  return steps;
}

Steps previews() {
  return overBodies([](const std::string& body) { return MemoBodyKit::collapsedPreview(body); });
}

// Ours beside the bare expression over the same bodies.
template <typename Work>
Steps besideExpression(std::string_view pattern, Work work) {
  static const std::vector<std::u16string> bodies = [] {
    std::vector<std::u16string> all;
    for (const MemoryFile& file : filesInMemory()) all.push_back(toUtf16(file.memo.body));
    return all;
  }();
  Steps steps = overBodies(work);
  steps.floor =
      over([expression = std::make_shared<const RegularExpression>(pattern)](std::size_t index) {
        return expression->matches(bodies[index % bodies.size()]).size();
      });
  return steps;
}

Steps tags() {
  return besideExpression(R"((?:^|\s)#([^\s#@!?.，。！？、<>]+))",
                          [](const std::string& body) { return TagParser::matches(body).size(); });
}

Steps sanitizing() {
  return besideExpression(R"([ \t]*\[(?:Image|Attachment|File|图片|图像|附件)\s*#\d+\][ \t]*)",
                          [](const std::string& body) {
                            using enum MemoTextSanitizer::Edges;
                            return MemoTextSanitizer::removingAttachmentPlaceholders(body, keep);
                          });
}

}  // namespace

void registerMarkdown() {
  registerComparison({.what = "parseBlocks of a memo (floor: cmark-gfm's tree)",
                      .prepare = blocks,
                      .goal = {.ratio = 1.0}});
  registerComparison({.what = "style the paragraphs of a memo", .prepare = styling});
  registerComparison({.what = "collapsedPreview of a memo", .prepare = previews});
  registerComparison(
      {.what = "tags of a memo (floor: expression)", .prepare = tags, .goal = {.ratio = 0.5}});
  registerComparison({.what = "sanitize a memo (floor: expression)",
                      .prepare = sanitizing,
                      .goal = {.ratio = 0.5}});
}

}  // namespace nomely::bench
