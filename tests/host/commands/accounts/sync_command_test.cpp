#include <atomic>
#include <csignal>
#include <optional>

#include "accounts/syncing.h"
#include "host/commands/accounts/account_fixture.h"
#include "host/commands/running_program.h"

namespace orlocal::host {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class SyncCommand : public AccountCommand {};

TEST_F(SyncCommand, CarriesChangesBothWays) {
  added("Work");
  synced();
  EXPECT_THAT(titles(), Contains("Team"));
  importedInto("Team", meeting("Meeting"));
  synced();
  EXPECT_THAT(out, HasSubstr("Work: 1 sent"));
  EXPECT_EQ(server.content().calendarAt(team).items.size(), 1U);
  server.content().dropCalendar(team);
  synced();
  EXPECT_THAT(titles(), Not(Contains("Team")));
}

TEST_F(SyncCommand, ListsWhatItDid) {
  added("Work");
  const auto report = listed({"sync"});
  ASSERT_EQ(report.size(), 1U);
  EXPECT_EQ(report[0]["account"], "Work");
  EXPECT_EQ(report[0]["state"], "done");
  EXPECT_EQ(report[0]["calendars"], 1);
  EXPECT_TRUE(report[0]["failure"].is_null());
  EXPECT_THAT(report[0]["troubles"], IsEmpty());
}

TEST_F(SyncCommand, GoesOnWithTheOthersWhenOneFails) {
  added("Work");
  ASSERT_EQ(run({"account", "add", server.url(), "--user", "alice", "--name", "Gone", "--password-command",
                 "cat " + file("word", "secret\n")}),
            ExitStatus::kDone);
  std::filesystem::remove(folder / "word");
  added("Home");
  EXPECT_EQ(run({"sync"}), ExitStatus::kFailed);
  EXPECT_THAT(out, HasSubstr("Work: "));
  EXPECT_THAT(out, HasSubstr("Home: "));
  EXPECT_THAT(err, HasSubstr("Gone: "));
}

TEST_F(SyncCommand, EndsWithUsageForAnUnknownName) {
  added("Work");
  EXPECT_EQ(run({"sync", "Work", "Wrok"}), ExitStatus::kUsage);
  EXPECT_THAT(err, HasSubstr("There is no account \"Wrok\""));
  EXPECT_THAT(titles(), Not(Contains("Team")));
}

TEST_F(SyncCommand, SyncsOnlyWhatIsNamed) {
  added("Work");
  added("Home");
  ASSERT_EQ(run({"sync", "Home"}), ExitStatus::kDone);
  EXPECT_FALSE(account("Home")["lastSync"].is_null());
  EXPECT_TRUE(account("Work")["lastSync"].is_null());
}

TEST_F(SyncCommand, SaysSoWhenAnotherOneRuns) {
  added("Work");
  const auto other = accounts::SyncLock::take(folder / "calendar.db");
  ASSERT_TRUE(other);
  EXPECT_EQ(run({"sync"}), ExitStatus::kFailed);
  EXPECT_THAT(err, HasSubstr("Another sync of"));
}

TEST_F(SyncCommand, HasNothingToDoWithoutAccounts) {
  EXPECT_EQ(run({"sync"}), ExitStatus::kDone);
  EXPECT_THAT(listed({"sync"}), IsEmpty());
}

TEST_F(SyncCommand, EndsWithFailureForNewConflictsAndOnlyOnce) {
  added("Work");
  synced();
  importedInto("Team", meeting("Meeting", "Room 1"));
  synced();
  const auto [name, item] = *server.content().calendarAt(team).items.begin();
  std::string elsewhere = item.text;
  server.content().putAs(team + name, elsewhere.replace(elsewhere.find("Room 1"), 6, "Room 2"));
  importedInto("Team", meeting("Meeting", "Room 3"));
  EXPECT_EQ(run({"sync"}), ExitStatus::kFailed);
  EXPECT_THAT(err, HasSubstr("orlocal conflicts"));
  EXPECT_EQ(run({"sync"}), ExitStatus::kDone);
}

class FollowingSync : public AccountCommand {};

TEST_F(FollowingSync, SendsWhatIsChangedHereAndEndsInGoodOrder) {
  added("Work");
  synced();
  RunningProgram follower({ORLOCAL_PROGRAM, "sync", "--follow"});
  EXPECT_THAT(follower.errorLine(), HasSubstr("Ctrl-C ends it"));
  importedInto("Team", meeting("Meeting"));
  EXPECT_EQ(follower.line(), "Work: 1 sent");
  follower.signal(SIGTERM);
  EXPECT_EQ(follower.finish(), 0);
}

TEST_F(FollowingSync, TakesUpAnAccountThatIsAdded) {
  RunningProgram follower({ORLOCAL_PROGRAM, "--json", "sync", "--follow"});
  EXPECT_THAT(follower.errorLine(), HasSubstr("Ctrl-C ends it"));
  added("Work");
  const auto line = nlohmann::json::parse(follower.line(), nullptr, false);
  ASSERT_TRUE(line.is_object());
  EXPECT_EQ(line["account"], "Work");
  EXPECT_EQ(line["calendars"], 1);
}

TEST_F(FollowingSync, GoesOnWithTheOthersWhenOneFailsAndSaysItOnce) {
  ASSERT_EQ(run({"account", "add", server.url(), "--user", "alice", "--name", "Gone", "--password-command",
                 "cat " + file("word", "secret\n")}),
            ExitStatus::kDone);
  std::filesystem::remove(folder / "word");
  added("Work");
  RunningProgram follower({ORLOCAL_PROGRAM, "sync", "--follow"});
  EXPECT_THAT(follower.line(), HasSubstr("Work: 1 calendar"));
  EXPECT_THAT(follower.errorLine(), HasSubstr("Ctrl-C ends it"));
  std::string said;
  while (said.find("Gone: ") == std::string::npos) {
    said = follower.errorLine();
    ASSERT_FALSE(said.empty());
  }
  importedInto("Team", meeting("Meeting"));
  EXPECT_EQ(follower.line(), "Work: 1 sent");
}

TEST_F(FollowingSync, LetsGoOfAnAccountThatIsRemoved) {
  added("Work");
  RunningProgram follower({ORLOCAL_PROGRAM, "sync", "--follow"});
  EXPECT_EQ(follower.line(), "Work: 1 calendar made, changed or removed");
  importedInto("Team", meeting("Meeting"));
  ASSERT_EQ(run({"account", "remove", "Work"}), ExitStatus::kDone) << err;
  EXPECT_THAT(titles(), Not(Contains("Team")));
  EXPECT_EQ(server.content().calendarAt(team).items.size(), 1U);
  added("Home");
  std::string line = follower.line();
  if (line == "Work: 1 sent") { line = follower.line(); }
  EXPECT_THAT(line, HasSubstr("Home: 1 received, 1 calendar"));
  follower.signal(SIGTERM);
  EXPECT_EQ(follower.finish(), 0);
}

/// With a server that from some moment on says nothing more.
class FollowingASilentServer : public AccountCommand {
 protected:
  FollowingASilentServer()
      : other([this](const accounts::SeenRequest& request) {
          return isSilent ? accounts::SentReply{"", false, true} : server.answer(request);
        }) {}
  /// Until it is asked by a service that waits for an answer from then on.
  void addedAndAsked(std::optional<RunningProgram>& follower) {
    ASSERT_EQ(
        run({"account", "add", other.url("/"), "--user", "alice", "--name", "Silent", "--password-file", password}),
        ExitStatus::kDone)
        << err;
    isSilent = true;
    const std::size_t asked = other.seen().size();
    follower.emplace(std::vector<std::string>{ORLOCAL_PROGRAM, "sync", "--follow"});
    while (other.seen().size() == asked) { ::usleep(1'000); }
  }

  std::atomic<bool> isSilent{false};
  accounts::LoopbackServer other;
};

TEST_F(FollowingASilentServer, TheOthersSendWhatIsChangedHere) {
  added("Work");
  ASSERT_EQ(run({"sync"}), ExitStatus::kDone);
  std::optional<RunningProgram> follower;
  addedAndAsked(follower);
  importedInto("Team", meeting("Meeting"));
  EXPECT_EQ(follower->line(), "Work: 1 sent");
  follower->signal(SIGTERM);
  EXPECT_EQ(follower->finish(), 0);
}

TEST_F(FollowingASilentServer, ItsAccountIsRemovedWithoutAWaitForIt) {
  std::optional<RunningProgram> follower;
  addedAndAsked(follower);
  EXPECT_EQ(run({"account", "remove", "Silent", "--discard"}), ExitStatus::kDone) << err;
  EXPECT_TRUE(account("Silent").is_null());
  follower->signal(SIGTERM);
  EXPECT_EQ(follower->finish(), 0);
}

TEST_F(FollowingASilentServer, ItsAccountIsPausedAndAskedAgainWhenItIsResumed) {
  std::optional<RunningProgram> follower;
  addedAndAsked(follower);
  ASSERT_EQ(run({"account", "pause", "Silent"}), ExitStatus::kDone);
  // Once nothing has the account in hand, its sync has been ended.
  const std::atomic<bool> never{false};
  ASSERT_TRUE(accounts::SyncLock::waitForAccount(folder / "calendar.db", 2, never));
  isSilent = false;
  ASSERT_EQ(run({"account", "resume", "Silent"}), ExitStatus::kDone);
  EXPECT_EQ(follower->line(), "Silent: 1 calendar made, changed or removed");
}

TEST_F(FollowingASilentServer, TheOthersAreSyncedByOneRoundToo) {
  std::optional<RunningProgram> follower;
  addedAndAsked(follower);
  follower.reset();
  added("Work");
  RunningProgram round({ORLOCAL_PROGRAM, "sync"});
  while (account("Work")["lastSync"].is_null()) { ::usleep(1'000); }
  round.signal(SIGINT);
  EXPECT_NE(round.finish(), 0);
}

TEST_F(FollowingSync, TakesUpAndLetsGoOfSubscriptions) {
  const std::string feed = file("feed.ics", calendar("Holidays", meeting("Day")));
  RunningProgram follower({ORLOCAL_PROGRAM, "sync", "--follow"});
  EXPECT_THAT(follower.errorLine(), HasSubstr("Ctrl-C ends it"));
  ASSERT_EQ(run({"subscribe", feed}), ExitStatus::kDone) << err;
  ASSERT_EQ(run({"unsubscribe", "Holidays"}), ExitStatus::kDone) << err;
  EXPECT_THAT(titles(), Not(Contains("Holidays")));
  added("Work");
  EXPECT_THAT(follower.line(), HasSubstr("Work: 1 calendar"));
}

TEST_F(FollowingSync, GoesByAnotherPasswordAtOnce) {
  const std::string word = file("word", "secret\n");
  ASSERT_EQ(
      run({"account", "add", server.url(), "--user", "alice", "--name", "Work", "--password-command", "cat " + word}),
      ExitStatus::kDone);
  std::filesystem::remove(word);
  RunningProgram follower({ORLOCAL_PROGRAM, "sync", "--follow"});
  std::string said;
  while (said.find("Work: ") == std::string::npos) {
    said = follower.errorLine();
    ASSERT_FALSE(said.empty());
  }
  ASSERT_EQ(run({"account", "set", "Work", "--password-file", password}), ExitStatus::kDone) << err;
  EXPECT_THAT(follower.line(), HasSubstr("Work: 1 calendar"));
}

}  // namespace
}  // namespace orlocal::host
