#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Extensions/EngineNames.h"
#include "Platform/Files/FileManager.h"
#include "Support/FaultyFileSystem.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {

// The files of a machine, which came there when its clock says so.
class SyncFiles final : public FaultyFileSystem {
 public:
  explicit SyncFiles(const Clock& clock) : FaultyFileSystem(posixFileSystem(), {}), clock_(clock) {}

  // What is looked at for the first time since it changed has changed now.
  std::optional<FileAttributes> attributes(const fs::path& path, LinkPolicy links) override {
    auto found = FaultyFileSystem::attributes(path, links);
    if (found)
      found->changed =
          changed_.try_emplace({found->fileNumber, found->changed}, clock_.now()).first->second;
    return found;
  }

 private:
  const Clock& clock_;
  std::map<std::pair<std::uint64_t, Moment>, Moment> changed_;
};

// A program that keeps the same folder of several machines alike. It knows of each file who changed
// it last and from what, carries files over one by one in any order, and where two machines changed
// one file it keeps both.
class SyncEngine {
 public:
  // Which file stays under its name, and how the other one is called.
  enum class Rules {
    peers,  // the later one stays; "007.sync-conflict-20900301-093005-BBBBBBB.md"; heeds ignores
    cloud,  // the first to arrive stays; "007 (conflicted copy).md", "007 2.md"; carries everything
  };
  struct Machine {
    fs::path root;
    const Clock& clock;
    SyncFiles& files;
  };

  SyncEngine(Rules rules, std::vector<Machine> machines, std::mt19937& random)
      : rules_(rules), machines_(std::move(machines)), random_(random) {
    for (const Machine& machine : machines_)
      fs::create_directories(machine.root /
                             (rules == Rules::peers ? ".stfolder" : ".dropbox.cache"));
  }

  [[nodiscard]] static bool isIgnored(Rules rules, const fs::path& path) {
    const std::string top = path.begin()->string();
    const std::string name = path.filename().string();
    return EngineNames::isAny(top) || EngineNames::isAny(name) ||
           (rules == Rules::peers &&
            (FileManager::isTemporaryName(name) || top == ".drafts" || top == ".backups" ||
             path.string().starts_with(".meta/feishu-")));
  }

