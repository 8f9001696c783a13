#include "bridge/script_steps.h"

#include "bridge/bridge_fixture.h"
#include "bridge/function_table.h"
#include "bridge/test_data.h"

namespace orlocal {
namespace {

class ScriptStep : public BridgeTest {
 protected:
  std::string definition(std::int32_t id) {
    HostText text;
    text.assign("old");
    GetXMLDefinition(id, text);
    return textOf(text.get()).value_or("");
  }
};

TEST_F(ScriptStep, IsDefinedByOneLineOfXml) {
  const auto rows = numberedRows("script_steps.txt");
  ASSERT_EQ(rows.size(), std::size(kFunctions));
  for (const auto& [id, xml] : rows) { EXPECT_EQ(definition(id), xml); }
}

TEST_F(ScriptStep, ExistsForEveryFunction) {
  for (const auto& entry : kFunctions) { EXPECT_NE(definition(entry.id), "") << entry.id; }
}

TEST_F(ScriptStep, IsEmptyForAnyOtherId) {
  for (const int id : {0, 148, 149, 150, 169, 170, -1}) { EXPECT_EQ(definition(id), "") << id; }
}

TEST_F(ScriptStep, IsGivenInUtf8AndAnEmptyOneInTheSystemsEncoding) {
  constexpr const char* kTargetOnly =
      R"(<pluginstep><parameter type="target" label="Results" showinline="true"/></pluginstep>)";
  HostText text;
  host.isRecording = true;
  GetXMLDefinition(165, text);
  GetXMLDefinition(169, text);
  EXPECT_EQ(host.calls, (std::vector<std::string>{std::string("FM_Text_Assign ") + kTargetOnly + " encoding 1",
                                                  "FM_Text_Assign  encoding 0"}));
}

}  // namespace
}  // namespace orlocal
