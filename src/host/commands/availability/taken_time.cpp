#include "host/commands/availability/taken_time.h"

#include <algorithm>
#include <span>
#include <unordered_map>

#include "base/text.h"
#include "base/try.h"
#include "host/commands/command_line/own_addresses.h"
#include "store/icalendar/kept_lines.h"
#include "store/invitations/people.h"

namespace orlocal::host {
namespace {

using store::Attendee;
using store::BusyKind;
using store::Item;

constexpr std::size_t kRowsAtOnce = 256;

/// What a word of an event's file says about its time; none: that it takes none.
struct TimeWord {
  std::string_view property, word;
  std::optional<BusyKind> kind;
};
constexpr TimeWord kTimeWords[] = {
    {"STATUS", "CANCELLED", std::nullopt},
    {"STATUS", "TENTATIVE", BusyKind::kTentative},
    {"TRANSP", "TRANSPARENT", std::nullopt},
    {"X-MICROSOFT-CDO-BUSYSTATUS", "FREE", std::nullopt},
    {"X-MICROSOFT-CDO-BUSYSTATUS", "TENTATIVE", BusyKind::kTentative},
    {"X-MICROSOFT-CDO-BUSYSTATUS", "OOF", BusyKind::kUnavailable},
};

/// The value of a line that the event keeps from its file; empty without one.
std::string_view keptValue(const Item& item, std::string_view property) {
  const auto values = store::keptValues(property, item.extra);
  return values.empty() ? std::string_view() : trimmed(values.front());
}

/// What the owner answered to the invitation; none where nobody invited them, or they organise it themselves.
std::optional<Attendee::Status> answerOf(const Item& event, const TimeOwner& owner) {
  for (const std::string& own : owner.addresses) {
    if (const Attendee* invited = store::invitedAs(event, own)) { return invited->status; }
  }
  return std::nullopt;
}

}  // namespace

TimeOwner TimeOwner::ofUser() { return {ownAddresses(), false}; }

std::optional<BusyKind> takenBy(const Item& event, const TimeOwner& owner) {
  if (owner.ignoresAllDay && event.allDay()) { return std::nullopt; }
  BusyKind kind = BusyKind::kBusy;
  for (const TimeWord& each : kTimeWords) {
    if (!equalsNoCase(keptValue(event, each.property), each.word)) { continue; }
    if (!each.kind) { return std::nullopt; }
    kind = *each.kind;
  }
  switch (answerOf(event, owner).value_or(Attendee::Status::kAccepted)) {
    case Attendee::Status::kDeclined:
    case Attendee::Status::kDelegated:
      return std::nullopt;
    case Attendee::Status::kTentative:
    case Attendee::Status::kPending:
    case Attendee::Status::kUnknown:
      return BusyKind::kTentative;
    default:
      return kind;
  }
}

Result<std::vector<TakenTime>> takenBetween(store::CalendarStore& store, store::Moment from, store::Moment to,
                                            const std::vector<store::Calendar>& calendars, const TimeOwner& owner) {
  std::vector<store::CalendarId> ids;
  for (const store::Calendar& calendar : calendars) {
    if (calendar.holds(store::CalendarKind::kEvents) && calendar.type != store::Source::Type::kBirthday) {
      ids.push_back(calendar.id);
    }
  }
  std::vector<TakenTime> taken;
  if (ids.empty()) { return taken; }
  ORLOCAL_TRY(const auto found, store.occurrences({from, to, std::move(ids)}));
  // A series comes as often as it has occurrences.
  std::unordered_map<store::ItemId, std::optional<BusyKind>> known;
  std::vector<store::ItemId> rows;
  for (const store::Occurrence& each : found) {
    if (known.try_emplace(each.item, std::nullopt).second) { rows.push_back(each.item); }
  }
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (i % kRowsAtOnce == 0) { store.prefetch(std::span(rows).subspan(i, std::min(kRowsAtOnce, rows.size() - i))); }
    ORLOCAL_TRY(const auto item, store.item(rows[i]));
    if (item != nullptr) { known[rows[i]] = takenBy(*item, owner); }
  }
  for (const store::Occurrence& each : found) {
    if (const auto kind = known[each.item]) { taken.push_back({each, *kind}); }
  }
  return taken;
}

}  // namespace orlocal::host
