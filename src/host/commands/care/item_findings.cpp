#include "host/commands/care/item_findings.h"

#include <string>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "store/time/clock.h"

namespace orlocal::host {
namespace {

constexpr const char* kItems = translatable("items");
constexpr std::size_t kMostNamed = 3;

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
  for (std::size_t i = 0; i < items.size() && i < kMostNamed; ++i) {
    names += (i == 0 ? "\"" : ", \"") + printable(items[i].title.value_or(tr("(no title)"))) + '"';
  }
  return items.size() > kMostNamed ? tr("{} and {} more", names, items.size() - kMostNamed) : names;
}

}  // namespace

Result<OddItems> oddItems(store::CalendarStore& store, const store::Zone& viewer,
                          const std::vector<store::Calendar>& calendars) {
  OddItems odd;
  for (const auto& calendar : calendars) {
    std::vector<store::Item> series;
    ORLOCAL_CHECK(store.forEachItem(calendar.id, [&](const store::Item& main, const std::vector<store::Item>&) {
      if (!main.recurrence.empty()) { series.push_back(main); }
      return Status();
    }));
    for (const auto& each : series) { ORLOCAL_CHECK(lookAtSeries(store, each, odd)); }
  }
  ORLOCAL_TRY(odd.same, sameItems(store, viewer, calendars));
  return odd;
}

Result<Findings> itemFindings(store::CalendarStore& store) {
  ORLOCAL_TRY(const auto calendars, allCalendars(store));
  ORLOCAL_TRY(const OddItems odd, oddItems(store, store::Zone::ofUser(), calendars));
  Findings findings;
  if (!odd.same.empty()) {
    std::vector<store::Item> firsts;
    for (const SameItems& same : odd.same) { firsts.push_back(same.members.front().item.main); }
    findings.push_back(note(kItems, tr("There more than once: {}.", namesOf(firsts)),
                            tr("orlocal duplicates shows which are superfluous; with --remove it takes those away.")));
  }
  if (!odd.empty.empty()) {
    findings.push_back(note(kItems, tr("Series without any occurrence: {}.", namesOf(odd.empty)),
                            tr("orlocal show tells why; orlocal remove takes them away.")));
  }
  if (!odd.tooMany.empty()) {
    findings.push_back(problem(kItems,
                               tr("These come more often than a fetch of all days can show: {}.", namesOf(odd.tooMany)),
                               tr("Ask for fewer days, give their rule an end, or remove them.")));
  }
  if (findings.empty()) {
    findings.push_back(fine(kItems, tr("Nothing is there twice, and every series has occurrences.")));
  }
  return findings;
}

}  // namespace orlocal::host
