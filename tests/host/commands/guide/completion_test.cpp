#include <array>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/commands/guide/completion_scripts.h"
#include "host/commands/guide/man_page.h"
#include "host/commands/guide/store_values.h"
#include "host/commands/store_command_fixture.h"

namespace orlocal::host {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;

std::vector<std::string> linesOfText(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) { lines.push_back(line); }
  return lines;
}

/// As a man page has them.
std::string withTypedHyphens(std::string_view text) {
  std::string escaped;
  for (const char c : text) { escaped += c == '-' ? std::string("\\-") : std::string(1, c); }
  return escaped;
}

class Completions : public StoreCommand {
 protected:
  Completions() {
    std::istringstream in;
    std::ostringstream ignored;
    CommandLine line(Streams{in, ignored, ignored});
    registerAllCommands(line);
    program = line.guide();
  }
  ~Completions() override { ::unsetenv("ORLOCAL_WAIT"); }

  /// What a program of the shell's prints; both streams.
  std::string printedBy(const std::string& command) {
    std::string printed;
    FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
    std::array<char, 4096> block{};
    for (std::size_t count = 0; (count = std::fread(block.data(), 1, block.size(), pipe)) > 0;) {
      printed.append(block.data(), count);
    }
    exitStatus = ::pclose(pipe);
    return printed;
  }

  /// What bash offers at the end of these words, which are as they were typed.
  std::vector<std::string> offeredAfter(const std::vector<std::string>& words) {
    std::string script = bashCompletion(program);
    // The shell asks the program that was built.
    script += "orlocal() { " + inShellQuotes(ORLOCAL_PROGRAM) + " \"$@\"; }\n";
    script += "COMP_WORDS=(orlocal";
    for (const std::string& word : words) { script += " " + inShellQuotes(word); }
    script += fmt::format(")\nCOMP_CWORD={}\n_orlocal\nprintf '%s\\n' \"${{COMPREPLY[@]}}\"\n", words.size());
    auto offered = linesOfText(printedBy("bash " + file("offered.bash", script)));
    EXPECT_EQ(exitStatus, 0);
    std::erase(offered, "");
    return offered;
  }

  CommandGuide program;
  int exitStatus = 0;
};

TEST_F(Completions, KnowEachCommandAndItsOptionsInEachShell) {
  const std::string bash = bashCompletion(program);
  const std::string zsh = zshCompletion(program);
  const std::string fish = fishCompletion(program);
  std::size_t commands = 0;
  eachCommand(program, [&](const CommandGuide& command) {
    ++commands;
    std::vector<std::string> options;
    for (const WordGuide& option : command.options) {
      options.insert(options.end(), option.names.begin(), option.names.end());
      for (const std::string& name : option.names) {
        EXPECT_THAT(zsh, HasSubstr(name + "[")) << command.typed();
        const std::string flag = (name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1)) + " ";
        const std::string at =
            command.path.empty() ? "complete -c orlocal -" : "__orlocal_at \\'" + command.path + "\\'";
        EXPECT_THAT(linesOfText(fish), Contains(testing::AllOf(HasSubstr(at), HasSubstr(flag)))) << command.typed();
      }
    }
    if (!options.empty()) {
      EXPECT_THAT(bash, HasSubstr(fmt::format("    '{}') echo '{}' ;;\n", command.path, fmt::join(options, " "))));
    }
    std::vector<std::string> words;
    for (const CommandGuide& word : command.words) {
      words.push_back(word.name());
      EXPECT_THAT(zsh, HasSubstr("'" + word.name() + ":")) << word.typed();
      EXPECT_THAT(fish, HasSubstr(fmt::format("'__orlocal_at \\'{}\\'' -a {} ", command.path, word.name())));
    }
    if (!words.empty()) {
      EXPECT_THAT(bash, HasSubstr(fmt::format("    '{}') echo '{}' ;;\n", command.path, fmt::join(words, " "))));
    }
  });
  EXPECT_GT(commands, 30U);
}

TEST_F(Completions, ReadAsScriptsOfTheirShells) {
  EXPECT_EQ(printedBy("bash -n " + file("a.bash", bashCompletion(program))), "");
  EXPECT_EQ(printedBy("zsh -n " + file("a.zsh", zshCompletion(program))), "");
  EXPECT_EQ(printedBy("fish --no-execute " + file("a.fish", fishCompletion(program))), "");
}

TEST_F(Completions, ArePrintedByTheirCommand) {
  EXPECT_EQ(run({"completion", "bash"}), ExitStatus::kDone);
  EXPECT_EQ(out, bashCompletion(program));
  EXPECT_EQ(run({"completion", "zsh"}), ExitStatus::kDone);
  EXPECT_EQ(out, zshCompletion(program));
  EXPECT_EQ(run({"completion", "fish"}), ExitStatus::kDone);
  EXPECT_EQ(out, fishCompletion(program));
}

TEST_F(Completions, OfferCommandsAndTheirWords) {
  EXPECT_THAT(offeredAfter({"agen"}), ElementsAre("agenda"));
  EXPECT_THAT(offeredAfter({"calendars", "re"}), ElementsAre("rename", "recolour", "remove"));
  EXPECT_THAT(offeredAfter({"--json", "calendars", "ne"}), ElementsAre("new"));
  EXPECT_THAT(offeredAfter({"help", "agen"}), ElementsAre("agenda"));
}

