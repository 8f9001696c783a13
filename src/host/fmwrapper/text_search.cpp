#include "host/fmwrapper/text_search.h"

namespace orlocal::host {

namespace {

/// Up to this length the plain way is faster than any table, and its cost stays bounded.
constexpr std::size_t kShort = 16;

}  // namespace

TextSearch::TextSearch(std::u16string_view what) : m_what(what) {
  if (what.size() <= kShort) { return; }
  m_borders.resize(what.size());
  std::uint32_t border = 0;
  for (std::size_t at = 1; at < what.size(); ++at) {
    while (border > 0 && what[at] != what[border]) { border = m_borders[border - 1]; }
    if (what[at] == what[border]) { ++border; }
    m_borders[at] = border;
  }
}

std::u16string_view::size_type TextSearch::find(std::u16string_view text, std::u16string_view::size_type from) const {
  if (m_what.empty() || from > text.size()) { return std::u16string_view::npos; }
  if (m_borders.empty()) { return text.find(m_what, from); }
  std::size_t matched = 0;
  for (std::size_t at = from; at < text.size(); ++at) {
    while (matched > 0 && text[at] != m_what[matched]) { matched = m_borders[matched - 1]; }
    if (text[at] == m_what[matched]) { ++matched; }
    if (matched == m_what.size()) { return at + 1 - matched; }
  }
  return std::u16string_view::npos;
}

}  // namespace orlocal::host
