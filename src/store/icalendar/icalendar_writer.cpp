#include "store/icalendar/icalendar_writer.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "base/text.h"
#include "store/icalendar/calendar_color.h"
#include "store/icalendar/calendar_layout.h"
#include "store/icalendar/content_line.h"
#include "store/icalendar/item_limits.h"
#include "store/icalendar/item_words.h"
#include "store/recurrence/rule_text.h"
#include "store/time/time_text.h"

namespace orlocal::store {

namespace {

/// The kept lines of an item, sorted by where they go.
struct KeptLines {
  std::map<std::string_view, std::string_view> parameters;  ///< by the property's name
  std::vector<std::string_view> properties;
  std::vector<std::string_view> components;  ///< their lines

  explicit KeptLines(std::string_view extra) {
    int depth = 0;
    while (!extra.empty()) {
      const std::size_t end = std::min(extra.find('\n'), extra.size());
      const std::string_view line = extra.substr(0, end);
      extra.remove_prefix(std::min(end + 1, extra.size()));
      if (equalsNoCase(line.substr(0, 6), "BEGIN:")) { ++depth; }
      if (line.empty()) { continue; }
      if (depth > 0) {
        components.push_back(line);
      } else if (line.front() == '@') {
        parameters.emplace(line.substr(1, line.find(';') - 1), line.substr(std::min(line.find(';'), line.size())));
      } else {
        properties.push_back(line);
      }
      if (equalsNoCase(line.substr(0, 4), "END:") && depth > 0) { --depth; }
    }
  }
  std::string parametersOf(std::string_view name) const {
    const auto found = parameters.find(name);
    return found == parameters.end() ? std::string() : std::string(found->second);
  }
  bool has(std::string_view name) const {
    return std::any_of(properties.begin(), properties.end(), [&](std::string_view line) {
      return line.size() > name.size() && equalsNoCase(line.substr(0, name.size()), name) &&
             (line[name.size()] == ':' || line[name.size()] == ';');
    });
  }
};

std::string onOneLine(std::string value) {
  keepOnOneLine(value);
  return value;
}

class ItemText {
 public:
  ItemText(std::string& out, const Item& item) : m_out(out), m_item(item), m_kept(item.extra) {}

  void write() {
    const bool event = m_item.kind == ItemKind::kEvent;
    line(event ? "BEGIN:VEVENT" : "BEGIN:VTODO");
    line("UID:" + escapeText(m_item.uid));
    if (m_item.recurrenceId) { time("RECURRENCE-ID", *m_item.recurrenceId); }
    line("DTSTAMP:" + momentText(stamp()));
    if (m_item.created) { line("CREATED:" + momentText(*m_item.created)); }
    if (m_item.modified) { line("LAST-MODIFIED:" + momentText(*m_item.modified)); }
    if (m_item.sequence != 0) { line(fmt::format("SEQUENCE:{}", m_item.sequence)); }
    text("SUMMARY", m_item.title);
    if (m_item.start) { time("DTSTART", *m_item.start); }
    // The end of an event without length is its start, which DTEND may not be.
    if (event && m_item.end && m_item.end != m_item.start) { time("DTEND", *m_item.end); }
    if (!event && m_item.due) { time("DUE", *m_item.due); }
    for (const RecurrenceRule& rule : m_item.recurrence.rules) { line("RRULE:" + ruleText(rule)); }
    times("RDATE", m_item.recurrence.added);
    times("EXDATE", m_item.recurrence.excluded);
    for (const ExceptionRule& rule : m_item.recurrence.exceptionRules) { exceptionRule(rule); }
    text("LOCATION", m_item.location);
    text("DESCRIPTION", m_item.notes);
    if (m_item.url) { line("URL" + parametersOf("URL") + ":" + onOneLine(*m_item.url)); }
    if (m_item.priority != 0) { line(fmt::format("PRIORITY:{}", m_item.priority)); }
    if (!event) { completion(); }
    for (const Attendee& attendee : m_item.attendees) { person(attendee); }
    for (std::string_view kept : m_kept.properties) {
      if (!replaced(kept)) { line(kept); }
    }
    for (const Alarm& one : m_item.alarms) { alarm(one); }
    for (std::string_view kept : m_kept.components) { line(kept); }
    line(event ? "END:VEVENT" : "END:VTODO");
  }

