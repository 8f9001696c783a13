#include "backend/eventkit/no_event_store.h"

namespace orlocal {
namespace {

bool refuse(std::optional<Error>& error) {
  error = Error{"There is no calendar store.", "The system could not open one."};
  return false;
}

class NoEventStore final : public EKEventStore {
 public:
  EKCalendarArray calendarsForEntityType(EKEntityType) override { return {}; }
  std::shared_ptr<EKCalendar> calendarWithIdentifier(std::string_view) override { return nullptr; }
  std::shared_ptr<EKCalendar> defaultCalendarForNewEvents() override { return nullptr; }
  std::shared_ptr<EKCalendar> defaultCalendarForNewReminders() override { return nullptr; }

  std::shared_ptr<const EKPredicate> predicateForEvents(Date, Date, const EKCalendarArray&) override { return nullptr; }
  std::shared_ptr<const EKEventArray> eventsMatchingPredicate(const std::shared_ptr<const EKPredicate>&) override {
    return nullptr;
  }
  std::shared_ptr<const EKPredicate> predicateForOneEvent(Date, Date, const EKCalendarArray&,
                                                          std::string_view) override {
    return nullptr;
  }
  std::shared_ptr<EKEvent> eventWithIdentifier(std::string_view) override { return nullptr; }
  std::shared_ptr<EKEvent> occurrenceOfEvent(std::string_view, Date) override { return nullptr; }

  std::shared_ptr<const EKPredicate> predicateForRemindersInCalendars(const EKCalendarArray&) override {
    return nullptr;
  }
  std::shared_ptr<const EKPredicate> predicateForIncompleteReminders(std::optional<Date>, std::optional<Date>,
                                                                     const EKCalendarArray&) override {
    return nullptr;
  }
  std::shared_ptr<const EKPredicate> predicateForCompletedReminders(std::optional<Date>, std::optional<Date>,
                                                                    const EKCalendarArray&) override {
    return nullptr;
  }
  void fetchRemindersMatchingPredicate(const std::shared_ptr<const EKPredicate>&,
                                       ReminderCompletion completion) override {
    completion(nullptr);
  }
  std::shared_ptr<EKCalendarItem> calendarItemWithIdentifier(std::string_view) override { return nullptr; }

  bool saveCalendar(const std::shared_ptr<EKCalendar>&, bool, std::optional<Error>& error) override {
    return refuse(error);
  }
  bool removeCalendar(const std::shared_ptr<EKCalendar>&, bool, std::optional<Error>& error) override {
    return refuse(error);
  }
  bool saveEvent(const std::shared_ptr<EKEvent>&, EKSpan, bool, std::optional<Error>& error) override {
    return refuse(error);
  }
  bool removeEvent(const std::shared_ptr<EKEvent>&, EKSpan, bool, std::optional<Error>& error) override {
    return refuse(error);
  }
  bool saveReminder(const std::shared_ptr<EKReminder>&, bool, std::optional<Error>& error) override {
    return refuse(error);
  }
  bool removeReminder(const std::shared_ptr<EKReminder>&, bool, std::optional<Error>& error) override {
    return refuse(error);
  }
};

}  // namespace

std::shared_ptr<EKEventStore> makeNoEventStore() { return std::make_shared<NoEventStore>(); }

}  // namespace orlocal
