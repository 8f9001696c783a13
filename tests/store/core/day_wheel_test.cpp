#include "store/core/day_wheel.h"

#include <set>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "store/recurrence/recurrence_rule.h"
#include "store/recurrence/rule_text.h"
#include "store/time/time_text.h"

namespace orlocal::store {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

LocalSeconds wallClock(const char* text) { return localSeconds(parseTime(text)->local); }

class DayWheelTest : public testing::Test {
 protected:
  void add(std::uint32_t member, const char* rule, const char* start, const char* last) {
    const LocalSeconds begin = wallClock(start);
    const auto made = CompiledRule::make(*parseRule(rule), begin, false);
    DayWheel::Entry entry;
    entry.firstDay = static_cast<std::int32_t>(dayOf(begin));
    entry.lastDay = static_cast<std::int32_t>(dayOf(wallClock(last)));
    entry.timeOfDay = static_cast<std::int32_t>(made->timeOfDay());
    entry.number = member;
    m_wheel.add(*made->dayPattern(), entry);
  }
  std::multiset<std::uint32_t> between(const char* from, const char* to) {
    std::multiset<std::uint32_t> members;
    m_wheel.visit(wallClock(from), wallClock(to),
                  [&](LocalSeconds, const DayWheel::Entry& entry) { members.insert(entry.number); });
    return members;
  }

  DayWheel m_wheel;
};

TEST_F(DayWheelTest, FindsEachOnItsDays) {
  add(1, "FREQ=WEEKLY;BYDAY=MO,WE", "20261102T090000", "20301231T000000");
  add(2, "FREQ=MONTHLY;BYMONTHDAY=4", "20261104T090000", "20301231T000000");
  add(3, "FREQ=YEARLY", "20261102T090000", "20301231T000000");
  add(4, "FREQ=DAILY", "20261102T090000", "20301231T000000");
  EXPECT_THAT(between("20261102T000000", "20261103T000000"), UnorderedElementsAre(1, 3, 4));
  EXPECT_THAT(between("20261103T000000", "20261104T000000"), UnorderedElementsAre(4));
  EXPECT_THAT(between("20261104T000000", "20261105T000000"), UnorderedElementsAre(1, 2, 4));
  EXPECT_THAT(between("20261102T000000", "20261105T000000"), UnorderedElementsAre(1, 1, 2, 3, 4, 4, 4));
  EXPECT_THAT(between("20281104T000000", "20281105T000000"), UnorderedElementsAre(2, 4));
}

TEST_F(DayWheelTest, LooksAtTheTimeOfDay) {
  add(1, "FREQ=DAILY", "20261102T090000", "20301231T000000");
  add(2, "FREQ=DAILY", "20261102T173000", "20301231T000000");
  add(3, "FREQ=DAILY", "20261102T000000", "20301231T000000");
  EXPECT_THAT(between("20261102T090000", "20261102T090001"), ElementsAre(1));
  EXPECT_THAT(between("20261102T090001", "20261102T173000"), IsEmpty());
  EXPECT_THAT(between("20261102T170000", "20261103T000000"), ElementsAre(2));
  EXPECT_THAT(between("20261102T170000", "20261103T090000"), UnorderedElementsAre(2, 3));
  EXPECT_THAT(between("20261102T235959", "20261103T000000"), IsEmpty());
}

TEST_F(DayWheelTest, LooksAtTheFirstAndTheLastDay) {
  add(1, "FREQ=DAILY", "20261102T090000", "20261104T090000");
  EXPECT_THAT(between("20261001T000000", "20261102T000000"), IsEmpty());
  EXPECT_THAT(between("20261001T000000", "20261201T000000"), ElementsAre(1, 1, 1));
  EXPECT_THAT(between("20261105T000000", "20261201T000000"), IsEmpty());
}

TEST_F(DayWheelTest, TakesMoreAtAnyTime) {
  for (std::uint32_t i = 0; i < 50; ++i) {
    const std::string start = "20261102T" + std::to_string(10 + i * 7 % 13) + "0000";
    add(i, "FREQ=DAILY", start.c_str(), "20301231T000000");
    EXPECT_EQ(between("20261102T000000", "20261103T000000").size(), i + 1);
  }
  EXPECT_EQ(between("20261102T100000", "20261102T110000").size(), 4u);
}

}  // namespace
}  // namespace orlocal::store
