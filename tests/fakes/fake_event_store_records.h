#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "fakes/fake_event_store.h"

namespace orlocal::fakes {

// What the sources of `FakeEventStore` share.

using Identifiers = std::set<OptionalText>;

inline Identifiers identifiersOf(const EKCalendarArray& calendars) {
  Identifiers identifiers;
  for (const auto& calendar : calendars) { identifiers.insert(calendar->calendarIdentifier()); }
  return identifiers;
}

/// Copies are made when they are asked for, of records that may be gone by then.
template <class Seam>
class FakeArray final : public ObjectArray<Seam> {
 public:
  using Make = std::function<std::shared_ptr<Seam>()>;

  explicit FakeArray(std::vector<Make> makers) : m_makers(std::move(makers)) {}

  std::size_t count() const override { return m_makers.size(); }
  std::shared_ptr<Seam> objectAtIndex(std::size_t index) const override { return m_makers.at(index)(); }

 private:
  std::vector<Make> m_makers;
};

inline bool refuseBecause(std::optional<Error>& error, std::string reason) {
  error = Error{"The fake store refused.", std::move(reason)};
  return false;
}

template <class Record>
auto recordWithIdentifier(const std::vector<std::shared_ptr<Record>>& records, const OptionalText& identifier) {
  return std::find_if(records.begin(), records.end(), [&](const auto& record) {
    if constexpr (std::is_same_v<Record, FakeCalendar>) {
      return record->m_identifier == identifier;
    } else {
      return record->m_itemIdentifier == identifier;
    }
  });
}

template <class Item>
std::shared_ptr<Item> FakeEventStore::copyOf(const Item& record) const {
  auto copy = std::make_shared<Item>(record);
  copy->m_calendar = record.m_calendar ? calendarCopy(record.m_calendar->calendarIdentifier()) : nullptr;
  for (auto& alarm : copy->m_alarms) {
    if (const auto fake = std::dynamic_pointer_cast<FakeAlarm>(alarm)) { alarm = std::make_shared<FakeAlarm>(*fake); }
  }
  return copy;
}

template <class Item>
void FakeEventStore::keep(std::vector<std::shared_ptr<Item>>& records, Item& item, const char* kind) {
  if (!item.m_itemIdentifier) {
    const auto identifier = nextIdentifier(kind);
    if constexpr (std::is_same_v<Item, FakeEvent>) { item.m_eventIdentifier = identifier; }
    item.m_itemIdentifier = "item-" + identifier;
    item.m_externalIdentifier = identifier + "@fake";
    item.m_creationDate = m_now;
  }
  item.m_lastModifiedDate = m_now;
  for (const auto& alarm : item.m_alarms) {
    const auto fake = std::dynamic_pointer_cast<FakeAlarm>(alarm);
    if (fake && !fake->m_creationDate) { fake->m_creationDate = m_now; }
  }
  const auto found = recordWithIdentifier(records, item.m_itemIdentifier);
  if (found == records.end()) {
    records.push_back(copyOf(item));
  } else {
    **found = *copyOf(item);
  }
}

}  // namespace orlocal::fakes
