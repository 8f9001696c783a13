#include "host/calc/token_stream.h"

#include <utility>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/calc/calc_failure.h"

namespace orlocal::host::calc {

Status TokenStream::check(std::string_view source) {
  TokenReader reader(source);
  for (;;) {
    ORLOCAL_TRY(const Token token, reader.next());
    if (token.kind == TokenKind::kEnd) { return {}; }
  }
}

TokenStream::TokenStream(std::string_view source) : m_source(source), m_reader(source) { advance(); }

// A source that was checked is read the same way again, so nothing can fail here.
void TokenStream::advance() { m_next = m_reader.next().value_or(Token{}); }

Token TokenStream::take() {
  Token token = std::move(m_next);
  advance();
  return token;
}

bool TokenStream::takeIf(TokenKind kind) {
  if (m_next.kind != kind) { return false; }
  advance();
  return true;
}

Status TokenStream::expect(TokenKind kind, std::string_view spelling) {
  if (!takeIf(kind)) { return unreadable(m_next.offset, tr("{} is expected here, not {}", spelling, nameOf(m_next))); }
  return {};
}

std::string TokenStream::nameOf(const Token& token) const {
  switch (token.kind) {
    case TokenKind::kEnd:
      return tr("the end");
    case TokenKind::kText:
      return tr("a text");
    default: {
      // The token's own spelling: up to the next blank or the next ASCII symbol is enough to recognise it by.
      std::size_t length = 1;
      const std::string_view rest = m_source.substr(token.offset);
      if (token.kind == TokenKind::kName || token.kind == TokenKind::kNumber) { length = token.text.size(); }
      while (length < rest.size() && (static_cast<unsigned char>(rest[length]) & 0xC0U) == 0x80U) { ++length; }
      return std::string(rest.substr(0, length));
    }
  }
}

}  // namespace orlocal::host::calc
