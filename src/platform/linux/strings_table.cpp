#include "platform/linux/strings_table.h"

#include <cstddef>
#include <optional>
#include <utility>

#include "platform/text.h"

namespace orlocal {
namespace {

class Reader {
 public:
  explicit Reader(std::string_view text) : m_text(text) {}

  bool atEnd() const { return m_position >= m_text.size(); }

  /// Past blanks, line ends and comments.
  void skipSpace() {
    while (!atEnd()) {
      const auto rest = m_text.substr(m_position);
      if (rest.starts_with("/*")) {
        const auto end = m_text.find("*/", m_position + 2);
        m_position = end == std::string_view::npos ? m_text.size() : end + 2;
      } else if (rest.starts_with("//")) {
        skipLine();
      } else if (std::string_view(" \t\r\n").find(rest.front()) != std::string_view::npos) {
        ++m_position;
      } else {
        return;
      }
    }
  }

  void skipLine() {
    const auto end = m_text.find('\n', m_position);
    m_position = end == std::string_view::npos ? m_text.size() : end + 1;
  }

  bool take(char expected) {
    skipSpace();
    if (atEnd() || m_text[m_position] != expected) { return false; }
    ++m_position;
    return true;
  }

  std::optional<std::u16string> quoted() {
    if (!take('"')) { return std::nullopt; }
    std::u16string units;
    std::size_t plain = m_position;
    const auto flush = [&] { units += utf16FromUtf8(m_text.substr(plain, m_position - plain)); };
    while (!atEnd()) {
      const char c = m_text[m_position];
      if (c == '"') {
        flush();
        ++m_position;
        return units;
      }
      if (c == '\\') {
        flush();
        ++m_position;
        if (!escape(units)) { return std::nullopt; }
        plain = m_position;
      } else {
        ++m_position;
      }
    }
    return std::nullopt;
  }

 private:
  bool escape(std::u16string& units) {
    if (atEnd()) { return false; }
    const char c = m_text[m_position++];
    switch (c) {
      case 'n':
        units += u'\n';
        return true;
      case 'r':
        units += u'\r';
        return true;
      case 't':
        units += u'\t';
        return true;
      case '"':
      case '\\':
      case '\'':
        units += static_cast<char16_t>(c);
        return true;
      case 'U':
      case 'u':
        return hexUnit(units);
      default:
        return false;
    }
  }

  bool hexUnit(std::u16string& units) {
    if (m_text.size() - m_position < 4) { return false; }
    unsigned value = 0;
    for (const char c : m_text.substr(m_position, 4)) {
      const auto digit =
          std::string_view("0123456789abcdef").find(static_cast<char>(c | ('A' <= c && c <= 'F' ? 32 : 0)));
      if (digit == std::string_view::npos) { return false; }
      value = value * 16 + static_cast<unsigned>(digit);
    }
    m_position += 4;
    units += static_cast<char16_t>(value);
    return true;
  }

  std::string_view m_text;
  std::size_t m_position = 0;
};

}  // namespace

StringsTable parseStringsTable(std::string_view text) {
  if (text.starts_with("\xEF\xBB\xBF")) { text.remove_prefix(3); }
  StringsTable table;
  Reader reader(text);
  for (reader.skipSpace(); !reader.atEnd(); reader.skipSpace()) {
    auto key = reader.quoted();
    auto value = key && reader.take('=') ? reader.quoted() : std::nullopt;
    if (value && reader.take(';')) {
      table.emplace(utf8FromUtf16(*key), *std::move(value));
    } else {
      reader.skipLine();
    }
  }
  return table;
}

}  // namespace orlocal
