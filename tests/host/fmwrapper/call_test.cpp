#include "host/fmwrapper/call.h"

#include <stdexcept>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/host/fm_api.h"

namespace orlocal::host {
namespace {

/// Answers with the number of its arguments, or fails in the way that its ID names.
fmx::ErrorCode sample(std::int16_t id, const fmx::ExprEnv* environment, const fmx::DataVect* arguments,
                      fmx::Data* result) {
  if (id == 2) { return 17; }
  if (id == 3) { throw std::runtime_error("the calendar is away"); }
  if (id == 4) { throw 4; }
  if (id == 5) { return 0; }
  fmx::Exception x;
  fmx::FixPt* number = fmx::FM_FixPt_Constructor1(0, 16, &x);
  const auto count = id == 6 ? fmx::FM_ExprEnv_FileID(environment, &x) : fmx::FM_DataVect_Size(arguments, &x);
  fmx::FM_FixPt_AssignInt64(number, static_cast<std::int64_t>(count), &x);
  fmx::FM_Data_SetAsNumber(result, number, fmx::kNumber, &x);
  fmx::FM_FixPt_Delete(number, &x);
  return 0;
}

RegisteredFunction registered(std::int16_t id, std::int16_t minArgs, std::int16_t maxArgs) {
  return {.key = {1, id},
          .name = u"Test_Sample",
          .prototype = {},
          .description = {},
          .minArgs = minArgs,
          .maxArgs = maxArgs,
          .flags = 0,
          .function = sample};
}

std::vector<Value> values(std::size_t count) { return std::vector<Value>(count, Value::ofText(u"x")); }

TEST(CallFunction, PassesArgumentsAndGivesTheResult) {
  const Result<Value> result = callFunction(registered(1, 0, 3), values(2));
  ASSERT_TRUE(result);
  EXPECT_EQ(result->type(), fmx::kNumber);
  EXPECT_EQ(result->utf8(), "2");
}

TEST(CallFunction, GivesAnEmptyResultWhenNoneIsSet) {
  const Result<Value> result = callFunction(registered(5, 0, 0), {});
  ASSERT_TRUE(result);
  EXPECT_TRUE(result->isEmpty());
}

TEST(CallFunction, HoldsTheCountAgainstTheRegistration) {
  EXPECT_EQ(callFunction(registered(1, 2, 4), values(1)).error().message, "Test_Sample takes 2 to 4 values, not 1.");
  EXPECT_EQ(callFunction(registered(1, 2, 4), values(5)).error().message, "Test_Sample takes 2 to 4 values, not 5.");
  EXPECT_EQ(callFunction(registered(1, 1, 1), values(0)).error().message, "Test_Sample takes 1 value, not 0.");
  EXPECT_EQ(callFunction(registered(1, 2, -1), values(1)).error().message,
            "Test_Sample takes at least 2 values, not 1.");
  EXPECT_EQ(callFunction(registered(1, 1, 1), values(0)).error().code, ErrorCode::kInvalid);
}

TEST(CallFunction, AllowsAnyNumberWithoutAMaximum) {
  EXPECT_EQ(callFunction(registered(1, 0, -1), values(500))->utf8(), "500");
}

TEST(CallFunction, ReportsAnErrorCode) {
  EXPECT_EQ(callFunction(registered(2, 0, 0), {}).error().message, "Test_Sample answered the error 17.");
  EXPECT_EQ(callFunction(registered(2, 0, 0), {}).error().code, ErrorCode::kRefused);
}

TEST(CallFunction, ReportsAnExceptionWithItsText) {
  EXPECT_EQ(callFunction(registered(3, 0, 0), {}).error().message,
            "Test_Sample failed with an exception: the calendar is away");
  EXPECT_EQ(callFunction(registered(3, 0, 0), {}).error().code, ErrorCode::kIo);
}

TEST(CallFunction, ReportsAnExceptionOfAnyKind) {
  EXPECT_EQ(callFunction(registered(4, 0, 0), {}).error().message,
            "Test_Sample failed with an exception of an unknown kind.");
}

TEST(CallFunction, PassesTheEnvironment) {
  EXPECT_EQ(callFunction(registered(6, 0, 0), {}, {.sessionId = 1, .fileId = 23})->utf8(), "23");
}

}  // namespace
}  // namespace orlocal::host
