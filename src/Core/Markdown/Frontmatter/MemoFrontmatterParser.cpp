#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"

#include <array>
#include <optional>

#include <fmt/format.h>

#include "Core/Markdown/Frontmatter/YamlDocument.h"
#include "Core/Markdown/Frontmatter/YamlScalar.h"
#include "Core/Markdown/Frontmatter/YamlWriter.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

using Node = YamlDocument::Node;
using Kind = YamlDocument::Kind;

constexpr std::string_view fence = "---";

std::string describe(ParseError::Kind kind, const std::string& message) {
  switch (kind) {
    case ParseError::Kind::yamlDecode:
      return fmt::format("yamlDecode({})", message);
    case ParseError::Kind::missingFrontmatter:
      return "missingFrontmatter";
    case ParseError::Kind::unclosedFrontmatter:
      return "unclosedFrontmatter";
  }
  return {};
}

std::string_view codeOf(ParseError::Kind kind) {
  switch (kind) {
    case ParseError::Kind::yamlDecode:
      return "memo.yamlDecode";
    case ParseError::Kind::missingFrontmatter:
      return "memo.missingFrontmatter";
    case ParseError::Kind::unclosedFrontmatter:
      return "memo.unclosedFrontmatter";
  }
  return {};
}

// Takes the line that `rest` begins with, without its line feed.
std::string_view takeLine(std::string_view& rest) {
  const std::size_t end = rest.find('\n');
  const std::string_view line = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  return line;
}

bool isFence(std::string_view line) {
  return trimHorizontal(line) == fence;
}

struct Parts {
  std::string_view header;
  std::string_view body;
};

Parts split(std::string_view content) {
  std::string_view rest = content;
  if (!isFence(takeLine(rest))) throw ParseError(ParseError::Kind::missingFrontmatter);
  const std::string_view start = rest;
  for (;;) {
    if (rest.empty()) throw ParseError(ParseError::Kind::unclosedFrontmatter);
    const std::string_view line = takeLine(rest);
    if (!isFence(line)) continue;
    const auto length = static_cast<std::size_t>(line.data() - start.data());
    const std::string_view header = start.substr(0, length);
    std::string_view body = rest;
    while (!body.empty()) {
      std::string_view next = body;
      if (!trimHorizontal(takeLine(next)).empty()) break;
      body = next;
    }
    return {header, body};
  }
}

[[noreturn]] void failType(std::string_view key, std::string_view wanted) {
  throw YamlError(fmt::format("{}: expected {}", key, wanted));
}

std::string stringOf(const Node& node, std::string_view key) {
  if (node.kind() != Kind::scalar) failType(key, "a string");
  return std::string(node.text());
}

std::int64_t integerOf(const Node& node, std::string_view key) {
  const auto value = node.kind() == Kind::scalar ? YamlScalar::integer(node.text()) : std::nullopt;
  if (!value) failType(key, "an integer of 64 bits");
  return *value;
}

bool booleanOf(const Node& node, std::string_view key) {
  const auto value = node.kind() == Kind::scalar ? YamlScalar::boolean(node.text()) : std::nullopt;
  if (!value) failType(key, "true or false");
  return *value;
}

double floatingPointOf(const Node& node, std::string_view key) {
  const auto value =
      node.kind() == Kind::scalar ? YamlScalar::floatingPoint(node.text()) : std::nullopt;
  if (!value) failType(key, "a number");
  return *value;
}

bool isMergeKey(const Node& key) {
  return key.kind() == Kind::scalar && key.isPlain() && key.text() == "<<";
}

enum class Origin { own, merged };

// Calls `visit(name, value, origin)` for every pair, those of merge keys behind the mapping's own,
// which have precedence over them. Keys that are no scalars are passed over.
template <typename Visit>
void forEachEntry(const Node& mapping, std::string_view key, Visit visit) {
  if (mapping.kind() != Kind::mapping) failType(key, "a mapping");
  const auto visitPairs = [&](const auto& self, const Node& node, Origin origin) -> void {
    if (node.kind() != Kind::mapping) failType("<<", "a mapping");
    bool merges = false;
    node.forEachPair([&](const Node& name, const Node& value) {
      if (isMergeKey(name))
        merges = true;
      else if (name.kind() == Kind::scalar)
        visit(name.text(), value, origin);
    });
    if (!merges) return;
    node.forEachPair([&](const Node& name, const Node& value) {
      if (!isMergeKey(name)) return;
      if (value.kind() == Kind::sequence)
        value.forEachItem([&](const Node& item) { self(self, item, Origin::merged); });
      else
        self(self, value, Origin::merged);
    });
  };
  visitPairs(visitPairs, mapping, Origin::own);
}

// Refuses a key that stands twice: taking one of the two would lose the other with the next write.
[[noreturn]] void failDuplicate(std::string_view key) {
  throw YamlError(fmt::format("{}: key stands twice", key));
}

