#include "backend/current_items.h"

#include <string>

#include <gtest/gtest.h>

#include "backend/property_value.h"

namespace orlocal {
namespace {

class CurrentItems : public testing::Test {
 protected:
  CurrentItems() { g_llasterror = 0; }
  ~CurrentItems() override { g_llasterror = 0; }
};

TEST_F(CurrentItems, CountIndexesFromOne) {
  EXPECT_FALSE(isWithin(0, 2));
  EXPECT_TRUE(isWithin(1, 2));
  EXPECT_TRUE(isWithin(2, 2));
  EXPECT_FALSE(isWithin(3, 2));
  EXPECT_FALSE(isWithin(-1, 2));
  EXPECT_FALSE(isWithin(1, 0));
}

TEST_F(CurrentItems, FindCalendarsLineByLine) {
  const auto find = [](const std::string& title) { return std::make_shared<std::string>(title); };
  const auto found = calendarsTitled<std::string>("Work\rHome\nTeam", find);
  ASSERT_TRUE(found.has_value());
  ASSERT_EQ(found->size(), 3u);
  EXPECT_EQ(*(*found)[0], "Work");
  EXPECT_EQ(*(*found)[1], "Home");
  EXPECT_EQ(*(*found)[2], "Team");
  EXPECT_EQ(g_llasterror, 0);
}

TEST_F(CurrentItems, StopAtTheFirstTitleThatIsNotFound) {
  std::vector<std::string> asked;
  const auto found = calendarsTitled<std::string>("Work\rNone\rHome", [&](const std::string& title) {
    asked.push_back(title);
    return title == "None" ? nullptr : std::make_shared<std::string>(title);
  });
  EXPECT_EQ(found, std::nullopt);
  EXPECT_EQ(asked, (std::vector<std::string>{"Work", "None"}));
  EXPECT_EQ(g_llasterror, kCalendarUidNotFound);
}

TEST_F(CurrentItems, RecordThePlatformsExceptions) {
  OptionalText reason = "an older one";
  const int result =
      catchingExceptions(reason, 7, []() -> int { throw Exception("NSGenericException", "The store has gone."); });
  EXPECT_EQ(result, 7);
  EXPECT_EQ(g_llasterror, 9999);
  EXPECT_EQ(reason, "The store has gone.");
}

TEST_F(CurrentItems, LetOtherExceptionsPass) {
  OptionalText reason;
  EXPECT_THROW(catchingExceptions(reason, 7, []() -> int { throw std::bad_alloc(); }), std::bad_alloc);
  EXPECT_EQ(g_llasterror, 0);
  EXPECT_EQ(reason, std::nullopt);
}

TEST_F(CurrentItems, GiveFailedResultsWithTheirCode) {
  EXPECT_EQ(failWith(kItemNotFound), -1);
  EXPECT_EQ(g_llasterror, 9001);
  EXPECT_EQ(OptionalText(noneWith(kInvalidProperty)), std::nullopt);
  EXPECT_EQ(g_llasterror, 9063);
}

TEST(PropertyValueReading, GivesOnlyTheKindThatIsAskedFor) {
  const Date moment{std::chrono::microseconds{1}};
  EXPECT_EQ(textOf(std::string("x")), "x");
  EXPECT_EQ(textOf(moment), std::nullopt);
  EXPECT_EQ(textOf(std::monostate()), std::nullopt);
  EXPECT_EQ(dateOf(moment), moment);
  EXPECT_EQ(dateOf(std::string("x")), std::nullopt);
  EXPECT_EQ(dateOf(std::monostate()), std::nullopt);
}

}  // namespace
}  // namespace orlocal
