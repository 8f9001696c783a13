#include "dataset.h"

#include <array>
#include <fstream>
#include <random>
#include <string>
#include <string_view>

#include <cctz/civil_time.h>
#include <fmt/format.h>

namespace orlocal::bench {
namespace {

using Day = cctz::civil_day;
using Local = cctz::civil_second;

constexpr std::string_view kHead =
    "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Orlocal//Measurements//EN\r\nX-WR-CALNAME:Measured\r\n"
    "BEGIN:VTIMEZONE\r\nTZID:Europe/Berlin\r\n"
    "BEGIN:STANDARD\r\nDTSTART:19701025T030000\r\nTZOFFSETFROM:+0200\r\nTZOFFSETTO:+0100\r\nTZNAME:CET\r\n"
    "RRULE:FREQ=YEARLY;BYMONTH=10;BYDAY=-1SU\r\nEND:STANDARD\r\n"
    "BEGIN:DAYLIGHT\r\nDTSTART:19700329T020000\r\nTZOFFSETFROM:+0100\r\nTZOFFSETTO:+0200\r\nTZNAME:CEST\r\n"
    "RRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU\r\nEND:DAYLIGHT\r\nEND:VTIMEZONE\r\n";

constexpr std::array kSubjects = {
    "Planning",  "Review",           "Lunch with Ada",     "Dentist", "Release", "Choir", "Swimming", "Budget",
    "Interview", "Parents' evening", "Maintenance window", "Standup"};
constexpr std::array kPlaces = {"Room 12", "Café am Markt", "Main hall", "Online", "Platz der Luftbrücke 5", "Pool"};
constexpr std::array kDays = {"MO", "TU", "WE", "TH", "FR"};

/// A generator whose numbers do not depend on the standard library's distributions.
class Numbers {
 public:
  explicit Numbers(std::uint64_t seed) : m_engine(seed) {}
  int below(int bound) { return static_cast<int>(m_engine() % static_cast<std::uint64_t>(bound)); }

