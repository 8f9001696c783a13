#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace orlocal::host {

/// Where in a calculation a text stands that is not closed yet.
struct TextPlace {
  std::string function;      ///< whose argument it is; empty outside of all
  std::size_t argument = 0;  ///< from 0
  std::string typed;         ///< of the text, or of its last line: a list has a value in each
};

/// None when the cursor stands in no text.
std::optional<TextPlace> textPlaceAt(std::string_view beforeCursor);

}  // namespace orlocal::host
