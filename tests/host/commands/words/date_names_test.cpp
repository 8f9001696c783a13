#include "host/commands/words/date_names.h"

#include <gtest/gtest.h>

#include "host/commands/command_line/child_process.h"
#include "host/commands/store_command_fixture.h"

namespace orlocal::host {
namespace {

TEST(NamesOfDates, AreEnglishOrGerman) {
  const store::LocalDay day(2026, 3, 2);
  EXPECT_EQ(DateNames("en").longDay(day), "Monday, 2 March 2026");
  EXPECT_EQ(DateNames("de").longDay(day), "Montag, 2. März 2026");
  EXPECT_EQ(DateNames("en").shortDay(day), "Mon 2 Mar 2026");
  EXPECT_EQ(DateNames("de").shortDay(day), "Mo 2. Mär 2026");
  EXPECT_EQ(DateNames("de_CH").longDay(day), "Montag, 2. März 2026");
}

TEST(NamesOfDates, AreEnglishInLanguagesThatWeDoNotWriteIn) {
  for (const char* language : {"fr", "", "C", "POSIX", "deutsch"}) {
    EXPECT_EQ(DateNames(language).longDay(store::LocalDay(2026, 11, 8)), "Sunday, 8 November 2026") << language;
  }
}

TEST(NamesOfDates, GoThroughTheWeekAndTheYear) {
  const DateNames names("en");
  std::string weekdays, months;
  for (int day = 1; day <= 7; ++day) { weekdays += names.weekday(store::LocalDay(2026, 11, day)) + " "; }
  for (int month = 1; month <= 12; ++month) { months += names.month(month) + " "; }
  EXPECT_EQ(weekdays, "Sunday Monday Tuesday Wednesday Thursday Friday Saturday ");
  EXPECT_EQ(months, "January February March April May June July August September October November December ");
}

class DatesOfTheProgram : public StoreCommand {};

TEST_F(DatesOfTheProgram, AreInTheUsersLanguage) {
  imported(calendar("Work", event("a", "Lunch", "DTSTART:20261103T120000Z\r\nDTEND:20261103T130000Z\r\n")));
  const auto shownIn = [](const std::string& language) {
    const auto result = runProgram({"/usr/bin/env", "LC_ALL=" + language, ORLOCAL_PROGRAM, "agenda"});
    return result ? result->output : std::string();
  };
  EXPECT_THAT(shownIn("de_DE.UTF-8"), testing::StartsWith("Dienstag, 3. November 2026\n"));
  EXPECT_THAT(shownIn("C.UTF-8"), testing::StartsWith("Tuesday, 3 November 2026\n"));
  EXPECT_THAT(shownIn("it_IT.UTF-8"), testing::StartsWith("Tuesday, 3 November 2026\n"));
}

}  // namespace
}  // namespace orlocal::host
