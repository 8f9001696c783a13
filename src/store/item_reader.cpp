#include "store/item_reader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <map>

#include <fmt/core.h>

#include "store/calendar_text.h"
#include "store/civil_days.h"
#include "store/recurrence.h"
#include "store/zone_names.h"

namespace orlocal::store {

namespace {

constexpr std::size_t kMostLines = 100'000;
constexpr std::size_t kMostBytes = std::size_t{16} << 20;
/// What the first occurrence of a series may take to be found.
constexpr std::uint64_t kFirstSteps = 5'000'000;

using Kind = CalendarTime::Kind;

class Reader {
 public:
  Reader(const ItemSpan& span, TzidTable& zones, ReadProblems& problems)
      : m_span(span), m_zones(zones), m_problems(problems) {
    m_item.kind = span.kind;
    m_item.uid = span.uid;
  }

  std::optional<ReadItem> read(std::string_view text) {
    if (text.size() > kMostBytes) return refuse(m_span.span.line, "it is larger than 16 MiB");
    ContentLines lines(text, m_span.span.line);
    std::size_t count = 0;
    for (ContentLine line; lines.next(line);) {
      if (++count > kMostLines) return refuse(line.line, "it has more than 100,000 lines");
      component(line);
    }
    return finish(text);
  }

 private:
  using Handler = void (Reader::*)(const ContentLine&);
  struct Property {
    std::string_view name;
    Handler read;
  };
  static const std::array<Property, 24> kProperties;

  std::optional<ReadItem> refuse(int line, std::string_view reason) {
    const char* kind = m_item.kind == ItemKind::kEvent ? "event" : "reminder";
    m_problems.refused.push_back({line, m_item.uid, fmt::format("{}; the {} was not imported", reason, kind)});
    return std::nullopt;
  }
  void warn(int line, std::string message) { m_problems.warnings.push_back({line, m_item.uid, std::move(message)}); }
  /// The first reason to refuse the item counts.
  void fail(int line, std::string reason) {
    if (m_failure.empty()) {
      m_failureLine = line;
      m_failure = std::move(reason);
    }
  }

  /// Components within the item are kept as they are, except for alarms.
  void component(const ContentLine& line) {
    if (line.is("BEGIN")) {
      if (m_depth++ == 0) return;
      m_inner.emplace_back(line.text);
    } else if (line.is("END")) {
      if (--m_depth == 0) return;
      m_inner.emplace_back(line.text);
      if (m_depth == 1) innerDone(line.line);
    } else if (line.name.empty()) {
      warn(line.line, fmt::format("\"{}\" is no content line and was passed over", line.text.substr(0, 60)));
    } else if (m_depth > 1) {
      m_inner.emplace_back(line.text);
    } else {
      property(line);
    }
  }

  void innerDone(int line) {
    const bool isAlarm = equalsNoCase(m_inner.front(), "BEGIN:VALARM");
    const auto alarm = isAlarm ? readAlarm({m_inner.begin() + 1, m_inner.end() - 1}) : std::nullopt;
    if (alarm) {
      m_item.alarms.push_back(*alarm);
    } else {
      if (isAlarm)
        warn(line, "the alarm that ends here has no action or trigger that can be followed; it is kept as it is");
      for (const std::string& text : m_inner) m_components.append(text).append("\n");
    }
    m_inner.clear();
  }

  void property(const ContentLine& line) {
    const auto* found = std::find_if(kProperties.begin(), kProperties.end(),
                                     [&](const Property& known) { return line.is(known.name); });
    if (found == kProperties.end())
      keep(line);
    else
      (this->*found->read)(line);
  }

  void keep(const ContentLine& line) { m_item.extra.append(line.text).append("\n"); }
  /// Parameters of a property that a field holds, but those that the field speaks for.
  void keepParameters(const ContentLine& line) {
    std::string_view rest = line.parameters;
    std::string kept;
    for (ContentParameter parameter; nextParameter(rest, parameter);)
      if (!equalsNoCase(parameter.name, "TZID") && !equalsNoCase(parameter.name, "VALUE")) kept += parameter.text;
    if (kept.empty()) return;
    std::string name;
    for (char c : line.name) name += c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
    m_parameters.emplace(std::move(name), std::move(kept));
  }

