#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orlocal::host {

// Texts of ours, such as those of help.

/// `text` in lines of at most `width` cells, broken at blanks; a longer word stands alone. Line breaks in it are
/// blanks.
std::vector<std::string> folded(std::string_view text, std::size_t width);

/// `text` folded, each line behind `indent` blanks and with a line break.
std::string foldedParagraph(std::string_view text, std::size_t width, std::size_t indent = 0);

/// Names and what they mean: the names two blanks in, the meanings in one column, each folded under it. A name that
/// would push the column past the middle stands on a line of its own.
std::string foldedTable(const std::vector<std::pair<std::string, std::string>>& rows, std::size_t width);

// Texts of people.

/// The lines of `text`, printable, each in at most `width` cells where its words allow it: a word that is longer is
/// broken, as are letters of scripts without blanks. Blank lines stay.
std::vector<std::string> foldedText(std::string_view text, std::size_t width);

/// `text`, printable, in at most `width` cells, with "…" where something is left out.
std::string shortened(std::string_view text, std::size_t width);

}  // namespace orlocal::host