 private:
  std::mt19937_64 m_engine;
};

std::string basic(Local t) {
  return fmt::format("{:04}{:02}{:02}T{:02}{:02}{:02}", t.year(), t.month(), t.day(), t.hour(), t.minute(), t.second());
}
std::string basic(Day d) { return fmt::format("{:04}{:02}{:02}", d.year(), d.month(), d.day()); }

/// Of a rule: a third each has none, a count, a date.
std::string end(Numbers& numbers, Day start) {
  switch (numbers.below(3)) {
    case 0:
      return "";
    case 1:
      return fmt::format(";COUNT={}", 5 + numbers.below(60));
    default:
      return ";UNTIL=" + basic(start + 30 + numbers.below(900)) + "T000000Z";
  }
}

std::string rule(Numbers& numbers, Day start) {
  std::string text;
  const int kind = numbers.below(20);
  if (kind < 10) {
    text = "FREQ=WEEKLY;BYDAY=";
    const int first = numbers.below(3);
    for (int i = 0, count = 1 + numbers.below(3); i < count; ++i) {
      text += fmt::format("{}{}", i == 0 ? "" : ",", kDays[static_cast<std::size_t>(first + i)]);
    }
  } else if (kind < 12) {
    text = fmt::format("FREQ=DAILY;INTERVAL={}", 1 + numbers.below(5));
  } else if (kind < 15) {
    text =
        fmt::format("FREQ=MONTHLY;BYDAY={}{}", 1 + numbers.below(4), kDays[static_cast<std::size_t>(numbers.below(5))]);
  } else if (kind < 17) {
    text = fmt::format("FREQ=MONTHLY;BYMONTHDAY={}", 1 + numbers.below(28));
  } else {
    text = "FREQ=YEARLY";
  }
  return text + end(numbers, start);
}

}  // namespace

void writeCalendarFile(const std::filesystem::path& file, std::size_t events, std::uint64_t seed) {
  std::ofstream out(file, std::ios::binary);
  Numbers numbers(seed);
  out << kHead;
  const Day origin(2020, 1, 1);
  for (std::size_t i = 0; i < events; ++i) {
    const bool repeats = i % 5 == 4;
    Local start(origin + numbers.below(3652));
    start += (7 + numbers.below(12)) * 3600 + numbers.below(4) * 900;
    const int minutes = 15 * (1 + numbers.below(12));
    const int kind = repeats ? numbers.below(16) : numbers.below(20);  // repeating ones are never floating
    std::string times;
    if (kind < 12) {
      times = fmt::format("DTSTART;TZID=Europe/Berlin:{}\r\nDTEND;TZID=Europe/Berlin:{}\r\n", basic(start),
                          basic(start + minutes * 60));
    } else if (kind < 16) {
      times = fmt::format("DTSTART:{}Z\r\nDTEND:{}Z\r\n", basic(start), basic(start + minutes * 60));
    } else if (kind < 19) {
      const Day day(start);
      times = fmt::format("DTSTART;VALUE=DATE:{}\r\nDTEND;VALUE=DATE:{}\r\n", basic(day),
                          basic(day + 1 + numbers.below(3)));
    } else {
      times = fmt::format("DTSTART:{}\r\nDTEND:{}\r\n", basic(start), basic(start + minutes * 60));
    }
    out << "BEGIN:VEVENT\r\nUID:" << fmt::format("{:08}-{}@measured.example\r\n", i, seed)
        << "DTSTAMP:20260101T000000Z\r\n"
        << times << "SUMMARY:" << kSubjects[static_cast<std::size_t>(numbers.below(12))] << ' ' << i << "\r\n";
    if (numbers.below(2) == 0) { out << "LOCATION:" << kPlaces[static_cast<std::size_t>(numbers.below(6))] << "\r\n"; }
    if (numbers.below(2) == 0) {
      out << "DESCRIPTION:Bring the numbers of last quarter and the open questions from\r\n  the list\\, please. Nr. "
          << i << ".\r\n";
    }
    if (repeats) {
      out << "RRULE:" << rule(numbers, Day(start)) << "\r\n";
      if (numbers.below(10) == 0) {
        const bool utc = kind >= 12;
        out << (utc ? "EXDATE:" : "EXDATE;TZID=Europe/Berlin:") << basic(start + 7 * 86400) << (utc ? "Z" : "")
            << "\r\n";
      }
    }
    if (numbers.below(4) == 0) {
      out << "BEGIN:VALARM\r\nACTION:DISPLAY\r\nTRIGGER:-PT15M\r\nDESCRIPTION:Soon\r\nEND:VALARM\r\n";
    }
    out << "END:VEVENT\r\n";
  }
  out << "END:VCALENDAR\r\n";
}

void writeDailySeries(const std::filesystem::path& file, std::size_t series, int timesADay) {
  std::ofstream out(file, std::ios::binary);
  Numbers numbers(1);
  out << kHead;
  std::string hours;
  for (int i = 0; i < timesADay; ++i) { hours += fmt::format("{}{}", i == 0 ? "" : ",", 7 + 2 * i); }
  for (std::size_t i = 0; i < series; ++i) {
    const Day day = Day(2020, 1, 1) + numbers.below(3652);
    const Local start = Local(day) + 7 * 3600;
    out << "BEGIN:VEVENT\r\nUID:" << fmt::format("{:08}-{}-a-day@measured.example\r\n", i, timesADay)
        << "DTSTAMP:20260101T000000Z\r\n"
        << fmt::format("DTSTART;TZID=Europe/Berlin:{}\r\nDTEND;TZID=Europe/Berlin:{}\r\n", basic(start),
                       basic(start + 3600))
        << "SUMMARY:Medicine " << i << "\r\nRRULE:FREQ=DAILY;BYHOUR=" << hours << end(numbers, day)
        << "\r\nEND:VEVENT\r\n";
  }
  out << "END:VCALENDAR\r\n";
}

}  // namespace orlocal::bench
