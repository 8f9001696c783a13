#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>

namespace orlocal::bench {

/// Writes a calendar file of `events` VEVENTs, one fifth of them repeating, over the years 2020 to 2029: zoned, UTC,
/// whole-day and floating times; weekly, daily, monthly and yearly rules, a third each endless, counted and bounded by
/// a date; a tenth with an exception. The same numbers give the same bytes.
void writeCalendarFile(const std::filesystem::path& file, std::size_t events, std::uint64_t seed = 1);

/// Writes a calendar file of `series` series of an hour that come every day; `timesADay` times on each, a third each
/// endless, counted and bounded by a date.
void writeDailySeries(const std::filesystem::path& file, std::size_t series, int timesADay);

}  // namespace orlocal::bench
