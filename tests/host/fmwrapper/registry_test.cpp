#include "host/fmwrapper/registry.h"

#include <gtest/gtest.h>

namespace orlocal::host {
namespace {

constexpr std::uint32_t kPlugin = 0x54657374;  // "Test"

fmx::ErrorCode doNothing(std::int16_t, const fmx::ExprEnv*, const fmx::DataVect*, fmx::Data*) { return 0; }
fmx::ErrorCode doLess(std::int16_t, const fmx::ExprEnv*, const fmx::DataVect*, fmx::Data*) { return 1; }

class RegistryTest : public ::testing::Test {
 protected:
  void TearDown() override {
    for (const auto& function : registry.functions()) { registry.unregisterFunction(function->key); }
    for (const auto& step : registry.steps()) { registry.unregisterStep(step->key); }
    registry.setEvaluator(nullptr);
    registry.setScriptHook(nullptr);
    registry.takeScriptStarts();
    registry.setCurrentEnvironment({});
  }

  static RegisteredFunction function(std::int16_t id, std::u16string name) {
    return {.key = {kPlugin, id}, .name = std::move(name), .prototype = {}, .description = {}, .function = doNothing};
  }

  static RegisteredStep step(std::int16_t id, std::u16string name) {
    return {.key = {kPlugin, id}, .name = std::move(name), .definition = {}, .description = {}, .function = doNothing};
  }

