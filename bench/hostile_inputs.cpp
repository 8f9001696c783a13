#include "hostile_inputs.h"

#include <array>
#include <functional>
#include <string_view>

#include <fmt/format.h>

namespace orlocal::bench {
namespace {

using Piece = std::function<std::string(std::size_t)>;

/// `head`, then pieces until there are `bytes`, then `tail`.
std::string filled(std::size_t bytes, std::string head, const Piece& piece, std::string_view tail) {
  for (std::size_t i = 0; head.size() + tail.size() < bytes; ++i) { head += piece(i); }
  return head.append(tail);
}

constexpr std::string_view kHead = "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//H//H//EN\r\n";
constexpr std::string_view kTail = "END:VCALENDAR\r\n";

std::string calendarOf(std::size_t bytes, const Piece& piece) {
  return filled(bytes, std::string(kHead), piece, kTail);
}

/// Many events, each with these further lines.
std::string eventsWith(std::size_t bytes, const Piece& lines) {
  return calendarOf(bytes, [&](std::size_t i) {
    return fmt::format("BEGIN:VEVENT\r\nUID:e{}\r\nDTSTART:20261101T{:02}0000\r\n{}\r\nEND:VEVENT\r\n", i, i % 24,
                       lines(i));
  });
}

std::string eventsRepeating(std::size_t bytes, std::string_view rule) {
  return eventsWith(bytes, [&](std::size_t) { return fmt::format("RRULE:{}", rule); });
}

/// One event that such pieces fill.
std::string oneEvent(std::size_t bytes, std::string_view begin, const Piece& piece, std::string_view end = "\r\n") {
  return filled(bytes, fmt::format("{}BEGIN:VEVENT\r\nUID:one\r\nDTSTART:20261101T090000\r\n{}", kHead, begin), piece,
                fmt::format("{}END:VEVENT\r\n{}", end, kTail));
}

std::string dateAt(std::size_t i) {
  return fmt::format("{:04}{:02}{:02}T{:02}{:02}{:02}", 2000 + i / 1'000'000 % 900, 1 + i / 80'000 % 12,
                     1 + i / 3'000 % 28, i / 150 % 20, i / 3 % 50, i % 3);
}

std::string zoneNamed(std::size_t i, std::string_view further = "") {
  return fmt::format(
      "BEGIN:VTIMEZONE\r\nTZID:Z{0}\r\nBEGIN:STANDARD\r\nDTSTART:19700101T000000\r\nTZOFFSETFROM:+0100\r\n"
      "TZOFFSETTO:+{1:02}{2:02}\r\nRRULE:FREQ=YEARLY;BYMONTH={3};BYDAY=1SU\r\n{4}END:STANDARD\r\nEND:VTIMEZONE\r\n",
      i, i % 12, i % 59, 1 + i % 12, further);
}

std::string manyZones(std::size_t bytes) {
  return calendarOf(bytes, [](std::size_t i) {
    return zoneNamed(i) +
           fmt::format("BEGIN:VEVENT\r\nUID:e{0}\r\nDTSTART;TZID=Z{0}:20261101T090000\r\nEND:VEVENT\r\n", i);
  });
}

std::string busyZones(std::size_t bytes) {
  return calendarOf(bytes, [](std::size_t i) {
    return zoneNamed(i, "RRULE:FREQ=DAILY\r\n") +
           fmt::format("BEGIN:VEVENT\r\nUID:e{0}\r\nDTSTART;TZID=Z{0}:20261101T090000\r\nEND:VEVENT\r\n", i);
  });
}

std::string unknownZones(std::size_t bytes) {
  return calendarOf(bytes, [](std::size_t i) {
    return fmt::format(
        "BEGIN:VEVENT\r\nUID:e{0}\r\nDTSTART;TZID=/a/b/c/d/e/f/g/h/Nowhere{0},A{0},B{0}:20261101T090000"
        "\r\nEND:VEVENT\r\n",
        i);
  });
}

std::string manyCalendars(std::size_t bytes) {
  return filled(
      bytes, "",
      [](std::size_t i) {
        return fmt::format(
            "BEGIN:VCALENDAR\r\nX-WR-CALNAME:C{0}\r\nBEGIN:VEVENT\r\nUID:e{0}\r\nDTSTART:20261101"
            "\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n",
            i);
      },
      "");
}

std::string calendarsWithZones(std::size_t bytes) {
  return filled(
      bytes, "",
      [](std::size_t i) {
        return fmt::format(
            "BEGIN:VCALENDAR\r\nX-WR-CALNAME:C{0}\r\nBEGIN:VEVENT\r\nUID:e{0}\r\nDTSTART;"
            "TZID=Europe/Berlin:19000101T090000\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n",
            i);
      },
      "");
}

std::string calendarsOfOneLongZone(std::size_t bytes) {
  std::string zone =
      "BEGIN:VCALENDAR\r\nBEGIN:VTIMEZONE\r\nTZID:Z\r\nBEGIN:STANDARD\r\nDTSTART:19700101T000000\r\n"
      "TZOFFSETFROM:+0100\r\nTZOFFSETTO:+0017\r\nEND:STANDARD\r\n";
  while (zone.size() < bytes / 2) { zone += "X-NOTE:nothing\r\n"; }
  return filled(
      bytes, zone + "END:VTIMEZONE\r\nEND:VCALENDAR\r\n",
      [](std::size_t i) {
        return fmt::format(
            "BEGIN:VCALENDAR\r\nX-WR-CALNAME:C{0}\r\nBEGIN:VEVENT\r\nUID:e{0}\r\nDTSTART;TZID=Z:"
            "20261101T090000\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n",
            i);
      },
      "");
}

std::string longCalendarName(std::size_t bytes) {
  return filled(
      bytes, std::string(kHead) + "X-WR-CALNAME:" + std::string(bytes / 2, 'n') + "\r\n",
      [](std::size_t i) { return fmt::format("BEGIN:VEVENT\r\nUID:e{}\r\nDTSTART:20261101\r\nEND:VEVENT\r\n", i); },
      kTail);
}

/// Outside of a VCALENDAR, where nothing else closes what is open.
std::string openComponents(std::size_t bytes) {
  return filled(
      bytes, "", [](std::size_t) { return std::string("BEGIN:X\r\n"); }, "");
}

std::string openComponentsOfManyNames(std::size_t bytes) {
  std::string text = filled(
      bytes / 2, "", [](std::size_t i) { return fmt::format("BEGIN:X{}\r\n", i); }, "");
  return filled(
      bytes, text, [](std::size_t) { return std::string("END:Y\r\n"); }, "");
}

std::string componentsInEvent(std::size_t bytes) {
  return oneEvent(
      bytes, "", [](std::size_t) { return std::string("BEGIN:X\r\nEND:X\r\n"); }, "");
}

std::string carriageReturnsOnly(std::size_t bytes) {
  std::string text = eventsWith(bytes, [](std::size_t i) { return fmt::format("SUMMARY:{}", i); });
  std::erase(text, '\n');
  return text;
}

std::string emptyLines(std::size_t bytes) {
  return filled(
      bytes, std::string(kHead), [](std::size_t) { return std::string("\n"); }, kTail);
}

std::string foldedLines(std::size_t bytes) {
  return oneEvent(bytes, "SUMMARY:", [](std::size_t) { return std::string("a\r\n "); });
}

std::string longLine(std::size_t bytes) {
  return oneEvent(bytes, "DESCRIPTION:", [](std::size_t) { return std::string("word\\, "); });
}

std::string brokenLines(std::size_t bytes) {
  return oneEvent(
      bytes, "", [](std::size_t) { return std::string("?\r\n"); }, "");
}

std::string brokenLinesUnderLongUid(std::size_t bytes) {
  return filled(
      bytes, fmt::format("{}BEGIN:VEVENT\r\nUID:{}\r\nDTSTART:20261101T090000\r\n", kHead, std::string(bytes / 2, 'u')),
      [](std::size_t) { return std::string("RDATE:x\r\n"); }, "END:VEVENT\r\nEND:VCALENDAR\r\n");
}

std::string emptyEvents(std::size_t bytes) {
  return calendarOf(bytes, [](std::size_t) { return std::string("BEGIN:VEVENT\r\nEND:VEVENT\r\n"); });
}

std::string smallEvents(std::size_t bytes) {
  return eventsWith(bytes, [](std::size_t i) { return fmt::format("SUMMARY:{}", i); });
}

std::string sameUid(std::size_t bytes) {
  return calendarOf(bytes, [](std::size_t) {
    return std::string("BEGIN:VEVENT\r\nUID:same\r\nDTSTART:20261101T090000\r\nEND:VEVENT\r\n");
  });
}

std::string changedOccurrences(std::size_t bytes) {
  return calendarOf(bytes, [](std::size_t i) {
    if (i == 0) {
      return std::string("BEGIN:VEVENT\r\nUID:s\r\nDTSTART:20000101T000000\r\nRRULE:FREQ=DAILY\r\nEND:VEVENT\r\n");
    }
    return fmt::format("BEGIN:VEVENT\r\nUID:s\r\nRECURRENCE-ID:{0}\r\nDTSTART:{0}\r\nEND:VEVENT\r\n", dateAt(i * 977));
  });
}

std::string strayOccurrences(std::size_t bytes) {
  return calendarOf(bytes, [](std::size_t i) {
    return fmt::format("BEGIN:VEVENT\r\nUID:s\r\nRECURRENCE-ID:{0}\r\nDTSTART:{0}\r\nEND:VEVENT\r\n", dateAt(i * 977));
  });
}

std::string laterChanges(std::size_t bytes) {
  return calendarOf(bytes, [](std::size_t i) {
    if (i == 0) {
      return std::string("BEGIN:VEVENT\r\nUID:s\r\nDTSTART:20000101T000000\r\nRRULE:FREQ=HOURLY\r\nEND:VEVENT\r\n");
    }
    return fmt::format(
        "BEGIN:VEVENT\r\nUID:s\r\nRECURRENCE-ID;RANGE=THISANDFUTURE:{0}\r\nDTSTART:{0}\r\nEND:VEVENT\r\n",
        fmt::format("20{:02}{:02}{:02}T{:02}0000", i / 8064 % 99, 1 + i / 672 % 12, 1 + i / 24 % 28, i % 24));
  });
}

std::string addedDates(std::size_t bytes) {
  return oneEvent(bytes, "RDATE:20261101T090000", [](std::size_t i) { return "," + dateAt(i); });
}

std::string excludedDates(std::size_t bytes) {
  return oneEvent(bytes, "RRULE:FREQ=DAILY\r\nEXDATE:20261101T090000", [](std::size_t i) { return "," + dateAt(i); });
}

std::string datesUnderParameters(std::size_t bytes) {
  std::string parameters;
  while (parameters.size() < bytes / 2) { parameters += ";A=B"; }
  return oneEvent(bytes, "RDATE" + parameters + ":20261101T090000", [](std::size_t i) { return "," + dateAt(i); });
}

std::string periodsOfLongEvent(std::size_t bytes) {
  return oneEvent(bytes, "DESCRIPTION:" + std::string(bytes / 2, 'd') + "\r\nRDATE;VALUE=PERIOD:20261101T090000/PT2H",
                  [](std::size_t i) { return fmt::format(",{}/PT{}S", dateAt(i), 1 + i % 999); });
}

std::string attendees(std::size_t bytes) {
  return oneEvent(
      bytes, "", [](std::size_t i) { return fmt::format("ATTENDEE;CN=P{0}:mailto:p{0}@example.org\r\n", i); }, "");
}

std::string attendeeOfManyNames(std::size_t bytes) {
  std::string parameters;
  while (parameters.size() < bytes / 2) { parameters += ";A=B"; }
  return oneEvent(
      bytes, "ATTENDEE" + parameters, [](std::size_t) { return std::string(";CN=x"); }, ":mailto:a@b.c\r\n");
}

std::string alarms(std::size_t bytes) {
  return oneEvent(
      bytes, "",
      [](std::size_t i) {
        return fmt::format("BEGIN:VALARM\r\nACTION:DISPLAY\r\nTRIGGER:-PT{}M\r\nEND:VALARM\r\n", i % 999);
      },
      "");
}

std::string openQuotes(std::size_t bytes) {
  return oneEvent(
      bytes, "", [](std::size_t) { return std::string("X-A;B=\"c;D=e:f\r\n"); }, "");
}

std::string longWeekList(std::size_t bytes) {
  return oneEvent(bytes, "RRULE:FREQ=YEARLY;BYWEEKNO=53", [](std::size_t) { return std::string(",53"); });
}

std::string longDayList(std::size_t bytes) {
  return oneEvent(bytes, "RRULE:FREQ=YEARLY;BYDAY=1MO",
                  [](std::size_t i) { return fmt::format(",{}{}", 1 + i % 53, i % 2 == 0 ? "TU" : "WE"); });
}

std::string longPositionList(std::size_t bytes) {
  return oneEvent(bytes, "RRULE:FREQ=YEARLY;BYDAY=MO,TU,WE;BYSETPOS=1",
                  [](std::size_t i) { return fmt::format(",{}", 1 + i % 366); });
}

std::string manyRulesInOne(std::size_t bytes) {
  return oneEvent(
      bytes, "", [](std::size_t i) { return fmt::format("RRULE:FREQ=YEARLY;INTERVAL={}\r\n", 1 + i); }, "");
}

std::string manyExceptionRules(std::size_t bytes) {
  return oneEvent(
      bytes, "RRULE:FREQ=HOURLY\r\n",
      [](std::size_t i) { return fmt::format("EXRULE:FREQ=YEARLY;INTERVAL={}\r\n", 1 + i); }, "");
}

std::string never(std::size_t bytes) { return eventsRepeating(bytes, "FREQ=DAILY;BYMONTH=2;BYMONTHDAY=30;COUNT=5"); }
std::string neverByHour(std::size_t bytes) {
  return eventsRepeating(bytes, "FREQ=HOURLY;BYMONTHDAY=-31;BYMONTH=4;COUNT=5");
}
std::string neverByWeek(std::size_t bytes) {
  return eventsRepeating(bytes, "FREQ=YEARLY;BYWEEKNO=53;BYMONTH=6;BYDAY=MO;COUNT=5");
}
std::string coprime(std::size_t bytes) {
  return eventsRepeating(bytes, "FREQ=SECONDLY;INTERVAL=3601;BYMINUTE=7;BYSECOND=11;BYMONTHDAY=31;COUNT=50");
}
std::string evenNever(std::size_t bytes) {
  return eventsRepeating(bytes, "FREQ=HOURLY;INTERVAL=24;BYHOUR=1,3,5,7,9;BYMONTH=2;BYMONTHDAY=29;COUNT=9");
}
std::string rareLeapDays(std::size_t bytes) {
  return eventsRepeating(bytes, "FREQ=DAILY;BYMONTH=2;BYMONTHDAY=29;BYDAY=MO;COUNT=900");
}
std::string everyMinute(std::size_t bytes) { return eventsRepeating(bytes, "FREQ=MINUTELY"); }
std::string everySecond(std::size_t bytes) { return eventsRepeating(bytes, "FREQ=SECONDLY"); }
std::string everySecondForAWhile(std::size_t bytes) { return eventsRepeating(bytes, "FREQ=SECONDLY;COUNT=49000"); }
std::string chinese(std::size_t bytes) {
  return eventsRepeating(bytes, "RSCALE=CHINESE;FREQ=YEARLY;BYMONTH=1;BYMONTHDAY=1;COUNT=90");
}

std::string cards(std::size_t bytes) {
  return filled(
      bytes, "",
      [](std::size_t i) {
        return fmt::format("BEGIN:VCARD\r\nUID:c{0}\r\nFN:N{0}\r\nEMAIL:a{0}@example.org\r\nEND:VCARD\r\n", i);
      },
      "");
}

std::string cardsOfOneUid(std::size_t bytes) {
  return filled(
      bytes, "",
      [](std::size_t i) {
        return fmt::format("BEGIN:VCARD\r\nUID:c{0}\r\nFN:N{1}\r\nEMAIL:a{1}@example.org\r\nEND:VCARD\r\n", i / 2, i);
      },
      "");
}

std::string cardWithManyAddresses(std::size_t bytes) {
  return filled(
      bytes, "BEGIN:VCARD\r\nUID:c\r\nFN:N\r\n",
      [](std::size_t i) { return fmt::format("EMAIL:a{}@example.org\r\n", i); }, "END:VCARD\r\n");
}

std::string cardOfSpaces(std::size_t bytes) {
  return filled(
      bytes, "BEGIN:VCARD\r\nUID:c\r\nFN:", [](std::size_t) { return std::string("\\n"); }, "x\r\nEND:VCARD\r\n");
}

using Kind = HostileShape::Kind;

constexpr std::array kShapes{
    HostileShape{"small events", Kind::kCalendar, &smallEvents},
    HostileShape{"events with nothing in them", Kind::kCalendar, &emptyEvents},
    HostileShape{"one UID", Kind::kCalendar, &sameUid},
    HostileShape{"changed occurrences", Kind::kCalendar, &changedOccurrences},
    HostileShape{"changed occurrences without a series", Kind::kCalendar, &strayOccurrences},
    HostileShape{"changes of all later occurrences", Kind::kCalendar, &laterChanges},
    HostileShape{"calendars", Kind::kCalendar, &manyCalendars},
    HostileShape{"calendars, each with a zone of long history", Kind::kCalendar, &calendarsWithZones},
    HostileShape{"calendars that share one long private zone", Kind::kCalendar, &calendarsOfOneLongZone},
    HostileShape{"a calendar's name of half the size", Kind::kCalendar, &longCalendarName},
    HostileShape{"private zones", Kind::kCalendar, &manyZones},
    HostileShape{"private zones that change daily", Kind::kCalendar, &busyZones},
    HostileShape{"zones that nobody knows", Kind::kCalendar, &unknownZones},
    HostileShape{"components never closed", Kind::kCalendar, &openComponents},
    HostileShape{"components of many names, closed by others", Kind::kCalendar, &openComponentsOfManyNames},
    HostileShape{"components in an event", Kind::kCalendar, &componentsInEvent},
    HostileShape{"lines ended by CR alone", Kind::kCalendar, &carriageReturnsOnly},
    HostileShape{"empty lines", Kind::kCalendar, &emptyLines},
    HostileShape{"a line folded after each letter", Kind::kCalendar, &foldedLines},
    HostileShape{"one long line", Kind::kCalendar, &longLine},
    HostileShape{"lines that are none", Kind::kCalendar, &brokenLines},
    HostileShape{"broken dates under a UID of half the size", Kind::kCalendar, &brokenLinesUnderLongUid},
    HostileShape{"quotes never closed", Kind::kCalendar, &openQuotes},
    HostileShape{"RDATE list", Kind::kCalendar, &addedDates},
    HostileShape{"EXDATE list", Kind::kCalendar, &excludedDates},
    HostileShape{"RDATE list under long parameters", Kind::kCalendar, &datesUnderParameters},
    HostileShape{"RDATE periods of a long event", Kind::kCalendar, &periodsOfLongEvent},
    HostileShape{"attendees", Kind::kCalendar, &attendees},
    HostileShape{"an attendee of many names", Kind::kCalendar, &attendeeOfManyNames},
    HostileShape{"alarms", Kind::kCalendar, &alarms},
    HostileShape{"BYWEEKNO list", Kind::kCalendar, &longWeekList},
    HostileShape{"BYDAY list", Kind::kCalendar, &longDayList},
    HostileShape{"BYSETPOS list", Kind::kCalendar, &longPositionList},
    HostileShape{"rules in one event", Kind::kCalendar, &manyRulesInOne},
    HostileShape{"exception rules in one event", Kind::kCalendar, &manyExceptionRules},
    HostileShape{"30 February, counted", Kind::kCalendar, &never},
    HostileShape{"31 April by the hour, counted", Kind::kCalendar, &neverByHour},
    HostileShape{"week 53 in June, counted", Kind::kCalendar, &neverByWeek},
    HostileShape{"seconds with a coprime interval, counted", Kind::kCalendar, &coprime},
    HostileShape{"hours that an interval never meets, counted", Kind::kCalendar, &evenNever},
    HostileShape{"29 February on a Monday by the day, counted", Kind::kCalendar, &rareLeapDays},
    HostileShape{"every minute", Kind::kCalendar, &everyMinute},
    HostileShape{"every second", Kind::kCalendar, &everySecond},
    HostileShape{"every second, 49,000 times", Kind::kCalendar, &everySecondForAWhile},
    HostileShape{"Chinese new years, counted", Kind::kCalendar, &chinese},
    HostileShape{"cards", Kind::kContacts, &cards},
    HostileShape{"cards, each given twice", Kind::kContacts, &cardsOfOneUid},
    HostileShape{"addresses on one card", Kind::kContacts, &cardWithManyAddresses},
    HostileShape{"a name of line breaks", Kind::kContacts, &cardOfSpaces},
};

}  // namespace

std::span<const HostileShape> hostileShapes() { return kShapes; }

}  // namespace orlocal::bench
