#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace orlocal::host::calc {

/// What a calculation still lacks, for a caller that reads it line by line.
enum class Completeness : std::uint8_t {
  kComplete,  ///< as far as brackets, texts and comments go
  kOpen,      ///< a bracket, a text or a comment is still open
};

Completeness completenessOf(std::string_view source);

/// Puts a calculation together from its lines and tells after each whether it is complete. A line is read once, however
/// many there are; a text or a comment over several lines is read again when a line may end it.
class LineJoiner {
 public:
  /// A line without its end.
  void add(std::string_view line);

  Completeness completeness() const { return m_completeness; }

  /// The lines so far, joined by line feeds.
  std::string take() { return std::move(m_text); }

 private:
  std::string m_text;
  std::size_t m_read = 0;  ///< what lies before is read and holds `m_open` open brackets
  int m_open = 0;
  bool m_inside = false;  ///< a text or a comment begins at `m_read`
  Completeness m_completeness = Completeness::kComplete;
};

}  // namespace orlocal::host::calc
