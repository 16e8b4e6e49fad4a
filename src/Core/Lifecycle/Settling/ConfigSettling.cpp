#include "Core/Lifecycle/Settling/ConfigSettling.h"

#include <algorithm>
#include <optional>
#include <utility>

#include <fmt/format.h>

#include "Core/Lifecycle/Settling/ConflictMarkers.h"
#include "Core/Lifecycle/Settling/ConflictNames.h"
#include "Core/Markdown/Frontmatter/YamlError.h"
#include "Core/Storage/ConfigYaml.h"
#include "Core/Storage/DerivedIdentity.h"
#include "Core/Storage/TagConfig.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr std::string_view extension = ".yaml";
constexpr std::string_view asideMark = ".yaml.other-";
// As for whoever loads them.
constexpr std::uint64_t largestFile = std::uint64_t{1} << 20;
constexpr unsigned ownerOnly = 0600;

// All settings are named in lower case: "ai-config.yaml". What engines add has more in it.
bool isPlainName(std::string_view name) {
  return name.ends_with(extension) &&
         name.find_first_not_of("abcdefghijklmnopqrstuvwxyz-") == name.size() - extension.size();
}

std::string baseOf(std::string_view name) {
  if (isPlainName(name)) return {};
  const std::size_t end = name.find_first_not_of("abcdefghijklmnopqrstuvwxyz-");
  std::string stem(name.substr(0, end));
  while (stem.ends_with('-')) stem.pop_back();
  stem += extension;
  return ConflictNames::isCopyOf(name, stem) ? stem : "";
}

std::optional<TagConfig> tagsIn(const std::string& bytes) {
  if (!isValidUtf8(bytes)) return std::nullopt;
  try {
    TagConfig tags;
    ConfigYaml::decode(bytes, configFields(tags));
    return tags;
  } catch (const YamlError&) {
    return std::nullopt;
  }
}

std::string encoded(TagConfig tags) {
  return ConfigYaml::encode(configFields(tags));
}

bool hasAll(const ConfigField::Map& looks, const ConfigField::Map& of) {
  return std::ranges::includes(looks, of);
}

bool hasAll(const TagConfig& tags, const TagConfig& of) {
  return hasAll(tags.colors, of.colors) && hasAll(tags.emojis, of.emojis) &&
         tags.sortMode == of.sortMode;
}

}  // namespace

std::vector<SecondForm> ConfigSettling::found() const {
  const std::filesystem::path folder = context_.paths.configFolder();
  std::vector<SecondForm> forms = SecondForms::in(context_, folder, baseOf);
  // Of settings that were never made here the name may be anything.
  std::erase_if(forms, [&](const SecondForm& form) {
    return form.base.filename() != TagConfig::fileName && !context_.files.exists(form.base);
  });
  if (!context_.files.isDirectory(folder)) return forms;
  for (const DirectoryEntry& entry : context_.files.listVisible(folder)) {
    if (entry.type != FileType::regular || !isPlainName(entry.name)) continue;
    const auto attributes = context_.files.attributes(folder / entry.name);
    if (!attributes || attributes->size > largestFile) continue;
    const auto text = context_.files.read(folder / entry.name, largestFile);
    if (text && ConflictMarkers::in(*text))
      forms.push_back({folder / entry.name, folder / entry.name});
  }
  return forms;
}

void ConfigSettling::settle(const SecondForm& form) {
  context_.write([&] {
    if (form.file == form.base)
      settleMarked(form.file);
    else if (!SecondForms::settlePlainly(context_, form, result_))
      settleCopy(form);
  });
}

// Nothing tells which side is which: both machines take the same one for the present.
void ConfigSettling::settleMarked(const std::filesystem::path& file) {
  const auto text = context_.files.read(file, largestFile);
  auto sides = text ? ConflictMarkers::in(*text) : std::nullopt;
  if (!sides) return;
  if (sides->ours < sides->theirs) std::swap(sides->ours, sides->theirs);
  context_.files.writeAtomically(file, joined(file, sides->ours, sides->theirs));
  SecondForms::tell(context_, {file, file}, "两边的设置已分开", result_);
  ++result_.others;
}

void ConfigSettling::settleCopy(const SecondForm& form) {
  const auto present = context_.files.read(form.base, largestFile);
  const auto other = context_.files.read(form.file, largestFile);
  if (!present || !other) return;
  const std::string all = joined(form.base, *present, *other);
  if (all != *present) context_.files.writeAtomically(form.base, all);
  context_.files.removeFile(form.file);
  SecondForms::tell(context_, form, "已并入设置，放不下的另存在旁边", result_);
  ++result_.others;
}

std::string ConfigSettling::joined(const std::filesystem::path& file, const std::string& present,
                                   const std::string& other) const {
  const auto mine = file.filename() == TagConfig::fileName ? tagsIn(present) : std::nullopt;
  const auto theirs = mine ? tagsIn(other) : std::nullopt;
  if (!theirs) {
    if (other != present) keepAside(file, other);
    return present;
  }
  TagConfig all = *mine;
  all.colors.insert(theirs->colors.begin(), theirs->colors.end());
  all.emojis.insert(theirs->emojis.begin(), theirs->emojis.end());
  // Remarks, and whatever else a person wrote there.
  if (!hasAll(all, *theirs) || encoded(*theirs) != other) keepAside(file, other);
  if (all == *mine) return present;
  if (encoded(*mine) != present) keepAside(file, present);
  return encoded(std::move(all));
}

void ConfigSettling::keepAside(const std::filesystem::path& file, const std::string& bytes) const {
  std::string place =
      fmt::format("{}.other-{}", file.string(), DerivedIdentity::contentMark(bytes));
  while (!context_.files.createAtomically(place, bytes, ownerOnly) &&
         context_.files.read(place) != bytes)
    place += '-';
}

void ConfigSettling::addStrays(std::vector<Stray>& strays) const {
  SecondForms::addStrays(context_, found(), strays);
  const std::filesystem::path folder = context_.paths.configFolder();
  if (!context_.files.isDirectory(folder)) return;
  for (const DirectoryEntry& entry : context_.files.listVisible(folder))
    if (entry.name.find(asideMark) != std::string::npos)
      strays.push_back(
          {.path = (folder / entry.name).lexically_relative(context_.paths.rootURL),
           .reason = "另一台电脑的设置，与这里的不同，没有采用；需要的抄过来，再删除它"});
}

}  // namespace nomely
