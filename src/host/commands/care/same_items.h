#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "base/result.h"
#include "store/calendar_store.h"

// Items that are there more than once.
namespace orlocal::host {

/// How items are the same.
enum class Sameness {
  kAlike,      ///< made several times: the same to look at, under UIDs of their own
  kCopies,     ///< one item (one UID) in several calendars, the same everywhere
  kDiffering,  ///< one item (one UID) in several calendars that was changed in one of them
};

struct SameItems {
  struct Member {
    store::WholeItem item;
    store::Calendar calendar;
    /// Another one that stays says all that this one says.
    bool superfluous = false;
  };
  Sameness sameness = Sameness::kAlike;
  /// The one that is kept first: with the most attendees, alarms and notes; of those that have as much one that cannot
  /// be removed, then the oldest.
  std::vector<Member> members;

  std::size_t superfluous() const;
};

/// What people know an item by, as one text: its kind, title, times, place, repetition and changed occurrences, whether
/// it is done or cancelled.
std::string looksOf(const store::WholeItem& item, const store::Zone& viewer);

/// Of two that look the same: whether `kept` has all that `other` has besides: notes, URL, alarms, attendees with their
/// answers, and what calendar files say of it otherwise. What programs note in lines of their own does not count.
bool saysAllOf(const store::WholeItem& kept, const store::WholeItem& other);

/// Puts the members in order, and says which are superfluous.
void settle(SameItems& same);

/// All groups of at least two in these calendars, in the order in which their first ones came.
Result<std::vector<SameItems>> sameItems(store::CalendarStore& store, const store::Zone& viewer,
                                         const std::vector<store::Calendar>& calendars);

}  // namespace orlocal::host
