// Loading, unloading, and where from.
#include <chrono>
#include <cstdlib>

#include <dlfcn.h>
#include <fmt/format.h>
#include <unistd.h>

#include "host/check/check.h"
#include "host/check/trial.h"

namespace orlocal::host::check {
namespace {

namespace fs = std::filesystem;

void loads(Trial& trial) { trial.started(); }

void loadsQuickly(Trial& trial) {
  constexpr auto kMost = std::chrono::milliseconds(100);
  // Once before, so that the system has read the file.
  if (trial.opened() == nullptr) { return; }
  const auto begun = std::chrono::steady_clock::now();
  const auto plugin = trial.started();
  const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begun);
  trial.expect(took <= kMost, fmt::format("loading and start-up took {} ms.", took.count()));
}

/// Loads the file anew: what the loader still holds of it is let go first.
void timesOver(Trial& trial, bool withShutdown) {
  constexpr int kTimes = 100;
  std::size_t registered = 0;
  for (int i = 1; i <= kTimes && !trial.failed(); ++i) {
    trial.step(fmt::format("loading number {}", i));
    auto plugin = trial.started();
    if (plugin == nullptr) { return; }
    const std::size_t now = Registry::instance().functions().size();
    if (i == 1) { registered = now; }
    trial.expect(now == registered,
                 fmt::format("it registers {} functions at loading {}, and {} at the first.", now, i, registered));
    if (withShutdown) {
      if (const Status done = plugin->shutdown(); !done) { trial.fail(done.error().message); }
    }
    void* handle = dlopen(fs::absolute(trial.plugin()).c_str(), RTLD_NOLOAD | RTLD_NOW);
    plugin.reset();
    // One for the handle that was just taken, and one for the plug-in's own, which stays mapped otherwise.
    if (handle != nullptr) {
      dlclose(handle);
      dlclose(handle);
    }
  }
}

void loadsHundredTimes(Trial& trial) { timesOver(trial, true); }
void loadsWithoutShutdown(Trial& trial) { timesOver(trial, false); }

void loadsTwiceAtOnce(Trial& trial) {
  std::error_code error;
  std::vector<std::unique_ptr<Plugin>> plugins;
  for (const char* name : {"First.fmx", "Second.fmx"}) {
    const fs::path copy = trial.folder() / name;
    fs::copy_file(trial.plugin(), copy, fs::copy_options::overwrite_existing, error);
    if (!trial.expect(!error, fmt::format("it cannot be copied: {}.", error.message()))) { return; }
    trial.step(fmt::format("starting {}", name));
    auto plugin = trial.opened(copy);
    if (plugin == nullptr) { return; }
    if (const auto started = plugin->start(); !started) { trial.fail(started.error().message); }
    plugins.push_back(std::move(plugin));
  }
  trial.functions();
  for (auto& plugin : plugins) {
    trial.step(fmt::format("shutting {} down", plugin->file().filename().string()));
    if (const Status done = plugin->shutdown(); !done) { trial.fail(done.error().message); }
  }
}

void loadsFromAnyFolder(Trial& trial) {
  std::error_code error;
  const fs::path folder = trial.folder() / "Erweiterungen für Ärzte; 日本 %s";
  fs::create_directories(folder, error);
  const fs::path copy = folder / trial.plugin().filename();
  fs::copy_file(trial.plugin(), copy, fs::copy_options::overwrite_existing, error);
  if (!trial.expect(!error, fmt::format("it cannot be copied: {}.", error.message()))) { return; }
  const auto plugin = trial.opened(copy);
  if (plugin == nullptr) { return; }
  if (const auto started = plugin->start(); !started) { trial.fail(started.error().message); }
  trial.expect(!plugin->getString(Plugin::kNameString).value_or(u"").empty(), "it has no name there.");
}

void loadsWhereItsFolderIsClosed(Trial& trial) {
  if (::geteuid() == 0) {
    trial.skip("root may write anywhere; run it as another user");
    return;
  }
  std::error_code error;
  const fs::path folder = trial.folder() / "closed";
  fs::create_directories(folder, error);
  const fs::path copy = folder / trial.plugin().filename();
  fs::copy_file(trial.plugin(), copy, fs::copy_options::overwrite_existing, error);
  fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec, error);
  const auto plugin = trial.opened(copy);
  if (plugin != nullptr) {
    if (const auto started = plugin->start(); !started) { trial.fail(started.error().message); }
  }
  fs::permissions(folder, fs::perms::owner_all, error);
}

}  // namespace

std::vector<Check> loadingChecks() {
  return {
      {"load", "The plug-in loads and starts.", Level::kBasic, loads},
      {"load-quickly", "Loading and start-up take no more than 100 ms.", Level::kUsual, loadsQuickly},
      {"load-100-times", "It can be loaded, shut down and let go a hundred times.", Level::kUsual, loadsHundredTimes},
      {"load-without-shutdown", "It can be let go a hundred times without a shutdown.", Level::kStrict,
       loadsWithoutShutdown},
      {"load-twice-at-once", "Two files of it under two names work in one process.", Level::kStrict, loadsTwiceAtOnce},
      {"load-any-folder", "It loads from folders with blanks and letters of any script.", Level::kUsual,
       loadsFromAnyFolder},
      {"load-closed-folder", "It loads from a folder that it cannot write into.", Level::kUsual,
       loadsWhereItsFolderIsClosed},
  };
}

}  // namespace orlocal::host::check