std::vector<std::string> stringsOf(const Node& node, std::string_view key) {
  if (node.kind() != Kind::sequence) failType(key, "a sequence");
  std::vector<std::string> items;
  node.forEachItem([&](const Node& item) { items.push_back(stringOf(item, key)); });
  return items;
}

template <typename Value, typename Decode>
std::map<std::string, Value> mapOf(const Node& node, std::string_view key, Decode decode) {
  std::map<std::string, Value> values;
  forEachEntry(node, key, [&](std::string_view name, const Node& value, Origin origin) {
    const auto [at, isNew] = values.try_emplace(std::string(name));
    if (isNew)
      at->second = decode(value, key);
    else if (origin == Origin::own)
      failDuplicate(name);
  });
  return values;
}

AudioTranscriptSegment segmentOf(const Node& node, std::string_view key) {
  std::optional<std::string> text;
  std::optional<double> start;
  std::optional<double> duration;
  forEachEntry(node, key, [&](std::string_view name, const Node& value, Origin) {
    if (name == "text" && !text) text = stringOf(value, name);
    if (name == "start" && !start) start = floatingPointOf(value, name);
    if (name == "duration" && !duration) duration = floatingPointOf(value, name);
  });
  if (!text || !start || !duration) failType(key, "text, start and duration in each segment");
  AudioTranscriptSegment segment;
  segment.text = std::move(*text);
  segment.start = *start;
  segment.duration = *duration;
  return segment;
}

AudioTranscript transcriptOf(const Node& node, std::string_view key) {
  std::optional<std::string> text;
  std::optional<std::vector<AudioTranscriptSegment>> segments;
  forEachEntry(node, key, [&](std::string_view name, const Node& value, Origin) {
    if (name == "text" && !text) text = stringOf(value, name);
    if (name != "segments" || segments) return;
    if (value.kind() != Kind::sequence) failType(name, "a sequence");
    segments.emplace();
    value.forEachItem([&](const Node& item) { segments->push_back(segmentOf(item, name)); });
  });
  if (!text || !segments) failType(key, "text and segments in each transcript");
  return {.text = std::move(*text), .segments = std::move(*segments)};
}

// A header key: how its value is read and how it is written when it has one. In the file's order.
struct HeaderKey {
  std::string_view name;
  void (*read)(MemoFrontmatter& memo, const Node& node, std::string_view key);
  void (*write)(const MemoFrontmatter& memo, YamlWriter& writer, std::string_view key);
};

template <std::optional<std::string> MemoFrontmatter::*field>
constexpr HeaderKey optionalString(std::string_view name) {
  return {name,
          [](MemoFrontmatter& memo, const Node& node, std::string_view key) {
            memo.*field = stringOf(node, key);
          },
          [](const MemoFrontmatter& memo, YamlWriter& writer, std::string_view key) {
            if (!(memo.*field)) return;
            writer.string(key);
            writer.string(*(memo.*field));
          }};
}

template <std::optional<std::int64_t> MemoFrontmatter::*field>
constexpr HeaderKey optionalInteger(std::string_view name) {
  return {name,
          [](MemoFrontmatter& memo, const Node& node, std::string_view key) {
            memo.*field = integerOf(node, key);
          },
          [](const MemoFrontmatter& memo, YamlWriter& writer, std::string_view key) {
            if (!(memo.*field)) return;
            writer.string(key);
            writer.integer(*(memo.*field));
          }};
}

template <bool MemoFrontmatter::*field>
constexpr HeaderKey flag(std::string_view name) {
  return {name,
          [](MemoFrontmatter& memo, const Node& node, std::string_view key) {
            memo.*field = booleanOf(node, key);
          },
          [](const MemoFrontmatter& memo, YamlWriter& writer, std::string_view key) {
            if (!(memo.*field)) return;
            writer.string(key);
            writer.boolean(true);
          }};
}

template <std::vector<std::string> MemoFrontmatter::*field>
constexpr HeaderKey stringList(std::string_view name) {
  return {name,
          [](MemoFrontmatter& memo, const Node& node, std::string_view key) {
            memo.*field = stringsOf(node, key);
          },
          [](const MemoFrontmatter& memo, YamlWriter& writer, std::string_view key) {
            if ((memo.*field).empty()) return;
            writer.string(key);
            writer.beginSequence();
            for (const std::string& item : memo.*field) writer.string(item);
            writer.endSequence();
          }};
}

template <std::map<std::string, std::string> MemoFrontmatter::*field>
constexpr HeaderKey stringMap(std::string_view name) {
  return {name,
          [](MemoFrontmatter& memo, const Node& node, std::string_view key) {
            memo.*field = mapOf<std::string>(node, key, stringOf);
          },
          [](const MemoFrontmatter& memo, YamlWriter& writer, std::string_view key) {
            if ((memo.*field).empty()) return;
            writer.string(key);
            writer.beginMapping();
            for (const auto& [item, value] : memo.*field) {
              writer.string(item);
              writer.string(value);
            }
            writer.endMapping();
          }};
}

