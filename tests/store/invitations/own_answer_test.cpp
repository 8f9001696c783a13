#include "store/invitations/own_answer.h"

#include <gmock/gmock.h>

#include "store/import.h"
#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class OwnAnswers : public StoreTest {
 protected:
  Item invitation(const std::string& lines = "", const ImportOptions& with = {}) {
    const auto report = importCalendarText(
        *store,
        "BEGIN:VCALENDAR\r\nMETHOD:REQUEST\r\nBEGIN:VEVENT\r\nUID:1\r\nDTSTAMP:20261101T100000Z\r\nSEQUENCE:3\r\n"
        "SUMMARY:Review\r\nDTSTART;TZID=Europe/Berlin:20261103T090000\r\nDTEND;TZID=Europe/Berlin:20261103T100000\r\n"
        "ORGANIZER;CN=Ada:mailto:ada@example.org\r\nATTENDEE;CN=\"Grace H.\";RSVP=TRUE;PARTSTAT=NEEDS-ACTION:MAILTO:"
        "Grace@example.org\r\nATTENDEE;PARTSTAT=NEEDS-ACTION:mailto:tom@example.org\r\n" +
            lines + "END:VEVENT\r\nEND:VCALENDAR\r\n",
        "invitation.ics", with);
    EXPECT_TRUE(report && report->added == 1);
    return stored();
  }
  Item stored() {
    Item found;
    const auto calendars = *store->calendars(CalendarKind::kEvents);
    for (const Calendar& calendar : calendars) {
      EXPECT_TRUE(store->forEachItem(calendar.id, [&](const Item& main, const std::vector<Item>& others) -> Status {
        found = main;
        changed = others;
        return {};
      }));
    }
    return found;
  }
  Status answer(const Item& item, const OwnAnswer& with, const std::optional<CalendarTime>& original = std::nullopt) {
    const auto writer = store->startWriting();
    return answerInvitation(**writer, item, original, with, [&](const std::string& text) -> Status {
      message = text;
      return sending;
    });
  }
  std::vector<Item> changed;
  std::string message;
  Status sending;
  const OwnAnswer accepted{"grace@example.org", Attendee::Status::kAccepted, std::nullopt};
};

TEST_F(OwnAnswers, SetOneAnswerAndNothingElse) {
  Item expected = invitation();
  ASSERT_TRUE(answer(expected, accepted));
  expected.attendees[1].status = Attendee::Status::kAccepted;
  EXPECT_EQ(stored(), expected);
}

TEST_F(OwnAnswers, AreWrittenForTheOrganiser) {
  ASSERT_TRUE(answer(invitation(), {"grace@example.org", Attendee::Status::kDeclined, "Away, sorry"}));
  EXPECT_THAT(message, AllOf(HasSubstr("METHOD:REPLY\r\n"), HasSubstr("UID:1\r\n"), HasSubstr("SEQUENCE:3\r\n"),
                             HasSubstr("ORGANIZER;CN=Ada:mailto:ada@example.org\r\n"),
                             HasSubstr("ATTENDEE;CN=Grace H.;PARTSTAT=DECLINED:MAILTO:Grace@example.org\r\n"),
                             HasSubstr("COMMENT:Away\\, sorry\r\n"), HasSubstr("DTSTAMP:20261102T080000Z\r\n")));
  EXPECT_THAT(message, Not(HasSubstr("tom@example.org")));
}

TEST_F(OwnAnswers, AreUnderstoodWhereTheyArrive) {
  invitation();
  ASSERT_TRUE(answer(stored(), accepted));
  const std::string sent = message;
  file = folder / "organiser.db";
  store = opened();
  invitation();
  const auto report = importCalendarText(*store, sent, "reply.ics");
  ASSERT_TRUE(report);
  EXPECT_EQ(report->updated, 1U);
  EXPECT_EQ(stored().attendees[1].status, Attendee::Status::kAccepted);
}

TEST_F(OwnAnswers, AreForOneOccurrenceWhereOneIsNamed) {
  const Item series = invitation("RRULE:FREQ=WEEKLY;COUNT=3\r\n");
  ASSERT_TRUE(answer(series, accepted, berlin("2026-11-10 09:00")));
  EXPECT_EQ(stored().attendees[1].status, Attendee::Status::kPending);
  ASSERT_EQ(changed.size(), 1U);
  EXPECT_EQ(changed[0].attendees[1].status, Attendee::Status::kAccepted);
  EXPECT_THAT(message, HasSubstr("RECURRENCE-ID;TZID=Europe/Berlin:20261110T090000\r\n"));
  EXPECT_THAT(message, HasSubstr("BEGIN:VTIMEZONE"));
}

TEST_F(OwnAnswers, AreLeftOutWhereTheMessageCannotBeSent) {
  const Item before = invitation();
  sending = failure(ErrorCode::kFull, "no room");
  EXPECT_FALSE(answer(before, accepted));
  EXPECT_EQ(stored(), before);
}

TEST_F(OwnAnswers, AreRefusedInCalendarsThatAllowNoChanges) {
  ImportOptions feed;
  feed.calendarTitle = "Feed";
  feed.readOnly = true;
  const auto answered = answer(invitation("", feed), accepted);
  ASSERT_FALSE(answered);
  EXPECT_EQ(answered.error().code, ErrorCode::kReadOnly);
}

TEST_F(OwnAnswers, AreRefusedForWhoIsNotInvited) {
  const auto answered = answer(invitation(), {"nobody@example.org", Attendee::Status::kAccepted, std::nullopt});
  ASSERT_FALSE(answered);
  EXPECT_EQ(answered.error().code, ErrorCode::kRefused);
}

TEST_F(OwnAnswers, WaitUntilTheyAreGiven) {
  const Item item = invitation();
  EXPECT_TRUE(waitsForAnswer(item, "GRACE@example.org"));
  EXPECT_FALSE(waitsForAnswer(item, "nobody@example.org"));
  ASSERT_TRUE(answer(item, accepted));
  EXPECT_FALSE(waitsForAnswer(stored(), "grace@example.org"));
}

TEST_F(OwnAnswers, AreNotAwaitedOfTheOrganiserNorForWhatIsCancelled) {
  const Item item = invitation("STATUS:CANCELLED\r\n");
  EXPECT_FALSE(waitsForAnswer(item, "grace@example.org"));
  EXPECT_EQ(invitedUnder(item, {"ada@example.org", "grace@example.org"}), std::nullopt);
  EXPECT_EQ(invitedUnder(item, {"x@example.org", "grace@example.org"}), "grace@example.org");
}

}  // namespace
}  // namespace orlocal::store
