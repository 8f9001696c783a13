#include <cstdlib>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/commands/command_line/help_text.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/store_command_fixture.h"

namespace orlocal::host {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class Help : public StoreCommand {
 protected:
  ~Help() override { ::unsetenv("COLUMNS"); }

  std::string shownFor(const std::vector<std::string>& words) {
    EXPECT_EQ(run(words), ExitStatus::kDone) << err;
    EXPECT_THAT(err, IsEmpty());
    return out;
  }
  static std::size_t widestLine(const std::string& text) {
    std::istringstream lines(text);
    std::size_t widest = 0;
    for (std::string line; std::getline(lines, line);) { widest = std::max(widest, displayWidth(line)); }
    return widest;
  }
  static CommandGuide program() {
    std::istringstream in;
    std::ostringstream out, err;
    CommandLine line(Streams{in, out, err});
    registerAllCommands(line);
    return line.guide();
  }
};

TEST_F(Help, ListsTheCommandsUnderHeadings) {
  const std::string shown = shownFor({"--help"});
  for (const char* heading : {"\nLook\n", "\nChange\n", "\nFiles\n", "\nWatching\n", "\nAccounts\n", "\nScripting\n",
                              "\nSet-up\n", "\nOptions of every command\n", "\nExit status\n", "\nSettings\n"}) {
    EXPECT_THAT(shown, HasSubstr(heading));
  }
  EXPECT_THAT(shown, AllOf(HasSubstr("orlocal COMMAND --help"), HasSubstr("ORLOCAL_STORE")));
}

TEST_F(Help, LeavesOutWhatNobodyTypes) { EXPECT_THAT(shownFor({"--help"}), Not(HasSubstr("completion-"))); }

TEST_F(Help, FitsTheTerminal) {
  ::unsetenv("COLUMNS");
  eachCommand(program(), [&](const CommandGuide& command) {
    const std::string shown = helpText(program(), command, 80);
    std::istringstream lines(shown);
    // Examples are shown as they are typed.
    for (std::string line; std::getline(lines, line);) {
      const bool example = line.starts_with("  orlocal ") || line.starts_with("  echo ");
      EXPECT_TRUE(example || displayWidth(line) <= 80) << command.typed() << ": " << line;
    }
  });
  EXPECT_LE(widestLine(shownFor({"--help"})), 80U);
  ::setenv("COLUMNS", "50", 1);
  EXPECT_LE(widestLine(shownFor({"--help"})), 50U);
  ::setenv("COLUMNS", "120", 1);
  EXPECT_GT(widestLine(shownFor({"--help"})), 80U);
}

TEST_F(Help, ShowsWhatACommandTakes) {
  const std::string shown = shownFor({"export", "--help"});
  EXPECT_THAT(shown, HasSubstr("orlocal export [OPTIONS]\n"));
  EXPECT_THAT(shown, HasSubstr("-o, --output FILE"));
  EXPECT_THAT(shown, HasSubstr("\nExamples\n  orlocal export "));
  EXPECT_THAT(shown, HasSubstr("\nOptions of every command\n"));
  EXPECT_THAT(shown, HasSubstr("--store FILE"));
}

TEST_F(Help, IsTheSameByItsCommand) {
  EXPECT_EQ(shownFor({"help", "export"}), shownFor({"export", "--help"}));
  EXPECT_EQ(shownFor({"help", "calendars", "new"}), shownFor({"calendars", "new", "--help"}));
  EXPECT_EQ(shownFor({"help"}), shownFor({"--help"}));
}

TEST_F(Help, SuggestsACommandForAMistypedOne) {
  EXPECT_EQ(run({"help", "agendda"}), ExitStatus::kUsage);
  EXPECT_EQ(err, "orlocal: There is no command \"agendda\"; did you mean \"agenda\"? See `orlocal --help`.\n");
}

TEST_F(Help, HasAnExampleForEveryCommand) {
  eachCommand(program(), [](const CommandGuide& command) {
    if (command.path.empty()) { return; }
    EXPECT_THAT(command.exampleLines(), testing::Contains(HasSubstr("orlocal " + command.path))) << command.typed();
  });
}

TEST_F(Help, TellsOfEveryWordWhatItMeans) {
  eachCommand(program(), [](const CommandGuide& command) {
    EXPECT_THAT(command.text, Not(IsEmpty())) << command.typed();
    for (const auto* words : {&command.options, &command.places}) {
      for (const WordGuide& word : *words) {
        EXPECT_THAT(word.text, Not(IsEmpty())) << command.typed() << ' ' << word.shown();
        EXPECT_NE(word.value, "TEXT") << command.typed() << ' ' << word.shown();
        EXPECT_NE(word.value, "INT") << command.typed() << ' ' << word.shown();
      }
    }
  });
}

struct Mistyped {
  std::vector<std::string> words;
  std::string said;
};

class MistypedWords : public Help, public testing::WithParamInterface<Mistyped> {};

TEST_P(MistypedWords, AreNamedWithTheNearestWordAndTheHelpThatHelps) {
  EXPECT_EQ(run(GetParam().words), ExitStatus::kUsage);
  EXPECT_EQ(err, "orlocal: " + GetParam().said + "\n");
  EXPECT_THAT(out, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    All, MistypedWords,
    testing::Values(
        Mistyped{{"agendda"}, "There is no command \"agendda\"; did you mean \"agenda\"? See `orlocal --help`."},
        Mistyped{{"cook"}, "There is no command \"cook\". See `orlocal --help`."},
        Mistyped{{"agenda", "--calender", "Work"},
                 "There is no option \"--calender\" after agenda; did you mean \"--calendar\"? See `orlocal agenda "
                 "--help`."},
        Mistyped{{"agenda", "--calender=Work"},
                 "There is no option \"--calender\" after agenda; did you mean \"--calendar\"? See `orlocal agenda "
                 "--help`."},
        Mistyped{{"agenda", "--sore", "x"},
                 "There is no option \"--sore\" after agenda; did you mean \"--store\"? See `orlocal agenda --help`."},
        Mistyped{{"account", "lst"},
                 "There is no \"lst\" after account; did you mean \"list\"? See `orlocal account --help`."},
        Mistyped{{"account"},
                 "A word is missing after account: add, set, list, show, pause, resume or remove. "
                 "See `orlocal account --help`."},
        Mistyped{{"calendars", "nwe", "Work"},
                 "There is no \"nwe\" after calendars; did you mean \"new\"? See `orlocal calendars --help`."},
        Mistyped{{"backup", "a", "b"}, "\"b\" is one word too many after backup. See `orlocal backup --help`."},
        Mistyped{{"backup"}, "FILE is missing. See `orlocal backup --help`."},
        Mistyped{{"account", "add", "https://example.com"}, "--user is missing. See `orlocal account add --help`."},
        Mistyped{{"agenda", "--from"}, "A value is missing after --from. See `orlocal agenda --help`."},
        Mistyped{{"agenda", "--from", "today", "--from", "today"},
                 "--from is given more than once. See `orlocal agenda --help`."},
        Mistyped{{"agenda", "--from", "soon"},
                 "--from: \"soon\" is no day; write 2026-11-02, 2026-11, today, tomorrow, monday or +7. See `orlocal "
                 "agenda --help`."},
        Mistyped{{"agenda", "--color", "alway"},
                 "--color is auto, always or never, and not \"alway\"; did you mean \"always\"? "
                 "See `orlocal agenda --help`."},
        Mistyped{{"calendars", "new", "A", "--kind", "cakes"},
                 "--kind is events or reminders, and not \"cakes\". See `orlocal calendars new --help`."},
        Mistyped{
            {"completion", "fihs"},
            "SHELL is bash, zsh or fish, and not \"fihs\"; did you mean \"fish\"? See `orlocal completion --help`."},
        Mistyped{{"agenda", "-x"}, "There is no option \"-x\" after agenda. See `orlocal agenda --help`."},
        Mistyped{{"conflicts", "show", "one"},
                 "ID takes a number, and not \"one\". See `orlocal conflicts show --help`."},
        Mistyped{{"watch", "--file", "A"}, "--file is given with --script only. See `orlocal watch --help`."},
        Mistyped{{"account", "add", "x", "--user", "a", "--password-file", "f", "--token-command", "t"},
                 "--password-file and --token-command exclude each other. See `orlocal account add --help`."}));

}  // namespace
}  // namespace orlocal::host
