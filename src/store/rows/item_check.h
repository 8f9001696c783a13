#pragma once

#include "base/result.h"
#include "store/model/model.h"

namespace orlocal::store {

// One measure for what is read and for what is written: an item that would not be taken from a file is never put into
// one.

/// Whether numbers, times and the parts that belong together are such as this program writes.
bool isSound(const Item& item);
/// Refuses, naming the item, one that is not, or whose texts are no UTF-8.
Status checkBeforeWriting(const Item& item);
/// The same for what stands in the packed column of a rule alone.
bool isSound(const Recurrence& recurrence);

}  // namespace orlocal::store
