#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "store/core/store_core.h"
#include "store/edits/item_writer.h"
#include "store/edits/known_items.h"
#include "store/rows/calendar_titles.h"
#include "store/rows/contact_rows.h"

namespace orlocal::store {

/// The writer over the store's own file.
class StoreWriter final : public ItemWriter {
 public:
  static Result<std::unique_ptr<ItemWriter>> start(StoreCore& core, const Announcement& announcement);
  ~StoreWriter() override;

  Result<std::optional<Calendar>> calendarTitled(CalendarKind kind, std::string_view title) override;
  Result<std::optional<Calendar>> defaultCalendar(CalendarKind kind) override;
  Status makeSource(Source& source) override;
  Status makeCalendar(Calendar& calendar) override;
  Status putZone(std::string_view name, std::string_view vtimezone) override;
  Result<PutOutcome> put(CalendarId calendar, Item& main, std::vector<Item>& changed, const Series* compiled) override;
  Result<PutOutcome> putContact(Contact& contact) override;
  Status commit() override;

 private:
  StoreWriter(StoreCore& core, WriteTurn turn, KnownItems known)
      : m_core(core),
        m_turn(std::move(turn)),
        m_known(std::move(known)),
        m_contacts(core.database),
        m_titles(core.calendars) {}

  Status checkTarget(CalendarId calendar, const Item& item);
  Result<PutOutcome> putMain(Item& main, const Series* series, const Standing& standing);
  /// Removes the series that were cut off the stored one and that `given` does not name any more.
  Status removeContinuations(const std::vector<std::string>& stored, const Item& given);
  Status removeChangedOf(ItemId series);
  Result<PutOutcome> putStray(Item& stray);
  Result<PutOutcome> putChanged(Item& changed, const Item& main, const Series& series, ItemId known);
  /// Finds the right one of the changed occurrences of a known series for each of `changed`; removes the others.
  Result<PutOutcome> putAllChanged(std::vector<Item>& changed, const Item& main, const Series& series);
  Status adoptStrays(const Item& main, const Series& series);

  StoreCore& m_core;
  WriteTurn m_turn;
  KnownItems m_known;
  ContactRows m_contacts;
  CalendarTitles m_titles;
  std::optional<Calendar> m_lastTarget;
  LazyStatement m_zoneText{"SELECT vtimezone FROM zones WHERE name = ?"};
  LazyStatement m_putZone{"INSERT OR REPLACE INTO zones(name, vtimezone) VALUES(?, ?)"};
};

}  // namespace orlocal::store
