#include "Core/Lifecycle/Backup/BackupManifest.h"

#include <algorithm>
#include <array>
#include <climits>

#include <fmt/format.h>

#include "Core/Extensions/DateFormatters.h"
#include "Platform/Text/JsonReading.h"

namespace nomely {
namespace {

struct KindNames {
  const char* raw;
  const char* inFileName;
};
constexpr std::array kindNames{KindNames{"automatic", "auto"}, KindNames{"nas", "nas"},
                               KindNames{"aliyun", "aliyun"}, KindNames{"drive115", "115"},
                               KindNames{"manual", "manual"}};

const KindNames& namesOf(ArchiveKind kind) {
  return kindNames.at(static_cast<std::size_t>(kind));
}

ArchiveKind kindNamed(const std::string& raw) {
  const auto found = std::ranges::find(kindNames, raw, &KindNames::raw);
  if (found == kindNames.end()) throw JsonError("json.member", "备份清单里有不认识的备份类型");
  return static_cast<ArchiveKind>(found - kindNames.begin());
}

}  // namespace

std::string_view fileNamePart(ArchiveKind kind) {
  return namesOf(kind).inFileName;
}

std::string BackupManifest::json() const {
  Json json{{"appName", appName},
            {"appVersion", appVersion},
            {"archiveKind", namesOf(archiveKind).raw},
            {"buildNumber", buildNumber},
            {"createdAt", DateFormatters::utcTimestamp(createdAt)},
            {"includesVersions", includesVersions},
            {"restoreNote", restoreNote},
            {"rootStyle", rootStyle},
            {"schemaVersion", schemaVersion},
            {"sourcePath", sourcePath}};
  if (!unreadableFiles.empty()) json["unreadableFiles"] = unreadableFiles;
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

BackupManifest BackupManifest::parse(std::string_view json) {
  const Json document = readJson(json);
  try {
    BackupManifest manifest;
    document.at("appName").get_to(manifest.appName);
    document.at("appVersion").get_to(manifest.appVersion);
    manifest.archiveKind = kindNamed(document.at("archiveKind").get<std::string>());
    document.at("buildNumber").get_to(manifest.buildNumber);
    const auto created =
        DateFormatters::parseUtcTimestamp(document.at("createdAt").get_ref<const std::string&>());
    if (!created) throw JsonError("json.member", "备份清单里的时间读不懂");
    manifest.createdAt = *created;
    document.at("includesVersions").get_to(manifest.includesVersions);
    document.at("restoreNote").get_to(manifest.restoreNote);
    document.at("rootStyle").get_to(manifest.rootStyle);
    const auto& version = document.at("schemaVersion").get_ref<const Json::number_unsigned_t&>();
    manifest.schemaVersion = static_cast<int>(std::min<std::uint64_t>(version, INT_MAX));
    document.at("sourcePath").get_to(manifest.sourcePath);
    if (const auto files = document.find("unreadableFiles"); files != document.end())
      files->get_to(manifest.unreadableFiles);
    return manifest;
  } catch (const Json::exception&) {
    throw JsonError("json.member", "备份清单缺少内容或写法不对");
  }
}

}  // namespace nomely
