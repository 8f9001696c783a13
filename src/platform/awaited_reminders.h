#pragma once

#include <memory>

#include "platform/eventkit.h"

namespace orlocal {

class Platform;

/// The reminders that `store` delivers for `predicate`; turns the run loop of the calling thread until it has answered.
/// Null when it delivers none.
std::shared_ptr<const EKReminderArray> awaitedReminders(EKEventStore& store,
                                                        const std::shared_ptr<const EKPredicate>& predicate,
                                                        Platform& platform);

}  // namespace orlocal
