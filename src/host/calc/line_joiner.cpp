#include "host/calc/line_joiner.h"

#include "host/calc/lexer.h"

namespace orlocal::host::calc {

Completeness completenessOf(std::string_view source) {
  LineJoiner joiner;
  joiner.add(source);
  return joiner.completeness();
}

void LineJoiner::add(std::string_view line) {
  if (!m_text.empty()) { m_text += '\n'; }
  m_text += line;
  if (m_inside && line.find('"') == std::string_view::npos && line.find("*/") == std::string_view::npos) { return; }
  m_inside = false;
  TokenReader reader(std::string_view(m_text).substr(m_read));
  for (;;) {
    const Result<Token> token = reader.next();
    if (!token) {
      m_inside = reader.endedInside();
      // What is unfinished is read again with the next line, from where it begins.
      if (m_inside) { m_read += token.error().place.value_or(0); }
      m_completeness = m_inside ? Completeness::kOpen : Completeness::kComplete;
      return;
    }
    if (token->kind == TokenKind::kEnd) { break; }
    if (token->kind == TokenKind::kOpen || token->kind == TokenKind::kOpenList) { ++m_open; }
    if (token->kind == TokenKind::kClose || token->kind == TokenKind::kCloseList) { --m_open; }
  }
  m_read = m_text.size();
  m_completeness = m_open > 0 ? Completeness::kOpen : Completeness::kComplete;
}

}  // namespace orlocal::host::calc
