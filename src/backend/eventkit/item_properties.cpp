#include "backend/current_items.h"
#include "backend/eventkit/ical_ek_functions.h"
#include "backend/keyword_table.h"
#include "backend/property_tables.h"
#include "backend/value_texts.h"

namespace orlocal {
namespace {

/// The moment at which the item's first alarm was made stands for its next alarm; "" without alarms.
OptionalText nextAlarmDate(const EKCalendarItem& item) {
  if (!item.hasAlarms()) { return ""; }
  const auto alarms = item.alarms();
  return alarms.empty() || !alarms.front() ? std::nullopt : dateText(alarms.front()->creationDate());
}

OptionalText calendarTitle(const EKCalendarItem& item) {
  const auto calendar = item.calendar();
  return calendar ? calendar->title() : std::nullopt;
}

OptionalText calendarUid(const EKCalendarItem& item) {
  const auto calendar = item.calendar();
  return calendar ? calendar->calendarIdentifier() : std::nullopt;
}

constexpr PropertyGetter<const EKCalendarItem&> kItemGetters[] = {
    {"calendartitle", calendarTitle},
    {"calendaruid", calendarUid},
    {"datestamp", [](const EKCalendarItem& item) { return dateText(item.lastModifiedDate()); }},
    {"notes", [](const EKCalendarItem& item) { return item.notes(); }},
    {"title", [](const EKCalendarItem& item) { return item.title(); }},
    {"url", [](const EKCalendarItem& item) { return item.url(); }},
    {"uid", [](const EKCalendarItem& item) { return item.calendarItemIdentifier(); }},
    // Singular here, "hasalarms" in the tables of events and reminders: solutions use both.
    {"hasalarm", [](const EKCalendarItem& item) { return booleanText(item.hasAlarms()); }},
    {"nextalarmdate", nextAlarmDate},
};

constexpr PropertySetter<EKCalendarItem> kItemSetters[] = {
    {"notes", [](EKCalendarItem& item, const PropertyValue& value) { item.setNotes(textOf(value)); }},
    {"title", [](EKCalendarItem& item, const PropertyValue& value) { item.setTitle(textOf(value)); }},
    {"url", [](EKCalendarItem& item, const PropertyValue& value) { item.setUrl(urlWithString(textOf(value))); }},
};

}  // namespace

std::int32_t iCalEKFunctions::setCalendarItemProp(const OptionalText& property, const PropertyValue& value,
                                                  EKCalendarItem* item) {
  return catchingExceptions(lastErrorString, -1, [&] {
    const auto text = textOf(value);
    const bool byUid = property == "calendaruid";
    if (byUid || property == "calendartitle") {
      std::shared_ptr<EKCalendar> calendar;
      if (byUid) {
        if (text) { calendar = m_ekEventStore->calendarWithIdentifier(*text); }
      } else {
        calendar = getCalendarWithTitle(text);
      }
      if (!calendar) { return failWith(kCalendarUidNotFound); }
      if (item != nullptr) { item->setCalendar(std::move(calendar)); }
      return 0;
    }
    if (const auto* setter = property ? rowFor(kItemSetters, *property) : nullptr) {
      if (item != nullptr) { setter->set(*item, value); }
    } else {
      // The result stays 0; callers look at the code.
      failWith(kInvalidArgument);
    }
    return 0;
  });
}

OptionalText iCalEKFunctions::getCalendarItemAttribute(const OptionalText& property, EKCalendarItem* item) {
  const auto* getter = property ? rowForAnyCase(kItemGetters, *property) : nullptr;
  if (getter == nullptr) { return noneWith(kInvalidProperty); }
  return item != nullptr ? getter->read(*item) : std::nullopt;
}

}  // namespace orlocal
