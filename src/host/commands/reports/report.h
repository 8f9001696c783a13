#pragma once

#include <string>
#include <vector>

#include "host/commands/views/agenda.h"
#include "host/commands/views/grid_entries.h"
#include "host/commands/views/item_card.h"

namespace orlocal::host {

/// What a report shows of the days asked for, and how.
struct Report {
  struct Entry {
    GridEntry shown;
    std::string calendar;
    std::vector<CardLine> card;  ///< all that is known of it
  };

  store::LocalDay first, last;  ///< included
  store::Zone viewer;
  store::Moment made;
  cctz::weekday firstWeekday = cctz::weekday::monday;
  std::vector<Entry> entries;  ///< as `gridEntries` orders them
};

/// A page by itself (HTML 5): each month as a table, each week with its hours, the details of an entry behind it. It
/// runs no program and fetches nothing, is readable in light and dark, on a telephone, on paper and by a screen reader.
std::string reportPage(const Report& report);

/// A table (RFC 4180, UTF-8, with a line of headings): a line for each event, occurrence and reminder.
std::string reportTable(const Report& report);

}  // namespace orlocal::host
