#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orlocal::host {

/// Titles and names in the user's store, for the key that completes: `what` is "calendars", "accounts" or "items" (of
/// the months around today). Whoever presses the key wants no story: without a store, or when it cannot be read, there
/// are none, and none is made.
std::vector<std::string> storeValues(std::string_view what);

}  // namespace orlocal::host
