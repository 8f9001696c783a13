#pragma once

#include <memory>
#include <optional>

#include "store/calendar_store.h"

namespace orlocal::store {

/// What somebody sets who has `opened` an item, and leaves it as `edited`.
inline ItemEdit editBetween(std::shared_ptr<const Item> opened, const Item& edited) {
  ItemEdit edit;
  edit.values = edited;
  edit.opened = std::move(opened);
  if (!edit.opened) { return edit; }
  const auto compare = [&](ItemField field, auto Item::*member) {
    if (!(edit.opened.get()->*member == edited.*member)) { edit.set.add(field); }
  };
  compare(ItemField::kCalendar, &Item::calendar);
  compare(ItemField::kTitle, &Item::title);
  compare(ItemField::kNotes, &Item::notes);
  compare(ItemField::kLocation, &Item::location);
  compare(ItemField::kUrl, &Item::url);
  compare(ItemField::kStart, &Item::start);
  compare(ItemField::kEnd, &Item::end);
  compare(ItemField::kDue, &Item::due);
  compare(ItemField::kPriority, &Item::priority);
  compare(ItemField::kCompleted, &Item::completed);
  compare(ItemField::kAlarms, &Item::alarms);
  if (edit.opened->recurrence.rules != edited.recurrence.rules) { edit.set.add(ItemField::kRules); }
  return edit;
}

/// The item as one opens it now: a series has the times of `occurrence`. Null when it is new; without any field when it
/// is gone, as nothing can differ then.
inline std::shared_ptr<const Item> openedNow(CalendarStore& store, const Item& item,
                                             const std::optional<Occurrence>& occurrence, const Zone& viewer) {
  if (item.id == 0) { return nullptr; }
  const auto row = store.item(item.id);
  if (!row || *row == nullptr) { return std::make_shared<const Item>(item); }
  auto opened = std::make_shared<Item>(**row);
  if (occurrence && !opened->series && !opened->recurrence.empty()) { moveToOccurrence(*opened, *occurrence, viewer); }
  return opened;
}

/// Saves `edited` as somebody does who opens the item now and sets what differs; it then is what was written.
inline Status saveEvent(CalendarStore& store, Item& edited, const std::optional<Occurrence>& occurrence, Span span,
                        const Zone& viewer = *Zone::named("Europe/Berlin")) {
  auto saved = store.saveEvent(editBetween(openedNow(store, edited, occurrence, viewer), edited), occurrence, span);
  if (!saved) { return tl::unexpected(saved.error()); }
  edited = *std::move(saved);
  return {};
}

inline Status saveReminder(CalendarStore& store, Item& edited) {
  auto saved = store.saveReminder(editBetween(openedNow(store, edited, std::nullopt, Zone()), edited));
  if (!saved) { return tl::unexpected(saved.error()); }
  edited = *std::move(saved);
  return {};
}

}  // namespace orlocal::store
