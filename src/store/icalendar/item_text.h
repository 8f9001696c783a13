#pragma once

#include <string>

#include "store/model/model.h"

// One item as iCalendar text by itself (RFC 5545; RFC 4791, 4.1), in folded lines. The same item gives the same bytes.
namespace orlocal::store {

/// Its components: the main one, then the changed occurrences.
std::string itemComponents(const WholeItem& item);
/// A VTIMEZONE for each zone that it names.
std::string itemZones(const WholeItem& item);
/// Both in a VCALENDAR.
std::string itemText(const WholeItem& item);

}  // namespace orlocal::store
