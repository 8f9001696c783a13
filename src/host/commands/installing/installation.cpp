#include "host/commands/installing/installation.h"

#include <functional>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "base/whole_input.h"
#include "host/commands/command_line/interruption.h"
#include "host/commands/installing/bundle_draft.h"
#include "host/commands/installing/plugin_trial.h"
#include "host/commands/installing/settings_entry.h"

namespace orlocal::host {
namespace {

namespace fs = std::filesystem;

bool isFolder(const fs::path& path) {
  std::error_code error;
  return fs::is_directory(path, error);
}

/// Unless all went well, takes back what was done, the last first.
class Undoing {
 public:
  Undoing() = default;
  Undoing(const Undoing&) = delete;
  Undoing& operator=(const Undoing&) = delete;
  ~Undoing() {
    for (auto step = m_steps.rbegin(); step != m_steps.rend(); ++step) { (*step)(); }
  }
  void add(std::function<void()> step) { m_steps.push_back(std::move(step)); }
  void allWentWell() { m_steps.clear(); }

 private:
  std::vector<std::function<void()>> m_steps;
};

Result<Installation> begin(const InstallWish& wish) {
  if (!isFolder(wish.folder)) {
    return failure(ErrorCode::kNotFound,
                   tr("there is no folder {}; install the host first, or name the folder that it loads "
                      "plug-ins from with --folder",
                      wish.folder.string()));
  }
  Installation plan;
  plan.wish = wish;
  ORLOCAL_TRY(plan.owner, wish.user ? accountNamed(*wish.user) : ownerOf(wish.folder));
  ORLOCAL_TRY(plan.owner, withGroupOf(plan.owner, wish.folder));
  if (wish.settings && standsThere(*wish.settings)) {
    ORLOCAL_TRY(plan.settingsBefore, readWholeFile(*wish.settings));
    plan.settingsAfter = plan.settingsBefore;
  }
  return plan;
}

/// Which store the settings name, or are to name.
Status planSettings(Installation& plan) {
  const InstallWish& wish = plan.wish;
  const auto named = storeNamedIn(plan.settingsBefore);
  if (named && wish.store && *named != wish.store->string()) {
    return failure(ErrorCode::kRefused,
                   tr("{} names the store {}; change that line yourself if {} is to be used, or leave --store "
                      "out",
                      wish.settings->string(), *named, wish.store->string()));
  }
  plan.store = named ? fs::path(*named) : wish.store.value_or(wish.standardStore);
  plan.makesStoreFolder = plan.store.is_absolute() && !isFolder(plan.store.parent_path());
  if (!named) { plan.settingsAfter = withStoreEntry(plan.settingsBefore, plan.store); }
  return {};
}

void addInstallSteps(Installation& plan) {
  const auto& wish = plan.wish;
  const auto add = [&](const char* kind, const fs::path& path, std::string sentence) {
    plan.steps.push_back({kind, path, std::move(sentence)});
  };
  add("load", wish.plugin, tr("Load a copy of {} as {}", wish.plugin.string(), plan.owner.userName));
  if (wish.settings) {
    if (plan.makesStoreFolder) {
      const fs::path folder = plan.store.parent_path();
      add("store-folder", folder, tr("Make {} for {} alone (0700)", folder.string(), plan.owner.userName));
    }
    add("settings", *wish.settings,
        plan.settingsAfter == plan.settingsBefore
            ? tr("Leave {}, which names the store {}", wish.settings->string(), plan.store.string())
        : plan.settingsBefore.empty() ? tr("Write {}: the store is {}", wish.settings->string(), plan.store.string())
                                      : tr("Add to {}: the store is {}", wish.settings->string(), plan.store.string()));
  }
  add("bundle", plan.target(),
      standsThere(plan.target())
          ? tr("Replace {} with its texts ({}, 0755)", plan.target().string(), plan.owner.text())
          : tr("Put in place {} with its texts ({}, 0755)", plan.target().string(), plan.owner.text()));
  add("load", plan.target(),
      wish.settings ? tr("Load it there as {}, and open the store", plan.owner.userName)
                    : tr("Load it there as {}", plan.owner.userName));
}

}  // namespace

Result<Installation> planInstallation(const InstallWish& wish) {
  if (!standsThere(wish.plugin)) {
    return failure(ErrorCode::kNotFound, tr("there is no plug-in {}", wish.plugin.string()));
  }
  ORLOCAL_TRY(Installation plan, begin(wish));
  std::error_code error;
  if (fs::equivalent(wish.plugin, plan.target(), error)) {
    return failure(ErrorCode::kInvalid, tr("{} is the one that stands there already; name another with "
                                           "--plugin",
                                           wish.plugin.string()));
  }
  ORLOCAL_CHECK(mayGiveTo(plan.owner));
  if (wish.settings) { ORLOCAL_CHECK(planSettings(plan)); }
  addInstallSteps(plan);
  return plan;
}

Result<Installation> planRemoval(const InstallWish& wish) {
  ORLOCAL_TRY(Installation plan, begin(wish));
  for (const fs::path& part : bundleParts(plan.target())) {
    if (standsThere(part)) { plan.steps.push_back({"remove", part, tr("Remove {}", part.string())}); }
  }
  if (auto without = withoutStoreEntry(plan.settingsBefore)) {
    plan.store = storeNamedIn(plan.settingsBefore).value_or("");
    plan.settingsAfter = *std::move(without);
    plan.steps.push_back({"settings", *wish.settings,
                          plan.settingsAfter.empty() ? tr("Remove {}", wish.settings->string())
                                                     : tr("Take our lines out of {}", wish.settings->string())});
    const fs::path folder = plan.store.parent_path();
    std::error_code error;
    if (isFolder(folder) && fs::is_empty(folder, error)) {
      plan.steps.push_back({"store-folder", folder, tr("Remove {}, which is empty", folder.string())});
    }
  }
  return plan;
}

Result<std::string> install(const CommandContext& context, const Installation& plan) {
  const InstallWish& wish = plan.wish;
  // Whoever interrupts has everything as it was; once the parts change places it is done.
  const Interruption interruption;
  ORLOCAL_TRY(const FolderTurn turn, FolderTurn::take(wish.folder));
  Undoing undoing;
  ORLOCAL_TRY(BundleDraft draft, BundleDraft::copyOf(wish.plugin, wish.folder, plan.owner));
  ORLOCAL_CHECK(tryPlugin(context, draft.plugin(), plan.owner, std::nullopt));
  if (Interruption::flag()) { return failure(ErrorCode::kInterrupted, tr("stopped; nothing was changed")); }
  if (plan.makesStoreFolder) {
    ORLOCAL_CHECK(makeStoreFolder(plan.store.parent_path(), plan.owner));
    undoing.add([&] {
      std::error_code ignored;
      fs::remove(plan.store.parent_path(), ignored);
    });
  }
  if (plan.settingsAfter != plan.settingsBefore) {
    ORLOCAL_CHECK(writeSettings(*wish.settings, plan.settingsAfter));
    undoing.add([&] { static_cast<void>(writeSettings(*wish.settings, plan.settingsBefore).has_value()); });
  }
  ORLOCAL_CHECK(draft.putInPlace());
  ORLOCAL_TRY(std::string version, tryPlugin(context, plan.target(), plan.owner, wish.settings));
  draft.keep();
  undoing.allWentWell();
  turn.finish();
  return version;
}

Status removeInstalled(const Installation& plan) {
  const Interruption interruption;
  ORLOCAL_TRY(const FolderTurn turn, FolderTurn::take(plan.wish.folder));
  ORLOCAL_TRY(BundleDraft draft, BundleDraft::ofNothing(plan.target(), plan.wish.folder));
  ORLOCAL_CHECK(draft.putInPlace());
  if (plan.settingsAfter != plan.settingsBefore) {
    ORLOCAL_CHECK(writeSettings(*plan.wish.settings, plan.settingsAfter));
  }
  draft.keep();
  turn.finish();
  if (!plan.store.empty()) {
    // Only while it is empty.
    std::error_code ignored;
    fs::remove(plan.store.parent_path(), ignored);
  }
  return {};
}

}  // namespace orlocal::host
