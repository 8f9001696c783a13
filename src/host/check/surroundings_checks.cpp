// Machines as they are: no home, odd settings, stores of calendars in any state.
#include <csignal>
#include <cstdlib>
#include <fstream>

#include <fmt/format.h>
#include <sys/resource.h>
#include <unistd.h>

#include "host/check/check.h"
#include "host/check/odd_values.h"
#include "host/check/trial.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host::check {
namespace {

namespace fs = std::filesystem;

/// Starts the plug-in and calls all that it has, with empty arguments and with words.
void useAll(Trial& trial) {
  const auto plugin = trial.started();
  if (plugin == nullptr) { return; }
  for (const auto& function : trial.functions()) {
    const std::size_t count = mostArguments(*function);
    for (const char16_t* word : {u"", u"event", u"calendar"}) {
      trial.step(fmt::format("{} with \"{}\"", nameOf(*function), toUtf8(std::u16string_view(word))));
      trial.call(*function, std::vector<Value>(count, Value::ofText(word)));
    }
  }
  if (const Status idle = plugin->idle(); !idle) { trial.fail(idle.error().message); }
}

void withoutAHome(Trial& trial) {
  for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR", "USER", "LOGNAME"}) {
    ::unsetenv(name);
  }
  useAll(trial);
}

void withAHomeThatIsNone(Trial& trial) {
  for (const char* home : {"/dev/null", "/nonexistent/home", "", "relative", "/proc/self"}) {
    trial.step(fmt::format("HOME={}", home));
    ::setenv("HOME", home, 1);
    useAll(trial);
  }
}

void withoutAnEnvironment(Trial& trial) {
  ::clearenv();
  useAll(trial);
}

void inAFolderThatIsGone(Trial& trial) {
  std::error_code error;
  const fs::path plugin = fs::absolute(trial.plugin());
  const fs::path folder = trial.folder() / "gone";
  fs::create_directories(folder, error);
  fs::current_path(folder, error);
  fs::remove(folder, error);
  const auto opened = trial.opened(plugin);
  if (opened == nullptr) { return; }
  if (const auto started = opened->start(); !started) { trial.fail(started.error().message); }
  for (const auto& function : trial.functions()) {
    trial.step(nameOf(*function));
    trial.call(*function, std::vector<Value>(fewestArguments(*function)));
  }
}

void inAnyZone(Trial& trial) {
  for (const char* zone :
       {"UTC", "Asia/Kolkata", "America/St_Johns", "Pacific/Apia", "XYZ3", ":/etc/passwd", "", "no/such"}) {
    trial.step(fmt::format("TZ={}", zone));
    ::setenv("TZ", zone, 1);
    useAll(trial);
  }
}

void withFewDescriptors(Trial& trial) {
  const auto plugin = trial.started();
  if (plugin == nullptr) { return; }
  struct rlimit limit {};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  const struct rlimit none { 0, limit.rlim_max };
  ::setrlimit(RLIMIT_NOFILE, &none);
  for (const auto& function : trial.functions()) {
    trial.step(fmt::format("{} where no file can be opened", nameOf(*function)));
    trial.call(*function, std::vector<Value>(fewestArguments(*function), Value::ofText(u"event")));
  }
  ::setrlimit(RLIMIT_NOFILE, &limit);
}

/// Stores of calendars are one plug-in's; others do not look at them.
bool keepsAStore(Trial& trial) {
  const auto plugin = trial.opened();
  constexpr std::uint32_t kId = 0x4F726C6F;  // "Orlo"
  if (plugin != nullptr && plugin->pluginId() == kId) { return true; }
  trial.skip("it keeps no calendar store");
  return false;
}

fs::path storeOf(const Trial& trial) { return trial.folder() / "calendar.db"; }

void withStore(Trial& trial, const std::string& content) {
  if (!keepsAStore(trial)) { return; }
  std::ofstream(storeOf(trial), std::ios::binary) << content;
  useAll(trial);
}