  void text(std::optional<std::string>& field, const ContentLine& line, bool escaped) {
    if (field) {
      keep(line);
      return;
    }
    field = escaped ? unescapeText(line.value) : std::string(line.value);
    keepParameters(line);
  }
  void uid(const ContentLine&) {}  // known from the layout
  void stamp(const ContentLine& line) { m_stamp = instant(line); }
  void summary(const ContentLine& line) { text(m_item.title, line, true); }
  void description(const ContentLine& line) { text(m_item.notes, line, true); }
  void location(const ContentLine& line) { text(m_item.location, line, true); }
  void url(const ContentLine& line) { text(m_item.url, line, false); }

  /// None, with a reason, when the value is no time.
  std::optional<CalendarTime> time(const ContentLine& line, std::string_view value) {
    auto read = parseTime(value);
    if (!read) return std::nullopt;
    if (read->kind != Kind::kDate && equalsNoCase(line.parameter("VALUE").value_or(""), "DATE")) {
      read->kind = Kind::kDate;
      read->local = LocalTime(LocalDay(read->local));
    }
    if (read->kind != Kind::kFloating) return read;
    const auto tzid = line.parameter("TZID");
    if (!tzid || tzid->empty()) return read;
    if (const auto& zone = m_zones.zoneOf(*tzid, m_span.calendar, line.line, m_problems)) {
      read->kind = *zone == "UTC" ? Kind::kUtc : Kind::kZoned;
      read->zone = read->kind == Kind::kUtc ? "" : *zone;
    }
    return read;
  }
  std::optional<Moment> instant(const ContentLine& line) {
    const auto read = time(line, line.value);
    if (!read && !line.value.empty()) warn(line.line, fmt::format("{} has no date that can be read", line.name));
    return read ? std::optional(momentOf(*read, Zone())) : std::nullopt;
  }
  void moment(std::optional<CalendarTime>& field, const ContentLine& line) {
    const auto read = time(line, line.value);
    if (!read) {
      auto reason = fmt::format("{} has no date that can be read: \"{}\"", line.name, line.value.substr(0, 40));
      // A reminder is one without its dates, too.
      return m_item.kind == ItemKind::kEvent ? fail(line.line, std::move(reason)) : warn(line.line, std::move(reason));
    }
    if (field) return warn(line.line, fmt::format("a second {} was passed over", line.name));
    field = read;
    keepParameters(line);
  }
  void start(const ContentLine& line) { moment(m_item.start, line); }
  void end(const ContentLine& line) {
    m_endLine = line.line;
    if (line.value.empty()) return warn(line.line, fmt::format("{} is empty and was passed over", line.name));
    moment(m_item.end, line);
  }
  void duration(const ContentLine& line) {
    m_endLine = line.line;
    m_duration = parseDuration(line.value);
    if (!m_duration)
      fail(line.line, fmt::format("DURATION has no length that can be read: \"{}\"", line.value.substr(0, 40)));
  }
  void recurrenceId(const ContentLine& line) {
    moment(m_item.recurrenceId, line);
    if (line.parameter("RANGE"))
      warn(line.line, "RANGE=THISANDFUTURE is not followed: only this one occurrence is changed");
  }
  void rule(const ContentLine& line) {
    auto read = parseRule(line.value);
    if (!read) return fail(line.line, read.error().message);
    m_ruleLine = line.line;
    m_item.recurrence.rules.push_back(std::move(*read));
  }
  void exceptionRule(const ContentLine& line) {
    keep(line);
    warn(line.line, "EXRULE is kept but not followed: occurrences that it takes out are shown");
  }
  void added(const ContentLine& line) { dates(line, m_item.recurrence.added, true); }
  void excluded(const ContentLine& line) { dates(line, m_item.recurrence.excluded, false); }
  void dates(const ContentLine& line, std::vector<CalendarTime>& list, bool periods) {
    if (line.value.empty()) return warn(line.line, fmt::format("{} is empty and was passed over", line.name));
    for (std::string_view value : splitUnescaped(line.value, ',')) {
      const std::size_t slash = periods ? value.find('/') : std::string_view::npos;
      const auto read = time(line, value.substr(0, slash));
      if (!read) {
        warn(line.line, fmt::format("{} has no date that can be read and was passed over: \"{}\"", line.name,
                                    value.substr(0, 40)));
        continue;
      }
      list.push_back(*read);
      if (slash != std::string_view::npos)
        m_periods.emplace_back(*read, periodEnd(line, *read, value.substr(slash + 1)));
    }
  }
  std::optional<CalendarTime> periodEnd(const ContentLine& line, const CalendarTime& begin, std::string_view text) {
    if (const auto length = parseDuration(text)) return after(begin, *length);
    return time(line, text);
  }
  void sequence(const ContentLine& line) {
    const auto [end, error] =
        std::from_chars(line.value.data(), line.value.data() + line.value.size(), m_item.sequence);
    if (error != std::errc()) warn(line.line, "SEQUENCE is no number and was passed over");
  }
  void priority(const ContentLine& line) {
    int value = -1;
    std::from_chars(line.value.data(), line.value.data() + line.value.size(), value);
    if (value < 0 || value > 9) return warn(line.line, "PRIORITY is not from 0 to 9 and was passed over");
    m_item.priority = value;
  }
  void created(const ContentLine& line) { m_item.created = instant(line); }
  void modified(const ContentLine& line) { m_item.modified = instant(line); }
  void completed(const ContentLine& line) {
    if (m_item.kind == ItemKind::kReminder)
      m_item.completed = instant(line);
    else
      keep(line);
  }
  void status(const ContentLine& line) {
    if (m_item.kind == ItemKind::kReminder && equalsNoCase(line.value, "COMPLETED"))
      m_isDone = true;
    else
      keep(line);
  }
  void percent(const ContentLine& line) {
    if (m_item.kind != ItemKind::kReminder)
      keep(line);
    else if (line.value == "100")
      m_isFull = true;
    else
      m_percent = std::string(line.text);
  }
  void attendee(const ContentLine& line) { m_item.attendees.push_back(readAttendee(line)); }

