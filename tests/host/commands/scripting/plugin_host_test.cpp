#include "host/commands/scripting/plugin_host.h"

#include <gmock/gmock.h>

#include "host/commands/program_fixture.h"
#include "host/fmwrapper/registry.h"

namespace orlocal::host {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class PluginFileTest : public ProgramTest {};

TEST_F(PluginFileTest, IsTheNamedOne) {
  GlobalOptions options;
  options.plugin = write("mine.fmx", "");
  EXPECT_EQ(pluginFile(options, program).value(), *options.plugin);
}

TEST_F(PluginFileTest, IsTheOneBesideTheProgram) {
  const std::string beside = write("Orlocal.fmx", "");
  EXPECT_EQ(pluginFile({}, (folder / "orlocal").string()).value(), beside);
}

TEST_F(PluginFileTest, IsSoughtWhereItWasInstalledWithTheProgram) {
  const auto places = pluginPlaces("/opt/orlocal/bin/orlocal");
  ASSERT_EQ(places.size(), 3U);
  EXPECT_EQ(places[0], "/opt/orlocal/bin/Orlocal.fmx");
  EXPECT_THAT(places[1].string(), AllOf(StartsWith("/opt/orlocal/lib"), EndsWith("/orlocal/Orlocal.fmx")));
}

TEST_F(PluginFileTest, IsSoughtWhereAServerKeepsIt) {
  EXPECT_EQ(pluginPlaces("/usr/bin/orlocal").back(),
            "/opt/FileMaker/FileMaker Server/Database Server/Extensions/Orlocal.fmx");
}

TEST_F(PluginFileTest, IsMissedWithTheNamedPath) {
  GlobalOptions options;
  options.plugin = "/no/such.fmx";
  EXPECT_THAT(pluginFile(options, program).error().message, HasSubstr("/no/such.fmx"));
}

/// A function of a made-up plug-in, which gives its argument back.
class PluginFunctionsTest : public ::testing::Test {
 protected:
  static constexpr RegistrationKey kKey{0x54657374, 1};

  PluginFunctionsTest() {
    RegisteredFunction function;
    function.key = kKey;
    function.name = u"Test_Fail";
    function.prototype = u"Test_Fail( {text} )";
    function.maxArgs = 1;
    function.function = [](std::int16_t, const fmx::ExprEnv*, const fmx::DataVect*, fmx::Data*) -> fmx::ErrorCode {
      throw std::runtime_error("by the test");
    };
    Registry::instance().registerFunction(function);
  }
  ~PluginFunctionsTest() override { Registry::instance().unregisterFunction(kKey); }

  PluginFunctions functions;
};

TEST_F(PluginFunctionsTest, AreThoseThatAreRegistered) {
  ASSERT_EQ(functions.signatures().size(), 1U);
  const calc::Signature signature = functions.signatures().front();
  EXPECT_EQ(signature.name, "Test_Fail");
  EXPECT_EQ(signature.prototype, "Test_Fail( {text} )");
  EXPECT_EQ(signature.minimum, 0);
  EXPECT_EQ(signature.maximum, 1);
}

TEST_F(PluginFunctionsTest, FailWithTheReasonWhenAnExceptionLeavesThem) {
  const auto result = functions.call("Test_Fail", {});
  ASSERT_FALSE(result);
  EXPECT_THAT(result.error().message, HasSubstr("Test_Fail"));
}

TEST_F(PluginFunctionsTest, AreGoneOnceTheyAreNoLongerRegistered) {
  Registry::instance().unregisterFunction(kKey);
  EXPECT_TRUE(functions.signatures().empty());
  EXPECT_FALSE(functions.call("Test_Fail", {}));
}

class WorkbenchTest : public ProgramTest {
 protected:
  WorkbenchTest() {
    options.plugin = std::string(kNoPlugin);
    bench = std::move(*Workbench::open(context, Workbench::Need::kIfThere));
  }

  Streams streams{in, out, err};
  GlobalOptions options;
  CommandContext context{options, streams, program};
  std::unique_ptr<Workbench> bench;
};

TEST_F(WorkbenchTest, EvaluatesForThePlugin) {
  bench->evaluate("Let ( $$a = 5 ; \"\" )");
  Value result;
  EXPECT_EQ(Registry::instance().evaluate({}, u"$$a + 1", result), 0);
  EXPECT_EQ(result.utf8(), "6");
}

TEST_F(WorkbenchTest, AnswersAPluginsFaultyCalculationWithAnError) {
  Value result;
  EXPECT_NE(Registry::instance().evaluate({}, u"1 +", result), 0);
}

TEST_F(WorkbenchTest, EvaluatesNoLongerOnceItIsGone) {
  bench.reset();
  Value result;
  EXPECT_NE(Registry::instance().evaluate({}, u"1", result), 0);
}

TEST_F(WorkbenchTest, GoesOnWithoutAPluginThatIsNotThere) {
  bench.reset();
  options.plugin.reset();
  context.programFile = (folder / "orlocal").string();
  ASSERT_TRUE(Workbench::open(context, Workbench::Need::kIfThere));
  EXPECT_THAT(err.str(), HasSubstr("going on without one"));
}

TEST_F(WorkbenchTest, IsOneAtATime) {
  const auto second = Workbench::open(context, Workbench::Need::kIfThere);
  ASSERT_FALSE(second);
  EXPECT_THAT(second.error().message, HasSubstr("loaded in this process already"));
  bench.reset();
  EXPECT_TRUE(Workbench::open(context, Workbench::Need::kIfThere));
}

TEST_F(WorkbenchTest, DoesNotGoOnWithoutAPluginThatWasNamed) {
  bench.reset();
  options.plugin = "/no/such.fmx";
  EXPECT_FALSE(Workbench::open(context, Workbench::Need::kIfThere));
}

}  // namespace
}  // namespace orlocal::host
