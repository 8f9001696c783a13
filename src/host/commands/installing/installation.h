#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "base/result.h"
#include "host/commands/command_line/command.h"
#include "host/commands/installing/file_owner.h"

namespace orlocal::host {

/// What somebody wants of a host's folder. Paths are whole ones.
struct InstallWish {
  std::filesystem::path folder;
  std::filesystem::path plugin;                   ///< to be installed; to remove, its name alone counts
  std::optional<std::string> user;                ///< the account that the host runs as; without it the folder's owner
  std::optional<std::filesystem::path> settings;  ///< the file that names the store; none is left alone
  std::optional<std::filesystem::path> store;     ///< without it the one that `settings` names, else `standardStore`
  std::filesystem::path standardStore;
};

/// A step as it is shown before it is done, or as it is done.
struct InstallStep {
  const char* kind;  ///< load, store-folder, settings, bundle, remove
  std::filesystem::path path;
  std::string sentence;
};

/// What has to be done, found out by looking alone.
struct Installation {
  InstallWish wish;
  FileOwner owner;
  std::filesystem::path store;  ///< where there are settings
  std::string settingsBefore;   ///< as they stand; "" where there are none
  std::string settingsAfter;
  bool makesStoreFolder = false;
  std::vector<InstallStep> steps;

  std::filesystem::path target() const { return wish.folder / wish.plugin.filename(); }
};

/// How the plug-in gets there. Fails where something stands against it that can be seen beforehand: no such folder or
/// account, not the right to give files away, settings that name another store than was asked for.
Result<Installation> planInstallation(const InstallWish& wish);
/// How it is taken away: bundle, our entry in the settings, the store's folder when nothing is in it. A store stays.
/// No steps where nothing is there.
Result<Installation> planRemoval(const InstallWish& wish);

/// Does it, and gives the version that was loaded from there. After a failure everything is as it was before.
Result<std::string> install(const CommandContext& context, const Installation& plan);
Status removeInstalled(const Installation& plan);

}  // namespace orlocal::host
