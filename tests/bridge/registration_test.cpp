#include "bridge/registration.h"

#include "bridge/bridge_fixture.h"
#include "bridge/function_table.h"
#include "bridge/script_steps.h"

namespace orlocal {
namespace {

class FunctionTable : public BridgeTest {
 protected:
  void startUpOnHost(std::int16_t version) {
    m_record.extnVersion = version;
    send(fmx::kCallStartUp);
  }
  void addAllStrings() {
    for (const auto& entry : kFunctions) {
      const std::u16string number = utf16FromUtf8(std::to_string(entry.id));
      addString(entry.id, u"Orlo_F" + number + u"( x )");
      addString(entry.id + 200, u"words " + number + u" | text");
    }
  }
};

struct Row {
  int id, minArgs, maxArgs;
  fmx::ExternalFunction function;
};

TEST_F(FunctionTable, HasTheseRowsInThisOrder) {
  const Row rows[] = {{151, 0, 1, &Orlo_Version},          {152, 1, 1, &Orlo_GetItemCountForType},
                      {153, 2, 2, &Orlo_OpenItemAt},       {154, 2, 3, &Orlo_OpenItemWithUID},
                      {155, 2, 3, &Orlo_GetProperty},      {156, 4, 4, &Orlo_EventsFetch},
                      {157, 3, 3, &Orlo_RemindersFetch},   {158, 1, 1, &Orlo_CalOpenCalendarWithTitle},
                      {159, 3, 3, &Orlo_SetProperty},      {160, 0, 1, &Orlo_GetLastError},
                      {161, 1, 2, &Orlo_SaveItem},         {162, 7, 7, &Orlo_AddRecurrence},
                      {163, 6, 6, &Orlo_AddAlarm},         {164, 2, 2, &Orlo_RemoveAlarm},
                      {165, 0, 0, &Orlo_RemoveRecurrence}, {166, 1, 1, &Orlo_NewItem},
                      {167, 2, 4, &Orlo_RemoveItem},       {168, 1, 1, &Orlo_RemoveAllAlarmsFrom}};
  startUpOnHost(62);
  ASSERT_EQ(host.functionsEx.size(), std::size(rows));
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    EXPECT_EQ(host.functionsEx[i].id, rows[i].id);
    EXPECT_EQ(host.functionsEx[i].minArgs, rows[i].minArgs) << rows[i].id;
    EXPECT_EQ(host.functionsEx[i].maxArgs, rows[i].maxArgs) << rows[i].id;
    EXPECT_EQ(host.functionsEx[i].function, rows[i].function) << rows[i].id;
  }
}

TEST_F(FunctionTable, IsRegisteredUnderOurIdWithEveryFlag) {
  startUpOnHost(62);
  for (const auto& made : host.functionsEx) {
    EXPECT_EQ(made.pluginId, "Orlo");
    EXPECT_EQ(made.flags, 0xFF01U);
  }
  for (const auto& made : host.steps) {
    EXPECT_EQ(made.pluginId, "Orlo");
    EXPECT_EQ(made.flags, 0xFF01U);
  }
}

class HostVersion : public FunctionTable, public testing::WithParamInterface<std::int16_t> {};

TEST_P(HostVersion, DecidesOnDescriptionsAndSteps) {
  addAllStrings();
  startUpOnHost(GetParam());
  const bool describes = GetParam() >= 56;
  const bool hasSteps = GetParam() >= 57;
  EXPECT_EQ(host.functions.size(), describes ? 0U : std::size(kFunctions));
  EXPECT_EQ(host.functionsEx.size(), describes ? std::size(kFunctions) : 0U);
  EXPECT_EQ(host.steps.size(), hasSteps ? std::size(kFunctions) : 0U);
}

INSTANTIATE_TEST_SUITE_P(Versions, HostVersion, testing::Values(50, 53, 54, 55, 56, 57, 62, 255));

TEST_F(FunctionTable, GivesOldHostsNameAndPrototypeOnly) {
  addAllStrings();
  startUpOnHost(55);
  const auto& made = host.functions[2];
  EXPECT_EQ(made.id, 153);
  EXPECT_EQ(made.name, "Orlo_F153");
  EXPECT_EQ(made.prototype, "Orlo_F153( x )");
  EXPECT_EQ(made.minArgs, 2);
  EXPECT_EQ(made.maxArgs, 2);
  EXPECT_EQ(made.flags, 0xFF01U);
  EXPECT_EQ(made.function, &Orlo_OpenItemAt);
}

TEST_F(FunctionTable, GivesNewHostsADescriptionAndAStep) {
  addAllStrings();
  startUpOnHost(57);
  const auto& made = host.functionsEx[2];
  EXPECT_EQ(made.name, "Orlo_F153");
  EXPECT_EQ(made.prototype, "Orlo_F153( x )");
  EXPECT_EQ(made.description, "words 153 | text");
  const auto& step = host.steps[2];
  EXPECT_EQ(step.id, 153);
  EXPECT_EQ(step.name, "Orlo_F153");
  EXPECT_EQ(step.description, "words 153 | text");
  EXPECT_EQ(step.xml, scriptStepDefinition(153));
  EXPECT_EQ(step.function, &Orlo_OpenItemAt);
}

TEST_F(FunctionTable, RegistersEachStepRightAfterItsFunction) {
  host.isRecording = true;
  RegisterFunction(151, 0, 1, &Orlo_Version);
  RegisterFunction(152, 1, 1, &Orlo_GetItemCountForType);
  std::vector<std::string> order;
  for (const auto& call : host.calls) {
    if (call.starts_with("Register")) { order.push_back(call); }
  }
  EXPECT_EQ(order, (std::vector<std::string>{"RegisterExternalFunctionEx 151", "RegisterScriptStep 151",
                                             "RegisterExternalFunctionEx 152", "RegisterScriptStep 152"}));
}

TEST_F(FunctionTable, IsRegisteredWithEmptyTextsWhenStringsAreMissing) {
  startUpOnHost(62);
  ASSERT_EQ(host.functionsEx.size(), std::size(kFunctions));
  EXPECT_EQ(host.functionsEx[0].name, "");
  EXPECT_EQ(host.functionsEx[0].prototype, "");
  EXPECT_EQ(host.functionsEx[0].description, "");
}

}  // namespace
}  // namespace orlocal
