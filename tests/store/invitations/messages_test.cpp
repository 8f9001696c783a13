#include <gmock/gmock.h>

#include "store/export.h"
#include "store/import.h"
#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// Messages in the manner of the examples of RFC 5546, 4: A organises, B, C and D are invited.
class Messages : public StoreTest {
 protected:
  ImportReport take(const std::string& text, const ImportOptions& with = {}) {
    auto report = importCalendarText(*store, text, "message.ics", with);
    EXPECT_TRUE(report) << (report ? "" : report.error().message);
    return report.value_or(ImportReport{});
  }
  static std::string message(const std::string& method, const std::string& lines, const std::string& organizer = "a") {
    return "BEGIN:VCALENDAR\r\nPRODID:-//Example//EN\r\nVERSION:2.0\r\nMETHOD:" + method +
           "\r\nBEGIN:VEVENT\r\nUID:calsrv.example.com-8739\r\n" +
           (organizer.empty() ? "" : "ORGANIZER:mailto:" + organizer + "@example.com\r\n") + lines +
           "END:VEVENT\r\nEND:VCALENDAR\r\n";
  }
  static std::string invited(const std::string& stateOfB = "") {
    return "ATTENDEE;RSVP=TRUE;PARTSTAT=ACCEPTED;CUTYPE=INDIVIDUAL:mailto:a@example.com\r\nATTENDEE;RSVP=TRUE;" +
           stateOfB + "CUTYPE=INDIVIDUAL:mailto:b@example.com\r\nATTENDEE;RSVP=TRUE:mailto:c@example.com\r\n";
  }
  static std::string request(const std::string& start = "20261103T190000Z", int sequence = 0,
                             const std::string& stamp = "20261101T100000Z", const std::string& more = "") {
    return message("REQUEST", "DTSTAMP:" + stamp + "\r\nDTSTART:" + start + "\r\nDURATION:PT1H\r\nSEQUENCE:" +
                                  std::to_string(sequence) + "\r\nSUMMARY:Conference\r\n" + more + invited());
  }
  static std::string weekly() {
    return message("REQUEST",
                   "DTSTAMP:20261101T100000Z\r\nDTSTART;TZID=Europe/Berlin:20261103T090000\r\nDTEND;TZID=Europe/"
                   "Berlin:20261103T100000\r\nRRULE:FREQ=WEEKLY;COUNT=4\r\nSEQUENCE:0\r\nSUMMARY:Conference\r\n" +
                       invited());
  }
  static std::string reply(const std::string& who, const std::string& state, const std::string& more = "",
                           const std::string& stamp = "20261101T120000Z") {
    return message("REPLY", "DTSTAMP:" + stamp + "\r\nATTENDEE;PARTSTAT=" + state + ":mailto:" + who +
                                "@example.com\r\n" + more + "REQUEST-STATUS:2.0;Success\r\n");
  }
  std::string exported() {
    std::string text;
    EXPECT_TRUE(
        exportCalendars(*store, *store->calendars(CalendarKind::kEvents), [&](std::string_view piece) -> Status {
          text += piece;
          return {};
        }));
    // Unfolded.
    for (std::size_t at = 0; (at = text.find("\r\n ", at)) != std::string::npos;) { text.erase(at, 3); }
    return text;
  }
  std::vector<std::string> shownInNovember() { return listed(at("2026-11-01 00:00"), at("2026-12-01 00:00")); }
  static std::vector<std::string> wordsOf(const std::vector<Problem>& problems) {
    std::vector<std::string> words;
    for (const Problem& problem : problems) { words.push_back(problem.message); }
    return words;
  }
};

TEST_F(Messages, ARequestBringsWhatIsNotThere) {
  const auto report = take(request());
  EXPECT_EQ(report.added, 1U);
  EXPECT_THAT(shownInNovember(), ElementsAre("2026-11-03 20:00 Conference"));
}

TEST_F(Messages, ANewerRequestTakesThePlaceOfTheStoredItem) {
  take(request());
  EXPECT_EQ(take(request("20261104T190000Z", 1)).updated, 1U);
  EXPECT_THAT(shownInNovember(), ElementsAre("2026-11-04 20:00 Conference"));
}

