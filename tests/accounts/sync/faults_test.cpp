#include <gmock/gmock.h>

#include "accounts/sync/conflict_choice.h"
#include "accounts/sync/sync_fixture.h"
#include "store/backup.h"

namespace orlocal::accounts {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr int kMostRequests = 40;

/// Changes on both sides, and something that goes wrong while they are carried over.
class Faults : public store::StoreTest {
 protected:
  void begin(void (*quirk)(Quirks&) = nullptr) {
    server = std::make_unique<MemoryServer>();
    if (quirk != nullptr) { quirk(server->quirks); }
    MemoryServer::Calendar calendar;
    calendar.displayName = "Team";
    team = server->addCalendar("team", calendar);
    for (const char* name : {"kept", "changed here", "removed here", "changed there", "removed there"}) {
      server->putAs(there(name), eventText(name, name, "X-OTHER:yes\r\n"));
    }
    machine.reset();
    store.reset();
    std::filesystem::remove_all(folder);
    std::filesystem::create_directory(folder);
    store = opened();
    machine = std::make_unique<Machine>(*server, options());
  }
  std::string there(std::string name) const {
    std::replace(name.begin(), name.end(), ' ', '-');
    return team + name + ".ics";
  }
  void changeBothSides() {
    store::Item item = machine->items("Team").at("changed here");
    item.location = "Here";
    machine->save(item);
    item = machine->items("Team").at("changed there");
    item.notes = "also here";
    machine->save(item);
    ASSERT_TRUE(
        machine->people->removeEvent(machine->items("Team").at("removed here"), std::nullopt, store::Span::kAll));
    store::Item made = plain("made here");
    made.calendar = machine->calendar("Team").id;
    machine->save(made);
    server->putAs(there("changed there"), eventText("changed there", "changed there", "LOCATION:There\r\n"));
    server->removeAs(there("removed there"));
    server->putAs(there("made there"), eventText("made there", "made there"));
  }
  /// Until there is nothing left to do.
  int syncToTheEnd() {
    for (int tries = 1; tries < 20; ++tries) {
      const SyncReport report = machine->sync();
      if (!report.failure && report.sent + report.received + report.removedHere + report.removedThere == 0) {
        return tries;
      }
    }
    ADD_FAILURE() << "does not come to an end";
    return 0;
  }
  void expectAgreement() {
    EXPECT_THAT(machine->titles("Team"),
                ElementsAre("changed here", "changed there", "kept", "made here", "made there"));
    const auto calendar = server->calendarAt(team);
    std::vector<std::string> titles;
    for (const auto& [name, item] : calendar.items) {
      const std::size_t at = item.text.find("SUMMARY:") + 8;
      titles.push_back(item.text.substr(at, item.text.find('\r', at) - at));
    }
    EXPECT_THAT(titles, UnorderedElementsAre("changed here", "changed there", "kept", "made here", "made there"));
    EXPECT_NE(server->itemAt(there("changed here"))->text.find("LOCATION:Here"), std::string::npos);
    const std::string both = server->itemAt(there("changed there"))->text;
    EXPECT_NE(both.find("LOCATION:There"), std::string::npos);
    EXPECT_NE(both.find("DESCRIPTION:also here"), std::string::npos);
    EXPECT_EQ(machine->items("Team").at("changed there").location, "There");
    EXPECT_EQ(machine->items("Team").at("changed there").notes, "also here");
  }

