#pragma once

#include <string>
#include <vector>

#include "store/icalendar/icalendar_reader.h"

namespace orlocal::store {

/// A change of an occurrence and of all after it (RECURRENCE-ID with RANGE=THISANDFUTURE; RFC 5545, 3.8.4.4).
struct LaterChange {
  Item item;
  int line = 0;
};

/// Cuts the group's series where such changes begin: what follows becomes a series of its own in `group.later`, with a
/// UID made of the whole's UID and the original start, and with the changed occurrences that lie in it. A change that
/// begins at none of the rule's occurrences stays a change of that one, with a warning.
void cutAtLaterChanges(ItemGroup& group, std::vector<LaterChange> changes, ReadProblems& problems);

/// The UIDs of the series that were cut off this one; it names them in a kept line.
std::vector<std::string> continuationsOf(const Item& item);

}  // namespace orlocal::store
