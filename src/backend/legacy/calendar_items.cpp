#include "backend/current_items.h"
#include "backend/error_codes.h"
#include "backend/keyword_table.h"
#include "backend/legacy/ical_functions.h"
#include "backend/property_tables.h"
#include "backend/value_texts.h"

namespace orlocal {
namespace {

constexpr PropertyGetter<const CalCalendarItem&> kItemGetters[] = {
    {"calendartitle",
     [](const CalCalendarItem& item) { return item.calendar() ? item.calendar()->title() : OptionalText(); }},
    {"calendaruid",
     [](const CalCalendarItem& item) { return item.calendar() ? item.calendar()->uid() : OptionalText(); }},
    {"datestamp", [](const CalCalendarItem& item) { return dateText(item.dateStamp()); }},
    {"notes", [](const CalCalendarItem& item) { return item.notes(); }},
    {"title", [](const CalCalendarItem& item) { return item.title(); }},
    {"url", [](const CalCalendarItem& item) { return item.url(); }},
    {"uid", [](const CalCalendarItem& item) { return item.uid(); }},
    {"hasalarm", [](const CalCalendarItem& item) { return booleanText(item.hasAlarm()); }},
    {"nextalarmdate",
     [](const CalCalendarItem& item) {
       const auto next = item.hasAlarm() ? item.nextAlarmDate() : std::nullopt;
       return next ? dateText(next) : OptionalText("");
     }},
};

constexpr PropertySetter<CalCalendarItem> kItemSetters[] = {
    {"notes", [](CalCalendarItem& item, const PropertyValue& value) { item.setNotes(textOf(value)); }},
    {"title", [](CalCalendarItem& item, const PropertyValue& value) { item.setTitle(textOf(value)); }},
    {"url", [](CalCalendarItem& item, const PropertyValue& value) { item.setUrl(urlWithString(textOf(value))); }},
};

}  // namespace

std::int32_t iCalFunctions::setCalendarItemProp(const OptionalText& property, const PropertyValue& value,
                                                CalCalendarItem* item) {
  return catchingExceptions(lastErrorString, std::int32_t{-1}, [&] {
    const auto word = lowercase(property.value_or(""));
    const bool byUid = word == "calendaruid";
    if (byUid || word == "calendartitle") {
      const OptionalText text = textOf(value);
      const auto calendar = byUid ? store()->calendarWithUID(text.value_or("")) : getCalendarWithTitle(text);
      if (!calendar) { return failWith(kCalendarUidNotFound); }
      item->setCalendar(calendar);
    } else if (const auto* setter = rowFor(kItemSetters, word)) {
      setter->set(*item, value);
    } else {
      // The result stays 0; callers look at the code.
      failWith(kInvalidArgument);
    }
    return 0;
  });
}

OptionalText iCalFunctions::getCalendarItemAttribute(const OptionalText& property, CalCalendarItem* item) {
  const auto* getter = property ? rowForAnyCase(kItemGetters, *property) : nullptr;
  return getter != nullptr ? getter->read(*item) : noneWith(kInvalidArgument);
}

}  // namespace orlocal
