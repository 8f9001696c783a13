#include "store/import.h"

#include <fstream>
#include <string>

#include "store/contacts.h"
#include "store/export.h"
#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

class Import : public StoreTest {
 protected:
  ImportReport import(const std::string& text, const ImportOptions& with = {}) {
    auto report = importCalendarText(*store, text, "test.ics", with);
    EXPECT_TRUE(report) << report.error().message;
    return report.value_or(ImportReport{});
  }
  static std::string exported(CalendarStore& from) {
    std::string text;
    for (const CalendarKind kind : {CalendarKind::kEvents, CalendarKind::kReminders}) {
      const auto calendars = from.calendars(kind).value();
      EXPECT_TRUE(exportCalendars(from, calendars, [&](std::string_view piece) -> Status {
        text += piece;
        return {};
      }));
    }
    return text;
  }
  std::vector<std::string> titles(CalendarKind kind) {
    std::vector<std::string> found;
    const auto calendars = store->calendars(kind).value();
    for (const Calendar& calendar : calendars) { found.push_back(calendar.title); }
    return found;
  }
  static OccurrenceList all(CalendarStore& from) {
    EventQuery query;
    const auto calendars = from.calendars(CalendarKind::kEvents).value();
    for (const Calendar& calendar : calendars) { query.calendars.push_back(calendar.id); }
    return from.occurrences(query).value();
  }
  std::size_t occurrences() { return all(*store).size(); }
};

using Titles = std::vector<std::string>;

std::string calendarText(const std::string& content, const std::string& head = "") {
  return "BEGIN:VCALENDAR\n" + head + content + "END:VCALENDAR\n";
}
std::string eventText(const std::string& uid, const std::string& lines = "") {
  return "BEGIN:VEVENT\nUID:" + uid +
         "\nDTSTART;TZID=Europe/Berlin:20261102T090000\nDTEND;TZID=Europe/Berlin:20261102T100000\n" + lines +
         "END:VEVENT\n";
}
std::string reminderText(const std::string& uid) { return "BEGIN:VTODO\nUID:" + uid + "\nSUMMARY:Milk\nEND:VTODO\n"; }

TEST_F(Import, CountsNewUpdatedUnchangedAndRefused) {
  const auto first = import(calendarText(eventText("1") + eventText("2") + "BEGIN:VEVENT\nUID:3\nEND:VEVENT\n"));
  EXPECT_EQ(first.added, 2U);
  EXPECT_EQ(first.refused, 1U);
  const auto second = import(calendarText(eventText("1") + eventText("2", "SUMMARY:changed\n") + eventText("4")));
  EXPECT_EQ(second.added, 1U);
  EXPECT_EQ(second.updated, 1U);
  EXPECT_EQ(second.unchanged, 1U);
}

TEST_F(Import, DoneTwiceChangesNothingAndSaysSo) {
  const std::string text =
      calendarText(eventText("1", "RRULE:FREQ=DAILY;COUNT=3\n") +
                   "BEGIN:VEVENT\nUID:1\nRECURRENCE-ID:20261103T080000Z\nDTSTART:20261103T120000Z\nEND:VEVENT\n" +
                   reminderText("2"));
  EXPECT_EQ(import(text).added, 2U);
  const auto before = store->generation();
  const auto again = import(text);
  EXPECT_EQ(again.unchanged, 2U);
  EXPECT_EQ(again.added + again.updated, 0U);
  EXPECT_EQ(store->generation(), before);
  EXPECT_EQ(occurrences(), 3U);
}

TEST_F(Import, GoesToTheDefaultCalendarsWithoutAnyTitle) {
  import(calendarText(eventText("1") + reminderText("2")));
  EXPECT_EQ(titles(CalendarKind::kEvents), Titles{"Calendar"});
  EXPECT_EQ(titles(CalendarKind::kReminders), Titles{"Reminders"});
}

