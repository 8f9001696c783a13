#include "accounts/sync/account_sync.h"

#include <gmock/gmock.h>

#include "accounts/sync/conflict_choice.h"
#include "accounts/sync/local_changes.h"
#include "accounts/sync/sync_fixture.h"

namespace orlocal::accounts {
namespace {

using store::CalendarKind;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;

class AccountSync : public SyncTest {};

TEST_F(AccountSync, BringsCalendarsAndTheirItems) {
  server.calendarAt(team).color = "#FF8000FF";
  server.putAs(url("1.ics"), eventText("one", "Lunch"));
  server.putAs(url("2.ics"), eventText("two", "Dinner"));
  const SyncReport report = synced();
  EXPECT_EQ(report.received, 2u);
  EXPECT_EQ(report.calendars, 1u);
  EXPECT_THAT(machine->titles("Team"), ElementsAre("Dinner", "Lunch"));
  const auto calendar = machine->calendar("Team");
  EXPECT_EQ(calendar.type, store::Source::Type::kCalDav);
  EXPECT_EQ(calendar.color->bytes(), (std::array<int, 3>{255, 128, 0}));
  EXPECT_FALSE(calendar.readOnly);
  EXPECT_EQ(calendar.kind, CalendarKind::kBoth);
}

TEST_F(AccountSync, AsksOnceWhereNothingIsNew) {
  server.putAs(url("1.ics"), eventText("one", "Lunch"));
  for (int i = 0; i < 3; ++i) { synced(); }
  server.forgetLog();
  const auto generation = machine->people->generation();
  synced();
  EXPECT_EQ(server.log().size(), 1u);
  EXPECT_EQ(server.count("GET"), 0u);
  EXPECT_EQ(machine->people->generation(), generation);
}

TEST_F(AccountSync, AsksForCtagsOnlyWhereThereAreNoTokens) {
  for (const bool hasNoSync : {false, true}) {
    server.quirks.hasNoSync = hasNoSync;
    server.putAs(url(hasNoSync ? "2.ics" : "1.ics"), eventText(hasNoSync ? "two" : "one", "Lunch"));
    for (int i = 0; i < 3; ++i) { synced(); }
    server.forgetLog();
    synced();
    ASSERT_EQ(server.log().size(), 1u);
    EXPECT_EQ(server.log().front().body.find("getctag") != std::string::npos, hasNoSync);
  }
}

TEST_F(AccountSync, BringsWhatAnotherClientDid) {
  server.putAs(url("1.ics"), eventText("one", "Lunch"));
  server.putAs(url("2.ics"), eventText("two", "Dinner"));
  synced();
  const auto before = machine->items("Team").at("Lunch");
  server.putAs(url("1.ics"), eventText("one", "Late lunch"));
  server.removeAs(url("2.ics"));
  server.putAs(url("3.ics"), eventText("three", "Breakfast"));
  const SyncReport report = synced();
  EXPECT_EQ(report.received, 2u);
  EXPECT_EQ(report.removedHere, 1u);
  EXPECT_THAT(machine->titles("Team"), ElementsAre("Breakfast", "Late lunch"));
  EXPECT_EQ(machine->items("Team").at("Late lunch").identifier, before.identifier);
}

TEST_F(AccountSync, SendsWhatWasMadeChangedAndRemovedHere) {
  synced();
  store::Item made = machine->save(newEvent("Lunch"));
  EXPECT_EQ(synced().sent, 1u);
  ASSERT_EQ(server.itemCount(team), 1u);
  EXPECT_THAT(textsThere().front(), HasSubstr("SUMMARY:Lunch"));
  made = machine->items("Team").at("Lunch");
  made.title = "Dinner";
  machine->save(made);
  EXPECT_EQ(synced().sent, 1u);
  ASSERT_EQ(server.itemCount(team), 1u);
  EXPECT_THAT(textsThere().front(), HasSubstr("SUMMARY:Dinner"));
  EXPECT_EQ(synced().sent, 0u);
  ASSERT_TRUE(machine->people->removeEvent(machine->items("Team").at("Dinner"), std::nullopt, store::Span::kAll));
  EXPECT_EQ(synced().removedThere, 1u);
  EXPECT_EQ(server.itemCount(team), 0u);
  EXPECT_THAT(machine->conflicts(), IsEmpty());
}

TEST_F(AccountSync, KeepsWhatItDoesNotUnderstand) {
  server.putAs(url("1.ics"),
               eventText("one", "Lunch", "X-OTHER;P=1:some thing\r\nCATEGORIES:a,b\r\nCLASS:PRIVATE\r\n"));
  synced();
  store::Item item = machine->items("Team").at("Lunch");
  item.title = "Dinner";
  machine->save(item);
  synced();
  const std::string text = server.itemAt(url("1.ics"))->text;
  for (const char* line :
       {"SUMMARY:Dinner", "X-OTHER;P=1:some thing", "CATEGORIES:a,b", "CLASS:PRIVATE", "PRODID:-//Another"}) {
    EXPECT_THAT(text, HasSubstr(line));
  }
}

TEST_F(AccountSync, MergesChangesOfDifferentFields) {
  server.putAs(url("1.ics"), eventText("one", "Lunch"));
  synced();
  store::Item item = machine->items("Team").at("Lunch");
  item.title = "Dinner";
  machine->save(item);
  server.putAs(url("1.ics"), eventText("one", "Lunch", "LOCATION:Here\r\n"));
  const SyncReport report = synced();
  EXPECT_EQ(report.conflicts, 0u);
  EXPECT_THAT(server.itemAt(url("1.ics"))->text, HasSubstr("SUMMARY:Dinner"));
  EXPECT_THAT(server.itemAt(url("1.ics"))->text, HasSubstr("LOCATION:Here"));
  EXPECT_EQ(machine->items("Team").at("Dinner").location, "Here");
}

/// Somebody here goes on while a sync sends what was changed before.
class Meanwhile : public SyncTest {
 protected:
  void SetUp() override {
    SyncTest::SetUp();
    server.putAs(url("1.ics"), eventText("one", "Lunch", "LOCATION:Here\r\n"));
    synced();
  }
  void retitle(const std::string& title) {
    store::Item item = machine->items("Team").begin()->second;
    item.title = title;
    machine->save(item);
  }
  void remove(const std::string& title) {
    ASSERT_TRUE(machine->people->removeEvent(machine->items("Team").at(title), std::nullopt, store::Span::kAll));
  }
  /// Syncs; once the server was told of a change, and before it is asked for anything else, this is done here.
  void syncedWith(const std::function<void()>& change) {
    bool wasPut = false;
    server.beforeEach = [&](const HttpRequest& request) {
      if (wasPut) { std::exchange(pending, nullptr)(); }
      wasPut = request.method == "PUT" && pending;
    };
    pending = change;
    synced();
    server.beforeEach = {};
    EXPECT_FALSE(pending);
    synced();
    EXPECT_THAT(machine->conflicts(), IsEmpty());
  }
  std::string there() { return server.itemAt(url("1.ics"))->text; }

