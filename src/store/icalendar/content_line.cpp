#include "store/icalendar/content_line.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include <unicode/utf8.h>

#include "base/text.h"
#include "base/utf.h"

namespace orlocal::store {

namespace {

/// Looked up, since each line of a file is gone through by it.
constexpr auto kNameCharacters = [] {
  std::array<bool, 256> is{};
  for (const char c : std::string_view("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.")) {
    is[static_cast<unsigned char>(c)] = true;
  }
  return is;
}();
bool isNameCharacter(char c) { return kNameCharacters[static_cast<unsigned char>(c)]; }

/// Where the first one stands outside quotes; npos when nowhere.
std::size_t findUnquoted(std::string_view text, std::size_t from, char wanted) {
  std::size_t found = text.find(wanted, from);
  while (found != std::string_view::npos) {
    const std::size_t open = text.substr(from, found - from).find('"');
    if (open == std::string_view::npos) { return found; }
    const std::size_t close = text.find('"', from + open + 1);
    if (close == std::string_view::npos) { return close; }
    from = close + 1;
    // What lies further on was looked for already: a line may have any number of quotes.
    if (found < from) { found = text.find(wanted, from); }
  }
  return found;
}

/// Whether iCalendar text can have it: no control character but a tab (RFC 5545, 3.1).
constexpr bool isCarried(char c) { return static_cast<unsigned char>(c) >= 0x20 ? c != 0x7F : c == '\t'; }

/// How much of the text's beginning stands for itself: nothing in it is left out or escaped.
std::size_t plainLength(std::string_view text) {
  const auto end = std::ranges::find_if(text, [](char c) { return !isCarried(c) || c == '\\'; });
  return static_cast<std::size_t>(end - text.begin());
}

}  // namespace

std::string ContentParameter::plainValue() const {
  std::string_view quoted = value;
  if (quoted.starts_with('"')) {
    quoted.remove_prefix(1);
    quoted = quoted.substr(0, quoted.find('"'));
  }
  std::string out;
  for (std::size_t i = 0; i < quoted.size(); ++i) {
    const char next = i + 1 < quoted.size() ? quoted[i + 1] : '\0';
    if (quoted[i] == '^' && (next == 'n' || next == '^' || next == '\'')) {
      out += next == 'n' ? '\n' : next == '^' ? '^' : '"';
      ++i;
    } else if (isCarried(quoted[i])) {
      out += quoted[i];
    }
  }
  return out;
}

bool nextParameter(std::string_view& parameters, ContentParameter& parameter) {
  while (!parameters.empty()) {
    const std::size_t end = std::min(findUnquoted(parameters, 1, ';'), parameters.size());
    parameter.text = parameters.substr(0, end);
    parameters.remove_prefix(end);
    const std::size_t equals = parameter.text.find('=');
    if (equals == std::string_view::npos) {
      parameter.name = trimmed(parameter.text.substr(1));
      parameter.value = {};
      if (parameter.name.empty()) {
        continue;  // ";;" or a ";" at the end
      }
      return true;
    }
    parameter.name = trimmed(parameter.text.substr(1, equals - 1));
    parameter.value = trimmed(parameter.text.substr(equals + 1));
    return true;
  }
  return false;
}

std::optional<std::string> ContentLine::parameter(std::string_view wanted) const {
  std::string_view rest = parameters;
  for (ContentParameter found; nextParameter(rest, found);) {
    if (equalsNoCase(found.name, wanted)) { return found.plainValue(); }
  }
  return std::nullopt;
}

std::optional<ContentLine> splitContentLine(std::string_view text, int line) {
  ContentLine made;
  made.text = text;
  made.line = line;
  std::size_t end = 0;
  while (end < text.size() && isNameCharacter(text[end])) { ++end; }
  made.name = text.substr(0, end);
  while (end < text.size() && (text[end] == ' ' || text[end] == '\t')) { ++end; }
  if (made.name.empty() || end == text.size() || (text[end] != ':' && text[end] != ';')) { return std::nullopt; }
  std::size_t colon = end;
  if (text[end] == ';') {
    colon = findUnquoted(text, end, ':');
    // A quote that is never closed hides the colon; the first one then ends the parameters.
    if (colon == std::string_view::npos) { colon = text.find(':', end); }
    if (colon == std::string_view::npos) { return std::nullopt; }
    made.parameters = text.substr(end, colon - end);
  }
  made.value = text.substr(colon + 1);
  return made;
}

namespace {

/// Where the next one is, from `at` on; `known` is what the last call found.
std::size_t nextOf(std::string_view bytes, char wanted, std::size_t at, std::size_t& known) {
  if (known < at || (known == 0 && at == 0)) { known = std::min(bytes.find(wanted, at), bytes.size()); }
  return known;
}

}  // namespace

std::string_view ContentLines::physicalLine() {
  const std::size_t begin = m_at;
  m_at = std::min(nextOf(m_bytes, '\n', begin, m_newline), nextOf(m_bytes, '\r', begin, m_carriageReturn));
  const std::string_view line = m_bytes.substr(begin, m_at - begin);
  if (m_at < m_bytes.size()) {
    const bool pair = m_bytes[m_at] == '\r' && m_at + 1 < m_bytes.size() && m_bytes[m_at + 1] == '\n';
    m_at += pair ? 2 : 1;
  }
  ++m_line;
  return line;
}

/// Goes to the continuation of the line that was read, when there is one. Some files have an empty line before each.
bool ContentLines::continues() {
  if (m_text < m_at || m_text == 0) {
    for (m_text = m_at; m_text < m_bytes.size() && (m_bytes[m_text] == '\r' || m_bytes[m_text] == '\n');) { ++m_text; }
  }
  if (m_text == m_bytes.size() || (m_bytes[m_text] != ' ' && m_bytes[m_text] != '\t')) { return false; }
  while (m_at < m_text) { (void)physicalLine(); }
  return true;
}

bool ContentLines::next(ContentLine& line) {
  while (m_at < m_bytes.size()) {
    const int number = m_line;
    std::string_view text = physicalLine();
    if (continues()) {
      m_buffer.assign(text);
      while (continues()) { m_buffer.append(physicalLine().substr(1)); }
      text = m_buffer;
    }
    if (trimmed(text).empty()) { continue; }
    m_reencoded = !m_allUtf8 && !isUtf8(text);
    if (m_reencoded) { text = m_decoded = fromWindows1252(text); }
    if (auto split = splitContentLine(text, number)) {
      line = *split;
    } else {
      line = ContentLine();
      line.text = text;
      line.line = number;
    }
    return true;
  }
  return false;
}

namespace {

/// Of a physical line at the beginning of `text`; its name may go on behind a fold.
bool mayHaveName(std::string_view text, std::string_view name) {
  for (std::size_t i = 0; i < name.size(); ++i) {
    if (i == text.size() || text[i] == '\r' || text[i] == '\n') { return true; }
    if (asciiUpper(text[i]) != name[i]) { return false; }
  }
  return true;
}

}  // namespace

void ContentLines::passOverTo(std::span<const std::string_view> names) {
  while (m_at < m_bytes.size()) {
    const std::string_view rest = m_bytes.substr(m_at);
    if (std::ranges::any_of(names, [&](std::string_view name) { return mayHaveName(rest, name); })) { return; }
    do { (void)physicalLine(); } while (continues());
  }
}

std::string fromWindows1252(std::string_view bytes) {
  // 0x80 to 0x9F; those without a character become U+FFFD.
  constexpr std::array<std::uint16_t, 32> kHigh{0x20AC, 0xFFFD, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0xFFFD, 0x017D, 0xFFFD,
                                                0xFFFD, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0xFFFD, 0x017E, 0x0178};
  std::string out;
  while (!bytes.empty()) {
    // UTF-8 with a broken place in it keeps its whole characters.
    if (const std::size_t length = characterLength(bytes); length > 0) {
      out.append(bytes.substr(0, length));
      bytes.remove_prefix(length);
      continue;
    }
    const unsigned byte = static_cast<unsigned char>(bytes.front());
    const unsigned point = byte < 0xA0 ? kHigh[byte - 0x80U] : byte;
    append(out, point);
    bytes.remove_prefix(1);
  }
  return out;
}

std::string unescapeText(std::string_view value) {
  std::string out;
  out.reserve(value.size());
  for (;;) {
    const std::size_t plain = plainLength(value);
    out.append(value.substr(0, plain));
    value.remove_prefix(plain);
    if (value.empty()) { return out; }
    const char c = value.front(), next = value.size() > 1 ? value[1] : '\0';
    const bool escape = c == '\\' && (next == 'n' || next == 'N' || next == ',' || next == ';' || next == '\\');
    if (escape) {
      out += next == 'n' || next == 'N' ? '\n' : next;
    } else if (c == '\\' || c == '\n') {
      out += c;
    }
    value.remove_prefix(escape ? 2 : 1);
  }
}

std::string escapeText(std::string_view text) {
  std::string out;
  out.reserve(text.size() + 8);
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '\r') {
      if (i + 1 == text.size() || text[i + 1] != '\n') { out += "\\n"; }
    } else if (c == '\n') {
      out += "\\n";
    } else {
      if (c == '\\' || c == ',' || c == ';') { out += '\\'; }
      if (isCarried(c)) { out += c; }
    }
  }
  return out;
}

std::string parameterText(std::string_view value) {
  std::string out;
  for (char c : value) {
    if (c == '^' || c == '"' || c == '\n') {
      out += c == '^' ? "^^" : c == '"' ? "^'" : "^n";
    } else if (isCarried(c)) {
      out += c;
    }
  }
  // Blanks around a value that is not quoted are none of its own.
  const bool quote = out.find_first_of(":;,") != std::string::npos || trimmed(out).size() != out.size();
  return quote ? '"' + out + '"' : out;
}

void appendFolded(std::string& out, std::string_view line) {
  std::size_t room = 75;
  while (line.size() > room) {
    std::size_t end = room;
    while (end > 1 && U8_IS_TRAIL(line[end])) { --end; }
    out.append(line.substr(0, end)).append("\r\n ");
    line.remove_prefix(end);
    room = 74;
  }
  out.append(line).append("\r\n");
}

}  // namespace orlocal::store
