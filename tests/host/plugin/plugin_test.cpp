#include "host/plugin/plugin.h"

#include <filesystem>
#include <fstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/fmwrapper/call.h"
#include "host/fmwrapper/registry.h"

namespace orlocal::host {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr const char* kSample = ORLOCAL_SAMPLE_PLUGIN;
constexpr const char* kContrary = ORLOCAL_CONTRARY_PLUGIN;

std::string call(std::u16string_view name, const std::vector<Value>& arguments = {}) {
  const auto function = Registry::instance().function(name);
  if (!function) { return "not registered"; }
  const Result<Value> result = callFunction(*function, arguments);
  return result ? result->utf8() : result.error().message;
}

TEST(PluginLoading, TakesTheRegistrations) {
  const auto plugin = Plugin::load(kSample);
  ASSERT_TRUE(plugin) << plugin.error().message;
  EXPECT_EQ(call(u"test_echo", {Value::ofText(u"hello")}), "hello");
  EXPECT_NE(Registry::instance().step(u"Test Echo"), nullptr);
}

TEST(PluginLoading, FindsAFileInTheCurrentFolder) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(std::filesystem::path(kSample).parent_path());
  const auto plugin = Plugin::open(std::filesystem::path(kSample).filename());
  std::filesystem::current_path(before);
  EXPECT_TRUE(plugin) << plugin.error().message;
}

TEST(PluginLoading, NamesAFileThatIsMissing) {
  const auto plugin = Plugin::load("/nowhere/Missing.fmx");
  ASSERT_FALSE(plugin);
  EXPECT_EQ(plugin.error().message, "/nowhere/Missing.fmx does not exist; name the plug-in's file with --plugin.");
}

TEST(PluginLoading, RefusesAFolder) {
  const auto plugin = Plugin::load("/tmp");
  ASSERT_FALSE(plugin);
  EXPECT_THAT(plugin.error().message, StartsWith("/tmp is a folder"));
}

TEST(PluginLoading, RefusesAFileThatIsNoSharedObject) {
  const auto file = std::filesystem::temp_directory_path() / "orlocal_text.fmx";
  std::ofstream(file) << "just text";
  const auto plugin = Plugin::load(file);
  std::filesystem::remove(file);
  ASSERT_FALSE(plugin);
  EXPECT_THAT(plugin.error().message, HasSubstr("cannot be loaded:"));
}

TEST(PluginLoading, RefusesASharedObjectWithoutTheEntryPoint) {
  const auto plugin = Plugin::load(ORLOCAL_NO_PLUGIN);
  ASSERT_FALSE(plugin);
  EXPECT_THAT(plugin.error().message, HasSubstr("has no entry point FMExternCallProc"));
}

TEST(PluginStart, ReportsThatThePluginIsNotForThisHost) {
  const auto plugin = Plugin::load(kSample, {.extensionVersion = 49});
  ASSERT_FALSE(plugin);
  EXPECT_THAT(plugin.error().message, HasSubstr("is not for a host of extension version 49"));
  EXPECT_EQ(call(u"Test_Echo"), "not registered");
}

TEST(PluginStart, GivesTheVersionThatThePluginSpeaks) {
  const auto plugin = Plugin::open(kSample);
  ASSERT_TRUE(plugin);
  EXPECT_EQ((*plugin)->start().value(), 57);
}

TEST(PluginStart, RefusesAnAnswerThatIsNoVersion) {
  const auto plugin = Plugin::load(kContrary);
  ASSERT_FALSE(plugin);
  EXPECT_THAT(plugin.error().message, HasSubstr("answered start-up with 0"));
}

TEST(PluginStart, SendsWhatAHostSends) {
  const auto plugin = Plugin::load(kSample, {.extensionVersion = 60, .versionText = u"Try 1", .applicationKind = 3});
  ASSERT_TRUE(plugin);
  EXPECT_THAT(call(u"Test_Describe"), StartsWith("version 60 unused -1 kind 3 host Try 1 "));
  // The record is packed: its members are copied before anything refers to them.
  const fmx::ExternCall record = (*plugin)->record();
  const std::uintptr_t instance = record.instanceID;
  auto* const entry = record.entryPoint;
  EXPECT_NE(instance, 0U);
  EXPECT_NE(entry, nullptr);
}

TEST(PluginStart, MayComeTwice) {
  const auto plugin = Plugin::load(kSample);
  ASSERT_TRUE(plugin);
  EXPECT_TRUE((*plugin)->start());
  EXPECT_EQ(Registry::instance().functions().size(), 4U);
}

