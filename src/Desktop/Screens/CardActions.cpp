#include "Desktop/Screens/CardActions.h"

#include <QDesktopServices>
#include <QUrl>

#include "App/Application.h"
#include "Core/Markdown/Blocks/CheckMarks.h"
#include "Desktop/Base/Navigation.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Text/CopiedText.h"
#include "Editor/Timeline/DayViewModel.h"
#include "Export/HTMLExporter.h"

namespace nomely {

CardActions::CardActions(const ScreenContext& context)
    : context_(context), work_(context.executor, context.jobs) {}

void CardActions::read(const MemoHandle& memo) {
  reading_ = memo;
  emit readingChanged();
}

void CardActions::tick(const MemoHandle& memo, int line) {
  if (!memo.isValid() || line < 0) return;
  auto body = CheckMarks::toggled(memo.entry.memo->body, static_cast<std::size_t>(line));
  if (!body) return;
  Memo changed = *memo.entry.memo;
  changed.body = *std::move(body);
  context_.application.dayViewModel().updateMemo(std::move(changed), memo.entry.date);
}

void CardActions::copyText(const MemoHandle& memo) {
  CopiedText::toClipboard(CopiedText::plain(memo));
  context_.navigation.toast(tr("已复制文字"));
}

void CardActions::copyMarkdown(const MemoHandle& memo) {
  CopiedText::toClipboard(CopiedText::markdown(memo));
  context_.navigation.toast(tr("已复制 Markdown"));
}

void CardActions::copyHtml(const MemoHandle& memo) {
  if (!memo.isValid()) return;
  work_.run(
      [attachments = AttachmentManager(context_.application.storage()),
       entry = memo.entry](const std::stop_token&) {
        return HTMLExporter::exportMemo(*entry.memo, entry.date, attachments);
      },
      [this, memo](const std::string& html) {
        CopiedText::toClipboard(CopiedText::plain(memo), qt(html));
        context_.navigation.toast(tr("已复制网页格式"));
      },
      [this](const std::string& failure) {
        context_.navigation.fail(tr("复制失败：%1").arg(qt(failure)));
      });
}

void CardActions::openLink(const QString& address) {
  QUrl url(address);
  // Bare names are made links without a scheme.
  if (url.isRelative()) url = QUrl(QStringLiteral("http://") + address);
  const QString scheme = url.scheme();
  const bool isSafe = scheme == u"http" || scheme == u"https" || scheme == u"mailto";
  if (!isSafe)
    context_.navigation.fail(tr("这里只打开网页和邮件链接：%1").arg(address.left(200)));
  else if (!QDesktopServices::openUrl(url))
    context_.navigation.fail(tr("没有能打开这个链接的程序：%1").arg(url.toDisplayString()));
}

}  // namespace nomely
