#pragma once

#include <map>
#include <memory>
#include <vector>

#include "store/calendar_store.h"
#include "store/core/queries.h"
#include "store/core/store_core.h"

namespace orlocal::store {

/// The calendar store over its file: hands each call to the part whose subject it is.
class SqliteStore final : public CalendarStore {
 public:
  explicit SqliteStore(std::unique_ptr<StoreCore> core) : m_core(std::move(core)), m_queries(*m_core) {}

  void close() override { m_core->close(); }
  std::uint64_t generation() override { return m_core->generation(); }

  Result<std::vector<Source>> sources() override;
  Result<std::vector<Calendar>> calendars(CalendarKind kind) override;
  Result<std::optional<Calendar>> calendar(std::string_view identifier) override;
  Result<std::optional<Calendar>> defaultCalendar(CalendarKind kind) override;
  Status saveCalendar(Calendar& calendar, CalendarFields set) override;
  Status removeCalendar(std::string_view identifier) override;

  Result<std::vector<Occurrence>> occurrences(const EventQuery& query) override;
  Result<std::vector<ItemId>> reminders(const ReminderQuery& query) override;

  Result<std::shared_ptr<const Item>> item(ItemId id) override;
  void prefetch(std::span<const ItemId> ids) override;
  Result<std::shared_ptr<const Item>> event(std::string_view identifier) override;
  Result<std::shared_ptr<const Item>> itemWithIdentifier(std::string_view itemIdentifier) override;
  Result<std::optional<Occurrence>> firstOccurrence(const Item& event) override;
  Result<std::optional<Occurrence>> occurrenceAt(const Item& event, Moment originalStart) override;

  Result<Item> saveEvent(const ItemEdit& edit, const std::optional<Occurrence>& occurrence, Span span) override;
  Status removeEvent(const Item& event, const std::optional<Occurrence>& occurrence, Span span) override;
  Result<Item> saveReminder(const ItemEdit& edit) override;
  Status removeReminder(const Item& reminder) override;

  Result<std::unique_ptr<ItemWriter>> startWriting(const Announcement& announcement = {}) override;
  Status forEachItem(CalendarId calendar, const ItemVisitor& visit) override;
  Result<std::optional<std::string>> privateZone(std::string_view name) override;
  Result<LogPosition> newestChange() override;
  Result<std::vector<OutsideCommit>> outsideCommits(LogPosition& position) override;
  Result<std::unique_ptr<ChangeSignal>> listen() override;
  Result<std::optional<std::string>> addressOf(std::string_view email) override;

 private:
  std::unique_ptr<StoreCore> m_core;
  Queries m_queries;
  std::uint64_t m_checked = 0;  ///< generation with which what is kept agrees
  /// What lies in each calendar, and for which generation that is so: whoever visits all calendars asks for each.
  std::map<CalendarId, std::vector<ItemId>> m_idsByCalendar;
  std::uint64_t m_listed = 0;
};

}  // namespace orlocal::store
