#include "host/commands/care/item_findings.h"

#include <algorithm>
#include <functional>
#include <sstream>
#include <string>
#include <unordered_map>

#include <fmt/format.h>

#include "base/try.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "store/time/clock.h"

namespace orlocal::host {
namespace {

constexpr const char* kItems = "items";
constexpr std::size_t kMostTold = 3;

/// Programs number what they wrote in lines of their own.
std::string withoutVendorLines(const std::string& extra) {
  std::string kept;
  std::istringstream lines(extra);
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with("X-") && !line.starts_with("@X-")) { kept += line + '\n'; }
  }
  return kept;
}

/// Without what differs between twins.
store::Item withoutIdentity(store::Item item) {
  item.id = 0;
  item.uid.clear();
  item.identifier.clear();
  item.itemIdentifier.clear();
  item.created.reset();
  item.modified.reset();
  item.stamped.reset();
  item.sequence = 0;
  item.series.reset();
  item.extra = withoutVendorLines(item.extra);
  return item;
}

/// Finds twins among the items of one calendar. What may be a twin is found by title and start, and then compared
/// whole.
class TwinSearch {
 public:
  void add(const store::Item& main, const std::vector<store::Item>& changed) {
    std::vector<store::Item> blank{withoutIdentity(main)};
    for (const auto& each : changed) { blank.push_back(withoutIdentity(each)); }
    const auto start = main.anchor() ? main.anchor()->local - store::LocalTime() : 0;
    auto& alike = m_groups[std::hash<std::string>()(main.title.value_or("")) ^ std::hash<std::int64_t>()(start)];
    const auto group = std::find_if(alike.begin(), alike.end(), [&](const Group& each) { return each.blank == blank; });
    if (group != alike.end()) {
      group->twins.push_back(main);
    } else {
      alike.push_back({std::move(blank), {main}});
    }
  }

  std::vector<Twins> take() {
    std::vector<Twins> found;
    for (auto& [key, alike] : m_groups) {
      for (Group& group : alike) {
        if (group.twins.size() > 1) { found.push_back(std::move(group.twins)); }
      }
    }
    std::sort(found.begin(), found.end(), [](const Twins& a, const Twins& b) { return a[0].id < b[0].id; });
    m_groups.clear();
    return found;
  }

 private:
  struct Group {
    std::vector<store::Item> blank;
    Twins twins;
  };
  std::unordered_map<std::size_t, std::vector<Group>> m_groups;
};

Status lookAtSeries(store::CalendarStore& store, const store::Item& series, OddItems& odd) {
  if (series.kind != store::ItemKind::kEvent) { return {}; }
  const auto first = store.firstOccurrence(series);
  const auto isTooMuch = [](const Failure& why) { return why.code == ErrorCode::kBudget; };
  if (!first) {
    if (!isTooMuch(first.error())) { return failure(first.error()); }
    odd.tooMany.push_back(series);
    return {};
  }
  if (!*first) {
    odd.empty.push_back(series);
    return {};
  }
  store::EventQuery ever;
  ever.calendars = {series.calendar};
  ever.event = series.id;
  if (const auto all = store.occurrences(ever); !all) {
    if (!isTooMuch(all.error())) { return failure(all.error()); }
    odd.tooMany.push_back(series);
  }
  return {};
}

std::string namesOf(const std::vector<store::Item>& items) {
  std::string names;
  for (std::size_t i = 0; i < items.size() && i < kMostTold; ++i) {
    names += (i == 0 ? "\"" : ", \"") + printable(items[i].title.value_or("(no title)")) + '"';
  }
  return items.size() > kMostTold ? fmt::format("{} and {} more", names, items.size() - kMostTold) : names;
}

}  // namespace

Result<OddItems> oddItems(store::CalendarStore& store, const std::vector<store::Calendar>& calendars) {
  OddItems odd;
  for (const auto& calendar : calendars) {
    TwinSearch twins;
    std::vector<store::Item> series;
    ORLOCAL_CHECK(store.forEachItem(calendar.id, [&](const store::Item& main, const std::vector<store::Item>& changed) {
      twins.add(main, changed);
      if (!main.recurrence.empty()) { series.push_back(main); }
      return Status();
    }));
    for (const auto& each : series) { ORLOCAL_CHECK(lookAtSeries(store, each, odd)); }
    for (Twins& group : twins.take()) { odd.twins.push_back(std::move(group)); }
  }
  return odd;
}

Result<Findings> itemFindings(store::CalendarStore& store) {
  ORLOCAL_TRY(const auto calendars, allCalendars(store));
  ORLOCAL_TRY(const OddItems odd, oddItems(store, calendars));
  Findings findings;
  if (!odd.twins.empty()) {
    std::vector<store::Item> firsts;
    std::size_t superfluous = 0;
    for (const Twins& twins : odd.twins) {
      firsts.push_back(twins.front());
      superfluous += twins.size() - 1;
    }
    findings.push_back(
        note(kItems,
             fmt::format("{} stand there more than once: {}.",
                         superfluous == 1 ? "1 item" : fmt::format("{} items", superfluous), namesOf(firsts)),
             "orlocal duplicates shows them; orlocal duplicates --remove keeps one of each."));
  }
  if (!odd.empty.empty()) {
    findings.push_back(note(kItems, fmt::format("Series without any occurrence: {}.", namesOf(odd.empty)),
                            "orlocal show tells why; orlocal remove takes them away."));
  }
  if (!odd.tooMany.empty()) {
    findings.push_back(problem(
        kItems, fmt::format("These come more often than a fetch of all days can show: {}.", namesOf(odd.tooMany)),
        "Ask for fewer days, give their rule an end, or remove them."));
  }
  if (findings.empty()) {
    findings.push_back(fine(kItems, "None stands there twice, and every series has occurrences."));
  }
  return findings;
}

}  // namespace orlocal::host
