#include "Core/Markdown/Frontmatter/HeaderKeys.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>

#include "Core/Markdown/Frontmatter/YamlReading.h"

namespace nomely {
namespace {

using namespace YamlReading;

AudioTranscriptSegment segmentOf(const Node& node, std::string_view key) {
  std::optional<std::string> text;
  std::optional<double> start;
  std::optional<double> duration;
  forEachEntry(node, key, [&](std::string_view name, const Node& value, Origin) {
    if (name == "text" && !text) text = stringOf(value, name);
    if (name == "start" && !start) start = floatingPointOf(value, name);
    if (name == "duration" && !duration) duration = floatingPointOf(value, name);
  });
  if (!text || !start || !duration)
    failType(node, key,
             {"text, start and duration in each segment", "有 text、start 和 duration 的各段"});
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
    if (value.kind() != Kind::sequence)
      failType(value, name, {"a sequence", "列表，各项以 - 开头"});
    segments.emplace();
    value.forEachItem([&](const Node& item) { segments->push_back(segmentOf(item, name)); });
  });
  if (!text || !segments)
    failType(node, key, {"text and segments in each transcript", "有 text 和 segments 的转写"});
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

// Whether `mapping` has a key besides `known`, one of those twice, or keys that are not names.
bool holdsOtherKeys(const Node& mapping, std::span<const std::string_view> known) {
  std::size_t seen = 0;
  bool others = false;
  mapping.forEachPair([&](const Node& name, const Node&) {
    ++seen;
    others |= name.kind() != Kind::scalar || std::ranges::find(known, name.text()) == known.end();
  });
  return others || seen > known.size();
}

bool holdsOtherKeysInTranscripts(const Node& transcripts) {
  static constexpr std::array<std::string_view, 2> transcriptKeys{"text", "segments"};
  static constexpr std::array<std::string_view, 3> segmentKeys{"text", "start", "duration"};
  bool others = false;
  transcripts.forEachPair([&](const Node& name, const Node& transcript) {
    others |= isMergeKey(name) || name.kind() != Kind::scalar ||
              holdsOtherKeys(transcript, transcriptKeys);
    transcript.forEachPair([&](const Node&, const Node& segments) {
      if (segments.kind() != Kind::sequence) return;
      segments.forEachItem(
          [&](const Node& segment) { others |= holdsOtherKeys(segment, segmentKeys); });
    });
  });
  return others;
}

}  // namespace

MemoFrontmatter HeaderKeys::decode(const Node& root) {
  MemoFrontmatter memo;
  memo.time = "00:00";
  std::array<bool, headerKeys.size()> seen{};
  forEachEntry(root, "文件头", [&](std::string_view name, const Node& value, Origin origin) {
    for (std::size_t i = 0; i < headerKeys.size(); ++i) {
      if (headerKeys[i].name != name) continue;
      if (seen[i] && origin == Origin::own) failDuplicate(value, name);
      if (!seen[i] && !value.isNull()) headerKeys[i].read(memo, value, name);
      seen[i] = true;
    }
  });
  return memo;
}

std::string HeaderKeys::encode(const MemoFrontmatter& memo, YamlWriter::Layout layout) {
  YamlWriter writer(layout);
  writer.beginMapping();
  for (const HeaderKey& key : headerKeys) key.write(memo, writer, key.name);
  writer.endMapping();
  return writer.finish();
}

bool HeaderKeys::holdsOthers(const Node& root) {
  std::array<std::string_view, headerKeys.size()> names;
  std::ranges::transform(headerKeys, names.begin(), &HeaderKey::name);
  bool others = holdsOtherKeys(root, names);
  root.forEachPair([&](const Node& name, const Node& value) {
    if (name.kind() != Kind::scalar || value.kind() != Kind::mapping) return;
    if (name.text() == "audio_transcripts")
      others |= holdsOtherKeysInTranscripts(value);
    else
      value.forEachPair([&](const Node& key, const Node&) {
        others |= isMergeKey(key) || key.kind() != Kind::scalar;
      });
  });
  return others;
}

}  // namespace nomely
