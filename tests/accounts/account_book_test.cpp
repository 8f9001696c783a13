#include "accounts/account_book.h"

#include <gmock/gmock.h>

#include "accounts/adding.h"
#include "accounts/face_fixture.h"
#include "accounts/scripted_transport.h"
#include "accounts/sync/local_changes.h"
#include "store/edits/item_writer.h"
#include "store/remote_reader.h"

namespace orlocal::accounts {
namespace {

using testing::HasSubstr;

class BookOfAccounts : public store::StoreTest {
 protected:
  Account added(const std::string& name) {
    Account account = accountNamed(name);
    EXPECT_TRUE(AccountBook(*store).add(account));
    return account;
  }
  /// A calendar that mirrors one of the account's server.
  store::Calendar mirrored(const Account& account) {
    store::Calendar calendar;
    calendar.title = "Team";
    calendar.source = account.source;
    const auto writer = std::move(*store->startWriting());
    EXPECT_TRUE(writer->makeCalendar(calendar));
    store::Mirror mirror{0, account.source, calendar.id, "https://dav.example/team/", "{}"};
    EXPECT_TRUE(writer->remotes().put(mirror));
    EXPECT_TRUE(writer->commit());
    return calendar;
  }
};

TEST_F(BookOfAccounts, GivesWhatWasAddedInItsOrder) {
  const Account work = added("Work"), home = added("Home");
  const auto all = AccountBook(*store).all().value();
  ASSERT_EQ(all.size(), 2U);
  EXPECT_EQ(all[0].name, "Work");
  EXPECT_EQ(all[1].name, "Home");
  EXPECT_EQ(all[0].identifier, work.identifier);
  EXPECT_NE(work.identifier, home.identifier);
  EXPECT_EQ(all[0].settings.text(), work.settings.text());
}

TEST_F(BookOfAccounts, RefusesANameThatIsTaken) {
  added("Work");
  EXPECT_TRUE(AccountBook(*store).mustBeFree("Home"));
  EXPECT_FALSE(AccountBook(*store).mustBeFree("Work"));
  Account again = accountNamed("Work", AccountSettings::Kind::kSubscription);
  const Status refused = AccountBook(*store).add(again);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().code, ErrorCode::kRefused);
  EXPECT_EQ(AccountBook(*store).all().value().size(), 1U);
}

TEST_F(BookOfAccounts, NamesThoseThatThereAreWhenOneIsMissed) {
  EXPECT_THAT(AccountBook(*store).named("Work").error().message, HasSubstr("orlocal account add"));
  added("Work");
  const auto missed = AccountBook(*store).named("Wrok");
  ASSERT_FALSE(missed);
  EXPECT_EQ(missed.error().code, ErrorCode::kNotFound);
  EXPECT_EQ(missed.error().message, "There is no account \"Wrok\"; there are \"Work\".");
}

TEST_F(BookOfAccounts, SavesSettingsAndStateWithoutUndoingTheOther) {
  const Account first = added("Work");
  Account second = AccountBook(*store).named("Work").value();
  second.state.failures = 3;
  second.state.failure = "It failed.";
  second.state.trouble = Trouble::kUntrusted;
  ASSERT_TRUE(AccountBook(*store).changeSettings(first.source, [](auto& settings) { settings.paused = true; }));
  ASSERT_TRUE(AccountBook(*store).saveState(second));
  const Account now = AccountBook(*store).named("Work").value();
  EXPECT_TRUE(now.settings.paused);
  EXPECT_EQ(now.state.failures, 3);
  EXPECT_EQ(now.state.trouble, Trouble::kUntrusted);
}

TEST_F(BookOfAccounts, RemovesAnAccountWithItsCalendars) {
  const Account work = added("Work"), home = added("Home");
  const store::Calendar calendar = mirrored(work);
  ASSERT_TRUE(AccountBook(*store).remove(work));
  EXPECT_FALSE(AccountBook(*store).named("Work"));
  EXPECT_TRUE(AccountBook(*store).named("Home"));
  EXPECT_EQ(store->calendar(calendar.identifier).value(), std::nullopt);
  EXPECT_TRUE(store::RemoteReader(*store).allMirrors().value().empty());
}

TEST_F(BookOfAccounts, CountsWhatWaitsToBeSentFromAnAccount) {
  const Account work = added("Work"), home = added("Home");
  const store::Calendar calendar = mirrored(work);
  store::Item item;
  item.uid = "u";
  item.title = "Meeting";
  store::setTimes(item, store::CalendarTime::Kind::kUtc, "", store::local("2026-11-02 09:00"), 3600);
  std::vector<store::Item> none;
  const auto writer = std::move(*store->startWriting());
  ASSERT_TRUE(writer->put(calendar.id, item, none));
  ASSERT_TRUE(writer->remotes().noteUnsent(item.id));
  ASSERT_TRUE(writer->commit());
  EXPECT_EQ(AccountBook(*store).unsentOf(work), 1U);
  EXPECT_EQ(AccountBook(*store).unsentOf(home), 0U);
}

/// The calendar of an account with an item in it, which a server has as they stand.
class NewsForAnAccount : public BookOfAccounts {
 protected:
  void SetUp() override {
    BookOfAccounts::SetUp();
    people = opened();
    work = added("Work");
    home = added("Home");
    calendar = mirrored(work);
    store::Item item = plain("Meeting");
    item.calendar = calendar.id;
    ASSERT_TRUE(store::saveEvent(*people, item, std::nullopt, store::Span::kThis));
    meeting = item;
    ASSERT_TRUE(noteLocalChanges(*store));
    position = store->newestChange().value();
  }
  void TearDown() override {
    people.reset();
    BookOfAccounts::TearDown();
  }
  bool news(const Account& account) {
    const auto commits = store->outsideCommits(position).value();
    EXPECT_FALSE(commits.empty());
    EXPECT_TRUE(noteLocalChanges(*store));
    return AccountBook(*store).hasNews(account, commits).value();
  }

