#include "CLI/SyncReport.h"

#include <algorithm>

#include <fmt/format.h>

#include "Core/Lifecycle/Settling/RootSettling.h"

namespace nomely {

using Engine = SyncedFolder::Engine;

SyncReport SyncReport::of(Session& session) {
  SyncReport report;
  const SyncedFolder synced(session.application().storage());
  report.places = synced.places();
  for (const auto& [engine, folder] : report.places)
    for (SyncedFolder::Gap& gap : synced.gaps(engine)) {
      report.gaps.push_back(std::move(gap));
      report.remedies.push_back("nomely sync init " + codeOf(engine));
    }
  session.host(
      [&](const std::stop_token&) { report.strays = RootSettling(session.memos()).strays(); });
  return report;
}

std::string SyncReport::codeOf(Engine engine) {
  switch (engine) {
    case Engine::syncthing:
      return "syncthing";
    case Engine::git:
      return "git";
    case Engine::cloud:
      return "cloud";
  }
  return {};
}

std::string SyncReport::nameOf(Engine engine) {
  switch (engine) {
    case Engine::syncthing:
      return "Syncthing";
    case Engine::git:
      return "git";
    case Engine::cloud:
      return "云盘";
  }
  return {};
}

std::size_t SyncReport::settled() const {
  return static_cast<std::size_t>(std::ranges::count_if(strays, &Stray::canBeSettled));
}

Json SyncReport::json() const {
  Json json{{"engines", Json::array()}, {"incomplete", Json::array()}, {"strays", Json::array()}};
  for (const auto& [engine, folder] : places)
    json["engines"].push_back({{"engine", codeOf(engine)}, {"folder", folder.string()}});
  for (const auto& [file, missing] : gaps)
    json["incomplete"].push_back({{"file", file.string()}, {"missing", missing}});
  for (const Stray& stray : strays)
    json["strays"].push_back({{"file", stray.path.string()},
                              {"reason", stray.reason},
                              {"canBeSettled", stray.canBeSettled}});
  return json;
}

void SyncReport::addGaps(ReportLines& lines) const {
  for (std::size_t i = 0; i < gaps.size(); ++i)
    lines.add("同步设置不全", fmt::format("{}：缺 {} 行。补上：{}", gaps[i].file.string(),
                                          gaps[i].missing.size(), remedies[i]));
}

void SyncReport::addStrays(ReportLines& lines) const {
  for (const Stray& stray : strays)
    lines.add("同步留下的文件", fmt::format("{}：{}", stray.path.string(), stray.reason));
}

}  // namespace nomely
