#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "base/result.h"
#include "host/commands/describing/row_fields.h"

namespace orlocal::host {

/// A person's own format for the rows of a list: "{start:%H:%M}  {title:20}".
///
/// Names in braces are members of the row, dotted where they are nested. `:20` fills a field up to so many cells or
/// shortens it, `:>20` fills it on the left; `:%d.%m. %H:%M` writes a day or a moment as strftime does, in the user's
/// language. `{{`, `}}`, `\n`, `\t` and `\\` stand for themselves.
class LineFormat {
 public:
  /// Fails with a sentence where the text is none, or names what rows of this shape don't have.
  static Result<LineFormat> read(std::string_view text, const RowShape& shape);

  /// The line of a row, with its end. What the row does not have, or has as null, is empty; several values stand apart
  /// by commas, objects as JSON. Texts are `printable`, so that a row stays a line.
  std::string line(const nlohmann::json& row) const;

 private:
  struct Part {
    std::string literal = {};
    std::vector<std::string> path = {};  ///< of a field; empty for a literal
    std::string time = {};               ///< how it is written; empty for as it is in JSON
    std::size_t width = 0;               ///< 0 for as wide as it is
    bool toTheRight = false;
  };
  static Result<Part> readField(std::string_view text, const RowShape& shape);

  std::vector<Part> m_parts;
};

}  // namespace orlocal::host
