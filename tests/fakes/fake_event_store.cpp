#include "fakes/fake_event_store.h"

#include <algorithm>

#include "fakes/fake_event_store_records.h"
#include "platform/platform.h"

namespace orlocal::fakes {
namespace {

struct FakeReminderPredicate final : EKPredicate {
  std::function<bool(const FakeReminder&)> matches;
};

std::shared_ptr<const EKPredicate> reminderPredicate(std::function<bool(const FakeReminder&)> matches) {
  auto predicate = std::make_shared<FakeReminderPredicate>();
  predicate->matches = std::move(matches);
  return predicate;
}

bool isDueWithin(const FakeReminder& reminder, std::optional<Date> start, std::optional<Date> end) {
  if (!start && !end) { return true; }
  if (!reminder.m_due) { return false; }
  const auto due = platform().defaultTimeZone().dateFromComponents(*reminder.m_due);
  return due && (!start || *due >= *start) && (!end || *due < *end);
}

}  // namespace

FakeEventStore::FakeEventStore() : m_source(std::make_shared<FakeSource>("Local")) {
  addCalendar("Calendar");
  addCalendar("Reminders", EKEntityType::kReminder);
}

std::string FakeEventStore::nextIdentifier(const char* kind) {
  return std::string(kind) + "-" + std::to_string(++m_lastNumber);
}

std::shared_ptr<FakeCalendar> FakeEventStore::addCalendar(std::string_view title, EKEntityType kind) {
  auto calendar = std::make_shared<FakeCalendar>();
  calendar->m_kind = kind;
  calendar->m_identifier = nextIdentifier(kind == EKEntityType::kEvent ? "calendar" : "list");
  calendar->m_title = title;
  calendar->m_source = m_source;
  m_calendars.push_back(calendar);
  return calendar;
}

std::shared_ptr<FakeCalendar> FakeEventStore::recordTitled(std::string_view title) const {
  for (const auto& calendar : m_calendars) {
    if (calendar->m_title == title) { return calendar; }
  }
  return nullptr;
}

std::shared_ptr<FakeReminder> FakeEventStore::addReminder(std::string_view listTitle, std::string_view title) {
  FakeReminder reminder(m_now);
  reminder.m_calendar = recordTitled(listTitle);
  reminder.m_title = title;
  keep(m_reminders, reminder, "reminder");
  return m_reminders.back();
}

std::shared_ptr<EKCalendar> FakeEventStore::calendarCopy(const OptionalText& identifier) const {
  const auto found = recordWithIdentifier(m_calendars, identifier);
  return found == m_calendars.end() ? nullptr : std::make_shared<FakeCalendar>(**found);
}

EKCalendarArray FakeEventStore::calendarsForEntityType(EKEntityType type) {
  EKCalendarArray calendars;
  if (!m_answers) { return calendars; }
  for (const auto& calendar : m_calendars) {
    if (calendar->m_kind == type) { calendars.push_back(std::make_shared<FakeCalendar>(*calendar)); }
  }
  return calendars;
}

std::shared_ptr<EKCalendar> FakeEventStore::calendarWithIdentifier(std::string_view identifier) {
  return m_answers ? calendarCopy(std::string(identifier)) : nullptr;
}

std::shared_ptr<EKCalendar> FakeEventStore::defaultCalendarForNewEvents() {
  const auto calendars = calendarsForEntityType(EKEntityType::kEvent);
  return calendars.empty() ? nullptr : calendars.front();
}

std::shared_ptr<EKCalendar> FakeEventStore::defaultCalendarForNewReminders() {
  const auto lists = calendarsForEntityType(EKEntityType::kReminder);
  return lists.empty() ? nullptr : lists.front();
}

std::shared_ptr<const EKPredicate> FakeEventStore::predicateForRemindersInCalendars(const EKCalendarArray& calendars) {
  if (!m_answers) { return nullptr; }
  return reminderPredicate([wanted = identifiersOf(calendars)](const FakeReminder& reminder) {
    return wanted.contains(reminder.m_calendar->calendarIdentifier());
  });
}

std::shared_ptr<const EKPredicate> FakeEventStore::predicateForIncompleteReminders(std::optional<Date> start,
                                                                                   std::optional<Date> end,
                                                                                   const EKCalendarArray& calendars) {
  if (!m_answers) { return nullptr; }
  return reminderPredicate([start, end, wanted = identifiersOf(calendars)](const FakeReminder& reminder) {
    return wanted.contains(reminder.m_calendar->calendarIdentifier()) && !reminder.isCompleted() &&
           isDueWithin(reminder, start, end);
  });
}

std::shared_ptr<const EKPredicate> FakeEventStore::predicateForCompletedReminders(std::optional<Date> start,
                                                                                  std::optional<Date> end,
                                                                                  const EKCalendarArray& calendars) {
  if (!m_answers) { return nullptr; }
  return reminderPredicate([start, end, wanted = identifiersOf(calendars)](const FakeReminder& reminder) {
    const auto date = reminder.m_completionDate;
    return wanted.contains(reminder.m_calendar->calendarIdentifier()) && date && (!start || *date >= *start) &&
           (!end || *date < *end);
  });
}

void FakeEventStore::fetchRemindersMatchingPredicate(const std::shared_ptr<const EKPredicate>& predicate,
                                                     ReminderCompletion completion) {
  std::shared_ptr<const EKReminderArray> answer;
  if (const auto* mine = dynamic_cast<const FakeReminderPredicate*>(predicate.get()); m_answers && mine != nullptr) {
    std::vector<FakeArray<EKReminder>::Make> matching;
    for (const auto& reminder : m_reminders) {
      if (!mine->matches(*reminder)) { continue; }
      matching.push_back([this, kept = std::weak_ptr(reminder)] {
        const auto record = kept.lock();
        return record ? copyOf(*record) : nullptr;
      });
    }
    answer = std::make_shared<FakeArray<EKReminder>>(std::move(matching));
  }
  if (m_runLoop) {
    m_runLoop->perform([completion = std::move(completion), answer] { completion(answer); });
  } else {
    completion(answer);
  }
}

std::shared_ptr<EKCalendarItem> FakeEventStore::calendarItemWithIdentifier(std::string_view identifier) {
  if (!m_answers) { return nullptr; }
  const std::string text(identifier);
  if (const auto event = recordWithIdentifier(m_events, text); event != m_events.end()) { return copyOf(**event); }
  if (const auto reminder = recordWithIdentifier(m_reminders, text); reminder != m_reminders.end()) {
    return copyOf(**reminder);
  }
  return nullptr;
}

std::optional<Error> FakeEventStore::objection(const EKCalendarItem* item, EKEntityType kind) const {
  const auto because = [](const char* reason) { return Error{"The fake store refused.", reason}; };
  if (!m_answers) { return because("It cannot be opened."); }
  if (item == nullptr) { return because("There is no item."); }
  const auto calendar = item->calendar();
  if (!calendar) { return because("The item has no calendar."); }
  const auto record = recordWithIdentifier(m_calendars, calendar->calendarIdentifier());
  if (record == m_calendars.end() || (*record)->m_kind != kind) {
    return because("The calendar does not hold such items.");
  }
  if (!(*record)->m_allowsContentModifications) { return because("The calendar allows no changes."); }
  return std::nullopt;
}

bool FakeEventStore::saveCalendar(const std::shared_ptr<EKCalendar>& calendar, bool, std::optional<Error>& error) {
  if (!m_answers) { return refuseBecause(error, "It cannot be opened."); }
  auto* fake = dynamic_cast<FakeCalendar*>(calendar.get());
  if (fake == nullptr) { return refuseBecause(error, "There is no calendar."); }
  if (!fake->m_title || fake->m_title->empty()) { return refuseBecause(error, "The calendar has no title."); }
  if (!fake->m_source) { return refuseBecause(error, "The calendar has no source."); }
  const auto record = recordWithIdentifier(m_calendars, fake->m_identifier);
  if (record != m_calendars.end() && !(*record)->m_allowsContentModifications) {
    return refuseBecause(error, "The calendar allows no changes.");
  }
  if (record != m_calendars.end()) {
    **record = *fake;
  } else {
    fake->m_identifier = nextIdentifier(fake->m_kind == EKEntityType::kEvent ? "calendar" : "list");
    m_calendars.push_back(std::make_shared<FakeCalendar>(*fake));
  }
  return true;
}

bool FakeEventStore::removeCalendar(const std::shared_ptr<EKCalendar>& calendar, bool, std::optional<Error>& error) {
  if (!m_answers) { return refuseBecause(error, "It cannot be opened."); }
  const auto record = calendar ? recordWithIdentifier(m_calendars, calendar->calendarIdentifier()) : m_calendars.end();
  if (record == m_calendars.end()) { return refuseBecause(error, "There is no such calendar."); }
  const auto kind = (*record)->m_kind;
  if (std::count_if(m_calendars.begin(), m_calendars.end(), [kind](const auto& c) { return c->m_kind == kind; }) == 1) {
    return refuseBecause(error, "It is the last of its kind.");
  }
  const auto identifier = (*record)->m_identifier;
  const auto inIt = [&](const auto& item) { return item->m_calendar->calendarIdentifier() == identifier; };
  std::erase_if(m_events, inIt);
  std::erase_if(m_reminders, inIt);
  m_calendars.erase(record);
  return true;
}

bool FakeEventStore::saveReminder(const std::shared_ptr<EKReminder>& reminder, bool, std::optional<Error>& error) {
  error = objection(reminder.get(), EKEntityType::kReminder);
  if (error) { return false; }
  auto* fake = dynamic_cast<FakeReminder*>(reminder.get());
  if (fake == nullptr) { return refuseBecause(error, "The reminder is not of this store."); }
  keep(m_reminders, *fake, "reminder");
  return true;
}

bool FakeEventStore::removeReminder(const std::shared_ptr<EKReminder>& reminder, bool, std::optional<Error>& error) {
  error = objection(reminder.get(), EKEntityType::kReminder);
  if (error) { return false; }
  const auto gone = std::erase_if(
      m_reminders, [&](const auto& record) { return record->m_itemIdentifier == reminder->calendarItemIdentifier(); });
  return gone > 0 || refuseBecause(error, "There is no such reminder.");
}

}  // namespace orlocal::fakes
