#include "store/rows/packed_item.h"

#include <chrono>
#include <optional>
#include <string>

#include "store/rows/packer.h"

namespace orlocal::store {
namespace {

// One list for both directions, so that they cannot differ.
constexpr std::optional<std::string> Item::*kItemTexts[] = {&Item::title, &Item::notes, &Item::location, &Item::url};
constexpr std::optional<CalendarTime> Item::*kItemTimes[] = {&Item::start, &Item::end, &Item::due};
constexpr std::optional<Moment> Item::*kItemMoments[] = {&Item::created, &Item::modified, &Item::stamped,
                                                         &Item::completed};

}  // namespace

void packItem(const Item& item, PackedBytes& out) {
  Packer packer(out);
  packer.number(item.id);
  packer.number(static_cast<std::int64_t>(item.kind));
  packer.number(item.calendar);
  packer.text(item.itemIdentifier);
  // All but changed occurrences have one identifier.
  packer.optionalText(item.identifier != item.itemIdentifier ? std::optional(item.identifier) : std::nullopt);
  packer.text(item.uid);
  packer.optional(item.series, [&](ItemId series) { packer.number(series); });
  packer.optionalTime(item.recurrenceId);
  for (const auto text : kItemTexts) { packer.optionalText(item.*text); }
  for (const auto time : kItemTimes) { packer.optionalTime(item.*time); }
  for (const auto moment : kItemMoments) { packer.optionalMoment(item.*moment); }
  packer.number(item.priority);
  packer.number(item.sequence);
  packer.nested(item.recurrence, packRecurrence);
  packer.nested(item.alarms, packAlarms);
  packer.nested(item.attendees, packAttendees);
  packer.text(item.extra);
}

std::optional<Item> unpackItem(std::span<const std::byte> bytes) {
  Unpacker unpacker(bytes);
  Item item;
  item.id = unpacker.number();
  item.kind = unpacker.oneOf(ItemKind::kReminder);
  item.calendar = unpacker.number();
  item.itemIdentifier = unpacker.text();
  item.identifier = unpacker.optionalText().value_or(item.itemIdentifier);
  item.uid = unpacker.text();
  item.series = unpacker.optional([&] { return unpacker.number(); });
  item.recurrenceId = unpacker.optionalTime();
  for (const auto text : kItemTexts) { item.*text = unpacker.optionalText(); }
  for (const auto time : kItemTimes) { item.*time = unpacker.optionalTime(); }
  for (const auto moment : kItemMoments) { item.*moment = unpacker.optionalMoment(); }
  item.priority = unpacker.small();
  item.sequence = unpacker.number();
  unpacker.nested(item.recurrence, unpackRecurrence);
  unpacker.nested(item.alarms, unpackAlarms);
  unpacker.nested(item.attendees, unpackAttendees);
  item.extra = unpacker.text();
  if (!unpacker.sound()) { return std::nullopt; }
  return item;
}

}  // namespace orlocal::store
