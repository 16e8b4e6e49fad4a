#include "Feishu/Messages/FeishuRecorder.h"

#include <array>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "Core/Extensions/AttachmentNamingKit.h"
#include "Core/Extensions/PathNames.h"
#include "Platform/Audio/MediaFile.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/PrivateFolder.h"
#include "Platform/System/Log.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

using Kind = FeishuMessage::Kind;
using WriteResult = FeishuMemoWriter::WriteResult;
using IncomingFile = MemoService::IncomingFile;

// By its first bytes, else the usual one.
std::string extensionOf(const std::filesystem::path& file, const char* usual) {
  std::array<char, 12> first{};
  std::size_t size = 0;
  if (const auto open =
          posixFileSystem().open(file, FileSystem::OpenMode::read, LinkPolicy::follow))
    while (const std::size_t count = open->read(std::span(first).subspan(size))) size += count;
  return FileTypeDetector::magicExtension({first.data(), size}).value_or(usual);
}

void logResult(const FeishuMessage& message, const WriteResult& result) {
  const bool isText = message.kind == Kind::text;
  if (result.kind == WriteResult::Kind::attachmentFailed)
    Log::error(LogChannel::feishu, "{}落地失败", message.noun());
  else if (result.kind == WriteResult::Kind::failure && isText)
    Log::error(LogChannel::feishu, "写 memo 失败：{}", result.reason);
  else if (result.kind == WriteResult::Kind::failure)
    Log::error(LogChannel::feishu, "{} memo 写失败：{}", message.noun(), result.reason);
  else if (result.place && !isText)
    Log::information(LogChannel::feishu, "已记录{} seq={}", message.noun(),
                     result.place->seqNumber);
}

}  // namespace

// One attempt at a message with media. What it throws was logged.
class FeishuRecorder::Attempt {
 public:
  Attempt(const Parts& parts, const FeishuMessage& message, const std::stop_token& stop)
      : parts_(parts), message_(message), stop_(stop) {}

  // The memo, whose files lie in a folder of this object's.
  [[nodiscard]] FeishuMemoWriter::Content content(Moment date) {
    FeishuMemoWriter::Content content{.messageId = message_.messageId, .date = date};
    for (const FeishuMessage::Resource& resource : message_.resources) {
      const std::filesystem::path file = fetched(resource);
      content.files.push_back(message_.kind == Kind::audio ? voice(file) : asIs(file, resource));
    }
    content.body = body();
    return content;
  }

 private:
  [[nodiscard]] std::filesystem::path fetched(const FeishuMessage::Resource& resource) {
    try {
      if (!folder_) folder_.emplace(parts_.context.temporaryFolder, "feishu");
      std::filesystem::path file = folder_->path() / std::to_string(count_++);
      FeishuAPI::downloadResource({parts_.context.http, parts_.context.platformRoot},
                                  {message_.messageId, parts_.replies.token(stop_)}, resource.key,
                                  resource.type, file, stop_);
      return file;
    } catch (const CancellationError&) {
      throw;
    } catch (const Error& error) {
      if (message_.kind == Kind::image)
        Log::error(LogChannel::feishu, "图片下载失败 image_key={}：{}", resource.key, error.what());
      else
        Log::error(LogChannel::feishu, "{}下载失败 file_key={} msg_id={}：{}", message_.noun(),
                   resource.key, message_.messageId, error.what());
      throw;
    }
  }

  // The name of a file, or of a film in a post, tells more than its first bytes do.
  [[nodiscard]] IncomingFile asIs(const std::filesystem::path& file,
                                  const FeishuMessage::Resource& resource) const {
    const bool isPicture = resource.type == FeishuAPI::Resource::image;
    std::string extension = lowerCaseExtension(message_.kind == Kind::file ? message_.text : "");
    if (isPicture)
      extension = extensionOf(file, "jpg");
    else if (message_.kind == Kind::post)
      extension = "mp4";
    else if (extension.empty())
      extension = extensionOf(file, "");
    return {.path = file,
            .extension = std::move(extension),
            .originalName = message_.kind == Kind::file ? message_.text : ""};
  }

  [[nodiscard]] IncomingFile voice(const std::filesystem::path& file) {
    const std::filesystem::path sound = folder_->path() / "voice.m4a";
    try {
      MediaFile::convertToM4A(file, sound, stop_);
    } catch (const CancellationError&) {
      throw;
    } catch (const Error&) {
      Log::error(LogChannel::feishu, "语音转码失败，不记录");
      throw;
    }
    IncomingFile voice{.path = sound, .extension = extensionOf(sound, "m4a"), .originalName = ""};
    if (auto heard = transcribed(sound)) {
      spoken_ = std::move(heard->text);
      if (!heard->transcript.isEmpty()) voice.transcript = std::move(heard->transcript);
    }
    return voice;
  }

  [[nodiscard]] std::optional<TranscriptionResult> transcribed(
      const std::filesystem::path& sound) const {
    try {
      auto result = parts_.context.makeTranscriber()->transcribeWithTimeline(sound, {}, stop_);
      Log::information(LogChannel::feishu, "语音转录完成（{} 字）", graphemeCount(result.text));
      return result;
    } catch (const CancellationError&) {
      throw;
    } catch (const Error& error) {
      Log::error(LogChannel::feishu, "语音转录失败：{}", error.what());
      return std::nullopt;
    }
  }

  [[nodiscard]] std::string body() const {
    switch (message_.kind) {
      case Kind::audio:
        return spoken_.empty() ? "🎙️ 来自飞书的语音" : "🎙️ " + spoken_;
      case Kind::file:
        return message_.text.empty() ? "📎 来自飞书的文件" : message_.text;
      default:
        return message_.text.empty() ? "📷 来自飞书" : message_.text;
    }
  }

  const Parts& parts_;
  const FeishuMessage& message_;
  const std::stop_token& stop_;
  std::optional<PrivateFolder> folder_;
  int count_ = 0;
  std::string spoken_;
};

FeishuMemoWriter::WriteResult FeishuRecorder::record(const FeishuInbox::Entry& entry,
                                                     const std::stop_token& stop) const {
  const FeishuMessage& message = entry.message;
  try {
    if (message.isTextAlone())
      return write(entry,
                   {.body = message.text, .messageId = message.messageId, .date = entry.date});
    Attempt attempt(parts_, message, stop);
    return write(entry, attempt.content(entry.date));
  } catch (const CancellationError&) {
    throw;
  } catch (const Error& error) {
    return {.kind = WriteResult::Kind::failure, .reason = error.what()};
  }
}

WriteResult FeishuRecorder::write(const FeishuInbox::Entry& entry,
                                  const FeishuMemoWriter::Content& content) const {
  FeishuMemoWriter& writer = parts_.writer;
  WriteResult result = parts_.context.storage().write([&] {
    WriteResult written = content.files.empty() ? writer.writeMemo(content)
                                                : writer.writeMemoWithAttachments(content);
    try {
      if (written.stands()) parts_.inbox.remove(entry);
    } catch (const Error& error) {
      // The next start finds the memo there, and removes it then.
      Log::error(LogChannel::feishu, "收件箱里的 {} 删不掉：{}", entry.name, error.what());
    }
    return written;
  });
  logResult(entry.message, result);
  return result;
}

}  // namespace nomely
