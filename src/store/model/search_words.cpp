#include "store/model/search_words.h"

#include <algorithm>
#include <set>

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/uscript.h>

#include "base/text.h"
#include "base/utf.h"

namespace orlocal::store {
namespace {

constexpr SearchField kFields[] = {SearchField::kTitle, SearchField::kPlace, SearchField::kPeople, SearchField::kUrl,
                                   SearchField::kNotes};
/// Bytes of a word that the index keeps: nobody types more of it.
constexpr std::size_t kLongestWord = 60;
constexpr std::string_view kMailto = "mailto:";

constexpr UScriptCode kScriptsWithoutBlanks[] = {USCRIPT_HAN,     USCRIPT_HIRAGANA, USCRIPT_KATAKANA, USCRIPT_BOPOMOFO,
                                                 USCRIPT_YI,      USCRIPT_THAI,     USCRIPT_LAO,      USCRIPT_KHMER,
                                                 USCRIPT_MYANMAR, USCRIPT_TIBETAN};

enum class Kind {
  kBetween,  ///< words
  kLetter,   ///< part of a word
  kWhole,    ///< a word by itself
  kMark,     ///< belongs to what stands before it
};

Kind kindOf(char32_t point) {
  if (point < 0x80) {
    const bool letter = (point >= U'0' && point <= U'9') || (asciiLower(point) >= U'a' && asciiLower(point) <= U'z');
    return letter ? Kind::kLetter : Kind::kBetween;
  }
  const auto c = static_cast<UChar32>(point);
  const std::uint32_t type = U_GET_GC_MASK(c);
  if ((type & U_GC_M_MASK) != 0) { return Kind::kMark; }
  if ((type & U_GC_SO_MASK) != 0) { return Kind::kWhole; }
  if ((type & (U_GC_L_MASK | U_GC_N_MASK)) == 0) { return Kind::kBetween; }
  const bool whole = std::any_of(std::begin(kScriptsWithoutBlanks), std::end(kScriptsWithoutBlanks),
                                 [c](UScriptCode script) { return uscript_hasScript(c, script); });
  return whole ? Kind::kWhole : Kind::kLetter;
}

/// What only refines a letter; the marks of Japanese make another one of it.
bool isAccent(UChar32 c) {
  if ((U_GET_GC_MASK(c) & U_GC_MN_MASK) == 0 || c == 0x3099 || c == 0x309A) { return false; }
  UErrorCode error = U_ZERO_ERROR;
  const UScriptCode script = uscript_getScript(c, &error);
  return script == USCRIPT_INHERITED || script == USCRIPT_HEBREW;
}

/// The words are split before this: what a single letter becomes several words by is compared as one.
std::string comparable(std::string_view word) {
  std::string result;
  if (std::all_of(word.begin(), word.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
    for (const char c : word) { result += asciiLower(c); }
    return result;
  }
  UErrorCode error = U_ZERO_ERROR;
  const auto* fold = icu::Normalizer2::getNFKCCasefoldInstance(error);
  const auto* apart = icu::Normalizer2::getNFDInstance(error);
  const auto* together = icu::Normalizer2::getNFCInstance(error);
  if (U_FAILURE(error)) { return std::string(word); }
  const auto given = icu::UnicodeString::fromUTF8(icu::StringPiece(word.data(), static_cast<int32_t>(word.size())));
  const icu::UnicodeString marked = apart->normalize(fold->normalize(given, error), error);
  icu::UnicodeString plain;
  for (int32_t at = 0; at < marked.length(); at = marked.moveIndex32(at, 1)) {
    if (const UChar32 c = marked.char32At(at); !isAccent(c)) { plain.append(c); }
  }
  together->normalize(plain, error).toUTF8String(result);
  // Signs that stand for several words at once; the index would split them.
  std::erase_if(result, [](char c) {
    return kindOf(static_cast<unsigned char>(c)) == Kind::kBetween && static_cast<unsigned char>(c) < 0x80;
  });
  return result;
}

std::string_view beginningOf(std::string_view word) {
  std::size_t end = std::min(word.size(), kLongestWord);
  while (end < word.size() && end > 0 && (static_cast<unsigned char>(word[end]) & 0xC0U) == 0x80U) { --end; }
  return word.substr(0, end);
}

/// Where `term` begins among `words`.
std::optional<std::size_t> placeOf(const std::vector<std::string>& term, const std::vector<FoldedWord>& words) {
  for (std::size_t at = 0; at + term.size() <= words.size(); ++at) {
    bool same = true;
    for (std::size_t i = 0; same && i + 1 < term.size(); ++i) { same = words[at + i].text == term[i]; }
    if (same && words[at + term.size() - 1].text.starts_with(term.back())) { return at; }
  }
  return std::nullopt;
}

}  // namespace

std::vector<FoldedWord> wordsOf(std::string_view text) {
  std::vector<FoldedWord> words;
  std::size_t begin = 0;
  bool within = false;
  const auto finish = [&](std::size_t end) {
    if (!within) { return; }
    within = false;
    if (auto word = comparable(text.substr(begin, end - begin)); !word.empty()) {
      words.push_back({std::move(word), begin, end});
    }
  };
  bool whole = false;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t here = at;
    const Kind kind = kindOf(nextCodePoint(text, at));
    if (kind == Kind::kMark && within) { continue; }
    if (kind == Kind::kLetter && within && !whole) { continue; }
    finish(here);
    if (kind == Kind::kBetween || kind == Kind::kMark) { continue; }
    begin = here;
    within = true;
    whole = kind == Kind::kWhole;
  }
  finish(text.size());
  return words;
}

SearchTerms::SearchTerms(std::string_view text) {
  const auto add = [this](std::string_view term) {
    std::vector<std::string> words;
    for (FoldedWord& word : wordsOf(term)) { words.push_back(std::move(word.text)); }
    if (!words.empty()) { m_terms.push_back(std::move(words)); }
  };
  constexpr std::string_view kBlanks = " \t\n\r";
  for (std::size_t at = 0; at < text.size();) {
    const bool quoted = text[at] == '"';
    const std::size_t begin = quoted ? at + 1 : at;
    const std::size_t end =
        std::min(quoted ? text.find('"', begin) : text.find_first_of(" \t\n\r\"", begin), text.size());
    add(text.substr(begin, end - begin));
    at = quoted || (end < text.size() && kBlanks.find(text[end]) != std::string_view::npos) ? end + 1 : end;
  }
}

std::optional<SearchTerms::Place> SearchTerms::placeIn(std::string_view text) const {
  const std::vector<FoldedWord> words = wordsOf(text);
  std::optional<Place> first;
  for (const auto& term : m_terms) {
    const auto at = placeOf(term, words);
    if (!at) { continue; }
    const Place place{words[*at].begin, words[*at + term.size() - 1].end};
    if (!first || place.begin < first->begin) { first = place; }
  }
  return first;
}

std::optional<SearchTerms::Found> SearchTerms::in(const Item& item) const {
  std::vector<bool> found(m_terms.size());
  Found result;
  for (const SearchField field : kFields) {
    bool any = false;
    for (const std::string_view text : textsOf(item, field)) {
      const std::vector<FoldedWord> words = wordsOf(text);
      for (std::size_t i = 0; i < m_terms.size(); ++i) {
        if (!placeOf(m_terms[i], words)) { continue; }
        found[i] = any = true;
      }
    }
    if (any) { result.fields.push_back(field); }
    if (field == SearchField::kTitle) {
      result.allInTitle = std::find(found.begin(), found.end(), false) == found.end();
    }
  }
  if (m_terms.empty() || std::find(found.begin(), found.end(), false) != found.end()) { return std::nullopt; }
  return result;
}

std::string SearchTerms::expression() const {
  // Words hold no quotation marks.
  std::string all;
  for (const auto& term : m_terms) {
    for (std::size_t i = 0; i < term.size(); ++i) {
      if (!all.empty()) { all += " AND "; }
      const auto kept = beginningOf(term[i]);
      all.append("\"").append(kept).append(i + 1 == term.size() ? "\"*" : "\"");
    }
  }
  return all;
}

std::vector<std::string_view> textsOf(const Item& item, SearchField field) {
  const auto only = [](const std::optional<std::string>& text) {
    return text ? std::vector<std::string_view>{*text} : std::vector<std::string_view>();
  };
  switch (field) {
    case SearchField::kTitle:
      return only(item.title);
    case SearchField::kPlace:
      return only(item.location);
    case SearchField::kUrl:
      return only(item.url);
    case SearchField::kNotes:
      return only(item.notes);
    case SearchField::kPeople:
      break;
  }
  std::vector<std::string_view> people;
  for (const Attendee& attendee : item.attendees) {
    if (attendee.name) { people.emplace_back(*attendee.name); }
    std::string_view address = attendee.address;
    if (equalsNoCase(address.substr(0, kMailto.size()), kMailto)) { address.remove_prefix(kMailto.size()); }
    people.push_back(address);
  }
  return people;
}

std::string indexedWords(const Item& item) {
  std::set<std::string, std::less<>> words;
  for (const SearchField field : kFields) {
    for (const std::string_view text : textsOf(item, field)) {
      for (const FoldedWord& word : wordsOf(text)) {
        const auto kept = beginningOf(word.text);
        if (!words.contains(kept)) { words.emplace(kept); }
      }
    }
  }
  std::string all;
  for (const std::string& word : words) { all.append(all.empty() ? "" : " ").append(word); }
  return all;
}

}  // namespace orlocal::store
