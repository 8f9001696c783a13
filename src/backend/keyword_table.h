#pragma once

#include <cstddef>
#include <string_view>

#include "platform/text.h"

namespace orlocal {

/// The row of a constant table whose first member, `word`, is `word`; null when there is none.
template <class Row, std::size_t Size>
constexpr const Row* rowFor(const Row (&table)[Size], std::string_view word) {
  for (const Row& row : table) {
    if (row.word == word) { return &row; }
  }
  return nullptr;
}

/// The same for a word in any case, of a table in lower case. Most words come in it, too, and are found as they are.
template <class Row, std::size_t Size>
const Row* rowForAnyCase(const Row (&table)[Size], std::string_view word) {
  if (const Row* row = rowFor(table, word)) { return row; }
  return isPlainLowercase(word) ? nullptr : rowFor(table, lowercase(word));
}

/// The row of a constant table whose member `number` is `number`; null when there is none.
template <class Row, std::size_t Size>
constexpr const Row* rowNumbered(const Row (&table)[Size], long number) {
  for (const Row& row : table) {
    if (row.number == number) { return &row; }
  }
  return nullptr;
}

}  // namespace orlocal
