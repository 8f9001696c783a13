#include <fstream>
#include <sstream>

#include <gmock/gmock.h>

#include "store/export.h"
#include "store/import.h"
#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using Texts = std::vector<std::string>;

/// What NAME.txt says about NAME.ics: lines "occurs TIME TITLE" of the year 2026 in Berlin, "warning LINE: TEXT",
/// "refused LINE: TEXT" and "exports LINE"; "#" begins a comment.
struct Expected {
  Texts occurs, warnings, refused, exports;
};

std::string path(const std::string& name) { return std::string(ORLOCAL_TEST_DATA "/data/import/") + name; }

Expected expectedOf(const std::string& name) {
  std::ifstream in(path(name + ".txt"));
  Expected made;
  for (std::string line; std::getline(in, line);) {
    const auto blank = line.find(' ');
    const std::string word = line.substr(0, blank);
    if (blank == std::string::npos || word == "#") { continue; }
    const std::string rest = line.substr(blank + 1);
    if (word == "occurs") { made.occurs.push_back(rest); }
    if (word == "warning") { made.warnings.push_back(rest); }
    if (word == "refused") { made.refused.push_back(rest); }
    if (word == "exports") { made.exports.push_back(rest); }
  }
  return made;
}

Texts textsOf(const std::vector<Problem>& problems) {
  Texts texts;
  for (const Problem& problem : problems) { texts.push_back(std::to_string(problem.line) + ": " + problem.message); }
  return texts;
}

class ImportedFile : public StoreTest, public testing::WithParamInterface<const char*> {
 protected:
  std::string exported() {
    std::string text;
    for (const CalendarKind kind : {CalendarKind::kEvents, CalendarKind::kReminders}) {
      EXPECT_TRUE(exportCalendars(*store, *store->calendars(kind), [&](std::string_view piece) -> Status {
        text += piece;
        return {};
      }));
    }
    return text;
  }
  Texts shownIn2026() { return listed(at("2026-01-01 00:00"), at("2027-01-01 00:00")); }
  void useAnotherStore() {
    file = folder / "another.db";
    store = opened();
  }
};

TEST_P(ImportedFile, ShowsWhatItMeansAndComesBackTheSame) {
  const Expected expected = expectedOf(GetParam());
  const auto report = importCalendarFile(*store, path(std::string(GetParam()) + ".ics"));
  ASSERT_TRUE(report) << report.error().message;
  EXPECT_EQ(textsOf(report->warnings), expected.warnings);
  EXPECT_EQ(textsOf(report->problems), expected.refused);
  EXPECT_EQ(shownIn2026(), expected.occurs);

  const auto again = importCalendarFile(*store, path(std::string(GetParam()) + ".ics"));
  ASSERT_TRUE(again);
  EXPECT_EQ(again->unchanged, report->added);
  EXPECT_EQ(again->added + again->updated, 0U);

  const std::string text = exported();
  for (const std::string& line : expected.exports) { EXPECT_THAT(text, testing::HasSubstr("\r\n" + line + "\r\n")); }
  const auto back = importCalendarText(*store, text, "back.ics");
  ASSERT_TRUE(back);
  EXPECT_EQ(back->unchanged, report->added);
  useAnotherStore();
  ASSERT_TRUE(importCalendarText(*store, text, "back.ics"));
  EXPECT_EQ(shownIn2026(), expected.occurs);
  EXPECT_EQ(exported(), text);
}

INSTANTIATE_TEST_SUITE_P(Files, ImportedFile,
                         testing::Values("blank_folds", "dense", "exception_rules", "other_calendars",
                                         "series_with_recurrence_id", "this_and_future", "unknown_parts"));

