#include <cstdlib>
#include <filesystem>
#include <functional>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "durability/saving_process.h"
#include "host/fmwrapper/registry.h"
#include "host/plugin/plugin.h"

namespace orlocal::test {
namespace {

using host::Plugin;
using host::Registry;
using host::Value;
using testing::ElementsAre;

/// A host of its own, in a process of its own, whose plug-in saves calendars.
class HostThatSaves : public testing::TestWithParam<const char*> {
 protected:
  HostThatSaves() {
    ::setenv("ORLOCAL_STORE", store.file().c_str(), 1);
    ::setenv("ORLOCAL_SYSTEM_MINOR", GetParam(), 1);
  }
  ~HostThatSaves() override {
    ::unsetenv("ORLOCAL_STORE");
    ::unsetenv("ORLOCAL_SYSTEM_MINOR");
  }

  static std::string call(std::u16string_view name, const std::vector<const char*>& texts) {
    const auto function = Registry::instance().function(name);
    if (!function) { throw std::runtime_error("a function is not registered"); }
    std::vector<Value> arguments;
    for (const char* text : texts) { arguments.push_back(Value::ofUtf8(text)); }
    const auto result = callFunction(*function, arguments);
    if (!result) { throw std::runtime_error(result.error().message); }
    return result->utf8();
  }
  static void saveCalendar(const char* title) {
    call(u"Orlo_NewItem", {"calendar"});
    call(u"Orlo_SetProperty", {"calendar", "title", title});
    if (const auto saved = call(u"Orlo_SaveItem", {"calendar"}); saved != "0") {
      throw std::runtime_error("not saved: " + call(u"Orlo_GetLastError", {}));
    }
  }
  static std::unique_ptr<Plugin> loaded() {
    auto plugin = Plugin::load(ORLOCAL_PLUGIN);
    if (!plugin) { throw std::runtime_error(plugin.error().message); }
    return std::move(*plugin);
  }

  /// Runs `body` in a process that then ends by `exit`.
  void runsAndExits(const std::function<void()>& body) {
    const pid_t child = fork();
    if (child == 0) {
      try {
        body();
      } catch (const std::exception& problem) {
        std::fprintf(stderr, "host: %s\n", problem.what());
        ::_exit(2);
      }
      std::exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  }

  /// What a copy of the file alone holds.
  std::vector<std::string> titlesInACopy() {
    const TemporaryStore copy;
    std::filesystem::copy_file(store.file(), copy.file());
    std::vector<std::string> titles;
    const auto calendars = openStore(copy.file())->calendars(store::CalendarKind::kEvents).value();
    for (const auto& calendar : calendars) { titles.push_back(calendar.title); }
    return titles;
  }
  bool hasLog() const { return std::filesystem::exists(store.file().string() + "-wal"); }

  TemporaryStore store;
};

TEST_P(HostThatSaves, LeavesOneWholeFileWhenItShutsThePlugInDown) {
  runsAndExits([] {
    const auto plugin = loaded();
    saveCalendar("Work");
    if (const auto down = plugin->shutdown(); !down) { throw std::runtime_error(down.error().message); }
    // No orderly end follows: the host may live on for weeks, or be killed.
    ::_exit(0);
  });
  EXPECT_FALSE(hasLog());
  EXPECT_THAT(titlesInACopy(), ElementsAre("Calendar", "Work"));
}

TEST_P(HostThatSaves, LeavesOneWholeFileWhenItEndsWithoutShuttingThePlugInDown) {
  runsAndExits([] {
    // Never unloaded, as in hosts that only exit.
    [[maybe_unused]] static Plugin* volatile s_kept;
    s_kept = loaded().release();
    saveCalendar("Work");
  });
  EXPECT_FALSE(hasLog());
  EXPECT_THAT(titlesInACopy(), ElementsAre("Calendar", "Work"));
}

TEST_P(HostThatSaves, MayShutThePlugInDownWhileItEnds) {
  static Plugin* s_plugin;
  runsAndExits([] {
    // Runs after what the plug-in does at the end.
    std::atexit([] {
      if (!s_plugin->shutdown()) { ::_exit(3); }
    });
    s_plugin = loaded().release();
    saveCalendar("Work");
  });
  EXPECT_THAT(titlesInACopy(), ElementsAre("Calendar", "Work"));
}

TEST_P(HostThatSaves, MayStartThePlugInAgainAfterAShutdown) {
  runsAndExits([] {
    const auto plugin = loaded();
    saveCalendar("Work");
    if (!plugin->shutdown() || !plugin->start()) { throw std::runtime_error("not started again"); }
    saveCalendar("Family");
    if (!plugin->shutdown()) { throw std::runtime_error("not shut down again"); }
    ::_exit(0);
  });
  EXPECT_FALSE(hasLog());
  EXPECT_THAT(titlesInACopy(), ElementsAre("Calendar", "Work", "Family"));
}

INSTANTIATE_TEST_SUITE_P(BackEnds, HostThatSaves, testing::Values("15", "7"), [](const auto& minor) {
  return std::string(minor.param == std::string("15") ? "Current" : "Older");
});

}  // namespace
}  // namespace orlocal::test