TEST_F(Import, GoesToTheCalendarThatTheFileNames) {
  import(calendarText(eventText("1") + reminderText("2"), "X-WR-CALNAME:Family\nX-APPLE-CALENDAR-COLOR:#FF0000\n"));
  EXPECT_EQ(titles(CalendarKind::kEvents), (Titles{"Calendar", "Family"}));
  EXPECT_EQ(titles(CalendarKind::kReminders), (Titles{"Reminders", "Family"}));
  EXPECT_EQ(store->calendars(CalendarKind::kEvents).value()[1].color, (Rgb{1, 0, 0}));
}

TEST_F(Import, GoesToTheTitlesThatAreGiven) {
  ImportOptions with;
  with.calendarTitle = "Work";
  with.listTitle = "Jobs";
  import(calendarText(eventText("1") + reminderText("2"), "X-WR-CALNAME:Family\n"), with);
  EXPECT_EQ(titles(CalendarKind::kEvents), (Titles{"Calendar", "Work"}));
  EXPECT_EQ(titles(CalendarKind::kReminders), (Titles{"Reminders", "Jobs"}));
  with.calendarTitle = "Calendar";
  import(calendarText(eventText("3")), with);
  EXPECT_EQ(titles(CalendarKind::kEvents), (Titles{"Calendar", "Work"}));
}

TEST_F(Import, MakesNoCalendarForNoItem) {
  import(calendarText("", "X-WR-CALNAME:Empty\n"));
  EXPECT_EQ(titles(CalendarKind::kEvents), Titles{"Calendar"});
}

TEST_F(Import, MakesReadOnlyCalendarsAndRefreshesThem) {
  ImportOptions with;
  with.calendarTitle = "Feed";
  with.subscription = true;
  import(calendarText(eventText("1")), with);
  const Calendar made = store->calendars(CalendarKind::kEvents).value()[1];
  EXPECT_TRUE(made.readOnly);
  EXPECT_TRUE(made.subscribed);
  EXPECT_EQ(import(calendarText(eventText("1", "SUMMARY:x\n")), with).updated, 1U);
}

TEST_F(Import, RefusesToChangeAReadOnlyCalendarByTheWay) {
  ImportOptions with;
  with.calendarTitle = "Feed";
  with.readOnly = true;
  import(calendarText(eventText("1")), with);
  with.readOnly = false;
  const auto report = importCalendarText(*store, calendarText(eventText("2")), "test.ics", with);
  ASSERT_FALSE(report);
  EXPECT_EQ(report.error().code, ErrorCode::kReadOnly);
  EXPECT_EQ(occurrences(), 1U);
}

TEST_F(Import, IsStoppedWithoutATrace) {
  std::atomic<bool> stop = false;
  ImportOptions with;
  with.stop = &stop;
  with.progress = [&](std::size_t, std::size_t) { stop = true; };
  std::string items;
  for (int i = 0; i < 600; ++i) { items += eventText(std::to_string(i)); }
  const auto report = importCalendarText(*store, calendarText(items, "X-WR-CALNAME:New\n"), "test.ics", with);
  ASSERT_FALSE(report);
  EXPECT_EQ(report.error().code, ErrorCode::kInterrupted);
  EXPECT_EQ(occurrences(), 0U);
  EXPECT_EQ(titles(CalendarKind::kEvents), Titles{"Calendar"});
}

TEST_F(Import, ReportsProgressUpToTheEnd) {
  std::size_t done = 0, all = 0;
  ImportOptions with;
  with.progress = [&](std::size_t now, std::size_t total) { done = now, all = total; };
  import(calendarText(eventText("1") + eventText("2")), with);
  EXPECT_EQ(done, 2U);
  EXPECT_EQ(all, 2U);
}

