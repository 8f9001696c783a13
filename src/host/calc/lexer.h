#pragma once

#include <cstdint>
#include <string>
#include <string_view>
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
  kReturn,  ///< `¶`
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

/// The tokens of a calculation in UTF-8, the last one being `kEnd`. Blanks and comments are gone.
CalcResult<std::vector<Token>> tokenize(std::string_view source);

/// What a calculation still lacks, for a caller that reads it line by line.
enum class Completeness : std::uint8_t {
  kComplete,  ///< as far as brackets, texts and comments go
  kOpen,      ///< a bracket, a text or a comment is still open
};

Completeness completenessOf(std::string_view source);

}  // namespace orlocal::host::calc
