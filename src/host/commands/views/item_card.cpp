#include "host/commands/views/item_card.h"

#include <algorithm>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/command_line/folded_text.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/views/item_lines.h"
#include "host/commands/views/next_occurrences.h"
#include "host/commands/words/day_words.h"
#include "host/commands/words/item_words.h"
#include "host/commands/words/listed_words.h"
#include "host/commands/words/rule_words.h"
#include "store/remote_reader.h"

namespace orlocal::host {
namespace {

using store::CalendarTime;
using store::Item;
using store::Moment;
using store::Zone;

using Card = std::vector<CardLine>;

void add(Card& card, std::string label, std::string text) {
  if (!text.empty()) { card.push_back({std::move(label), std::move(text)}); }
}

template <class Range, class Say>
std::string linesOf(const Range& values, Say say) {
  std::string text;
  for (const auto& value : values) { text += (text.empty() ? "" : "\n") + say(value); }
  return text;
}

/// The times in the item's own zone; empty where that is the viewer's or it has none.
std::string ownTimes(const Item& item, Moment start, Moment end, const Zone& viewer) {
  const auto& anchor = item.anchor();
  if (!anchor || (anchor->kind != CalendarTime::Kind::kZoned && anchor->kind != CalendarTime::Kind::kUtc)) {
    return "";
  }
  const auto own = anchor->kind == CalendarTime::Kind::kUtc ? std::optional(Zone()) : Zone::named(anchor->zone);
  if (!own) { return tr("in the zone {}, which is not known here", anchor->zone); }
  const std::string there = spanWords(start, end, false, *own);
  return there == spanWords(start, end, false, viewer) ? "" : tr("{} in {}", there, own->name());
}

std::string whenText(const ItemFacts& facts, const Zone& viewer) {
  const Item& item = facts.item;
  if (item.kind == store::ItemKind::kReminder) {
    std::string text = item.due ? timeWords(*item.due, viewer) : tr("no date");
    if (item.due && item.due->kind != CalendarTime::Kind::kDate) {
      const Moment due = store::momentOf(*item.due, viewer);
      if (const auto own = ownTimes(item, due, due, viewer); !own.empty()) { text += "\n" + own; }
    }
    return text;
  }
  if (!facts.occurrence) { return tr("never: its rule and exceptions leave no day"); }
  const auto& [start, end, original, row, event] = *facts.occurrence;
  std::string text = spanWords(start, end, item.allDay(), viewer);
  if (!item.allDay()) {
    if (const auto own = ownTimes(item, start, end, viewer); !own.empty()) { text += "\n" + own; }
    if (end > start) {
      text += fmt::format("\n{}", lengthWords(std::chrono::floor<std::chrono::seconds>(end - start)));
    }
  }
  if (original != start) { text += '\n' + tr("instead of {}", spanWords(original, original, item.allDay(), viewer)); }
  return text;
}

std::string changedText(const Item& changed, const Item& series, const Zone& viewer) {
  const Moment start = changed.start ? store::momentOf(*changed.start, viewer) : Moment();
  const Moment end = changed.end ? store::momentOf(*changed.end, viewer) : start;
  std::string text =
      fmt::format("{}: {}", changed.recurrenceId ? timeWords(*changed.recurrenceId, viewer) : "",
                  isCancelled(changed) ? tr("cancelled") : spanWords(start, end, changed.allDay(), viewer));
  if (changed.title != series.title) { text += fmt::format(", \"{}\"", changed.title.value_or("")); }
  if (changed.location != series.location) { text += fmt::format(", {}", changed.location.value_or(tr("no place"))); }
  return text;
}

std::string attendeeText(const store::Attendee& attendee) {
  std::string text = personWords(attendee);
  for (const std::string& word : {answerWords(attendee.status), roleWords(attendee)}) {
    if (!word.empty()) { text += fmt::format(", {}", word); }
  }
  return text;
}

std::string minute(const std::optional<Moment>& moment, const Zone& viewer) {
  return moment ? spanWords(*moment, *moment, false, viewer) : "";
}

std::string conflictText(const std::vector<store::ConflictId>& ids) {
  return linesOf(ids, [](store::ConflictId id) {
    return tr("{}: changed here and on the server; orlocal conflicts shows both", id);
  });
}

}  // namespace

Result<ItemFacts> factsOf(store::CalendarStore& store, const Item& item,
                          const std::optional<store::Occurrence>& occurrence, std::size_t next) {
  ItemFacts facts{item, occurrence, {}, {}, false, {}};
  if (item.kind == store::ItemKind::kEvent) {
    if (!occurrence) { ORLOCAL_TRY(facts.occurrence, nextOrLast(store, item, store::now())); }
    if (!item.recurrence.empty()) { ORLOCAL_TRY(facts.next, nextOccurrences(store, item, store::now(), next)); }
  }
  ORLOCAL_TRY(auto whole, store.wholeItem(item.id));
  if (whole) { facts.changed = std::move(whole->changed); }
  if (item.kind == store::ItemKind::kReminder && !item.recurrence.empty() && !item.completed) {
    ORLOCAL_TRY(facts.next, nextDues(item, facts.changed, next));
  }
  if (occurrence && occurrence->item != item.id) {
    ORLOCAL_TRY(const auto changed, store.item(occurrence->item));
    if (changed != nullptr) { facts.item = *changed; }
  }
  store::RemoteReader remotes(store);
  ORLOCAL_TRY(const auto unsent, remotes.unsent());
  facts.unsent = std::find(unsent.begin(), unsent.end(), item.id) != unsent.end();
  ORLOCAL_TRY(const auto mirrors, remotes.allMirrors());
  const bool mirrored = std::any_of(mirrors.begin(), mirrors.end(),
                                    [&](const store::Mirror& each) { return each.calendar == item.calendar; });
  if (mirrored) {
    // What was changed since the last sync is noted by the next one.
    ORLOCAL_TRY(const std::int64_t noted, remotes.notedUpTo());
    ORLOCAL_TRY(const auto touched, store.touchedSince(noted));
    facts.unsent =
        facts.unsent || std::find(touched.items.begin(), touched.items.end(), item.id) != touched.items.end();
  }
  ORLOCAL_TRY(const auto conflicts, remotes.conflicts());
  for (const store::Conflict& conflict : conflicts) {
    if (conflict.item == item.id) { facts.conflicts.push_back(conflict.id); }
  }
  return facts;
}

Card cardOf(const ItemFacts& facts, const CalendarNames& names, const Zone& viewer) {
  const Item& item = facts.item;
  const bool event = item.kind == store::ItemKind::kEvent;
  const store::Calendar* calendar = names.calendar(item.calendar);
  Card card;
  add(card, event ? tr("When") : tr("Due"), whenText(facts, viewer));
  if (!event && item.start) { add(card, tr("Starts"), timeWords(*item.start, viewer)); }
  if (!item.recurrence.empty()) {
    add(card, tr("Repeats"), recurrenceWords(item.recurrence, firstDayOf(item, viewer), viewer));
  }
  add(card, tr("Next"), linesOf(facts.next, [&](const store::Occurrence& each) {
        return spanWords(each.start, each.end, item.allDay(), viewer);
      }));
  if (!item.series) {
    add(card, tr("Changed"), linesOf(facts.changed, [&](const Item& each) { return changedText(each, item, viewer); }));
  }
  add(card, tr("Place"), item.location.value_or(""));
  if (calendar != nullptr) {
    const auto account = names.account(*calendar);
    add(card, event ? tr("Calendar") : tr("List"),
        calendar->title + (account ? tr(", of {}", *account) : "") + (calendar->readOnly ? tr(", read-only") : ""));
  }
  add(card, tr("Status"), statusWords(item));
  if (item.completed) { add(card, tr("Done"), minute(item.completed, viewer)); }
  add(card, tr("Categories"), listed(categoriesOf(item)));
  if (item.priority > 0) { add(card, tr("Priority"), priorityWords(item.priority)); }
  add(card, tr("Alarms"),
      linesOf(item.alarms, [&](const store::Alarm& each) { return alarmWords(each, item.kind, viewer); }));
  std::vector<store::Attendee> attendees;
  for (const store::Attendee& each : item.attendees) {
    if (each.organizer) {
      add(card, tr("Organizer"), personWords(each));
    } else {
      attendees.push_back(each);
    }
  }
  add(card, tr("Attendees"), linesOf(attendees, attendeeText));
  add(card, "URL", item.url.value_or(""));
  add(card, tr("Notes"), item.notes.value_or(""));
  add(card, tr("Created"), minute(item.created, viewer));
  add(card, tr("Modified"), minute(item.modified, viewer));
  if (facts.unsent) { add(card, tr("Unsent"), tr("changed here; the next orlocal sync carries it to the server")); }
  add(card, tr("Conflict"), conflictText(facts.conflicts));
  add(card, tr("Identifier"), event ? item.identifier : item.itemIdentifier);
  if (item.uid != item.itemIdentifier) { add(card, "UID", item.uid); }
  return card;
}

Card foldedCard(const Card& card, std::size_t width) {
  constexpr std::size_t kLabelColumn = 14;
  Card lines;
  for (const CardLine& each : card) {
    std::string label = "  " + each.label;
    for (const std::string& line : foldedText(each.text, width - std::min(width - 1, kLabelColumn))) {
      lines.push_back({line.empty() ? "" : padded(label, kLabelColumn), line});
      if (!line.empty()) { label.clear(); }
    }
  }
  return lines;
}

}  // namespace orlocal::host