TEST_F(Messages, AnOlderRequestIsLeftOutAndTold) {
  take(request("20261104T190000Z", 2));
  const auto report = take(request("20261103T190000Z", 1, "20261102T100000Z"));
  EXPECT_EQ(report.unchanged, 1U);
  EXPECT_EQ(report.refused, 0U);
  ASSERT_EQ(report.notes.size(), 1U);
  EXPECT_THAT(report.notes[0].message, HasSubstr("a newer version is known (SEQUENCE 2 here, 1 in this message)"));
  EXPECT_EQ(report.notes[0].item, "“Conference” on 2026-11-04");
  EXPECT_THAT(shownInNovember(), ElementsAre("2026-11-04 20:00 Conference"));
}

TEST_F(Messages, OfTwoRequestsWithOneSequenceTheLaterStampCounts) {
  take(request("20261104T190000Z", 1, "20261101T110000Z"));
  EXPECT_EQ(take(request("20261103T190000Z", 1, "20261101T100000Z")).notes.size(), 1U);
  EXPECT_THAT(shownInNovember(), ElementsAre("2026-11-04 20:00 Conference"));
}

TEST_F(Messages, TheSameRequestAgainChangesNothing) {
  take(request());
  EXPECT_EQ(take(request()).unchanged, 1U);
}

TEST_F(Messages, OnlyTheOrganiserMayChangeAnItem) {
  take(request());
  std::string forged = request("20261109T190000Z", 5);
  forged.replace(forged.find("ORGANIZER:mailto:a"), 18, "ORGANIZER:mailto:x");
  const auto report = take(forged);
  EXPECT_EQ(report.refused, 1U);
  EXPECT_THAT(wordsOf(report.problems), ElementsAre(HasSubstr("only its organiser a@example.com may change it")));
  EXPECT_THAT(shownInNovember(), ElementsAre("2026-11-03 20:00 Conference"));
}

TEST_F(Messages, NobodyTakesAnOwnEventForHisInvitation) {
  take(
      "BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nUID:calsrv.example.com-8739\r\nDTSTART:20261103T100000Z\r\n"
      "SUMMARY:Mine\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n");
  EXPECT_EQ(take(request("20261104T190000Z", 1)).refused, 1U);
  EXPECT_THAT(shownInNovember(), ElementsAre("2026-11-03 11:00 Mine"));
}

TEST_F(Messages, ARequestFindsItsItemInWhicheverCalendarItIs) {
  ImportOptions work;
  work.calendarTitle = "Work";
  take(request(), work);
  EXPECT_EQ(take(request("20261104T190000Z", 1)).updated, 1U);
  EXPECT_THAT(shownInNovember(), ElementsAre("2026-11-04 20:00 Conference"));
}

TEST_F(Messages, APublishedFileIsImportedAsAnyOther) {
  take(request("20261104T190000Z", 2));
  std::string published = request("20261103T190000Z", 1);
  published.replace(published.find("METHOD:REQUEST"), 14, "METHOD:PUBLISH");
  EXPECT_EQ(take(published).updated, 1U);
}

TEST_F(Messages, AReplySetsOneAnswerAndNothingElse) {
  take(request());
  const std::string before = exported();
  const auto report = take(reply("b", "ACCEPTED", "SUMMARY:Other\r\nDTSTART:20261109T100000Z\r\nSEQUENCE:0\r\n"));
  EXPECT_EQ(report.updated, 1U);
  EXPECT_THAT(wordsOf(report.notes), ElementsAre("b@example.com accepts"));
  const std::string after = exported();
  EXPECT_THAT(after,
              HasSubstr("ATTENDEE;PARTSTAT=ACCEPTED;ROLE=REQ-PARTICIPANT;RSVP=TRUE;X-ORLOCAL-ANSWERED=20261101T120000Z"
                        ":mailto:b@example.com"));
  const auto others = [](std::string text) {
    const std::size_t at = text.find(":mailto:b@example.com");
    const std::size_t begin = text.rfind("\r\n", at);
    return text.erase(begin, at - begin);
  };
  EXPECT_EQ(others(after), others(before));
}

TEST_F(Messages, AnOlderReplyDoesNotUndoANewerOne) {
  take(request());
  take(reply("b", "ACCEPTED", "", "20261101T130000Z"));
  const auto report = take(reply("b", "DECLINED", "", "20261101T120000Z"));
  EXPECT_THAT(wordsOf(report.notes), ElementsAre(HasSubstr("a newer answer of b@example.com is known")));
  EXPECT_THAT(exported(), AllOf(HasSubstr("PARTSTAT=ACCEPTED;ROLE=REQ-PARTICIPANT;RSVP=TRUE;X-ORLOCAL"),
                                Not(HasSubstr("DECLINED"))));
}

