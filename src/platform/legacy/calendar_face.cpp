#include "platform/legacy/calendar_face.h"

namespace orlocal {
namespace {

struct TypeRow {
  EKCalendarType type;
  const char* text;
};
constexpr TypeRow kCalendarTypes[] = {
    {EKCalendarType::kLocal, "Local"},       {EKCalendarType::kCalDAV, "CalDav"},
    {EKCalendarType::kExchange, "Exchange"}, {EKCalendarType::kSubscription, "Subscription"},
    {EKCalendarType::kBirthday, "Birthday"},
};

}  // namespace

OptionalText CalendarFace::type() const {
  for (const TypeRow& row : kCalendarTypes) {
    if (static_cast<int>(row.type) == m_calendar->type()) { return row.text; }
  }
  return std::nullopt;
}

}  // namespace orlocal
