#include <csignal>

#include <gmock/gmock.h>

#include "host/commands/program_fixture.h"

namespace orlocal::host {
namespace {

using ::testing::HasSubstr;

/// Clears the screen, sets the title, turns the letters around, and begins a line of its own for eight-bit terminals.
const std::string kEvil = "\x1b[2J\x1b]0;x\x07\u202eliam\u2069\u009b5m\x7f";

/// What of `text` a terminal would obey, or show as something else.
std::vector<std::string> misleadingIn(const std::string& text) {
  std::vector<std::string> found;
  for (const std::string bad : {"\x1b", "\x07", "\x7f", "\u202e", "\u2069", "\u009b"}) {
    if (text.find(bad) != std::string::npos) { found.push_back(bad); }
  }
  return found;
}

class HarmlessOutput : public ProgramTest {
 protected:
  HarmlessOutput() { ::setenv("ORLOCAL_STORE", (folder / "calendar.db").c_str(), 1); }

  /// Runs the words, which must say something with `named` in it, and nothing that misleads.
  void expectHarmless(const std::vector<std::string>& words, const std::string& named = "liam") {
    runAsTyped(words);
    SCOPED_TRACE(words.front());
    EXPECT_THAT(out.str() + err.str(), HasSubstr(named));
    EXPECT_THAT(misleadingIn(out.str()), ::testing::IsEmpty());
    EXPECT_THAT(misleadingIn(err.str()), ::testing::IsEmpty());
  }
};

TEST_F(HarmlessOutput, OfEveryCommandThatCannotLoadThePlugIn) {
  const std::string plugin = (folder / (kEvil + ".fmx")).string();
  for (const auto& words : std::vector<std::vector<std::string>>{{"functions"},
                                                                 {"steps"},
                                                                 {"eval", "1"},
                                                                 {"run", write("one.calc", "1\n")},
                                                                 {"watch", "--file", "F", "--script", "S"},
                                                                 {},
                                                                 {"test", write("one.txt", "> 1\n1\n")}}) {
    std::vector<std::string> all{"--plugin", plugin};
    all.insert(all.end(), words.begin(), words.end());
    expectHarmless(all);
  }
}

TEST_F(HarmlessOutput, OfEveryCommandWhosePlugInIsNone) {
  const std::string plugin = write(kEvil + ".fmx", "no library");
  for (const auto& words : std::vector<std::vector<std::string>>{{"functions"}, {"steps"}, {"eval", "1"}, {}}) {
    std::vector<std::string> all{"--plugin", plugin};
    all.insert(all.end(), words.begin(), words.end());
    expectHarmless(all);
  }
}

TEST_F(HarmlessOutput, OfTranscriptsAndFilesWithSuchNames) {
  expectHarmless({"--plugin", "none", "test", (folder / kEvil).string()});
  expectHarmless({"--plugin", "none", "run", (folder / kEvil).string()});
  expectHarmless({"--plugin", "none", "test", write(kEvil + "1", "@nonsense\n")});
  expectHarmless({"--plugin", "none", "test", write(kEvil + "2", "no calculation\n")});
  expectHarmless({"--plugin", "none", "test", write("three", "@import " + kEvil + "\n> 1\n1\n")});
  expectHarmless({"--plugin", "none", "run", write(kEvil + "4", "\"" + kEvil + "\" +\n")});
}

TEST_F(HarmlessOutput, OfAnExampleThatDiffers) {
  expectHarmless({"--plugin", "none", "test", write(kEvil, "> \"" + kEvil + "\"\n" + kEvil + "x\n")});
}

TEST_F(HarmlessOutput, OfWordsThatAreOff) {
  expectHarmless({"--plugin", "none", kEvil});
  expectHarmless({"--plugin", "none", "agenda", "--from", kEvil});
  expectHarmless({"--plugin", "none", "import", (folder / kEvil).string()});
  runAsTyped({"--plugin", "none", "calendars", "new", "Work"});
  expectHarmless({"--plugin", "none", "export", "--calendar", kEvil});
  expectHarmless({"--plugin", "none", "--store", (folder / kEvil / "x" / "..").string(), "calendars"});
}

TEST_F(HarmlessOutput, OfAClockThatMakesNoSense) {
  const char* before = std::getenv("ORLOCAL_NOW");
  const std::string now = before != nullptr ? before : "";
  ::setenv("ORLOCAL_NOW", kEvil.c_str(), 1);
  expectHarmless({"--plugin", "none", "eval", "1"});
  now.empty() ? ::unsetenv("ORLOCAL_NOW") : ::setenv("ORLOCAL_NOW", now.c_str(), 1);
  runAsTyped({"--plugin", "none", "eval", "1"});
}

TEST_F(HarmlessOutput, OfTheConsole) {
  input = "\"" + kEvil + "\" +\nhelp " + kEvil + "\n" + kEvil + "\n";
  expectHarmless({"--plugin", "none"});
}

}  // namespace
}  // namespace orlocal::host
