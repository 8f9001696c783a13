#include "accounts/sync/calendar_list.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include <fmt/format.h>

#include "accounts/transport/url.h"
#include "base/translation.h"
#include "base/try.h"
#include "store/edits/item_writer.h"
#include "store/icalendar/calendar_color.h"
#include "store/remote_reader.h"

namespace orlocal::accounts {
namespace {

using store::Calendar;
using store::CalendarKind;
using store::Mirror;

CalendarKind kindOf(const RemoteCalendar& remote) {
  if (remote.events && remote.reminders) { return CalendarKind::kBoth; }
  return remote.reminders ? CalendarKind::kReminders : CalendarKind::kEvents;
}

/// A calendar without a name is called as its address ends.
std::string titleOf(const RemoteCalendar& remote) {
  if (!remote.displayName.empty()) { return remote.displayName; }
  const std::string path = comparablePath(remote.url);
  const std::string name = path.substr(path.find_last_of('/') + 1);
  return name.empty() ? "Calendar" : name;
}

/// Where a calendar that is made here is made there: the last part of its address, which nobody else has.
std::string nameFor(const Calendar& calendar) {
  std::string name = calendar.identifier;
  std::transform(name.begin(), name.end(), name.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return name;
}

AgreedCalendar describedBy(const RemoteCalendar& remote) {
  return {titleOf(remote), remote.color, remote.order.value_or(0)};
}

/// Colours go over the wire in bytes.
bool sameColor(const std::optional<store::Rgb>& one, const std::optional<store::Rgb>& other) {
  return one.has_value() == other.has_value() && (!one || one->bytes() == other->bytes());
}

/// Where each calendar has a token nobody looks at its ctag.
Answer<Marks> marksFor(const std::vector<Mirror>& mirrors) {
  if (mirrors.empty()) { return Marks::kAll; }
  for (const Mirror& mirror : mirrors) {
    ORLOCAL_STORE_TRY(const auto state, MirrorState::ofText(mirror.state));
    if (state.token.empty()) { return Marks::kAll; }
  }
  return Marks::kTokens;
}

bool ofTheCalendar(Trouble trouble) {
  return trouble == Trouble::kForbidden || trouble == Trouble::kNotFound || trouble == Trouble::kClash ||
         trouble == Trouble::kRefused || trouble == Trouble::kUnsupported || trouble == Trouble::kPrecondition ||
         trouble == Trouble::kLocked || trouble == Trouble::kTooLarge;
}

}  // namespace

Answer<void> CalendarList::pass(const std::string& title, Answer<void> outcome) {
  if (outcome || !ofTheCalendar(outcome.error().trouble)) { return outcome; }
  m_context.report.troubles.push_back({title, "", outcome.error().message});
  return {};
}

Answer<std::vector<MirroredCalendar>> CalendarList::run() {
  ORLOCAL_STORE_TRY(auto mirrors, store::RemoteReader(m_context.store).mirrors(m_context.source));
  ORLOCAL_TRY(const Marks marks, marksFor(mirrors));
  std::map<std::string, RemoteCalendar> remotes;
  for (const std::string& home : m_context.account.homes) {
    auto found = m_context.server.calendars(home, marks);
    if (!found && home == m_context.account.homes.front()) { return Refusal(std::move(found.error())); }
    if (!found) {
      // What others share may be theirs alone again; their calendars are asked for by themselves.
      ORLOCAL_CHECK(pass(shownUrl(home), Refusal(std::move(found.error()))));
      continue;
    }
    for (RemoteCalendar& calendar : *found) { remotes.emplace(comparablePath(calendar.url), std::move(calendar)); }
  }
  std::map<store::CalendarId, Calendar> here;
  for (const CalendarKind kind : {CalendarKind::kEvents, CalendarKind::kReminders}) {
    ORLOCAL_STORE_TRY(const auto calendars, m_context.store.calendars(kind));
    for (const Calendar& calendar : calendars) {
      if (calendar.source == m_context.source) { here.emplace(calendar.id, calendar); }
    }
  }
  std::vector<MirroredCalendar> both;
  for (Mirror& mirror : mirrors) {
    const auto calendar = here.find(mirror.calendar);
    const auto remote = remotes.find(comparablePath(mirror.url));
    if (calendar == here.end()) {
      if (remote != remotes.end()) { remotes.erase(remote); }
      ORLOCAL_CHECK(pass(mirror.url, removeThere(mirror)));
    } else if (remote == remotes.end()) {
      ORLOCAL_CHECK(pass(calendar->second.title, lookAfter(mirror, calendar->second, both)));
    } else {
      ORLOCAL_CHECK(pass(calendar->second.title, agree(mirror, remote->second, calendar->second)));
      both.push_back({mirror, remote->second});
      remotes.erase(remote);
    }
    here.erase(mirror.calendar);
  }
  for (auto& [key, remote] : remotes) {
    ORLOCAL_TRY(Mirror mirror, makeHere(remote));
    both.push_back({std::move(mirror), std::move(remote)});
  }
  for (const auto& [id, calendar] : here) {
    if (m_context.account.homes.empty()) { break; }
    // Written down first: a list that has it already, after an answer was lost, then finds whose it is.
    ORLOCAL_TRY(Mirror mirror, intend(calendar));
    ORLOCAL_CHECK(pass(calendar.title, makeThere(std::move(mirror), calendar, both)));
  }
  return both;
}

Answer<void> CalendarList::agree(Mirror& mirror, const RemoteCalendar& remote, const Calendar& here) {
  ORLOCAL_STORE_TRY(MirrorState state, MirrorState::ofText(mirror.state));
  AgreedCalendar there = describedBy(remote);
  // A server that has no title for it, or could not keep the one that it was given, takes none away.
  if (remote.displayName.empty() || remote.displayName == nameFor(here)) { there.title = state.agreed.title; }
  AgreedCalendar wanted = agreedOn(here);
  // What it was made as was perhaps not all taken, and nobody has changed it since.
  if (state.unmade) { state.agreed = there; }
  if (there.title != state.agreed.title) { wanted.title = there.title; }
  if (!sameColor(there.color, state.agreed.color)) { wanted.color = there.color; }
  if (there.order != state.agreed.order) { wanted.order = there.order; }

  const auto send = [&](CalendarProperty property, bool differs, const std::string& value) {
    return differs ? m_context.server.setProperty(mirror.url, property, value) : Answer<void>();
  };
  Answer<void> sent;
  for (const auto& [property, differs, value] :
       {std::tuple(CalendarProperty::kDisplayName, wanted.title != there.title, wanted.title),
        std::tuple(CalendarProperty::kColor, wanted.color && !sameColor(wanted.color, there.color),
                   wanted.color ? store::colorText(*wanted.color) + "FF" : std::string()),
        std::tuple(CalendarProperty::kOrder, wanted.order != there.order, fmt::format("{}", wanted.order))}) {
    if (auto outcome = send(property, differs, value); !outcome) { sent = std::move(outcome); }
  }
  state.agreed = wanted;
  state.unmade = false;
  state.writable = remote.writable.value_or(state.writable);
  state.rightsKnown = remote.writable.has_value();
  Calendar changed = here;
  changed.title = wanted.title;
  changed.color = wanted.color;
  changed.order = wanted.order;
  changed.kind = kindOf(remote);
  changed.readOnly = !state.writable;
  const std::string text = state.text();
  if (changed == here && text == mirror.state && mirror.url == remote.url) { return sent; }
  ORLOCAL_STORE_TRY(const auto writer, m_context.startWriting());
  mirror.state = text;
  mirror.url = remote.url;
  ORLOCAL_STORE_CHECK(writer->remotes().put(mirror));
  if (!(changed == here)) {
    ORLOCAL_STORE_CHECK(writer->updateCalendar(changed));
    ++m_context.report.calendars;
  }
  ORLOCAL_STORE_CHECK(writer->commit());
  return sent;
}

Answer<Mirror> CalendarList::makeHere(const RemoteCalendar& remote) {
  MirrorState state;
  state.agreed = describedBy(remote);
  state.writable = remote.writable.value_or(true);
  state.rightsKnown = remote.writable.has_value();
  Calendar calendar;
  calendar.source = m_context.source;
  calendar.kind = kindOf(remote);
  calendar.title = state.agreed.title;
  calendar.color = state.agreed.color;
  calendar.order = state.agreed.order;
  calendar.readOnly = !state.writable;
  ORLOCAL_STORE_TRY(const auto writer, m_context.startWriting());
  ORLOCAL_STORE_CHECK(writer->makeCalendar(calendar));
  Mirror mirror{0, m_context.source, calendar.id, remote.url, state.text()};
  ORLOCAL_STORE_CHECK(writer->remotes().put(mirror));
  ORLOCAL_STORE_CHECK(writer->commit());
  ++m_context.report.calendars;
  return mirror;
}

Answer<Mirror> CalendarList::intend(const Calendar& calendar) {
  const std::string& home = m_context.account.homes.front();
  MirrorState state;
  state.agreed = agreedOn(calendar);
  state.unmade = true;
  Mirror mirror{0, m_context.source, calendar.id, home + (home.ends_with('/') ? "" : "/") + nameFor(calendar) + "/",
                state.text()};
  // What is in it by now was noted for no server.
  std::vector<store::ItemId> items;
  ORLOCAL_STORE_CHECK(
      m_context.store.forEachItem(calendar.id, [&](const store::Item& main, const std::vector<store::Item>&) {
        items.push_back(main.id);
        return Status();
      }));
  ORLOCAL_STORE_TRY(const auto writer, m_context.startWriting());
  ORLOCAL_STORE_CHECK(writer->remotes().put(mirror));
  for (const store::ItemId item : items) { ORLOCAL_STORE_CHECK(writer->remotes().noteUnsent(item)); }
  ORLOCAL_STORE_CHECK(writer->commit());
  return mirror;
}

Answer<void> CalendarList::makeThere(Mirror mirror, const Calendar& calendar, std::vector<MirroredCalendar>& both) {
  const NewCalendar wanted{calendar.title, calendar.holds(CalendarKind::kEvents),
                           calendar.holds(CalendarKind::kReminders), calendar.color};
  auto made = m_context.server.makeCalendar(mirror.url, wanted);
  // Nobody else has that name: some servers refuse what they have done, or an earlier try has come through.
  if (!made && made.error().trouble == Trouble::kClash) { made = m_context.server.calendar(mirror.url); }
  if (!made) { return Refusal(std::move(made.error())); }
  ++m_context.report.calendars;
  // From here on what the server makes of it stands.
  ORLOCAL_STORE_TRY(MirrorState state, MirrorState::ofText(mirror.state));
  state.unmade = false;
  state.agreed = agreedOn(calendar);
  mirror.state = state.text();
  ORLOCAL_CHECK(agree(mirror, *made, calendar));
  both.push_back({std::move(mirror), *std::move(made)});
  return {};
}

Answer<void> CalendarList::removeThere(const Mirror& mirror) {
  auto removed = m_context.server.removeCalendar(mirror.url);
  if (!removed && !ofTheCalendar(removed.error().trouble)) { return removed; }
  // Where it may not be removed it comes back with the next list.
  ORLOCAL_STORE_TRY(const auto writer, m_context.startWriting());
  ORLOCAL_STORE_CHECK(writer->remotes().removeMirror(mirror.id));
  ORLOCAL_STORE_CHECK(writer->commit());
  if (!removed && removed.error().trouble != Trouble::kNotFound) { return removed; }
  if (removed) { ++m_context.report.calendars; }
  return {};
}

Answer<void> CalendarList::lookAfter(const Mirror& mirror, const Calendar& here, std::vector<MirroredCalendar>& both) {
  ORLOCAL_STORE_TRY(const MirrorState state, MirrorState::ofText(mirror.state));
  if (state.unmade) { return makeThere(mirror, here, both); }
  auto found = m_context.server.calendar(mirror.url);
  if (found) {
    both.push_back({mirror, *std::move(found)});
    return {};
  }
  if (found.error().trouble != Trouble::kNotFound) { return Refusal(std::move(found.error())); }
  return removeHere(mirror);
}

Answer<void> CalendarList::removeHere(const Mirror& mirror) {
  ORLOCAL_STORE_TRY(const auto writer, m_context.startWriting());
  ORLOCAL_STORE_TRY(const auto unsent, writer->remotes().unsent());
  bool holdsUnsent = false;
  for (const store::ItemId item : unsent) {
    ORLOCAL_STORE_TRY(const auto whole, writer->read(item));
    holdsUnsent = holdsUnsent || (whole && whole->main.calendar == mirror.calendar);
  }
  ORLOCAL_STORE_CHECK(writer->remotes().removeMirror(mirror.id));
  if (holdsUnsent) {
    // What was changed here and is in no other place stays, in a calendar of this machine.
    ORLOCAL_STORE_TRY(auto calendar, writer->calendarWith(mirror.calendar));
    ORLOCAL_STORE_TRY(const auto local, writer->localSource());
    if (calendar && local) {
      calendar->source = local->id;
      ORLOCAL_STORE_CHECK(writer->updateCalendar(*calendar));
      m_context.report.troubles.push_back(
          {calendar->title, "",
           tr("it was removed on the server; as it holds changes that the server never got, it stays here "
              "as a calendar of this machine")});
    }
  } else {
    ORLOCAL_STORE_CHECK(writer->removeCalendar(mirror.calendar));
  }
  ORLOCAL_STORE_CHECK(writer->commit());
  ++m_context.report.calendars;
  return {};
}

}  // namespace orlocal::accounts
