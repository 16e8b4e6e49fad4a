#include "Core/Storage/StrandedDrafts.h"

#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"
#include "Platform/System/Uuid.h"
#include "Platform/Text/Json.h"

namespace nomely {
namespace {

constexpr unsigned ownerOnlyFolder = 0700;
constexpr unsigned ownerOnlyFile = 0600;
constexpr std::string_view extension = ".json";

struct Kept {
  std::filesystem::path root;
  FolderIdentity folder;
  StrandedDrafts::Draft draft;
};

Kept decoded(const std::string& bytes) {
  const Json json = Json::parse(bytes);
  Kept kept{.root = json.at("root").get<std::string>(),
            .folder = {json.at("device").get<std::uint64_t>(),
                       json.at("fileNumber").get<std::uint64_t>()},
            .draft = {json.at("name").get<std::string>(), json.at("draft").get<std::string>()}};
  if (json.contains("inPlaceOf")) kept.draft.inPlaceOf = json.at("inPlaceOf").get<std::string>();
  return kept;
}

}  // namespace

std::filesystem::path StrandedDrafts::newFile() const {
  return folder_ / (Uuid::random().compact() + std::string(extension));
}

void StrandedDrafts::write(const std::filesystem::path& file, const Draft& draft,
                           const std::optional<FolderIdentity>& root) const {
  const FolderIdentity folder = root.value_or(FolderIdentity());
  Json json{{"root", context_.gate.root().string()},
            {"device", folder.device},
            {"fileNumber", folder.fileNumber},
            {"name", draft.name},
            {"draft", draft.bytes}};
  if (draft.inPlaceOf) json["inPlaceOf"] = *draft.inPlaceOf;
  const std::string bytes = json.dump(-1, ' ', false, Json::error_handler_t::replace);
  context_.files.createDirectories(folder_, ownerOnlyFolder);
  if (!context_.files.createAtomically(file, bytes, ownerOnlyFile))
    context_.files.writeAtomically(file, bytes);
}

std::optional<FolderIdentity> StrandedDrafts::presentRoot() const {
  const auto found = context_.files.attributes(context_.gate.root());
  if (!found || found->type != FileType::directory) return std::nullopt;
  return FolderIdentity{found->device, found->fileNumber};
}

std::vector<std::pair<std::filesystem::path, StrandedDrafts::Draft>> StrandedDrafts::ofRoot()
    const {
  std::vector<std::pair<std::filesystem::path, Draft>> drafts;
  if (!isPossible() || !context_.files.exists(folder_)) return drafts;
  const auto root = presentRoot();
  if (!root) return drafts;
  for (const DirectoryEntry& entry : context_.files.listVisible(folder_)) {
    if (!entry.name.ends_with(extension)) continue;
    const std::filesystem::path file = folder_ / entry.name;
    try {
      const auto bytes = context_.files.read(file);
      if (!bytes) continue;  // brought home meanwhile
      Kept kept = decoded(*bytes);
      // One that was moved is at another path, while nothing is at its own.
      if (kept.root == context_.gate.root() ||
          (kept.folder == *root && !context_.files.isDirectory(kept.root)))
        drafts.emplace_back(file, std::move(kept.draft));
    } catch (const nlohmann::json::exception& error) {
      Log::error(LogChannel::storage, "⚠️ StrandedDrafts: 草稿 {} 读不出：{}",
                 file.string(), error.what());
    }
  }
  return drafts;
}

}  // namespace nomely