class LaterChanges : public ImportedFile {
 protected:
  static std::string series(const std::string& more = "") {
    return "BEGIN:VCALENDAR\nBEGIN:VEVENT\nUID:1\nDTSTART;TZID=Europe/Berlin:20261102T090000\nSUMMARY:Review\n"
           "RRULE:FREQ=DAILY;COUNT=4\nEND:VEVENT\n" +
           more + "END:VCALENDAR\n";
  }
  static std::string later(const std::string& day) {
    return "BEGIN:VEVENT\nUID:1\nRECURRENCE-ID;RANGE=THISANDFUTURE;TZID=Europe/Berlin:202611" + day +
           "T090000\nDTSTART;TZID=Europe/Berlin:202611" + day + "T100000\nSUMMARY:Later\nEND:VEVENT\n";
  }
  void import(const std::string& text) { ASSERT_TRUE(importCalendarText(*store, text, "test.ics")); }
};

TEST_F(LaterChanges, GoWithTheirSeriesWhenANewerFileHasThemNoMore) {
  import(series(later("04")));
  EXPECT_EQ(shownIn2026(), (Texts{"2026-11-02 09:00 Review", "2026-11-03 09:00 Review", "2026-11-04 10:00 Later",
                                  "2026-11-05 10:00 Later"}));
  import(series());
  EXPECT_EQ(shownIn2026(), (Texts{"2026-11-02 09:00 Review", "2026-11-03 09:00 Review", "2026-11-04 09:00 Review",
                                  "2026-11-05 09:00 Review"}));
}

TEST_F(LaterChanges, MoveWithANewerFile) {
  import(series(later("04")));
  import(series(later("05")));
  EXPECT_EQ(shownIn2026(), (Texts{"2026-11-02 09:00 Review", "2026-11-03 09:00 Review", "2026-11-04 09:00 Review",
                                  "2026-11-05 10:00 Later"}));
}

TEST_F(LaterChanges, CanBeChangedOnTheirOwn) {
  import(series(later("04")));
  const auto found = occurrences(at("2026-11-05 00:00"), at("2026-11-06 00:00"));
  ASSERT_EQ(found.size(), 1U);
  Item edited = read(found[0].item);
  edited.start = berlin("2026-11-05 12:00");
  edited.end = berlin("2026-11-05 13:00");
  const auto status = saveEvent(*store, edited, found[0], Span::kThis);
  ASSERT_TRUE(status) << status.error().message;
  EXPECT_EQ(shownIn2026(), (Texts{"2026-11-02 09:00 Review", "2026-11-03 09:00 Review", "2026-11-04 10:00 Later",
                                  "2026-11-05 12:00 Later"}));
}

class ExceptionRules : public LaterChanges {
 protected:
  /// Every third day is left out, from the first on.
  Item kept() {
    import(
        "BEGIN:VCALENDAR\nBEGIN:VEVENT\nUID:1\nDTSTART;TZID=Europe/Berlin:20261102T090000\n"
        "DTEND;TZID=Europe/Berlin:20261102T100000\nSUMMARY:Review\nRRULE:FREQ=DAILY;COUNT=12\n"
        "EXRULE:FREQ=DAILY;INTERVAL=3\nEND:VEVENT\nEND:VCALENDAR\n");
    return read(occurrences(std::nullopt, std::nullopt).front().item);
  }
  void saveFrom(const std::string& day, const std::string& start) {
    const auto found = occurrences(at("2026-11-" + day + " 00:00"), at("2026-11-" + day + " 23:00"));
    ASSERT_EQ(found.size(), 1U);
    Item edited = read(found[0].item);
    edited.start = berlin("2026-11-" + day + " " + start);
    edited.end = edited.start;
    edited.end->local += 3600;
    const auto status = saveEvent(*store, edited, found[0], Span::kFuture);
    ASSERT_TRUE(status) << status.error().message;
  }
};

TEST_F(ExceptionRules, TakeOutTheSameDaysAfterASplit) {
  kept();
  const Texts before = shownIn2026();
  ASSERT_EQ(before.size(), 8U);
  saveFrom("07", "09:00");
  EXPECT_EQ(shownIn2026(), before);
  const std::string text = exported();
  useAnotherStore();
  import(text);
  EXPECT_EQ(shownIn2026(), before);
}

