#include "host/commands/words/word_cursor.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "base/text.h"

namespace orlocal::host {

WordCursor::WordCursor(std::string_view text, const WordsSetting& setting) : m_text(text), m_setting(setting) {
  std::size_t at = 0;
  while ((at = text.find_first_not_of(" \t\n", at)) != std::string_view::npos) {
    Word word;
    word.begin = at;
    const std::size_t close = text[at] == '"' ? text.find('"', at + 1) : std::string_view::npos;
    word.quoted = close != std::string_view::npos;
    word.end = word.quoted ? close + 1 : std::min(text.find_first_of(" \t\n", at), text.size());
    std::string_view plain = text.substr(word.begin, word.end - word.begin);
    // A comma behind a word ends a part of a sentence: "Lunch tomorrow, 12:30".
    if (!word.quoted && plain.size() > 1 && plain.ends_with(',')) { plain.remove_suffix(1); }
    word.folded = caseFolded(plain);
    at = word.end;
    m_words.push_back(std::move(word));
  }
}

std::string_view WordCursor::next(std::size_t ahead) const {
  if (m_at + ahead >= m_words.size() || m_words[m_at + ahead].quoted) { return {}; }
  return m_words[m_at + ahead].folded;
}

std::optional<int> WordCursor::take(Term term) {
  for (int count = longestOf(term); count > 0; --count) {
    std::string phrase;
    for (int i = 0; i < count; ++i) {
      const std::string_view word = next(static_cast<std::size_t>(i));
      if (word.empty()) {
        phrase.clear();
        break;
      }
      phrase += (i > 0 ? " " : "") + std::string(word);
    }
    if (phrase.empty()) { continue; }
    if (const auto value = valueOf(phrase, term, m_setting)) {
      m_at += static_cast<std::size_t>(count);
      return value;
    }
  }
  return std::nullopt;
}

Failed WordCursor::refusedAt(std::size_t word, std::string message) const {
  const std::size_t place = word < m_words.size() ? m_words[word].begin : m_text.size();
  return failure(Failure{ErrorCode::kInvalid, std::move(message), place});
}

std::optional<int> takeNumber(std::string_view& text) {
  constexpr std::size_t kMostDigits = 9;
  const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
  if (digits == 0 || digits > kMostDigits) { return std::nullopt; }
  int value = 0;
  std::from_chars(text.data(), text.data() + digits, value);
  text.remove_prefix(digits);
  return value;
}

std::optional<int> wholeNumber(std::string_view text) {
  const auto number = takeNumber(text);
  return text.empty() ? number : std::nullopt;
}

}  // namespace orlocal::host
