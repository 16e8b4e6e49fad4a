// Hears the words of the WAV file on descriptor 0 (16 kHz, mono, 16 bits):
//
//   nomely-sphinx MODEL    "word START DURATION TEXT" for each, in seconds, then "done"
//
// MODEL is a folder with an acoustic model (itself, or a folder in it with a file "mdef"), a
// language model and a dictionary.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <pocketsphinx.h>
#include <sphinxbase/err.h>
#include <unistd.h>

#include "Media/Confinement.h"

namespace nomely::media {
namespace {

constexpr std::size_t headerSize = 44;
constexpr double frameLength = 0.01;  // seconds

struct FreeDecoder {
  void operator()(ps_decoder_t* decoder) const { ::ps_free(decoder); }
};
using Decoder = std::unique_ptr<ps_decoder_t, FreeDecoder>;

struct Model {
  std::string sound;
  std::string language;
  std::string dictionary;
};

Model findModel(const std::filesystem::path& folder) {
  Model model;
  if (std::filesystem::exists(folder / "mdef")) model.sound = folder;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    const std::filesystem::path& path = entry.path();
    const std::string name = path.filename();
    const auto ends = [&](std::initializer_list<const char*> endings) {
      return std::ranges::any_of(endings, [&](const char* end) { return name.ends_with(end); });
    };
    if (entry.is_directory() && std::filesystem::exists(path / "mdef")) model.sound = path;
    // "en-us-phone.lm.bin" beside "en-us.lm.bin" is one of sounds rather than of words.
    if (ends({".lm.bin", ".lm", ".lm.dmp", ".DMP"}) &&
        (model.language.empty() || path.string().size() < model.language.size()))
      model.language = path;
    if (ends({".dict", ".dic"})) model.dictionary = path;
  }
  if (model.sound.empty() || model.language.empty() || model.dictionary.empty())
    throw std::runtime_error("incomplete model");
  return model;
}

Decoder makeDecoder(const std::filesystem::path& folder) {
  const Model model = findModel(folder);
  cmd_ln_t* const config = ::cmd_ln_init(nullptr, ::ps_args(), TRUE, "-hmm", model.sound.c_str(),
                                         "-lm", model.language.c_str(), "-dict",
                                         model.dictionary.c_str(), "-logfn", "/dev/null", nullptr);
  if (config == nullptr) throw std::runtime_error("no configuration");
  Decoder decoder(::ps_init(config));
  ::cmd_ln_free_r(config);
  if (!decoder) throw std::runtime_error("model refused");
  return decoder;
}

std::vector<std::int16_t> readSamples() {
  std::string bytes;
  std::vector<char> buffer(1U << 16U);
  for (;;) {
    const ssize_t count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
    if (count < 0) throw std::runtime_error("unreadable");
    if (count == 0) break;
    bytes.append(buffer.data(), static_cast<std::size_t>(count));
  }
  if (bytes.size() <= headerSize || !bytes.starts_with("RIFF")) throw std::runtime_error("no WAV");
  std::vector<std::int16_t> samples((bytes.size() - headerSize) / sizeof(std::int16_t));
  std::copy_n(bytes.data() + headerSize, samples.size() * sizeof(std::int16_t),
              reinterpret_cast<char*>(samples.data()));
  return samples;
}

// "<sil>", "[NOISE]" and "++UM++" are no words; "read(2)" is the second way to say "read".
std::string wordOf(const std::string& entry) {
  if (entry.empty() || entry.starts_with('<') || entry.starts_with('[') || entry.starts_with("++"))
    return "";
  return entry.substr(0, entry.find('('));
}

void tellWords(ps_decoder_t* decoder) {
  for (ps_seg_t* piece = ::ps_seg_iter(decoder); piece != nullptr; piece = ::ps_seg_next(piece)) {
    const std::string word = wordOf(::ps_seg_word(piece));
    int first = 0;
    int last = 0;
    ::ps_seg_frames(piece, &first, &last);
    if (!word.empty())
      std::cout << "word " << first * frameLength << ' ' << (last - first + 1) * frameLength << ' '
                << word << '\n';
  }
}

void run(const std::filesystem::path& folder) {
  ::err_set_logfp(nullptr);
  const Decoder decoder = makeDecoder(folder);
  confine();
  const std::vector<std::int16_t> samples = readSamples();
  if (::ps_start_utt(decoder.get()) < 0 ||
      ::ps_process_raw(decoder.get(), samples.data(), samples.size(), FALSE, FALSE) < 0 ||
      ::ps_end_utt(decoder.get()) < 0)
    throw std::runtime_error("decoding failed");
  tellWords(decoder.get());
  std::cout << "done" << std::endl;
}

}  // namespace
}  // namespace nomely::media

int main(int count, char** arguments) {
  int status = 0;
  try {
    nomely::media::run(count > 1 ? arguments[1] : "");
  } catch (const std::exception& error) {
    std::cout << "error " << error.what() << std::endl;
    status = 1;
  }
  // Looking for leaks takes calls that it may not make any more.
  ::_exit(status);
}