TEST_F(Import, TakesAUidOnceWhenTwoCalendarsOfAFileGoToOne) {
  ImportOptions with;
  with.calendarTitle = "One";
  const auto report =
      import(calendarText(eventText("1"), "X-WR-CALNAME:A\n") + calendarText(eventText("1"), "X-WR-CALNAME:B\n"), with);
  EXPECT_EQ(report.added, 1U);
  EXPECT_EQ(report.refused, 1U);
}

TEST_F(Import, TellsTheSameClockInTwoZonesApartWhenSeveralCalendarsAreInTheFile) {
  const std::string items = eventText("1", "RECURRENCE-ID:20261109T090000\n") +
                            eventText("1", "RECURRENCE-ID;TZID=Europe/Berlin:20261109T090000\n");
  const auto report = import(calendarText(items, "X-WR-CALNAME:A\n") + calendarText("", "X-WR-CALNAME:B\n"));
  EXPECT_EQ(report.added, 2U);
  EXPECT_EQ(report.refused, 0U);
}

TEST_F(Import, TakesANewStampAloneForNoChange) {
  import(calendarText(eventText("1", "DTSTAMP:20260101T000000Z\n")));
  EXPECT_EQ(import(calendarText(eventText("1", "DTSTAMP:20260202T000000Z\n"))).unchanged, 1U);
  EXPECT_EQ(store->item(all(*store)[0].item).value()->stamped, Zone().toMoment(LocalTime(2026, 1, 1)));
  EXPECT_EQ(import(calendarText(eventText("1", "DTSTAMP:20260303T000000Z\nSUMMARY:new\n"))).updated, 1U);
  EXPECT_EQ(store->item(all(*store)[0].item).value()->stamped, Zone().toMoment(LocalTime(2026, 3, 3)));
}

TEST_F(Import, ComesBackWithTheStampAndNoDatesThatWereNotThere) {
  import(calendarText(eventText("1", "DTSTAMP:20260101T000000Z\nX-KEPT:1\n") + reminderText("2")));
  const std::string text = exported(*store);
  EXPECT_NE(text.find("DTSTAMP:20260101T000000Z"), std::string::npos);
  EXPECT_EQ(text.find("CREATED"), std::string::npos);
  EXPECT_EQ(text.find("LAST-MODIFIED"), std::string::npos);
  EXPECT_EQ(text.find("DTSTAMP"), text.rfind("DTSTAMP:20260101"));
  EXPECT_EQ(import(text).unchanged, 2U);
}

TEST_F(Import, BringsAlarmsBackUnchangedWhateverTheirLinesSay) {
  const std::string alarm =
      "BEGIN:VALARM\nACTION:AUDIO\nTRIGGER:PT0S\nX-A:1\nATTACH;FMTTYPE=audio/basic:ping.wav\nEND:VALARM\n"
      "BEGIN:VALARM\nACTION:EMAIL\nATTENDEE;CN=J:mailto:j@x\nATTENDEE:mailto:k@x\nTRIGGER:PT0S\nEND:VALARM\n";
  import(calendarText(eventText("1", alarm)));
  EXPECT_EQ(import(exported(*store)).unchanged, 1U);
}

TEST_F(Import, GivesASubscriptionASourceOfItsOwn) {
  ImportOptions with;
  with.subscription = true;
  import(calendarText(eventText("1"), "X-WR-CALNAME:Feed\n"), with);
  const Calendar feed = store->calendars(CalendarKind::kEvents).value().back();
  EXPECT_EQ(feed.title, "Feed");
  EXPECT_EQ(feed.type, Source::Type::kSubscription);
  const auto sources = store->sources().value();
  ASSERT_EQ(sources.size(), 2U);
  EXPECT_EQ(sources[1].id, feed.source);
  EXPECT_EQ(sources[1].type, Source::Type::kSubscription);
  EXPECT_EQ(sources[1].title, "Feed");
  import(calendarText(eventText("1"), "X-WR-CALNAME:Feed\n"), with);
  EXPECT_EQ(store->sources().value().size(), 2U);
  ASSERT_TRUE(store->removeCalendar(feed.identifier));
  EXPECT_EQ(store->sources().value().size(), 1U);
}

