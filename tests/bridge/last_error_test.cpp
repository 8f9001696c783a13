#include "backend/eventkit/ical_ek_functions.h"
#include "backend/legacy/ical_functions.h"
#include "bridge/bridge_fixture.h"
#include "bridge/function_table.h"
#include "fakes/host_call.h"

namespace orlocal {
namespace {

using fakes::callWith;

class LegacyFunctionsWithReason : public iCalFunctions {
 public:
  OptionalText reason;
  int resets = 0;
  OptionalText getLastErrorString() const override { return reason; }
  std::int32_t resetLastErrorString() override { return ++resets; }
};

class EKFunctionsWithReason : public iCalEKFunctions {
 public:
  mutable int asked = 0;
  OptionalText getLastErrorString() const override {
    ++asked;
    return "a reason";
  }
};

class LastError : public BridgeTest {
 protected:
  void fail(std::int64_t code) {
    g_llasterror = code;
    error->setError(static_cast<std::int32_t>(code), 0, std::nullopt);
  }
};

TEST_F(LastError, IsSuccessAfterACallThatWorked) {
  EXPECT_EQ(callWith(&Orlo_GetLastError), "text Success");
  EXPECT_EQ(callWith(&Orlo_GetLastError, "number"), "number 0");
}

TEST_F(LastError, IsAnEmptyTextBeforeThereIsAnErrorObject) {
  error = nullptr;
  EXPECT_EQ(callWith(&Orlo_GetLastError), "text");
  EXPECT_EQ(callWith(&Orlo_GetLastError, "number"), "number 0");
}

TEST_F(LastError, IsAMessageOrACode) {
  fail(-4);
  EXPECT_EQ(callWith(&Orlo_GetLastError), "text Invalid Parameter value(s)");
  EXPECT_EQ(callWith(&Orlo_GetLastError, "number"), "number -4");
}

TEST_F(LastError, IsAMessageForTextInAnyCase) {
  fail(9009);
  for (const char* form : {"text", "TEXT", "Text", ""}) {
    EXPECT_EQ(callWith(&Orlo_GetLastError, form), "text Unable to create item.") << form;
  }
}

TEST_F(LastError, IsACodeForEverythingElse) {
  fail(9012);
  for (const char* form : {"Text ", " text", "2", "texts", "Number"}) {
    EXPECT_EQ(callWith(&Orlo_GetLastError, form), "number 9012") << form;
  }
}

TEST_F(LastError, StaysWhenItIsAskedFor) {
  fail(9001);
  callWith(&Orlo_GetLastError);
  callWith(&Orlo_GetLastError, "number");
  EXPECT_EQ(callWith(&Orlo_GetLastError), "text Item not found.");
  EXPECT_EQ(g_llasterror, 9001);
}

TEST_F(LastError, IsTheLegacyBackEndsReasonWhereItHasOne) {
  LegacyFunctionsWithReason legacy;
  g_sharedFunctions = &legacy;
  fail(9999);
  legacy.reason = "Größer als erlaubt. 🗓";
  EXPECT_EQ(callWith(&Orlo_GetLastError), "text Größer als erlaubt. 🗓");
  EXPECT_EQ(callWith(&Orlo_GetLastError, "number"), "number 9999");
  EXPECT_EQ(legacy.resets, 0);
}

TEST_F(LastError, IsTheMessageWhereTheLegacyBackEndHasNoReason) {
  LegacyFunctionsWithReason legacy;
  g_sharedFunctions = &legacy;
  fail(9013);
  EXPECT_EQ(callWith(&Orlo_GetLastError), "text Unable to locate Calendar by UID.");
}

TEST_F(LastError, IsUndefinedForACaughtExceptionOnEventKit) {
  g_bUseEK = true;
  fail(9999);
  EXPECT_EQ(callWith(&Orlo_GetLastError), "text Undefined Error.");
}

TEST_F(LastError, IsNeverTheReasonThatEventKitKeeps) {
  EKFunctionsWithReason eventKitFunctions;
  g_bUseEK = true;
  g_sharedEKFunctions = &eventKitFunctions;
  for (const std::int64_t code : {9999, 9998, 9013, -4}) {
    fail(code);
    EXPECT_EQ(callWith(&Orlo_GetLastError), "text " + m_error.getError());
  }
  EXPECT_EQ(eventKitFunctions.asked, 0);
}

TEST_F(LastError, IsTheLegacyBackEndsReasonWhenThatIsEmptyToo) {
  LegacyFunctionsWithReason legacy;
  g_sharedFunctions = &legacy;
  legacy.reason = "";
  fail(9998);
  EXPECT_EQ(callWith(&Orlo_GetLastError), "text");
}

TEST_F(LastError, IsStillTheLegacyBackEndsReasonAfterTheVersionWasAskedFor) {
  LegacyFunctionsWithReason legacy;
  g_sharedFunctions = &legacy;
  legacy.reason = "The calendar allows no changes.";
  fail(9998);
  callWith(&Orlo_Version);
  EXPECT_EQ(legacy.resets, 0);
  EXPECT_EQ(callWith(&Orlo_GetLastError), "text The calendar allows no changes.");
  EXPECT_EQ(callWith(&Orlo_GetLastError, "number"), "number 0");
}

TEST_F(LastError, GivesTheCodeInThirtyTwoBits) {
  g_llasterror = (std::int64_t{1} << 32) + 12;
  EXPECT_EQ(callWith(&Orlo_GetLastError, "number"), "number 12");
}

TEST_F(LastError, IsAssignedInTheSystemsEncodingWithTheResultsOwnLocale) {
  fail(9001);
  fakes::HostCall call;
  host.isRecording = true;
  call.call(&Orlo_GetLastError);
  host.isRecording = false;
  EXPECT_EQ(host.calls,
            (std::vector<std::string>{"FM_FixPt_Constructor1 0 16", "FM_Text_Constructor1", "FM_DataVect_Size",
                                      "FM_Text_Assign Item not found. encoding 0", "FM_Data_GetLocale",
                                      "FM_Data_SetAsText type 1", "FM_Text_Delete", "FM_FixPt_Delete"}));
}

}  // namespace
}  // namespace orlocal
