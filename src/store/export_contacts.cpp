#include <map>
#include <string>
#include <utility>

#include "base/try.h"
#include "store/birthdays.h"
#include "store/contacts.h"
#include "store/icalendar/content_line.h"

namespace orlocal::store {
namespace {

/// By the UID of the event that keeps it.
Result<std::map<std::string, Birthday>> birthdaysOf(CalendarStore& store) {
  std::map<std::string, Birthday> birthdays;
  ORLOCAL_TRY(const auto calendars, store.calendars(CalendarKind::kEvents));
  for (const Calendar& calendar : calendars) {
    if (calendar.type != Source::Type::kBirthday) { continue; }
    ORLOCAL_CHECK(store.forEachItem(calendar.id, [&](const Item& event, const std::vector<Item>&) -> Status {
      if (const auto birthday = birthdayOf(event)) { birthdays.emplace(event.uid, *birthday); }
      return {};
    }));
  }
  return birthdays;
}

void writeCard(std::string& out, const Contact& contact, const Birthday* birthday) {
  const auto line = [&](const std::string& text) { appendFolded(out, text); };
  line("BEGIN:VCARD");
  line("VERSION:4.0");
  line("UID:" + escapeText(contact.identifier));
  line("FN:" + escapeText(contact.name));
  for (const std::string& email : contact.emails) { line("EMAIL:" + escapeText(email)); }
  // As an envelope has it, which is all that is kept.
  if (contact.address) { line("ADR;LABEL=" + parameterText(*contact.address) + ":;;;;;;"); }
  if (birthday != nullptr) { line("BDAY:" + birthdayText(*birthday)); }
  line("END:VCARD");
}

}  // namespace

Result<std::size_t> exportContacts(CalendarStore& store, const TextSink& sink) {
  ORLOCAL_TRY(const auto contacts, store.contacts());
  ORLOCAL_TRY(const auto birthdays, birthdaysOf(store));
  std::string text;
  for (const Contact& contact : contacts) {
    const auto found = birthdays.find(birthdayUid(contact.identifier));
    writeCard(text, contact, found == birthdays.end() ? nullptr : &found->second);
    ORLOCAL_CHECK(sink(text));
    text.clear();
  }
  return contacts.size();
}

}  // namespace orlocal::store