void write(const AudioTranscript& transcript, YamlWriter& writer) {
  writer.beginMapping();
  writer.string("text");
  writer.string(transcript.text);
  writer.string("segments");
  writer.beginSequence();
  for (const AudioTranscriptSegment& segment : transcript.segments) {
    writer.beginMapping();
    writer.string("text");
    writer.string(segment.text);
    writer.string("start");
    writer.floatingPoint(segment.start);
    writer.string("duration");
    writer.floatingPoint(segment.duration);
    writer.endMapping();
  }
  writer.endSequence();
  writer.endMapping();
}

constexpr std::array<HeaderKey, 15> headerKeys{
    optionalInteger<&MemoFrontmatter::schemaVersion>("schema_version"),
    optionalString<&MemoFrontmatter::memoId>("id"),
    optionalString<&MemoFrontmatter::createdAt>("created_at"),
    optionalString<&MemoFrontmatter::updatedAt>("updated_at"),
    optionalString<&MemoFrontmatter::source>("source"),
    optionalString<&MemoFrontmatter::sourceId>("source_id"),
    HeaderKey{"time",
              [](MemoFrontmatter& memo, const Node& node, std::string_view key) {
                memo.time = stringOf(node, key);
              },
              [](const MemoFrontmatter& memo, YamlWriter& writer, std::string_view key) {
                writer.string(key);
                writer.string(memo.time);
              }},
    stringList<&MemoFrontmatter::tags>("tags"),
    optionalInteger<&MemoFrontmatter::mood>("mood"),
    flag<&MemoFrontmatter::pinned>("pinned"),
    flag<&MemoFrontmatter::lockedOnTop>("lock_on_top"),
    stringList<&MemoFrontmatter::attachments>("attachments"),
    stringMap<&MemoFrontmatter::attachmentDescriptions>("attachment_descriptions"),
    stringMap<&MemoFrontmatter::originalNames>("original_names"),
    HeaderKey{"audio_transcripts",
              [](MemoFrontmatter& memo, const Node& node, std::string_view key) {
                memo.audioTranscripts = mapOf<AudioTranscript>(node, key, transcriptOf);
              },
              [](const MemoFrontmatter& memo, YamlWriter& writer, std::string_view key) {
                if (memo.audioTranscripts.empty()) return;
                writer.string(key);
                writer.beginMapping();
                for (const auto& [name, transcript] : memo.audioTranscripts) {
                  writer.string(name);
                  write(transcript, writer);
                }
                writer.endMapping();
              }},
};

MemoFrontmatter decode(const Node& root) {
  MemoFrontmatter memo;
  memo.time = "00:00";
  std::array<bool, headerKeys.size()> seen{};
  forEachEntry(root, "header", [&](std::string_view name, const Node& value, Origin origin) {
    for (std::size_t i = 0; i < headerKeys.size(); ++i) {
      if (headerKeys[i].name != name) continue;
      if (seen[i] && origin == Origin::own) failDuplicate(name);
      if (!seen[i] && !value.isNull()) headerKeys[i].read(memo, value, name);
      seen[i] = true;
    }
  });
  return memo;
}

std::string encode(const MemoFrontmatter& memo, YamlWriter::Layout layout) {
  YamlWriter writer(layout);
  writer.beginMapping();
  for (const HeaderKey& key : headerKeys) key.write(memo, writer, key.name);
  writer.endMapping();
  return writer.finish();
}

bool holdsFence(std::string_view header) {
  while (!header.empty())
    if (isFence(takeLine(header))) return true;
  return false;
}

}  // namespace

ParseError::ParseError(Kind kind, const std::string& message)
    : Error(codeOf(kind), describe(kind, message)), kind_(kind), message_(message) {}

MemoFrontmatterParser::ParsedMemo MemoFrontmatterParser::parse(std::string_view content) {
  const Parts parts = split(content);
  try {
    const YamlDocument document(parts.header);
    return {decode(document.root()), std::string(parts.body)};
  } catch (const YamlError& error) {
    throw ParseError(ParseError::Kind::yamlDecode, error.what());
  }
}

std::string MemoFrontmatterParser::serialize(const MemoFrontmatter& frontmatter,
                                             std::string_view body) {
  std::string header = encode(frontmatter, YamlWriter::Layout::folded);
  // A value of several lines, or a folded one, can leave a line that would end the header.
  if (holdsFence(header)) header = encode(frontmatter, YamlWriter::Layout::singleLine);
  std::string content;
  content.reserve(header.size() + body.size() + 16);
  content.append(fence).append("\n").append(header).append(fence).append("\n\n").append(body);
  return content;
}

}  // namespace nomely
