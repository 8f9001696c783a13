#include "store/edits/item_edit.h"

#include "store/edits/list_merge.h"
#include "store/icalendar/item_limits.h"
#include "store/icalendar/kept_lines.h"

namespace orlocal::store {
namespace {

void applyTimes(const ItemEdit& edit, Item& item, const std::optional<Occurrence>& at, const Zone& viewer) {
  if (!edit.times) {
    if (edit.set.has(ItemField::kStart)) { item.start = edit.values.start; }
    if (edit.set.has(ItemField::kEnd)) { item.end = edit.values.end; }
    if (edit.set.has(ItemField::kDue)) { item.due = edit.values.due; }
    return;
  }
  const ShownTimes before = shownTimes(item, at, viewer);
  ShownTimes after = before;
  if (edit.set.has(ItemField::kStart)) { after.start = edit.times->start; }
  if (edit.set.has(ItemField::kEnd)) { after.end = edit.times->end; }
  if (edit.set.has(ItemField::kAllDay)) { after.allDay = edit.times->allDay; }
  writeTimes(item, after, before, viewer);
}

}  // namespace

void applyFields(const ItemEdit& edit, Item& item) {
  const auto take = [&](ItemField field, auto Item::*member) {
    if (edit.set.has(field)) { item.*member = edit.values.*member; }
  };
  const auto takeText = [&](ItemField field, std::optional<std::string> Item::*member) {
    if (edit.set.has(field)) { item.*member = edit.values.*member; }
    if (item.*member && (edit.set.has(field) || !edit.opened)) { dropUnwritable(*(item.*member)); }
  };
  take(ItemField::kCalendar, &Item::calendar);
  takeText(ItemField::kTitle, &Item::title);
  takeText(ItemField::kNotes, &Item::notes);
  takeText(ItemField::kLocation, &Item::location);
  takeText(ItemField::kUrl, &Item::url);
  take(ItemField::kPriority, &Item::priority);
  take(ItemField::kCompleted, &Item::completed);
  if (edit.set.has(ItemField::kAlarms)) {
    item.alarms = edit.opened ? mergedLists(edit.opened->alarms, edit.values.alarms, item.alarms) : edit.values.alarms;
  }
  if (edit.set.has(ItemField::kAlarms) || !edit.opened) {
    for (Alarm& alarm : item.alarms) {
      for (auto* text : {&alarm.emailAddress, &alarm.soundName, &alarm.url}) {
        if (*text) { keepOnOneLine(**text); }
      }
    }
  }
  if (edit.set.has(ItemField::kCategories)) {
    item.extra = withLinesOf("CATEGORIES", item.extra, edit.values.extra);
  }
  if (edit.set.has(ItemField::kRules)) {
    // One that could not be followed was kept as it was written; it is no longer how the item repeats.
    item.extra = withoutLinesOf("RRULE", item.extra);
    if (edit.values.recurrence.rules.empty()) {
      item.recurrence = Recurrence();
    } else {
      item.recurrence.rules = edit.values.recurrence.rules;
    }
  }
}

void apply(const ItemEdit& edit, Item& item, const std::optional<Occurrence>& at, const Zone& viewer) {
  applyFields(edit, item);
  applyTimes(edit, item, at, viewer);
  if (edit.set.has(ItemField::kRules) && item.allDay()) { endOnDays(item.recurrence, viewer); }
}

void endOnDays(Recurrence& recurrence, const Zone& viewer) {
  for (RecurrenceRule& rule : recurrence.rules) {
    if (!rule.until || rule.until->kind == CalendarTime::Kind::kDate) { continue; }
    const LocalDay day(viewer.toLocal(momentOf(*rule.until, viewer)));
    rule.until = CalendarTime{CalendarTime::Kind::kDate, LocalTime(day), {}};
  }
}

bool takesRulesAway(const ItemEdit& edit, const Recurrence& recurrence) {
  return edit.set.has(ItemField::kRules) && edit.values.recurrence.rules.empty() && !recurrence.empty();
}

bool changesRules(const ItemEdit& edit, const Recurrence& recurrence) {
  if (!edit.set.has(ItemField::kRules)) { return false; }
  return takesRulesAway(edit, recurrence) || edit.values.recurrence.rules != recurrence.rules;
}

}  // namespace orlocal::store
