#include "accounts/sync/merge.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "accounts/sync/field_lines.h"
#include "accounts/sync/server_text.h"
#include "store/icalendar/item_text.h"
#include "store/time/time_text.h"

namespace orlocal::accounts {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

std::string calendar(const std::string& components) {
  return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Another//Client//EN\r\nX-SERVER:yes\r\n" + components +
         "END:VCALENDAR\r\n";
}

std::string component(const std::string& lines) {
  return "BEGIN:VEVENT\r\nUID:one\r\nDTSTAMP:20261101T000000Z\r\n" + lines + "END:VEVENT\r\n";
}

std::string text(const std::string& lines) { return calendar(component(lines)); }

const std::string kTimes = "DTSTART;TZID=Europe/Berlin:20261102T090000\r\nDTEND;TZID=Europe/Berlin:20261102T100000\r\n";
const std::string kMoved = "DTSTART;TZID=Europe/Berlin:20261102T110000\r\nDTEND;TZID=Europe/Berlin:20261102T120000\r\n";
const std::string kDaily = "RRULE:FREQ=DAILY;COUNT=5\r\n";

ItemState state(const std::string& content) {
  const ServerText read = ServerText::read(content, "test");
  EXPECT_TRUE(read.item()) << read.trouble().value_or("");
  return {content, read.item().value_or(store::WholeItem())};
}

MergedItem merge(const std::string& base, const std::string& theirs, const std::string& mine) {
  const ItemState before = state(base);
  return merged(&before, state(theirs), state(mine).item);
}

TEST(Merge, OfWhatNobodyChangedIsTheServersText) {
  const std::string content = text(kTimes + "SUMMARY:Lunch\r\nX-UNKNOWN;A=b:c\r\n");
  const MergedItem result = merge(content, content, content);
  EXPECT_FALSE(result.differs);
  EXPECT_EQ(result.text, content);
  EXPECT_THAT(result.conflicts, IsEmpty());
}

TEST(Merge, KeepsTheServersLinesBesideOurs) {
  const std::string server = "X-UNKNOWN;A=b:c\r\nCATEGORIES:a,b\r\n";
  const MergedItem result =
      merge(text(kTimes + "SUMMARY:Lunch\r\n" + server), text(kTimes + "SUMMARY:Lunch\r\n" + server),
            text(kTimes + "SUMMARY:Dinner\r\n" + server));
  EXPECT_TRUE(result.differs);
  EXPECT_THAT(result.text, HasSubstr("SUMMARY:Dinner\r\n"));
  EXPECT_THAT(result.text, HasSubstr("X-UNKNOWN;A=b:c\r\n"));
  EXPECT_THAT(result.text, HasSubstr("X-SERVER:yes\r\n"));
  EXPECT_THAT(result.text, HasSubstr("PRODID:-//Another//Client//EN\r\n"));
}

TEST(Merge, KeepsTheServersSpellingOfTheOtherLinesOfAField) {
  const std::string organizer = "ORGANIZER;CN=\"Ada\":MAILTO:ada@example.org\r\n";
  const std::string tom = "ATTENDEE;CN=\"Tom\":MAILTO:tom@example.org\r\n";
  const std::string alarm = "BEGIN:VALARM\r\nTRIGGER:-PT60M\r\nACTION:DISPLAY\r\nEND:VALARM\r\n";
  const std::string more = "BEGIN:VALARM\r\nACTION:DISPLAY\r\nTRIGGER:-PT5M\r\nEND:VALARM\r\n";
  const auto invitation = [&](const std::string& answer) {
    return text(kTimes + organizer + tom + "ATTENDEE;PARTSTAT=" + answer + ":MAILTO:grace@example.org\r\n" + alarm);
  };
  const std::string asked = invitation("NEEDS-ACTION");
  const MergedItem answered = merge(asked, asked, invitation("ACCEPTED"));
  EXPECT_THAT(answered.text, HasSubstr(organizer + tom));
  EXPECT_THAT(answered.text, HasSubstr("PARTSTAT=ACCEPTED"));
  EXPECT_THAT(answered.text, Not(HasSubstr("PARTSTAT=NEEDS-ACTION")));
  const MergedItem rung = merge(text(kTimes + alarm), text(kTimes + alarm), text(kTimes + alarm + more));
  EXPECT_THAT(rung.text, HasSubstr(alarm));
  EXPECT_THAT(rung.text, HasSubstr("TRIGGER:-PT5M"));
}

TEST(Merge, TakesEachSidesFields) {
  const MergedItem result =
      merge(text(kTimes + "SUMMARY:Lunch\r\n"), text(kTimes + "SUMMARY:Lunch\r\nLOCATION:Here\r\n"),
            text(kTimes + "SUMMARY:Dinner\r\n"));
  EXPECT_TRUE(result.differs);
  EXPECT_THAT(result.conflicts, IsEmpty());
  EXPECT_THAT(result.text, HasSubstr("SUMMARY:Dinner\r\n"));
  EXPECT_THAT(result.text, HasSubstr("LOCATION:Here\r\n"));
}

TEST(Merge, LeavesAFieldThatBothChangedToTheServer) {
  const MergedItem result = merge(text(kTimes + "SUMMARY:Lunch\r\n"), text(kTimes + "SUMMARY:Supper\r\n"),
                                  text(kTimes + "SUMMARY:Dinner\r\nLOCATION:Here\r\n"));
  EXPECT_THAT(result.conflicts, ElementsAre("title"));
  EXPECT_THAT(result.text, HasSubstr("SUMMARY:Supper\r\n"));
  EXPECT_THAT(result.text, HasSubstr("LOCATION:Here\r\n"));
}

TEST(Merge, OfTheSameChangeOnBothSidesIsNoConflict) {
  const MergedItem result = merge(text(kTimes + "SUMMARY:Lunch\r\n"), text(kTimes + "SUMMARY:Dinner\r\n"),
                                  text(kTimes + "SUMMARY:Dinner\r\n"));
  EXPECT_FALSE(result.differs);
  EXPECT_THAT(result.conflicts, IsEmpty());
}

TEST(Merge, KnowsWhatWasSentWithoutAnAnswer) {
  const ItemState base = state(text(kTimes + "SUMMARY:Lunch\r\n"));
  const ItemState sent = state(text(kTimes + "SUMMARY:Dinner\r\n"));
  const MergedItem result = merged(&base, sent, state(text(kTimes + "SUMMARY:Late dinner\r\n")).item, &sent.item);
  EXPECT_THAT(result.conflicts, IsEmpty());
  EXPECT_THAT(result.text, HasSubstr("SUMMARY:Late dinner\r\n"));
}

TEST(Merge, WithoutABaseAddsWhatTheServerLacks) {
  const ItemState theirs = state(text(kTimes + "SUMMARY:Lunch\r\n"));
  const MergedItem result = merged(nullptr, theirs, state(text(kTimes + "SUMMARY:Dinner\r\nLOCATION:Here\r\n")).item);
  EXPECT_THAT(result.conflicts, ElementsAre("title"));
  EXPECT_THAT(result.text, HasSubstr("LOCATION:Here\r\n"));
  EXPECT_THAT(result.text, HasSubstr("SUMMARY:Lunch\r\n"));
}

TEST(Merge, RemovesWhatWasRemovedHere) {
  const std::string alarm = "BEGIN:VALARM\r\nACTION:DISPLAY\r\nDESCRIPTION:x\r\nTRIGGER:-PT5M\r\nEND:VALARM\r\n";
  const MergedItem result =
      merge(text(kTimes + "LOCATION:Here\r\n" + alarm), text(kTimes + "LOCATION:Here\r\n" + alarm), text(kTimes));
  EXPECT_THAT(result.text, Not(HasSubstr("LOCATION")));
  EXPECT_THAT(result.text, Not(HasSubstr("VALARM")));
}

TEST(Merge, BothSidesExceptionsCount) {
  const MergedItem result =
      merge(text(kTimes + kDaily), text(kTimes + kDaily + "EXDATE;TZID=Europe/Berlin:20261103T090000\r\n"),
            text(kTimes + kDaily + "EXDATE;TZID=Europe/Berlin:20261104T090000\r\n"));
  EXPECT_THAT(result.conflicts, IsEmpty());
  EXPECT_EQ(state(result.text).item.main.recurrence.excluded.size(), 2u);
}

TEST(Merge, ADayThatComesBackHereAndAnotherThatGoesThereBothDo) {
  const std::string one = "EXDATE;TZID=Europe/Berlin:20261103T090000\r\n";
  const MergedItem result = merge(
      text(kTimes + kDaily + one),
      text(kTimes + kDaily + "EXDATE;TZID=Europe/Berlin:20261103T090000,20261104T090000\r\n"), text(kTimes + kDaily));
  EXPECT_THAT(result.conflicts, IsEmpty());
  const auto excluded = state(result.text).item.main.recurrence.excluded;
  ASSERT_EQ(excluded.size(), 1u);
  EXPECT_EQ(excluded.front().local, store::parseTime("20261104T090000")->local);
}

TEST(Merge, ASeriesThatMovedHereAndLostADayThereIsAConflict) {
  const MergedItem result = merge(text(kTimes + kDaily + "SUMMARY:a\r\n"),
                                  text(kTimes + kDaily + "SUMMARY:a\r\nEXDATE;TZID=Europe/Berlin:20261103T090000\r\n"),
                                  text(kMoved + kDaily + "SUMMARY:b\r\n"));
  EXPECT_THAT(result.conflicts, ElementsAre("time"));
  EXPECT_THAT(result.text, HasSubstr("20261103T090000"));
  EXPECT_THAT(result.text, HasSubstr("SUMMARY:b"));
  EXPECT_THAT(result.text, Not(HasSubstr("T110000")));
}

TEST(Merge, ASeriesThatMovedHereTakesItsExceptionsAlong) {
  const std::string exception = "EXDATE;TZID=Europe/Berlin:20261103T090000\r\n";
  const MergedItem result =
      merge(text(kTimes + kDaily + exception), text(kTimes + kDaily + exception + "LOCATION:x\r\n"),
            text(kMoved + kDaily + "EXDATE;TZID=Europe/Berlin:20261103T110000\r\n"));
  EXPECT_THAT(result.conflicts, IsEmpty());
  EXPECT_THAT(result.text, HasSubstr("20261103T110000"));
  EXPECT_THAT(result.text, Not(HasSubstr("20261103T090000")));
  EXPECT_THAT(result.text, HasSubstr("LOCATION:x"));
}

const std::string kChanged =
    "RECURRENCE-ID;TZID=Europe/Berlin:20261103T090000\r\nDTSTART;TZID=Europe/Berlin:20261103T150000\r\n"
    "DTEND;TZID=Europe/Berlin:20261103T160000\r\n";

TEST(Merge, ChangedOccurrencesOfBothSidesStay) {
  const std::string other =
      "RECURRENCE-ID;TZID=Europe/Berlin:20261104T090000\r\nDTSTART;TZID=Europe/Berlin:20261104T150000\r\n"
      "DTEND;TZID=Europe/Berlin:20261104T160000\r\n";
  const MergedItem result = merge(text(kTimes + kDaily), calendar(component(kTimes + kDaily) + component(kChanged)),
                                  calendar(component(kTimes + kDaily) + component(other)));
  EXPECT_THAT(result.conflicts, IsEmpty());
  EXPECT_EQ(state(result.text).item.changed.size(), 2u);
}

TEST(Merge, FieldsOfAChangedOccurrenceAreMergedToo) {
  const std::string series = component(kTimes + kDaily);
  const MergedItem result = merge(calendar(series + component(kChanged + "SUMMARY:a\r\n")),
                                  calendar(series + component(kChanged + "SUMMARY:a\r\nLOCATION:x\r\n")),
                                  calendar(series + component(kChanged + "SUMMARY:b\r\n")));
  EXPECT_THAT(result.conflicts, IsEmpty());
  const ItemState both = state(result.text);
  ASSERT_EQ(both.item.changed.size(), 1u);
  EXPECT_EQ(both.item.changed.front().title, "b");
  EXPECT_EQ(both.item.changed.front().location, "x");
}

TEST(Merge, ChangedOccurrenceThatBothChangedNamesItsDay) {
  const std::string series = component(kTimes + kDaily);
  const MergedItem result = merge(calendar(series + component(kChanged + "SUMMARY:a\r\n")),
                                  calendar(series + component(kChanged + "SUMMARY:b\r\n")),
                                  calendar(series + component(kChanged + "SUMMARY:c\r\n")));
  EXPECT_THAT(result.conflicts, ElementsAre("title of 20261103T090000"));
}

TEST(Merge, ChangedOccurrenceThatWasTakenBackHereGoesThere) {
  const std::string series = component(kTimes + kDaily);
  const std::string both = calendar(series + component(kChanged));
  const MergedItem result = merge(both, both, text(kTimes + kDaily + "EXDATE;TZID=Europe/Berlin:20261103T090000\r\n"));
  EXPECT_TRUE(result.differs);
  EXPECT_THAT(state(result.text).item.changed, IsEmpty());
  EXPECT_EQ(state(result.text).item.main.recurrence.excluded.size(), 1u);
}

const std::string kEnded = "RRULE:FREQ=DAILY;UNTIL=20261104T080000Z\r\n";  // after three of five

/// One side ends the series after its third occurrence; what the other does with the second or fourth.
class MergeOfAnEnd : public testing::TestWithParam<bool> {
 protected:
  static MergedItem mergedWith(const std::string& base, const std::string& ended, const std::string& other) {
    return GetParam() ? merge(base, ended, other) : merge(base, other, ended);
  }
  static std::string occurrence(const std::string& day, const std::string& more) {
    return component("RECURRENCE-ID;TZID=Europe/Berlin:" + day + "T090000\r\nDTSTART;TZID=Europe/Berlin:" + day +
                     "T150000\r\nDTEND;TZID=Europe/Berlin:" + day + "T160000\r\n" + more);
  }
  static std::string exception(const std::string& day) { return "EXDATE;TZID=Europe/Berlin:" + day + "T090000\r\n"; }
};

TEST_P(MergeOfAnEnd, KeepsAnOccurrenceThatWasChangedBeforeIt) {
  const std::string series = component(kTimes + kDaily);
  const MergedItem result = mergedWith(calendar(series), text(kTimes + kEnded + "SUMMARY:a\r\n"),
                                       calendar(series + occurrence("20261103", "LOCATION:x\r\n")));
  EXPECT_THAT(result.conflicts, IsEmpty());
  const ItemState both = state(result.text);
  EXPECT_TRUE(both.item.main.recurrence.rules.front().until);
  EXPECT_FALSE(both.item.main.recurrence.rules.front().count);
  ASSERT_EQ(both.item.changed.size(), 1u);
  EXPECT_EQ(both.item.changed.front().location, "x");
  EXPECT_EQ(both.item.main.title, "a");
}

TEST_P(MergeOfAnEnd, KeepsADayThatWasTakenOutBeforeIt) {
  const MergedItem result = mergedWith(text(kTimes + kDaily + exception("20261105")), text(kTimes + kEnded),
                                       text(kTimes + kDaily + exception("20261105") + exception("20261104")));
  EXPECT_THAT(result.conflicts, IsEmpty());
  const auto series = state(result.text).item.main.recurrence;
  EXPECT_TRUE(series.rules.front().until);
  ASSERT_EQ(series.excluded.size(), 1u);
  EXPECT_EQ(series.excluded.front().local, store::parseTime("20261104T090000")->local);
}

TEST_P(MergeOfAnEnd, ClashesWithAChangeBehindIt) {
  const std::string series = component(kTimes + kDaily);
  EXPECT_THAT(
      mergedWith(calendar(series), text(kTimes + kEnded), calendar(series + occurrence("20261105", ""))).conflicts,
      ElementsAre("time"));
  EXPECT_THAT(
      mergedWith(calendar(series), text(kTimes + kEnded), text(kTimes + kDaily + exception("20261105"))).conflicts,
      ElementsAre("time"));
}

TEST_P(MergeOfAnEnd, TakesWhatLiesBehindItAlong) {
  const std::string late = occurrence("20261105", "LOCATION:late\r\n");
  const std::string series = component(kTimes + kDaily);
  const MergedItem result = mergedWith(calendar(series + late), text(kTimes + kEnded),
                                       calendar(series + late + occurrence("20261103", "LOCATION:x\r\n")));
  EXPECT_THAT(result.conflicts, IsEmpty());
  const ItemState both = state(result.text);
  ASSERT_EQ(both.item.changed.size(), 1u);
  EXPECT_EQ(both.item.changed.front().location, "x");
}

TEST_P(MergeOfAnEnd, ClashesWithAMoveAndWithAnotherRule) {
  const std::string other = calendar(component(kTimes + kDaily) + occurrence("20261103", ""));
  for (const std::string& ended :
       {kMoved + kEnded, kTimes + "RRULE:FREQ=WEEKLY;UNTIL=20261104T080000Z\r\n",
        kTimes + "RRULE:FREQ=DAILY;COUNT=3\r\n", kTimes + kEnded + "RDATE;TZID=Europe/Berlin:20261203T090000\r\n",
        kTimes + "RRULE:FREQ=DAILY;UNTIL=20261104\r\n"}) {
    EXPECT_THAT(mergedWith(text(kTimes + kDaily), text(ended), other).conflicts, ElementsAre("time")) << ended;
  }
}

TEST_P(MergeOfAnEnd, LeavesAnOccurrenceThatOneSideTookBackToADecision) {
  const std::string series = component(kTimes + kDaily);
  const MergedItem result = mergedWith(calendar(series + occurrence("20261103", "LOCATION:x\r\n")),
                                       text(kTimes + kEnded + exception("20261103")),
                                       calendar(series + occurrence("20261103", "LOCATION:y\r\n")));
  EXPECT_THAT(result.conflicts, ElementsAre("removed of 20261103T090000"));
}

INSTANTIATE_TEST_SUITE_P(ThereAndHere, MergeOfAnEnd, testing::Bool());

TEST(Merge, ExplainsTheZonesOfOurTimes) {
  const std::string base = text("DTSTART:20261102T090000Z\r\nDTEND:20261102T100000Z\r\n");
  const MergedItem result = merge(base, base, text(kMoved));
  EXPECT_THAT(result.text, HasSubstr("BEGIN:VTIMEZONE\r\nTZID:Europe/Berlin\r\n"));
  EXPECT_THAT(result.text, HasSubstr("DTSTART;TZID=Europe/Berlin:20261102T110000\r\n"));
}

TEST(Merge, SpellingsOfOneTimeAreNoChange) {
  EXPECT_TRUE(saysTheSame(state(text(kTimes + "SUMMARY:a\\, b\r\n")).item,
                          state(text("SUMMARY:a\\, \r\n b\r\nDTSTART;TZID=\"Europe/Berlin\":20261102T090000\r\n"
                                     "DURATION:PT1H\r\nSEQUENCE:3\r\n"))
                              .item));
  EXPECT_FALSE(saysTheSame(state(text(kTimes)).item, state(text(kMoved)).item));
}

}  // namespace
}  // namespace orlocal::accounts
