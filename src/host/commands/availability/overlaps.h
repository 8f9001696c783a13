#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "base/result.h"
#include "host/commands/describing/item_json.h"
#include "store/calendar_store.h"
#include "store/icalendar/free_busy_writer.h"

namespace orlocal::host {

/// An occurrence that takes time which a planned event wants, too.
struct Overlap {
  store::Occurrence when;
  std::shared_ptr<const store::Item> item;
  store::BusyKind kind = store::BusyKind::kBusy;
};

/// How far ahead a series is looked at: so long from now or, where that is later, from its start.
constexpr std::chrono::days kOverlapHorizon{365};

/// What is in the way of the event, by start: all occurrences of a single one, those within the horizon of a series.
/// The items of `own` (itself, the series that it was split from) never are. Empty for what takes no time.
Result<std::vector<Overlap>> overlapsOf(store::CalendarStore& store, const store::Zone& viewer,
                                        const store::Item& planned, const std::vector<store::ItemId>& own);

/// `  overlaps "Stand-up" 12:00–13:00 in Work`, with its day where that is not `day`; a few of them, then how many
/// more.
std::vector<std::string> overlapLines(const std::vector<Overlap>& overlaps, std::optional<store::LocalDay> day,
                                      const CalendarNames& names, const store::Zone& viewer);
/// All of them, as items.
nlohmann::json overlapsJson(const std::vector<Overlap>& overlaps, const CalendarNames& names,
                            const store::Zone& viewer);

}  // namespace orlocal::host
