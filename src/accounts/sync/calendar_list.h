#pragma once

#include <string>
#include <vector>

#include "accounts/sync/sync_context.h"

namespace orlocal::accounts {

/// A calendar that both sides have.
struct MirroredCalendar {
  store::Mirror mirror;
  RemoteCalendar remote;
};

/// Brings the calendars themselves to agreement: which there are, and their titles, colours, order and rights. Of two
/// changes of one property the server's stands.
class CalendarList {
 public:
  explicit CalendarList(SyncContext& context) : m_context(context) {}

  /// The calendars that both sides have afterwards.
  Answer<std::vector<MirroredCalendar>> run();

 private:
  Answer<void> agree(store::Mirror& mirror, const RemoteCalendar& remote, const store::Calendar& here);
  Answer<store::Mirror> makeHere(const RemoteCalendar& remote);
  /// Writes down where the server is to make it.
  Answer<store::Mirror> intend(const store::Calendar& calendar);
  /// A failure leaves open whether the server has it; the next sync finds out.
  Answer<void> makeThere(store::Mirror mirror, const store::Calendar& calendar, std::vector<MirroredCalendar>& both);
  Answer<void> removeThere(const store::Mirror& mirror);
  /// The server's list lacks it: it is asked by itself, or made when it never was there.
  Answer<void> lookAfter(const store::Mirror& mirror, const store::Calendar& here, std::vector<MirroredCalendar>& both);
  Answer<void> removeHere(const store::Mirror& mirror);
  /// What cannot be done to a calendar, and is no reason not to go on.
  Answer<void> pass(const std::string& title, Answer<void> outcome);

  SyncContext& m_context;
};

}  // namespace orlocal::accounts
