#pragma once

#include <map>
#include <string>

#include "store/model/model.h"
#include "store/time/zone.h"

// Items as iCalendar text (RFC 5545), appended to `out` in folded lines. The same items give the same bytes.
namespace orlocal::store {

/// BEGIN:VCALENDAR and what every calendar text begins with.
void writePlainHead(std::string& out);
/// The same with what the calendar says about itself.
void writeCalendarHead(std::string& out, const Calendar& calendar);
void writeCalendarEnd(std::string& out);

/// An event or reminder, a changed occurrence too.
void writeItem(std::string& out, const Item& item);

/// Adds the zones that an item names, each with the earliest local year it is needed for.
void collectZones(std::map<std::string, int>& zones, const Item& item);

}  // namespace orlocal::store
