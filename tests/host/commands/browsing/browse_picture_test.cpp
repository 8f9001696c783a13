#include "host/commands/browsing/browse_picture.h"

#include "host/commands/browsing/browse_fixture.h"

namespace orlocal::host {
namespace {

using testing::Each;
using testing::HasSubstr;
using testing::Not;

using Name = BrowseKey::Name;

class BrowsePicture : public Browsing {
 protected:
  BrowsePicture() {
    imported(calendar(
        "Work",
        event("standup", "Stand-up",
              "DTSTART;TZID=Europe/Berlin:20261102T091500\r\nDTEND;TZID=Europe/Berlin:20261102T093000\r\n"
              "RRULE:FREQ=WEEKLY;BYDAY=MO,WE\r\nLOCATION:Room 4\r\n") +
            event("review", "評価会議 with a title that is longer than there is room for it",
                  "DTSTART:20261103T110000Z\r\nDTEND:20261103T120000Z\r\n") +
            event("fair", "Fair", "DTSTART;VALUE=DATE:20261105\r\nDTEND;VALUE=DATE:20261107\r\n") +
            event("off", "Called off", "DTSTART:20261104T110000Z\r\nDTEND:20261104T120000Z\r\nSTATUS:CANCELLED\r\n") +
            event("evil", "Red \x1b[31m alert", "DTSTART:20261105T110000Z\r\nDTEND:20261105T120000Z\r\n")));
    imported(calendar("Chores", todo("rent", "Rent", "DUE;VALUE=DATE:20261030\r\n") +
                                    todo("tax", "Tax", "DUE:20261102T160000Z\r\n") + todo("paint", "Paint", "")));
  }

