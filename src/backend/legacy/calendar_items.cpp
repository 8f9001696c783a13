#include "backend/current_items.h"
#include "backend/error_codes.h"
#include "backend/keyword_table.h"
#include "backend/legacy/attributes.h"
#include "backend/legacy/ical_functions.h"
#include "backend/value_texts.h"

namespace orlocal {
namespace {

constexpr Attribute<CalCalendarItem> kAttributes[] = {
    {"calendartitle",
     [](const CalCalendarItem& item) { return item.calendar() ? item.calendar()->title() : OptionalText(); }},
    {"calendaruid",
     [](const CalCalendarItem& item) { return item.calendar() ? item.calendar()->uid() : OptionalText(); }},
    {"datestamp", [](const CalCalendarItem& item) { return dateText(item.dateStamp()); }},
    {"notes", [](const CalCalendarItem& item) { return item.notes(); }},
    {"title", [](const CalCalendarItem& item) { return item.title(); }},
    {"url", [](const CalCalendarItem& item) { return item.url(); }},
    {"uid", [](const CalCalendarItem& item) { return item.uid(); }},
    {"hasalarm", [](const CalCalendarItem& item) { return OptionalText(booleanText(item.hasAlarm())); }},
    {"nextalarmdate",
     [](const CalCalendarItem& item) {
       const auto next = item.hasAlarm() ? item.nextAlarmDate() : std::nullopt;
       return next ? dateText(next) : OptionalText("");
     }},
};

}  // namespace

std::int32_t iCalFunctions::setCalendarItemProp(const OptionalText& property, const PropertyValue& value,
                                                CalCalendarItem* item) {
  return catchingExceptions(lastErrorString, std::int32_t{-1}, [&] {
    const std::string name = lowercase(property.value_or(""));
    const OptionalText text = textOf(value);
    if (name == "calendaruid" || name == "calendartitle") {
      const auto calendar =
          name == "calendaruid" ? store()->calendarWithUID(text.value_or("")) : getCalendarWithTitle(text);
      if (!calendar) { return failWith(kCalendarUidNotFound); }
      item->setCalendar(calendar);
    } else if (name == "notes") {
      item->setNotes(text);
    } else if (name == "title") {
      item->setTitle(text);
    } else if (name == "url") {
      item->setUrl(urlWithString(text));
    } else {
      failWith(kInvalidArgument);  // and yet 0: callers look at the code, not at the result
    }
    return 0;
  });
}

OptionalText iCalFunctions::getCalendarItemAttribute(const OptionalText& property, CalCalendarItem* item) {
  const auto* row = rowFor(kAttributes, lowercase(property.value_or("")));
  return row ? row->read(*item) : noText(kInvalidArgument);
}

}  // namespace orlocal
