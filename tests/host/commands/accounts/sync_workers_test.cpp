#include "host/commands/accounts/sync_workers.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gmock/gmock.h>
#include <poll.h>

#include "host/commands/accounts/account_commands.h"
#include "host/commands/accounts/calendar_server_fixture.h"
#include "store/store_fixture.h"

namespace orlocal::host {
namespace {

using accounts::Account;
using accounts::AccountBook;

std::string meeting(const std::string& uid) {
  return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Example//Tests//EN\r\nBEGIN:VEVENT\r\nUID:" + uid +
         "\r\nDTSTAMP:20260101T000000Z\r\nSUMMARY:Meeting\r\nDTSTART:20261104T090000Z\r\nDTEND:20261104T100000Z\r\n"
         "END:VEVENT\r\nEND:VCALENDAR\r\n";
}

/// A user whose accounts each have a server of their own, with no commands but those of accounts.
class WorkingSyncs : public store::StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    ::setenv("ORLOCAL_STORE", file.c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", folder.c_str(), 1);
    ::unsetenv("CREDENTIALS_DIRECTORY");
    std::ofstream(folder / "password") << "secret\n";
    std::filesystem::permissions(folder / "password", std::filesystem::perms::owner_read);
    for (std::size_t i = 0; i < servers.size(); ++i) {
      places.at(i) = servers.at(i).content().addCalendar("team", {.displayName = "Team " + std::to_string(i)});
    }
  }
  void TearDown() override {
    ::unsetenv("ORLOCAL_STORE");
    ::unsetenv("XDG_CONFIG_HOME");
    StoreTest::TearDown();
  }

  /// The account as it is before its first sync.
  Account added(const std::string& name, const std::string& url) {
    std::istringstream in;
    std::ostringstream out, err;
    CommandLine line(Streams{in, out, err});
    registerAccountCommands(line);
    const ExitStatus status = line.run("orlocal", {"account", "add", url, "--user", "alice", "--name", name,
                                                   "--password-file", (folder / "password").string()});
    EXPECT_EQ(status, ExitStatus::kDone) << err.str();
    return AccountBook(*store).named(name).value();
  }
  std::vector<Account> addedAll() {
    std::vector<Account> all;
    for (std::size_t i = 0; i < servers.size(); ++i) {
      all.push_back(added("Account " + std::to_string(i), servers.at(i).url()));
    }
    return all;
  }

  /// Those that end next.
  static std::vector<FinishedSync> nextFinished(SyncWorkers& workers) {
    for (;;) {
      pollfd bell{workers.descriptor(), POLLIN, 0};
      if (::poll(&bell, 1, 60'000) <= 0) { return {}; }
      auto finished = workers.takeFinished();
      if (!finished.empty()) { return finished; }
    }
  }
  /// What came of each, once all have ended.
  static std::vector<FinishedSync> allFinished(SyncWorkers& workers) {
    std::vector<FinishedSync> all;
    while (!workers.areIdle()) {
      auto next = nextFinished(workers);
      if (next.empty()) { break; }
      for (FinishedSync& each : next) { all.push_back(std::move(each)); }
    }
    return all;
  }

  store::CalendarId calendarTitled(const std::string& title) {
    const auto calendars = store->calendars(store::CalendarKind::kEvents);
    for (const store::Calendar& each : calendars.value()) {
      if (each.title == title) { return each.id; }
    }
    return 0;
  }

  std::array<CalendarServerOnLoopback, 3> servers;
  std::array<std::string, 3> places;  ///< of their calendars
};

TEST_F(WorkingSyncs, CarryBothWaysBesideOneAnotherAndBesideWhoSaves) {
  constexpr std::size_t kItems = 20;
  const auto accounts = addedAll();
  for (std::size_t i = 0; i < servers.size(); ++i) {
    for (std::size_t item = 0; item < kItems; ++item) {
      const std::string uid = "item-" + std::to_string(item);
      servers.at(i).content().putAs(places.at(i) + uid + ".ics", meeting(uid));
    }
  }
  const auto workers = SyncWorkers::make().value();
  for (const Account& account : accounts) { ASSERT_TRUE(workers->start(account)); }
  for (const FinishedSync& each : allFinished(*workers)) {
    ASSERT_TRUE(each.report) << each.report.error().message;
    EXPECT_FALSE(each.report->failure);
    EXPECT_EQ(each.report->received, kItems) << each.account.name;
  }
  for (const Account& account : accounts) { ASSERT_TRUE(workers->start(account)); }
  for (std::size_t i = 0; i < kItems; ++i) {
    store::Item item = plain("Saved " + std::to_string(i));
    item.calendar = calendarTitled("Team 1");
    saved(item);
  }
  EXPECT_EQ(allFinished(*workers).size(), accounts.size());
  // What was saved after its calendar's turn goes with the next.
  ASSERT_TRUE(workers->start(accounts.at(1)));
  EXPECT_EQ(allFinished(*workers).size(), 1U);
  EXPECT_EQ(servers.at(1).content().itemCount(places.at(1)), 2 * kItems);
  EXPECT_EQ(servers.at(0).content().itemCount(places.at(0)), kItems);
}

TEST_F(WorkingSyncs, PassOverWhatIsGone) {
  const Account account = added("Account", servers.front().url());
  ASSERT_TRUE(AccountBook(*store).remove(account));
  const auto workers = SyncWorkers::make().value();
  ASSERT_TRUE(workers->start(account));
  const auto finished = allFinished(*workers);
  ASSERT_EQ(finished.size(), 1U);
  EXPECT_TRUE(finished.front().passedOver);
}

TEST_F(WorkingSyncs, EndAtAWordWhileAServerIsSilent) {
  std::atomic<bool> isSilent{false};
  accounts::LoopbackServer silent([&](const accounts::SeenRequest& request) {
    return isSilent ? accounts::SentReply{"", false, true} : servers.front().answer(request);
  });
  const Account account = added("Silent", silent.url("/"));
  const Account other = added("Other", servers.back().url());
  isSilent = true;
  const std::size_t asked = silent.seen().size();
  auto workers = SyncWorkers::make().value();
  const auto startedAndAsked = [&](std::size_t before) {
    ASSERT_TRUE(workers->start(account));
    while (silent.seen().size() == before) { std::this_thread::yield(); }
  };
  startedAndAsked(asked);
  ASSERT_TRUE(workers->start(other));
  const auto first = nextFinished(*workers);
  ASSERT_EQ(first.size(), 1U);
  EXPECT_EQ(first.front().account.name, "Other") << "it is held up by nobody";
  EXPECT_TRUE(workers->isSyncing(account.source));
  workers->stop(account.source);
  const auto second = nextFinished(*workers);
  ASSERT_EQ(second.size(), 1U);
  EXPECT_EQ(second.front().account.name, "Silent");
  EXPECT_TRUE(workers->areIdle());

  // Whoever made them may go while one waits.
  startedAndAsked(silent.seen().size());
  workers.reset();
}

}  // namespace
}  // namespace orlocal::host
