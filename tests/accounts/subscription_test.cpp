#include "accounts/subscription.h"

#include <fstream>
#include <functional>
#include <utility>

#include <gmock/gmock.h>

#include "accounts/face_fixture.h"
#include "accounts/scripted_transport.h"
#include "accounts/syncing.h"
#include "store/backup.h"

namespace orlocal::accounts {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kFeed = "https://feeds.example/days.ics";
const std::string kGet = std::string("GET ") + kFeed;

std::string feed(const std::string& items, const std::string& lines = "") {
  return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\n" + lines + items + "END:VCALENDAR\r\n";
}
std::string holiday(const std::string& uid, const std::string& lines = "DTSTART;VALUE=DATE:20261104\r\n") {
  return "BEGIN:VEVENT\r\nUID:" + uid + "\r\nDTSTAMP:20260101T000000Z\r\nSUMMARY:Day " + uid + "\r\n" + lines +
         "END:VEVENT\r\n";
}

class Subscription : public store::StoreTest {
 protected:
  Answer<SyncReport> subscribed(const std::string& address, const std::string& name = "Days") {
    account = accountNamed(name, AccountSettings::Kind::kSubscription);
    account.settings.address = address;
    return subscribe(*store, transport, clock, account, {});
  }
  /// To a feed with these items.
  void subscribedTo(const std::string& items, const std::string& lines = "", std::vector<HttpHeader> headers = {}) {
    transport.on(kGet, 200, feed(items, lines), std::move(headers));
    ASSERT_TRUE(subscribed(kFeed));
  }
  SyncReport refreshed(int status, const std::string& body = "", std::vector<HttpHeader> headers = {}) {
    transport = ScriptedTransport();
    transport.on(kGet, status, body, std::move(headers));
    return refreshSubscription(*store, transport, clock, account, {});
  }
  std::vector<store::Calendar> calendars() {
    auto all = store->calendars(store::CalendarKind::kEvents).value();
    std::erase_if(all, [](const store::Calendar& each) { return each.type != store::Source::Type::kSubscription; });
    return all;
  }
  /// Identifiers by title.
  std::map<std::string, std::string> items() {
    std::map<std::string, std::string> found;
    for (const store::Calendar& calendar : calendars()) {
      EXPECT_TRUE(store->forEachItem(calendar.id, [&](const store::Item& main, const std::vector<store::Item>&) {
        found[main.title.value_or("-")] = main.identifier;
        return Status();
      }));
    }
    return found;
  }
  std::vector<std::string> titles() {
    std::vector<std::string> all;
    for (const auto& [title, identifier] : items()) { all.push_back(title); }
    return all;
  }
  static std::string sentHeader(const HttpRequest& request, std::string_view name) {
    for (const HttpHeader& header : request.headers) {
      if (header.name == name) { return header.value; }
    }
    return "(none)";
  }

  ScriptedTransport transport;
  StandingClock clock;
  Account account;
};

TEST_F(Subscription, BecomesAReadOnlyCalendar) {
  subscribedTo(holiday("1") + holiday("2"));
  ASSERT_EQ(calendars().size(), 1U);
  EXPECT_EQ(calendars().front().title, "Days");
  EXPECT_TRUE(calendars().front().readOnly);
  EXPECT_TRUE(calendars().front().subscribed);
  EXPECT_THAT(titles(), ElementsAre("Day 1", "Day 2"));
  EXPECT_EQ(AccountBook(*store).named("Days").value().state.lastSuccess, clock.now());
}

TEST_F(Subscription, IsNamedAsItsTextSaysOrAfterItsAddress) {
  transport.on(kGet, 200, feed("", "X-WR-CALNAME:Holidays\r\n"));
  ASSERT_TRUE(subscribed(kFeed, ""));
  EXPECT_EQ(account.name, "Holidays");
  transport.on("GET https://feeds.example/my%20days.ics?x=1", 200, feed(""));
  ASSERT_TRUE(subscribed("https://feeds.example/my%20days.ics?x=1", ""));
  EXPECT_EQ(account.name, "my days");
}

TEST_F(Subscription, MakesNothingOfWhatIsNoCalendar) {
  transport.on(kGet, 200, "<html>Sign in</html>");
  const auto refused = subscribed(kFeed);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().trouble, Trouble::kNonsense);
  EXPECT_FALSE(subscribed("https://feeds.example/missing.ics"));
  EXPECT_FALSE(subscribed((folder / "missing.ics").string()));
  EXPECT_THAT(calendars(), IsEmpty());
  EXPECT_THAT(AccountBook(*store).all().value(), IsEmpty());
}

