#pragma once

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/eventkit.h"
#include "platform/exception.h"
#include "platform/platform.h"
#include "store/calendar_store.h"
#include "store/edits/item_writer.h"

namespace orlocal {

/// The system's platform over a store of its own in a temporary folder.
class StoreFixture : public testing::Test {
 protected:
  StoreFixture() {
    std::string pattern = (std::filesystem::temp_directory_path() / "orlocal-XXXXXX").string();
    folder = ::mkdtemp(pattern.data());
    file = folder / "calendar.db";
    ::setenv("ORLOCAL_STORE", file.c_str(), 1);
  }
  ~StoreFixture() override {
    events.reset();
    system.reset();
    ::unsetenv("ORLOCAL_STORE");
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  }

  EventKit& kit() {
    if (!system) { system = makeSystemPlatform(); }
    return system->eventKit();
  }
  EKEventStore& ek() { return *ekStore(); }
  const std::shared_ptr<EKEventStore>& ekStore() {
    if (!events) { events = kit().eventStoreWithAccessToEntityTypes(EventKit::kMaskEvent | EventKit::kMaskReminder); }
    return events;
  }

  /// Another process's view of the same file.
  std::unique_ptr<store::CalendarStore> otherStore() {
    store::StoreOptions options;
    options.file = file;
    options.viewer = store::Zone::ofUser();
    return std::move(store::CalendarStore::open(std::move(options))).value();
  }

  /// Writes an item into the default calendar of its kind, as an import would, and returns it as stored.
  store::Item put(store::Item item, std::vector<store::Item> changed = {}) {
    const auto store = otherStore();
    const auto kind =
        item.kind == store::ItemKind::kEvent ? store::CalendarKind::kEvents : store::CalendarKind::kReminders;
    auto writer = std::move(store->startWriting()).value();
    const auto calendar = writer->defaultCalendar(kind).value().value().id;
    if (item.uid.empty()) { item.uid = "uid-" + std::to_string(++lastUid); }
    for (auto& occurrence : changed) {
      occurrence.kind = item.kind;
      occurrence.uid = item.uid;
    }
    const auto outcome = writer->put(calendar, item, changed);
    EXPECT_TRUE(outcome) << outcome.error().message;
    EXPECT_TRUE(writer->commit());
    return item;
  }

  EKCalendarArray eventCalendars() { return ek().calendarsForEntityType(EKEntityType::kEvent); }
  EKCalendarArray reminderLists() { return ek().calendarsForEntityType(EKEntityType::kReminder); }

  std::shared_ptr<const EKEventArray> eventsBetween(Date start, Date end) {
    return ek().eventsMatchingPredicate(ek().predicateForEvents(start, end, eventCalendars()));
  }
  std::vector<std::string> titlesBetween(Date start, Date end) {
    std::vector<std::string> titles;
    const auto found = eventsBetween(start, end);
    for (std::size_t i = 0; i < found->count(); ++i) { titles.push_back(*found->objectAtIndex(i)->title()); }
    return titles;
  }
  std::vector<std::string> reminderTitles(const std::shared_ptr<const EKPredicate>& predicate) {
    std::vector<std::string> titles;
    ek().fetchRemindersMatchingPredicate(predicate, [&titles](const std::shared_ptr<const EKReminderArray>& found) {
      for (std::size_t i = 0; i < found->count(); ++i) { titles.push_back(*found->objectAtIndex(i)->title()); }
    });
    return titles;
  }

  std::filesystem::path folder, file;
  std::shared_ptr<Platform> system;
  std::shared_ptr<EKEventStore> events;
  int lastUid = 0;
};

/// A moment from its text: "2026-11-02 09:00:00 +0100".
inline Date moment(const char* text) { return dateWithString(text).value(); }

/// The date of a text such as "2026-11-02".
inline store::CalendarTime wholeDay(int year, int month, int day) {
  return {store::CalendarTime::Kind::kDate, store::LocalTime(year, month, day), {}};
}

inline store::CalendarTime zoned(store::LocalTime local, std::string zone = "Europe/Berlin") {
  return {store::CalendarTime::Kind::kZoned, local, std::move(zone)};
}

/// An event of an hour that begins at `hour` in Berlin.
inline store::Item eventAt(std::string title, int year, int month, int day, int hour) {
  store::Item item;
  item.title = std::move(title);
  item.start = zoned(store::LocalTime(year, month, day, hour));
  item.end = zoned(store::LocalTime(year, month, day, hour + 1));
  return item;
}

/// Whole days of a month from the first to the last, both included.
inline store::Item wholeDays(std::string title, int year, int month, int first, int last) {
  store::Item item;
  item.title = std::move(title);
  item.start = wholeDay(year, month, first);
  item.end = wholeDay(year, month, last + 1);
  return item;
}

inline store::Item reminder(std::string title) {
  store::Item item;
  item.kind = store::ItemKind::kReminder;
  item.title = std::move(title);
  return item;
}

inline store::RecurrenceRule weekly() {
  store::RecurrenceRule rule;
  rule.frequency = store::RecurrenceRule::Frequency::kWeekly;
  return rule;
}

}  // namespace orlocal
