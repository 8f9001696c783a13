#pragma once

#include <optional>
#include <string>
#include <vector>

#include "store/model/model.h"
#include "store/model/search_words.h"

namespace orlocal::store {

/// What to look for, and among what: see `CalendarStore::search`.
struct SearchQuery {
  std::string text;
  std::vector<CalendarId> calendars;
  std::optional<ItemKind> kind;
  /// Only what happens, or is due, in [from, to); a reminder without a due moment never is.
  std::optional<Moment> from, to;
};

struct SearchHit {
  ItemId item = 0;
  std::vector<SearchField> fields;  ///< where it has a part of what was looked for, best first

  friend bool operator==(const SearchHit&, const SearchHit&) = default;
};

}  // namespace orlocal::store
