#include "platform/legacy/recurrence_faces.h"

#include "platform/legacy/faces.h"

namespace orlocal {
namespace {

class NthWeekDayFace final : public CalNthWeekDay {
 public:
  explicit NthWeekDayFace(std::shared_ptr<EKRecurrenceDayOfWeek> day) : m_day(std::move(day)) {}
  int weekNumber() const override { return static_cast<int>(m_day->weekNumber()); }
  int dayOfTheWeek() const override { return static_cast<int>(m_day->dayOfTheWeek()); }

 private:
  std::shared_ptr<EKRecurrenceDayOfWeek> m_day;
};

}  // namespace

std::shared_ptr<CalRecurrenceEnd> RecurrenceRuleFace::recurrenceEnd() const {
  return faceOf<RecurrenceEndFace>(m_rule->recurrenceEnd());
}

std::vector<long> RecurrenceRuleFace::daysOfTheWeek() const {
  std::vector<long> days;
  for (const auto& day : m_rule->daysOfTheWeek()) {
    if (day->weekNumber() == 0) { days.push_back(day->dayOfTheWeek()); }
  }
  return days;
}

std::vector<std::shared_ptr<CalNthWeekDay>> RecurrenceRuleFace::nthWeekDaysOfTheMonth() const {
  std::vector<std::shared_ptr<CalNthWeekDay>> days;
  for (const auto& day : m_rule->daysOfTheWeek()) {
    if (day->weekNumber() != 0) { days.push_back(std::make_shared<NthWeekDayFace>(day)); }
  }
  return days;
}

}  // namespace orlocal
