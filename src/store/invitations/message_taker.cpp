#include "store/invitations/message_taker.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "store/icalendar/item_words.h"
#include "store/icalendar/kept_lines.h"
#include "store/invitations/occurrences.h"
#include "store/invitations/people.h"
#include "store/time/time_text.h"

namespace orlocal::store {
namespace {

using What = TakenMessage::What;

/// Our parameter of ATTENDEE: when the answer was written that is kept there, so that an older one does not undo it.
constexpr std::string_view kAnswered = "X-ORLOCAL-ANSWERED";

TakenMessage refused(std::string words) {
  return {What::kRefused, PutOutcome::kUnchanged, std::move(words), {}, {}, 0, 0};
}
TakenMessage told(std::string words) { return {What::kTold, PutOutcome::kUnchanged, std::move(words), {}, {}, 0, 0}; }

/// "2026-11-03 10:00 (Europe/Berlin)".
std::string timeInWords(const CalendarTime& time) {
  const LocalTime& at = time.local;
  std::string words = fmt::format("{:04}-{:02}-{:02}", at.year(), at.month(), at.day());
  if (time.kind == CalendarTime::Kind::kDate) { return words; }
  words += fmt::format(" {:02}:{:02}", at.hour(), at.minute());
  if (time.kind == CalendarTime::Kind::kUtc) { return words + " UTC"; }
  return time.kind == CalendarTime::Kind::kZoned ? words + " (" + time.zone + ")" : words;
}

std::string noOccurrence(const Item& given) {
  return tr("the series has no occurrence on {} any more; nothing was changed", timeInWords(*given.recurrenceId));
}

/// What the given item would change, for people.
std::string proposalOf(const Item& given, const Item& stored) {
  std::string words;
  const auto add = [&](const std::string& what) { words += (words.empty() ? "" : ", ") + what; };
  if (given.start && (given.start != stored.start || given.endOrDue() != stored.endOrDue())) {
    const std::string start = timeInWords(*given.start);
    add(given.endOrDue() ? tr("{} to {}", start, timeInWords(*given.endOrDue())) : start);
  }
  if (given.title && given.title != stored.title) { add(tr("the title “{}”", *given.title)); }
  if (given.location && given.location != stored.location) { add(tr("the place “{}”", *given.location)); }
  if (given.recurrence != stored.recurrence && !given.recurrenceId) { add(tr("another repetition")); }
  return words.empty() ? tr("a change that shows in nothing but its notes") : words;
}

std::string whoSends(const Item& given) {
  const auto found = std::ranges::find(given.attendees, false, &Attendee::organizer);
  return found == given.attendees.end() ? tr("somebody") : std::string(withoutMailto(found->address));
}

/// Why the organiser's word is not this message's; empty when it is.
std::string notFromOrganizer(const Item& given, const Item& stored) {
  const Attendee* theirs = organizerOf(given);
  const Attendee* ours = organizerOf(stored);
  if (ours == nullptr && theirs == nullptr) { return {}; }
  if (ours == nullptr) {
    return tr("it is no invitation here, and this message takes {} for its organiser; nothing was changed",
              withoutMailto(theirs->address));
  }
  if (theirs == nullptr) {
    return tr("only its organiser {} may change it, and this message names none; nothing was changed",
              withoutMailto(ours->address));
  }
  if (isSameAddress(ours->address, theirs->address)) { return {}; }
  return tr("only its organiser {} may change it, not {}; nothing was changed", withoutMailto(ours->address),
            withoutMailto(theirs->address));
}

/// Makes `item` as new as the message that changed it.
void takeRevision(Item& item, const Item& given) {
  item.sequence = std::max(item.sequence, given.sequence);
  const auto at = revisedAt(given);
  auto& stamp = item.modified ? item.modified : item.stamped;
  stamp = std::max(stamp, at);
}

void setCancelled(Item& item, const Item& given) {
  constexpr std::string_view kCancelled = "STATUS:CANCELLED\n";
  std::string kept = withoutLinesOf("STATUS", item.extra);
  // Before the components that stand in it, and behind the parameters, as they are read.
  std::size_t at = 0;
  while (at < kept.size() && kept[at] == '@') { at = std::min(kept.find('\n', at), kept.size() - 1) + 1; }
  item.extra = kept.insert(at, kCancelled);
  takeRevision(item, given);
}

/// What is known of the others' answers stays where the same version of an invitation knows none.
void keepAnswers(Item& given, Item& stored) {
  for (Attendee& attendee : given.attendees) {
    if (attendee.organizer) { continue; }
    const Attendee* known = invitedAs(stored, attendee.address);
    const bool unanswered =
        attendee.status == Attendee::Status::kUnknown || attendee.status == Attendee::Status::kPending;
    if (known == nullptr || !unanswered) { continue; }
    attendee.status = known->status;
    setParameter(attendee, kAnswered, parameterOf(*known, kAnswered));
  }
}

/// Of a delegation both tell; the one to whom it went speaks for himself.
const Attendee* answeringOf(const Item& reply) {
  std::vector<const Attendee*> attendees;
  for (const Attendee& attendee : reply.attendees) {
    if (!attendee.organizer) { attendees.push_back(&attendee); }
  }
  if (attendees.size() == 1) { return attendees.front(); }
  const auto found = std::ranges::find_if(
      attendees, [](const Attendee* attendee) { return parameterOf(*attendee, "DELEGATED-FROM").has_value(); });
  return attendees.size() == 2 && found != attendees.end() ? *found : nullptr;
}

std::string answerInWords(const Attendee& answering) {
  const std::string who(withoutMailto(answering.address));
  switch (answering.status) {
    case Attendee::Status::kAccepted:
      return tr("{} accepts", who);
    case Attendee::Status::kDeclined:
      return tr("{} declines", who);
    case Attendee::Status::kTentative:
      return tr("{} accepts tentatively", who);
    case Attendee::Status::kDelegated:
      return tr("{} sends {}", who, withoutMailto(parameterOf(answering, "DELEGATED-TO").value_or(tr("another"))));
    case Attendee::Status::kCompleted:
      return tr("{} has done it", who);
    case Attendee::Status::kInProcess:
      return tr("{} has begun it", who);
    case Attendee::Status::kUnknown:
    case Attendee::Status::kPending:
      break;
  }
  return tr("{} has not answered yet", who);
}

/// The entry whose answer this is; it is made for somebody to whom an invited one has delegated. Null for others.
Attendee* entryOf(Item& item, const Attendee& answering) {
  if (Attendee* known = invitedAs(item, answering.address)) { return known; }
  const auto from = parameterOf(answering, "DELEGATED-FROM");
  if (!from || invitedAs(item, *from) == nullptr) { return nullptr; }
  Attendee added = answering;
  added.status = Attendee::Status::kUnknown;
  return &item.attendees.emplace_back(std::move(added));
}

/// One attendee's answer, and nothing else of the item.
TakenMessage setAnswer(Item& item, const Attendee& answering, const Item& reply) {
  Attendee* entry = entryOf(item, answering);
  if (entry == nullptr) {
    return refused(tr("{} is not invited, and nobody who is has delegated to them; the answer was left out",
                      withoutMailto(answering.address)));
  }
  const auto written = revisedAt(reply);
  const auto before = parseTime(parameterOf(*entry, kAnswered).value_or(""));
  if (written && before && momentOf(*before, Zone()) > *written) {
    return told(tr("a newer answer of {} is known; this one was left out", withoutMailto(answering.address)));
  }
  entry->status = answering.status;
  if (const auto to = parameterOf(answering, "DELEGATED-TO")) { setParameter(*entry, "DELEGATED-TO", to); }
  if (written) { setParameter(*entry, kAnswered, momentText(*written)); }
  return {What::kDone, PutOutcome::kUnchanged, answerInWords(answering), {}, {}, 0, 0};
}

}  // namespace

Result<std::optional<MessageTaker::Place>> MessageTaker::find(const Item& given) {
  for (const Calendar& calendar : m_calendars) {
    if (!calendar.holds(given.kind)) { continue; }
    ORLOCAL_TRY(auto id, m_writer.find(calendar.id, given.kind, given.uid));
    if (!id && given.recurrenceId) { ORLOCAL_TRY(id, m_writer.findStray(calendar.id, given)); }
    if (!id) { continue; }
    ORLOCAL_TRY(auto whole, m_writer.read(*id));
    if (whole) { return Place{calendar.id, *std::move(whole)}; }
  }
  return std::nullopt;
}

Result<TakenMessage> MessageTaker::take(Method method, Item& given, std::vector<Item>& changed) {
  ORLOCAL_TRY(auto place, find(given));
  const Item* stored = place ? &place->whole.main : nullptr;
  if (place && given.recurrenceId) {
    ORLOCAL_TRY(const Item* occurrence, occurrenceIn(place->whole, *given.recurrenceId));
    if (occurrence != nullptr) { stored = occurrence; }
  }
  Beside beside = stored == nullptr ? Beside::kNotStored : besideStored(given, *stored);
  // Who answers or proposes tells of the version that it is about by its SEQUENCE; the stamp is of the message.
  const bool byAttendee = !isOrganizers(method) && !isNoMessage(method);
  if (byAttendee && beside == Beside::kOlder && given.sequence >= stored->sequence) { beside = Beside::kSame; }

  std::optional<std::string> title = given.title;
  std::optional<CalendarTime> start = given.recurrenceId ? given.recurrenceId : given.start;
  if (stored != nullptr) {
    title = stored->title;
    if (!given.recurrenceId) { start = stored->start; }
  }
  const auto taken = [&]() -> Result<TakenMessage> {
    if (stored != nullptr && isOrganizers(method)) {
      if (std::string why = notFromOrganizer(given, *stored); !why.empty()) { return refused(std::move(why)); }
    }
    switch (meaningOf(method, beside)) {
      case Meaning::kImport:
        return TakenMessage{};
      case Meaning::kReplace:
        return replace(*place, given, changed, given.sequence == stored->sequence);
      case Meaning::kKnown:
        return replace(*place, given, changed, true);
      case Meaning::kAnswer:
        return answer(*place, given);
      case Meaning::kAdd:
        return addOccurrences(*place, given);
      case Meaning::kCancel:
        return cancel(*place, given);
      case Meaning::kTellWish:
        return told(tr("{} asks for its newest version; export it and send it", whoSends(given)));
      case Meaning::kTellChange:
        return told(tr("{} proposes {}; nothing was changed: the organiser decides", whoSends(given),
                       proposalOf(given, *stored)));
      case Meaning::kTellNo:
        return told(tr("the organiser declines what was proposed; nothing was changed"));
      case Meaning::kStale:
        return told(tr("a newer version is known (SEQUENCE {} here, {} in this message); it was left out",
                       stored->sequence, given.sequence));
      case Meaning::kNotHere:
        break;
    }
    return refused(tr("it is about an item that the store does not have; import the invitation first"));
  }();
  ORLOCAL_CHECK(taken);
  TakenMessage made = *taken;
  made.title = std::move(title);
  made.start = start;
  if (place) {
    made.calendar = place->calendar;
    made.id = place->whole.main.id;
  }
  return made;
}

Result<TakenMessage> MessageTaker::put(Place& place, std::string words) {
  ORLOCAL_TRY(const PutOutcome outcome, m_writer.put(place.calendar, place.whole.main, place.whole.changed));
  return TakenMessage{What::kDone, outcome, std::move(words), {}, {}, 0, 0};
}

Result<TakenMessage> MessageTaker::replace(Place& place, Item& given, std::vector<Item>& changed, bool answersStay) {
  if (given.recurrenceId) {
    ORLOCAL_TRY(Item* const occurrence, occurrenceIn(place.whole, *given.recurrenceId));
    if (occurrence == nullptr) {
      place.whole.changed.push_back(given);
      return put(place);
    }
    if (answersStay) { keepAnswers(given, *occurrence); }
    *occurrence = given;
    return put(place);
  }
  if (answersStay) {
    keepAnswers(given, place.whole.main);
    for (Item& each : changed) {
      ORLOCAL_TRY(Item* const known, occurrenceIn(place.whole, *each.recurrenceId));
      if (known != nullptr) { keepAnswers(each, *known); }
    }
  }
  ORLOCAL_TRY(const PutOutcome outcome, m_writer.put(place.calendar, given, changed));
  return TakenMessage{What::kDone, outcome, {}, {}, {}, 0, 0};
}

Result<TakenMessage> MessageTaker::answer(Place& place, const Item& given) {
  const Attendee* answering = answeringOf(given);
  if (answering == nullptr) { return refused(tr("an answer speaks for one attendee; this one was left out")); }
  Item* item = &place.whole.main;
  if (given.recurrenceId) { ORLOCAL_TRY(item, occurrenceIn(place.whole, *given.recurrenceId)); }
  if (item == nullptr) { return refused(noOccurrence(given)); }
  TakenMessage made = setAnswer(*item, *answering, given);
  if (made.what != What::kDone) { return made; }
  return put(place, std::move(made.words));
}

Result<TakenMessage> MessageTaker::cancel(Place& place, const Item& given) {
  const std::string words = tr("the organiser has cancelled it");
  if (given.recurrenceId) {
    ORLOCAL_TRY(Item* const occurrence, occurrenceIn(place.whole, *given.recurrenceId));
    if (occurrence == nullptr) { return told(noOccurrence(given)); }
    setCancelled(*occurrence, given);
    return put(place, words);
  }
  setCancelled(place.whole.main, given);
  for (Item& changed : place.whole.changed) { setCancelled(changed, given); }
  return put(place, words);
}

Result<TakenMessage> MessageTaker::addOccurrences(Place& place, const Item& given) {
  Item& main = place.whole.main;
  if (main.recurrenceId || !main.start || !given.start) {
    return refused(
        tr("its series is not in the store, so that nothing can be added to it; import the invitation first"));
  }
  if (given.start->kind != main.start->kind || !given.recurrence.rules.empty()) {
    return refused(
        tr("what it adds comes by other rules or on another clock than the series; ask for a whole invitation"));
  }
  std::vector<CalendarTime> starts{*given.start};
  starts.insert(starts.end(), given.recurrence.added.begin(), given.recurrence.added.end());
  for (const CalendarTime& start : starts) {
    Item added = given;
    added.recurrence = {};
    added.recurrenceId = start;
    const auto moved = start.local - given.start->local;
    added.start->local += moved;
    if (added.endOrDue()) { added.endOrDue()->local += moved; }
    ORLOCAL_TRY(Item* const known, occurrenceIn(place.whole, start));
    if (known != nullptr) {
      keepAnswers(added, *known);
      *known = std::move(added);
    } else {
      main.recurrence.added.push_back(start);
      place.whole.changed.push_back(std::move(added));
    }
  }
  takeRevision(main, given);
  return put(place);
}

}  // namespace orlocal::store
