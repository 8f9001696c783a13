#include "store/invitations/own_answer.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "base/text.h"
#include "base/translation.h"
#include "base/try.h"
#include "store/icalendar/content_line.h"
#include "store/icalendar/icalendar_writer.h"
#include "store/icalendar/item_text.h"
#include "store/invitations/occurrences.h"
#include "store/invitations/people.h"
#include "store/recurrence/recurrence.h"
#include "store/time/clock.h"

namespace orlocal::store {
namespace {

bool isCancelled(const Item& item) {
  std::string_view rest = item.extra;
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    if (equalsNoCase(line, "STATUS:CANCELLED")) { return true; }
  }
  return false;
}

Failed gone(const Item& item) {
  return failure(ErrorCode::kNotFound,
                 tr("“{}” is no longer in the store as it was; look again.", item.title.value_or("")));
}

}  // namespace

std::optional<std::string> invitedUnder(const Item& item, const std::vector<std::string>& addresses) {
  const Attendee* organizer = organizerOf(item);
  for (const std::string& address : addresses) {
    if (organizer != nullptr && isSameAddress(organizer->address, address)) { return std::nullopt; }
  }
  const auto found =
      std::ranges::find_if(addresses, [&](const std::string& address) { return invitedAs(item, address) != nullptr; });
  return found == addresses.end() ? std::nullopt : std::optional(*found);
}

bool waitsForAnswer(const Item& item, const std::string& address) {
  const Attendee* own = invitedAs(item, address);
  if (own == nullptr || organizerOf(item) == nullptr || isCancelled(item)) { return false; }
  return own->status == Attendee::Status::kUnknown || own->status == Attendee::Status::kPending;
}

Result<std::optional<CalendarTime>> recurrenceIdOf(const Item& series, Moment original, const Zone& viewer) {
  ORLOCAL_TRY(const Series compiled, Series::compile(series, viewer));
  return compiled.recurrenceId(original);
}

Result<std::string> replyText(const Item& item, const OwnAnswer& answer) {
  const Attendee* organizer = organizerOf(item);
  const Attendee* own = invitedAs(item, answer.address);
  if (organizer == nullptr || own == nullptr) {
    return failure(ErrorCode::kRefused, tr("“{}” is no invitation for {}: it names {}.", item.title.value_or(""),
                                           answer.address, organizer == nullptr ? tr("no organiser") : tr("others")));
  }
  Item reply;
  reply.kind = item.kind;
  reply.uid = item.uid;
  reply.recurrenceId = item.recurrenceId;
  reply.sequence = item.sequence;
  reply.title = item.title;
  reply.start = item.start;
  reply.endOrDue() = item.endOrDue();
  reply.stamped = now();
  reply.attendees = {Attendee{.address = organizer->address, .name = organizer->name, .organizer = true, .extra = ""},
                     Attendee{.address = own->address,
                              .name = own->name,
                              .status = answer.status,
                              .type = Attendee::Type::kPerson,
                              .extra = ""}};
  if (answer.comment) { reply.extra = "COMMENT:" + escapeText(*answer.comment) + "\n"; }
  reply.extra += "REQUEST-STATUS:2.0;Success\n";
  const WholeItem whole{std::move(reply), {}};
  std::string text;
  writePlainHead(text);
  appendFolded(text, "METHOD:REPLY");
  text += itemZones(whole) + itemComponents(whole);
  writeCalendarEnd(text);
  return text;
}

Status answerInvitation(ItemWriter& writer, const Item& item, const std::optional<CalendarTime>& original,
                        const OwnAnswer& answer, const std::function<Status(const std::string& message)>& send) {
  ORLOCAL_TRY(auto whole, writer.read(item.id));
  if (!whole || whole->main.itemIdentifier != item.itemIdentifier) { return gone(item); }
  ORLOCAL_TRY(const auto calendar, writer.calendarWith(whole->main.calendar));
  if (!calendar || calendar->readOnly || calendar->immutable) {
    return failure(ErrorCode::kReadOnly, tr("“{}” stands in “{}”, which allows no changes; answer where the "
                                            "calendar comes from.",
                                            item.title.value_or(""), calendar ? calendar->title : ""));
  }
  Item* answered = &whole->main;
  if (original) { ORLOCAL_TRY(answered, occurrenceIn(*whole, *original)); }
  if (answered == nullptr) { return gone(item); }
  ORLOCAL_TRY(const std::string message, replyText(*answered, answer));
  invitedAs(*answered, answer.address)->status = answer.status;
  ORLOCAL_CHECK(writer.put(whole->main.calendar, whole->main, whole->changed));
  ORLOCAL_CHECK(send(message));
  return writer.commit();
}

}  // namespace orlocal::store
