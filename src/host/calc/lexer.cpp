#include "host/calc/lexer.h"

#include <algorithm>
#include <optional>

#include <fmt/format.h>

#include "host/calc/text_tools.h"

namespace orlocal::host::calc {

namespace {

struct Spelling {
  std::string_view text;
  TokenKind kind;
};

/// Longer spellings stand before their beginnings.
constexpr Spelling kSymbols[] = {
    {"<>", TokenKind::kNotEqual}, {"<=", TokenKind::kLessOrEqual}, {">=", TokenKind::kGreaterOrEqual},
    {"≠", TokenKind::kNotEqual},  {"≤", TokenKind::kLessOrEqual},  {"≥", TokenKind::kGreaterOrEqual},
    {"¶", TokenKind::kPilcrow},   {"&", TokenKind::kConcatenate},  {"+", TokenKind::kPlus},
    {"-", TokenKind::kMinus},     {"−", TokenKind::kMinus},        {"*", TokenKind::kTimes},
    {"×", TokenKind::kTimes},     {"/", TokenKind::kDivide},       {"÷", TokenKind::kDivide},
    {"^", TokenKind::kPower},     {"=", TokenKind::kEqual},        {"<", TokenKind::kLess},
    {">", TokenKind::kGreater},   {"(", TokenKind::kOpen},         {")", TokenKind::kClose},
    {"[", TokenKind::kOpenList},  {"]", TokenKind::kCloseList},    {";", TokenKind::kSeparator},
};

constexpr Spelling kWords[] = {
    {"and", TokenKind::kAnd},
    {"or", TokenKind::kOr},
    {"xor", TokenKind::kXor},
    {"not", TokenKind::kNot},
};

/// Blanks of more than one byte: no-break space, byte-order mark, line and paragraph separator.
constexpr std::string_view kWideBlanks[] = {"\u00A0", "\uFEFF", "\u2028", "\u2029"};
constexpr std::string_view kCurlyQuotes[] = {"“", "”", "„"};

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isAsciiLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isWide(char c) { return (static_cast<unsigned char>(c) & 0x80U) != 0; }

}  // namespace

class TokenReader::Lexer {
 public:
  explicit Lexer(std::string_view source) : m_source(source) {}

  CalcResult<Token> next() {
    if (!skipBlanks()) return tl::unexpected(*m_error);
    m_start = m_at;
    if (m_at == m_source.size()) {
      found(TokenKind::kEnd, {});
    } else if (!readToken()) {
      return tl::unexpected(*m_error);
    }
    return std::move(m_token);
  }

  /// True when the source ended inside a text or a comment.
  bool endedInside() const { return m_endedInside; }

 private:
  std::string_view rest() const { return m_source.substr(m_at); }
  char peek(std::size_t ahead = 0) const { return m_at + ahead < m_source.size() ? m_source[m_at + ahead] : '\0'; }

  bool fail(std::size_t offset, std::string message) {
    m_error = CalcError{offset, std::move(message)};
    return false;
  }

  void found(TokenKind kind, std::string text) { m_token = Token{kind, m_start, std::move(text)}; }

  bool skipBlanks() {
    while (m_at < m_source.size()) {
      if (const std::size_t blank = blankLength(); blank > 0) {
        m_at += blank;
      } else if (rest().starts_with("//")) {
        m_at = std::min(m_source.find_first_of("\r\n", m_at), m_source.size());
      } else if (rest().starts_with("/*")) {
        const std::size_t end = m_source.find("*/", m_at + 2);
        if (end == std::string_view::npos) {
          m_endedInside = true;
          return fail(m_at, "this comment has no end; close it with */");
        }
        m_at = end + 2;
      } else {
        return true;
      }
    }
    return true;
  }

  std::size_t blankLength() const {
    const char c = peek();
    if (c == ' ' || (c >= '\t' && c <= '\r')) return 1;
    for (const std::string_view blank : kWideBlanks) {
      if (rest().starts_with(blank)) return blank.size();
    }
    return 0;
  }

  bool readToken() {
    const char c = peek();
    if (c == '"') return readText();
    if (isDigit(c) || (c == '.' && isDigit(peek(1)))) return readNumber();
    if (c == '$') return readVariable();
    for (const auto& [text, kind] : kSymbols) {
      if (rest().starts_with(text)) {
        m_at += text.size();
        found(kind, {});
        return true;
      }
    }
    for (const std::string_view quote : kCurlyQuotes) {
      if (rest().starts_with(quote)) return fail(m_at, "texts stand between straight quotes (\")");
    }
    if (isNameCharacter()) return readName();
    return fail(m_at, fmt::format("the character {} has no meaning here", rest().substr(0, 1)));
  }