TEST_F(Subscription, LeavesEverythingWhenTheServerSaysThatNothingHasChanged) {
  subscribedTo(holiday("1"), "", {{"ETag", "\"7\""}, {"Last-Modified", "Mon, 02 Nov 2026 08:00:00 GMT"}});
  const SyncReport report = refreshed(304);
  EXPECT_FALSE(report.failure);
  EXPECT_EQ(report.received + report.removedHere + report.calendars, 0U);
  EXPECT_EQ(sentHeader(transport.asked.front(), "If-None-Match"), "\"7\"");
  EXPECT_EQ(sentHeader(transport.asked.front(), "If-Modified-Since"), "Mon, 02 Nov 2026 08:00:00 GMT");
  EXPECT_THAT(titles(), ElementsAre("Day 1"));
  EXPECT_EQ(account.state.etag, "\"7\"");
}

/// Somebody restores a backup while the server is asked.
class AskedWhileRestoring final : public Transport {
 public:
  AskedWhileRestoring(Transport& transport, std::function<void()> restore)
      : m_transport(transport), m_restore(std::move(restore)) {}
  Answer<HttpResponse> send(const HttpRequest& request) override {
    m_restore();
    return m_transport.send(request);
  }

 private:
  Transport& m_transport;
  std::function<void()> m_restore;
};

TEST_F(Subscription, IsFetchedAnewAfterABackupWasRestoredBesideIt) {
  subscribedTo(holiday("1"), "", {{"ETag", "\"7\""}});
  const auto backup = folder / "kept.db";
  const auto refused = store::ExistingFile::kIsRefused;
  ASSERT_TRUE(store::backUpStore(options().file, backup, refused, std::chrono::seconds(1)));
  transport = ScriptedTransport();
  transport.on(kGet, 200, feed(holiday("1") + holiday("2")), {{"ETag", "\"8\""}});
  AskedWhileRestoring asked(transport, [&] { EXPECT_TRUE(store::restoreStore(options(), backup)); });
  ASSERT_TRUE(syncNow(*store, account, asked, clock, {}));
  EXPECT_EQ(AccountBook(*store).named("Days")->state.etag, "");
  ASSERT_TRUE(syncNow(*store, account, transport, clock, {}));
  EXPECT_EQ(AccountBook(*store).named("Days")->state.etag, "\"8\"");
  EXPECT_THAT(titles(), ElementsAre("Day 1", "Day 2"));
}

TEST_F(Subscription, KeepsItsLastStateWhenWhatComesIsNoCalendar) {
  subscribedTo(holiday("1"));
  EXPECT_EQ(refreshed(404).failure->trouble, Trouble::kNotFound);
  EXPECT_EQ(refreshed(200, "<html>Moved</html>").failure->trouble, Trouble::kNonsense);
  EXPECT_EQ(refreshed(500).failure->trouble, Trouble::kServerError);
  EXPECT_THAT(titles(), ElementsAre("Day 1"));
}

TEST_F(Subscription, LosesWhatItsTextLacksAndKeepsIdentifiers) {
  subscribedTo(holiday("1") + holiday("2"));
  const std::string kept = items()["Day 1"];
  const SyncReport report = refreshed(200, feed(holiday("3") + holiday("1", "DTSTART;VALUE=DATE:20261105\r\n")));
  EXPECT_EQ(report.received, 2U);
  EXPECT_EQ(report.removedHere, 1U);
  EXPECT_THAT(titles(), ElementsAre("Day 1", "Day 3"));
  EXPECT_EQ(items()["Day 1"], kept);
}

