#include "backend/colors.h"
#include "backend/current_items.h"
#include "backend/eventkit/ical_ek_functions.h"
#include "backend/keyword_table.h"
#include "backend/keywords.h"
#include "backend/property_tables.h"
#include "backend/value_texts.h"

namespace orlocal {
namespace {

struct CalendarType {
  int number;
  const char* text;
};

constexpr CalendarType kCalendarTypes[] = {
    {0, "Local"}, {1, "CalDav"}, {2, "Exchange"}, {3, "Subscription"}, {4, "Birthday"},
};

OptionalText typeText(const EKCalendar& calendar) {
  const auto* type = rowNumbered(kCalendarTypes, calendar.type());
  return type ? OptionalText(type->text) : std::nullopt;
}

constexpr PropertyGetter<const EKCalendar&> kCalendarGetters[] = {
    {"title", [](const EKCalendar& calendar) { return calendar.title(); }},
    // Calendars have no notes here; solutions written for the older back end ask all the same.
    {"notes", [](const EKCalendar&) { return OptionalText(); }},
    {"type", typeText},
    {"uid", [](const EKCalendar& calendar) { return calendar.calendarIdentifier(); }},
    {"iseditable", [](const EKCalendar& calendar) { return booleanText(!calendar.isImmutable()); }},
    {"issubscribed", [](const EKCalendar& calendar) { return booleanText(calendar.isSubscribed()); }},
    {"allowsmodification",
     [](const EKCalendar& calendar) { return booleanText(calendar.allowsContentModifications()); }},
    {"color", [](const EKCalendar& calendar) { return colorText(calendar.color()); }},
};

std::int32_t setNothing(EKCalendar&, const PropertyValue&) { return 0; }

std::int32_t setTitle(EKCalendar& calendar, const PropertyValue& value) {
  calendar.setTitle(textOf(value));
  return 0;
}

std::int32_t setColor(EKCalendar& calendar, const PropertyValue& value) {
  const auto color = colorFromNumbers(textOf(value));
  if (!color) { return failWith(kInvalidParameterValue); }
  calendar.setColor(*color);
  return 0;
}

constexpr PropertySetter<EKCalendar, std::int32_t> kCalendarSetters[] = {
    {"notes", setNothing},
    {"title", setTitle},
    {"color", setColor},
};

}  // namespace

std::int32_t iCalEKFunctions::openCalendarAt(std::int32_t index) {
  return openCalendarOfKind(EKEntityType::kEvent, index, kCalendarNotOpened);
}

std::int32_t iCalEKFunctions::openReminderListAt(std::int32_t index) {
  return openCalendarOfKind(EKEntityType::kReminder, index, kReminderListNotOpened);
}

std::int32_t iCalEKFunctions::openCalendarOfKind(EKEntityType kind, std::int32_t index, std::int64_t missing) {
  releaseItems();
  const auto calendars = m_ekEventStore->calendarsForEntityType(kind);
  if (!isWithin(index, calendars.size())) { return failWith(kIndexOutOfBounds); }
  m_ekCalendar = objectAtIndex(calendars, index - 1);
  return m_ekCalendar ? 0 : failWith(missing);
}

std::int32_t iCalEKFunctions::openCalendarWithUID(const OptionalText& uid) {
  releaseItems();
  if (uid) { m_ekCalendar = m_ekEventStore->calendarWithIdentifier(*uid); }
  return m_ekCalendar ? 0 : failWith(kCalendarUidNotFound);
}

std::int32_t iCalEKFunctions::openCalendarWithTitle(const OptionalText& title) {
  releaseItems();
  m_ekCalendar = calendarTitled(title);
  return m_ekCalendar ? 0 : failWith(kCalendarTitleNotFound);
}

std::shared_ptr<EKCalendar> iCalEKFunctions::getCalendarWithTitle(const OptionalText& title) {
  auto calendar = calendarTitled(title);
  if (!calendar) { failWith(kItemNotFound); }
  return calendar;
}

std::shared_ptr<EKCalendar> iCalEKFunctions::calendarTitled(const OptionalText& title) {
  if (!title) { return nullptr; }
  for (const auto kind : {EKEntityType::kEvent, EKEntityType::kReminder}) {
    for (const auto& calendar : m_ekEventStore->calendarsForEntityType(kind)) {
      if (calendar && calendar->title() == title) { return calendar; }
    }
  }
  return nullptr;
}

std::int32_t iCalEKFunctions::setCalendarProp(const OptionalText& property, const PropertyValue& value) {
  if (!m_ekCalendar) { return failWith(kNoCalendarToSetProperty); }
  if (!property) { return failWith(kPropertyRequired); }
  const auto* setter = rowForAnyCase(kCalendarSetters, *property);
  return setter != nullptr ? setter->set(*m_ekCalendar, value) : failWith(kMissingArgument);
}

OptionalText iCalEKFunctions::getCalendarAttribute(const OptionalText& property, std::int32_t, const OptionalText&) {
  if (!m_ekCalendar) { return noneWith(kNoCalendarToGetProperty); }
  if (!property) { return noneWith(kPropertyRequired); }
  const auto* getter = rowForAnyCase(kCalendarGetters, *property);
  if (getter == nullptr) { return noneWith(kInvalidProperty); }
  return catchingExceptions(lastErrorString, OptionalText(kErrorText), [&] { return getter->read(*m_ekCalendar); });
}

}  // namespace orlocal
