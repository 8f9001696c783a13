#pragma once

#include <cstddef>
#include <string>

#include "base/result.h"
#include "store/model/model.h"

namespace orlocal::store {

/// What one item may have as iCalendar text. What is saved stays within what an import takes, so that every export can
/// be imported again.
inline constexpr std::size_t kMostItemBytes = std::size_t{16} << 20;
inline constexpr std::size_t kMostItemLines = 100'000;

/// Takes out what iCalendar text cannot carry (RFC 5545, 3.3.11): control characters but tabs and line breaks, as an
/// import leaves them out.
void dropUnwritable(std::string& text);
/// The same for a value that is not escaped (a URI or address), and ends where its line does: takes out line breaks,
/// too.
void keepOnOneLine(std::string& value);

/// Refuses an item that no import would take again.
Status checkSize(const Item& item);

}  // namespace orlocal::store
