#pragma once

#include <string>

#include "results.h"

namespace orlocal::bench {

/// "1.23 ms", "45 per second", "25.5 MiB".
std::string amountText(Unit unit, double amount);

/// The head of the table of rows, and the lines of one row: one for each floor.
std::string rowsHead();
std::string rowLines(const Row& row);

/// All as the page about performance shows it.
std::string reportText(const Results& results);

/// Writes that to a file: between the lines `<!-- results begin -->` and `<!-- results end -->` of one that has them,
/// and as its whole content otherwise.
void writeReport(const Results& results, const std::filesystem::path& file);

}  // namespace orlocal::bench
