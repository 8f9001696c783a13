#include "host/plugin/update_script.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "host/fmwrapper/unicode.h"
#include "store/edits/edited_items.h"

namespace orlocal::host {
namespace {

using ::testing::HasSubstr;
using ::testing::SizeIs;

/// The built plug-in over a store of its own.
class UpdateScriptTest : public testing::Test {
 protected:
  UpdateScriptTest() {
    std::string pattern = (std::filesystem::temp_directory_path() / "orlocal-script-XXXXXX").string();
    folder = ::mkdtemp(pattern.data());
    ::setenv("ORLOCAL_STORE", (folder / "calendar.db").c_str(), 1);
  }
  ~UpdateScriptTest() override {
    ::unsetenv("ORLOCAL_STORE");
    Registry::instance().takeScriptStarts();
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  }

  void load() {
    auto loaded = Plugin::load(ORLOCAL_PLUGIN);
    ASSERT_TRUE(loaded) << loaded.error().message;
    plugin = std::move(*loaded);
  }

  std::string saveAnEventElsewhere() {
    store::StoreOptions options;
    options.file = folder / "calendar.db";
    options.viewer = store::Zone::ofUser();
    const auto store = store::CalendarStore::open(std::move(options)).value();
    store::Item event;
    event.calendar = store->defaultCalendar(store::CalendarKind::kEvents).value()->id;
    event.start = event.end = {store::CalendarTime::Kind::kUtc, store::LocalTime(2026, 11, 6, 10, 0, 0), ""};
    EXPECT_TRUE(saveEvent(*store, event, std::nullopt, store::Span::kThis));
    return event.identifier;
  }

  std::filesystem::path folder;
  std::unique_ptr<Plugin> plugin;
};

TEST(PluginSymbol, IsFoundByItsName) {
  const auto plugin = Plugin::open(ORLOCAL_SAMPLE_PLUGIN);
  ASSERT_TRUE(plugin) << plugin.error().message;
  EXPECT_NE((*plugin)->symbol("FMExternCallProc"), nullptr);
  EXPECT_EQ((*plugin)->symbol("NoSuchSymbol"), nullptr);
}

TEST(UpdateScriptOfAnotherPlugin, CannotBeRegistered) {
  const auto plugin = Plugin::load(ORLOCAL_SAMPLE_PLUGIN);
  ASSERT_TRUE(plugin) << plugin.error().message;
  const auto registered = registerUpdateScript(**plugin, "Solution", "Calendar changed");
  ASSERT_FALSE(registered);
  EXPECT_THAT(registered.error().message, HasSubstr("has no Orlo_RegisterUpdateScript"));
}

TEST_F(UpdateScriptTest, StartsAtTheNextIdleTimeAfterAChange) {
  load();
  const auto registered = registerUpdateScript(*plugin, "Solution", "Calendar changed");
  ASSERT_TRUE(registered) << registered.error().message;
  const std::string identifier = saveAnEventElsewhere();
  ASSERT_TRUE(plugin->idle());
  const auto starts = Registry::instance().takeScriptStarts();
  ASSERT_THAT(starts, SizeIs(1));
  EXPECT_EQ(starts[0].file, u"Solution");
  EXPECT_EQ(starts[0].script, u"Calendar changed");
  EXPECT_EQ(starts[0].control, 3);
  ASSERT_TRUE(starts[0].parameter);
  EXPECT_EQ(starts[0].parameter->utf8(), "New " + identifier);
}

TEST_F(UpdateScriptTest, CannotBeRegisteredWithoutAStore) {
  // In a new process, not a copy: the plug-in keeps the store that it opened for as long as it is loaded.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        std::ofstream(folder / "text") << "no folder";
        ::setenv("ORLOCAL_STORE", (folder / "text" / "calendar.db").c_str(), 1);
        auto loaded = Plugin::load(ORLOCAL_PLUGIN);
        const auto registered = registerUpdateScript(**loaded, "Solution", "Calendar changed");
        std::fputs(registered ? "registered" : registered.error().message.c_str(), stderr);
        ::_exit(registered ? 0 : 1);
      },
      testing::ExitedWithCode(1), "Orlo_RegisterUpdateScript failed");
}

}  // namespace
}  // namespace orlocal::host
