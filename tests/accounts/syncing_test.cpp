#include "accounts/syncing.h"

#include <array>
#include <fstream>
#include <utility>

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "accounts/face_fixture.h"
#include "accounts/transport/loopback_server.h"
#include "store/core/outside_commits.h"

namespace orlocal::accounts {
namespace {

using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;

const store::Moment kTried = store::at("2026-11-02 09:00");

Account tried(int failures, AccountSettings::Kind kind = AccountSettings::Kind::kCalDav) {
  Account account = accountNamed("Work", kind);
  account.state.lastTry = kTried;
  account.state.failures = failures;
  return account;
}

seconds waitOf(const Account& account, double part = 0) {
  return std::chrono::duration_cast<seconds>(nextTry(account, kTried, part) - kTried);
}

TEST(NextTry, IsAtOnceForWhatWasNeverTried) { EXPECT_LT(nextTry(accountNamed("Work"), kTried, 1), kTried); }

TEST(NextTry, ComesEachMinuteAndOfSubscriptionsEachSixHours) {
  EXPECT_EQ(waitOf(tried(0)), minutes(1));
  EXPECT_EQ(waitOf(tried(0, AccountSettings::Kind::kSubscription)), hours(6));
}

TEST(NextTry, FollowsTheServersWishAndTheOwnersBeforeThat) {
  Account feed = tried(0, AccountSettings::Kind::kSubscription);
  feed.state.wishedInterval = hours(2);
  EXPECT_EQ(waitOf(feed), hours(2));
  feed.settings.every = minutes(10);
  EXPECT_EQ(waitOf(feed), minutes(10));
}

TEST(NextTry, ComesLaterAndLaterWhileItFailsUpToHalfAnHour) {
  const std::array<minutes, 7> expected{minutes(1),  minutes(2),  minutes(4), minutes(8),
                                        minutes(16), minutes(30), minutes(30)};
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(waitOf(tried(static_cast<int>(i) + 1)), expected[i]) << i + 1;
  }
  EXPECT_EQ(waitOf(tried(1'000'000)), minutes(30));
}

TEST(NextTry, IsNeverSoonerThanWithoutFailures) {
  Account feed = tried(3, AccountSettings::Kind::kSubscription);
  EXPECT_EQ(waitOf(feed), hours(6));
}

TEST(NextTry, WaitsAsLongAsTheServerAskedFor) {
  Account account = tried(1);
  account.state.notBefore = kTried + hours(2);
  EXPECT_EQ(waitOf(account), hours(2));
  account.state.notBefore = kTried + seconds(5);
  EXPECT_EQ(waitOf(account), minutes(1));
}

TEST(NextTry, IsSpreadByAQuarterOfTheWait) {
  EXPECT_EQ(waitOf(tried(0), 1), seconds(75));
  EXPECT_EQ(waitOf(tried(0), 0.5), std::chrono::duration_cast<seconds>(minutes(1) * 1.125));
  EXPECT_EQ(waitOf(tried(4), 1), minutes(10));
}

TEST(NextTry, IsAtOnceWhenTheClockWasSetBackBehindTheLastOne) {
  Account account = tried(1);
  account.state.notBefore = kTried + hours(2);
  const store::Moment before = kTried - hours(5);
  EXPECT_LE(nextTry(account, before, 1), before);
}

class LockOfASync : public store::StoreTest {};

TEST_F(LockOfASync, KeepsTwoProcessesApart) {
  const auto path = folder / "calendar.db";
  std::array<int, 2> ready{}, done{};
  ASSERT_EQ(::pipe(ready.data()), 0);
  ASSERT_EQ(::pipe(done.data()), 0);
  const pid_t child = ::fork();
  if (child == 0) {
    const bool taken = SyncLock::take(path).has_value();
    const auto lock = SyncLock::take(path);
    char byte = taken && lock ? 'y' : 'n';
    (void)!::write(ready[1], &byte, 1);
    (void)!::read(done[0], &byte, 1);
    ::_exit(0);
  }
  char byte = 0;
  ASSERT_EQ(::read(ready[0], &byte, 1), 1);
  EXPECT_EQ(byte, 'y');
  const auto refused = SyncLock::take(path);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().code, ErrorCode::kBusy);
  EXPECT_NE(refused.error().message.find("Another sync of"), std::string::npos);
  ASSERT_EQ(::write(done[1], &byte, 1), 1);
  int state = 0;
  ::waitpid(child, &state, 0);
  EXPECT_TRUE(SyncLock::take(path));
  for (const int each : {ready[0], ready[1], done[0], done[1]}) { ::close(each); }
}

/// A subscription of a local file, synced as a service does it.
class SyncNow : public store::StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    feed = folder / "feed.ics";
    write("BEGIN:VCALENDAR\r\nVERSION:2.0\r\nEND:VCALENDAR\r\n");
    account = accountNamed("Feed", AccountSettings::Kind::kSubscription);
    account.settings.address = feed.string();
    EXPECT_TRUE(AccountBook(*store).add(account));
  }
  void write(const std::string& text) { std::ofstream(feed) << text; }
  SyncReport sync() { return syncNow(*store, account, SecretsFile(folder / "secrets"), clock, {}).value(); }
  /// What was committed since the last call.
  std::int64_t commits() {
    const std::int64_t now = position();
    return now - std::exchange(m_position, now);
  }
  AccountState kept() { return AccountBook(*store).named("Feed").value().state; }

  std::filesystem::path feed;
  Account account;
  StandingClock clock;

 private:
  std::int64_t position() { return static_cast<std::int64_t>(store->generation()); }
  std::int64_t m_position = 0;
};

