#include "host/commands/choosing/item_choice.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <utility>

#include <fmt/format.h>

#include "base/text.h"
#include "base/translation.h"
#include "base/try.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/words/day_words.h"

namespace orlocal::host {
namespace {

using store::Calendar;
using store::Item;
using store::ItemKind;
using store::LocalDay;
using store::LocalTime;
using store::Occurrence;

constexpr std::size_t kShortest = 4;  ///< of a part of an identifier
constexpr std::size_t kShort = 8;
constexpr std::size_t kMostListed = 10;

bool isPartOfIdentifier(std::string_view what) {
  return what.size() >= kShortest && what.find_first_not_of("0123456789abcdef-") == std::string_view::npos;
}

bool beginsOrEnds(std::string_view whole, std::string_view part) {
  return whole.starts_with(part) || whole.ends_with(part);
}

/// Whether each word of `what` stands somewhere in `title`.
bool hasWords(std::string_view title, std::string_view what) {
  bool any = false;
  while (!(what = trimmed(what)).empty()) {
    const std::string_view word = what.substr(0, what.find(' '));
    if (title.find(word) == std::string_view::npos) { return false; }
    what.remove_prefix(word.size());
    any = true;
  }
  return any;
}

struct Hit {
  int fit;
  Item item;
  std::optional<std::string> changed;  ///< the identifier of the changed occurrence that was named
};

/// What in these calendars fits at all, the best first.
Result<std::vector<Hit>> hitsAmong(store::CalendarStore& store, const std::vector<Calendar>& calendars,
                                   const ItemWords& words) {
  std::vector<Hit> hits;
  for (const Calendar& calendar : calendars) {
    ORLOCAL_CHECK(store.forEachItem(calendar.id, [&](const Item& main, const std::vector<Item>& changed) -> Status {
      if (words.kind && main.kind != *words.kind) { return {}; }
      if (words.completed && main.completed.has_value() != *words.completed) { return {}; }
      std::optional<Hit> best;
      if (const auto fit = fitOf(words.what, main)) { best = Hit{*fit, main, std::nullopt}; }
      for (const Item& each : changed) {
        const auto fit = fitOf(words.what, each);
        if (fit && (!best || *fit < best->fit)) { best = Hit{*fit, main, each.itemIdentifier}; }
      }
      if (best) {
        best->fit = 2 * best->fit + (main.completed ? 1 : 0);
        hits.push_back(*std::move(best));
      }
      return {};
    }));
  }
  std::stable_sort(hits.begin(), hits.end(), [](const Hit& a, const Hit& b) { return a.fit < b.fit; });
  return hits;
}

/// A hit with the occurrences of it that are meant: of an event those of a day, none where no day was named.
struct Candidate {
  Item item;
  std::vector<Occurrence> occurrences;
};

struct DayRange {
  store::Moment from, to;
};

/// None when it is not on that day.
Result<std::optional<Candidate>> onDay(store::CalendarStore& store, const store::Zone& viewer, const Hit& hit,
                                       const ItemWords& words) {
  Candidate candidate{hit.item, {}};
  const DayRange range{viewer.toMoment(LocalTime(*words.day)), viewer.toMoment(LocalTime(*words.day + 1))};
  if (hit.item.kind == ItemKind::kReminder) {
    if (!hit.item.due) { return std::nullopt; }
    const store::Moment due = store::momentOf(*hit.item.due, viewer);
    return due >= range.from && due < range.to ? std::optional(std::move(candidate)) : std::nullopt;
  }
  ORLOCAL_TRY(const auto found, store.occurrences({range.from, range.to, {hit.item.calendar}, hit.item.id}));
  for (const Occurrence& each : found) {
    if (!words.time || clockTime(viewer.toLocal(each.start)) == *words.time) { candidate.occurrences.push_back(each); }
  }
  if (candidate.occurrences.empty()) { return std::nullopt; }
  // What begins on the day is meant before what merely goes on then.
  const auto begins = [&](const Occurrence& each) { return each.start >= range.from; };
  if (std::any_of(candidate.occurrences.begin(), candidate.occurrences.end(), begins)) {
    std::erase_if(candidate.occurrences, [&](const Occurrence& each) { return !begins(each); });
  }
  return candidate;
}

/// The occurrence that is stored as the changed one of this identifier.
Result<std::vector<Occurrence>> changedOne(store::CalendarStore& store, const Hit& hit) {
  ORLOCAL_TRY(const auto changed, store.itemWithIdentifier(*hit.changed));
  if (changed == nullptr || changed->kind != ItemKind::kEvent) { return std::vector<Occurrence>(); }
  ORLOCAL_TRY(const auto found, store.occurrences({std::nullopt, std::nullopt, {hit.item.calendar}, hit.item.id}));
  std::vector<Occurrence> own;
  std::copy_if(found.begin(), found.end(), std::back_inserter(own),
               [&](const Occurrence& each) { return each.item == changed->id; });
  return own;
}

/// "Mon 2 Nov 2026 09:00", "Mon 2 Nov 2026", "no date".
std::string whenOf(const std::optional<store::CalendarTime>& time, const store::Zone& viewer) {
  if (!time) { return tr("no date"); }
  const LocalTime local = viewer.toLocal(store::momentOf(*time, viewer));
  const std::string day = shortDay(LocalDay(local));
  return time->kind == store::CalendarTime::Kind::kDate ? day : day + ' ' + clockTime(local);
}

std::string inQuotes(std::string_view what) { return '"' + printable(what) + '"'; }

/// The fewest last characters that tell these apart, at least as many as `shortIdentifier` has.
std::size_t lengthThatTells(const std::vector<Candidate>& candidates) {
  for (std::size_t length = kShort;; ++length) {
    std::vector<std::string_view> ends;
    bool whole = true;
    for (const Candidate& each : candidates) {
      const std::string_view identifier = each.item.itemIdentifier;
      whole = whole && identifier.size() <= length;
      ends.push_back(identifier.substr(identifier.size() - std::min(length, identifier.size())));
    }
    std::sort(ends.begin(), ends.end());
    if (whole || std::adjacent_find(ends.begin(), ends.end()) == ends.end()) { return length; }
  }
}

std::string listing(const std::vector<Candidate>& candidates, const std::map<store::CalendarId, Calendar>& calendars,
                    const store::Zone& viewer) {
  const std::size_t length = lengthThatTells(candidates);
  std::string lines;
  for (std::size_t i = 0; i < std::min(candidates.size(), kMostListed); ++i) {
    const Item& item = candidates[i].item;
    const std::string_view identifier = item.itemIdentifier;
    const auto when = item.kind == ItemKind::kEvent ? item.start : item.endOrDue();
    lines += tr("\n  {}  {}, {}{}, in {}", identifier.substr(identifier.size() - std::min(length, identifier.size())),
                inQuotes(item.title.value_or("")), whenOf(when, viewer),
                item.recurrence.empty() ? "" : tr(" (repeats)"), inQuotes(calendars.at(item.calendar).title));
  }
  if (candidates.size() > kMostListed) { lines += tr("\n  and {} more", candidates.size() - kMostListed); }
  return lines;
}

std::string nounFor(const ItemWords& words) {
  if (!words.kind) { return tr("event or reminder"); }
  if (*words.kind == ItemKind::kEvent) { return tr("event"); }
  return !words.completed ? tr("reminder") : *words.completed ? tr("completed reminder") : tr("open reminder");
}

Failed nothingFits(const ItemWords& words) {
  return failure(
      ErrorCode::kNotFound,
      tr("There is no {} {}{}. Write its title or words of it, or the identifier that --json shows.", nounFor(words),
         inQuotes(words.what), words.calendars.empty() ? "" : tr(" in the calendars named")));
}

Failed notThen(const ItemWords& words, const Hit& best, const store::Zone& viewer) {
  const auto when = best.item.kind == ItemKind::kEvent ? best.item.start : best.item.due;
  return failure(ErrorCode::kNotFound,
                 tr("{} is not on {}{}; {} {}. Name another day.", inQuotes(best.item.title.value_or("")),
                    shortDay(*words.day), words.time ? tr(" at {}", *words.time) : "",
                    best.item.recurrence.empty() ? tr("it is on") : tr("it repeats, first on"), whenOf(when, viewer)));
}

Failed severalThatDay(const Candidate& candidate, const store::Zone& viewer) {
  std::string times;
  for (const Occurrence& each : candidate.occurrences) {
    times += (times.empty() ? "" : ", ") + clockTime(viewer.toLocal(each.start));
  }
  return failure(ErrorCode::kRefused, tr("{} happens several times on that day, at {}; write the time after "
                                         "the day.",
                                         inQuotes(candidate.item.title.value_or("")), times));
}

}  // namespace

std::optional<int> fitOf(std::string_view what, const Item& item) {
  if (what.empty()) { return std::nullopt; }
  if (what == item.itemIdentifier || what == item.uid) { return 0; }
  const std::string title = item.title.value_or("");
  if (what == title && !title.empty()) { return 1; }
  const std::string folded = caseFolded(what), foldedTitle = caseFolded(title);
  const std::string identifier = caseFolded(item.itemIdentifier);
  if (folded == identifier) { return 0; }
  if (folded == foldedTitle) { return 2; }
  if (isPartOfIdentifier(folded) && beginsOrEnds(identifier, folded)) { return 3; }
  if (foldedTitle.starts_with(folded)) { return 4; }
  if (hasWords(foldedTitle, folded)) { return 5; }
  if (what.size() >= kShortest && beginsOrEnds(item.uid, what)) { return 6; }
  return std::nullopt;
}

std::string shortIdentifier(const Item& item) {
  const std::string& whole = item.itemIdentifier;
  return whole.substr(whole.size() - std::min(kShort, whole.size()));
}

Result<ChosenItem> chooseItem(store::CalendarStore& store, const store::Zone& viewer, const ItemWords& words) {
  ORLOCAL_TRY(const auto named, calendarsTitled(store, words.calendars));
  std::map<store::CalendarId, Calendar> calendars;
  for (const Calendar& calendar : named) { calendars.emplace(calendar.id, calendar); }
  ORLOCAL_TRY(const auto hits, hitsAmong(store, named, words));
  if (hits.empty()) { return nothingFits(words); }

  std::vector<Candidate> candidates;
  std::optional<int> fit;
  for (const Hit& hit : hits) {
    if (fit && hit.fit != *fit) { break; }
    if (!words.day) {
      candidates.push_back({hit.item, {}});
      if (hit.changed && hit.item.kind == ItemKind::kEvent && hit.fit == 0) {
        ORLOCAL_TRY(candidates.back().occurrences, changedOne(store, hit));
      }
      fit = hit.fit;
      continue;
    }
    ORLOCAL_TRY(auto there, onDay(store, viewer, hit, words));
    if (!there) { continue; }
    candidates.push_back(*std::move(there));
    fit = hit.fit;
  }
  if (candidates.empty()) { return notThen(words, hits.front(), viewer); }
  if (candidates.size() > 1) {
    return failure(
        ErrorCode::kRefused,
        tr("{} may be {} things; name one by its identifier, or say in which calendar or on which day it is:{}",
           inQuotes(words.what), candidates.size(), listing(candidates, calendars, viewer)));
  }
  Candidate& one = candidates.front();
  if (one.occurrences.size() > 1) { return severalThatDay(one, viewer); }
  return ChosenItem{std::make_shared<const Item>(one.item), calendars.at(one.item.calendar),
                    one.occurrences.empty() ? std::nullopt : std::optional(one.occurrences.front())};
}

}  // namespace orlocal::host
