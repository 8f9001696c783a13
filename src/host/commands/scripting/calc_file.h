#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orlocal::host {

/// One calculation of a file, and the line at which it begins.
struct Calculation {
  std::string text;
  std::size_t line = 1;
};

/// The calculations of a file for `orlocal run`.
///
/// A calculation stands on a line of its own. It goes on over the following lines while a bracket, a text or a comment
/// is open. Blank lines, lines that begin with `#` and calculations that are nothing but comments are left out.
std::vector<Calculation> readCalculations(std::string_view text);

/// The lines of a text, whatever ends them; a byte-order mark is dropped.
std::vector<std::string_view> splitLines(std::string_view text);

/// Joins lines to a calculation from `first` on, until it is complete or the lines end; `next` is the line after it.
std::string joinCalculation(const std::vector<std::string_view>& lines, std::size_t first, std::size_t& next);

bool isBlank(std::string_view line);

}  // namespace orlocal::host
