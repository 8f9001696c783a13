#include "bridge/configured_script.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "bridge/plugin_error.h"
#include "notify/script_host.h"

namespace orlocal::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// One test: what is registered is so once in a process.
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