TEST_F(Messages, AReplyToAnOlderVersionIsStale) {
  take(request("20261104T190000Z", 2));
  EXPECT_THAT(wordsOf(take(reply("b", "ACCEPTED", "SEQUENCE:1\r\n")).notes),
              ElementsAre(HasSubstr("a newer version is known")));
  EXPECT_THAT(exported(), Not(HasSubstr("X-ORLOCAL-ANSWERED")));
}

TEST_F(Messages, AReplyOfSomebodyWhoIsNotInvitedIsRefused) {
  take(request());
  EXPECT_THAT(wordsOf(take(reply("x", "ACCEPTED")).problems), ElementsAre(HasSubstr("x@example.com is not invited")));
}

TEST_F(Messages, SeveralInOneFileCountOneAfterTheOther) {
  const auto report = take(request() + reply("b", "ACCEPTED") + reply("c", "DECLINED") +
                           message("CANCEL", "DTSTAMP:20261102T100000Z\r\nSEQUENCE:1\r\n"));
  EXPECT_EQ(report.refused, 0U) << report.problems.front().message;
  EXPECT_EQ(report.updated, 3U);
  EXPECT_THAT(exported(), AllOf(HasSubstr("PARTSTAT=ACCEPTED;ROLE=REQ-PARTICIPANT;RSVP=TRUE;X-ORLOCAL"),
                                HasSubstr("PARTSTAT=DECLINED"), HasSubstr("STATUS:CANCELLED")));
}

TEST_F(Messages, AReplyToNothingIsRefused) {
  const auto report = take(reply("b", "ACCEPTED"));
  EXPECT_EQ(report.refused, 1U);
  EXPECT_THAT(wordsOf(report.problems), ElementsAre(HasSubstr("an item that the store does not have")));
}

TEST_F(Messages, AReplyAnswersTheOccurrenceThatItNames) {
  take(weekly());
  EXPECT_EQ(take(reply("b", "DECLINED", "RECURRENCE-ID;TZID=Europe/Berlin:20261110T090000\r\n")).updated, 1U);
  const auto calendar = defaultCalendar();
  std::vector<std::string> states;
  EXPECT_TRUE(store->forEachItem(calendar, [&](const Item& main, const std::vector<Item>& changed) -> Status {
    EXPECT_EQ(changed.size(), 1U);
    for (const Item* item : {&main, &changed.at(0)}) {
      for (const Attendee& attendee : item->attendees) {
        if (attendee.address == "mailto:b@example.com") {
          states.push_back(std::to_string(static_cast<int>(attendee.status)));
        }
      }
    }
    return {};
  }));
  EXPECT_THAT(states, ElementsAre("1", "3"));
  EXPECT_THAT(shownInNovember(), ElementsAre("2026-11-03 09:00 Conference", "2026-11-10 09:00 Conference",
                                             "2026-11-17 09:00 Conference", "2026-11-24 09:00 Conference"));
}

TEST_F(Messages, AReplyToAnOccurrenceThatIsNoneIsRefused) {
  take(weekly());
  EXPECT_THAT(wordsOf(take(reply("b", "DECLINED", "RECURRENCE-ID:20261111T080000Z\r\n")).problems),
              ElementsAre(HasSubstr("the series has no occurrence on 2026-11-11 08:00 UTC any more")));
}

TEST_F(Messages, ADelegateAnswersForWhoSentHim) {
  take(request());
  take(message("REPLY",
               "DTSTAMP:20261101T120000Z\r\nATTENDEE;PARTSTAT=DELEGATED;DELEGATED-TO=\"mailto:e@example.com\""
               ":mailto:c@example.com\r\n"));
  EXPECT_THAT(exported(), HasSubstr("PARTSTAT=DELEGATED"));
  EXPECT_EQ(take(message("REPLY",
                         "DTSTAMP:20261101T130000Z\r\nATTENDEE;PARTSTAT=ACCEPTED;DELEGATED-FROM="
                         "\"mailto:c@example.com\":mailto:e@example.com\r\nATTENDEE;PARTSTAT=DELEGATED;DELEGATED-TO="
                         "\"mailto:e@example.com\":mailto:c@example.com\r\n"))
                .updated,
            1U);
  EXPECT_THAT(exported(), HasSubstr(":mailto:e@example.com"));
}

