#include "host/commands/availability/asked_time.h"

#include <algorithm>
#include <cstddef>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/choosing/common_options.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/trouble.h"
#include "host/commands/words/day_words.h"
#include "host/commands/words/zone_words.h"
#include "store/time/clock.h"

namespace orlocal::host {
namespace {

using store::LocalDay;

constexpr int kDaysAhead = 6;
constexpr const char* kDayRemedy = translatable("write 2026-11-02, 2026-11, tomorrow, friday, next week or +7");

std::nullopt_t refuse(CommandContext& context, const std::string& sentence) {
  tellTrouble(context.streams.err, sentence);
  return std::nullopt;
}

std::optional<DayRange> readDays(const std::string& words, LocalDay today, CommandContext& context) {
  const auto days = daysFromWords(words, today);
  return days ? days : refuse(context, tr("\"{}\" is no day; {}.", words, translated(kDayRemedy)));
}

/// The days that were asked for: the named ones, or those of a week from the first.
std::optional<DayRange> daysAskedFor(const TimeWords& words, LocalDay today, CommandContext& context) {
  DayRange days{today, today + kDaysAhead};
  const std::string named = fmt::format("{}", fmt::join(words.days, " "));
  const std::string& first = named.empty() ? words.from : named;
  if (!first.empty()) {
    const auto read = readDays(first, today, context);
    if (!read) { return std::nullopt; }
    days = *read;
    if (named.empty() && days.first == days.last) { days.last = days.first + kDaysAhead; }
  }
  if (!words.to.empty()) {
    auto read = readDays(words.to, today, context);
    if (!read) { return std::nullopt; }
    // "--from monday --to friday", said on a Wednesday.
    if (read->last < days.first) { read = daysFromWords(words.to, days.first); }
    days.last = read->last;
  }
  if (days.last < days.first) {
    return refuse(context, tr("the last day {} lies before the first day {}", isoDay(days.last), isoDay(days.first)));
  }
  return days;
}

std::string clockOf(TimeOfDay time) {
  constexpr int kMinutesInHour = 60;
  return fmt::format("{:02}:{:02}", time.count() / kMinutesInHour, time.count() % kMinutesInHour);
}

}  // namespace

void addTimeOptions(CLI::App& command, TimeWords& words) {
  // Not by the name of an option, which later versions of CLI11 refuse; it is shown nowhere.
  CLI::Option* days = command.add_option("named-days", words.days, "A day, week or month: friday, next week, 2026-11");
  days->type_name("DAYS");
  command.add_option("--from", words.from, "First day: 2026-11-02, today, friday, +7 (default: today)")
      ->type_name("DAY")
      ->excludes(days);
  command.add_option("--to", words.to, "Last day, included (default: six days after the first)")->type_name("DAY");
  command.add_option("--hours", words.hours, "Only these hours of each day: 9-17 (default: all of it)")
      ->type_name("HOURS");
  CLI::Option* weekDays =
      command.add_option("--days", words.weekDays, "Only these days of the week: mon-fri, tue,thu")->type_name("DAYS");
  command.add_flag("--weekdays", words.onWeekdays, "Only Monday to Friday")->excludes(weekDays);
  addCalendarOptions(command, words.calendars);
  command.add_flag("--ignore-all-day", words.ignoresAllDay, "Events of whole days take no time");
  addZoneOption(command, words.zone);
}

std::optional<AskedTime> readTimeWords(const TimeWords& words, CommandContext& context) {
  AskedTime asked;
  asked.viewer = zoneAskedFor(words.zone);
  const store::LocalTime now = asked.viewer.toLocal(store::now());
  const auto days = daysAskedFor(words, LocalDay(now), context);
  if (!days) { return std::nullopt; }
  asked.days = *days;
  const WordsSetting setting = settingOfUser(now);
  if (!words.hours.empty()) {
    const auto hours = readHours(words.hours, setting);
    if (!hours) { return refuse(context, fmt::format("--hours {}: {}.", words.hours, hours.error().message)); }
    asked.wanted.hours = *hours;
  }
  const std::string weekDays = words.onWeekdays ? "weekdays" : words.weekDays;
  if (!weekDays.empty()) {
    const auto read = readWeekDays(weekDays, setting);
    if (!read) { return refuse(context, fmt::format("--days {}: {}.", weekDays, read.error().message)); }
    asked.wanted.weekDays = *read;
  }
  asked.owner = TimeOwner::ofUser();
  asked.owner.ignoresAllDay = words.ignoresAllDay;
  return asked;
}

Result<std::vector<store::BusyTime>> busyTimesOf(store::CalendarStore& store, const AskedTime& asked,
                                                 const std::vector<TimeSpan>& spans, const CalendarChoice& calendars) {
  ORLOCAL_TRY(const auto named, calendarsChosen(store, calendars));
  const bool events = std::any_of(named.begin(), named.end(), [](const store::Calendar& calendar) {
    return calendar.holds(store::ItemKind::kEvent);
  });
  if (!events && !calendars.only.empty()) {
    return failure(ErrorCode::kInvalid,
                   tr("\"{}\" holds no events, and reminders take no time.", calendars.only.front()));
  }
  if (spans.empty()) { return std::vector<store::BusyTime>(); }
  ORLOCAL_TRY(const auto taken, takenBetween(store, spans.front().start, spans.back().end, named, asked.owner));
  std::vector<store::BusyTime> times;
  times.reserve(taken.size());
  for (const TakenTime& each : taken) { times.push_back({each.when.start, each.when.end, each.kind}); }
  return merged(times);
}

std::string askedInWords(const AskedTime& asked, bool tellsZone) {
  const auto& [first, last] = asked.days;
  std::string words = first == last ? shortDay(first) : tr("{} to {}", shortDay(first), shortDay(last));
  const TimeRange& hours = asked.wanted.hours;
  if (!asked.wanted.areWholeDays()) { words += fmt::format(", {}–{}", clockOf(hours.start), clockOf(hours.end)); }
  if (!asked.wanted.weekDays.all()) { words += ", " + weekDaysInWords(asked.wanted.weekDays); }
  return tellsZone ? tr("{}, in {}", words, asked.viewer.name()) : words;
}

nlohmann::json askedJson(const AskedTime& asked) {
  constexpr const char* kNames[] = {"sunday", "monday", "tuesday", "wednesday", "thursday", "friday", "saturday"};
  nlohmann::json weekDays = nlohmann::json::array();
  for (std::size_t i = 0; i < asked.wanted.weekDays.size(); ++i) {
    const std::size_t day = (i + 1) % asked.wanted.weekDays.size();
    if (asked.wanted.weekDays.test(day)) { weekDays.push_back(kNames[day]); }
  }
  return {{"from", isoDay(asked.days.first)},
          {"to", isoDay(asked.days.last)},
          {"timeZone", asked.viewer.name()},
          {"hours", {{"from", clockOf(asked.wanted.hours.start)}, {"to", clockOf(asked.wanted.hours.end)}}},
          {"weekDays", weekDays}};
}

}  // namespace orlocal::host
