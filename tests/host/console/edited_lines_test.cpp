#include "host/console/edited_lines.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orlocal::host {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

/// A person at a pseudo-terminal. The other end reads lines and answers each with `<line>`, `<cancelled>` or `<end>`.
class EditedLinesTest : public ::testing::Test {
 protected:
  EditedLinesTest() {
    std::string name = ::testing::TempDir() + "orlocal-lines-XXXXXX";
    m_folder = ::mkdtemp(name.data());
  }
  ~EditedLinesTest() override {
    hangUp();
    std::error_code error;
    std::filesystem::remove_all(m_folder, error);
  }

  std::filesystem::path history() const { return m_folder / "state" / "history"; }

  void sitDown() {
    m_child = ::forkpty(&m_terminal, nullptr, nullptr, nullptr);
    ASSERT_GE(m_child, 0);
    if (m_child == 0) { answerLines(); }
    // Only once the prompt is there are keys the editor's: before, Ctrl-C would be a signal.
    waitFor("> ");
  }

  void type(std::string_view keys) {
    ASSERT_EQ(::write(m_terminal, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }

  /// Reads on until the text has come; what was not awaited before is returned.
  std::string waitFor(std::string_view text) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (m_unread.find(text) == std::string::npos) {
      std::array<char, 4096> block{};
      pollfd ready{m_terminal, POLLIN, 0};
      if (std::chrono::steady_clock::now() > deadline) { break; }
      if (::poll(&ready, 1, 1000) <= 0) { continue; }
      const ssize_t count = ::read(m_terminal, block.data(), block.size());
      if (count <= 0) { break; }
      m_unread.append(block.data(), static_cast<std::size_t>(count));
    }
    const std::size_t found = m_unread.find(text);
    if (found == std::string::npos) {
      ADD_FAILURE() << text << " did not come; there was: " << m_unread;
      return m_unread;
    }
    const std::string seen = m_unread.substr(0, found + text.size());
    m_unread.erase(0, found + text.size());
    return seen;
  }

  void hangUp() {
    if (m_child <= 0) { return; }
    ::close(m_terminal);
    ::waitpid(m_child, nullptr, 0);
    m_child = 0;
    m_unread.clear();
  }

 private:
  [[noreturn]] void answerLines() {
    ::setenv("TERM", "xterm", 1);
    {
      const auto opened = EditedLines::open(history(), [](std::string_view before) {
        Completion completion;
        if (before == "ti") { completion = {"tle", {{"title", "title ( text )", false}}}; }
        return completion;
      });
      EditedLines& lines = **opened;
      for (;;) {
        const LineSource::Line line = lines.read("> ");
        if (line.outcome == LineSource::Outcome::kEnd) { break; }
        const bool whole = line.outcome == LineSource::Outcome::kLine;
        if (whole) { lines.remember(line.text); }
        std::printf("<%s>\n", whole ? line.text.c_str() : "cancelled");
        std::fflush(stdout);
      }
      std::puts("<end>");
      std::fflush(stdout);
    }
    ::_exit(0);
  }

  std::filesystem::path m_folder;
  std::string m_unread;
  int m_terminal = -1;
  pid_t m_child = 0;
};

TEST_F(EditedLinesTest, ReadsALineWithCharactersBeyondAscii) {
  sitDown();
  type("größe\r");
  waitFor("<größe>");
}

TEST_F(EditedLinesTest, EditsBeforeItReads) {
  sitDown();
  type(
      "ac\x02"
      "b\r");  // Ctrl-B goes back one character
  waitFor("<abc>");
}

TEST_F(EditedLinesTest, ClearsTheLineOnCtrlC) {
  sitDown();
  type("abc\x03");
  waitFor("<cancelled>");
  type("d\r");
  waitFor("<d>");
}

TEST_F(EditedLinesTest, EndsOnCtrlDOnAnEmptyLine) {
  sitDown();
  type("\x04");
  waitFor("<end>");
}

TEST_F(EditedLinesTest, CompletesAtTheTabKeyAndShowsThePrototype) {
  sitDown();
  type("ti\t");
  waitFor("title ( text )");
  type("\r");
  waitFor("<title>");
}

TEST_F(EditedLinesTest, RecallsWhatWasRemembered) {
  sitDown();
  type("first\r");
  waitFor("<first>");
  type("\x10\r");  // Ctrl-P
  waitFor("<first>");
}

TEST_F(EditedLinesTest, RecallsAcrossRuns) {
  sitDown();
  type("first\r");
  waitFor("<first>");
  hangUp();
  sitDown();
  type("\x10\r");
  waitFor("<first>");
}

TEST_F(EditedLinesTest, KeepsTheHistoryFromOtherUsers) {
  sitDown();
  type("first\r");
  waitFor("<first>");
  const auto all = std::filesystem::perms::mask;
  EXPECT_EQ(std::filesystem::status(history()).permissions() & all,
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  EXPECT_EQ(std::filesystem::status(history().parent_path()).permissions() & all, std::filesystem::perms::owner_all);
}

TEST(HistoryFileTest, LiesInTheStateFolder) {
  ::setenv("XDG_STATE_HOME", "/s", 1);
  EXPECT_EQ(historyFile(), "/s/orlocal/history");
  ::unsetenv("XDG_STATE_HOME");
  ::setenv("HOME", "/h", 1);
  EXPECT_EQ(historyFile(), "/h/.local/state/orlocal/history");
  ::unsetenv("HOME");
  EXPECT_EQ(historyFile(), "");
}

}  // namespace
}  // namespace orlocal::host
