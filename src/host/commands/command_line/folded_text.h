#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orlocal::host {

/// `text` in lines of at most `width` cells, broken at blanks; a longer word stands alone. Line breaks in it are
/// blanks.
std::vector<std::string> folded(std::string_view text, std::size_t width);

/// `text` folded, each line behind `indent` blanks and with a line break.
std::string foldedParagraph(std::string_view text, std::size_t width, std::size_t indent = 0);

/// Names and what they mean: the names two blanks in, the meanings in one column, each folded under it. A name that
/// would push the column past the middle stands on a line of its own.
std::string foldedTable(const std::vector<std::pair<std::string, std::string>>& rows, std::size_t width);

}  // namespace orlocal::host