TEST(PluginShutdown, IsSentAndLetsThePluginUnregister) {
  const auto plugin = Plugin::load(kSample);
  ASSERT_TRUE(plugin);
  EXPECT_TRUE((*plugin)->shutdown());
  EXPECT_EQ(call(u"Test_Echo"), "not registered");
}

TEST(PluginShutdown, MayComeTwiceAndWithoutAStart) {
  const auto plugin = Plugin::open(kSample);
  ASSERT_TRUE(plugin);
  EXPECT_TRUE((*plugin)->shutdown());
  EXPECT_TRUE((*plugin)->shutdown());
}

TEST(PluginShutdown, ReportsWhatThePluginThrows) {
  const auto plugin = Plugin::load(kContrary, {.extensionVersion = 60});
  ASSERT_TRUE(plugin);
  EXPECT_THAT((*plugin)->shutdown().error().message,
              HasSubstr("failed at the host's message 4 with an exception: not yet."));
}

/// How often the sample was shut down, as it says itself.
int shutdownsSeen() {
  const std::string state = call(u"Test_Describe");
  return std::stoi(state.substr(state.rfind(' ')));
}

TEST(PluginEnd, ShutsAStartedPluginDown) {
  int before = 0;
  {
    const auto plugin = Plugin::load(kSample);
    before = shutdownsSeen();
  }
  const auto plugin = Plugin::load(kSample);
  EXPECT_EQ(shutdownsSeen(), before + 1);
}

TEST(PluginEnd, ForgetsWhatWasLeftRegistered) {
  { const auto plugin = Plugin::load(kSample); }
  EXPECT_TRUE(Registry::instance().functions().empty());
  EXPECT_TRUE(Registry::instance().steps().empty());
}

TEST(PluginMessages, AreSentWithoutParameters) {
  const auto plugin = Plugin::load(kSample);
  ASSERT_TRUE(plugin);
  EXPECT_TRUE((*plugin)->idle());
  EXPECT_EQ((*plugin)->record().whichCall, fmx::kCallIdle);
  EXPECT_TRUE((*plugin)->send(fmx::kCallSchemaChange));
  const std::uintptr_t parameter = (*plugin)->record().parm2;
  EXPECT_EQ(parameter, 0U);
}

TEST(PluginMessages, ReportAnExceptionOfAnyKind) {
  const auto plugin = Plugin::open(kContrary);
  ASSERT_TRUE(plugin);
  EXPECT_THAT((*plugin)->idle().error().message, HasSubstr("message 1 with an exception of an unknown kind."));
}

TEST(PluginStrings, AreAskedForBeforeStartUp) {
  const auto plugin = Plugin::open(kSample);
  ASSERT_TRUE(plugin);
  EXPECT_EQ((*plugin)->getString(Plugin::kNameString).value(), u"Sample");
}

TEST(PluginStrings, AreEmptyWhenAbsentOrTooLong) {
  const auto plugin = Plugin::open(kSample);
  ASSERT_TRUE(plugin);
  EXPECT_EQ((*plugin)->getString(200).value(), u"");
  EXPECT_EQ((*plugin)->getString(Plugin::kNameString, 6).value(), u"");
  EXPECT_EQ((*plugin)->getString(Plugin::kNameString, 7).value(), u"Sample");
}

TEST(PluginStrings, GiveThePluginsId) {
  EXPECT_EQ((*Plugin::open(kSample))->pluginId(), 0x54657374U);
  EXPECT_EQ((*Plugin::open(kContrary))->pluginId(), 0U);
}

TEST(PluginCalls, ReportAnExceptionThatCrossesTheLibrary) {
  const auto plugin = Plugin::load(kSample);
  ASSERT_TRUE(plugin);
  EXPECT_EQ(call(u"Test_Complain"), "Test_Complain failed with an exception: nothing works today");
}

TEST(PluginCalls, ReachTheHostsScripts) {
  const auto plugin = Plugin::load(kSample);
  ASSERT_TRUE(plugin);
  EXPECT_EQ(call(u"Test_Refresh"), "0");
  const auto starts = Registry::instance().takeScriptStarts();
  ASSERT_EQ(starts.size(), 1U);
  EXPECT_EQ(starts[0].file, u"Agenda");
  EXPECT_EQ(starts[0].control, 3);
}

}  // namespace
}  // namespace orlocal::host
