#include "Core/Query/TagRewriting.h"

#include <algorithm>
#include <iterator>

#include "Core/Extensions/TagNames.h"
#include "Core/Extensions/TagUtilities.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

using TagNames::isBelow;
using TagNames::isOrIsBelow;
using TagNames::notesRoot;
using Tags = std::vector<std::string>;

std::string joined(std::string_view first, std::string_view second) {
  return std::string(first).append(second);
}

std::string inlineTag(std::string_view tag) {
  return joined("#", tag);
}

std::string belowNotes(std::string_view tag) {
  return joined(notesRoot, "/").append(tag);
}

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

std::string replacingAll(std::string_view text, std::string_view part) {
  std::string replaced;
  for (std::size_t at = text.find(part); at != std::string_view::npos; at = text.find(part)) {
    replaced.append(text.substr(0, at)) += ' ';
    text.remove_prefix(at + part.size());
  }
  return replaced.append(text);
}

// "from" → "to", "from/x" → "to/x"; any other tag stays as it is.
std::string moved(const std::string& tag, std::string_view from, std::string_view to) {
  return isOrIsBelow(tag, from) ? joined(to, std::string_view(tag).substr(from.size())) : tag;
}

template <typename Map>
void mapTags(Memo& memo, Map map) {
  Tags mapped;
  std::ranges::transform(memo.tags, std::back_inserter(mapped), map);
  memo.tags = TagUtilities::uniqueTags(mapped);
}

// Cuts out those of `tags` that are `tag` or below it, and then `tag` itself: cut first, "#a" would
// leave "/x" of "#a/x".
void stripWithNested(std::string& body, const Tags& tags, std::string_view tag) {
  for (const std::string& nested : tags)
    if (isOrIsBelow(nested, tag)) body = TagRewriting::strippingTag(body, nested);
  body = TagRewriting::strippingTag(body, tag);
}

}  // namespace

bool TagRewriting::hasTag(const Tags& tags, std::string_view tag) {
  return !tag.empty() &&
         std::ranges::any_of(tags, [&](const std::string& own) { return isOrIsBelow(own, tag); });
}

std::string TagRewriting::strippingTag(std::string_view body, std::string_view tag) {
  const std::string text = inlineTag(tag);
  std::string stripped(body);
  if (tag.empty() || !contains(body, text)) return stripped;
  for (const std::string& part : {" " + text + " ", " " + text, text + " ", text})
    stripped = replacingAll(stripped, part);
  return stripped;
}

bool TagRewriting::rename(Memo& memo, std::string_view from, std::string_view to) {
  if (from.empty()) return false;
  const std::string noteFrom = belowNotes(from);
  const std::string noteTo = belowNotes(to);
  if (!hasTag(memo.tags, from) && !hasTag(memo.tags, noteFrom)) return false;
  mapTags(memo, [&](const std::string& tag) {
    const bool isOfNotes = tag == noteFrom || !isOrIsBelow(tag, from);
    return isOfNotes ? moved(tag, noteFrom, noteTo) : moved(tag, from, to);
  });
  memo.body = strippingTag(strippingTag(memo.body, from), noteFrom);
  if (!contains(memo.body, inlineTag(to)) && !contains(memo.body, inlineTag(noteTo)))
    memo.body = std::string(trimSpaceAndBreaks(memo.body));
  return true;
}

bool TagRewriting::merge(Memo& memo, std::string_view from, std::string_view into) {
  if (!hasTag(memo.tags, from)) return false;
  stripWithNested(memo.body, memo.tags, from);
  mapTags(memo, [&](const std::string& tag) { return moved(tag, from, into); });
  return true;
}

bool TagRewriting::remove(Memo& memo, std::string_view tag) {
  Tags& tags = memo.tags;
  if (tag.empty() || (!hasTag(tags, tag) && !contains(memo.body, inlineTag(tag)))) return false;
  stripWithNested(memo.body, tags, tag);
  memo.body = std::string(trimHorizontal(memo.body));
  std::erase_if(tags, [&](const std::string& own) { return isOrIsBelow(own, tag); });
  return true;
}

bool TagRewriting::goesWith(const Memo& memo, std::string_view tag) {
  if (tag.empty()) return false;
  return hasTag(memo.tags, tag) ||
         (!TagNames::isHidden(tag) && contains(memo.body, inlineTag(tag)));
}

std::optional<Tags> TagRewriting::notesTags(const Tags& tags) {
  const bool isNote =
      hasTag(tags, notesRoot) || std::ranges::find(tags, TagNames::notesImportTag) != tags.end();
  if (!isNote) return std::nullopt;
  Tags listed;
  for (const std::string& tag : tags) {
    if (TagNames::isHidden(tag) || tag == notesRoot) continue;
    std::string row = isBelow(tag, notesRoot) ? tag : belowNotes(tag);
    if (row != belowNotes("")) listed.push_back(std::move(row));
  }
  return listed;
}

std::optional<Tags> TagRewriting::sectionTags(const Tags& tags, std::string_view root) {
  if (!hasTag(tags, root)) return std::nullopt;
  Tags own;
  for (const std::string& tag : tags)
    if (isBelow(tag, root) && tag.size() > root.size() + 1) own.push_back(tag);
  Tags lowest;
  for (const std::string& tag : own)
    if (std::ranges::none_of(own, [&](const std::string& other) { return isBelow(other, tag); }))
      lowest.push_back(tag);
  return lowest;
}

}  // namespace nomely
