#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "accounts/dav/dav_server.h"
#include "accounts/memory_server.h"
#include "accounts/sync/account_sync.h"
#include "store/edits/item_writer.h"
#include "store/remote_reader.h"
#include "store/store_fixture.h"

namespace orlocal::accounts {

/// A clock that stands until it is told to go on.
class StandingClock final : public Clock {
 public:
  store::Moment now() const override { return m_now; }
  void goOn(std::chrono::seconds seconds) { m_now += seconds; }

 private:
  store::Moment m_now = store::at("2026-11-02 09:00");
};

/// One machine with its store and an account on a server: somebody who edits, and a sync of its own.
class Machine {
 public:
  Machine(MemoryServer& server, const store::StoreOptions& options) : m_dav(server), m_server(server) {
    people = opened(options);
    m_syncing = opened(options);
    auto writer = std::move(*people->startWriting());
    store::Source source{0, "", store::Source::Type::kCalDav, "Work"};
    if (!writer->makeSource(source) || !writer->remotes().put(store::Remote{source.id, "{}", "{}"}) ||
        !writer->commit()) {
      throw std::runtime_error("no account");
    }
    m_source = source.id;
    m_state.homes = {MemoryServer::home()};
  }

  SyncReport sync() {
    m_clock.goOn(std::chrono::seconds(10));
    m_server.second += 10;
    return syncAccount(*m_syncing, m_dav, m_clock, m_source, m_state);
  }
  /// Forgets what a process knows, as when it ended.
  void restart(const store::StoreOptions& options) { m_syncing = opened(options); }

  store::Calendar calendar(const std::string& title) {
    for (const auto kind : {store::CalendarKind::kEvents, store::CalendarKind::kReminders}) {
      const auto all = people->calendars(kind);
      for (const store::Calendar& each : *all) {
        if (each.title == title && each.source == m_source) { return each; }
      }
    }
    throw std::runtime_error("no calendar " + title);
  }
  /// The items of a calendar by title.
  std::map<std::string, store::Item> items(const std::string& title) {
    std::map<std::string, store::Item> found;
    const auto visited =
        people->forEachItem(calendar(title).id, [&](const store::Item& main, const std::vector<store::Item>&) {
          found[main.title.value_or("-")] = main;
          return Status();
        });
    if (!visited) { throw std::runtime_error(visited.error().message); }
    return found;
  }
  std::vector<std::string> titles(const std::string& title) {
    std::vector<std::string> all;
    for (const auto& [name, item] : items(title)) { all.push_back(name); }
    return all;
  }
  store::Item save(const store::Item& item) {
    store::Item saved = item;
    const auto status = item.kind == store::ItemKind::kEvent
                            ? store::saveEvent(*people, saved, std::nullopt, store::Span::kThis)
                            : store::saveReminder(*people, saved);
    if (!status) { throw std::runtime_error(status.error().message); }
    return saved;
  }
  std::vector<store::Conflict> conflicts() { return *store::RemoteReader(*people).conflicts(); }

  store::SourceId source() const { return m_source; }
  AccountState& state() { return m_state; }
  store::CalendarStore& syncing() { return *m_syncing; }
  std::unique_ptr<store::CalendarStore> people;

 private:
  static std::unique_ptr<store::CalendarStore> opened(const store::StoreOptions& options) {
    auto store = store::CalendarStore::open(options);
    if (!store) { throw std::runtime_error(store.error().message); }
    return std::move(*store);
  }

  DavServer m_dav;
  MemoryServer& m_server;
  StandingClock m_clock;
  std::unique_ptr<store::CalendarStore> m_syncing;
  store::SourceId m_source = 0;
  AccountState m_state;
};

/// An event as another client writes it.
inline std::string eventText(const std::string& uid, const std::string& title, const std::string& more = "",
                             const std::string& start = "20261102T090000", const std::string& end = "20261102T100000") {
  return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Another//Client//EN\r\nBEGIN:VEVENT\r\nUID:" + uid +
         "\r\nDTSTAMP:20261101T000000Z\r\nDTSTART;TZID=Europe/Berlin:" + start + "\r\nDTEND;TZID=Europe/Berlin:" + end +
         "\r\nSUMMARY:" + title + "\r\n" + more + "END:VEVENT\r\nEND:VCALENDAR\r\n";
}

/// A machine, a server with a calendar "Team", and what is on both.
class SyncTest : public store::StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    team = server.addCalendar("team", [] {
      MemoryServer::Calendar calendar;
      calendar.displayName = "Team";
      return calendar;
    }());
    machine = std::make_unique<Machine>(server, options());
  }
  void TearDown() override {
    machine.reset();
    StoreTest::TearDown();
  }

  /// That must go well.
  SyncReport synced() {
    SyncReport report = machine->sync();
    EXPECT_FALSE(report.failure) << report.failure->message;
    return report;
  }
  std::string url(const std::string& name) const { return team + name; }
  /// The texts of the calendar on the server.
  std::vector<std::string> textsThere() {
    std::vector<std::string> texts;
    for (const auto& [name, item] : server.calendarAt(team).items) { texts.push_back(item.text); }
    return texts;
  }
  store::Item newEvent(const std::string& title) {
    store::Item item = plain(title);
    item.calendar = machine->calendar("Team").id;
    return item;
  }

  MemoryServer server;
  std::string team;
  std::unique_ptr<Machine> machine;
};

}  // namespace orlocal::accounts