TEST_F(Completions, OfferTheOptionsOfTheCommandAndOfAll) {
  EXPECT_THAT(offeredAfter({"agenda", "--"}), IsSupersetOf({"--from", "--to", "--calendar", "--store", "--json"}));
  EXPECT_THAT(offeredAfter({"agenda", "--"}), Not(Contains("--salvage")));
  EXPECT_THAT(offeredAfter({"--from"}), IsEmpty());
}

TEST_F(Completions, OfferTheChoicesOfAValue) {
  EXPECT_THAT(offeredAfter({"agenda", "--color", "a"}), ElementsAre("auto", "always"));
  EXPECT_THAT(offeredAfter({"agenda", "--color", "=", "al"}), ElementsAre("always"));
  EXPECT_THAT(offeredAfter({"agenda", "--color", "="}), ElementsAre("auto", "always", "never"));
  EXPECT_THAT(offeredAfter({"conflicts", "keep", "m"}), ElementsAre("mine"));
  EXPECT_THAT(offeredAfter({"agenda", "--from", "al"}), IsEmpty());
}

TEST_F(Completions, OfferFiles) {
  const std::string begun = file("begun.ics", "").substr(0, (folder / "beg").string().size());
  EXPECT_THAT(offeredAfter({"import", begun}), ElementsAre(folder / "begun.ics"));
  EXPECT_THAT(offeredAfter({"import", "one.ics", begun}), ElementsAre(folder / "begun.ics"));
  EXPECT_THAT(offeredAfter({"--store", begun}), ElementsAre(folder / "begun.ics"));
}

TEST_F(Completions, OfferTheTitlesOfTheStore) {
  ASSERT_EQ(run({"calendars", "new", "Work at home"}), ExitStatus::kDone) << err;
  ASSERT_EQ(run({"calendars", "new", "It's"}), ExitStatus::kDone) << err;
  EXPECT_THAT(offeredAfter({"agenda", "--calendar", "Wo"}), ElementsAre("Work\\ at\\ home"));
  EXPECT_THAT(offeredAfter({"agenda", "--calendar", "Work\\ a"}), ElementsAre("Work\\ at\\ home"));
  EXPECT_THAT(offeredAfter({"agenda", "--calendar", "\"Work a"}), ElementsAre("Work at home"));
  EXPECT_THAT(offeredAfter({"calendars", "remove", "It"}), ElementsAre("It\\'s"));
}

TEST_F(Completions, AskTheStoreThatTheWordsName) {
  ASSERT_EQ(run({"calendars", "new", "Elsewhere", "--store", (folder / "other.db").string()}), ExitStatus::kDone)
      << err;
  ::setenv("ORLOCAL_STORE", (folder / "calendar.db").c_str(), 1);
  EXPECT_THAT(offeredAfter({"agenda", "--calendar", "Else"}), IsEmpty());
  EXPECT_THAT(offeredAfter({"--store", (folder / "other.db").string(), "agenda", "--calendar", "Else"}),
              ElementsAre("Elsewhere"));
}

TEST_F(Completions, AreSilentWithoutAStoreAndMakeNone) {
  for (const char* what : {"calendars", "accounts", "items", "nonsense"}) {
    EXPECT_EQ(run({"completion-values", what}), ExitStatus::kDone);
    EXPECT_EQ(out + err, "");
  }
  EXPECT_FALSE(std::filesystem::exists(folder / "calendar.db"));
  file("calendar.db", "no store at all");
  EXPECT_EQ(run({"completion-values", "calendars"}), ExitStatus::kDone);
  EXPECT_EQ(out + err, "");
}

TEST_F(Completions, KnowTitlesOfItemsAroundToday) {
  imported(calendar("Work",
                    event("a", "Lunch", "DTSTART:20261103T120000Z\r\nDTEND:20261103T130000Z\r\nRRULE:FREQ=DAILY\r\n") +
                        event("b", "Long ago", "DTSTART:20100103T120000Z\r\nDTEND:20100103T130000Z\r\n") +
                        event("c", "Two\\nlines", "DTSTART:20261103T120000Z\r\nDTEND:20261103T130000Z\r\n") +
                        todo("d", "Call home", "")));
  EXPECT_THAT(storeValues("items"), ElementsAre("Call home", "Lunch"));
}

TEST_F(Completions, StandOnManPagesThatKnowTheSame) {
  const std::string overview = manPage(program, program, CommandLine::kVersion);
  for (const CommandGuide& command : program.words) {
    EXPECT_THAT(overview, HasSubstr(".BR " + withTypedHyphens("orlocal-" + command.path) + " (1)"));
    const std::string page = manPage(program, command, CommandLine::kVersion);
    eachCommand(command, [&](const CommandGuide& each) {
      for (const WordGuide& option : each.options) {
        for (const std::string& name : option.names) {
          EXPECT_THAT(page, HasSubstr(withTypedHyphens(name))) << each.typed();
        }
      }
    });
  }
}

TEST_F(Completions, StandOnManPagesWithoutAFault) {
  eachCommand(program, [&](const CommandGuide& command) {
    if (command.path.find(' ') != std::string::npos) { return; }
    const std::string page = file("page.1", manPage(program, command, CommandLine::kVersion));
    EXPECT_EQ(printedBy("groff -k -man -ww -z -Tutf8 " + page), "") << command.typed();
  });
}

}  // namespace
}  // namespace orlocal::host
