#include <utility>

#include "platform/awaited_reminders.h"
#include "platform/legacy/cal_store_face.h"
#include "platform/legacy/calendar_face.h"
#include "platform/legacy/event_face.h"
#include "platform/legacy/task_face.h"
#include "platform/platform.h"

namespace orlocal {
namespace {

class PredicateFace final : public CalPredicate {
 public:
  explicit PredicateFace(std::shared_ptr<const EKPredicate> asked) : m_asked(std::move(asked)) {}
  const std::shared_ptr<const EKPredicate>& object() const { return m_asked; }

 private:
  std::shared_ptr<const EKPredicate> m_asked;
};

/// The answer to a query; its objects get their faces when they are asked for.
template <class Array, class Objects, class Face>
class ArrayFace final : public Array {
 public:
  ArrayFace(std::shared_ptr<const Objects> objects, Surroundings surroundings)
      : m_objects(std::move(objects)), m_surroundings(surroundings) {}
  std::size_t count() const override { return m_objects->count(); }
  auto objectAtIndex(std::size_t index) const -> decltype(Array::objectAtIndex(index)) override {
    return faceOf<Face>(m_objects->objectAtIndex(index), m_surroundings);
  }

 private:
  std::shared_ptr<const Objects> m_objects;
  Surroundings m_surroundings;
};
using EventArrayFace = ArrayFace<CalEventArray, EKEventArray, EventFace>;
using TaskArrayFace = ArrayFace<CalTaskArray, EKReminderArray, TaskFace>;

EKCalendarArray behindAll(const CalCalendarArray& calendars) {
  EKCalendarArray objects;
  for (const auto& calendar : calendars) {
    if (auto object = behind<CalendarFace>(calendar)) { objects.push_back(std::move(object)); }
  }
  return objects;
}

}  // namespace

std::shared_ptr<const CalPredicate> CalCalendarStoreFace::eventPredicateWithStartDate(
    Date start, Date end, const CalCalendarArray& calendars) {
  return faceOf<PredicateFace>(m_store->predicateForEvents(start, end, behindAll(calendars)));
}

std::shared_ptr<const CalPredicate> CalCalendarStoreFace::eventPredicateWithStartDate(
    Date start, Date end, std::string_view uid, const CalCalendarArray& calendars) {
  return faceOf<PredicateFace>(m_store->predicateForOneEvent(start, end, behindAll(calendars), uid));
}

std::shared_ptr<const CalPredicate> CalCalendarStoreFace::taskPredicateWithCalendars(
    const CalCalendarArray& calendars) {
  return faceOf<PredicateFace>(m_store->predicateForRemindersInCalendars(behindAll(calendars)));
}

std::shared_ptr<const CalPredicate> CalCalendarStoreFace::taskPredicateWithUncompletedTasks(
    const CalCalendarArray& calendars) {
  return faceOf<PredicateFace>(
      m_store->predicateForIncompleteReminders(std::nullopt, std::nullopt, behindAll(calendars)));
}

// The current platform reads an absent date as no bound; the older one makes no predicate of it.

std::shared_ptr<const CalPredicate> CalCalendarStoreFace::taskPredicateWithUncompletedTasksDueBefore(
    std::optional<Date> date, const CalCalendarArray& calendars) {
  if (!date) { return nullptr; }
  return faceOf<PredicateFace>(m_store->predicateForIncompleteReminders(std::nullopt, date, behindAll(calendars)));
}

std::shared_ptr<const CalPredicate> CalCalendarStoreFace::taskPredicateWithTasksCompletedSince(
    std::optional<Date> date, const CalCalendarArray& calendars) {
  if (!date) { return nullptr; }
  return faceOf<PredicateFace>(m_store->predicateForCompletedReminders(date, std::nullopt, behindAll(calendars)));
}

std::shared_ptr<const CalEventArray> CalCalendarStoreFace::eventsWithPredicate(
    const std::shared_ptr<const CalPredicate>& predicate) {
  return faceOf<const EventArrayFace>(m_store->eventsMatchingPredicate(behind<const PredicateFace>(predicate)),
                                      m_surroundings);
}

std::shared_ptr<const CalTaskArray> CalCalendarStoreFace::tasksWithPredicate(
    const std::shared_ptr<const CalPredicate>& predicate) {
  return faceOf<const TaskArrayFace>(
      awaitedReminders(*m_store, behind<const PredicateFace>(predicate), m_surroundings.platform), m_surroundings);
}

}  // namespace orlocal