  bool readText() {
    std::string text;
    for (++m_at; m_at < m_source.size();) {
      const char c = peek();
      if (c == '"') {
        ++m_at;
        found(TokenKind::kText, std::move(text));
        return true;
      }
      if (c == '\\' && (peek(1) == '"' || peek(1) == '\\')) {
        text += peek(1);
        m_at += 2;
      } else if (rest().starts_with("\\¶")) {
        text += "¶";
        m_at += std::string_view("\\¶").size();
      } else if (rest().starts_with("¶")) {
        text += static_cast<char>(kReturn);
        m_at += std::string_view("¶").size();
      } else if (c == '\r' || c == '\n') {
        text += static_cast<char>(kReturn);
        m_at += rest().starts_with("\r\n") ? 2 : 1;
      } else {
        text += c;
        ++m_at;
      }
    }
    m_endedInside = true;
    return fail(m_start, "this text has no end; close it with \"");
  }

  void skipDigits() {
    while (isDigit(peek())) ++m_at;
  }

  bool readNumber() {
    skipDigits();
    if (peek() == '.') {
      ++m_at;
      skipDigits();
    }
    if (peek() == 'e' || peek() == 'E') {
      const std::size_t sign = peek(1) == '+' || peek(1) == '-' ? 2 : 1;
      if (isDigit(peek(sign))) {
        m_at += sign;
        skipDigits();
      }
    }
    if (isNameCharacter()) return fail(m_at, "a number is followed by a letter; an operator or a separator is missing");
    found(TokenKind::kNumber, std::string(m_source.substr(m_start, m_at - m_start)));
    return true;
  }

  /// Letters, digits, underscores and everything beyond ASCII that is no operator and no blank.
  bool isNameCharacter() const {
    const char c = peek();
    if (isAsciiLetter(c) || isDigit(c) || c == '_') return true;
    if (!isWide(c) || blankLength() > 0) return false;
    for (const auto& [text, kind] : kSymbols) {
      if (isWide(text.front()) && rest().starts_with(text)) return false;
    }
    return true;
  }

  /// A point or a double colon inside a name belongs to it: `$event.title`, `Table::Field`.
  std::string readNameText() {
    const std::size_t begin = m_at;
    for (;;) {
      if (isNameCharacter()) {
        ++m_at;
      } else if (peek() == '.' && (isAsciiLetter(peek(1)) || peek(1) == '_')) {
        m_at += 2;
      } else if (rest().starts_with("::")) {
        m_at += 2;
      } else {
        return std::string(m_source.substr(begin, m_at - begin));
      }
    }
  }

  bool readName() {
    std::string name = readNameText();
    for (const auto& [word, kind] : kWords) {
      if (equalWords(name, word)) {
        found(kind, {});
        return true;
      }
    }
    found(TokenKind::kName, std::move(name));
    return true;
  }

  bool readVariable() {
    const bool global = peek(1) == '$';
    m_at += global ? 2 : 1;
    std::string name;
    if (peek() == '{') {
      const std::size_t end = m_source.find('}', m_at);
      if (end == std::string_view::npos) return fail(m_at, "this variable's name has no end; close it with }");
      name = std::string(m_source.substr(m_at + 1, end - m_at - 1));
      m_at = end + 1;
    } else {
      name = readNameText();
    }
    if (name.empty()) return fail(m_start, "a variable's name is missing after $");
    found(global ? TokenKind::kGlobalVariable : TokenKind::kVariable, std::move(name));
    return true;
  }

  std::string_view m_source;
  std::size_t m_at = 0;
  std::size_t m_start = 0;
  Token m_token;
  std::optional<CalcError> m_error;
  bool m_endedInside = false;
};

TokenReader::TokenReader(std::string_view source) : m_lexer(std::make_unique<Lexer>(source)) {}
TokenReader::~TokenReader() = default;

bool TokenReader::endedInside() const { return m_lexer->endedInside(); }

CalcResult<Token> TokenReader::next() { return m_lexer->next(); }

CalcResult<std::vector<Token>> tokenize(std::string_view source) {
  TokenReader reader(source);
  std::vector<Token> tokens;
  do {
    CalcResult<Token> token = reader.next();
    if (!token) return tl::unexpected(token.error());
    tokens.push_back(std::move(*token));
  } while (tokens.back().kind != TokenKind::kEnd);
  return tokens;
}

Completeness completenessOf(std::string_view source) {
  LineJoiner joiner;
  joiner.add(source);
  return joiner.completeness();
}

void LineJoiner::add(std::string_view line) {
  if (!m_text.empty()) m_text += '\n';
  m_text += line;
  if (m_inside && line.find('"') == std::string_view::npos && line.find("*/") == std::string_view::npos) return;
  m_inside = false;
  TokenReader reader(std::string_view(m_text).substr(m_read));
  for (;;) {
    const CalcResult<Token> token = reader.next();
    if (!token) {
      m_inside = reader.endedInside();
      // What is unfinished is read again with the next line, from where it begins.
      if (m_inside) m_read += token.error().offset;
      m_completeness = m_inside ? Completeness::kOpen : Completeness::kComplete;
      return;
    }
    if (token->kind == TokenKind::kEnd) break;
    if (token->kind == TokenKind::kOpen || token->kind == TokenKind::kOpenList) ++m_open;
    if (token->kind == TokenKind::kClose || token->kind == TokenKind::kCloseList) --m_open;
  }
  m_read = m_text.size();
  m_completeness = m_open > 0 ? Completeness::kOpen : Completeness::kComplete;
}

}  // namespace orlocal::host::calc
