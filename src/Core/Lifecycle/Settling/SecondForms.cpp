#include "Core/Lifecycle/Settling/SecondForms.h"

#include <fmt/format.h>

#include "Core/Lifecycle/Settling/QuietTime.h"
#include "Core/Storage/DerivedIdentity.h"
#include "Core/Storage/SyncedFolder.h"

namespace nomely {
std::vector<SecondForm> SecondForms::in(
    const StoreContext& context, const std::filesystem::path& folder,
    const std::function<std::string(std::string_view)>& baseOf) {
  std::vector<SecondForm> forms;
  if (!context.files.isDirectory(folder)) return forms;
  for (const DirectoryEntry& entry : context.files.listVisible(folder)) {
    if (entry.type != FileType::regular) continue;
    const std::string base = baseOf(entry.name);
    if (!base.empty()) forms.push_back({folder / entry.name, folder / base});
  }
  return forms;
}

bool SecondForms::mayBeLast(const StoreContext& context, const std::filesystem::path& file) {
  return SyncedFolder::isNewHere(context, file) && SyncedFolder(context).isSynced();
}

bool SecondForms::settlePlainly(const StoreContext& context, const SecondForm& form,
                                SettlingResult& result) {
  const FileManager& files = context.files;
  if (!files.exists(form.file)) return true;
  const bool hasBase = files.exists(form.base);
  // An engine takes the file away before it puts its own in its place.
  if (!hasBase && QuietTime::isYoung(context, form.file)) {
    result.isWaiting = true;
    return true;
  }
  if (hasBase && !files.contentsEqual(form.file, form.base)) return false;
  if (hasBase && mayBeLast(context, form.file)) return true;
  if (hasBase)
    files.removeFile(form.file);
  else
    files.moveFile(form.file, form.base);
  tell(context, form, hasBase ? "内容相同，已删除" : "已改回原来的名字", result);
  ++result.others;
  return true;
}

void SecondForms::moveAside(const StoreContext& context, const std::filesystem::path& file,
                            const std::filesystem::path& place) {
  const FileManager& files = context.files;
  if (!files.exists(place)) return files.moveFile(file, place);
  if (files.contentsEqual(file, place)) {
    files.removeFile(file);
    return;
  }
  const std::string mark = DerivedIdentity::contentMark(files.read(file).value_or(""));
  moveAside(context, file, fmt::format("{}-{}", place.string(), mark));
}

void SecondForms::tell(const StoreContext& context, const SecondForm& form,
                       const std::string& outcome, SettlingResult& result) {
  result.told.push_back({form.file.lexically_relative(context.paths.rootURL), outcome});
}

void SecondForms::addStrays(const StoreContext& context, const std::vector<SecondForm>& forms,
                            std::vector<Stray>& strays) {
  for (const SecondForm& form : forms) {
    const bool waits = form.file != form.base && context.files.exists(form.base) &&
                       context.files.contentsEqual(form.file, form.base) &&
                       mayBeLast(context, form.file);
    strays.push_back(
        {.path = form.file.lexically_relative(context.paths.rootURL),
         .reason = waits ? SettlingResult::waitsForADay : SettlingResult::willBeSettled,
         .canBeSettled = !waits});
  }
}

}  // namespace nomely
