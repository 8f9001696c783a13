#include "platform/awaited_reminders.h"

#include <chrono>
#include <utility>

#include "platform/platform.h"
#include "platform/run_loop.h"

namespace orlocal {
namespace {

/// How long the run loop runs between two looks at the store's answer.
constexpr std::chrono::milliseconds kWaitStep{10};

}  // namespace

std::shared_ptr<const EKReminderArray> awaitedReminders(EKEventStore& store,
                                                        const std::shared_ptr<const EKPredicate>& predicate,
                                                        Platform& platform) {
  struct Answer {
    bool waiting = true;
    std::shared_ptr<const EKReminderArray> reminders;
  };
  // Shared with the completion: should waiting be left by an exception, a late answer still has where to go.
  const auto answer = std::make_shared<Answer>();
  store.fetchRemindersMatchingPredicate(predicate, [answer](std::shared_ptr<const EKReminderArray> reminders) {
    answer->reminders = std::move(reminders);
    answer->waiting = false;
  });
  while (answer->waiting) { platform.currentRunLoop().runFor(kWaitStep); }
  return answer->reminders;
}

}  // namespace orlocal
