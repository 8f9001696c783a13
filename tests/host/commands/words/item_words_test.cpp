#include "host/commands/words/item_words.h"

#include <gtest/gtest.h>

#include "host/commands/words/day_range.h"

namespace orlocal::host {
namespace {

using std::chrono::seconds;

TEST(ItemStatus, IsWhatItsFileSays) {
  store::Item item;
  EXPECT_EQ(statusOf(item), "");
  item.extra = "CLASS:PRIVATE\nSTATUS:Tentative\n";
  EXPECT_EQ(statusOf(item), "tentative");
  EXPECT_TRUE(isTentative(item));
  item.extra = "BEGIN:X-PART\nSTATUS:CANCELLED\nEND:X-PART\n";
  EXPECT_FALSE(isCancelled(item));
  item.completed = store::Moment();
  EXPECT_EQ(statusOf(item), "completed");
}

struct LengthCase {
  std::int64_t seconds;
  const char* words;
};

TEST(LengthWords, UseTheUnitsThatFit) {
  constexpr LengthCase kCases[] = {
      {0, "0 seconds"},  {60, "1 minute"},     {-900, "15 minutes"}, {5'400, "1 hour 30 minutes"},
      {86'400, "1 day"}, {864'000, "10 days"}, {604'800, "1 week"},  {90'061, "1 day 1 hour 1 minute 1 second"}};
  for (const LengthCase& each : kCases) { EXPECT_EQ(lengthWords(seconds(each.seconds)), each.words); }
}

TEST(AlarmWords, SayWhenAndHow) {
  const store::Zone viewer = *store::Zone::named("Europe/Berlin");
  store::Alarm alarm;
  alarm.trigger = store::AlarmOffset{seconds(-900), false};
  EXPECT_EQ(alarmWords(alarm, store::ItemKind::kEvent, viewer), "15 minutes before the start");
  alarm.trigger = store::AlarmOffset{seconds(0), false};
  EXPECT_EQ(alarmWords(alarm, store::ItemKind::kEvent, viewer), "at the start");
  alarm.trigger = store::AlarmOffset{seconds(3'600), true};
  EXPECT_EQ(alarmWords(alarm, store::ItemKind::kEvent, viewer), "1 hour after the end");
  alarm.trigger = store::AlarmOffset{seconds(0), true};
  EXPECT_EQ(alarmWords(alarm, store::ItemKind::kReminder, viewer), "when it is due");
  alarm.trigger = viewer.toMoment(store::LocalTime(2026, 11, 2, 9, 0, 0));
  alarm.action = store::Alarm::Action::kEmail;
  alarm.emailAddress = "ada@example.org";
  EXPECT_EQ(alarmWords(alarm, store::ItemKind::kEvent, viewer),
            "on Mon 2 Nov 2026 at 09:00, by e-mail to ada@example.org");
}

TEST(PersonWords, NameTheAddressToo) {
  store::Attendee attendee;
  attendee.address = "MAILTO:ada@example.org";
  EXPECT_EQ(personWords(attendee), "ada@example.org");
  attendee.name = "Ada";
  EXPECT_EQ(personWords(attendee), "Ada <ada@example.org>");
}

struct RangeCase {
  const char* words;
  store::LocalDay first, last;
};

TEST(DayRanges, AreDaysWeekdaysAndMonths) {
  const store::LocalDay today(2026, 11, 4);  // a Wednesday
  const RangeCase kCases[] = {
      {"today", today, today},
      {"wednesday", today, today},
      {"Thu", today + 1, today + 1},
      {"tuesday", today + 6, today + 6},
      {"2026-11-02", store::LocalDay(2026, 11, 2), store::LocalDay(2026, 11, 2)},
      {"2026-11", store::LocalDay(2026, 11, 1), store::LocalDay(2026, 11, 30)},
      {"2028-02", store::LocalDay(2028, 2, 1), store::LocalDay(2028, 2, 29)},
  };
  for (const RangeCase& each : kCases) {
    EXPECT_EQ(daysFromWords(each.words, today), (DayRange{each.first, each.last})) << each.words;
  }
  for (const char* words : {"", "2026-13", "wed nesday", "2026", "w"}) {
    EXPECT_FALSE(daysFromWords(words, today)) << words;
  }
}

}  // namespace
}  // namespace orlocal::host
