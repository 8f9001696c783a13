#include "host/calc/lexer.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "base/text.h"
#include "base/translation.h"
#include "base/try.h"
#include "host/calc/calc_failure.h"
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

  Result<Token> next() {
    ORLOCAL_CHECK(skipBlanks());
    m_start = m_at;
    return m_at == m_source.size() ? found(TokenKind::kEnd, {}) : readToken();
  }

  /// True when the source ended inside a text or a comment.
  bool endedInside() const { return m_endedInside; }

 private:
  std::string_view rest() const { return m_source.substr(m_at); }
  char peek(std::size_t ahead = 0) const { return m_at + ahead < m_source.size() ? m_source[m_at + ahead] : '\0'; }

  Result<Token> found(TokenKind kind, std::string text) const { return Token{kind, m_start, std::move(text)}; }

  Status skipBlanks() {
    while (m_at < m_source.size()) {
      if (const std::size_t blank = blankLength(); blank > 0) {
        m_at += blank;
      } else if (rest().starts_with("//")) {
        m_at = std::min(m_source.find_first_of("\r\n", m_at), m_source.size());
      } else if (rest().starts_with("/*")) {
        const std::size_t end = m_source.find("*/", m_at + 2);
        if (end == std::string_view::npos) {
          m_endedInside = true;
          return unreadable(m_at, tr("this comment has no end; close it with */"));
        }
        m_at = end + 2;
      } else {
        break;
      }
    }
    return {};
  }

  std::size_t blankLength() const {
    const char c = peek();
    if (c == ' ' || (c >= '\t' && c <= '\r')) { return 1; }
    for (const std::string_view blank : kWideBlanks) {
      if (rest().starts_with(blank)) { return blank.size(); }
    }
    return 0;
  }

  Result<Token> readToken() {
    const char c = peek();
    if (c == '"') { return readText(); }
    if (isDigit(c) || (c == '.' && isDigit(peek(1)))) { return readNumber(); }
    if (c == '$') { return readVariable(); }
    for (const auto& [text, kind] : kSymbols) {
      if (rest().starts_with(text)) {
        m_at += text.size();
        return found(kind, {});
      }
    }
    for (const std::string_view quote : kCurlyQuotes) {
      if (rest().starts_with(quote)) { return unreadable(m_at, tr("texts stand between straight quotes (\")")); }
    }
    if (isNameCharacter()) { return readName(); }
    return unreadable(m_at, tr("the character {} has no meaning here", rest().substr(0, 1)));
  }

  Result<Token> readText() {
    std::string text;
    for (++m_at; m_at < m_source.size();) {
      const char c = peek();
      if (c == '"') {
        ++m_at;
        return found(TokenKind::kText, std::move(text));
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
    return unreadable(m_start, tr("this text has no end; close it with \""));
  }

  void skipDigits() {
    while (isDigit(peek())) { ++m_at; }
  }

  Result<Token> readNumber() {
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
    if (isNameCharacter()) {
      return unreadable(m_at, tr("a number is followed by a letter; an operator or a separator is missing"));
    }
    return found(TokenKind::kNumber, std::string(m_source.substr(m_start, m_at - m_start)));
  }

  /// Letters, digits, underscores and everything beyond ASCII that is no operator and no blank.
  bool isNameCharacter() const {
    const char c = peek();
    if (isAsciiLetter(c) || isDigit(c) || c == '_') { return true; }
    if (!isWide(c) || blankLength() > 0) { return false; }
    for (const auto& [text, kind] : kSymbols) {
      if (isWide(text.front()) && rest().starts_with(text)) { return false; }
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

  Result<Token> readName() {
    std::string name = readNameText();
    for (const auto& [word, kind] : kWords) {
      if (equalsNoCase(name, word)) { return found(kind, {}); }
    }
    return found(TokenKind::kName, std::move(name));
  }

  Result<Token> readVariable() {
    const bool global = peek(1) == '$';
    m_at += global ? 2 : 1;
    std::string name;
    if (peek() == '{') {
      const std::size_t end = m_source.find('}', m_at);
      if (end == std::string_view::npos) {
        return unreadable(m_at, tr("this variable's name has no end; close it with }}"));
      }
      name = std::string(m_source.substr(m_at + 1, end - m_at - 1));
      m_at = end + 1;
    } else {
      name = readNameText();
    }
    if (name.empty()) { return unreadable(m_start, tr("a variable's name is missing after $")); }
    return found(global ? TokenKind::kGlobalVariable : TokenKind::kVariable, std::move(name));
  }

  std::string_view m_source;
  std::size_t m_at = 0;
  std::size_t m_start = 0;
  bool m_endedInside = false;
};

TokenReader::TokenReader(std::string_view source) : m_lexer(std::make_unique<Lexer>(source)) {}
TokenReader::~TokenReader() = default;

bool TokenReader::endedInside() const { return m_lexer->endedInside(); }

Result<Token> TokenReader::next() { return m_lexer->next(); }

Result<std::vector<Token>> tokenize(std::string_view source) {
  TokenReader reader(source);
  std::vector<Token> tokens;
  do {
    ORLOCAL_TRY(Token token, reader.next());
    tokens.push_back(std::move(token));
  } while (tokens.back().kind != TokenKind::kEnd);
  return tokens;
}

}  // namespace orlocal::host::calc
