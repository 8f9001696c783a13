#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>

#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include "host/commands/store_command_fixture.h"

namespace orlocal::host {
namespace {

using testing::HasSubstr;
using testing::Not;

/// The built program on a pseudo-terminal.
class BrowseTerminal : public StoreCommand {
 protected:
  BrowseTerminal() { makeStore(); }
  ~BrowseTerminal() override {
    if (m_child > 0) {
      ::kill(m_child, SIGKILL);
      int state = 0;
      ::waitpid(m_child, &state, 0);
    }
    if (m_terminal >= 0) { ::close(m_terminal); }
  }

  void start(const char* type = "xterm-256color", bool colors = true) {
    // Our own end of it keeps it open, and knows how it was set before.
    winsize size{.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
    ASSERT_EQ(::openpty(&m_terminal, &m_other, nullptr, nullptr, &size), 0);
    ASSERT_EQ(::tcgetattr(m_other, &m_before), 0);
    m_child = ::fork();
    ASSERT_GE(m_child, 0);
    if (m_child != 0) { return; }
    ::close(m_terminal);
    ::setsid();
    ::ioctl(m_other, TIOCSCTTY, 0);
    for (const int descriptor : {0, 1, 2}) { ::dup2(m_other, descriptor); }
    ::setenv("TERM", type, 1);
    ::unsetenv("COLUMNS");
    ::unsetenv("LINES");
    colors ? ::unsetenv("NO_COLOR") : ::setenv("NO_COLOR", "1", 1);
    ::execl(ORLOCAL_PROGRAM, "orlocal", "browse", nullptr);
    ::_exit(127);
  }

  void type(std::string_view keys) {
    ASSERT_EQ(::write(m_terminal, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }

  /// Reads on until the text has come, or for long. Only of what stands where nothing stood before: of what merely
  /// changes the terminal gets the letters that differ.
  void waitFor(const std::string& text) {
    const std::size_t from = m_seen;
    readUntil([&] { return m_written.find(text, from) != std::string::npos; });
    EXPECT_THAT(m_written.substr(from), HasSubstr(text));
    m_seen = m_written.size();
  }
  /// Waits until others see that; what they saw last.
  std::string waitForAgenda(const testing::Matcher<const std::string&>& wanted) {
    readUntil([&] {
      run({"agenda", "--from", "2026-09-01", "--to", "2027-01-31", "--format", "{title} {start:%F}{firstDay:%F}"});
      return wanted.Matches(out);
    });
    EXPECT_THAT(out, wanted);
    return out;
  }
  /// Its exit status, or -1 when it does not end or a signal ended it; what it wrote last is read on the way.
  int finish() {
    int state = 0;
    bool ended = false;
    readUntil([&] { return ended = ::waitpid(m_child, &state, WNOHANG) == m_child; });
    if (!ended) { return -1; }
    m_child = -1;
    return WIFEXITED(state) ? WEXITSTATUS(state) : -1;
  }
  void expectRestored() {
    termios now{};
    ASSERT_EQ(::tcgetattr(m_other, &now), 0);
    EXPECT_EQ(now.c_lflag, m_before.c_lflag);
    EXPECT_EQ(now.c_iflag, m_before.c_iflag);
    EXPECT_EQ(now.c_oflag, m_before.c_oflag);
    const auto entered = m_written.rfind("\x1b[?1049h"), left = m_written.rfind("\x1b[?1049l");
    ASSERT_NE(left, std::string::npos) << "the screen that was there before is back";
    EXPECT_GT(left, entered);
  }
  void resize(unsigned short columns, unsigned short lines) const {
    winsize size{.ws_row = lines, .ws_col = columns, .ws_xpixel = 0, .ws_ypixel = 0};
    ASSERT_EQ(::ioctl(m_terminal, TIOCSWINSZ, &size), 0);
  }
  void hangUp() {
    ::close(m_terminal);
    m_terminal = -1;
  }
  void signal(int number) const { ::kill(m_child, number); }
  const std::string& written() const { return m_written; }

 private:
  void readUntil(const std::function<bool()>& done) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!done() && std::chrono::steady_clock::now() < deadline) {
      std::array<char, 4096> block{};
      // A descriptor that is none is passed over.
      pollfd ready{m_terminal, POLLIN, 0};
      if (::poll(&ready, 1, 50) <= 0) { continue; }
      const ssize_t count = ::read(m_terminal, block.data(), block.size());
      if (count > 0) { m_written.append(block.data(), static_cast<std::size_t>(count)); }
    }
  }

  int m_terminal = -1, m_other = -1;
  pid_t m_child = -1;
  termios m_before{};
  std::string m_written;
  std::size_t m_seen = 0;
};

TEST_F(BrowseTerminal, MakesRemovesAndTakesBackAnEvent) {
  start();
  waitFor("q quit");
  type("nLunch with Grace 12:30 1h\r");
  waitForAgenda("Lunch with Grace 2026-11-02\n");
  type("\txy");
  waitForAgenda("");
  type("u");
  waitForAgenda("Lunch with Grace 2026-11-02\n");
  type("q");
  EXPECT_EQ(finish(), 0);
  expectRestored();
}

TEST_F(BrowseTerminal, KnowsTheKeysOfTerminals) {
  start();
  waitFor("q quit");
  type("\x1b[6~nPage down\r");
  waitForAgenda(HasSubstr("Page down 2026-12-02"));
  type("\x1b[5~\x1b[5~nPage up\r");
  waitForAgenda(HasSubstr("Page up 2026-10-02"));
  type("\x1bOH\x1bOC\x1bOBnHome and arrows\r");
  waitForAgenda(HasSubstr("Home and arrows 2026-11-10"));
  type("nWrng\x1bOD\x1bOD\x1bODo \x1b[3~評\r");
  waitForAgenda(HasSubstr("Wo 評ng"));
  type("nNever\x1bq");
  EXPECT_EQ(finish(), 0);
  EXPECT_THAT(waitForAgenda(HasSubstr("Page up")), Not(HasSubstr("Never")));
}

TEST_F(BrowseTerminal, TakesAPasteForText) {
  start();
  waitFor("q quit");
  type("n\x1b[200~Lunch with Grace\rx\ny\n12:30 1h\x1b[201~\r");
  waitForAgenda("Lunch with Grace x y 2026-11-02\n");
  type("\x1b[200~xyq\r\x1b[201~q");
  EXPECT_EQ(finish(), 0);
  waitForAgenda("Lunch with Grace x y 2026-11-02\n");
  EXPECT_GT(written().rfind("\x1b[?2004l"), written().find("\x1b[?2004h"));
  expectRestored();
}

TEST_F(BrowseTerminal, ShowsWhatOthersChange) {
  start();
  waitFor("q quit");
  ASSERT_EQ(run({"new", "Surprise 15:00"}), ExitStatus::kDone) << err;
  waitFor("Surprise");
  type("q");
  EXPECT_EQ(finish(), 0);
}

TEST_F(BrowseTerminal, FollowsANewSize) {
  start();
  waitFor("q quit");
  resize(20, 5);
  waitFor("too small");
  resize(100, 30);
  waitFor("q quit");
  type("q");
  EXPECT_EQ(finish(), 0);
}

TEST_F(BrowseTerminal, IsLeftByCtrlCWithTheTerminalAsItWas) {
  start();
  waitFor("q quit");
  type("nHalf a sentence\x03");
  EXPECT_EQ(finish(), 0);
  expectRestored();
  waitForAgenda("");
}

TEST_F(BrowseTerminal, IsLeftWhenItIsAskedToEndWithTheTerminalAsItWas) {
  start();
  waitFor("q quit");
  signal(SIGTERM);
  EXPECT_EQ(finish(), 0);
  expectRestored();
}

TEST_F(BrowseTerminal, EndsWhenNobodySitsThereAnyMore) {
  // As nohup does it: the signal that tells says nothing.
  const auto before = ::signal(SIGHUP, SIG_IGN);
  start();
  ::signal(SIGHUP, before);
  waitFor("q quit");
  hangUp();
  EXPECT_NE(finish(), -1);
}

TEST_F(BrowseTerminal, UsesColoursUnlessNobodyWantsThem) {
  imported(calendar("Work", event("a", "Call", "DTSTART:20261102T090000Z\r\nDTEND:20261102T100000Z\r\n")));
  start("xterm-256color", true);
  waitFor("q quit");
  EXPECT_THAT(written(), HasSubstr("\x1b[38;5;"));
  type("q");
  finish();
}

TEST_F(BrowseTerminal, UsesNoColoursWhereNobodyWantsThem) {
  imported(calendar("Work", event("a", "Call", "DTSTART:20261102T090000Z\r\nDTEND:20261102T100000Z\r\n")));
  start("xterm-256color", false);
  waitFor("q quit");
  EXPECT_THAT(written(), Not(HasSubstr("\x1b[38;5;")));
  type("q");
  finish();
}

TEST_F(BrowseTerminal, RefusesOneThatCannotBeWrittenToAtWill) {
  start("dumb");
  waitFor("`orlocal agenda` and `orlocal month`");
  EXPECT_EQ(finish(), 2);
}

TEST_F(BrowseTerminal, RefusesOneThatNobodyKnows) {
  start("no-such-terminal");
  waitFor("does not know the terminal \"no-such-terminal\"");
  EXPECT_EQ(finish(), 1);
}

TEST_F(BrowseTerminal, NeedsATerminal) {
  EXPECT_EQ(run({"browse"}), ExitStatus::kUsage);
  EXPECT_THAT(err, HasSubstr("orlocal agenda"));
  canBeAsked = true;
  EXPECT_EQ(run({"browse"}), ExitStatus::kUsage) << "to read alone is not enough";
}

}  // namespace
}  // namespace orlocal::host
