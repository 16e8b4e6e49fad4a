#include "Core/Lifecycle/Settling/DraftSettling.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Lifecycle/Settling/ConflictNames.h"
#include "Core/Storage/AttachmentManager.h"
#include "Core/Storage/DerivedIdentity.h"
#include "Core/Storage/DraftCoding.h"
#include "Core/Storage/DraftStore.h"
#include "Core/Storage/MemoFile.h"

namespace nomely {
namespace {

constexpr std::string_view ending = ".json";
constexpr const char* nothingNew = "没有新内容，已删除";

// "focus-id-6d65 (1).json" → "focus-id-6d65.json"; of another memo's it would be another draft.
std::string baseOf(std::string_view name) {
  std::string base(DraftStore::quickInputName);
  if (name.starts_with(DraftStore::focusPrefix)) {
    constexpr std::string_view byIdentity = "focus-id-";
    const std::size_t begin =
        name.starts_with(byIdentity) ? byIdentity.size() : DraftStore::focusPrefix.size();
    const bool isByIdentity = begin == byIdentity.size();
    base = name.substr(
        0, name.find_first_not_of(isByIdentity ? "0123456789abcdef" : "0123456789-", begin));
    while (base.ends_with('-')) base.pop_back();
    base += ending;
  }
  return ConflictNames::isCopyOf(name, base) ? base : "";
}

template <typename Draft>
bool sayTheSame(Draft left, const std::optional<Draft>& right) {
  if (!right) return false;
  left.updatedAt = right->updatedAt;
  return DraftCoding::encoded(left) == DraftCoding::encoded(*right);
}

// The memo as the draft has it.
Memo drafted(Memo memo, const FocusMemoDraft& draft) {
  memo.body = draft.bodyText;
  memo.tags = draft.tags;
  memo.mood = draft.mood;
  memo.attachments = draft.attachments;
  memo.audioTranscripts = draft.audioTranscripts;
  memo.originalNames = draft.originalNames;
  return memo;
}

// Where a draft lies that was begun before its memo had an identity.
std::optional<MemoPlace> placeIn(const std::filesystem::path& base) {
  const std::string name = base.stem().string().substr(DraftStore::focusPrefix.size());
  const std::size_t dash = name.rfind('-');
  if (dash == std::string::npos) return std::nullopt;
  return MemoPlace::parse(name.substr(0, dash) + "," + name.substr(dash + 1));
}

}  // namespace

std::vector<SecondForm> DraftSettling::found() const {
  return SecondForms::in(context_, context_.paths.draftsFolder(), baseOf);
}

void DraftSettling::settle(const SecondForm& form) {
  context_.write([&] {
    if (SecondForms::settlePlainly(context_, form, result_)) return;
    const auto present = context_.files.read(form.base);
    const auto bytes = context_.files.read(form.file);
    if (!present || !bytes) return;
    const auto outcome = form.base.filename() == DraftStore::quickInputName
                             ? takeQuickInput(*bytes, *present)
                             : takeFocus(*bytes, *present, form.base);
    if (outcome) {
      context_.files.removeFile(form.file);
    } else {
      SecondForms::moveAside(
          context_, form.file,
          form.base.parent_path() / fmt::format("{}{}{}", form.base.stem().string(),
                                                DraftStore::corruptMark,
                                                DerivedIdentity::contentMark(*bytes)));
      ++result_.others;
    }
    SecondForms::tell(context_, form, outcome.value_or("读不出来，已另存"), result_);
  });
}

std::optional<std::string> DraftSettling::takeQuickInput(const std::string& bytes,
                                                         const std::string& present) {
  const auto draft = DraftCoding::quickInput(bytes);
  if (!draft) return std::nullopt;
  if (!draft->hasContent() || sayTheSame(*draft, DraftCoding::quickInput(present))) {
    ++result_.others;
    return nothingNew;
  }
  DayStore::NewMemo content{.body = draft->text,
                            .mood = draft->selectedMood,
                            .attachments = PendingMemoAttachments::merged(
                                draft->pendingAttachments, draft->pendingAudioTranscripts),
                            .originalNames = draft->pendingOriginalNames,
                            .audioTranscripts = draft->pendingAudioTranscripts,
                            .made = draft->updatedAt};
  bringFiles(draft->selectedDate, content, draft->pendingAttachmentDates);
  return keepAsNote(draft->selectedDate, std::move(content), bytes);
}

void DraftSettling::bringFiles(Day day, DayStore::NewMemo& content,
                               const std::map<std::string, Day>& dates) const {
  std::vector<std::string> kept;
  for (std::string& name : content.attachments) {
    const auto dated = dates.find(name);
    const Day from = dated == dates.end() ? day : dated->second;
    try {
      const bool isHere = context_.files.exists(context_.paths.dayFolder(from) / name);
      if (isHere || from != day || !AttachmentManager::isSafeName(name))
        AttachmentManager(context_).preparePendingAttachments(
            {name}, {.fallbackDate = from, .destinationDate = day});
      kept.push_back(std::move(name));
    } catch (const AttachmentManager::ImportError&) {
      // The draft, which is kept beside the note, names it.
    }
  }
  content.attachments = std::move(kept);
  const auto isGone = [&](const auto& entry) {
    return std::ranges::find(content.attachments, entry.first) == content.attachments.end();
  };
  std::erase_if(content.originalNames, isGone);
  std::erase_if(content.audioTranscripts, isGone);
}

std::string DraftSettling::keepAsNote(Day day, DayStore::NewMemo content,
                                      const std::string& bytes) {
  const std::string identity = DerivedIdentity::memoId("draft", {bytes});
  const std::vector<Memo> memos = service_.days().listMemos(day);
  if (std::ranges::find(memos, identity, &Memo::memoId) == memos.end()) {
    // A note has not all that a draft has.
    service_.versions().keepState(identity, {bytes, content.made.value()},
                                  VersionStore::Kept::asOriginal);
    content.tags.emplace_back(tag);
    content.time = DateFormatters::timeOnly.format(content.made.value());
    content.memoId = identity;
    (void)service_.create(day, std::move(content));
  }
  ++result_.notes;
  result_.changedMemos = true;
  return fmt::format("没保存的文字已成为 {} 的一条笔记，标签是“{}”", day.string(), tag);
}

std::optional<std::string> DraftSettling::takeFocus(const std::string& bytes,
                                                    const std::string& present,
                                                    const std::filesystem::path& base) {
  const auto draft = DraftCoding::focus(bytes);
  if (!draft) return std::nullopt;
  std::optional<MemoPlace> place = draft->memoId ? service_.placeOf(*draft->memoId) : placeIn(base);
  std::optional<Memo> memo;
  if (place) memo = service_.days().memoStore().read(place->day, place->seqNumber);
  if (!memo && draft->memoId) memo = service_.trashedMemo(*draft->memoId);
  if (sayTheSame(*draft, DraftCoding::focus(present)) ||
      (memo && isStoredAs(drafted(*memo, *draft), *memo))) {
    ++result_.others;
    return nothingNew;
  }
  if (memo && !memo->memoId.value_or("").empty()) return keepAsVersion(*memo, *draft, place);

  const Memo origin = draft->baseMemo.value_or(Memo());
  const Day day = place ? place->day : origin.dayMade().value_or(Day::of(draft->updatedAt));
  return keepAsNote(day,
                    {.body = draft->bodyText,
                     .tags = draft->tags,
                     .mood = draft->mood,
                     .attachments = draft->attachments,
                     .originalNames = draft->originalNames,
                     .audioTranscripts = draft->audioTranscripts,
                     .made = draft->updatedAt},
                    bytes);
}

std::string DraftSettling::keepAsVersion(const Memo& memo, const FocusMemoDraft& draft,
                                         const std::optional<MemoPlace>& place) {
  Memo version = drafted(draft.baseMemo.value_or(memo), draft);
  version.memoId = memo.memoId;
  // In UTC, which is the same text on machines of any zone.
  version.updatedAt = DateFormatters::utcTimestamp(draft.updatedAt);
  service_.versions().keepState(*memo.memoId, {MemoFile::contentOf(version), draft.updatedAt},
                                VersionStore::Kept::asSnapshot);
  for (const std::string& name : version.attachments) {
    if (!place || !AttachmentManager::isSafeName(name)) continue;
    const std::filesystem::path file = context_.paths.dayFolder(place->day) / name;
    const bool isNamed = std::ranges::find(memo.attachments, name) != memo.attachments.end();
    if (!isNamed && context_.files.exists(file))
      (void)service_.versions().keepAttachment(*memo.memoId, file);
  }
  ++result_.notes;
  return "没保存的文字已收进这条笔记的历史版本";
}

}  // namespace nomely
