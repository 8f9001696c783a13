#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orlocal::host {

/// Letters to put in, leave out, exchange or swap with their neighbour to make one text of the other; capitals of
/// ASCII are small ones.
std::size_t editDistance(std::string_view a, std::string_view b);

/// The one of `known` that somebody who typed `word` most likely meant; none when nothing is near.
std::optional<std::string> nearestWord(std::string_view word, const std::vector<std::string>& known);

}  // namespace orlocal::host
