#include "host/commands/browsing/browse_state.h"

#include "host/commands/browsing/browse_fixture.h"
#include "host/commands/words/day_words.h"
#include "host/commands/words/when_words.h"

namespace orlocal::host {
namespace {

using testing::HasSubstr;
using testing::Not;

using Kind = BrowseWish::Kind;
using Name = BrowseKey::Name;

class BrowseState_ : public Browsing {
 protected:
  BrowseState_() {
    imported(calendar("Work",
                      event("standup", "Stand-up",
                            "DTSTART;TZID=Europe/Berlin:20261102T091500\r\nDTEND;TZID=Europe/Berlin:20261102T093000\r\n"
                            "RRULE:FREQ=DAILY;COUNT=10\r\n") +
                          event("lunch", "Lunch", "DTSTART:20261102T110000Z\r\nDTEND:20261102T120000Z\r\n") +
                          event("talk", "Talk", "DTSTART:20261120T110000Z\r\nDTEND:20261120T120000Z\r\n") +
                          event("fair", "Fair", "DTSTART;VALUE=DATE:20261130\r\nDTEND;VALUE=DATE:20261203\r\n") +
                          todo("rent", "Rent", "DUE;VALUE=DATE:20261101\r\n") +
                          todo("tax", "Tax", "DUE;VALUE=DATE:20261102\r\n") + todo("paint", "Paint", "")));
  }
  void goToList(int rows = 0) {
    press(Name::kTab);
    for (int i = 0; i < rows; ++i) { press(Name::kDown); }
  }
  void choose(const std::string& title) {
    if (!state.inList) { press(Name::kTab); }
    for (int i = 0; i < 40 && chosenTitle() != title; ++i) { press(Name::kDown); }
    ASSERT_EQ(chosenTitle(), title);
  }
};

TEST_F(BrowseState_, ArrowsAndLettersMoveByDaysAndWeeks) {
  sitDown();
  press(Name::kRight);
  type("j");
  EXPECT_EQ(state.day, store::LocalDay(2026, 11, 10));
  press(Name::kUp);
  type("hh");
  EXPECT_EQ(state.day, store::LocalDay(2026, 11, 1));
  type("lk");
  press(Name::kDown);
  EXPECT_EQ(state.day, store::LocalDay(2026, 11, 2));
}

TEST_F(BrowseState_, PagesMoveByMonthsAndStayInThem) {
  sitDown();
  state.day = store::LocalDay(2026, 10, 31);
  press(Name::kPageDown);
  EXPECT_EQ(state.day, store::LocalDay(2026, 11, 30));
  press(Name::kPageUp);
  EXPECT_EQ(state.day, store::LocalDay(2026, 10, 30));
  press(Name::kHome);
  EXPECT_EQ(state.day, state.today());
}

TEST_F(BrowseState_, TheListBeginsWithTheFirstThingOfTheDayAndGoesOnInTheNext) {
  sitDown();
  goToList();
  EXPECT_EQ(chosenTitle(), "Tax");
  press(Name::kDown);
  EXPECT_EQ(chosenTitle(), "Stand-up");
  press(Name::kUp);
  press(Name::kUp);
  EXPECT_EQ(chosenTitle(), "Rent") << "overdue stands above";
  for (int i = 0; i < 100; ++i) { press(Name::kDown); }
  EXPECT_EQ(chosenTitle(), "Paint") << "what has no date stands below";
}

TEST_F(BrowseState_, NothingIsChosenOnAnEmptyDay) {
  sitDown();
  state.day = store::LocalDay(2026, 11, 19);
  press(Name::kLeft);
  EXPECT_EQ(chosenRow(state), nullptr);
  EXPECT_EQ(type("x"), Kind::kNothing);
  EXPECT_THAT(state.message, HasSubstr("Nothing is chosen"));
  goToList();
  EXPECT_EQ(chosenTitle(), "Talk");
}

TEST_F(BrowseState_, MakesAnEventOnTheDayUnlessTheSentenceNamesOne) {
  sitDown();
  press(Name::kRight);
  type("nDinner 19:00 2h");
  EXPECT_EQ(press(Name::kEnter), Kind::kRun);
  EXPECT_THAT(state.message, HasSubstr("Made \"Dinner\""));
  type("n--help me");
  press(Name::kEnter);
  type("nCall friday 8:00");
  press(Name::kEnter);
  EXPECT_THAT(agenda(), HasSubstr("Dinner 03 19:00"));
  EXPECT_THAT(out, HasSubstr("Call 06 08:00"));
  EXPECT_THAT(out, HasSubstr("--help me 03"));
}

TEST_F(BrowseState_, GoesToWhatWasMadeOrTakenBack) {
  sitDown();
  type("nCall 20 november 8:00");
  press(Name::kEnter);
  EXPECT_EQ(isoDay(state.day), "2026-11-20");
  EXPECT_EQ(chosenTitle(), "Call");
  type("xy");
  press(Name::kHome);
  type("u");
  EXPECT_EQ(isoDay(state.day), "2026-11-20");
  EXPECT_EQ(chosenTitle(), "Call");
  type("NPay rent 27 november");
  press(Name::kEnter);
  EXPECT_EQ(isoDay(state.day), "2026-11-27");
  EXPECT_EQ(chosenTitle(), "Pay rent");
}

TEST_F(BrowseState_, APasteIsTextAndNeverKeys) {
  sitDown();
  type("n");
  press(BrowseKey::pasted("Dinner\n19:00\t2h\r\nxyq"));
  EXPECT_THAT(screen(), HasSubstr("New: Dinner 19:00 2h xyq"));
  press(Name::kEscape);
  choose("Lunch");
  EXPECT_EQ(press(BrowseKey::pasted("x")), Kind::kNothing);
  EXPECT_EQ(press(BrowseKey::pasted("q")), Kind::kNothing);
  EXPECT_THAT(agenda(), HasSubstr("Lunch"));
}

TEST_F(BrowseState_, MakesAReminder) {
  sitDown();
  type("NBuy milk");
  press(Name::kEnter);
  EXPECT_EQ(run({"reminders", "--format", "{title} {due}"}), ExitStatus::kDone);
  EXPECT_THAT(out, HasSubstr("Buy milk 2026-11-02"));
}

TEST_F(BrowseState_, GivesALineBackThatCouldNotBeRead) {
  sitDown();
  type("nLunch at 25:00");
  press(Name::kEnter);
  EXPECT_THAT(state.message, HasSubstr("25:00"));
  for (int i = 0; i < 5; ++i) { press(Name::kBackspace); }
  type("20:00");
  press(Name::kEnter);
  EXPECT_THAT(agenda(), HasSubstr("Lunch 02 20:00"));
}

TEST_F(BrowseState_, EscapeLeavesALineAlone) {
  sitDown();
  type("nLunch");
  EXPECT_EQ(press(Name::kEscape), Kind::kNothing);
  EXPECT_EQ(press(BrowseKey::of("q")), Kind::kQuit);
}

TEST_F(BrowseState_, RemovesASingleEventAfterAQuestionAndTakesItBack) {
  sitDown();
  choose("Lunch");
  type("x");
  EXPECT_EQ(type("n"), Kind::kNothing);
  EXPECT_THAT(agenda(), HasSubstr("Lunch"));
  press(Name::kDelete);
  EXPECT_EQ(type("y"), Kind::kRun);
  EXPECT_THAT(agenda(), Not(HasSubstr("Lunch")));
  EXPECT_EQ(chosenTitle(), "Stand-up") << "what stood below it is chosen then";
  type("u");
  EXPECT_THAT(state.message, HasSubstr("Undone: remove"));
  EXPECT_THAT(agenda(), HasSubstr("Lunch"));
}

TEST_F(BrowseState_, RemovesAsMuchOfASeriesAsIsAnswered) {
  sitDown();
  press(Name::kRight);
  choose("Stand-up");
  type("x1");
  EXPECT_THAT(agenda(), Not(HasSubstr("Stand-up 03")));
  EXPECT_THAT(out, HasSubstr("Stand-up 04"));
  press(Name::kTab);
  press(Name::kRight);
  press(Name::kRight);
  choose("Stand-up");
  type("x2");
  EXPECT_THAT(agenda(), HasSubstr("Stand-up 04"));
  EXPECT_THAT(out, Not(HasSubstr("Stand-up 05")));
  press(Name::kHome);
  press(Name::kTab);
  choose("Stand-up");
  type("x3");
  EXPECT_THAT(agenda(), Not(HasSubstr("Stand-up")));
}

TEST_F(BrowseState_, ChangesTitleAndTimeOfOneOccurrence) {
  sitDown();
  choose("Stand-up");
  type("e1");
  type("!");
  press(Name::kEnter);
  EXPECT_EQ(std::get<BrowsePrompt>(state.over).line.text(), "2026-11-02 09:15-09:30");
  for (int i = 0; i < 11; ++i) { press(Name::kBackspace); }
  type("10:00-11:00");
  press(Name::kEnter);
  EXPECT_THAT(agenda(), HasSubstr("Stand-up! 02 10:00"));
  EXPECT_THAT(out, HasSubstr("Stand-up 03 09:15"));
}

TEST_F(BrowseState_, ChangesTheHourOfAWholeSeriesAndLeavesItsDays) {
  sitDown();
  press(Name::kRight);
  choose("Stand-up");
  type("e3");
  press(Name::kEnter);
  EXPECT_EQ(std::get<BrowsePrompt>(state.over).line.text(), "09:15-09:30");
  for (int i = 0; i < 11; ++i) { press(Name::kBackspace); }
  type("10:00-11:00");
  press(Name::kEnter);
  EXPECT_THAT(agenda(), HasSubstr("Stand-up 02 10:00"));
  EXPECT_THAT(out, HasSubstr("Stand-up 03 10:00"));
}

TEST_F(BrowseState_, AChangeOfNothingIsNone) {
  sitDown();
  choose("Lunch");
  type("e");
  press(Name::kEnter);
  EXPECT_EQ(press(Name::kEnter), Kind::kNothing);
  EXPECT_EQ(state.message, "Nothing was changed.");
}

TEST_F(BrowseState_, TimesToEditAreReadAsTheyAre) {
  sitDown();
  for (const AgendaLine* row : browseRows(state)) {
    const std::string text = timesToEdit(*row, state.viewer, false);
    if (text.empty()) { continue; }
    const auto when = readWhen(text, state.setting);
    ASSERT_TRUE(when) << text;
    const auto times = timesOf(*when, state.setting);
    ASSERT_TRUE(times) << text;
    if (!row->when) { continue; }
    EXPECT_EQ(times->start, state.viewer.toLocal(row->when->start)) << text;
    EXPECT_EQ(times->end, state.viewer.toLocal(row->when->end)) << text;
  }
  imported(calendar("Odd", event("night", "Night", "DTSTART:20261102T210000Z\r\nDTEND:20261103T053000Z\r\n") +
                               event("instant", "Instant", "DTSTART:20261102T210000Z\r\n") +
                               event("trip", "Trip", "DTSTART;VALUE=DATE:20261102\r\nDTEND;VALUE=DATE:20261105\r\n")));
  look();
  choose("Night");
  EXPECT_EQ(timesToEdit(*chosenRow(state), state.viewer, false), "2026-11-02 22:00 8h30m");
  press(Name::kHome);
  choose("Instant");
  EXPECT_EQ(timesToEdit(*chosenRow(state), state.viewer, false), "2026-11-02 22:00 0m");
  EXPECT_TRUE(readWhen("2026-11-02 22:00 0m", state.setting));
  press(Name::kHome);
  press(Name::kTab);
  press(Name::kTab);
  choose("Trip");
  EXPECT_EQ(timesToEdit(*chosenRow(state), state.viewer, false), "2026-11-02 3 days");
}

TEST_F(BrowseState_, SpaceCompletesAReminderWhichStaysChosenAndOpensItAgain) {
  sitDown();
  goToList();
  ASSERT_EQ(chosenTitle(), "Tax");
  type(" ");
  EXPECT_THAT(state.message, HasSubstr("Done"));
  EXPECT_EQ(chosenTitle(), "Tax");
  EXPECT_THAT(screen(), HasSubstr("☑ Tax"));
  type(" ");
  EXPECT_THAT(screen(), HasSubstr("☐ Tax"));
  choose("Lunch");
  EXPECT_EQ(type(" "), Kind::kNothing);
  EXPECT_EQ(state.message, "Only reminders can be done.");
}

TEST_F(BrowseState_, MovesToACalendarThatIsChosen) {
  sitDown();
  choose("Lunch");
  type("m");
  EXPECT_THAT(screen(), HasSubstr("Move \"Lunch\" to"));
  EXPECT_THAT(screen(), Not(HasSubstr("● Work"))) << "it is there already";
  press(Name::kEnter);
  EXPECT_THAT(state.message, HasSubstr("Moved \"Lunch\""));
  EXPECT_EQ(run({"agenda", "--calendar", "Calendar", "--format", "{title}"}), ExitStatus::kDone);
  EXPECT_EQ(out, "Lunch\n");
}

TEST_F(BrowseState_, SearchLeadsToWhatIsFoundFarAway) {
  imported(calendar("Far", event("far", "Eclipse", "DTSTART:20270802T090000Z\r\nDTEND:20270802T100000Z\r\n") +
                               event("early", "Breakfast", "DTSTART:20270802T060000Z\r\nDTEND:20270802T070000Z\r\n")));
  sitDown();
  type("/eclip");
  EXPECT_EQ(press(Name::kEnter), Kind::kSearch);
  press(Name::kEnter);
  EXPECT_EQ(state.day, store::LocalDay(2027, 8, 2));
  EXPECT_EQ(chosenTitle(), "Eclipse");
  type("/nowhere");
  press(Name::kEnter);
  EXPECT_THAT(state.message, HasSubstr("Nothing is found"));
  type("/paint");
  press(Name::kEnter);
  press(Name::kEnter);
  EXPECT_EQ(state.day, state.today());
  EXPECT_EQ(chosenTitle(), "Paint") << "what has no date stands beside today";
}

TEST_F(BrowseState_, EnterShowsAllOfIt) {
  sitDown();
  choose("Lunch");
  EXPECT_EQ(press(Name::kEnter), Kind::kShow);
  EXPECT_THAT(screen(), HasSubstr("lunch")) << "its UID";
  press(Name::kEnter);
  EXPECT_THAT(screen(), HasSubstr("November 2026"));
}

TEST_F(BrowseState_, ChangesOfOthersKeepThePlace) {
  sitDown();
  choose("Lunch");
  imported(calendar("Work", event("early", "Early bird", "DTSTART:20261102T050000Z\r\nDTEND:20261102T060000Z\r\n")));
  look();
  EXPECT_THAT(screen(), HasSubstr("Early bird"));
  EXPECT_EQ(chosenTitle(), "Lunch");
  EXPECT_TRUE(state.inList);
}

TEST_F(BrowseState_, ADayOfSomethingLongStaysChosen) {
  sitDown();
  state.day = store::LocalDay(2026, 11, 29);
  press(Name::kRight);
  goToList(2);
  ASSERT_EQ(chosenTitle(), "Fair");
  const auto chosen = state.chosen;
  imported(calendar("Far", event("far", "Eclipse", "DTSTART:20270802T090000Z\r\nDTEND:20270802T100000Z\r\n")));
  look();
  EXPECT_EQ(state.chosen, chosen) << "its third day, and not its first";
}

TEST_F(BrowseState_, WhatWasSoughtIsNotChosenAgainLater) {
  sitDown();
  type("/lunch");
  press(Name::kEnter);
  press(Name::kEnter);
  ASSERT_EQ(chosenTitle(), "Lunch");
  press(Name::kDown);
  const std::string below = chosenTitle();
  imported(calendar("Far", event("far", "Eclipse", "DTSTART:20270802T090000Z\r\nDTEND:20270802T100000Z\r\n")));
  look();
  EXPECT_EQ(chosenTitle(), below);
}

TEST_F(BrowseState_, DaysMoveUnderTheList) {
  sitDown();
  goToList();
  press(Name::kRight);
  EXPECT_TRUE(state.inList);
  EXPECT_EQ(chosenTitle(), "Stand-up");
  EXPECT_EQ(state.day, store::LocalDay(2026, 11, 3));
  press(Name::kPageDown);
  EXPECT_FALSE(state.inList) << "nothing is there";
}

TEST_F(BrowseState_, WhatIsMadeWhereOneCalendarIsShownIsOfIt) {
  sitDown();
  for (const store::Calendar& each : state.days.calendars) {
    if (each.title == "Work" && each.holds(store::ItemKind::kEvent)) { state.only = {each}; }
  }
  type("nDinner 19:00");
  press(Name::kEnter);
  EXPECT_THAT(state.message, HasSubstr("in Work"));
  type("NSoap");
  press(Name::kEnter);
  EXPECT_THAT(state.message, HasSubstr("in Reminders")) << "it takes no reminders";
}

TEST_F(BrowseState_, AChangedOccurrenceStaysChosen) {
  sitDown();
  press(Name::kRight);
  choose("Stand-up");
  ASSERT_EQ(run({"edit", "Stand-up", "--occurrence", "2026-11-03", "--this", "--title", "Long stand-up"}),
            ExitStatus::kDone)
      << err;
  look();
  EXPECT_EQ(chosenTitle(), "Long stand-up");
}

TEST_F(BrowseState_, WhatOthersRemovedLeavesItsNeighbourChosen) {
  sitDown();
  choose("Lunch");
  ASSERT_EQ(run({"remove", "Lunch", "--yes"}), ExitStatus::kDone) << err;
  look();
  EXPECT_EQ(chosenTitle(), "Stand-up");
  ASSERT_EQ(run({"remove", "Stand-up", "Talk", "Fair", "Rent", "Tax", "Paint", "--all", "--yes"}), ExitStatus::kDone)
      << err;
  look();
  EXPECT_EQ(chosenRow(state), nullptr);
  EXPECT_FALSE(state.inList);
  EXPECT_EQ(press(Name::kEnter), Kind::kNothing);
}

TEST_F(BrowseState_, AsksOnceMoreBeforeInvitationsGo) {
  imported(calendar("Work", event("board", "Board",
                                  "DTSTART:20261102T150000Z\r\nDTEND:20261102T160000Z\r\n"
                                  "ORGANIZER:mailto:ada@example.org\r\nATTENDEE:mailto:ben@example.org\r\n")));
  sitDown();
  choose("Board");
  type("x");
  EXPECT_THAT(screen(), HasSubstr("Nobody tells its attendees"));
  type("y");
  EXPECT_THAT(agenda(), Not(HasSubstr("Board")));
}

TEST_F(BrowseState_, KnowsTheDaysThatItShows) {
  sitDown();
  state.day = store::LocalDay(2026, 11, 1);
  state.firstWeekday = cctz::weekday::sunday;
  const auto [first, last] = daysNeeded(state);
  EXPECT_EQ(first, store::LocalDay(2026, 11, 1));
  EXPECT_EQ(last, store::LocalDay(2026, 12, 12));
}

}  // namespace
}  // namespace orlocal::host
