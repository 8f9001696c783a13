#include "host/commands/care/same_items.h"
#include "host/commands/changes/change_fixture.h"

namespace orlocal::host {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kWhen = "DTSTART:20261103T090000Z\r\nDTEND:20261103T100000Z\r\nLOCATION:Room 1\r\n";

class Duplicates : public ChangeCommand {
 protected:
  /// "alike: a stays, b goes": the UIDs of each group's members.
  std::vector<std::string> groups(std::vector<std::string> words = {}) {
    words.insert(words.begin(), "duplicates");
    std::vector<std::string> texts;
    for (const auto& group : typedJson(words)) {
      std::string text = group["sameness"].get<std::string>() + ":";
      for (const auto& member : group["members"]) {
        text +=
            " " + member["item"]["uid"].get<std::string>() + (member["superfluous"].get<bool>() ? " goes" : " stays");
      }
      texts.push_back(text);
    }
    return texts;
  }
  void work(const std::string& components) { imported(calendar("Work", components)); }
};

TEST_F(Duplicates, AreTheSameToLookAt) {
  const std::string when = kWhen;
  work(event("a", "Review", when) + event("b", "Review ", when) + event("c", "Other", when) +
       event("d", "Review", "DTSTART:20261103T090000Z\r\nDTEND:20261103T100000Z\r\nLOCATION:Room 2\r\n") +
       event("e", "Review", when + "RRULE:FREQ=DAILY;COUNT=2\r\n") +
       event("f", "Review", when + "STATUS:CANCELLED\r\n") +
       // The same moment on another clock.
       event("g", "Review",
             "DTSTART;TZID=Europe/Berlin:20261103T100000\r\nDTEND;TZID=Europe/Berlin:20261103T110000\r\n"
             "LOCATION:Room 1\r\n") +
       todo("h", "Milk", "") + todo("i", "Milk", "") +
       todo("j", "Milk", "STATUS:COMPLETED\r\nCOMPLETED:20261001T090000Z\r\n"));
  EXPECT_THAT(groups(), ElementsAre("alike: a stays b goes g goes", "alike: h stays i goes"));
}

TEST_F(Duplicates, LeaveTheOneThatSaysMost) {
  const std::string when = kWhen;
  const std::string person = "ATTENDEE;PARTSTAT=ACCEPTED:mailto:ada@example.org\r\n";
  const std::string alarm =
      "BEGIN:VALARM\r\nACTION:DISPLAY\r\nDESCRIPTION:Reminder\r\nTRIGGER:-PT15M\r\nEND:VALARM\r\n";
  work(event("a", "Review", when) + event("b", "Review", when + "DESCRIPTION:Bring slides\r\n") +
       event("c", "Review", when + alarm) + event("d", "Review", when + person + alarm));
  // The notes of b are nowhere else.
  EXPECT_THAT(groups(), ElementsAre("alike: d stays c goes b stays a goes"));
  EXPECT_THAT(typed({"duplicates"}), HasSubstr("notes; it says something of its own"));
}

TEST_F(Duplicates, OfOneUidAreCopies) {
  const std::string when = kWhen;
  work(event("a", "Review", when) + event("b", "Dentist", when));
  imported(calendar("Private", event("a", "Review", when) + event("b", "Dentist", "DTSTART:20261104T090000Z\r\n")));
  EXPECT_THAT(groups(), ElementsAre("same-uid: a stays a goes", "same-uid-differing: b stays b stays"));
  EXPECT_THAT(typed({"duplicates"}), AllOf(HasSubstr("one item (UID) in 2"), HasSubstr("which differs there")));
  EXPECT_EQ(groups({"--calendar", "Work"}).size(), 0U);
}

TEST_F(Duplicates, AreRemovedOnlyWhenThatIsMeant) {
  work(event("a", "Review", kWhen) + event("b", "Review", kWhen));
  const std::string before = exported();
  EXPECT_THAT(typed({"duplicates"}), HasSubstr("1 is superfluous; orlocal duplicates --remove takes it away."));
  EXPECT_THAT(typed({"duplicates", "--remove", "--dry-run"}), HasSubstr("Would remove 1"));
  EXPECT_THAT(refused({"duplicates", "--remove"}, ExitStatus::kUsage), HasSubstr("--yes"));
  answering("no\n");
  refused({"duplicates", "--remove"});
  EXPECT_EQ(exported(), before);
  answering("y\n");
  EXPECT_THAT(typed({"duplicates", "--remove"}), HasSubstr("Removed 1\n"));
  EXPECT_THAT(exported(), AllOf(HasSubstr("UID:a"), Not(HasSubstr("UID:b"))));
  EXPECT_EQ(typed({"duplicates"}), "Nothing is there more than once.\n");
  typed({"undo"});
  EXPECT_EQ(exported(), before);
}

TEST_F(Duplicates, StayWhereNothingMayBeChanged) {
  work(event("a", "Review", kWhen));
  ASSERT_EQ(run({"import", "--read-only",
                 file("r.ics", calendar("Locked", event("b", "Review", kWhen) + event("c", "Review", kWhen)))}),
            ExitStatus::kDone);
  EXPECT_THAT(groups(), ElementsAre("alike: b stays c stays a goes"));
  EXPECT_THAT(typed({"duplicates"}), HasSubstr("its calendar allows no changes"));
}

TEST_F(Duplicates, OfSeriesHaveTheSameChanges) {
  const std::string when = std::string(kWhen) + "RRULE:FREQ=DAILY;COUNT=5\r\n";
  const std::string moved = "RECURRENCE-ID:20261104T090000Z\r\nDTSTART:20261104T110000Z\r\n";
  work(event("a", "Review", when) + event("a", "Review", moved) + event("b", "Review", when) +
       event("b", "Review", moved) + event("c", "Review", when));
  EXPECT_THAT(groups(), ElementsAre("alike: a stays b goes"));
}

TEST_F(Duplicates, AreWhatDoctorTellsOf) {
  work(event("a", "Review", std::string(kWhen) + "X-NUMBER:1\r\n") +
       event("b", "Review", std::string(kWhen) + "X-NUMBER:2\r\nSEQUENCE:4\r\n"));
  run({"doctor", "--plugin", "none"});
  EXPECT_THAT(out, HasSubstr("There more than once: \"Review\""));
  EXPECT_THAT(typed({"duplicates", "--remove", "--yes"}), HasSubstr("Removed 1\n"));
  run({"doctor", "--plugin", "none"});
  EXPECT_THAT(out, HasSubstr("Nothing is there twice"));
}

}  // namespace
}  // namespace orlocal::host
