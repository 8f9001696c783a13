#include "host/commands/availability/taken_time.h"

#include <cstdlib>
#include <optional>
#include <string>

#include <gmock/gmock.h>

namespace orlocal::host {
namespace {

using store::Attendee;
using store::BusyKind;
using Status = store::Attendee::Status;

constexpr std::optional<BusyKind> kNothing = std::nullopt;

store::Item eventWith(const std::string& extra) {
  store::Item item;
  item.start = store::CalendarTime{store::CalendarTime::Kind::kUtc, store::LocalTime(2026, 11, 2, 9), ""};
  item.extra = extra;
  return item;
}

TEST(EventsTakeTime, AsTheirFilesSay) {
  struct Case {
    const char* lines;
    std::optional<BusyKind> kind;
  };
  const Case cases[] = {
      {"", BusyKind::kBusy},
      {"TRANSP:OPAQUE\n", BusyKind::kBusy},
      {"TRANSP:TRANSPARENT\n", kNothing},
      {"transp:transparent\n", kNothing},
      {"TRANSP;X-WHY=a:TRANSPARENT\n", kNothing},
      {"STATUS:CANCELLED\n", kNothing},
      {"STATUS:CONFIRMED\n", BusyKind::kBusy},
      {"STATUS:TENTATIVE\n", BusyKind::kTentative},
      {"X-MICROSOFT-CDO-BUSYSTATUS:FREE\n", kNothing},
      {"X-MICROSOFT-CDO-BUSYSTATUS:OOF\n", BusyKind::kUnavailable},
      {"STATUS:TENTATIVE\nTRANSP:TRANSPARENT\n", kNothing},
      {"COMMENT:TRANSP:TRANSPARENT\n", BusyKind::kBusy},
      // What stands in a component within is not said of the event.
      {"BEGIN:X-PART\nTRANSP:TRANSPARENT\nEND:X-PART\n", BusyKind::kBusy},
  };
  for (const Case& each : cases) { EXPECT_EQ(takenBy(eventWith(each.lines), {}), each.kind) << each.lines; }
}

TEST(EventsTakeTime, AsTheirOwnerAnswered) {
  struct Case {
    Status answer;
    std::optional<BusyKind> kind;
  };
  const TimeOwner grace{{"grace@example.org"}, false};
  for (const auto& [answer, kind] :
       {Case{Status::kAccepted, BusyKind::kBusy}, Case{Status::kDeclined, kNothing},
        Case{Status::kTentative, BusyKind::kTentative}, Case{Status::kPending, BusyKind::kTentative},
        Case{Status::kUnknown, BusyKind::kTentative}, Case{Status::kDelegated, kNothing}}) {
    store::Item event = eventWith("");
    Attendee boss, invited;
    boss.address = "mailto:boss@example.org";
    boss.status = Status::kAccepted;
    boss.organizer = true;
    invited.address = "MAILTO:Grace@Example.org";
    invited.status = answer;
    event.attendees = {boss, invited};
    EXPECT_EQ(takenBy(event, grace), kind) << static_cast<int>(answer);
    // Whoever is not known by an address has answered nothing.
    EXPECT_EQ(takenBy(event, {}), BusyKind::kBusy);
    EXPECT_EQ(takenBy(event, {{"ada@example.org"}, false}), BusyKind::kBusy);
  }
}

TEST(EventsTakeTime, OfWholeDaysUnlessThoseAreIgnored) {
  store::Item day = eventWith("");
  day.start->kind = store::CalendarTime::Kind::kDate;
  EXPECT_EQ(takenBy(day, {}), BusyKind::kBusy);
  EXPECT_EQ(takenBy(day, {{}, true}), kNothing);
  EXPECT_EQ(takenBy(eventWith(""), {{}, true}), BusyKind::kBusy);
}

}  // namespace
}  // namespace orlocal::host
