#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"

namespace orlocal::host::calc {

enum class TokenKind : std::uint8_t {
  kNumber,          ///< text: as written, such as `.5` or `1e3`
  kText,            ///< text: without the quotes, escapes resolved
  kName,            ///< a function or a variable of Let and While
  kVariable,        ///< `$name`: text is the name alone
  kGlobalVariable,  ///< `$$name`: text is the name alone
  kConcatenate,
  kPlus,
  kMinus,
  kTimes,
  kDivide,
  kPower,
  kEqual,
  kNotEqual,
  kLess,
  kLessOrEqual,
  kGreater,
  kGreaterOrEqual,
  kAnd,
  kOr,
  kXor,
  kNot,
  kPilcrow,  ///< `¶`
  kOpen,
  kClose,
  kOpenList,
  kCloseList,
  kSeparator,
  kEnd,
};

struct Token {
  TokenKind kind = TokenKind::kEnd;
  std::size_t offset = 0;
  std::string text;
};

/// Reads a calculation in UTF-8 token by token, so that a long one is never held twice. The source outlives the reader.
class TokenReader {
 public:
  explicit TokenReader(std::string_view source);
  ~TokenReader();
  TokenReader(const TokenReader&) = delete;
  TokenReader& operator=(const TokenReader&) = delete;

  /// True when the last token was refused because the source ended inside a text or a comment.
  bool endedInside() const;

  /// The next token; `kEnd` at the end, as often as it is asked for. Blanks and comments are left out.
  Result<Token> next();

 private:
  class Lexer;
  std::unique_ptr<Lexer> m_lexer;
};

/// All tokens of a calculation, the last one being `kEnd`.
Result<std::vector<Token>> tokenize(std::string_view source);

}  // namespace orlocal::host::calc
