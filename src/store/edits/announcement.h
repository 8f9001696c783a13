#pragma once

#include <atomic>
#include <span>
#include <string_view>

#include "store/model/model.h"

namespace orlocal::store {

/// An event, series or reminder that is going to be put.
struct AnnouncedItem {
  Item* main = nullptr;            ///< as `put` will get it, at the same address; no changed occurrence
  std::string_view calendarTitle;  ///< of the calendar it goes to; empty for the default one
  bool isSeries = false;           ///< it has a rule, or comes with changed occurrences
};

/// What a large change is going to put: that is looked up before its turn to write comes, so that others wait less. It
/// changes nothing about what is written; what is not announced can be put all the same.
struct Announcement {
  std::span<const AnnouncedItem> items;
  /// Asked now and then; when set, looking up ends.
  const std::atomic<bool>* stop = nullptr;
};

}  // namespace orlocal::store
