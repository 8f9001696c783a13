#pragma once

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "store/calendar_store.h"
#include "store/edits/edited_items.h"

namespace orlocal::store {

/// "2026-11-02 09:00" or "2026-11-02".
inline LocalTime local(const std::string& text) {
  const auto number = [&](std::size_t at, std::size_t length) {
    return at < text.size() ? std::stoi(text.substr(at, length)) : 0;
  };
  return LocalTime(number(0, 4), number(5, 2), number(8, 2), number(11, 2), number(14, 2), number(17, 2));
}

inline CalendarTime berlin(const std::string& text) {
  return {CalendarTime::Kind::kZoned, local(text), "Europe/Berlin"};
}
inline CalendarTime utc(const std::string& text) { return {CalendarTime::Kind::kUtc, local(text), ""}; }
inline CalendarTime floating(const std::string& text) { return {CalendarTime::Kind::kFloating, local(text), ""}; }
inline CalendarTime day(const std::string& text) { return {CalendarTime::Kind::kDate, local(text), ""}; }

/// Times of that kind; whole days for as many days as `seconds` begins.
inline void setTimes(Item& item, CalendarTime::Kind kind, const char* zone, LocalTime start, int seconds) {
  const bool wholeDays = kind == CalendarTime::Kind::kDate;
  item.start = CalendarTime{kind, wholeDays ? LocalTime(LocalDay(start)) : start, zone};
  item.end = CalendarTime{kind, wholeDays ? LocalTime(LocalDay(start) + 1 + seconds / 86'400) : start + seconds, zone};
}

inline Zone berlinZone() { return *Zone::named("Europe/Berlin"); }
/// Berlin's wall clock.
inline Moment at(const std::string& text) { return berlinZone().toMoment(local(text)); }
inline std::string shown(Moment moment) {
  const LocalTime time = berlinZone().toLocal(moment);
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d %02d:%02d", static_cast<int>(time.year()), time.month(),
                time.day(), time.hour(), time.minute());
  return buffer;
}

/// SQL that makes a store's file one of an earlier version.
inline std::string backToVersion(int version) {
  std::string sql;
  if (version < 5) {
    sql =
        "DROP TABLE journal; DROP TABLE journal_items; DROP TABLE alarm_rings;"
        "DROP TABLE search; ALTER TABLE changes DROP COLUMN calendar; ALTER TABLE changes DROP COLUMN title;"
        "ALTER TABLE changes DROP COLUMN made;";
  }
  if (version < 4) {
    for (const char* table : {"remotes", "mirrors", "resources", "resource_parts", "unsent", "conflicts"}) {
      sql += std::string("DROP TABLE ") + table + ";";
    }
  }
  if (version < 3) { sql += "DROP INDEX items_by_uid; CREATE INDEX items_by_uid ON items(uid_hash, original);"; }
  return sql + "PRAGMA user_version = " + std::to_string(version);
}

/// A store of its own in a folder of its own, seen from Berlin.
class StoreTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "orlocal-store-XXXXXX").string();
    folder = mkdtemp(pattern.data());
    file = folder / "calendar.db";
    store = opened();
  }
  void TearDown() override {
    store.reset();
    std::filesystem::remove_all(folder);
  }

  StoreOptions options() const {
    StoreOptions options;
    options.file = file;
    options.viewer = berlinZone();
    options.busyTimeout = std::chrono::seconds(10);
    return options;
  }
  std::unique_ptr<CalendarStore> opened() const {
    auto result = CalendarStore::open(options());
    if (!result) { throw std::runtime_error(result.error().message); }
    return std::move(*result);
  }

  CalendarId defaultCalendar(CalendarKind kind = CalendarKind::kEvents) { return (*store->defaultCalendar(kind))->id; }
  Calendar madeCalendar(const std::string& title, CalendarKind kind = CalendarKind::kEvents) {
    Calendar calendar;
    calendar.title = title;
    calendar.kind = kind;
    calendar.source = (*store->sources()).front().id;
    EXPECT_TRUE(store->saveCalendar(calendar));
    return calendar;
  }

  Item event(const std::string& title, CalendarTime start, CalendarTime end) {
    Item item;
    item.calendar = defaultCalendar();
    item.title = title;
    item.start = start;
    item.end = end;
    return item;
  }
  Item reminder(const std::string& title, std::optional<CalendarTime> due = std::nullopt) {
    Item item;
    item.kind = ItemKind::kReminder;
    item.calendar = defaultCalendar(CalendarKind::kReminders);
    item.title = title;
    item.due = due;
    return item;
  }
  /// In the calendar that every new store has.
  static Item plain(const std::string& title) {
    Item item;
    item.calendar = 1;
    item.title = title;
    item.start = berlin("2026-11-02 09:00");
    item.end = berlin("2026-11-02 10:00");
    return item;
  }
  /// Of the events of that day; a failure instead of them shows as one.
  static std::vector<std::string> titlesIn(CalendarStore& store) {
    const auto found = store.occurrences(EventQuery{at("2026-11-02 00:00"), at("2026-11-03 00:00"), {1}});
    if (!found) { return {"(" + found.error().message + ")"}; }
    std::vector<std::string> titles;
    for (const Occurrence& occurrence : *found) {
      // The file may have been replaced between the two calls.
      const auto item = store.item(occurrence.item);
      titles.push_back(item && *item ? (*item)->title.value_or("-") : "(gone)");
    }
    return titles;
  }
  Item saved(Item item) {
    const auto status =
        item.kind == ItemKind::kEvent ? saveEvent(*store, item, std::nullopt, Span::kThis) : saveReminder(*store, item);
    EXPECT_TRUE(status) << (status ? "" : status.error().message);
    return item;
  }
  Item read(ItemId id) {
    const auto item = store->item(id);
    EXPECT_TRUE(item && *item);
    return item && *item ? **item : Item();
  }

  EventQuery range(std::optional<Moment> from, std::optional<Moment> to) {
    EventQuery query{from, to, {}};
    const auto calendars = *store->calendars(CalendarKind::kEvents);
    for (const Calendar& calendar : calendars) { query.calendars.push_back(calendar.id); }
    return query;
  }
  std::vector<Occurrence> occurrences(std::optional<Moment> from, std::optional<Moment> to) {
    auto found = store->occurrences(range(from, to));
    EXPECT_TRUE(found) << (found ? "" : found.error().message);
    return found ? std::vector<Occurrence>(found->begin(), found->end()) : std::vector<Occurrence>();
  }
  /// "start title" of each.
  std::vector<std::string> listed(std::optional<Moment> from, std::optional<Moment> to) {
    std::vector<std::string> lines;
    for (const Occurrence& occurrence : occurrences(from, to)) {
      lines.push_back(shown(occurrence.start) + " " + read(occurrence.item).title.value_or("-"));
    }
    return lines;
  }

  std::filesystem::path folder, file;
  std::unique_ptr<CalendarStore> store;
};

inline RecurrenceRule rule(RecurrenceRule::Frequency frequency, std::optional<std::int64_t> count = std::nullopt) {
  RecurrenceRule made;
  made.frequency = frequency;
  made.count = count;
  return made;
}

}  // namespace orlocal::store
