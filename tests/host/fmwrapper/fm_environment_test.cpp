#include <gtest/gtest.h>

#include "host/fmwrapper/fm_objects.h"
#include "host/fmwrapper/registry.h"

namespace fmx {
namespace {

using namespace orlocal::host::testing;
using orlocal::host::Registry;

ErrorCode doNothing(std::int16_t, const fmx::ExprEnv*, const fmx::DataVect*, fmx::Data*) { return 0; }

class FmExprEnv : public ::testing::Test {
 protected:
  void TearDown() override {
    Registry& registry = Registry::instance();
    registry.unregisterFunction({0x54657374, 9});
    registry.unregisterStep({0x54657374, 9});
    registry.setEvaluator(nullptr);
    registry.setCurrentEnvironment({});
    registry.takeScriptStarts();
  }

  orlocal::host::testing::QuadChar plugin = quad("Test");
};

TEST_F(FmExprEnv, RegistersFunctionsWithCopiesOfTheirTexts) {
  fine([&](Exception* x) {
    const auto name = text(u"Test_A");
    const auto prototype = text(u"Test_A( x )");
    const auto description = text(u"a b|does things");
    EXPECT_EQ(FM_ExprEnv_RegisterExternalFunctionEx(plugin.get(), 9, name.get(), prototype.get(), description.get(), 1,
                                                    2, 0xFF01, doNothing, x),
              0);
  });
  const auto function = Registry::instance().function(u"test_a");
  ASSERT_NE(function, nullptr);
  EXPECT_EQ(function->key.pluginId, 0x54657374U);
  EXPECT_EQ(function->prototype, u"Test_A( x )");
  EXPECT_EQ(function->description, u"a b|does things");
  EXPECT_EQ(function->minArgs, 1);
  EXPECT_EQ(function->maxArgs, 2);
  EXPECT_EQ(function->flags, 0xFF01U);
  EXPECT_EQ(function->function, doNothing);
}

TEST_F(FmExprEnv, RegistersFunctionsWithoutADescription) {
  EXPECT_EQ(fine([&](Exception* x) {
              return FM_ExprEnv_RegisterExternalFunction(plugin.get(), 9, text(u"Test_B").get(), text(u"p").get(), 0,
                                                         -1, 0xFF01, doNothing, x);
            }),
            0);
  EXPECT_EQ(Registry::instance().function(u"Test_B")->description, u"");
}

TEST_F(FmExprEnv, UnregistersWithAnErrorThatIsNoFailure) {
  const auto unregister = [&] {
    return fine([&](Exception* x) { return FM_ExprEnv_UnRegisterExternalFunction(plugin.get(), 9, x); });
  };
  EXPECT_NE(unregister(), 0);
  fine([&](Exception* x) {
    FM_ExprEnv_RegisterExternalFunction(plugin.get(), 9, text(u"Test_B").get(), text().get(), 0, 0, 0, doNothing, x);
  });
  EXPECT_EQ(unregister(), 0);
}

TEST_F(FmExprEnv, RegistersScriptSteps) {
  EXPECT_EQ(fine([&](Exception* x) {
              return FM_ExprEnv_RegisterScriptStep(plugin.get(), 9, text(u"Test A").get(), text(u"<PluginStep/>").get(),
                                                   text(u"d").get(), 0xFF01, doNothing, x);
            }),
            0);
  EXPECT_EQ(Registry::instance().step(u"Test A")->definition, u"<PluginStep/>");
  EXPECT_EQ(fine([&](Exception* x) { return FM_ExprEnv_UnRegisterScriptStep(plugin.get(), 9, x); }), 0);
  EXPECT_NE(fine([&](Exception* x) { return FM_ExprEnv_UnRegisterScriptStep(plugin.get(), 9, x); }), 0);
}

TEST_F(FmExprEnv, FailsToRegisterWithoutATextOrPlugin) {
  EXPECT_EQ(codeOf([&](Exception* x) {
              FM_ExprEnv_RegisterExternalFunction(plugin.get(), 9, nullptr, text().get(), 0, 0, 0, doNothing, x);
            }),
            2);
  EXPECT_EQ(codeOf([&](Exception* x) { FM_ExprEnv_UnRegisterExternalFunction(nullptr, 9, x); }), 2);
}

TEST_F(FmExprEnv, HasNoSessionOrFileUntilItIsFilled) {
  const orlocal::host::testing::ExprEnv environment(fine([](Exception* x) { return FM_ExprEnv_Constructor1(x); }));
  EXPECT_EQ(fine([&](Exception* x) { return FM_ExprEnv_SessionID(environment.get(), x); }), 0U);
  Registry::instance().setCurrentEnvironment({.sessionId = 4, .fileId = 5});
  EXPECT_EQ(Registry::currentEnvironmentCallback()(environment.get()), 0);
  EXPECT_EQ(fine([&](Exception* x) { return FM_ExprEnv_SessionID(environment.get(), x); }), 4U);
  EXPECT_EQ(fine([&](Exception* x) { return FM_ExprEnv_FileID(environment.get(), x); }), 5U);
  EXPECT_NE(Registry::currentEnvironmentCallback()(nullptr), 0);
}

TEST_F(FmExprEnv, EvaluatesThroughTheHostsCalculations) {
  Registry::instance().setEvaluator([](const orlocal::host::Environment&, std::u16string_view, auto& result) {
    result.setNumber(2);
    return ErrorCode{0};
  });
  const orlocal::host::testing::ExprEnv environment(fine([](Exception* x) { return FM_ExprEnv_Constructor1(x); }));
  const auto result = data();
  EXPECT_EQ(
      fine([&](Exception* x) { return FM_ExprEnv_Evaluate(environment.get(), text(u"1 + 1").get(), result.get(), x); }),
      0);
  EXPECT_EQ(textOf(result), u"2");
  EXPECT_EQ(codeOf([&](Exception* x) { FM_ExprEnv_Evaluate(environment.get(), nullptr, result.get(), x); }), 2);
}

TEST_F(FmExprEnv, FailsWhenTheCalculationThrows) {
  Registry::instance().setEvaluator(
      [](const orlocal::host::Environment&, std::u16string_view, auto&) -> ErrorCode { throw std::bad_alloc(); });
  const orlocal::host::testing::ExprEnv environment(fine([](Exception* x) { return FM_ExprEnv_Constructor1(x); }));
  EXPECT_EQ(codeOf([&](Exception* x) { FM_ExprEnv_Evaluate(environment.get(), text(u"1").get(), data().get(), x); }),
            1);
}

TEST_F(FmExprEnv, QueuesScriptsWithTheirParameter) {
  const auto file = text(u"Agenda");
  const auto script = text(u"Refresh");
  const auto parameter = textData(u"changed");
  EXPECT_EQ(Registry::startScriptCallback()(file.get(), script.get(), 3, parameter.get()), 0);
  EXPECT_EQ(Registry::startScriptCallback()(file.get(), script.get(), 0, nullptr), 0);
  EXPECT_NE(Registry::startScriptCallback()(nullptr, script.get(), 0, nullptr), 0);
  const auto starts = Registry::instance().takeScriptStarts();
  ASSERT_EQ(starts.size(), 2U);
  EXPECT_EQ(starts[0].file, u"Agenda");
  EXPECT_EQ(starts[0].parameter->asText(), u"changed");
  EXPECT_FALSE(starts[1].parameter);
}

}  // namespace
}  // namespace fmx
