#include "backend/keywords.h"

#include <gtest/gtest.h>

namespace orlocal {
namespace {

TEST(ItemKindNamed, KnowsTheTypeKeywords) {
  EXPECT_EQ(itemKindNamed("calendar"), ItemKind::kCalendar);
  EXPECT_EQ(itemKindNamed("reminderlist"), ItemKind::kReminderList);
  EXPECT_EQ(itemKindNamed("event"), ItemKind::kEvent);
  EXPECT_EQ(itemKindNamed("task"), ItemKind::kReminder);
  EXPECT_EQ(itemKindNamed("reminder"), ItemKind::kReminder);
  EXPECT_EQ(itemKindNamed("attendee"), ItemKind::kAttendee);
  EXPECT_EQ(itemKindNamed("alarm"), ItemKind::kAlarm);
}

TEST(ItemKindNamed, ComparesByEqualityAfterLowerCasing) {
  EXPECT_EQ(itemKindNamed("ReminderList"), ItemKind::kReminderList);
  for (const char* word : {"", "events", "event ", "rem"}) { EXPECT_EQ(itemKindNamed(word), std::nullopt) << word; }
  EXPECT_EQ(itemKindNamed(std::nullopt), std::nullopt);
}

TEST(SpanNamed, KnowsThreeWordsWithoutCase) {
  EXPECT_EQ(spanNamed("this"), SpanWord::kThis);
  EXPECT_EQ(spanNamed("FUTURE"), SpanWord::kFuture);
  EXPECT_EQ(spanNamed("All"), SpanWord::kAll);
  EXPECT_EQ(spanNamed("weekly"), std::nullopt);
  EXPECT_EQ(spanNamed(std::nullopt), std::nullopt);
}

TEST(AlarmActionNamed, KnowsFourWordsWithoutCase) {
  EXPECT_EQ(alarmActionNamed("Display"), AlarmAction::kDisplay);
  EXPECT_EQ(alarmActionNamed("email"), AlarmAction::kEmail);
  EXPECT_EQ(alarmActionNamed("sound"), AlarmAction::kSound);
  EXPECT_EQ(alarmActionNamed("procedure"), AlarmAction::kProcedure);
  EXPECT_EQ(alarmActionNamed("shout"), std::nullopt);
  EXPECT_EQ(alarmActionNamed(std::nullopt), std::nullopt);
}

TEST(AlarmActionWord, IsTheWordThatNamesTheAction) {
  for (const auto action : {AlarmAction::kDisplay, AlarmAction::kEmail, AlarmAction::kSound, AlarmAction::kProcedure}) {
    EXPECT_EQ(alarmActionNamed(std::string(alarmActionWord(action))), action);
  }
}

TEST(RecurrenceFrequencyNamed, NumbersTheFourTypes) {
  EXPECT_EQ(recurrenceFrequencyNamed("Daily"), 0);
  EXPECT_EQ(recurrenceFrequencyNamed("WEEKLY"), 1);
  EXPECT_EQ(recurrenceFrequencyNamed("monthly"), 2);
  EXPECT_EQ(recurrenceFrequencyNamed("yearly"), 3);
  EXPECT_EQ(recurrenceFrequencyNamed("hourly"), std::nullopt);
  EXPECT_EQ(recurrenceFrequencyNamed(std::nullopt), std::nullopt);
}

TEST(RecurrenceTypeWord, IsEmptyForAnUnknownNumber) {
  EXPECT_EQ(recurrenceTypeWord(0), "daily");
  EXPECT_EQ(recurrenceTypeWord(3), "yearly");
  EXPECT_EQ(recurrenceTypeWord(4), "");
  EXPECT_EQ(recurrenceTypeWord(-1), "");
}

TEST(PriorityNamed, NumbersTheWordsAndTakesNoWordForNone) {
  EXPECT_EQ(priorityNamed(std::nullopt), 0);
  EXPECT_EQ(priorityNamed("none"), 0);
  EXPECT_EQ(priorityNamed("High"), 1);
  EXPECT_EQ(priorityNamed("medium"), 5);
  EXPECT_EQ(priorityNamed("LOW"), 9);
  EXPECT_EQ(priorityNamed("urgent"), std::nullopt);
  EXPECT_EQ(priorityNamed("5"), std::nullopt);
}

TEST(Lowercased, LeavesAbsentTextAbsent) {
  EXPECT_EQ(lowercased("Title"), "title");
  EXPECT_EQ(lowercased(std::nullopt), std::nullopt);
}

}  // namespace
}  // namespace orlocal
