#include "accounts/dav/requests.h"

#include "accounts/dav/names.h"
#include "store/icalendar/calendar_color.h"

namespace orlocal::accounts {

std::string propFindBody(std::span<const XmlName> properties) {
  XmlWriter writer(dav::kPropFind);
  writer.begin(dav::kProp);
  for (const XmlName& name : properties) { writer.empty(name); }
  return writer.take();
}

std::string syncCollectionBody(std::string_view token) {
  XmlWriter writer(dav::kSyncCollection);
  writer.element(dav::kSyncToken, token).element(dav::kSyncLevel, "1");
  writer.begin(dav::kProp).empty(dav::kGetEtag);
  return writer.take();
}

std::string multigetBody(std::span<const std::string> hrefs) {
  XmlWriter writer(dav::kCalendarMultiget);
  writer.begin(dav::kProp).empty(dav::kGetEtag).empty(dav::kCalendarData).end();
  for (const std::string& href : hrefs) { writer.element(dav::kHref, href); }
  return writer.take();
}

std::string mkCalendarBody(const NewCalendar& calendar) {
  XmlWriter writer(dav::kMkCalendar);
  writer.begin(dav::kSet).begin(dav::kProp).element(dav::kDisplayName, calendar.displayName);
  writer.begin(dav::kSupportedComponents);
  if (calendar.events) { writer.begin(dav::kComp, "name", "VEVENT").end(); }
  if (calendar.reminders) { writer.begin(dav::kComp, "name", "VTODO").end(); }
  writer.end();
  if (calendar.color) { writer.element(dav::kCalendarColor, davColor(*calendar.color)); }
  return writer.take();
}

std::string propPatchBody(XmlName property, std::string_view value) {
  XmlWriter writer(dav::kPropertyUpdate);
  writer.begin(dav::kSet).begin(dav::kProp).element(property, value);
  return writer.take();
}

std::string davColor(const store::Rgb& color) { return store::colorText(color) + "FF"; }

}  // namespace orlocal::accounts