TEST_F(Messages, ACancelledItemStaysAsCancelled) {
  take(request());
  const auto report = take(message("CANCEL", "DTSTAMP:20261102T100000Z\r\nSEQUENCE:1\r\nSTATUS:CANCELLED\r\n"));
  EXPECT_EQ(report.updated, 1U);
  EXPECT_THAT(exported(), AllOf(HasSubstr("STATUS:CANCELLED"), HasSubstr("SEQUENCE:1"), HasSubstr("Conference")));
  EXPECT_THAT(shownInNovember(), ElementsAre("2026-11-03 20:00 Conference"));
  EXPECT_EQ(take(message("CANCEL", "DTSTAMP:20261102T100000Z\r\nSEQUENCE:1\r\n")).unchanged, 1U);
}

TEST_F(Messages, ACancelledOccurrenceStaysAsCancelledAlone) {
  take(weekly());
  EXPECT_EQ(take(message("CANCEL",
                         "DTSTAMP:20261102T100000Z\r\nSEQUENCE:1\r\nRECURRENCE-ID:20261110T080000Z\r\n"
                         "STATUS:CANCELLED\r\n"))
                .updated,
            1U);
  const std::string text = exported();
  EXPECT_EQ(text.find("STATUS:CANCELLED"), text.rfind("STATUS:CANCELLED"));
  EXPECT_THAT(text, HasSubstr("RECURRENCE-ID;TZID=Europe/Berlin:20261110T090000"));
}

TEST_F(Messages, NobodyButTheOrganiserCancels) {
  take(request());
  EXPECT_EQ(take(message("CANCEL", "DTSTAMP:20261102T100000Z\r\nSEQUENCE:1\r\n", "x")).refused, 1U);
  EXPECT_EQ(take(message("CANCEL", "DTSTAMP:20261102T100000Z\r\nSEQUENCE:1\r\n", "")).refused, 1U);
  EXPECT_THAT(exported(), Not(HasSubstr("CANCELLED")));
}

TEST_F(Messages, AnOlderCancelIsStale) {
  take(request("20261104T190000Z", 2));
  EXPECT_EQ(take(message("CANCEL", "DTSTAMP:20261102T100000Z\r\nSEQUENCE:1\r\n")).notes.size(), 1U);
  EXPECT_THAT(exported(), Not(HasSubstr("CANCELLED")));
}

TEST_F(Messages, AddBringsOccurrencesToASeries) {
  take(weekly());
  const std::string add = message("ADD",
                                  "DTSTAMP:20261102T100000Z\r\nSEQUENCE:1\r\nDTSTART;TZID=Europe/Berlin:20261105T140000"
                                  "\r\nDTEND;TZID=Europe/Berlin:20261105T160000\r\nSUMMARY:Conference (more)\r\n" +
                                      invited());
  EXPECT_EQ(take(add).updated, 1U);
  EXPECT_THAT(shownInNovember(),
              ElementsAre("2026-11-03 09:00 Conference", "2026-11-05 14:00 Conference (more)",
                          "2026-11-10 09:00 Conference", "2026-11-17 09:00 Conference", "2026-11-24 09:00 Conference"));
  EXPECT_EQ(take(add).unchanged, 1U);
}

TEST_F(Messages, AddToNothingIsRefused) {
  EXPECT_EQ(take(message("ADD", "DTSTAMP:20261102T100000Z\r\nDTSTART:20261105T140000Z\r\n")).refused, 1U);
}

TEST_F(Messages, ACounterIsToldAndNotApplied) {
  take(request());
  const std::string before = exported();
  const auto report = take(message("COUNTER",
                                   "DTSTAMP:20261102T100000Z\r\nSEQUENCE:0\r\nDTSTART:20261104T170000Z\r\n"
                                   "DTEND:20261104T180000Z\r\nSUMMARY:Conference\r\nLOCATION:Room 3\r\n"
                                   "ATTENDEE;PARTSTAT=TENTATIVE:mailto:b@example.com\r\n"));
  EXPECT_THAT(wordsOf(report.notes),
              ElementsAre("b@example.com proposes 2026-11-04 17:00 UTC to 2026-11-04 18:00 UTC, the place “Room 3”; "
                          "nothing was changed: the organiser decides"));
  EXPECT_EQ(exported(), before);
}

