#include "host/commands/care/same_items.h"

#include <algorithm>
#include <functional>
#include <map>
#include <sstream>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>

#include <fmt/format.h>

#include "base/text.h"
#include "base/try.h"
#include "host/commands/care/removal.h"
#include "host/commands/words/item_words.h"
#include "store/recurrence/rule_text.h"

namespace orlocal::host {
namespace {

using store::Item;
using store::WholeItem;
using store::Zone;

/// What an item is taken for that says nothing of it.
constexpr std::string_view kUsualLines[] = {"TRANSP:OPAQUE", "STATUS:CONFIRMED", "STATUS:NEEDS-ACTION", "CLASS:PUBLIC"};

void addText(std::string& looks, std::string_view text) { looks.append(trimmed(text)).push_back('\x1f'); }

/// The moment, and whether it is a whole day: that it is told in another zone makes no other item.
void addTime(std::string& looks, const std::optional<store::CalendarTime>& time, const Zone& viewer) {
  if (!time) { return addText(looks, "-"); }
  const bool day = time->kind == store::CalendarTime::Kind::kDate;
  addText(looks, fmt::format("{}{}", day ? "day " : "", store::momentOf(*time, viewer).time_since_epoch().count()));
}

void addLooks(std::string& looks, const Item& item, const Zone& viewer) {
  addText(looks, item.kind == store::ItemKind::kEvent ? "event" : "reminder");
  addText(looks, item.title.value_or(""));
  addText(looks, item.location.value_or(""));
  addTime(looks, item.start, viewer);
  addTime(looks, item.endOrDue(), viewer);
  addTime(looks, item.recurrenceId, viewer);
  addText(looks, item.completed ? "done" : isCancelled(item) ? "cancelled" : "");
  for (const store::RecurrenceRule& rule : item.recurrence.rules) { addText(looks, store::ruleText(rule)); }
  for (const store::ExceptionRule& rule : item.recurrence.exceptionRules) {
    addText(looks, "but " + store::ruleText(rule.rule));
  }
  for (const auto* times : {&item.recurrence.added, &item.recurrence.excluded}) {
    addText(looks, "at");
    for (const store::CalendarTime& time : *times) { addTime(looks, time, viewer); }
  }
}

/// Lines that say something of the item.
std::vector<std::string> toldLines(const std::string& extra) {
  std::vector<std::string> lines;
  std::istringstream text(extra);
  for (std::string line; std::getline(text, line);) {
    const bool usual = std::any_of(std::begin(kUsualLines), std::end(kUsualLines),
                                   [&](std::string_view each) { return equalsNoCase(each, line); });
    if (!usual && !line.starts_with("X-") && !line.starts_with('@')) { lines.push_back(line); }
  }
  return lines;
}

template <class List, class Same>
bool hasAllOf(const List& kept, const List& other, Same same) {
  return std::all_of(other.begin(), other.end(), [&](const auto& each) {
    return std::any_of(kept.begin(), kept.end(), [&](const auto& own) { return same(own, each); });
  });
}

bool hasText(const std::optional<std::string>& kept, const std::optional<std::string>& other) {
  const std::string_view wanted = trimmed(other ? std::string_view(*other) : std::string_view());
  return wanted.empty() || (kept && trimmed(*kept) == wanted);
}

bool hasAll(const Item& kept, const Item& other) {
  return hasText(kept.notes, other.notes) && hasText(kept.url, other.url) &&
         (other.priority == 0 || kept.priority == other.priority) &&
         hasAllOf(kept.alarms, other.alarms,
                  [](const store::Alarm& a, const store::Alarm& b) {
                    return a.action == b.action && a.trigger == b.trigger && a.emailAddress == b.emailAddress;
                  }) &&
         hasAllOf(kept.attendees, other.attendees,
                  [](const store::Attendee& a, const store::Attendee& b) {
                    return equalsNoCase(a.address, b.address) && a.status == b.status && a.organizer == b.organizer;
                  }) &&
         hasAllOf(toldLines(kept.extra), toldLines(other.extra), std::equal_to<>());
}

std::string kindAndUid(const Item& item) {
  return (item.kind == store::ItemKind::kEvent ? "event " : "reminder ") + item.uid;
}

/// Smaller is richer.
auto rankOf(const SameItems::Member& member) {
  const Item& item = member.item.main;
  const auto many = [](std::size_t count) { return -static_cast<std::ptrdiff_t>(count); };
  return std::tuple(many(item.attendees.size()), many(item.alarms.size()), many(item.notes.value_or("").size()),
                    allowsChanges(member.calendar), item.id);
}

/// Items that may be the same, by a hash: what is kept of each is small, as there may be many.
using Candidates = std::map<std::size_t, std::vector<store::ItemId>>;

void dropLonely(Candidates& candidates) {
  std::erase_if(candidates, [](const auto& each) { return each.second.size() < 2; });
}

class SameItemSearch {
 public:
  SameItemSearch(store::CalendarStore& store, const Zone& viewer, const std::vector<store::Calendar>& calendars)
      : m_store(store), m_viewer(viewer), m_calendars(calendars) {}

