#include "host/commands/browsing/typed_line.h"

namespace orlocal::host {
namespace {

using Name = BrowseKey::Name;

bool continuesCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

/// What was pasted, in one line: a blank stands for each run of line breaks and other control characters.
std::string inOneLine(const std::string& text) {
  std::string line;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7F) {
      line += c;
    } else if (line.empty() || line.back() != ' ') {
      line += ' ';
    }
  }
  return line;
}

}  // namespace

std::size_t TypedLine::before(std::size_t at) const {
  if (at == 0) { return 0; }
  --at;
  while (at > 0 && continuesCharacter(m_text[at])) { --at; }
  return at;
}

std::size_t TypedLine::after(std::size_t at) const {
  if (at >= m_text.size()) { return m_text.size(); }
  ++at;
  while (at < m_text.size() && continuesCharacter(m_text[at])) { ++at; }
  return at;
}

void TypedLine::press(const BrowseKey& key) {
  switch (key.name) {
    case Name::kCharacter:
    case Name::kPaste: {
      const std::string typed = inOneLine(key.text);
      m_text.insert(m_cursor, typed);
      m_cursor += typed.size();
      break;
    }
    case Name::kBackspace: {
      const std::size_t from = before(m_cursor);
      m_text.erase(from, m_cursor - from);
      m_cursor = from;
      break;
    }
    case Name::kDelete:
      m_text.erase(m_cursor, after(m_cursor) - m_cursor);
      break;
    case Name::kLeft:
      m_cursor = before(m_cursor);
      break;
    case Name::kRight:
      m_cursor = after(m_cursor);
      break;
    case Name::kHome:
      m_cursor = 0;
      break;
    case Name::kEnd:
      m_cursor = m_text.size();
      break;
    default:
      break;
  }
}

}  // namespace orlocal::host
