#include "bridge/plugin_error.h"

#include <set>

#include "bridge/bridge_fixture.h"
#include "bridge/error_messages.h"
#include "bridge/test_data.h"

namespace orlocal {
namespace {

std::string messageAfter(std::int32_t code, const OptionalText& extended = std::nullopt) {
  orlo_PluginError object;
  object.setError(code, 0, extended);
  return object.getError();
}

TEST(ErrorObject, SaysTheMessageOfEveryCode) {
  const auto rows = numberedRows("error_messages.txt");
  ASSERT_EQ(rows.size(), std::size(kErrorMessages));
  for (const auto& [code, text] : rows) { EXPECT_EQ(messageAfter(code), text) << code; }
}

TEST(ErrorObject, HasOneMessageACode) {
  std::set<std::int64_t> codes;
  for (const auto& row : kErrorMessages) { EXPECT_TRUE(codes.insert(row.code).second) << row.code; }
}

TEST(ErrorObject, SaysUndefinedErrorOfAnyOtherCode) {
  for (const std::int32_t code : {-1, -2, -5, -6, -7, -8, -9, 1, 8999, 9080, 9997, 9998, 9999, 10000}) {
    EXPECT_EQ(messageAfter(code), "Undefined Error.") << code;
  }
}

TEST(ErrorObject, SaysSuccessInTwoSpellings) {
  orlo_PluginError object;
  EXPECT_EQ(object.getError(), "Success");
  object.setError(0, 0, std::nullopt);
  EXPECT_EQ(object.getError(), "SUCCESS");
}

TEST(ErrorObject, AppendsTheExtendedTextAfterABlank) {
  EXPECT_EQ(messageAfter(-400, "NSRangeException"), "System Error NSRangeException");
  EXPECT_EQ(messageAfter(-400, ""), "System Error ");
}

TEST(ErrorObject, IsClearAfterClearing) {
  orlo_PluginError object;
  object.setError(9001, 5, "more");
  object.clearError();
  EXPECT_EQ(object.getError(), "Success");
  EXPECT_EQ(object.getErrorNumber(), "0");
}

TEST(ErrorObject, ForgetsTheExtendedTextOfTheErrorBefore) {
  orlo_PluginError object;
  object.setError(9001, 0, "more");
  object.setError(9002, 0, std::nullopt);
  EXPECT_EQ(object.getError(), "Item index out of bounds.");
}

TEST(ErrorObject, GivesItsNumberInDigits) {
  orlo_PluginError object;
  object.setError(-4, 0, std::nullopt);
  EXPECT_EQ(object.getErrorNumber(), "-4");
}

class ErrorState : public BridgeTest {};

TEST_F(ErrorState, IsClearedByTheFreeFunction) {
  error->setError(9001, 0, std::nullopt);
  ClearError();
  EXPECT_EQ(error->getError(), "Success");
}

TEST_F(ErrorState, IsNotThereToClearBeforeStartUp) {
  error = nullptr;
  EXPECT_NO_THROW(ClearError());
}

}  // namespace
}  // namespace orlocal
