#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "host/commands/browsing/browse_key.h"

namespace orlocal::host {

/// A line that somebody types, with its cursor.
class TypedLine {
 public:
  /// With a text to begin with, behind which the cursor stands.
  explicit TypedLine(std::string text = {}) : m_text(std::move(text)), m_cursor(m_text.size()) {}

  /// What the key does to the line.
  void press(const BrowseKey& key);

  const std::string& text() const { return m_text; }
  std::string_view beforeCursor() const { return std::string_view(m_text).substr(0, m_cursor); }

 private:
  std::size_t before(std::size_t at) const;
  std::size_t after(std::size_t at) const;

  std::string m_text;
  std::size_t m_cursor;  ///< bytes before it
};

}  // namespace orlocal::host