  /// Days run on the calendar, the rest is exact.
  static CalendarTime after(CalendarTime begin, const Duration& length) {
    begin.local += length.days * kSecondsPerDay;
    if (begin.kind == Kind::kDate || length.seconds == 0) return begin;
    const Zone zone = begin.kind == Kind::kZoned ? Zone::named(begin.zone).value_or(Zone()) : Zone();
    begin.local = zone.toLocal(zone.toMoment(begin.local) + std::chrono::seconds(length.seconds));
    return begin;
  }

  std::optional<ReadItem> finish(std::string_view bytes);
  bool settleEnd();
  void settleCompletion();
  std::optional<ReadItem> settleRecurrence();

  const ItemSpan& m_span;
  TzidTable& m_zones;
  ReadProblems& m_problems;
  Item m_item;
  int m_depth = 0;
  std::vector<std::string> m_inner;
  std::map<std::string, std::string> m_parameters;  ///< by property: those that no field speaks for
  std::string m_components;
  std::optional<Duration> m_duration;
  std::vector<std::pair<CalendarTime, std::optional<CalendarTime>>> m_periods;
  std::optional<Moment> m_stamp;
  bool m_isDone = false, m_isFull = false;
  std::string m_percent;
  int m_endLine = 0, m_ruleLine = 0, m_failureLine = 0;
  std::string m_failure;
};

constexpr std::array<Reader::Property, 24> Reader::kProperties{{
    {"UID", &Reader::uid},
    {"DTSTAMP", &Reader::stamp},
    {"DTSTART", &Reader::start},
    {"DTEND", &Reader::end},
    {"DUE", &Reader::end},
    {"DURATION", &Reader::duration},
    {"SUMMARY", &Reader::summary},
    {"DESCRIPTION", &Reader::description},
    {"LOCATION", &Reader::location},
    {"URL", &Reader::url},
    {"CREATED", &Reader::created},
    {"LAST-MODIFIED", &Reader::modified},
    {"SEQUENCE", &Reader::sequence},
    {"PRIORITY", &Reader::priority},
    {"RRULE", &Reader::rule},
    {"RDATE", &Reader::added},
    {"EXDATE", &Reader::excluded},
    {"EXRULE", &Reader::exceptionRule},
    {"RECURRENCE-ID", &Reader::recurrenceId},
    {"COMPLETED", &Reader::completed},
    {"STATUS", &Reader::status},
    {"PERCENT-COMPLETE", &Reader::percent},
    {"ATTENDEE", &Reader::attendee},
    {"ORGANIZER", &Reader::attendee},
}};

std::optional<ReadItem> Reader::finish(std::string_view bytes) {
  if (m_failure.empty() && m_item.kind == ItemKind::kEvent && !m_item.start)
    fail(m_span.span.line, "it has no DTSTART");
  if (!m_failure.empty()) return refuse(m_failureLine, m_failure);
  // In an order that does not hang on where the lines stood.
  std::string extra;
  for (const auto& [name, parameters] : m_parameters) extra.append("@").append(name).append(parameters).append("\n");
  m_item.extra = extra + m_item.extra + m_components;
  if (m_item.uid.empty()) {
    // Named by its content, so that another import finds it again.
    std::string content;
    ContentLines lines(bytes);
    for (ContentLine line; lines.next(line);)
      if (!line.is("DTSTAMP")) content.append(line.text).append("\n");
    m_item.uid = fmt::format("content-{:016x}", contentHash(content));
  }
  if (!settleEnd()) return std::nullopt;
  if (m_item.kind == ItemKind::kReminder) settleCompletion();
  return settleRecurrence();
}

bool Reader::settleEnd() {
  auto& start = m_item.start;
  auto& end = m_item.end;
  const bool event = m_item.kind == ItemKind::kEvent;
  if (!end && m_duration && start) end = after(*start, *m_duration);
  if (!event || !start) return true;
  if (!end) {
    end = start;
  } else if ((start->kind == Kind::kDate) != (end->kind == Kind::kDate)) {
    warn(m_endLine, "one of start and end is a date and the other has a time; the end was read as the start is");
    if (start->kind == Kind::kDate) {
      *end = {Kind::kDate, LocalTime(LocalDay(end->local)), ""};
    } else {
      end->kind = start->kind;
      end->zone = start->zone;
    }
  }
  const Moment from = momentOf(*start, Zone()), to = momentOf(*end, Zone());
  if (to < from) {
    refuse(m_endLine, fmt::format("{} lies before DTSTART", m_duration ? "the end that DURATION gives" : "DTEND"));
    return false;
  }
  // A day that ends where it starts is written by many for one whole day.
  if (start->kind == Kind::kDate && end->local == start->local) end->local += kSecondsPerDay;
  return true;
}

void Reader::settleCompletion() {
  if (m_isDone && !m_item.completed) {
    // Done at an unknown moment: the best guess that is the same at the next import.
    const auto due = m_item.end ? std::optional(momentOf(*m_item.end, Zone())) : std::nullopt;
    m_item.completed = m_item.modified ? m_item.modified : due ? due : m_stamp ? m_stamp : Moment{};
  }
  if (m_isFull) m_percent = "PERCENT-COMPLETE:100";
  if (!m_item.completed && !m_percent.empty()) m_item.extra.append(m_percent).append("\n");
  if (!m_item.completed) return;
  // What speaks against its being done is outdated.
  for (const char* outdated : {"STATUS:NEEDS-ACTION\n", "STATUS:IN-PROCESS\n"})
    if (const auto at = m_item.extra.find(outdated); at != std::string::npos)
      m_item.extra.erase(at, std::string_view(outdated).size());
}

std::optional<ReadItem> Reader::settleRecurrence() {
  if (m_item.recurrenceId && !m_item.recurrence.empty()) {
    warn(m_ruleLine, "a changed occurrence cannot repeat itself; its rule was passed over");
    m_item.recurrence = {};
  }
  ReadItem made;
  if (!m_item.recurrence.empty()) {
    ExpansionBudget budget(kFirstSteps);
    const auto series = Series::compile(m_item, Zone());
    const auto first = series ? series->first(budget) : tl::unexpected(series.error());
    if (!first) return refuse(m_ruleLine != 0 ? m_ruleLine : m_span.span.line, first.error().message);
    const auto length = m_item.start && m_item.end ? momentOf(*m_item.end, Zone()) - momentOf(*m_item.start, Zone())
                                                   : Moment::duration{};
    for (const auto& [begin, end] : m_periods) {
      if (!end || momentOf(*end, Zone()) - momentOf(begin, Zone()) == length) continue;
      Item& changed = made.periods.emplace_back(m_item);
      changed.recurrence = {};
      changed.recurrenceId = begin;
      changed.start = begin;
      changed.end = end;
    }
  }
  made.item = std::move(m_item);
  return made;
}

}  // namespace

std::optional<ReadItem> readItem(std::string_view bytes, const ItemSpan& span, TzidTable& zones,
                                 ReadProblems& problems) {
  return Reader(span, zones, problems).read(span.span.of(bytes));
}

}  // namespace orlocal::store
