#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/calc/calc_error.h"

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

/// What a calculation still lacks, for a caller that reads it line by line.
enum class Completeness : std::uint8_t {
  kComplete,  ///< as far as brackets, texts and comments go
  kOpen,      ///< a bracket, a text or a comment is still open
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
  CalcResult<Token> next();

 private:
  class Lexer;
  std::unique_ptr<Lexer> m_lexer;
};

/// All tokens of a calculation, the last one being `kEnd`.
CalcResult<std::vector<Token>> tokenize(std::string_view source);

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
