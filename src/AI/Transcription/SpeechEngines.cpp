#include "AI/Transcription/SpeechEngines.h"

#include <cerrno>
#include <sstream>
#include <string>
#include <utility>

#include <fcntl.h>

#include "AI/Transcription/SpeechTranscriber.h"
#include "AI/Transcription/TranscriptionClient.h"
#include "Platform/Audio/HelperProcess.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

constexpr std::string_view sphinxModel = "pocketsphinx";
constexpr std::string_view sphinxPrefix = "pocketsphinx:";
constexpr auto sphinxProgram = "nomely-sphinx";
constexpr auto usualModel = "/usr/share/pocketsphinx/model/en-us";

// PocketSphinx, in a process of its own; not every build has it.
class SphinxRecognizer final : public SpeechRecognizer {
 public:
  explicit SphinxRecognizer(std::string model) : model_(std::move(model)) {}

  [[nodiscard]] bool isAvailable() const override {
    return HelperProcess::isInstalled(sphinxProgram);
  }

  [[nodiscard]] Recognition recognize(const std::filesystem::path& file,
                                      const std::stop_token& stop) override {
    const Descriptor source(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (source.get() < 0) throw FileError("读取", file, errno);
    HelperProcess process({.program = sphinxProgram, .arguments = {model_}, .input = source.get()});
    Recognition heard;
    for (;;) {
      const auto line = process.readLine(stop);
      if (line == "done") return heard;
      if (!line || !line->starts_with("word ")) {
        Log::information(LogChannel::app, "nomely-sphinx: {}",
                         line.value_or("ended without an answer"));
        throw TranscriberError(TranscriberError::Kind::recognitionFailed,
                               "PocketSphinx 无法使用模型 " + model_);
      }
      std::istringstream words(*line);
      std::string ignored;
      AudioTranscriptSegment segment;
      words >> ignored >> segment.start >> segment.duration >> segment.text;
      heard.text.append(heard.text.empty() ? "" : " ").append(segment.text);
      heard.segments.push_back(std::move(segment));
    }
  }

 private:
  std::string model_;
};

bool isSphinx(const TranscriptionConfig& config) {
  return config.model == sphinxModel || config.model.starts_with(sphinxPrefix);
}

}  // namespace

bool asksServer(const TranscriptionConfig& config) {
  return !isSphinx(config) && !config.baseURL.empty();
}

std::shared_ptr<SpeechRecognizer> makeSpeechRecognizer(const TranscriptionConfig& config,
                                                       HttpClient& http) {
  if (asksServer(config)) return std::make_shared<TranscriptionClient>(config, http);
  if (!isSphinx(config)) return nullptr;
  return std::make_shared<SphinxRecognizer>(
      config.model == sphinxModel ? usualModel : config.model.substr(sphinxPrefix.size()));
}

}  // namespace nomely