TEST_F(ExceptionRules, MoveWithTheirHalf) {
  kept();
  saveFrom("07", "15:00");
  EXPECT_EQ(shownIn2026(), (Texts{"2026-11-03 09:00 Review", "2026-11-04 09:00 Review", "2026-11-06 09:00 Review",
                                  "2026-11-07 15:00 Review", "2026-11-09 15:00 Review", "2026-11-10 15:00 Review",
                                  "2026-11-12 15:00 Review", "2026-11-13 15:00 Review"}));
}

TEST_F(ExceptionRules, StayWhenTheEventIsSavedForAnotherReason) {
  Item item = kept();
  item.title = "Other";
  const auto first = store->firstOccurrence(item);
  item.start = berlin("2026-11-03 09:00");
  item.end = berlin("2026-11-03 10:00");
  ASSERT_TRUE(saveEvent(*store, item, **first, Span::kFuture));
  EXPECT_EQ(shownIn2026().size(), 8U);
  EXPECT_THAT(exported(), testing::HasSubstr("EXRULE:FREQ=DAILY;INTERVAL=3\r\n"));
}

class OtherCalendars : public LaterChanges {};

TEST_F(OtherCalendars, AreFoundInEveryMonthThatTheyMeet) {
  import(
      "BEGIN:VCALENDAR\nBEGIN:VEVENT\nUID:1\nDTSTART;VALUE=DATE:20130210\nSUMMARY:New year\n"
      "RRULE:RSCALE=CHINESE;FREQ=YEARLY\nEND:VEVENT\nEND:VCALENDAR\n");
  EXPECT_EQ(listed(at("2028-01-20 00:00"), at("2028-01-27 00:00")), Texts{"2028-01-26 00:00 New year"});
}

class DenseSeries : public LaterChanges {};

TEST_F(DenseSeries, AreRefusedWhenTheyAreSaved) {
  Item item = event("tick", berlin("2026-01-01 00:00"), berlin("2026-01-01 00:00"));
  item.end->local += 1;
  item.recurrence.rules = {rule(RecurrenceRule::Frequency::kSecondly)};
  const auto refused = saveEvent(*store, item, std::nullopt, Span::kThis);
  ASSERT_FALSE(refused);
  EXPECT_THAT(refused.error().message, testing::HasSubstr("more than 50,000 occurrences in a month"));
}

TEST_F(DenseSeries, LeaveOneThatComesEveryMinuteReadable) {
  Item item = event("tick", berlin("2026-01-01 00:00"), berlin("2026-01-01 00:01"));
  item.recurrence.rules = {rule(RecurrenceRule::Frequency::kMinutely)};
  saved(item);
  EXPECT_EQ(occurrences(at("2026-01-01 00:00"), at("2026-02-01 00:00")).size(), 31U * 24 * 60);
}

TEST_F(DenseSeries, AreNamedWithTheRemedyByTheQueryThatMeetsThem) {
  Item item = event("tick", berlin("2026-01-01 00:00"), berlin("2026-01-01 00:01"));
  item.uid = "u1";
  item.recurrence.rules = {rule(RecurrenceRule::Frequency::kMinutely)};
  item = saved(item);
  StoreOptions few = options();
  few.occurrenceBudget = 100;
  store = *CalendarStore::open(few);
  const auto refused = store->occurrences(range(at("2026-01-01 00:00"), at("2026-02-01 00:00")));
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().code, ErrorCode::kBudget);
  EXPECT_EQ(refused.error().message,
            "The event \"tick\" of 2026-01-01 in the calendar \"Calendar\" (UID u1) has most of the more than 100 "
            "occurrences in the range; remove it with Orlo_RemoveItem( \"event\" ; \"" +
                item.identifier + "\" ; \"\" ; \"all\" ), or ask for a shorter range or without its calendar.");
}

}  // namespace
}  // namespace orlocal::store