TEST_F(Messages, ADeclinedCounterAndAWishAreTold) {
  take(request());
  EXPECT_THAT(wordsOf(take(message("DECLINECOUNTER", "DTSTAMP:20261102T100000Z\r\nSEQUENCE:0\r\n")).notes),
              ElementsAre(HasSubstr("declines what was proposed")));
  EXPECT_THAT(wordsOf(take(message("REFRESH", "DTSTAMP:20261102T100000Z\r\nATTENDEE:mailto:c@example.com\r\n")).notes),
              ElementsAre(HasSubstr("c@example.com asks for its newest version")));
}

TEST_F(Messages, ANewStampWithTheSameSequenceKeepsTheAnswers) {
  take(request());
  take(reply("b", "ACCEPTED"));
  take(request("20261103T190000Z", 0, "20261101T150000Z", "LOCATION:Room 2\r\n"));
  EXPECT_THAT(exported(), AllOf(HasSubstr("LOCATION:Room 2"),
                                HasSubstr("PARTSTAT=ACCEPTED;ROLE=REQ-PARTICIPANT;RSVP=TRUE;X-ORLOCAL")));
}

TEST_F(Messages, ANewSequenceAsksAnew) {
  take(request());
  take(reply("b", "ACCEPTED"));
  take(request("20261104T190000Z", 1, "20261101T150000Z"));
  EXPECT_THAT(exported(), Not(HasSubstr("X-ORLOCAL-ANSWERED")));
}

TEST_F(Messages, ARequestForOneOccurrenceChangesThatOne) {
  take(weekly());
  EXPECT_EQ(take(message("REQUEST",
                         "DTSTAMP:20261102T100000Z\r\nSEQUENCE:1\r\nRECURRENCE-ID:20261110T080000Z\r\n"
                         "DTSTART;TZID=Europe/Berlin:20261111T090000\r\nDTEND;TZID=Europe/Berlin:20261111T100000\r\n"
                         "SUMMARY:Conference\r\n" +
                             invited()))
                .updated,
            1U);
  EXPECT_THAT(shownInNovember(), ElementsAre("2026-11-03 09:00 Conference", "2026-11-11 09:00 Conference",
                                             "2026-11-17 09:00 Conference", "2026-11-24 09:00 Conference"));
}

TEST_F(Messages, WhatCameWithoutItsSeriesIsFoundAgain) {
  const std::string one =
      "DTSTAMP:20261102T100000Z\r\nSEQUENCE:1\r\nRECURRENCE-ID:20261110T080000Z\r\nDTSTART:20261110T080000Z\r\n"
      "SUMMARY:Conference\r\n" +
      invited();
  EXPECT_EQ(take(message("REQUEST", one)).added, 1U);
  EXPECT_EQ(take(reply("b", "ACCEPTED", "SEQUENCE:1\r\nRECURRENCE-ID:20261110T080000Z\r\n")).updated, 1U);
  EXPECT_EQ(
      take(message("CANCEL", "DTSTAMP:20261103T100000Z\r\nSEQUENCE:2\r\nRECURRENCE-ID:20261110T080000Z\r\n")).updated,
      1U);
  EXPECT_THAT(exported(), HasSubstr("STATUS:CANCELLED"));
}

TEST_F(Messages, ACalendarThatAllowsNoChangesTakesNone) {
  ImportOptions feed;
  feed.readOnly = true;
  feed.calendarTitle = "Feed";
  take(request(), feed);
  ImportOptions named;
  named.calendarTitle = "Feed";
  EXPECT_EQ(take(reply("b", "ACCEPTED"), named).refused, 1U);
  EXPECT_THAT(exported(), Not(HasSubstr("X-ORLOCAL-ANSWERED")));
}

TEST_F(Messages, AFeedIsNoMessage) {
  take(request("20261104T190000Z", 2));
  ImportOptions feed;
  feed.subscription = true;
  feed.calendarTitle = "Feed";
  EXPECT_EQ(take(request("20261103T190000Z", 1), feed).added, 1U);
}

TEST_F(Messages, ARehearsalWritesNothing) {
  take(request());
  ImportOptions trial;
  trial.listItems = true;
  store->rehearse();
  const auto report = take(request("20261104T190000Z", 1), trial);
  EXPECT_EQ(report.updated, 1U);
  ASSERT_EQ(report.items.size(), 1U);
  EXPECT_EQ(report.items[0].outcome, ImportedItem::Outcome::kUpdated);
  EXPECT_THAT(shownInNovember(), ElementsAre("2026-11-03 20:00 Conference"));
}

}  // namespace
}  // namespace orlocal::store
