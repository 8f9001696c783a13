#include "bridge/bridge_fixture.h"
#include "bridge/function_table.h"
#include "fakes/host_call.h"

namespace orlocal {
namespace {

using fakes::callWith;
using fakes::HostCall;

class Version : public BridgeTest {};

TEST_F(Version, IsTheBareNumberWithoutAnArgument) { EXPECT_EQ(callWith(&Orlo_Version), "text 3.0.0.1"); }

TEST_F(Version, IsTheBareNumberForShortInAnyCase) {
  for (const char* form : {"short", "Short", "SHORT", "sHoRt"}) {
    EXPECT_EQ(callWith(&Orlo_Version, form), "text 3.0.0.1") << form;
  }
}

TEST_F(Version, IsTheLongFormForAnythingElse) {
  for (const char* form : {"long", "", "short ", " short", "1", "2", "Please Select"}) {
    EXPECT_EQ(callWith(&Orlo_Version, form), "text Orlocal 3.0.0.1") << form;
  }
  EXPECT_EQ(callWith(&Orlo_Version, 1), "text Orlocal 3.0.0.1");
}

TEST_F(Version, ClearsTheErrorState) {
  g_llasterror = 9001;
  error->setError(9001, 0, std::nullopt);
  callWith(&Orlo_Version);
  EXPECT_EQ(g_llasterror, 0);
  EXPECT_EQ(error->getError(), "Success");
}

TEST_F(Version, WorksBeforeStartUp) {
  error = nullptr;
  EXPECT_EQ(callWith(&Orlo_Version), "text 3.0.0.1");
}

TEST_F(Version, LeavesTheArgumentAsItWas) {
  HostCall call;
  call.add("short");
  call.call(&Orlo_Version);
  EXPECT_EQ(textOf(HostArguments(call.arguments()).textAt(0)), "short");
}

TEST_F(Version, HasTheSystemsLocaleWithoutAnArgument) {
  HostCall call;
  host.isRecording = true;
  call.call(&Orlo_Version);
  host.isRecording = false;
  EXPECT_EQ(host.calls,
            (std::vector<std::string>{"FM_DataVect_Size", "FM_Text_Constructor1", "FM_Text_Assign 3.0.0.1 encoding 0",
                                      "FM_Locale_Constructor1 1", "FM_Data_SetAsText type 1", "FM_Text_Delete"}));
}

TEST_F(Version, HasTheArgumentsLocaleWithOne) {
  HostCall call;
  call.add("short");
  host.isRecording = true;
  call.call(&Orlo_Version);
  host.isRecording = false;
  const std::vector<std::string> end = {"FM_DataVect_At 0", "FM_Data_GetLocale", "FM_Data_SetAsText type 1",
                                        "FM_Text_Delete"};
  ASSERT_GE(host.calls.size(), end.size());
  EXPECT_EQ(std::vector<std::string>(host.calls.end() - static_cast<long>(end.size()), host.calls.end()), end);
}

}  // namespace
}  // namespace orlocal
