#include "store/icalendar/free_busy_writer.h"

#include <gmock/gmock.h>

#include "store/icalendar/calendar_layout.h"
#include "store/icalendar/icalendar_writer.h"

namespace orlocal::store {
namespace {

Moment atHour(int hour) { return Moment(std::chrono::hours(24 * 20'759 + hour)); }  // of 2026-11-02

TEST(FreeBusyText, HasAPeriodForEachTimeInItsOrder) {
  std::string text;
  writeFreeBusy(text, {"u1",
                       atHour(8),
                       atHour(0),
                       atHour(24),
                       "mailto:ada@example.org",
                       {{atHour(9), atHour(10), BusyKind::kBusy},
                        {atHour(11), atHour(12), BusyKind::kBusy},
                        {atHour(12), atHour(13), BusyKind::kTentative},
                        {atHour(14), atHour(15), BusyKind::kUnavailable},
                        {atHour(16), atHour(17), BusyKind::kBusy}}});
  EXPECT_EQ(text,
            "BEGIN:VFREEBUSY\r\n"
            "UID:u1\r\n"
            "DTSTAMP:20261102T080000Z\r\n"
            "ORGANIZER:mailto:ada@example.org\r\n"
            "DTSTART:20261102T000000Z\r\n"
            "DTEND:20261103T000000Z\r\n"
            "FREEBUSY;FBTYPE=BUSY:20261102T090000Z/20261102T100000Z,20261102T110000Z/202\r\n"
            " 61102T120000Z\r\n"
            "FREEBUSY;FBTYPE=BUSY-TENTATIVE:20261102T120000Z/20261102T130000Z\r\n"
            "FREEBUSY;FBTYPE=BUSY-UNAVAILABLE:20261102T140000Z/20261102T150000Z\r\n"
            "FREEBUSY;FBTYPE=BUSY:20261102T160000Z/20261102T170000Z\r\n"
            "END:VFREEBUSY\r\n");
}

TEST(FreeBusyText, NamesNobodyWhereNobodyIsKnown) {
  std::string text;
  writeFreeBusy(text, {"u1", atHour(8), atHour(0), atHour(24), std::nullopt, {}});
  EXPECT_EQ(text,
            "BEGIN:VFREEBUSY\r\nUID:u1\r\nDTSTAMP:20261102T080000Z\r\nDTSTART:20261102T000000Z\r\n"
            "DTEND:20261103T000000Z\r\nEND:VFREEBUSY\r\n");
}

TEST(FreeBusyText, StaysWithinItsLinesWhateverItIsGiven) {
  std::string text;
  writePlainHead(text);
  writeFreeBusy(text, {"u\r\n1", atHour(8), atHour(0), atHour(24), "mailto:a\r\nBEGIN:VEVENT", {}});
  writeCalendarEnd(text);
  const CalendarLayout layout = layoutOf(text);
  EXPECT_TRUE(layout.items.empty());
  ASSERT_EQ(layout.problems.warnings.size(), 1U);
  EXPECT_THAT(layout.problems.warnings[0].message, testing::HasSubstr("VFREEBUSY"));
}

}  // namespace
}  // namespace orlocal::store
