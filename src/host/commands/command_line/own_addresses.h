#pragma once

#include <string>
#include <vector>

namespace orlocal::host {

/// The mail addresses under which the user is invited, as the settings have them.
std::vector<std::string> ownAddresses();

}  // namespace orlocal::host