TEST_F(Subscription, TellsOthersWhatIsGone) {
  subscribedTo(holiday("1") + holiday("2"));
  const std::string gone = items().at("Day 2");
  const auto other = opened();
  store::LogPosition position = other->newestChange().value();
  refreshed(200, feed(holiday("1")));
  const auto commits = other->outsideCommits(position).value();
  ASSERT_EQ(commits.size(), 1U);
  EXPECT_THAT(commits.front().events.deleted, ElementsAre(gone));
  EXPECT_THAT(commits.front().events.updated, IsEmpty());
}

TEST_F(Subscription, WaitsAsLongAsItsServerAsksForInSecondsOrByADate) {
  subscribedTo(holiday("1"));
  const SyncReport busy = refreshed(429, "", {{"Retry-After", "120"}});
  ASSERT_TRUE(busy.failure);
  EXPECT_EQ(busy.failure->trouble, Trouble::kLater);
  EXPECT_EQ(busy.failure->retryAfter, std::chrono::seconds(120));
  const SyncReport away = refreshed(503, "", {{"Retry-After", "Mon, 02 Nov 2026 09:00:00 GMT"}});
  EXPECT_EQ(away.failure->retryAfter, std::chrono::hours(1));
  EXPECT_THAT(titles(), ElementsAre("Day 1"));
}

TEST_F(Subscription, KeepsWhatIsThereAndCannotBeReadAnyMore) {
  subscribedTo(holiday("1") + holiday("2"));
  const SyncReport report = refreshed(200, feed(holiday("1") + holiday("2", "DTSTART:never\r\n")));
  EXPECT_FALSE(report.failure);
  EXPECT_EQ(report.troubles.size(), 1U);
  EXPECT_THAT(titles(), ElementsAre("Day 1", "Day 2"));
}

TEST_F(Subscription, IsFetchedAsOftenAsItsTextWishesWithinReason) {
  subscribedTo("", "REFRESH-INTERVAL;VALUE=DURATION:PT2H\r\n");
  EXPECT_EQ(account.state.wishedInterval, std::chrono::hours(2));
  refreshed(200, feed("", "X-PUBLISHED-TTL:PT10S\r\n"));
  EXPECT_EQ(account.state.wishedInterval, std::chrono::minutes(5));
  refreshed(200, feed("", "X-PUBLISHED-TTL:P400D\r\n"));
  EXPECT_EQ(account.state.wishedInterval, std::chrono::hours(24 * 7));
  refreshed(200, feed(""));
  EXPECT_EQ(account.state.wishedInterval, std::nullopt);
}

TEST_F(Subscription, ReadsALocalFile) {
  const auto days = folder / "days.ics";
  std::ofstream(days) << feed(holiday("1"));
  ASSERT_TRUE(subscribed(days.string()));
  std::ofstream(days) << feed(holiday("2"));
  EXPECT_FALSE(refreshSubscription(*store, transport, clock, account, {}).failure);
  EXPECT_THAT(titles(), ElementsAre("Day 2"));
  EXPECT_THAT(transport.asked, IsEmpty());
}

TEST_F(Subscription, OfWebcalTriesHttpsAndThenHttp) {
  transport.on(kGet, refusal(Trouble::kUnreachable, "No connection."));
  transport.on("GET http://feeds.example/days.ics", 200, feed(holiday("1")));
  ASSERT_TRUE(subscribed("webcal://feeds.example/days.ics"));
  EXPECT_THAT(titles(), ElementsAre("Day 1"));
}

TEST_F(Subscription, OfWebcalGoesNotWithoutTlsWhereACertificateDoesNotHold) {
  transport.on(kGet, refusal(Trouble::kUntrusted, "The certificate does not hold."));
  transport.on("GET http://feeds.example/days.ics", 200, feed(holiday("1")));
  EXPECT_FALSE(subscribed("webcal://feeds.example/days.ics"));
  EXPECT_EQ(transport.asked.size(), 1U);
}

}  // namespace
}  // namespace orlocal::accounts
