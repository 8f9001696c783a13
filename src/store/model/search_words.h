#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "store/model/model.h"

namespace orlocal::store {

/// A word as it is compared: without case and without the marks on letters. Scripts that put no blanks between words
/// (Chinese, Japanese, Thai and others) are taken letter by letter, and so are pictures.
struct FoldedWord {
  std::string text;
  std::size_t begin = 0, end = 0;  ///< the bytes that it was made of

  friend bool operator==(const FoldedWord&, const FoldedWord&) = default;
};

/// The words of a text in their order.
std::vector<FoldedWord> wordsOf(std::string_view text);

/// Where a text was found, best place first.
enum class SearchField : std::uint8_t { kTitle, kPlace, kPeople, kUrl, kNotes };

/// What somebody looks for: what stands between blanks is a term, and so is what stands between quotation marks. A term
/// is found where its words follow upon each other, the last of them perhaps only begun.
class SearchTerms {
 public:
  explicit SearchTerms(std::string_view text);

  /// Whether there is no word in it.
  bool empty() const { return m_terms.empty(); }
  /// The bytes of `text` where a term is found first.
  struct Place {
    std::size_t begin = 0, end = 0;
  };
  std::optional<Place> placeIn(std::string_view text) const;
  struct Found {
    std::vector<SearchField> fields;  ///< that have one of the terms, best first
    bool allInTitle = false;
  };
  /// Where the item has the terms; none when it lacks one of them.
  std::optional<Found> in(const Item& item) const;
  /// The same for the index: what every item that is found has among its `indexedWords`.
  std::string expression() const;

 private:
  std::vector<std::vector<std::string>> m_terms;
};

/// The texts of a field: people are several.
std::vector<std::string_view> textsOf(const Item& item, SearchField field);

/// All that an item is found by: each of its words once, with blanks between them.
std::string indexedWords(const Item& item);

}  // namespace orlocal::store