TEST_F(Import, LeavesACalendarThatIsOnlyReadOnlyWhereOthersAre) {
  ImportOptions with;
  with.readOnly = true;
  import(calendarText(eventText("1"), "X-WR-CALNAME:Rules\n"), with);
  EXPECT_EQ(store->calendars(CalendarKind::kEvents).value().back().type, Source::Type::kLocal);
  EXPECT_EQ(store->sources().value().size(), 1U);
}

TEST_F(Import, KeepsAPrivateZoneForOtherProcesses) {
  import(calendarText(
      "BEGIN:VTIMEZONE\nTZID:Own\nBEGIN:STANDARD\nDTSTART:19700101T000000\nTZOFFSETFROM:+0213\nTZOFFSETTO:+"
      "0213\nEND:STANDARD\nEND:VTIMEZONE\n"
      "BEGIN:VEVENT\nUID:1\nDTSTART;TZID=Own:20261102T090000\nEND:VEVENT\n"));
  const auto found = all(*store);
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].start, Zone().toMoment(LocalTime(2026, 11, 2, 6, 47)));
  const auto item = store->item(found[0].item).value();
  EXPECT_TRUE(store->privateZone(item->start->zone).value());
}

TEST_F(Import, ShowsAChangedOccurrenceOnce) {
  import(calendarText(
      eventText("1", "RRULE:FREQ=DAILY;COUNT=3\nEXDATE;VALUE=DATE:20261104\n") +
      "BEGIN:VEVENT\nUID:1\nRECURRENCE-ID:20261103T080000Z\nDTSTART:20261110T120000Z\nSUMMARY:moved\nEND:VEVENT\n"));
  const auto found = all(*store);
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(shown(found[0].start), "2026-11-02 09:00");
  EXPECT_EQ(shown(found[1].start), "2026-11-10 13:00");
}

std::string sample(const std::string& name) {
  std::ifstream in(std::string(ORLOCAL_TEST_DATA "/../../examples/") + name, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

class Samples : public Import, public testing::WithParamInterface<const char*> {};

TEST_P(Samples, AreImportedInFullAndComeBackAsTheSameBytes) {
  const std::string text = sample(GetParam());
  ASSERT_FALSE(text.empty());
  const auto report = import(text);
  EXPECT_GT(report.added, 20U);
  EXPECT_EQ(report.refused, 0U);
  EXPECT_TRUE(report.warnings.empty());
  const std::string first = exported(*store);
  EXPECT_EQ(import(first).unchanged, report.added);
  auto other = CalendarStore::open([&] {
    auto another = options();
    another.file = folder / "other.db";
    return another;
  }());
  ASSERT_TRUE(other);
  ASSERT_TRUE(importCalendarText(**other, first, "first.ics"));
  EXPECT_EQ(exported(**other), first);
  EXPECT_EQ(all(**other).size(), occurrences());
}

INSTANTIATE_TEST_SUITE_P(Files, Samples,
                         testing::Values("work.ics", "family.ics", "travel.ics", "errands.ics", "projects.ics"));

TEST_F(Import, OfContactsFindsThemAgain) {
  const auto path = std::string(ORLOCAL_TEST_DATA "/../../examples/contacts.vcf");
  const auto first = importContactsFile(*store, path).value();
  EXPECT_EQ(first.added, 11U);
  EXPECT_EQ(first.refused, 0U);
  EXPECT_EQ(importContactsFile(*store, path).value().unchanged, 11U);
  EXPECT_EQ(store->addressOf("ANNA@berger.example.org").value(), "Elbchaussee 1\n22765 Hamburg\nGermany");
  EXPECT_EQ(store->addressOf("joerg.mueller@example.org").value(), "Große Straße 9\n50667 Köln\nGermany");
}

}  // namespace
}  // namespace orlocal::store