  Result<std::vector<SameItems>> run() {
    ORLOCAL_CHECK(findCandidates());
    std::vector<SameItems> found;
    for (const auto& [hash, ids] : m_byLooks) {
      ORLOCAL_CHECK(collect(ids, found, [this](const WholeItem& item) { return looksOf(item, m_viewer); }));
    }
    for (SameItems& same : found) {
      const auto& uid = same.members.front().item.main.uid;
      const bool one = std::all_of(same.members.begin(), same.members.end(),
                                   [&](const auto& member) { return member.item.main.uid == uid; });
      same.sameness = one ? Sameness::kCopies : Sameness::kAlike;
    }
    std::vector<SameItems> ofOneUid;
    for (const auto& [hash, ids] : m_byUid) {
      ORLOCAL_CHECK(collect(ids, ofOneUid, [](const WholeItem& item) { return kindAndUid(item.main); }));
    }
    for (SameItems& same : ofOneUid) {
      const std::string looks = looksOf(same.members.front().item, m_viewer);
      const bool alike = std::all_of(same.members.begin(), same.members.end(),
                                     [&](const auto& member) { return looksOf(member.item, m_viewer) == looks; });
      // Those were found by their looks already.
      if (alike) { continue; }
      same.sameness = Sameness::kDiffering;
      found.push_back(std::move(same));
    }
    std::sort(found.begin(), found.end(), [](const SameItems& a, const SameItems& b) {
      return a.members.front().item.main.id < b.members.front().item.main.id;
    });
    for (SameItems& same : found) { settle(same); }
    return found;
  }

 private:
  Status findCandidates() {
    for (const store::Calendar& calendar : m_calendars) {
      ORLOCAL_CHECK(m_store.forEachItem(calendar.id, [&](const Item& main, const std::vector<Item>& changed) {
        const std::hash<std::string> hash;
        m_byLooks[hash(looksOf({main, changed}, m_viewer))].push_back(main.id);
        if (!main.recurrenceId) { m_byUid[hash(kindAndUid(main))].push_back(main.id); }
        return Status();
      }));
    }
    dropLonely(m_byLooks);
    dropLonely(m_byUid);
    return {};
  }

  /// Those of `ids` that have the same key, in groups.
  template <class Key>
  Status collect(const std::vector<store::ItemId>& ids, std::vector<SameItems>& found, Key key) {
    std::map<std::string, SameItems> groups;
    for (const store::ItemId id : ids) {
      ORLOCAL_TRY(auto whole, m_store.wholeItem(id));
      if (!whole) { continue; }
      const auto calendar = std::find_if(m_calendars.begin(), m_calendars.end(),
                                         [&](const store::Calendar& each) { return each.id == whole->main.calendar; });
      if (calendar == m_calendars.end()) { continue; }
      const std::string name = key(*whole);
      groups[name].members.push_back({*std::move(whole), *calendar, false});
    }
    for (auto& [name, same] : groups) {
      if (same.members.size() > 1) { found.push_back(std::move(same)); }
    }
    return {};
  }

  store::CalendarStore& m_store;
  const Zone& m_viewer;
  const std::vector<store::Calendar>& m_calendars;
  Candidates m_byLooks, m_byUid;
};

}  // namespace

std::size_t SameItems::superfluous() const {
  return static_cast<std::size_t>(
      std::count_if(members.begin(), members.end(), [](const Member& each) { return each.superfluous; }));
}

std::string looksOf(const WholeItem& item, const Zone& viewer) {
  std::string looks;
  addLooks(looks, item.main, viewer);
  for (const Item& changed : item.changed) { addLooks(looks, changed, viewer); }
  return looks;
}

bool saysAllOf(const WholeItem& kept, const WholeItem& other) {
  if (kept.changed.size() != other.changed.size() || !hasAll(kept.main, other.main)) { return false; }
  for (std::size_t i = 0; i < kept.changed.size(); ++i) {
    if (!hasAll(kept.changed[i], other.changed[i])) { return false; }
  }
  return true;
}

void settle(SameItems& same) {
  auto& members = same.members;
  std::sort(members.begin(), members.end(), [](const auto& a, const auto& b) { return rankOf(a) < rankOf(b); });
  if (same.sameness == Sameness::kDiffering) { return; }
  for (std::size_t i = 1; i < members.size(); ++i) {
    if (!allowsChanges(members[i].calendar)) { continue; }
    members[i].superfluous = std::any_of(members.begin(), members.end(), [&](const SameItems::Member& kept) {
      const bool stays = !kept.superfluous && &kept != &members[i];
      const bool before = &kept < &members[i] || !allowsChanges(kept.calendar);
      return stays && before && saysAllOf(kept.item, members[i].item);
    });
  }
}

Result<std::vector<SameItems>> sameItems(store::CalendarStore& store, const Zone& viewer,
                                         const std::vector<store::Calendar>& calendars) {
  return SameItemSearch(store, viewer, calendars).run();
}

}  // namespace orlocal::host
