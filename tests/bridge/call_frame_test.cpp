#include "bridge/call_frame.h"

#include <new>

#include "backend/legacy/ical_functions.h"
#include "bridge/bridge_fixture.h"
#include "fakes/host_call.h"
#include "platform/exception.h"

namespace orlocal {
namespace {

using fakes::HostCall;

class TellingLegacyFunctions : public iCalFunctions {
 public:
  int resets = 0;
  std::int64_t codeWhenReset = -1;

  std::int32_t resetLastErrorString() override {
    ++resets;
    codeWhenReset = g_llasterror;
    return 0;
  }
};

class Frame : public BridgeTest {
 protected:
  ~Frame() noexcept override = default;

  template <class Work>
  std::string run(const Work& work) {
    {
      CallFrame frame(call.arguments(), call.result());
      EXPECT_EQ(frame.run(work), 0);
    }
    return call.shown();
  }

  HostCall call;
};

TEST_F(Frame, HandsBackANumber) {
  EXPECT_EQ(run([] { return CallFrame::Outcome(-7); }), "number -7");
}

TEST_F(Frame, LeavesTheResultAloneWhenThereIsNothingToSay) {
  EXPECT_EQ(run([] { return kNothing; }), "empty");
}

TEST_F(Frame, HandsBackTheSentinelBeforeThereIsAnErrorObject) {
  error = nullptr;
  EXPECT_EQ(run([] {
              g_llasterror = 9002;
              return kDone;
            }),
            "text !!ERROR!!");
}

TEST_F(Frame, HandsBackTheSentinelForAnyCode) {
  EXPECT_EQ(run([] {
              g_llasterror = 9002;
              return kDone;
            }),
            "text !!ERROR!!");
  EXPECT_EQ(error->getError(), "Item index out of bounds.");
  EXPECT_EQ(g_llasterror, 9002);
}

TEST_F(Frame, HandsBackTheSentinelInPlaceOfAResultAlreadyWritten) {
  EXPECT_EQ(run([this] {
              AssignStringResult("fine", call.result());
              g_llasterror = -4;
              return kNothing;
            }),
            "text !!ERROR!!");
}

TEST_F(Frame, KeepsTheCodeInThirtyTwoBits) {
  run([] {
    g_llasterror = (std::int64_t{1} << 32) + 9001;
    return kDone;
  });
  EXPECT_EQ(error->getErrorNumber(), "9001");
}

TEST_F(Frame, ClearsTheFailureBefore) {
  g_llasterror = 9001;
  error->setError(9001, 0, std::nullopt);
  EXPECT_EQ(run([] { return kDone; }), "number 0");
  EXPECT_EQ(g_llasterror, 0);
  EXPECT_EQ(error->getError(), "Success");
}

TEST_F(Frame, ClearsTheCodeBeforeItReadsAndOnceMoreBeforeTheWork) {
  g_llasterror = 9001;
  error->setError(9001, 0, std::nullopt);
  CallFrame frame(call.arguments(), call.result());
  EXPECT_EQ(g_llasterror, 0);
  EXPECT_EQ(error->getErrorNumber(), "9001");
  g_llasterror = 5;
  frame.run([] {
    EXPECT_EQ(g_llasterror, 0);
    EXPECT_EQ(error->getErrorNumber(), "0");
    return kDone;
  });
}

TEST_F(Frame, ResetsTheLegacyBackEndsErrorText) {
  TellingLegacyFunctions legacy;
  g_sharedFunctions = &legacy;
  g_llasterror = 9001;
  run([] { return kDone; });
  EXPECT_EQ(legacy.resets, 1);
  EXPECT_EQ(legacy.codeWhenReset, 0);
}

TEST_F(Frame, MakesItsWorkingObjectsFirstAndReleasesThemLast) {
  host.isRecording = true;
  {
    CallFrame frame(call.arguments(), call.result());
    frame.run([] { return kDone; });
  }
  host.isRecording = false;
  const std::vector<std::string> expected = {
      "FM_FixPt_Constructor1 0 16", "FM_Text_Constructor1", "FM_DataVect_Size", "FM_FixPt_AssignInt 0",
      "FM_Data_SetAsNumber type 2", "FM_Text_Delete",       "FM_FixPt_Delete"};
  EXPECT_EQ(host.calls, expected);
}

TEST_F(Frame, AssignsTheSentinelAsPlainText) {
  CallFrame frame(call.arguments(), call.result());
  host.isRecording = true;
  frame.run([] {
    g_llasterror = -4;
    return kDone;
  });
  host.isRecording = false;
  EXPECT_EQ(host.calls, (std::vector<std::string>{"FM_Text_Assign !!ERROR!! encoding 0", "FM_Data_GetLocale",
                                                  "FM_Data_SetAsText type 1"}));
}

TEST_F(Frame, LetsTheHostsOutOfMemoryLeave) {
  host.failingCall = "FM_FixPt_AssignInt";
  host.failureCode = 1;
  EXPECT_THROW(run([] { return kDone; }), std::bad_alloc);
}

TEST_F(Frame, LetsTheHostsOtherFailuresLeave) {
  host.failingCall = "FM_DataVect_AtAsText";
  host.failureCode = 2;
  call.add("x");
  CallFrame frame(call.arguments(), call.result());
  try {
    frame.text(0);
    FAIL() << "no exception left";
  } catch (const std::bad_alloc&) { FAIL() << "taken for out of memory"; } catch (const std::exception&) {
  }
}

TEST_F(Frame, ClearsTheLastFailureBeforeItCountsTheArguments) {
  TellingLegacyFunctions legacy;
  g_sharedFunctions = &legacy;
  g_llasterror = 9001;
  host.failingCall = "FM_DataVect_Size";
  host.failureCode = 2;
  EXPECT_THROW(CallFrame(call.arguments(), call.result()), std::exception);
  EXPECT_EQ(g_llasterror, 0);
  EXPECT_EQ(legacy.resets, 1);
}

TEST_F(Frame, LetsAFailureToReleaseAnObjectLeave) {
  for (const char* release : {"FM_Text_Delete", "FM_FixPt_Delete"}) {
    host.failingCall = release;
    host.failureCode = 1;
    EXPECT_THROW(run([] { return kDone; }), std::bad_alloc) << release;
    host.failingCall.clear();
    EXPECT_EQ(call.shown(), "number 0");
  }
}

TEST_F(Frame, LetsTheFirstFailureLeaveWhenReleasingFailsToo) {
  host.failingCall = "FM_Text_Delete";
  host.failureCode = 1;
  EXPECT_THROW(run([]() -> CallFrame::Outcome { throw Exception("NSRangeException", "beyond bounds"); }), Exception);
}

TEST_F(Frame, LetsPlatformExceptionsLeave) {
  EXPECT_THROW(run([]() -> CallFrame::Outcome { throw Exception("NSRangeException", "beyond bounds"); }), Exception);
}

}  // namespace
}  // namespace orlocal
