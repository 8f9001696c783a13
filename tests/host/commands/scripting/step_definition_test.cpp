#include "host/commands/scripting/step_definition.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orlocal::host {
namespace {

using ::testing::HasSubstr;

TEST(StepDefinitionTest, ReadsParametersInOrder) {
  const auto parameters = readStepDefinition(
      R"(<pluginstep><parameter type="target" label="Results" showinline="true"/>)"
      R"(<parameter type="calc" showinline="true" label="Title" datatype="text" ID="0"/></pluginstep>)");
  ASSERT_TRUE(parameters);
  ASSERT_EQ(parameters->size(), 2U);
  EXPECT_EQ((*parameters)[0].type, "target");
  EXPECT_EQ((*parameters)[0].id, "");
  EXPECT_EQ((*parameters)[1].label, "Title");
  EXPECT_EQ((*parameters)[1].datatype, "text");
  EXPECT_EQ((*parameters)[1].id, "0");
  EXPECT_TRUE((*parameters)[1].shownInline);
}

TEST(StepDefinitionTest, ReadsTheChoicesOfAList) {
  const auto parameters = readStepDefinition(
      R"(<pluginstep><parameter type="list" label="Type" default="0" ID="0"><value ID="0">Please Select</value>)"
      R"(<value ID="1">Text &amp; more</value></parameter></pluginstep>)");
  ASSERT_TRUE(parameters);
  const StepParameter& list = parameters->front();
  EXPECT_EQ(list.standard, "0");
  EXPECT_FALSE(list.shownInline);
  ASSERT_EQ(list.choices.size(), 2U);
  EXPECT_EQ(list.choices[1].id, "1");
  EXPECT_EQ(list.choices[1].text, "Text & more");
}

TEST(StepDefinitionTest, KnowsElementsAndAttributesInAnyCase) {
  const auto parameters =
      readStepDefinition(R"(<PluginStep><Parameter Type="calc" ShowInline="TRUE" Label="A" id="3"/></PluginStep>)");
  ASSERT_TRUE(parameters);
  EXPECT_EQ(parameters->front().id, "3");
  EXPECT_TRUE(parameters->front().shownInline);
}

TEST(StepDefinitionTest, SaysWhatIsNoXml) {
  EXPECT_THAT(readStepDefinition("<pluginstep>").error().message, HasSubstr("no XML"));
  EXPECT_THAT(readStepDefinition("").error().message, HasSubstr("no XML"));
}

TEST(StepDefinitionTest, ReadsWhatIsNestedVeryDeeply) {
  std::string xml = "<pluginstep><parameter type=\"calc\" id=\"1\"/>";
  constexpr int kLevels = 500'000;
  for (int i = 0; i < kLevels; ++i) { xml += "<a>"; }
  for (int i = 0; i < kLevels; ++i) { xml += "</a>"; }
  const auto parameters = readStepDefinition(xml + "</pluginstep>");
  ASSERT_TRUE(parameters);
  EXPECT_EQ(parameters->size(), 1U);
}

TEST(StepDefinitionTest, SaysWhatIsNoStep) {
  EXPECT_THAT(readStepDefinition("<step/>").error().message, HasSubstr("begins with step"));
}

}  // namespace
}  // namespace orlocal::host
