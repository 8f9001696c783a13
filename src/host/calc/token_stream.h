#pragma once

#include <string>
#include <string_view>

#include "base/result.h"
#include "host/calc/lexer.h"

namespace orlocal::host::calc {

/// The tokens of a calculation with the next one in view, for a parser that never goes back.
class TokenStream {
 public:
  /// Fails at the first thing in the source that is no token.
  static Status check(std::string_view source);

  /// Of a source that `check` has been through without a failure. The source outlives the stream.
  explicit TokenStream(std::string_view source);

  const Token& peek() const { return m_next; }
  /// Goes on to the token behind the next one.
  void advance();
  Token take();
  /// Takes the next token when it is of that kind.
  bool takeIf(TokenKind kind);
  /// Takes a token of that kind; when it is another one, the failure says that `spelling` belongs there.
  Status expect(TokenKind kind, std::string_view spelling);

  /// How a token is named in a message.
  std::string nameOf(const Token& token) const;

 private:
  std::string_view m_source;
  TokenReader m_reader;
  Token m_next;
};

}  // namespace orlocal::host::calc
