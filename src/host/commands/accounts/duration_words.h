#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace orlocal::host {

/// "6h", "30m", "1d"; none for what is no length of time between a minute and a year.
std::optional<std::chrono::seconds> durationOf(std::string_view words);
/// What is wrong with such words, for the command line; empty when nothing is.
std::string objectionToDuration(const std::string& words);
/// The same in the largest unit that it is a multiple of: "90s", "30m", "1d".
std::string durationText(std::chrono::seconds length);

}  // namespace orlocal::host