  std::unique_ptr<store::CalendarStore> people;
  Account work, home;
  store::Calendar calendar;
  store::Item meeting;
  store::LogPosition position;
};

TEST_F(NewsForAnAccount, AreItemsThatWereChanged) {
  meeting.location = "Here";
  ASSERT_TRUE(store::saveEvent(*people, meeting, std::nullopt, store::Span::kThis));
  const auto before = position;
  EXPECT_TRUE(news(work));
  position = before;
  EXPECT_FALSE(news(home));
}

TEST_F(NewsForAnAccount, AreNotWhatWaitedBefore) {
  store::Item other = plain("Of this machine");
  ASSERT_TRUE(store::saveEvent(*people, other, std::nullopt, store::Span::kThis));
  EXPECT_EQ(AccountBook(*store).unsentOf(work), 1U);
  EXPECT_FALSE(news(work));
}

TEST_F(NewsForAnAccount, AreItemsThatWentAndThatTheServerHas) {
  const auto writer = std::move(*store->startWriting());
  const auto mirrors = store::RemoteReader(*store).allMirrors().value();
  store::Resource resource;
  resource.mirror = mirrors.front().id;
  resource.url = resource.key = "/m.ics";
  resource.item = meeting.id;
  resource.text = "text";
  ASSERT_TRUE(writer->remotes().put(resource));
  ASSERT_TRUE(writer->commit());
  ASSERT_TRUE(people->removeEvent(meeting, std::nullopt, store::Span::kAll));
  EXPECT_TRUE(news(work));
}

TEST_F(NewsForAnAccount, AreTheCalendarsThemselves) {
  calendar.title = "Another";
  ASSERT_TRUE(people->saveCalendar(calendar));
  auto before = position;
  EXPECT_TRUE(news(work));
  position = before;
  EXPECT_FALSE(news(home));
  store::Calendar made;
  made.title = "New";
  made.source = home.source;
  ASSERT_TRUE(people->saveCalendar(made));
  before = position;
  EXPECT_TRUE(news(home));
  position = before;
  EXPECT_FALSE(news(work));
}

TEST_F(NewsForAnAccount, AreCalendarsThatWent) {
  ASSERT_TRUE(people->removeCalendar(calendar.identifier));
  EXPECT_TRUE(news(work));
}

TEST_F(BookOfAccounts, RenamesAnAccountUnlessTheNameIsTaken) {
  const Account work = added("Work");
  added("Home");
  EXPECT_EQ(AccountBook(*store).rename(work.source, "Home").error().code, ErrorCode::kRefused);
  ASSERT_TRUE(AccountBook(*store).rename(work.source, "Office"));
  EXPECT_EQ(AccountBook(*store).named("Office").value().identifier, work.identifier);
}

TEST(StateOfAnAccount, ComesBackFromItsText) {
  AccountState state;
  state.principal = "https://dav.example/ann/";
  state.homes = {"https://p1.dav.example/ann/"};
  state.schedules = true;
  state.writeConditions = Keeps::kNo;
  state.lastTry = store::at("2026-11-02 09:00");
  state.trouble = Trouble::kLater;
  state.failures = 2;
  state.wishedInterval = std::chrono::hours(1);
  EXPECT_EQ(AccountState::ofText(state.text()).value().text(), state.text());
}

TEST(NameOfAnAccount, IsItsServersOrItsDomain) {
  EXPECT_EQ(usualNameFor("https://DAV.example.org:8443/ann/"), "dav.example.org");
  EXPECT_EQ(usualNameFor("ann@example.org"), "example.org");
  EXPECT_EQ(usualNameFor("example.org/dav"), "example.org");
}

TEST(CredentialsOfAnAddress, AreSeenInItsHostPartAlone) {
  EXPECT_TRUE(hasCredentials("https://ann:x@dav.example/"));
  EXPECT_TRUE(hasCredentials("webcal://ann@dav.example"));
  EXPECT_FALSE(hasCredentials("https://dav.example/ann@example.org/"));
  EXPECT_FALSE(hasCredentials("ann@example.org"));
}

}  // namespace
}  // namespace orlocal::accounts
