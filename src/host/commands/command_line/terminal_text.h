#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "store/model/model.h"

namespace orlocal::host {

/// `text` on one line: control characters become blanks, and marks that turn the direction of writing or that nobody
/// sees are left out, so that nothing in a calendar can steer the terminal or read there as something else. Bytes that
/// are no text become U+FFFD.
std::string printable(std::string_view text);

/// Cells that `text` takes on a terminal: none for marks that join the letter before, two for East Asian wide letters
/// and emoji.
std::size_t displayWidth(std::string_view text);

/// `text` followed by blanks up to `width` cells.
std::string padded(std::string_view text, std::size_t width);

/// Cells in a line of the standard output: what COLUMNS says, else what its terminal has, else 80.
std::size_t terminalWidth(bool onTerminal);

/// Escape sequences on a terminal, nothing elsewhere.
class Ink {
 public:
  explicit Ink(bool onTerminal) : m_on(onTerminal) {}

  std::string bold(std::string_view text) const { return wrapped("\x1b[1m", text); }
  std::string dim(std::string_view text) const { return wrapped("\x1b[2m", text); }
  std::string struck(std::string_view text) const { return wrapped("\x1b[9m", text); }
  std::string colored(const std::optional<store::Rgb>& color, std::string_view text) const;
  bool on() const { return m_on; }

 private:
  std::string wrapped(std::string_view begin, std::string_view text) const;

  bool m_on;
};

}  // namespace orlocal::host