  /// Each line is as wide as the screen, and there are as many.
  void expectWhole() const {
    const Picture picture = pictureOf(state);
    EXPECT_EQ(picture.lines.size(), state.size.lines);
    std::vector<std::size_t> widths;
    for (const PictureLine& line : picture.lines) { widths.push_back(widthOf(line)); }
    EXPECT_THAT(widths, Each(state.size.columns));
    if (picture.cursor) {
      EXPECT_LT(picture.cursor->column, state.size.columns);
      EXPECT_LT(picture.cursor->line, state.size.lines);
    }
  }
  /// The pieces that are shown reversed.
  std::string reversed() const {
    std::string text;
    for (const PictureLine& line : pictureOf(state).lines) {
      for (const Piece& piece : line) { text += piece.look.reversed ? piece.text : ""; }
    }
    return text;
  }
};

TEST_F(BrowsePicture, OfAUsualTerminal) {
  sitDown({80, 24});
  expectWhole();
  EXPECT_EQ(screen(), R"(       November 2026        │ Overdue
Mon Tue Wed Thu Fri Sat Sun │  2026-10-30   ● ☐ Rent
26  27  28  29  30• 31   1  │
 2•  3•  4•  5•  6•  7   8  │ Monday, 2 November 2026 (today)
 9• 10  11• 12  13  14  15  │  09:15–09:30  ● Stand-up ↻
16• 17  18• 19  20  21  22  │  due 17:00    ● ☐ Tax
23• 24  25• 26  27  28  29  │
30•  1   2•  3   4   5   6  │ Tuesday, 3 November 2026
                            │  12:00–13:00  ● 評価会議 with a title that is lon…
● Calendar                  │
● Work                      │ Wednesday, 4 November 2026
● Reminders                 │  09:15–09:30  ● Stand-up ↻
● Chores                    │  12:00–13:00  ● Called off (cancelled)
                            │
                            │ Thursday, 5 November 2026
                            │  all day      ● Fair (day 1 of 2)
                            │  12:00–13:00  ● Red [31m alert
────────────────────────────────────────────────────────────────────────────────
Stand-up
  When        Mon 2 Nov 2026 09:15–09:30
              15 minutes
  Repeats     every week on Monday and Wednesday
  Place       Room 4
? keys  q quit  Tab list  n new  / search  t today  u undo
)");
}

using BrowsePage_ = Browsing;

TEST_F(BrowsePage_, OfTheTerminalShowsThisPicture) {
  ASSERT_EQ(run({"import", ORLOCAL_SOURCE "/examples/work.ics", ORLOCAL_SOURCE "/examples/errands.ics"}),
            ExitStatus::kDone)
      << err;
  sitDown({80, 24});
  goTo(state, store::LocalDay(2026, 11, 6));
  press(Name::kTab);
  for (int i = 0; i < 6; ++i) { press(Name::kDown); }
  EXPECT_THAT(textOf(ORLOCAL_SOURCE "/docs/terminal.md"), HasSubstr("```text\n" + screen() + "```\n"));
}

TEST_F(BrowsePicture, OfASmallOne) {
  sitDown({40, 12});
  expectWhole();
  EXPECT_EQ(screen(), R"(       November 2026
Mon Tue Wed Thu Fri Sat Sun
 2•  3•  4•  5•  6•  7   8
────────────────────────────────────────
Overdue
 2026-10-30   ● ☐ Rent

Monday, 2 November 2026 (today)
 09:15–09:30  ● Stand-up ↻
 due 17:00    ● ☐ Tax

? keys  q quit  Tab list  n new  / sear…
)");
}

TEST_F(BrowsePicture, OfATallNarrowOne) {
  sitDown({44, 30});
  expectWhole();
  EXPECT_THAT(screen(), HasSubstr("30•  1   2•"));
  EXPECT_THAT(screen(), HasSubstr("15 minutes"));
}

TEST_F(BrowsePicture, FitsEverySize) {
  sitDown();
  for (std::size_t columns = 1; columns < 100; columns += 3) {
    for (std::size_t lines = 1; lines < 40; ++lines) {
      state.size = {columns, lines};
      expectWhole();
    }
  }
}

TEST_F(BrowsePicture, FitsEverySizeWithWhatIsInFrontOfIt) {
  sitDown();
  for (const std::string keys : {"n", "x", "?", "m", "/"}) {
    for (const Size size : {Size{28, 8}, Size{40, 12}, Size{80, 24}, Size{200, 60}}) {
      state.size = size;
      press(BrowseKey::of(keys));
      type("a very long line of words that goes on and on, beyond whatever has room on a screen, and then some");
      expectWhole();
      press(Name::kEscape);
    }
  }
}

TEST_F(BrowsePicture, SaysWhenItIsTooSmall) {
  sitDown({27, 24});
  EXPECT_THAT(screen(), HasSubstr("This is too small: 28 × 8\nis needed."));
  state.size = {80, 7};
  EXPECT_THAT(screen(), HasSubstr("too small"));
}

TEST_F(BrowsePicture, MarksWhereThePersonIs) {
  sitDown();
  EXPECT_EQ(reversed(), " 2");
  press(Name::kTab);
  EXPECT_THAT(reversed(), HasSubstr("Stand-up"));
}

TEST_F(BrowsePicture, ShowsTheColoursOfCalendars) {
  ASSERT_EQ(run({"calendars", "recolour", "Work", "#FF0000"}), ExitStatus::kDone) << err;
  sitDown();
  const std::optional color(store::Rgb{1, 0, 0});
  bool isDot = false;
  for (const PictureLine& line : pictureOf(state).lines) {
    for (const Piece& piece : line) { isDot = isDot || (piece.text == "● " && piece.look.color == color); }
  }
  EXPECT_TRUE(isDot);
}

TEST_F(BrowsePicture, HoldsNoControlCharacters) {
  sitDown();
  press(Name::kRight);
  EXPECT_THAT(screen(), HasSubstr("alert"));
  EXPECT_THAT(screen(), Not(HasSubstr("\x1b")));
}

TEST_F(BrowsePicture, FollowsTheChosenRowDownALongList) {
  sitDown({80, 10});
  press(Name::kTab);
  for (int i = 0; i < 12; ++i) {
    press(Name::kDown);
    EXPECT_THAT(reversed(), HasSubstr("●")) << i;
  }
}

TEST_F(BrowsePicture, ShowsTheEndOfALongLineWithTheCursor) {
  sitDown({40, 12});
  type("nOne two three four five six seven eight nine ten eleven");
  EXPECT_THAT(screen(), HasSubstr("ten eleven"));
  ASSERT_TRUE(pictureOf(state).cursor);
  EXPECT_EQ(pictureOf(state).cursor->line, 11);
}

TEST_F(BrowsePicture, OfTheKeys) {
  sitDown({60, 20});
  type("?");
  EXPECT_EQ(screen(), R"(Keys
  arrows hjkl by days and weeks; in the list, up and down
  PageUp/Down by months
  Home, t     today
  Tab         between the month and the list
  Enter       all that is known of it
  n, N        a new event, a new reminder: Lunch with Grace
              12:30 1h
  e           change its title and its time
  x, Delete   remove it
  Space       a reminder is done, or open again
  m           move it to another calendar
  /           search
  u           undo your last command
  ?           these keys
  q           quit



Any key goes back
)");
}

TEST_F(BrowsePicture, PointsAtWhatWasNotUnderstood) {
  sitDown();
  type("nLunch at 25:00");
  press(Name::kEnter);
  EXPECT_THAT(screen(), HasSubstr("  Lunch at 25:00\n           ^^^^^\nNew: Lunch at 25:00"));
}

}  // namespace
}  // namespace orlocal::host