 private:
  void line(std::string_view text) { appendFolded(m_out, text); }
  /// Every item needs one, also one that nothing is known of.
  Moment stamp() const {
    const auto newest = std::max(m_item.modified, m_item.stamped);
    return newest ? *newest : m_item.created.value_or(Moment{});
  }
  std::string parametersOf(std::string_view name) const { return m_kept.parametersOf(name); }
  void text(std::string_view name, const std::optional<std::string>& value) {
    if (value) { line(std::string(name) + parametersOf(name) + ":" + escapeText(*value)); }
  }
  static std::string kindParameters(const CalendarTime& time) {
    if (time.kind == CalendarTime::Kind::kDate) { return ";VALUE=DATE"; }
    return time.kind == CalendarTime::Kind::kZoned ? ";TZID=" + parameterText(time.zone) : std::string();
  }
  void time(std::string_view name, const CalendarTime& value) {
    line(std::string(name) + kindParameters(value) + parametersOf(name) + ":" + timeText(value));
  }
  /// One line for each stretch of one kind and zone.
  void times(std::string_view name, const std::vector<CalendarTime>& values) {
    for (std::size_t i = 0; i < values.size();) {
      const std::string parameters = kindParameters(values[i]);
      const CalendarTime::Kind kind = values[i].kind;
      std::string text = std::string(name) + parameters + ":" + timeText(values[i]);
      for (++i; i < values.size() && values[i].kind == kind && kindParameters(values[i]) == parameters; ++i) {
        text += "," + timeText(values[i]);
      }
      line(text);
    }
  }
  void exceptionRule(const ExceptionRule& exception) {
    std::string text = "EXRULE";
    if (exception.start) {
      const auto kind = m_item.allDay() ? CalendarTime::Kind::kDate : CalendarTime::Kind::kFloating;
      text.append(";").append(kExceptionStart).append("=").append(timeText({kind, *exception.start, ""}));
    }
    line(text + ":" + ruleText(exception.rule));
  }
  void completion() {
    if (!m_item.completed) { return; }
    line("COMPLETED:" + momentText(*m_item.completed));
    if (!m_kept.has("STATUS") || !keepsStatus()) { line("STATUS:COMPLETED"); }
    line("PERCENT-COMPLETE:100");
  }
  /// A cancelled reminder may have been done before; every other state gives way to "done".
  bool keepsStatus() const {
    return std::any_of(m_kept.properties.begin(), m_kept.properties.end(),
                       [](std::string_view line) { return equalsNoCase(line, "STATUS:CANCELLED"); });
  }
  bool replaced(std::string_view kept) const {
    if (!m_item.completed || m_item.kind != ItemKind::kReminder) { return false; }
    if (equalsNoCase(kept.substr(0, 17), "PERCENT-COMPLETE:")) { return true; }
    return equalsNoCase(kept.substr(0, 7), "STATUS:") && !keepsStatus();
  }
  void person(const Attendee& attendee) {
    std::string text = attendee.organizer ? "ORGANIZER" : "ATTENDEE";
    if (attendee.name) { text += ";CN=" + parameterText(*attendee.name); }
    const auto add = [&](std::string_view name, std::string_view word) {
      if (!word.empty()) { text.append(";").append(name).append("=").append(word); }
    };
    add("PARTSTAT", wordOf(kParticipationStates, attendee.status));
    add("ROLE", wordOf(kRoles, attendee.role));
    if (attendee.type != Attendee::Type::kPerson || attendee.organizer) {
      add("CUTYPE", wordOf(kAttendeeTypes, attendee.type));
    }
    line(text + attendee.extra + ":" + onOneLine(attendee.address));
  }
  void alarm(const Alarm& alarm) {
    const KeptLines kept(alarm.extra);
    const auto action = wordOf(kActions, alarm.action);
    line("BEGIN:VALARM");
    line(std::string("ACTION:") + std::string(action));
    if (const auto* relative = std::get_if<Alarm::Relative>(&alarm.trigger)) {
      line(std::string(relative->fromEnd ? "TRIGGER;RELATED=END:" : "TRIGGER:") + durationText(relative->offset));
    } else {
      line("TRIGGER;VALUE=DATE-TIME:" + momentText(std::get<Moment>(alarm.trigger)));
    }
    for (const auto& attached : {alarm.soundName, alarm.url}) {
      if (attached) { line("ATTACH;VALUE=URI" + kept.parametersOf("ATTACH") + ":" + onOneLine(*attached)); }
    }
    if (alarm.emailAddress) {
      line("ATTENDEE" + kept.parametersOf("ATTENDEE") + ":mailto:" + onOneLine(*alarm.emailAddress));
    }
    const bool speaks = alarm.action == Alarm::Action::kDisplay || alarm.action == Alarm::Action::kEmail;
    if (speaks && !kept.has("DESCRIPTION")) { line(kAlarmDescription); }
    if (alarm.action == Alarm::Action::kEmail && !kept.has("SUMMARY")) { line(kAlarmSummary); }
    for (std::string_view text : kept.properties) { line(text); }
    for (std::string_view text : kept.components) { line(text); }
    line("END:VALARM");
  }

  std::string& m_out;
  const Item& m_item;
  KeptLines m_kept;
};

}  // namespace

void writePlainHead(std::string& out) {
  for (const char* line :
       {"BEGIN:VCALENDAR", "VERSION:2.0", "PRODID:-//Orlocal//Orlocal 3//EN", "CALSCALE:GREGORIAN"}) {
    appendFolded(out, line);
  }
}

void writeCalendarHead(std::string& out, const Calendar& calendar) {
  writePlainHead(out);
  appendFolded(out, "X-WR-CALNAME:" + escapeText(calendar.title));
  if (calendar.color) { appendFolded(out, "X-APPLE-CALENDAR-COLOR:" + colorText(*calendar.color)); }
}

void writeCalendarEnd(std::string& out) { appendFolded(out, "END:VCALENDAR"); }

void writeItem(std::string& out, const Item& item) { ItemText(out, item).write(); }

void collectZones(std::map<std::string, int>& zones, const Item& item) {
  const auto add = [&](const CalendarTime& time) {
    if (time.kind != CalendarTime::Kind::kZoned) { return; }
    const int year = static_cast<int>(time.local.year());
    const auto [found, isNew] = zones.emplace(time.zone, year);
    if (!isNew) { found->second = std::min(found->second, year); }
  };
  for (const auto* time : {&item.start, &item.end, &item.due, &item.recurrenceId}) {
    if (*time) { add(**time); }
  }
  for (const auto* list : {&item.recurrence.added, &item.recurrence.excluded}) {
    for (const CalendarTime& time : *list) { add(time); }
  }
}

}  // namespace orlocal::store