  Registry& registry = Registry::instance();
};

TEST_F(RegistryTest, FindsFunctionsByNameWithoutCase) {
  ASSERT_EQ(registry.registerFunction(function(7, u"Test_Größe")), 0);
  ASSERT_NE(registry.function(u"test_GRÖSSE"), nullptr);
  EXPECT_EQ(registry.function(u"test_GRÖSSE")->key.id, 7);
  EXPECT_EQ(registry.function(u"Test_Other"), nullptr);
}

TEST_F(RegistryTest, ReplacesTheSamePluginAndId) {
  registry.registerFunction(function(7, u"Test_Old"));
  RegisteredFunction newer = function(7, u"Test_New");
  newer.function = doLess;
  EXPECT_EQ(registry.registerFunction(newer), 0);
  EXPECT_EQ(registry.function(u"Test_Old"), nullptr);
  EXPECT_EQ(registry.function(u"Test_New")->function, doLess);
  EXPECT_EQ(registry.functions().size(), 1U);
}

TEST_F(RegistryTest, KeepsTheSameIdOfTwoPluginsApart) {
  registry.registerFunction(function(7, u"Test_A"));
  RegisteredFunction other = function(7, u"Other_A");
  other.key.pluginId = kPlugin + 1;
  registry.registerFunction(other);
  EXPECT_EQ(registry.functions().size(), 2U);
}

TEST_F(RegistryTest, LetsTheFirstOfSeveralKeepAName) {
  registry.registerFunction(function(9, u"Test_A"));
  registry.registerFunction(function(7, u"test_a"));
  EXPECT_EQ(registry.function(u"Test_A")->key.id, 7);
  registry.unregisterFunction({kPlugin, 7});
  EXPECT_EQ(registry.function(u"Test_A")->key.id, 9);
}

TEST_F(RegistryTest, RefusesToUnregisterWhatIsAbsent) {
  EXPECT_EQ(registry.unregisterFunction({kPlugin, 148}), Registry::kRefused);
  EXPECT_EQ(registry.unregisterStep({kPlugin, 148}), Registry::kRefused);
  registry.registerFunction(function(148, u"Test_A"));
  EXPECT_EQ(registry.unregisterFunction({kPlugin, 148}), 0);
  EXPECT_EQ(registry.unregisterFunction({kPlugin, 148}), Registry::kRefused);
}

TEST_F(RegistryTest, RefusesImpossibleRegistrations) {
  EXPECT_EQ(registry.registerFunction(function(1, u"")), Registry::kRefused);
  RegisteredFunction bad = function(1, u"Test_A");
  bad.function = nullptr;
  EXPECT_EQ(registry.registerFunction(bad), Registry::kRefused);
  bad = function(1, u"Test_A");
  bad.minArgs = 3;
  bad.maxArgs = 2;
  EXPECT_EQ(registry.registerFunction(bad), Registry::kRefused);
  bad.maxArgs = -1;
  EXPECT_EQ(registry.registerFunction(bad), 0);
  bad.minArgs = -1;
  EXPECT_EQ(registry.registerFunction(bad), Registry::kRefused);
  bad.minArgs = 0;
  bad.maxArgs = -2;
  EXPECT_EQ(registry.registerFunction(bad), Registry::kRefused);
}

TEST_F(RegistryTest, RefusesStepsWithoutNameOrFunction) {
  EXPECT_EQ(registry.registerStep(step(1, u"")), Registry::kRefused);
  RegisteredStep bad = step(1, u"Test A");
  bad.function = nullptr;
  EXPECT_EQ(registry.registerStep(bad), Registry::kRefused);
}

TEST_F(RegistryTest, KeepsStepsApartFromFunctions) {
  registry.registerFunction(function(1, u"Test_A"));
  registry.registerStep(step(1, u"Test A"));
  EXPECT_NE(registry.step(u"TEST a"), nullptr);
  EXPECT_EQ(registry.step(u"Test_A"), nullptr);
  EXPECT_EQ(registry.steps().size(), 1U);
}

TEST_F(RegistryTest, ListsByPluginAndId) {
  registry.registerFunction(function(9, u"Test_Nine"));
  registry.registerFunction(function(2, u"Test_Two"));
  ASSERT_EQ(registry.functions().size(), 2U);
  EXPECT_EQ(registry.functions()[0]->name, u"Test_Two");
}

TEST_F(RegistryTest, KeepsAnEntryAliveForWhoHoldsIt) {
  registry.registerFunction(function(2, u"Test_Two"));
  const auto held = registry.function(u"Test_Two");
  registry.unregisterFunction({kPlugin, 2});
  EXPECT_EQ(held->name, u"Test_Two");
}

TEST_F(RegistryTest, RefusesToEvaluateWithoutAnEvaluator) {
  Value result;
  EXPECT_EQ(registry.evaluate({}, u"1 + 1", result), Registry::kRefused);
}

TEST_F(RegistryTest, EvaluatesThroughTheEvaluator) {
  registry.setEvaluator([](const Environment& environment, std::u16string_view expression, Value& result) {
    result.setText(std::u16string(expression) + (environment.fileId == 3 ? u"!" : u"?"));
    return fmx::ErrorCode{4};
  });
  Value result;
  EXPECT_EQ(registry.evaluate({.sessionId = 0, .fileId = 3}, u"1 + 1", result), 4);
  EXPECT_EQ(result.asText(), u"1 + 1!");
}

TEST_F(RegistryTest, KeepsScriptStartsUntilTaken) {
  EXPECT_EQ(registry.startScript({.file = u"Agenda", .script = u"Refresh", .control = 3, .parameter = {}}), 0);
  const auto starts = registry.takeScriptStarts();
  ASSERT_EQ(starts.size(), 1U);
  EXPECT_EQ(starts[0].script, u"Refresh");
  EXPECT_EQ(starts[0].control, 3);
  EXPECT_TRUE(registry.takeScriptStarts().empty());
}

TEST_F(RegistryTest, HandsScriptStartsToTheHook) {
  std::u16string file;
  registry.setScriptHook([&](const ScriptStart& start) {
    file = start.file;
    return fmx::ErrorCode{100};
  });
  EXPECT_EQ(registry.startScript({.file = u"Agenda", .script = u"Refresh", .control = 0, .parameter = {}}), 100);
  EXPECT_EQ(file, u"Agenda");
  EXPECT_TRUE(registry.takeScriptStarts().empty());
}

}  // namespace
}  // namespace orlocal::host