TEST_F(SyncNow, WritesNothingForAWhileWhenNothingIsNew) {
  sync();
  commits();
  for (int i = 0; i < 9; ++i) {
    clock.goOn(minutes(1));
    sync();
    account = AccountBook(*store).named("Feed").value();
  }
  EXPECT_EQ(commits(), 0);
  clock.goOn(minutes(1));
  sync();
  EXPECT_GT(commits(), 0);
  EXPECT_EQ(kept().lastSuccess, clock.now());
}

TEST_F(SyncNow, WritesAnEarlierMomentOnceTheClockWasSetBack) {
  sync();
  clock.goOn(-hours(5));
  sync();
  EXPECT_EQ(kept().lastSuccess, clock.now());
  commits();
  clock.goOn(minutes(1));
  sync();
  EXPECT_EQ(commits(), 0);
}

TEST_F(SyncNow, IsNotTriedBeforeTheServerWantsIt) {
  LoopbackServer busy([](const SeenRequest&) { return LoopbackServer::reply(503, "", "Retry-After: 7200\r\n"); });
  account.settings.address = busy.url("/feed.ics");
  EXPECT_TRUE(sync().failure);
  EXPECT_EQ(kept().notBefore, clock.now() + hours(2));
  account.settings.address = feed.string();
  EXPECT_FALSE(sync().failure);
  EXPECT_FALSE(kept().notBefore);
}

TEST_F(SyncNow, CountsFailuresInARowAndForgetsThemWhenItGoesWell) {
  sync();
  std::filesystem::remove(feed);
  EXPECT_TRUE(sync().failure);
  EXPECT_TRUE(sync().failure);
  EXPECT_EQ(kept().failures, 2);
  EXPECT_EQ(kept().trouble, Trouble::kNotFound);
  EXPECT_FALSE(kept().failure.empty());
  write("BEGIN:VCALENDAR\r\nVERSION:2.0\r\nEND:VCALENDAR\r\n");
  EXPECT_FALSE(sync().failure);
  EXPECT_EQ(kept().failures, 0);
  EXPECT_TRUE(kept().failure.empty());
  EXPECT_FALSE(kept().trouble);
}

/// An account on a server that loses answers.
class AnswersLost : public store::StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    account = accountNamed("Work");
    account.settings.address = MemoryServer::home();
    account.state.homes = {MemoryServer::home()};
    ASSERT_TRUE(AccountBook(*store).add(account));
    team = server.addCalendar("team");
    server.putAs(team + "lunch.ics",
                 "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VEVENT\r\nUID:lunch\r\nDTSTAMP:20261101T000000Z\r\n"
                 "DTSTART:20261103T110000Z\r\nSUMMARY:Lunch\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n");
    ASSERT_FALSE(sync().failure);
  }
  SyncReport sync() { return syncNow(*store, account, server, clock, {}).value(); }
  /// By somebody else than who syncs.
  void rename(const std::string& title) {
    const auto people = opened();
    store::SearchQuery query;
    query.text = "lunch";
    query.calendars = calendarIds();
    const auto lunch = people->search(query).value();
    ASSERT_EQ(lunch.size(), 1U);
    const auto item = people->item(lunch.front().item).value();
    store::ItemEdit edit{item, *item, {store::ItemField::kTitle}, std::nullopt};
    edit.values.title = title;
    ASSERT_TRUE(people->saveEvent(edit, std::nullopt, store::Span::kAll));
  }
  std::vector<store::CalendarId> calendarIds() {
    std::vector<store::CalendarId> ids;
    const auto calendars = store->calendars(store::CalendarKind::kEvents).value();
    for (const auto& calendar : calendars) { ids.push_back(calendar.id); }
    return ids;
  }

  MemoryServer server;
  std::string team;  ///< the calendar's address
  Account account;
  StandingClock clock;
};

TEST_F(AnswersLost, AreLookedForOnceMoreAndNothingIsDoneTwice) {
  rename("Late lunch");
  server.failNext({.when = MemoryServer::Fault::When::kAfter, .method = "PUT"});
  const SyncReport report = sync();
  EXPECT_FALSE(report.failure) << report.failure->message;
  EXPECT_EQ(report.conflicts, 0U);
  EXPECT_EQ(server.itemCount(team), 1U);
  EXPECT_NE(server.itemAt(team + "lunch.ics")->text.find("SUMMARY:Late lunch"), std::string::npos);
  EXPECT_EQ(account.state.failures, 0);
}

TEST_F(AnswersLost, AreAFailureTheSecondTime) {
  rename("Late lunch");
  server.failNext({.when = MemoryServer::Fault::When::kWithin, .times = 1'000});
  EXPECT_TRUE(sync().failure);
  EXPECT_EQ(account.state.failures, 1);
}

}  // namespace
}  // namespace orlocal::accounts
