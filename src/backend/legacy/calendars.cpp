#include "backend/colors.h"
#include "backend/error_codes.h"
#include "backend/keyword_table.h"
#include "backend/legacy/current_item.h"
#include "backend/legacy/ical_functions.h"
#include "backend/property_tables.h"
#include "backend/value_texts.h"

namespace orlocal {
namespace {

constexpr PropertyGetter<const CalCalendar&> kCalendarGetters[] = {
    {"title", [](const CalCalendar& calendar) { return calendar.title(); }},
    {"notes", [](const CalCalendar& calendar) { return calendar.notes(); }},
    {"type", [](const CalCalendar& calendar) { return calendar.type(); }},
    {"uid", [](const CalCalendar& calendar) { return calendar.uid(); }},
    {"iseditable", [](const CalCalendar& calendar) { return booleanText(calendar.isEditable()); }},
    {"color", [](const CalCalendar& calendar) { return colorText(calendar.color()); }},
};

std::int32_t setNotes(CalCalendar& calendar, const PropertyValue& value) {
  calendar.setNotes(textOf(value));
  return 0;
}

std::int32_t setTitle(CalCalendar& calendar, const PropertyValue& value) {
  calendar.setTitle(textOf(value));
  return 0;
}

std::int32_t setColor(CalCalendar& calendar, const PropertyValue& value) {
  const auto color = colorFromNumbers(textOf(value));
  if (!color) { return failWith(kInvalidParameterValue); }
  calendar.setColor(*color);
  return 0;
}

constexpr PropertySetter<CalCalendar, std::int32_t> kCalendarSetters[] = {
    {"notes", setNotes},
    {"title", setTitle},
    {"color", setColor},
};

/// The first of `calendars` with that title. One without a title never matches, not even an absent title.
std::shared_ptr<CalCalendar> calendarTitled(const CalCalendarArray& calendars, const OptionalText& title) {
  for (const auto& calendar : calendars) {
    if (title && calendar->title() == title) { return calendar; }
  }
  return nullptr;
}

}  // namespace

std::optional<CalCalendarArray> iCalFunctions::calendarArrayFromString(const OptionalText& names) {
  if (!names) { return m_calendar ? CalCalendarArray{m_calendar} : store()->calendars(); }
  if (*names == "all") { return store()->calendars(); }
  return calendarsTitled<CalCalendar>(*names, [this](const std::string& title) { return getCalendarWithTitle(title); });
}

std::optional<CalCalendarArray> iCalFunctions::calendarsToFetchFrom(const OptionalText& names) {
  auto calendars = calendarArrayFromString(names);
  if (calendars && calendars->empty()) {
    failWith(kCalendarArrayNotCreated);
    return std::nullopt;
  }
  return calendars;
}

std::int32_t iCalFunctions::openCalendarAt(std::int32_t index) {
  releaseItems();
  return openItemAt(index, store()->calendars(), m_calendar);
}

std::int32_t iCalFunctions::openCalendarWithUID(const OptionalText& uid) {
  releaseItems();
  m_calendar = store()->calendarWithUID(uid.value_or(""));
  return m_calendar ? 0 : failWith(kItemNotFound);
}

std::int32_t iCalFunctions::openCalendarWithTitle(const OptionalText& title) {
  releaseItems();
  m_calendar = getCalendarWithTitle(title);
  return m_calendar ? 0 : -1;
}

std::shared_ptr<CalCalendar> iCalFunctions::getCalendarWithTitle(const OptionalText& title) {
  auto calendar = calendarTitled(store()->calendars(), title);
  if (!calendar) { failWith(kItemNotFound); }
  return calendar;
}

std::int32_t iCalFunctions::setCalendarProp(const OptionalText& property, const PropertyValue& value) {
  if (!m_calendar) { return failWith(kInvalidCallOrder); }
  if (!property) { return failWith(kMissingArgument); }
  const auto* setter = rowForAnyCase(kCalendarSetters, *property);
  return setter != nullptr ? setter->set(*m_calendar, value) : failWith(kMissingArgument);
}

OptionalText iCalFunctions::getCalendarAttribute(const OptionalText& property, std::int32_t, const OptionalText&) {
  // Callers tell from this code, and not from the one for a wrong order of calls, that no calendar is open.
  if (!m_calendar) { return noneWith(kCalendarArrayNotCreated); }
  if (!property) { return noneWith(kMissingArgument); }
  return catchingExceptions(lastErrorString, OptionalText(kErrorText), [&]() -> OptionalText {
    const auto* getter = rowForAnyCase(kCalendarGetters, *property);
    return getter != nullptr ? getter->read(*m_calendar) : noneWith(kInvalidArgument);
  });
}

}  // namespace orlocal
