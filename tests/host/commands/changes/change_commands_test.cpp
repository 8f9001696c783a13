#include "host/commands/changes/change_fixture.h"

namespace orlocal::host {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class ChangesOfItems : public ChangeCommand {
 protected:
  void SetUp() override {
    typed({"new", "Lunch tomorrow 12:30", "--location", "Luigi's", "--alarm", "15m"});
    typed({"new", "Standup every day 9:15 15m", "--start", "today", "--count", "5"});
    typed({"new", "--reminder", "Buy milk"});
    typed({"new", "--reminder", "Water plants today 18:00", "--repeat", "daily"});
  }
};

TEST_F(ChangesOfItems, SetWhatIsNamedAndLeaveTheRest) {
  EXPECT_THAT(typed({"edit", "lunch", "--start", "friday 13:00", "--title", "Late lunch"}),
              HasSubstr("Fri 6 Nov 2026 13:00–14:00, alarm 15 minutes before the start, at Luigi's, in Calendar"));
  EXPECT_THAT(typed({"edit", "lunch", "--duration", "30m"}), HasSubstr("13:00–13:30"));
  EXPECT_THAT(typed({"edit", "lunch", "--end", "15:00"}), HasSubstr("13:00–15:00"));
  EXPECT_THAT(typed({"edit", "lunch", "--all-day"}), HasSubstr("Fri 6 Nov 2026, all day"));
  EXPECT_THAT(typed({"edit", "lunch", "--start", "9:00"}), HasSubstr("09:00–10:00"));
}

TEST_F(ChangesOfItems, TakeAwayWhatIsEmpty) {
  EXPECT_THAT(typed({"edit", "lunch", "--location", "", "--alarm", ""}),
              AllOf(Not(HasSubstr("Luigi")), Not(HasSubstr("alarm"))));
  EXPECT_THAT(typed({"edit", "Standup", "--all", "--repeat", ""}), Not(HasSubstr("every")));
  EXPECT_THAT(planned("today", "+6"), ElementsAre("2026-11-02T09:15 Standup", "2026-11-03T12:30 Lunch"));
}

TEST_F(ChangesOfItems, MakeAnEventRepeat) {
  EXPECT_THAT(typed({"edit", "Lunch", "--repeat", "weekly", "--until", "2026-11-20"}),
              HasSubstr("every week, until 20 November 2026"));
  EXPECT_THAT(typed({"edit", "Lunch", "--all", "--count", "2"}), HasSubstr("every week, 2 times"));
}

TEST_F(ChangesOfItems, OfASeriesWantToKnowHowMuchOfIt) {
  EXPECT_THAT(refused({"edit", "Standup", "--title", "X"}, ExitStatus::kUsage),
              AllOf(HasSubstr("--all"), HasSubstr("--occurrence DAY")));
  EXPECT_THAT(refused({"remove", "Standup"}, ExitStatus::kUsage), HasSubstr("\"Standup\" repeats"));
  EXPECT_THAT(refused({"edit", "Standup", "--this", "--title", "X"}, ExitStatus::kUsage), HasSubstr("--occurrence"));
  EXPECT_THAT(refused({"edit", "Standup", "--occurrence", "25:00", "--title", "X"}, ExitStatus::kUsage),
              HasSubstr("^^^^^"));
  EXPECT_THAT(refused({"edit", "Standup", "--occurrence", "+20", "--title", "X"}), HasSubstr("not on Sun 22 Nov 2026"));
}

TEST_F(ChangesOfItems, AskAPersonWhatTheWordsLeaveOpen) {
  answering("n\n");
  EXPECT_THAT(refused({"remove", "Standup"}, ExitStatus::kUsage), HasSubstr("Remove all of it? [y/N]"));
  EXPECT_EQ(planned("today", "+6").size(), 6U);
  answering("y\n");
  typed({"remove", "Standup"});
  EXPECT_THAT(planned("today", "+6"), ElementsAre("2026-11-03T12:30 Lunch"));
}

TEST_F(ChangesOfItems, AreAboutOneOccurrenceThoseFromThereOnOrAll) {
  typed({"edit", "Standup", "--occurrence", "wednesday", "--title", "Long standup", "--duration", "1h"});
  typed({"edit", "Standup", "--occurrence", "thursday", "--future", "--start", "10:00"});
  EXPECT_THAT(planned("today", "+6"),
              ElementsAre("2026-11-02T09:15 Standup", "2026-11-03T09:15 Standup", "2026-11-03T12:30 Lunch",
                          "2026-11-04T09:15 Long standup", "2026-11-05T10:00 Standup", "2026-11-06T10:00 Standup"));
  typed({"remove", "Standup", "--occurrence", "2026-11-03", "--this"});
  typed({"remove", "Standup", "--occurrence", "2026-11-06", "--future"});
  EXPECT_THAT(planned("today", "+6"), ElementsAre("2026-11-02T09:15 Standup", "2026-11-03T12:30 Lunch",
                                                  "2026-11-04T09:15 Long standup", "2026-11-05T10:00 Standup"));
}

TEST_F(ChangesOfItems, RemoveSeveralOnlyWhenThatIsMeant) {
  EXPECT_THAT(refused({"remove", "Lunch", "Buy milk"}, ExitStatus::kUsage), HasSubstr("--yes"));
  EXPECT_THAT(typed({"remove", "Lunch", "Buy milk", "--yes"}),
              AllOf(HasSubstr("\"Lunch\""), HasSubstr("\"Buy milk\"")));
  typed({"undo"});
  EXPECT_THAT(planned("tomorrow", "tomorrow"), ElementsAre("2026-11-03T09:15 Standup", "2026-11-03T12:30 Lunch"));
  typed({"done", "milk"});
}

TEST_F(ChangesOfItems, OfEventsWithAttendeesAreAskedOrRefused) {
  imported(calendar("", event("meeting", "Meeting",
                              "DTSTART:20261104T090000Z\r\nDTEND:20261104T100000Z\r\n"
                              "ATTENDEE;PARTSTAT=ACCEPTED:mailto:ada@example.org\r\n")));
  EXPECT_THAT(refused({"edit", "Meeting", "--title", "X"}), HasSubstr("The event \"Meeting\" has attendees"));
  EXPECT_THAT(refused({"remove", "Meeting"}, ExitStatus::kUsage), HasSubstr("has attendees"));
  typed({"remove", "Meeting", "--yes"});
}

TEST_F(ChangesOfItems, MoveToAnotherCalendar) {
  typed({"calendars", "new", "Work"});
  EXPECT_THAT(typed({"move", "Standup", "--to", "Work"}), HasSubstr("in Work"));
  EXPECT_EQ(typedJson({"agenda", "--calendar", "Work"})["events"].size(), 5U);
  typed({"move", "Standup", "--to", "Calendar", "--occurrence", "tomorrow"});
  EXPECT_EQ(typedJson({"agenda", "--calendar", "Work"})["events"].size(), 4U);
  EXPECT_THAT(refused({"move", "Lunch", "--to", "Reminders"}), HasSubstr("holds no events"));
}

TEST_F(ChangesOfItems, CompleteRemindersAndOpenThemAgain) {
  EXPECT_THAT(typed({"done", "Buy milk"}), HasSubstr("Done: \"Buy milk\""));
  EXPECT_THAT(refused({"done", "Buy milk"}), HasSubstr("no open reminder \"Buy milk\""));
  EXPECT_THAT(typed({"reopen", "Buy milk"}), HasSubstr("Open again: \"Buy milk\""));
  EXPECT_THAT(typed({"done", "plants"}), AllOf(HasSubstr("due next"), HasSubstr("Tue 3 Nov 2026 18:00")));
  EXPECT_THAT(typed({"done", "plants", "--dry-run"}), HasSubstr("Would be done"));
  EXPECT_THAT(typed({"done", "plants"}), HasSubstr("Wed 4 Nov 2026 18:00"));
}

TEST_F(ChangesOfItems, GiveRemindersADateAndTakeItAway) {
  EXPECT_THAT(typed({"edit", "Buy milk", "--start", "friday"}), HasSubstr("due Fri 6 Nov 2026"));
  EXPECT_THAT(typed({"edit", "Buy milk", "--start", "17:00"}), HasSubstr("due Fri 6 Nov 2026 17:00"));
  EXPECT_THAT(typed({"edit", "Buy milk", "--start", ""}), HasSubstr("no date"));
  EXPECT_THAT(refused({"edit", "Buy milk", "--repeat", "daily"}, ExitStatus::kUsage), HasSubstr("--start DAY"));
}

TEST_F(ChangesOfItems, SayWhatTheyCouldMean) {
  typed({"new", "Lunch friday 12:30"});
  EXPECT_THAT(refused({"remove", "Lunch"}), AllOf(HasSubstr("may be 2 things"), HasSubstr("Tue 3 Nov 2026 12:30")));
  typed({"remove", "Lunch", "--occurrence", "friday"});
  EXPECT_THAT(refused({"remove", "Dinner"}), HasSubstr("no event or reminder \"Dinner\""));
  EXPECT_THAT(refused({"edit", "Lunch"}, ExitStatus::kUsage), HasSubstr("what is to be changed"));
}

TEST_F(ChangesOfItems, OfDryRunsChangeNothing) {
  const std::string before = exported();
  typed({"edit", "Lunch", "--title", "Dinner", "--dry-run"});
  typed({"remove", "Standup", "--all", "--dry-run"});
  typed({"remove", "Lunch", "Buy milk", "--dry-run"});
  typed({"calendars", "new", "Work"});
  typed({"move", "Lunch", "--to", "Work", "--dry-run"});
  typed({"undo", "--dry-run"});
  typed({"calendars", "remove", "Work"});
  EXPECT_EQ(exported(), before);
}

TEST_F(ChangesOfItems, AreTakenBackOneAfterTheOther) {
  std::vector<std::string> states{exported()};
  const std::vector<std::vector<std::string>> commands = {
      {"edit", "Lunch", "--title", "Dinner", "--start", "friday 19:00"},
      {"edit", "Standup", "--occurrence", "thursday", "--future", "--start", "10:00"},
      {"edit", "Standup", "--occurrence", "tomorrow", "--location", "Garden"},
      {"remove", "Dinner"},
      {"done", "plants"},
      {"new", "Tea tomorrow 16:00"},
  };
  for (const auto& words : commands) {
    typed(words);
    states.push_back(exported());
  }
  EXPECT_THAT(typed({"undo", "--list"}), AllOf(HasSubstr("new \"Tea\""), HasSubstr("remove \"Dinner\"")));
  while (states.size() > 1) {
    states.pop_back();
    typed({"undo"});
    EXPECT_EQ(exported(), states.back());
  }
}

TEST_F(ChangesOfItems, AreDoneAgainByTheNumberOfTheirUndo) {
  const std::string before = exported();
  typed({"remove", "Lunch"});
  const std::string after = exported();
  EXPECT_THAT(typed({"undo"}), HasSubstr("Undone: remove \"Lunch\""));
  EXPECT_EQ(exported(), before);
  const auto list = typedJson({"undo", "--list"});
  typed({"undo", std::to_string(list[0]["number"].get<int>())});
  EXPECT_EQ(exported(), after);
}

TEST_F(ChangesOfItems, ThatSomethingElseChangedStay) {
  typed({"edit", "Lunch", "--location", "Roof"});
  const std::string lunch = typedJson({"edit", "Lunch", "--notes", "x"})["uid"];
  imported(calendar("Calendar", event(lunch, "Brunch", "DTSTART:20261103T100000Z\r\nDTEND:20261103T110000Z\r\n")));
  EXPECT_THAT(refused({"undo"}), HasSubstr("\"Brunch\" was changed since by something else"));
}

}  // namespace
}  // namespace orlocal::host