  std::unique_ptr<MemoryServer> server;
  std::string team;
  std::unique_ptr<Machine> machine;
};

/// A fault at the nth request of the sync that carries the changes over.
class FaultAtEachRequest : public Faults,
                           public testing::WithParamInterface<std::pair<MemoryServer::Fault::When, int>> {
 protected:
  /// Whether the sync came so far.
  bool tryAt(int nth) {
    begin();
    EXPECT_FALSE(machine->sync().failure);
    changeBothSides();
    server->forgetLog();
    const auto [when, status] = GetParam();
    MemoryServer::Fault fault;
    fault.when = when;
    fault.status = status;
    fault.nth = static_cast<std::size_t>(nth);
    server->failNext(fault);
    machine->sync();
    const bool reached = server->log().size() >= static_cast<std::size_t>(nth);
    machine->restart(options());
    syncToTheEnd();
    return reached;
  }
};

TEST_P(FaultAtEachRequest, LosesAndDoublesNothing) {
  int nth = 1;
  for (; nth < kMostRequests; ++nth) {
    SCOPED_TRACE("request " + std::to_string(nth));
    const bool reached = tryAt(nth);
    expectAgreement();
    EXPECT_THAT(machine->conflicts(), IsEmpty());
    if (!reached || HasFailure()) { break; }
  }
  EXPECT_GT(nth, 8);
}

INSTANTIATE_TEST_SUITE_P(
    AllKinds, FaultAtEachRequest,
    testing::Values(
        std::pair(MemoryServer::Fault::When::kBefore, 502), std::pair(MemoryServer::Fault::When::kBefore, 0),
        std::pair(MemoryServer::Fault::When::kWithin, 0), std::pair(MemoryServer::Fault::When::kAfter, 0),
        std::pair(MemoryServer::Fault::When::kBefore, 401), std::pair(MemoryServer::Fault::When::kBefore, 429),
        std::pair(MemoryServer::Fault::When::kBefore, 500), std::pair(MemoryServer::Fault::When::kAfter, 500),
        std::pair(MemoryServer::Fault::When::kBefore, 503), std::pair(MemoryServer::Fault::When::kBefore, 507),
        std::pair(MemoryServer::Fault::When::kBefore, 409), std::pair(MemoryServer::Fault::When::kBefore, 412),
        std::pair(MemoryServer::Fault::When::kBefore, 423), std::pair(MemoryServer::Fault::When::kAfter, 412)));

/// Somebody restores a backup while the sync goes on that carries over what the backup has, too.
class RestoreAtEachRequest : public Faults {
 protected:
  /// Whether the sync came so far.
  bool tryAt(int nth) {
    begin();
    EXPECT_FALSE(machine->sync().failure);
    changeBothSides();
    const auto backup = folder / "kept.db";
    EXPECT_TRUE(store::backUpStore(options().file, backup, store::ExistingFile::kIsRefused, std::chrono::seconds(1)));
    int requests = 0;
    server->beforeEach = [&](const HttpRequest&) {
      if (++requests == nth) { EXPECT_TRUE(store::restoreStore(options(), backup)); }
    };
    machine->sync();
    server->beforeEach = {};
    syncToTheEnd();
    return requests >= nth;
  }
};

TEST_F(RestoreAtEachRequest, LeavesBothSidesAlike) {
  int nth = 1;
  for (bool reached = true; reached && nth < kMostRequests && !HasFailure(); ++nth) {
    SCOPED_TRACE("request " + std::to_string(nth));
    reached = tryAt(nth);
    expectAgreement();
    EXPECT_THAT(machine->conflicts(), IsEmpty());
  }
  EXPECT_GT(nth, 8);
}

/// A refusal that means something: that this user may not, or that there is no such item. It may come of nothing.
class RefusalAtEachRequest : public Faults, public testing::WithParamInterface<int> {
 protected:
  void keepMine() {
    for (const store::Conflict& conflict : machine->conflicts()) {
      ASSERT_TRUE(settle(*machine->people, conflict, ConflictChoice::kMine));
    }
  }
};

TEST_P(RefusalAtEachRequest, LeavesADecisionAtMost) {
  std::size_t nth = 1;
  for (bool reached = true; reached && nth < kMostRequests && !HasFailure(); ++nth) {
    SCOPED_TRACE("request " + std::to_string(nth));
    begin();
    EXPECT_FALSE(machine->sync().failure);
    changeBothSides();
    server->forgetLog();
    MemoryServer::Fault fault;
    fault.status = GetParam();
    fault.nth = nth;
    server->failNext(fault);
    machine->sync();
    reached = server->log().size() >= nth;
    machine->restart(options());
    syncToTheEnd();
    keepMine();
    syncToTheEnd();
    expectAgreement();
    EXPECT_THAT(machine->conflicts(), IsEmpty());
  }
  EXPECT_GT(nth, 8U);
}

INSTANTIATE_TEST_SUITE_P(Both, RefusalAtEachRequest, testing::Values(403, 404));

class FaultWhileACalendarIsMade : public Faults,
                                  public testing::WithParamInterface<std::pair<MemoryServer::Fault::When, int>> {};

TEST_P(FaultWhileACalendarIsMade, MakesItOnceAndLeavesItHere) {
  // The calendars are listed, the new one is made, looked at and listed; then comes its content.
  constexpr std::size_t kRequestsForIt = 4;
  const auto [when, status] = GetParam();
  for (std::size_t nth = 1; nth <= kRequestsForIt; ++nth) {
    SCOPED_TRACE("request " + std::to_string(nth));
    begin();
    EXPECT_FALSE(machine->sync().failure);
    store::Calendar calendar;
    calendar.title = "Mine 100 %";
    calendar.color = store::Rgb{1, 0, 0};
    calendar.source = machine->source();
    ASSERT_TRUE(machine->people->saveCalendar(calendar));
    store::Item item = plain("Lunch");
    item.calendar = calendar.id;
    machine->save(item);
    MemoryServer::Fault fault;
    fault.when = when;
    fault.status = status;
    fault.nth = nth;
    server->failNext(fault);
    machine->sync();
    machine->restart(options());
    syncToTheEnd();
    ASSERT_EQ(server->snapshot().calendars.size(), 2U);
    EXPECT_THAT(machine->titles("Mine 100 %"), ElementsAre("Lunch"));
    EXPECT_EQ(machine->calendar("Mine 100 %").identifier, calendar.identifier);
    std::vector<std::string> here;
    const auto calendars = machine->people->calendars(store::CalendarKind::kEvents);
    for (const store::Calendar& each : *calendars) {
      if (each.source == machine->source()) { here.push_back(each.title); }
    }
    EXPECT_THAT(here, UnorderedElementsAre("Team", "Mine 100 %"));
    for (const auto& [name, there] : server->snapshot().calendars) {
      if (name != "team") {
        EXPECT_EQ(there.displayName, "Mine 100 %");
        EXPECT_EQ(there.items.size(), 1U);
      }
    }
    EXPECT_THAT(machine->conflicts(), IsEmpty());
  }
}

INSTANTIATE_TEST_SUITE_P(
    AllKinds, FaultWhileACalendarIsMade,
    testing::Values(
        std::pair(MemoryServer::Fault::When::kBefore, 0), std::pair(MemoryServer::Fault::When::kWithin, 0),
        std::pair(MemoryServer::Fault::When::kAfter, 0), std::pair(MemoryServer::Fault::When::kBefore, 403),
        std::pair(MemoryServer::Fault::When::kAfter, 403), std::pair(MemoryServer::Fault::When::kBefore, 404),
        std::pair(MemoryServer::Fault::When::kBefore, 405), std::pair(MemoryServer::Fault::When::kAfter, 405),
        std::pair(MemoryServer::Fault::When::kBefore, 409), std::pair(MemoryServer::Fault::When::kAfter, 409),
        std::pair(MemoryServer::Fault::When::kBefore, 423), std::pair(MemoryServer::Fault::When::kBefore, 500),
        std::pair(MemoryServer::Fault::When::kAfter, 500), std::pair(MemoryServer::Fault::When::kBefore, 503),
        std::pair(MemoryServer::Fault::When::kBefore, 507), std::pair(MemoryServer::Fault::When::kAfter, 507)));

/// What servers do otherwise.
class QuirkyServers : public Faults, public testing::WithParamInterface<std::pair<const char*, void (*)(Quirks&)>> {};

TEST_P(QuirkyServers, ComeToAgreementToo) {
  begin(GetParam().second);
  EXPECT_FALSE(machine->sync().failure);
  changeBothSides();
  syncToTheEnd();
  expectAgreement();
  EXPECT_THAT(machine->conflicts(), IsEmpty());
}

/// A second client that uses an old token.
TEST_P(QuirkyServers, AreFollowedAfterTheirTokensWereLost) {
  begin(GetParam().second);
  EXPECT_FALSE(machine->sync().failure);
  auto writer = std::move(*machine->syncing().startWriting());
  const auto mirrors = *store::RemoteReader(machine->syncing()).allMirrors();
  for (store::Mirror mirror : mirrors) {
    MirrorState state = *MirrorState::ofText(mirror.state);
    if (!state.token.empty()) { state.token = "lost"; }
    mirror.state = state.text();
    ASSERT_TRUE(writer->remotes().put(mirror));
  }
  ASSERT_TRUE(writer->commit());
  writer.reset();
  changeBothSides();
  syncToTheEnd();
  expectAgreement();
  EXPECT_THAT(machine->conflicts(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    OneByOne, QuirkyServers,
    testing::Values(
        std::pair(
            "rewrites texts", +[](Quirks& quirks) { quirks.rewritesTexts = true; }),
        std::pair(
            "recycles ETags", +[](Quirks& quirks) { quirks.recyclesEtags = true; }),
        std::pair(
            "no ETag in PUT", +[](Quirks& quirks) { quirks.givesNoEtagInPut = true; }),
        std::pair(
            "no conditions",
            +[](Quirks& quirks) { quirks.overwritesNew = quirks.createsMissing = quirks.removesWhatChanged = true; }),
        std::pair(
            "no sync", +[](Quirks& quirks) { quirks.hasNoSync = true; }),
        std::pair(
            "neither sync nor ctag", +[](Quirks& quirks) { quirks.hasNoSync = quirks.hasNoCtag = true; }),
        std::pair(
            "seconds", +[](Quirks& quirks) { quirks.countsTokensInSeconds = true; }),
        std::pair(
            "409 for tokens", +[](Quirks& quirks) { quirks.badToken = Quirks::BadToken::kSays409; }),
        std::pair(
            "403 alone for tokens", +[](Quirks& quirks) { quirks.badToken = Quirks::BadToken::kSaysBare403; }),
        std::pair(
            "500 for tokens", +[](Quirks& quirks) { quirks.badToken = Quirks::BadToken::kFails500; }),
        std::pair(
            "lists all", +[](Quirks& quirks) { quirks.badToken = Quirks::BadToken::kListsAll; }),
        std::pair(
            "pages", +[](Quirks& quirks) { quirks.syncPage = 2; }),
        std::pair(
            "unescaped", +[](Quirks& quirks) { quirks.unescapedSyncHrefs = true; }),
        std::pair(
            "relative", +[](Quirks& quirks) { quirks.relativeHrefs = true; }),
        std::pair(
            "left out", +[](Quirks& quirks) { quirks.missingItem = Quirks::MissingItem::kIsLeftOut; }),
        std::pair(
            "fails all", +[](Quirks& quirks) { quirks.missingItem = Quirks::MissingItem::kFailsAll; }),
        std::pair(
            "chooses hrefs", +[](Quirks& quirks) { quirks.choosesHrefs = true; }),
        std::pair(
            "ignores components", +[](Quirks& quirks) { quirks.ignoresComponents = true; }),
        std::pair(
            "no privileges", +[](Quirks& quirks) { quirks.tellsNoPrivileges = true; }),
        std::pair(
            "many at once", +[](Quirks& quirks) {
              quirks.rewritesTexts = quirks.recyclesEtags = quirks.givesNoEtagInPut = quirks.overwritesNew = true;
              quirks.removesWhatChanged = quirks.countsTokensInSeconds = quirks.unescapedSyncHrefs = true;
              quirks.badToken = Quirks::BadToken::kListsAll;
              quirks.missingItem = Quirks::MissingItem::kIsLeftOut;
            })));

/// A server that moved house, or has another clock.
class OtherServers : public Faults {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    begin();
  }
};

TEST_F(OtherServers, MayNameAnItemAnew) {
  EXPECT_FALSE(machine->sync().failure);
  const std::string identifier = machine->items("Team").at("kept").identifier;
  changeBothSides();
  for (const char* name : {"kept", "changed here", "changed there"}) {
    const std::string content = server->itemAt(there(name))->text;
    server->removeAs(there(name));
    server->putAs(there(std::string("moved ") + name), content);
  }
  syncToTheEnd();
  EXPECT_EQ(machine->items("Team").at("kept").identifier, identifier);
  EXPECT_THAT(machine->titles("Team"), ElementsAre("changed here", "changed there", "kept", "made here", "made there"));
  EXPECT_THAT(machine->conflicts(), IsEmpty());
}

TEST_F(OtherServers, MayHaveAClockThatIsADayOff) {
  for (const std::int64_t off : {-86'400, 86'400}) {
    for (const bool countsSeconds : {false, true}) {
      begin();
      server->quirks.countsTokensInSeconds = countsSeconds;
      server->second += off;
      EXPECT_FALSE(machine->sync().failure);
      changeBothSides();
      syncToTheEnd();
      expectAgreement();
      EXPECT_THAT(machine->conflicts(), IsEmpty());
    }
  }
}

/// A server whose operator has put a backup back.
class RestoredServer : public Faults {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    begin();
    EXPECT_FALSE(machine->sync().failure);
    backup = server->snapshot();
  }
  void restore() {
    server->restore(backup);
    server->quirks.badToken = Quirks::BadToken::kSays403;
  }

  MemoryServer::State backup;
};

TEST_F(RestoredServer, LosesNothingThatWasMadeHereSince) {
  store::Item made = plain("made here");
  made.calendar = machine->calendar("Team").id;
  machine->save(made);
  syncToTheEnd();
  restore();
  syncToTheEnd();
  const auto conflicts = machine->conflicts();
  ASSERT_EQ(conflicts.size(), 1u);
  EXPECT_EQ(conflicts.front().title, "made here");
  EXPECT_TRUE(machine->items("Team").contains("made here"));
}

TEST_F(RestoredServer, TellsOfWhatWasChangedHereSince) {
  store::Item item = machine->items("Team").at("kept");
  item.location = "Here";
  machine->save(item);
  syncToTheEnd();
  restore();
  syncToTheEnd();
  const auto conflicts = machine->conflicts();
  ASSERT_EQ(conflicts.size(), 1u);
  EXPECT_NE(conflicts.front().mine->find("LOCATION:Here"), std::string::npos);
}

}  // namespace
}  // namespace orlocal::accounts
