#include "host/commands/command_line/terminal_text.h"

#include <csignal>
#include <sstream>

#include <gtest/gtest.h>

#include "host/commands/command_line/interruption.h"
#include "host/commands/command_line/progress_line.h"
#include "host/commands/words/day_words.h"

namespace orlocal::host {
namespace {

TEST(Printable, TurnsControlCharactersIntoBlanks) {
  EXPECT_EQ(printable("a\nb\x1b[31mc\x7f"), "a b [31mc ");
  EXPECT_EQ(printable("\u009b31m\u2028"), " 31m ");
}

TEST(Printable, LeavesOutMarksThatTurnTheDirectionOfWriting) {
  for (const char* mark : {"\u202a", "\u202b", "\u202c", "\u202d", "\u202e", "\u2066", "\u2067", "\u2068", "\u2069",
                           "\u200e", "\u200f", "\u061c"}) {
    EXPECT_EQ(printable(std::string("a") + mark + "b"), "ab");
  }
}

TEST(Printable, LeavesOutTextThatNobodySees) { EXPECT_EQ(printable("a\U000E0041\U000E007F\uFEFF\u2060b"), "ab"); }

TEST(Printable, LetsNoControlCharacterHideBehindAStrayByte) {
  EXPECT_EQ(printable("\xE0\x1b[2J"), "\uFFFD [2J");
  EXPECT_EQ(printable("\xF8\x1b"), "\uFFFD ");
  EXPECT_EQ(printable("\xC3"), "\uFFFD");
  EXPECT_EQ(printable("\xC0\x9B"), "\uFFFD\uFFFD");
}

TEST(Printable, KeepsJoinersAndVariationSelectors) {
  EXPECT_EQ(printable("👩\u200d💻 ❤\uFE0F नम\u200cस्ते"), "👩\u200d💻 ❤\uFE0F नम\u200cस्ते");
}

TEST(Printable, KeepsLettersOfAllScripts) { EXPECT_EQ(printable("é 予定 🎂 שבת"), "é 予定 🎂 שבת"); }

TEST(DisplayWidth, CountsCells) {
  EXPECT_EQ(displayWidth("abc"), 3U);
  EXPECT_EQ(displayWidth("予定"), 4U);
  EXPECT_EQ(displayWidth("🎂"), 2U);
  EXPECT_EQ(displayWidth("e\u0301"), 1U);
  EXPECT_EQ(displayWidth(""), 0U);
}

TEST(DisplayWidth, IsTwoForEastAsianWideLettersAndEmojiShownAsPictures) {
  for (const char* wide : {"한", "Ａ", "。", "☔", "⭐", "⚽", "𠀀", "🀄"}) { EXPECT_EQ(displayWidth(wide), 2U) << wide; }
  for (const char* narrow : {"ｱ", "☀", "★", "🌡", "🕷", "①"}) { EXPECT_EQ(displayWidth(narrow), 1U) << narrow; }
}

TEST(DisplayWidth, IsNoneForWhatJoinsTheLetterBefore) {
  EXPECT_EQ(displayWidth("ш\u0483"), 1U);
  EXPECT_EQ(displayWidth("か\u3099"), 2U);
  EXPECT_EQ(displayWidth("नम\u200cस\u094d"), 3U);
  EXPECT_EQ(displayWidth("👍🏽"), 2U);
  EXPECT_EQ(displayWidth("❤\uFE0F"), 1U);
}

TEST(DisplayWidth, CountsFormatCharactersThatAreSeen) {
  EXPECT_EQ(displayWidth("a\u00ADb"), 3U);
  EXPECT_EQ(displayWidth("\u0600"), 1U);
}

TEST(DisplayWidth, SurvivesBytesThatAreNoText) { EXPECT_GT(displayWidth("\xF0\x9F"), 0U); }

TEST(Padded, FillsUpToTheWidthAndCutsNothing) {
  EXPECT_EQ(padded("予定", 6), "予定  ");
  EXPECT_EQ(padded("abc", 2), "abc");
}

TEST(InkOnATerminal, WritesTrueColors) {
  EXPECT_EQ(Ink(true).colored(store::Rgb{1, 0.5, 0}, "x"), "\x1b[38;2;255;128;0mx\x1b[0m");
  EXPECT_EQ(Ink(true).colored(store::Rgb{300, -1, 0}, "x"), "\x1b[38;2;255;0;0mx\x1b[0m");
  EXPECT_EQ(Ink(true).colored(std::nullopt, "x"), "x");
}

TEST(InkElsewhere, WritesTheTextAlone) {
  EXPECT_EQ(Ink(false).bold("x"), "x");
  EXPECT_EQ(Ink(false).colored(store::Rgb{1, 0.5, 0}, "x"), "x");
}

TEST(DayFromWords, ReadsDaysAsPeopleTypeThem) {
  const store::LocalDay today(2026, 11, 2);
  EXPECT_EQ(dayFromWords("2024-02-29", today), store::LocalDay(2024, 2, 29));
  EXPECT_EQ(dayFromWords("today", today), today);
  EXPECT_EQ(dayFromWords("tomorrow", today), store::LocalDay(2026, 11, 3));
  EXPECT_EQ(dayFromWords("yesterday", today), store::LocalDay(2026, 11, 1));
  EXPECT_EQ(dayFromWords("+30", today), store::LocalDay(2026, 12, 2));
  EXPECT_EQ(dayFromWords("-2", today), store::LocalDay(2026, 10, 31));
}

TEST(DayFromWords, RefusesWhatIsNoDay) {
  for (const char* words :
       {"", "+", "-", "+x", "--1", "2026-02-29", "2026-1-1", "0000-01-01", "2026-11-02T09", "now"}) {
    EXPECT_EQ(dayFromWords(words, store::LocalDay(2026, 11, 2)), std::nullopt) << words;
  }
}

TEST(LongDay, NamesTheWeekday) {
  EXPECT_EQ(longDay(store::LocalDay(2026, 11, 2)), "Monday, 2 November 2026");
  EXPECT_EQ(longDay(store::LocalDay(2024, 2, 29)), "Thursday, 29 February 2024");
}

/// A progress line on a clock that the test moves.
class Progress : public testing::Test {
 protected:
  std::chrono::steady_clock::time_point now;
  std::ostringstream terminal;
  ProgressLine line{terminal, true, "Importing a.ics", [this] { return now; }};
};

TEST_F(Progress, ShowsNothingWithinTheFirstSecond) {
  now += std::chrono::milliseconds(900);
  line.update(10, 100);
  EXPECT_EQ(terminal.str(), "");
}

TEST_F(Progress, ShowsHowFarLongerWorkHasComeAndGoesAtItsEnd) {
  now += std::chrono::milliseconds(1100);
  line.update(10, 100);
  EXPECT_EQ(terminal.str(), "\r\x1b[2KImporting a.ics: 10 of 100 (10%)");
  line.clear();
  EXPECT_TRUE(terminal.str().ends_with("\r\x1b[2K"));
}

TEST_F(Progress, DoesNotFlicker) {
  now += std::chrono::milliseconds(1100);
  line.update(10, 100);
  const auto before = terminal.str();
  now += std::chrono::milliseconds(50);
  line.update(11, 100);
  EXPECT_EQ(terminal.str(), before);
}

TEST(ProgressElsewhere, ShowsNothing) {
  std::ostringstream log;
  std::chrono::steady_clock::time_point now;
  ProgressLine line(log, false, "Importing a.ics", [&now] { return now; });
  now += std::chrono::hours(1);
  line.update(10, 100);
  line.announce("reading");
  EXPECT_EQ(log.str(), "");
}

TEST(InterruptionGuard, NotesTheFirstSignalAndLeavesTheSecondToTheSystem) {
  const Interruption guard;
  EXPECT_FALSE(Interruption::flag());
  std::raise(SIGINT);
  EXPECT_TRUE(Interruption::flag());
  struct sigaction current {};
  ::sigaction(SIGINT, nullptr, &current);
  EXPECT_EQ(current.sa_handler, SIG_DFL);
}

TEST(InterruptionGuard, StartsAfresh) {
  {
    const Interruption guard;
    std::raise(SIGTERM);
  }
  const Interruption guard;
  EXPECT_FALSE(Interruption::flag());
}

}  // namespace
}  // namespace orlocal::host
