#pragma once

#include <string>
#include <string_view>

namespace orlocal::host {

/// `text` as it may stand in an element, or in quotes in an attribute; line breaks stay.
std::string htmlText(std::string_view text);

}  // namespace orlocal::host
