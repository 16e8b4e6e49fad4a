#include "Core/Markdown/Frontmatter/YamlWriter.h"

#include <new>

#include <yaml.h>

#include "Core/Markdown/Frontmatter/YamlError.h"
#include "Core/Markdown/Frontmatter/YamlScalar.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

// Line breaks other than U+000A come back as U+000A from every style but the double-quoted one.
bool holdsForeignLineBreak(std::string_view text) {
  return text.find('\r') != std::string_view::npos ||
         text.find("\xC2\x85") != std::string_view::npos ||
         text.find("\xE2\x80\xA8") != std::string_view::npos ||
         text.find("\xE2\x80\xA9") != std::string_view::npos;
}

// The library writes characters above U+FFFF as escapes (`\U0001F4A1`), in which nothing that looks
// through the files finds them. One that it leaves as it is takes their places until the end; it
// takes its own place too, so that the places in the output are those of `placeheld_`.
constexpr std::string_view placeholder = "\uE000";

bool isBeyondLibrary(std::string_view text, std::size_t at) {
  return static_cast<unsigned char>(text[at]) >= 0xF0 || text.substr(at).starts_with(placeholder);
}

yaml_char_t* bytes(std::string_view text) {
  return reinterpret_cast<yaml_char_t*>(const_cast<char*>(text.data()));
}

}  // namespace

struct YamlWriter::Emitter {
  explicit Emitter(Layout chosen) : layout(chosen) {
    if (yaml_emitter_initialize(&emitter) == 0) throw std::bad_alloc();
    yaml_emitter_set_output(&emitter, &Emitter::append, &output);
    yaml_emitter_set_encoding(&emitter, YAML_UTF8_ENCODING);
    yaml_emitter_set_unicode(&emitter, 1);
    yaml_emitter_set_indent(&emitter, 2);
    yaml_emitter_set_width(&emitter, layout == Layout::folded ? 80 : -1);
    yaml_emitter_set_break(&emitter, YAML_LN_BREAK);
  }
  ~Emitter() { yaml_emitter_delete(&emitter); }
  Emitter(const Emitter&) = delete;
  Emitter& operator=(const Emitter&) = delete;

  static int append(void* output, unsigned char* buffer, std::size_t size) {
    static_cast<std::string*>(output)->append(reinterpret_cast<char*>(buffer), size);
    return 1;
  }

  // `prepared`: what initialising the event returned.
  void emit(int prepared) {
    if (prepared == 0) throw std::bad_alloc();
    // The emitter owns the event from here, whatever it answers.
    if (yaml_emitter_emit(&emitter, &event) == 0)
      throw YamlError("写不成 YAML",
                      emitter.problem != nullptr ? emitter.problem : "emitter failed");
  }

  void scalar(std::string_view text, yaml_scalar_style_t style) {
    emit(yaml_scalar_event_initialize(&event, nullptr, nullptr, bytes(text),
                                      static_cast<int>(text.size()), 1, 1, style));
  }

  yaml_emitter_t emitter{};
  yaml_event_t event{};
  std::string output;
  Layout layout;
};

YamlWriter::YamlWriter(Layout layout) : emitter_(std::make_unique<Emitter>(layout)) {
  yaml_event_t& event = emitter_->event;
  emitter_->emit(yaml_stream_start_event_initialize(&event, YAML_UTF8_ENCODING));
  emitter_->emit(yaml_document_start_event_initialize(&event, nullptr, nullptr, nullptr, 1));
}

YamlWriter::~YamlWriter() = default;

void YamlWriter::beginMapping() {
  emitter_->emit(yaml_mapping_start_event_initialize(&emitter_->event, nullptr, nullptr, 1,
                                                     YAML_BLOCK_MAPPING_STYLE));
}

void YamlWriter::endMapping() {
  emitter_->emit(yaml_mapping_end_event_initialize(&emitter_->event));
}

void YamlWriter::beginSequence() {
  emitter_->emit(yaml_sequence_start_event_initialize(&emitter_->event, nullptr, nullptr, 1,
                                                      YAML_BLOCK_SEQUENCE_STYLE));
}

void YamlWriter::endSequence() {
  emitter_->emit(yaml_sequence_end_event_initialize(&emitter_->event));
}

std::string YamlWriter::withPlaceholders(std::string_view value) {
  std::string held;
  held.reserve(value.size());
  std::size_t copied = 0;
  for (std::size_t at = 0; at < value.size(); ++at) {
    if (!isBeyondLibrary(value, at)) continue;
    const std::size_t length = decodeFirst(value.substr(at)).length;
    held.append(value.substr(copied, at - copied)).append(placeholder);
    placeheld_ += value.substr(at, length);
    copied = at + length;
  }
  return held.append(value.substr(copied));
}

void YamlWriter::string(std::string_view value) {
  if (!isValidUtf8(value))
    throw YamlError("有不是 UTF-8 的文字，请先转换编码", "value is not valid UTF-8");
  yaml_scalar_style_t style = YAML_ANY_SCALAR_STYLE;
  if (holdsForeignLineBreak(value) ||
      (emitter_->layout == Layout::singleLine && value.find('\n') != std::string_view::npos))
    style = YAML_DOUBLE_QUOTED_SCALAR_STYLE;
  else if (YamlScalar::resolvePlain(value) != YamlScalar::Type::string)
    style = YAML_SINGLE_QUOTED_SCALAR_STYLE;
  emitter_->scalar(withPlaceholders(value), style);
}

void YamlWriter::integer(std::int64_t value) {
  emitter_->scalar(std::to_string(value), YAML_PLAIN_SCALAR_STYLE);
}

void YamlWriter::boolean(bool value) {
  emitter_->scalar(value ? "true" : "false", YAML_PLAIN_SCALAR_STYLE);
}

void YamlWriter::floatingPoint(double value) {
  emitter_->scalar(YamlScalar::text(value), YAML_PLAIN_SCALAR_STYLE);
}

std::string YamlWriter::finish() {
  emitter_->emit(yaml_document_end_event_initialize(&emitter_->event, 1));
  emitter_->emit(yaml_stream_end_event_initialize(&emitter_->event));
  std::string_view rest = placeheld_;
  std::string document;
  std::string_view output = emitter_->output;
  while (!rest.empty()) {
    const std::size_t at = output.find(placeholder);
    const std::size_t length = decodeFirst(rest).length;
    document.append(output.substr(0, at)).append(rest.substr(0, length));
    output.remove_prefix(at + placeholder.size());
    rest.remove_prefix(length);
  }
  return document.append(output);
}

}  // namespace nomely
