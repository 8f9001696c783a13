#include "bridge/configured_script.h"

#include <cstdlib>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "bridge/plugin_error.h"
#include "fakes/fake_run_loop.h"
#include "notify/script_host.h"

namespace orlocal::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

void setScript(ScriptHost& host) {
  host.platform().m_settings.updateScript = PluginSettings::UpdateScript{"Books", "Calendar changed"};
}

/// Ends the process with status 0 when what is logged is `line`.
[[noreturn]] void registerWithoutAPort(const std::string& line) {
  ScriptHost host;
  setScript(host);
  const auto loop = std::make_shared<fakes::FakeRunLoop>();
  loop->m_takesPorts = false;
  host.platform().m_runLoop = loop;
  registerConfiguredScript();
  const bool isClear = g_llasterror == 0 && error->getErrorNumber() == "0";
  std::exit(isClear && host.platform().m_log == std::vector<std::string>{line} ? 0 : 1);
}

// Each in its process, or in this order: what is registered is so once in a process.
TEST(ConfiguredScript, ThatIsRefusedIsLoggedWithTheReason) {
  EXPECT_EXIT(registerWithoutAPort("The script \"Calendar changed\" of \"Books\" will not be started when calendars "
                                   "change: System Error NSPortException"),
              testing::ExitedWithCode(0), "");
}

TEST(ConfiguredScript, ThatCouldNotBeHandedOverIsTriedAgain) {
  ScriptHost host;
  setScript(host);
  host.platform().m_notificationCenter = nullptr;
  registerConfiguredScript();
  registerConfiguredScript();
  EXPECT_EQ(host.platform().m_log,
            std::vector<std::string>(
                2, "The update script could not be handed over: the test gave the platform no notification centre"));
}

TEST(ConfiguredScript, IsRegisteredOnceHoweverOftenThePlugInStarts) {
  ScriptHost host;
  registerConfiguredScript();
  host.center().post(changed({"A"}));
  EXPECT_THAT(host.started, IsEmpty()) << "nothing is set";

  host.platform().m_settings.updateScript = PluginSettings::UpdateScript{
      "B\xC3\xBC"
      "cher",
      "Calendar changed"};
  registerConfiguredScript();
  registerConfiguredScript();
  host.center().post(changed({"A"}));
  ASSERT_EQ(host.started.size(), 1U);
  EXPECT_EQ(host.started[0].file,
            "B\xC3\xBC"
            "cher");
  EXPECT_EQ(host.started[0].script, "Calendar changed");
  EXPECT_EQ(host.started[0].parameter, "New A");
  EXPECT_THAT(host.listening, ElementsAre(true));
  EXPECT_THAT(host.platform().m_log, IsEmpty());

  // A solution that registers as well is called once more for each change, as ever.
  registerScript({"Solution", "Another"});
  host.center().post(changed({"B"}));
  EXPECT_EQ(host.started.size(), 3U);
}

}  // namespace
}  // namespace orlocal::test