  std::function<void()> pending;
};

TEST_F(Meanwhile, TakesBackAChangeThatWasSent) {
  retitle("Dinner");
  syncedWith([&] { retitle("Lunch"); });
  EXPECT_THAT(machine->titles("Team"), ElementsAre("Lunch"));
  EXPECT_THAT(there(), HasSubstr("SUMMARY:Lunch"));
}

TEST_F(Meanwhile, TakesBackAFieldThatWasSentWhereAnotherIsChangedThere) {
  retitle("Dinner");
  syncedWith([&] {
    retitle("Lunch");
    server.putAs(url("1.ics"), eventText("one", "Dinner", "LOCATION:There\r\n"));
  });
  EXPECT_EQ(machine->items("Team").at("Lunch").location, "There");
  EXPECT_THAT(there(), AllOf(HasSubstr("SUMMARY:Lunch"), HasSubstr("LOCATION:There")));
}

TEST_F(Meanwhile, PutsBackAPlaceWhoseRemovalWasSent) {
  store::Item item = machine->items("Team").at("Lunch");
  item.location.reset();
  machine->save(item);
  syncedWith([&] {
    item = machine->items("Team").at("Lunch");
    item.location = "Here";
    machine->save(item);
    server.putAs(url("1.ics"), eventText("one", "Late lunch"));
  });
  EXPECT_EQ(machine->items("Team").at("Late lunch").location, "Here");
  EXPECT_THAT(there(), AllOf(HasSubstr("SUMMARY:Late lunch"), HasSubstr("LOCATION:Here")));
}

TEST_F(Meanwhile, RemovesWhatWasChangedAndSent) {
  retitle("Dinner");
  syncedWith([&] { remove("Dinner"); });
  EXPECT_THAT(machine->titles("Team"), IsEmpty());
  EXPECT_EQ(server.itemCount(team), 0u);
}

TEST_F(Meanwhile, RemovesWhatWasMadeAndSent) {
  machine->save(newEvent("Breakfast"));
  syncedWith([&] { remove("Breakfast"); });
  EXPECT_THAT(machine->titles("Team"), ElementsAre("Lunch"));
  EXPECT_EQ(server.itemCount(team), 1u);
}

/// Both sides changed one field of one item.
class Conflict : public SyncTest {
 protected:
  void SetUp() override {
    SyncTest::SetUp();
    server.putAs(url("1.ics"), eventText("one", "Lunch"));
    synced();
  }
  void changeHere(const std::string& title, const std::string& place = "") {
    store::Item item = machine->items("Team").begin()->second;
    item.title = title;
    if (!place.empty()) { item.location = place; }
    machine->save(item);
  }
  void removeHere() {
    ASSERT_TRUE(machine->people->removeEvent(machine->items("Team").begin()->second, std::nullopt, store::Span::kAll));
  }
  void choose(ConflictChoice choice) {
    ASSERT_EQ(machine->conflicts().size(), 1u);
    const auto status = settle(machine->syncing(), machine->conflicts().front(), choice);
    ASSERT_TRUE(status) << status.error().message;
    EXPECT_THAT(machine->conflicts(), IsEmpty());
    synced();
    synced();
  }
  std::string there() { return server.itemAt(url("1.ics"))->text; }
};

TEST_F(Conflict, LeavesTheServersAndKeepsOurs) {
  changeHere("Dinner", "Here");
  server.putAs(url("1.ics"), eventText("one", "Supper"));
  EXPECT_EQ(synced().conflicts, 1u);
  const auto item = machine->items("Team").begin()->second;
  EXPECT_EQ(item.title, "Supper");
  EXPECT_EQ(item.location, "Here");
  EXPECT_THAT(there(), HasSubstr("LOCATION:Here"));
  ASSERT_EQ(machine->conflicts().size(), 1u);
  const auto conflict = machine->conflicts().front();
  EXPECT_EQ(conflict.fields, "title");
  EXPECT_THAT(*conflict.mine, HasSubstr("SUMMARY:Dinner"));
  EXPECT_THAT(*conflict.theirs, HasSubstr("SUMMARY:Supper"));
  EXPECT_EQ(conflict.item, item.id);
  EXPECT_EQ(synced().conflicts, 0u);
}

TEST_F(Conflict, IsSettledByOurs) {
  changeHere("Dinner");
  server.putAs(url("1.ics"), eventText("one", "Supper"));
  synced();
  server.putAs(url("1.ics"), eventText("one", "Supper", "LOCATION:There\r\n"));
  synced();
  choose(ConflictChoice::kMine);
  EXPECT_THAT(there(), HasSubstr("SUMMARY:Dinner"));
  EXPECT_THAT(there(), HasSubstr("LOCATION:There"));
  EXPECT_THAT(machine->titles("Team"), ElementsAre("Dinner"));
}

TEST_F(Conflict, SettledByOursLeavesWhatTheServerChangedBesides) {
  changeHere("Dinner");
  server.putAs(url("1.ics"), eventText("one", "Supper", "LOCATION:There\r\nX-NEW:yes\r\n"));
  synced();
  choose(ConflictChoice::kMine);
  EXPECT_THAT(there(), HasSubstr("SUMMARY:Dinner"));
  EXPECT_THAT(there(), HasSubstr("LOCATION:There"));
  EXPECT_THAT(there(), HasSubstr("X-NEW:yes"));
}

TEST_F(Conflict, IsSettledByTheirs) {
  changeHere("Dinner");
  server.putAs(url("1.ics"), eventText("one", "Supper"));
  synced();
  choose(ConflictChoice::kTheirs);
  EXPECT_THAT(there(), HasSubstr("SUMMARY:Supper"));
  EXPECT_THAT(machine->titles("Team"), ElementsAre("Supper"));
}

TEST_F(Conflict, IsSettledByKeepingBoth) {
  changeHere("Dinner");
  server.putAs(url("1.ics"), eventText("one", "Supper"));
  synced();
  choose(ConflictChoice::kBoth);
  EXPECT_THAT(machine->titles("Team"), ElementsAre("Dinner", "Supper"));
  EXPECT_EQ(server.itemCount(team), 2u);
}

TEST_F(Conflict, OfARemovalThereKeepsOursUntilItIsSettled) {
  changeHere("Dinner");
  server.removeAs(url("1.ics"));
  EXPECT_EQ(synced().conflicts, 1u);
  synced();
  EXPECT_THAT(machine->titles("Team"), ElementsAre("Dinner"));
  EXPECT_EQ(server.itemCount(team), 0u);
  choose(ConflictChoice::kMine);
  EXPECT_EQ(server.itemCount(team), 1u);
  EXPECT_THAT(machine->titles("Team"), ElementsAre("Dinner"));
}

TEST_F(Conflict, OfARemovalThereMayTakeItHereToo) {
  changeHere("Dinner");
  server.removeAs(url("1.ics"));
  synced();
  choose(ConflictChoice::kTheirs);
  EXPECT_THAT(machine->titles("Team"), IsEmpty());
  EXPECT_EQ(server.itemCount(team), 0u);
}

TEST_F(Conflict, OfARemovalHereBringsTheServersBack) {
  removeHere();
  server.putAs(url("1.ics"), eventText("one", "Supper"));
  EXPECT_EQ(synced().conflicts, 1u);
  EXPECT_THAT(machine->titles("Team"), ElementsAre("Supper"));
  EXPECT_EQ(server.itemCount(team), 1u);
  choose(ConflictChoice::kMine);
  EXPECT_THAT(machine->titles("Team"), IsEmpty());
  EXPECT_EQ(server.itemCount(team), 0u);
}

TEST_F(Conflict, IsNoneWhereBothRemovedIt) {
  removeHere();
  server.removeAs(url("1.ics"));
  EXPECT_EQ(synced().conflicts, 0u);
  EXPECT_THAT(machine->titles("Team"), IsEmpty());
  EXPECT_EQ(store::RemoteReader(*machine->people).resources(1)->size(), 0u);
}

TEST_F(AccountSync, MovesAnItemBetweenCalendars) {
  const std::string other = server.addCalendar("other", [] {
    MemoryServer::Calendar calendar;
    calendar.displayName = "Other";
    return calendar;
  }());
  server.putAs(url("1.ics"), eventText("one", "Lunch", "LAST-MODIFIED:20261102T080000Z\r\nX-OTHER:kept\r\n"));
  synced();
  store::Item item = machine->items("Team").at("Lunch");
  item.calendar = machine->calendar("Other").id;
  machine->save(item);
  synced();
  EXPECT_EQ(server.itemCount(team), 0u);
  ASSERT_EQ(server.itemCount(other), 1u);
  EXPECT_THAT(server.calendarAt(other).items.begin()->second.text, HasSubstr("X-OTHER:kept"));
  EXPECT_THAT(machine->titles("Other"), ElementsAre("Lunch"));
  EXPECT_THAT(machine->titles("Team"), IsEmpty());
}

TEST_F(AccountSync, RemovesThereWhatMovesToThisMachinesOwnCalendar) {
  server.putAs(url("1.ics"), eventText("one", "Lunch"));
  synced();
  store::Item item = machine->items("Team").at("Lunch");
  item.calendar = 1;
  machine->save(item);
  synced();
  EXPECT_EQ(server.itemCount(team), 0u);
  EXPECT_TRUE(machine->people->wholeItem(item.id)->has_value());
}

TEST_F(AccountSync, BringsSeriesWithTheirChangedOccurrencesBothWays) {
  synced();
  store::Item series = newEvent("Daily");
  series.recurrence.rules = {store::rule(store::RecurrenceRule::Frequency::kDaily, 5)};
  series = machine->save(series);
  synced();
  server.putAs(url("2.ics"), eventText("two", "Weekly", "RRULE:FREQ=WEEKLY;COUNT=4\r\n"));
  synced();
  // One occurrence here …
  const auto first = *machine->people->occurrenceAt(series, store::at("2026-11-03 09:00"));
  ASSERT_TRUE(first);
  store::ItemEdit edit;
  edit.opened = *machine->people->item(series.id);
  edit.values = *edit.opened;
  edit.values.title = "Daily, moved";
  edit.set.add(store::ItemField::kTitle);
  ASSERT_TRUE(machine->people->saveEvent(edit, first, store::Span::kThis));
  synced();
  int changed = 0;
  for (const std::string& text : textsThere()) { changed += text.find("RECURRENCE-ID") != std::string::npos ? 1 : 0; }
  EXPECT_EQ(changed, 1);
  // … and the end of the other series there.
  server.putAs(url("2.ics"), eventText("two", "Weekly", "RRULE:FREQ=WEEKLY;COUNT=2\r\n"));
  synced();
  EXPECT_EQ(machine->items("Team").at("Weekly").recurrence.rules.front().count, 2);
  EXPECT_THAT(machine->conflicts(), IsEmpty());
}

TEST_F(AccountSync, CutsASeriesHereIntoTwoThere) {
  synced();
  store::Item series = newEvent("Daily");
  series.recurrence.rules = {store::rule(store::RecurrenceRule::Frequency::kDaily, 5)};
  series = machine->save(series);
  synced();
  const auto third = *machine->people->occurrenceAt(series, store::at("2026-11-04 09:00"));
  ASSERT_TRUE(third);
  ASSERT_TRUE(machine->people->removeEvent(series, third, store::Span::kFuture));
  synced();
  ASSERT_EQ(server.itemCount(team), 1u);
  EXPECT_THAT(textsThere().front(), HasSubstr("COUNT=2"));
}

TEST_F(AccountSync, TakesAChangeFromAnOccurrenceOnApartAndBack) {
  const std::string later =
      "END:VEVENT\r\nBEGIN:VEVENT\r\nUID:one\r\nDTSTAMP:20261101T000000Z\r\n"
      "RECURRENCE-ID;RANGE=THISANDFUTURE;TZID=Europe/Berlin:20261104T090000\r\n"
      "DTSTART;TZID=Europe/Berlin:20261104T110000\r\nDTEND;TZID=Europe/Berlin:20261104T120000\r\nSUMMARY:Later\r\n";
  server.putAs(url("1.ics"), eventText("one", "Daily", "RRULE:FREQ=DAILY;COUNT=5\r\n" + later));
  synced();
  EXPECT_THAT(machine->titles("Team"), ElementsAre("Daily", "Later"));
  for (int i = 0; i < 2; ++i) { EXPECT_EQ(synced().sent, 0u); }
  store::Item cut = machine->items("Team").at("Later");
  cut.title = "Much later";
  machine->save(cut);
  synced();
  synced();
  EXPECT_EQ(server.itemCount(team), 2u);
  for (const std::string& text : textsThere()) { EXPECT_THAT(text, Not(HasSubstr("THISANDFUTURE"))); }
  EXPECT_THAT(machine->titles("Team"), ElementsAre("Daily", "Much later"));
  EXPECT_THAT(machine->conflicts(), IsEmpty());
}

TEST_F(AccountSync, AgreesOnTheCalendarsThemselves) {
  synced();
  server.renameCalendar(team, "Everybody");
  synced();
  store::Calendar calendar = machine->calendar("Everybody");
  calendar.title = "All of us";
  calendar.color = store::Rgb{0, 0, 1};
  ASSERT_TRUE(machine->people->saveCalendar(calendar, {store::CalendarField::kTitle, store::CalendarField::kColor}));
  synced();
  EXPECT_EQ(server.calendarAt(team).displayName, "All of us");
  EXPECT_THAT(server.calendarAt(team).color, HasSubstr("#0000FF"));
  EXPECT_EQ(machine->calendar("All of us").id, calendar.id);
}

TEST_F(AccountSync, MakesAndRemovesCalendarsThere) {
  synced();
  store::Calendar calendar;
  calendar.title = "Mine";
  calendar.source = machine->source();
  ASSERT_TRUE(machine->people->saveCalendar(calendar));
  synced();
  EXPECT_EQ(server.snapshot().calendars.size(), 2u);
  store::Item item = plain("Lunch");
  item.calendar = calendar.id;
  machine->save(item);
  EXPECT_EQ(synced().sent, 1u);
  ASSERT_TRUE(machine->people->removeCalendar(machine->calendar("Mine").identifier));
  synced();
  EXPECT_EQ(server.snapshot().calendars.size(), 1u);
}

TEST_F(AccountSync, KeepsTheTitleOfACalendarThatHasNoneThere) {
  synced();
  server.renameCalendar(team, "");
  synced();
  server.forgetLog();
  synced();
  EXPECT_EQ(server.count("PROPPATCH"), 0u);
  store::Calendar calendar = machine->calendar("Team");
  calendar.title = "Crew";
  ASSERT_TRUE(machine->people->saveCalendar(calendar));
  synced();
  EXPECT_EQ(server.calendarAt(team).displayName, "Crew");
}

TEST_F(AccountSync, KeepsTheTitleOfACalendarThatIsCalledAsItsAddressThere) {
  synced();
  store::Calendar calendar;
  calendar.title = "Mine 100 %";
  calendar.source = machine->source();
  ASSERT_TRUE(machine->people->saveCalendar(calendar));
  synced();
  for (const auto& [name, there] : server.snapshot().calendars) {
    server.renameCalendar(MemoryServer::home() + name + "/", name);
  }
  synced();
  EXPECT_EQ(machine->calendar("Mine 100 %").identifier, calendar.identifier);
  EXPECT_EQ(machine->calendar("team").title, "team");
}

TEST_F(AccountSync, GoesOnWithoutTheHomeOfSomebodyWhoSharesNoMore) {
  machine->state().homes.push_back(MemoryServer::address("/calendars/gone/"));
  server.putAs(url("a.ics"), eventText("a", "Talk"));
  const SyncReport report = synced();
  EXPECT_EQ(report.received, 1u);
  ASSERT_EQ(report.troubles.size(), 1u);
  EXPECT_EQ(report.troubles.front().calendar, MemoryServer::address("/calendars/gone/"));
  machine->state().homes.insert(machine->state().homes.begin(), MemoryServer::address("/calendars/gone/"));
  EXPECT_TRUE(machine->sync().failure);
  EXPECT_THAT(machine->titles("Team"), ElementsAre("Talk"));
}

TEST_F(AccountSync, SendsWhatWasInACalendarBeforeTheServerHadIt) {
  synced();
  store::Calendar calendar;
  calendar.title = "Mine";
  calendar.source = machine->source();
  ASSERT_TRUE(machine->people->saveCalendar(calendar));
  store::Item item = plain("Lunch");
  item.calendar = calendar.id;
  machine->save(item);
  EXPECT_EQ(synced().sent, 1u);
  EXPECT_EQ(synced().sent, 0u);
}

TEST_F(AccountSync, HearsOfTheRemovalOfWhatItHasJustSent) {
  server.quirks.hidesWhatCameAndWent = true;
  synced();
  machine->save(newEvent("Lunch"));
  machine->save(newEvent("Supper"));
  EXPECT_EQ(synced().sent, 2u);
  server.removeAs(url(server.calendarAt(team).items.begin()->first));
  const SyncReport report = synced();
  EXPECT_EQ(report.removedHere, 1u);
  EXPECT_EQ(report.conflicts, 0u);
  EXPECT_THAT(machine->titles("Team"), testing::SizeIs(1));
}

TEST_F(AccountSync, HasNothingToSendOfWhatItTookIn) {
  server.putAs(url("1.ics"), eventText("one", "Lunch"));
  synced();
  ASSERT_TRUE(noteLocalChanges(machine->syncing()));
  EXPECT_THAT(*store::RemoteReader(machine->syncing()).unsent(), IsEmpty());
}

TEST_F(AccountSync, MakesAndRemovesCalendarsHere) {
  synced();
  const std::string other = server.addCalendar("other", {});
  server.renameCalendar(other, "Other");
  synced();
  EXPECT_EQ(machine->calendar("Other").title, "Other");
  server.dropCalendar(other);
  synced();
  EXPECT_THROW(machine->calendar("Other"), std::runtime_error);
}

TEST_F(AccountSync, KeepsTheUnsentOfACalendarThatWasRemovedThere) {
  synced();
  machine->save(newEvent("Lunch"));
  server.dropCalendar(team);
  const SyncReport report = synced();
  EXPECT_THAT(report.troubles.front().message, HasSubstr("stays here"));
  const auto calendars = *machine->people->calendars(CalendarKind::kEvents);
  EXPECT_EQ(calendars.size(), 2u);
  EXPECT_EQ(calendars.back().type, store::Source::Type::kLocal);
}

TEST_F(AccountSync, CalendarThatMayNotBeChangedIsReadOnlyHere) {
  server.calendarAt(team).readOnly = true;
  server.putAs(url("1.ics"), eventText("one", "Lunch"));
  synced();
  EXPECT_TRUE(machine->calendar("Team").readOnly);
}

TEST_F(AccountSync, WhatTheServerDoesNotAllowBecomesAConflict) {
  server.quirks.tellsNoPrivileges = true;
  server.putAs(url("1.ics"), eventText("one", "Lunch"));
  synced();
  server.calendarAt(team).readOnly = true;
  store::Item item = machine->items("Team").at("Lunch");
  item.title = "Dinner";
  machine->save(item);
  machine->save(newEvent("Breakfast"));
  const SyncReport report = synced();
  EXPECT_EQ(report.conflicts, 2u);
  EXPECT_THAT(machine->titles("Team"), ElementsAre("Breakfast", "Lunch"));
  EXPECT_TRUE(machine->calendar("Team").readOnly);
  server.forgetLog();
  synced();
  EXPECT_EQ(server.count("PUT"), 0u);
}

TEST_F(AccountSync, TextThatCannotBeReadIsToldAndLeftAlone) {
  server.putAs(url("1.ics"), eventText("one", "Lunch"));
  server.putAs(url("2.ics"), eventText("two", "Broken", "RRULE:FREQ=SOMETIMES\r\n", "garbage"));
  const SyncReport report = synced();
  EXPECT_EQ(report.troubles.size(), 1u);
  EXPECT_THAT(machine->titles("Team"), ElementsAre("Lunch"));
  server.putAs(url("2.ics"), eventText("two", "Whole"));
  EXPECT_THAT(synced().troubles, IsEmpty());
  EXPECT_THAT(machine->titles("Team"), ElementsAre("Lunch", "Whole"));
}

TEST_F(AccountSync, TwoResourcesOfOneUidAreTwoItems) {
  server.quirks.takesSameUid = true;
  server.putAs(url("1.ics"), eventText("one", "Lunch"));
  server.putAs(url("2.ics"), eventText("one", "Dinner"));
  synced();
  EXPECT_THAT(machine->titles("Team"), ElementsAre("Dinner", "Lunch"));
  store::Item item = machine->items("Team").at("Dinner");
  item.title = "Supper";
  machine->save(item);
  synced();
  EXPECT_THAT(server.itemAt(url("2.ics"))->text, HasSubstr("UID:one\r\n"));
  EXPECT_THAT(server.itemAt(url("2.ics"))->text, HasSubstr("SUMMARY:Supper"));
}

TEST_F(AccountSync, ShortListRemovesNothingByItself) {
  server.quirks.hasNoSync = true;
  server.putAs(url("1.ics"), eventText("one", "Lunch"));
  server.putAs(url("2.ics"), eventText("two", "Dinner"));
  synced();
  // A list without items, as a proxy or a server in trouble gives it; each item by itself is there.
  const auto whole = server.snapshot();
  server.removeAs(url("1.ics"));
  server.removeAs(url("2.ics"));
  server.beforeEach = [&](const HttpRequest& request) {
    if (request.method != "PROPFIND") { server.restore(whole); }
  };
  synced();
  EXPECT_THAT(machine->titles("Team"), ElementsAre("Dinner", "Lunch"));
}

TEST_F(AccountSync, WhatIsMissingInACalendarThatIsNotThereIsNotGone) {
  server.quirks.hasNoSync = true;
  server.putAs(url("1.ics"), eventText("one", "Lunch"));
  synced();
  const auto whole = server.snapshot();
  server.removeAs(url("1.ics"));
  server.putAs(url("2.ics"), eventText("two", "Dinner"));
  // It vanishes after it was listed, and comes back.
  server.beforeEach = [&](const HttpRequest& request) {
    if (request.method == "REPORT") { server.dropCalendar(team); }
  };
  machine->sync();
  EXPECT_THAT(machine->titles("Team"), ElementsAre("Lunch"));
  server.beforeEach = {};
  server.restore(whole);
  synced();
  EXPECT_THAT(machine->titles("Team"), ElementsAre("Lunch"));
}

TEST_F(AccountSync, NotesAllThatDiffersWhereTheLogIsCutShort) {
  server.putAs(url("1.ics"), eventText("one", "Lunch"));
  server.putAs(url("2.ics"), eventText("two", "Dinner"));
  synced();
  store::Item item = machine->items("Team").at("Lunch");
  item.title = "Late lunch";
  machine->save(item);
  machine->save(newEvent("Breakfast"));
  ASSERT_TRUE(machine->people->removeEvent(machine->items("Team").at("Dinner"), std::nullopt, store::Span::kAll));
  {
    auto database = store::Database::open(file, std::chrono::seconds(1));
    ASSERT_TRUE(database->execute("DELETE FROM changes WHERE seq < (SELECT max(seq) FROM changes)"));
  }
  const SyncReport report = synced();
  EXPECT_EQ(report.sent, 2u);
  EXPECT_EQ(report.removedThere, 1u);
  EXPECT_EQ(server.itemCount(team), 2u);
}

}  // namespace
}  // namespace orlocal::accounts
