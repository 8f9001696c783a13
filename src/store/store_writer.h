#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "store/contact_rows.h"
#include "store/item_writer.h"
#include "store/store_core.h"

namespace orlocal::store {

/// One bit for each hash of a UID: says for sure that one was not added, and sometimes not that it was.
class UidFilter {
 public:
  /// Whether it may have been added before.
  bool add(std::uint64_t hash) {
    auto bit = m_bits[place(hash)];
    const bool was = bit;
    bit = true;
    return was;
  }
  bool mayHave(std::uint64_t hash) const { return m_bits[place(hash)]; }

 private:
  static constexpr int kBits = 23;
  static std::size_t place(std::uint64_t hash) { return hash * 0x9e3779b97f4a7c15U >> (64 - kBits); }

  std::vector<bool> m_bits = std::vector<bool>(std::size_t{1} << kBits);
};

/// The writer over the store's own file.
class StoreWriter final : public ItemWriter {
 public:
  static Result<std::unique_ptr<ItemWriter>> start(StoreCore& core);
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
  StoreWriter(StoreCore& core, WriteTurn turn, std::int64_t storedAtMost)
      : m_core(core), m_turn(std::move(turn)), m_contacts(core.database), m_storedAtMost(storedAtMost) {}

  /// The oldest calendar of each kind and title; read at once, as a file may name thousands.
  Status learnTitles();
  Status checkTarget(CalendarId calendar, const Item& item);
  /// False when nothing with the UID of `item` can stand in its calendar, so that nothing need be looked up.
  Result<bool> mayKnow(const Item& item);
  /// The same for what stood there when this began.
  Result<bool> mayHaveKnown(std::int64_t hash);
  Result<PutOutcome> putMain(Item& main, const Series* series, bool mayBeKnown);
  /// Removes the series that were cut off `stored` and that `given` does not name any more.
  Status removeContinuations(const Item& stored, const Item& given);
  Status removeChangedOf(ItemId series);
  Result<PutOutcome> putStray(Item& stray);
  Result<PutOutcome> putChanged(Item& changed, const Item& main, const Series& series, ItemId known);
  /// Finds the right one of the changed occurrences of a known series for each of `changed`; removes the others.
  Result<PutOutcome> putAllChanged(std::vector<Item>& changed, const Item& main, const Series& series);
  Status adoptStrays(const Item& main, const Series& series);

  StoreCore& m_core;
  WriteTurn m_turn;
  ContactRows m_contacts;
  std::int64_t m_storedAtMost;  ///< items that the store held when this began
  std::unordered_set<CalendarId> m_made;
  UidFilter m_put;                    ///< what was put since
  std::optional<UidFilter> m_stored;  ///< what stood there before, once it pays to have looked at all of it
  std::int64_t m_lookups = 0;
  std::optional<Calendar> m_lastTarget;
  std::optional<std::map<std::pair<CalendarKind, std::string>, Calendar>> m_titles;
  LazyStatement m_zoneText{"SELECT vtimezone FROM zones WHERE name = ?"};
  LazyStatement m_putZone{"INSERT OR REPLACE INTO zones(name, vtimezone) VALUES(?, ?)"};
};

}  // namespace orlocal::store
