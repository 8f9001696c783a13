#include "host/commands/browsing/typed_line.h"

namespace orlocal::host {
namespace {

using Name = BrowseKey::Name;

bool continuesCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

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
      m_text.insert(m_cursor, key.text);
      m_cursor += key.text.size();
      break;
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