void withAnEmptyStore(Trial& trial) { withStore(trial, ""); }
void withAStoreThatIsNone(Trial& trial) { withStore(trial, std::string(100'000, 'x')); }
void withABrokenStore(Trial& trial) {
  withStore(trial, std::string("SQLite format 3\0", 16) + std::string(8'192, '\xFF'));
}

void withAStoreInAFileAsFolder(Trial& trial) {
  if (!keepsAStore(trial)) { return; }
  std::ofstream(trial.folder() / "file") << "x";
  ::setenv("ORLOCAL_STORE", (trial.folder() / "file" / "calendar.db").c_str(), 1);
  useAll(trial);
}

void withAStoreThatIsAFolder(Trial& trial) {
  if (!keepsAStore(trial)) { return; }
  std::error_code error;
  fs::create_directories(storeOf(trial), error);
  useAll(trial);
}

void whileTheStoreIsTakenAway(Trial& trial) {
  if (!keepsAStore(trial)) { return; }
  const auto plugin = trial.started();
  if (plugin == nullptr) { return; }
  for (int round = 0; round < 3; ++round) {
    for (const auto& function : trial.functions()) {
      trial.step(fmt::format("{} after the store was taken away", nameOf(*function)));
      trial.call(*function, std::vector<Value>(fewestArguments(*function), Value::ofText(u"calendar")));
      std::error_code error;
      for (const char* end : {"", "-wal", "-shm", "-bell"}) { fs::remove(storeOf(trial).string() + end, error); }
    }
  }
}

void onAFullDisk(Trial& trial) {
  if (!keepsAStore(trial)) { return; }
  // Files that cannot grow stand for a disk that is full.
  const struct rlimit small { 4'096, 4'096 };
  ::signal(SIGXFSZ, SIG_IGN);
  ::setrlimit(RLIMIT_FSIZE, &small);
  useAll(trial);
}

void onTheOlderBackEnd(Trial& trial) {
  if (!keepsAStore(trial)) { return; }
  ::setenv("ORLOCAL_SYSTEM_MINOR", "7", 1);
  useAll(trial);
  const auto plugin = trial.started();
  if (plugin == nullptr) { return; }
  const auto odd = oddValues();
  for (const auto& function : trial.functions()) {
    const auto count = static_cast<std::size_t>(function->maxArgs);
    for (const OddValue& each : odd) {
      trial.step(fmt::format("{} with {}", nameOf(*function), each.words));
      trial.call(*function, std::vector<Value>(count, each.value));
    }
  }
}

}  // namespace

std::vector<Check> surroundingsChecks() {
  return {
      {"around-no-home", "It works for a user without a home folder.", Level::kBasic, withoutAHome},
      {"around-odd-home", "It outlives homes that are none.", Level::kUsual, withAHomeThatIsNone},
      {"around-no-environment", "It works without any environment variable.", Level::kUsual, withoutAnEnvironment},
      {"around-folder-gone", "It works where the working folder was removed.", Level::kUsual, inAFolderThatIsGone},
      {"around-zones", "It works in any time zone, and in none.", Level::kUsual, inAnyZone},
      {"around-no-descriptors", "It outlives a process that can open no more files.", Level::kStrict,
       withFewDescriptors},
      {"store-empty", "An empty file in place of the store does no harm.", Level::kUsual, withAnEmptyStore},
      {"store-none", "A file that is no store does no harm in its place.", Level::kUsual, withAStoreThatIsNone},
      {"store-broken", "A broken store does no harm.", Level::kUsual, withABrokenStore},
      {"store-below-a-file", "A store below a file does no harm.", Level::kUsual, withAStoreInAFileAsFolder},
      {"store-a-folder", "A folder in place of the store does no harm.", Level::kUsual, withAStoreThatIsAFolder},
      {"store-taken-away", "A store that is taken away while it is used does no harm.", Level::kUsual,
       whileTheStoreIsTakenAway},
      {"store-full-disk", "A full disk does no harm.", Level::kUsual, onAFullDisk},
      {"store-older-back-end", "The older back end takes the same calls.", Level::kUsual, onTheOlderBackEnd},
  };
}

}  // namespace orlocal::host::check
