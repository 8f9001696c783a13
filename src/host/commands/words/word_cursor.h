#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "base/try.h"
#include "host/commands/words/terms.h"

namespace orlocal::host {

/// Goes through the words of a text. Readers take words off it or leave it where it was.
class WordCursor {
 public:
  struct Word {
    std::string folded;  ///< without case
    std::size_t begin = 0, end = 0;
    bool quoted = false;  ///< stood in quotes: never time
  };

  /// The text is borrowed.
  WordCursor(std::string_view text, const WordsSetting& setting);

  const WordsSetting& setting() const { return m_setting; }
  std::string_view text() const { return m_text; }
  const std::vector<Word>& words() const { return m_words; }

  std::size_t at() const { return m_at; }
  void moveTo(std::size_t at) { m_at = at; }
  bool done() const { return m_at == m_words.size(); }
  /// Byte of the text where the next word begins.
  std::size_t place() const { return done() ? m_text.size() : m_words[m_at].begin; }

  /// The next word; empty when there is none, or when it stood in quotes.
  std::string_view next(std::size_t ahead = 0) const;
  /// Takes it.
  void take(std::size_t count = 1) { m_at += count; }
  /// Takes the word or words of the term, the longest that there are.
  std::optional<int> take(Term term);

  /// `kInvalid`, with the place of the next word or of the one at `word`.
  Failed refused(std::string message) const { return refusedAt(m_at, std::move(message)); }
  Failed refusedAt(std::size_t word, std::string message) const;

 private:
  std::string_view m_text;
  const WordsSetting& m_setting;
  std::vector<Word> m_words;
  std::size_t m_at = 0;
};

/// Of a whole text; `refusal` tells of the words that were not understood.
template <class Value, class Refusal, class Take>
Result<Value> readWhole(std::string_view text, const WordsSetting& setting, Refusal refusal, Take take) {
  WordCursor words(text, setting);
  ORLOCAL_TRY(const auto value, take(words));
  if (value && words.done()) { return *value; }
  return words.refused(refusal(text.substr(std::min(words.place(), text.size()))));
}

/// A whole number of at most nine digits and nothing else.
std::optional<int> wholeNumber(std::string_view text);
/// The digits that `text` begins with, taken off it; none without.
std::optional<int> takeNumber(std::string_view& text);

}  // namespace orlocal::host