  // Takes notice of what was done on that machine. What was written there gets the time of its
  // clock.
  void scan(std::size_t machine) {
    const fs::path& root = machines_[machine].root;
    std::set<std::string> gone;
    for (const auto& [path, item] : items_[machine])
      if (item.content) gone.insert(path);
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
      const std::string path = entry.path().lexically_relative(root).string();
      if (entry.is_directory()) stamp(machine, entry.path());
      if (!entry.is_regular_file() || isIgnored(rules_, path)) continue;
      gone.erase(path);
      scanFile(machine, path);
    }
    for (const std::string& path : gone) scanFile(machine, path);
  }

  // Cuts two machines off from each other, or joins them.
  void turnLink() {
    const std::size_t one = random_() % machines_.size();
    const std::size_t other = (one + 1) % machines_.size();
    cut_[one][other] = cut_[other][one] = !cut_[one][other];
  }
  void joinAll() { cut_ = {}; }

  // Carries one file, or one deletion, from a machine to another; what it did, empty when there is
  // nothing to carry.
  std::string carryOne() {
    const std::vector<Delivery> all = deliveries();
    return all.empty() ? "" : carry(all[random_() % all.size()]);
  }

  [[nodiscard]] std::size_t conflicts() const { return conflicts_; }

 private:
  static constexpr std::size_t most = 3;
  using Version = std::array<unsigned, most>;  // changes made on each machine

  // A file as a machine knows it.
  struct Item {
    Version version{};
    std::optional<std::string> content;  // absent: deleted, or never there
    fs::file_time_type modified;
    std::size_t by = 0;  // the machine that wrote it
  };
  enum class Step { nothing, take, conflict };
  struct Delivery {
    std::string path;
    std::size_t from = 0;
    std::size_t to = 0;
  };

  // Whether the first knows of every change that the second knows of.
  [[nodiscard]] static bool covers(const Version& one, const Version& other) {
    return std::ranges::equal(one, other, std::ranges::greater_equal());
  }

  [[nodiscard]] fs::file_time_type now(std::size_t machine) const {
    return fs::file_time_type::clock::from_sys(
        std::chrono::time_point_cast<std::chrono::nanoseconds>(machines_[machine].clock.now()));
  }

  // What is not of the clocks' time was written now, by this machine.
  bool stamp(std::size_t machine, const fs::path& path) {
    const bool isNew = fs::last_write_time(path) < now(machine) - std::chrono::years(10);
    if (isNew) fs::last_write_time(path, now(machine));
    (void)machines_[machine].files.attributes(path, LinkPolicy::noFollow);
    return isNew;
  }

  void scanFile(std::size_t machine, const std::string& path) {
    const fs::path file = machines_[machine].root / path;
    Item& item = items_[machine][path];
    std::optional<std::string> content;
    if (fs::exists(file)) {
      if (!stamp(machine, file) && item.content && fs::last_write_time(file) == item.modified &&
          fs::file_size(file) == item.content->size())
        return;
      content = readFile(file);
    }
    if (content == item.content) return;
    item.modified = content ? fs::last_write_time(file) : now(machine);
    item.content = std::move(content);
    item.by = machine;
    ++item.version[machine];
    uneven_.insert(path);
  }

  [[nodiscard]] Step stepFor(const Item& ours, const Item& theirs) const {
    if (covers(ours.version, theirs.version)) return Step::nothing;
    if (covers(theirs.version, ours.version) || ours.content == theirs.content) return Step::take;
    // What stays under the name is carried the other way by and by.
    if (!theirs.content) return Step::nothing;
    if (!ours.content) return Step::take;
    const bool isLater = std::pair(theirs.modified, theirs.by) > std::pair(ours.modified, ours.by);
    return rules_ == Rules::cloud || isLater ? Step::conflict : Step::nothing;
  }

  [[nodiscard]] std::vector<Delivery> deliveries() {
    std::vector<Delivery> all;
    std::erase_if(uneven_, [&](const std::string& path) {
      bool isEven = true;
      for (std::size_t from = 0; from < machines_.size(); ++from)
        for (std::size_t to = 0; to < machines_.size(); ++to) {
          const Item& theirs = items_[from][path];
          const Item& ours = items_[to][path];
          isEven = isEven && ours.version == theirs.version;
          if (!cut_[from][to] && stepFor(ours, theirs) != Step::nothing)
            all.push_back({path, from, to});
        }
      return isEven;
    });
    return all;
  }

  std::string carry(const Delivery& delivery) {
    const auto& [path, from, to] = delivery;
    // What was just changed there is never replaced unseen.
    scanFile(to, path);
    Item& ours = items_[to][path];
    Item item = items_[from][path];
    const Step step = stepFor(ours, item);
    std::string did = fmt::format("{}→{} {}", from, to, path);
    if (step == Step::nothing) return did + " (later)";
    std::ranges::transform(item.version, ours.version, item.version.begin(),
                           [](unsigned a, unsigned b) { return std::max(a, b); });
    if (ours.content == item.content) {
      ours.version = item.version;
      return did + " (same)";
    }
    if (step == Step::conflict) {
      const std::string aside = conflictName(path, item.by, to);
      fs::rename(machines_[to].root / path, machines_[to].root / aside);
      scanFile(to, aside);
      ++conflicts_;
      // Where both do it at once, one of them is the first to arrive once more.
      if (rules_ == Rules::cloud) ++item.version[to];
      did += ", ours is now " + fs::path(aside).filename().string();
    }
    put(to, path, item);
    return item.content ? did : did + " (deleted)";
  }

  void put(std::size_t machine, const std::string& path, const Item& item) {
    const fs::path& root = machines_[machine].root;
    const fs::path file = root / path;
    items_[machine][path] = item;
    if (item.content) {
      const fs::path temporary =
          file.parent_path() / (".syncthing." + file.filename().string() + ".tmp");
      writeFile(temporary, *item.content);
      fs::last_write_time(temporary, item.modified);
      fs::rename(temporary, file);
      stamp(machine, file);
      stamp(machine, file.parent_path());
      return;
    }
    fs::remove(file);
    // Folders go like files, but for those in which something else lies here.
    std::error_code isFull;
    for (fs::path folder = file.parent_path(); folder != root && !isFull;
         folder = folder.parent_path())
      fs::remove(folder, isFull);
  }

  [[nodiscard]] std::string conflictName(const fs::path& path, std::size_t by,
                                         std::size_t machine) {
    const auto beside = [&](const std::string& more) {
      const std::string name = path.stem().string() + more + path.extension().string();
      return (path.parent_path() / name).string();
    };
    if (rules_ == Rules::peers) {
      // Two of one second would be one file to the machines that they come to.
      const Moment when = machines_[machine].clock.now() + std::chrono::seconds(conflicts_);
      std::string time = DateFormatters::isoDateTime.format(when);
      std::erase_if(time, [](char c) { return c == '-' || c == ':'; });
      std::ranges::replace(time, ' ', '-');
      return beside(".sync-conflict-" + time + "-" + std::string(7, static_cast<char>('A' + by)));
    }
    const std::array forms{" (conflicted copy 2090-03-03{})", " ({})", " {}", "~{}"};
    const auto* const form = forms[random_() % forms.size()];
    std::size_t number = 2;
    std::string name;
    do name = beside(fmt::format(fmt::runtime(form), number++));
    while (fs::exists(machines_[machine].root / name));
    return name;
  }

  Rules rules_;
  std::vector<Machine> machines_;
  std::mt19937& random_;
  std::array<std::map<std::string, Item>, most> items_;
  std::set<std::string> uneven_;  // paths that machines know differently
  std::array<std::array<bool, most>, most> cut_{};
  std::size_t conflicts_ = 0;
};

}  // namespace nomely::test
