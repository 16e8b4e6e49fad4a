#include <array>

#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include "AI/Voice/AudioRecorder.h"
#include "CLI/Arguments.h"
#include "CLI/Command.h"
#include "CLI/Interruption.h"
#include "CLI/MemoOutput.h"
#include "CLI/Voice.h"
#include "CLI/Waiting.h"
#include "Core/Storage/DraftStore.h"
#include "Editor/Recording/RecordingRecovery.h"
#include "Platform/Audio/MediaFile.h"
#include "Platform/Cancellation.h"

namespace nomely {
namespace {

// One line of a terminal: "● 00:12  ▇▇▇▇". Pausing and going on are for its user, too.
class RecordingLine {
 public:
  explicit RecordingLine(const Session& session)
      : line_(session), isRead_(!session.options.noInput && Terminal::isInput()) {
    if (line_.isShown())
      session.say(isRead_ ? "正在录音：回车暂停或继续，Ctrl-C 结束并保存。"
                          : "正在录音：Ctrl-C 结束并保存。");
  }

  void show(const CaptureStatus& status) const {
    constexpr double width = 20;
    const auto whole = static_cast<int>(status.seconds);
    std::string level;
    for (int i = 0; i < static_cast<int>(status.level * width); ++i) level += "▇";
    line_.show(fmt::format("{} {:02}:{:02}  {}", status.isPaused ? "‖" : "●", whole / 60,
                           whole % 60, level));
  }

  // Waits for a moment; true when the user has pressed return meanwhile.
  [[nodiscard]] bool awaitReturn() {
    constexpr int moment = 100;  // milliseconds
    pollfd input{STDIN_FILENO, POLLIN, 0};
    if (::poll(&input, isRead_ ? 1 : 0, moment) <= 0) return false;
    std::array<char, 256> typed{};
    const ssize_t count = ::read(STDIN_FILENO, typed.data(), typed.size());
    if (count <= 0) isRead_ = false;
    return count > 0;
  }

 private:
  Waiting line_;
  bool isRead_;
};

class RecordCommand final : public Command {
 public:
  void declare(Syntax& syntax) override {
    syntax.add({.name = "--attach-to",
                .help = "附到这条笔记上，默认新建一条",
                .target = &reference_,
                .value = "REF",
                .kind = WordKind::reference});
    syntax.add({.name = "--device",
                .help = "ALSA 录音设备，默认 default",
                .target = &device_,
                .value = "DEVICE"});
    syntax.examples = {"nomely record", "nomely record --attach-to @"};
  }

  void run(Session& session) override {
    std::optional<TimelineEntry> entry;
    if (reference_) entry = Arguments::memo(*reference_, session);
    const bool isNewRoot = !session.hasRoot();
    const auto folder = DraftStore(session.memos().context()).ensureRecordingsDir();
    if (isNewRoot)
      session.say(fmt::format("新建了数据目录：{}",
                              Terminal::printable(session.dayStore().paths().rootURL.string())));
    recover(session);

    AudioRecorder recorder(session.audio(), session.clock());
    const Moment begun = session.clock().now();
    recorder.startRecording(folder, device_);
    followToItsEnd(recorder, session);
    const std::filesystem::path file = recorder.stopRecording();
    if (!hasSound(file)) {
      recorder.discardRecording();
      throw Error("record.empty", "没有录到声音，没有存成笔记");
    }
    const TimelineEntry kept = store(file, begun, entry, session);
    const std::string attachment = kept.memo.attachments.back();
    recorder.discardRecording();
    transcribe(kept, attachment, session);
  }

 private:
  static void recover(Session& session) {
    const auto recovered = RecordingRecovery::run(session.memos(), {});
    if (!recovered.empty())
      session.say(fmt::format("{} 段录音，已挂在「{}」标签下", recovered.size(),
                              MemoService::recordingTag));
  }

  static void followToItsEnd(AudioRecorder& recorder, const Session& session) {
    std::stop_source stop;
    const Interruption interruption(stop);
    RecordingLine line(session);
    CaptureStatus status;
    while (!stop.stop_requested() && !(status = recorder.status()).hasEnded) {
      line.show(status);
      if (!line.awaitReturn()) continue;
      if (!(status.isPaused ? recorder.resumeRecording() : recorder.pauseRecording()))
        session.say("无法继续录音");
    }
    if (!status.failure.empty())
      session.say(fmt::format("\n录音中断：{}，已录下的部分会保存", status.failure));
  }

  static bool hasSound(const std::filesystem::path& file) {
    try {
      return MediaFile::duration(file, {}) > 0;
    } catch (const MediaError& error) {
      return error.kind() == MediaError::Kind::other;
    }
  }

  static TimelineEntry store(const std::filesystem::path& file, Moment begun,
                             const std::optional<TimelineEntry>& entry, Session& session) {
    try {
      if (entry) {
        // As it stands after minutes of talking.
        const auto present =
            session.dayStore().memoStore().read(entry->date, entry->memo.seqNumber);
        const bool isSame = present && present->memoId == entry->memo.memoId;
        return {entry->date,
                session.memos().attach(entry->date, isSame ? *present : entry->memo, {file})};
      }
      const auto [day, memo] = RecordingRecovery::intoMemo(file, begun, session.memos());
      return {day, memo};
    } catch (const Error&) {
      session.say(fmt::format("录音还在 {}，下一次 nomely record 会把它存成笔记。",
                              Terminal::printable(file.string())));
      throw;
    }
  }

  // The recording is safe by now, whatever becomes of its text.
  static void transcribe(TimelineEntry entry, const std::string& attachment, Session& session) {
    TranscriptionResult result;
    try {
      result =
          Voice::transcribe(session.dayStore().paths().dayFolder(entry.date) / attachment, session);
      if (result.failedSegmentCount > 0)
        session.say(fmt::format("录音已保存，已完成 {}/{} 段转写",
                                result.totalSegmentCount - result.failedSegmentCount,
                                result.totalSegmentCount));
      if (auto memo = Voice::keep(result, attachment, entry, session))
        entry.memo = std::move(*memo);
      else
        session.say("录音已保存；笔记已在别处改动，转出的文字没有存入：" + result.text);
    } catch (const CancellationError&) {
      session.say("录音已保存，没有转文字。");
    } catch (const Error& error) {
      session.say(std::string("录音已保存，转文字失败：") + Terminal::printable(error.what()));
      if (const auto* told = dynamic_cast<const TranscriberError*>(&error))
        Voice::advise(*told, session);
    }
    if (!session.isJson()) return MemoOutput::printStored(entry, session);
    Json json{{"date", entry.date.string()},
              {"seqNumber", entry.memo.seqNumber},
              {"memoId", entry.memo.memoId.value_or("")},
              {"attachment", attachment}};
    json.update(Voice::json(result));
    session.printJson(json);
  }

  std::optional<std::string> reference_;
  std::string device_ = AudioRecorder::usualDevice;
};

}  // namespace

std::unique_ptr<Command> makeRecordCommand() {
  return std::make_unique<RecordCommand>();
}

}  // namespace nomely
