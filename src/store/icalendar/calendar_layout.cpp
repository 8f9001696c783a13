#include "store/icalendar/calendar_layout.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <unordered_map>

#include <fmt/format.h>

#include "base/text.h"
#include "base/translation.h"
#include "store/icalendar/calendar_color.h"
#include "store/icalendar/content_line.h"

namespace orlocal::store {

namespace {

constexpr std::size_t kDeepest = 16;

/// The lines of an item that are of interest here.
constexpr std::array<std::string_view, 9> kNamesInItems{"BEGIN",    "END",   "UID",   "DTSTAMP",      "LAST-MODIFIED",
                                                        "SEQUENCE", "RRULE", "RDATE", "RECURRENCE-ID"};

/// Messages whose items only name what they are about (RFC 5546, 3.2 and 3.4).
bool isPartial(std::string_view method) {
  constexpr std::array<std::string_view, 4> kPartial{"REPLY", "CANCEL", "REFRESH", "DECLINECOUNTER"};
  return std::ranges::any_of(kPartial, [&](std::string_view each) { return equalsNoCase(each, trimmed(method)); });
}

class LayoutReader {
 public:
  explicit LayoutReader(std::string_view bytes) : m_utf8(isUtf8(bytes)), m_lines(bytes, 1, m_utf8) {}

  CalendarLayout read() {
    for (ContentLine line; begin(), m_lines.next(line);) {
      if (m_lines.reencoded() && !m_saidEncoding) {
        m_saidEncoding = true;
        warn(line.line, tr("the text is not UTF-8 and was read as Windows-1252"));
      }
      if (line.is("BEGIN")) {
        open(line);
      } else if (line.is("END")) {
        close(line);
      } else {
        property(line);
      }
    }
    m_made.endsEarly = !m_open.empty();
    while (!m_open.empty()) { leave(m_lines.lineNumber(), false); }
    for (const auto& item : m_made.items) { useCalendar(item.calendar); }
    if (m_made.calendars.empty()) { m_made.calendars.emplace_back(); }
    for (auto& item : m_made.items) { item.partial = isPartial(m_made.calendars[item.calendar].method); }
    return std::move(m_made);
  }

 private:
  enum class Role { kCalendar, kItem, kZone, kOther };
  struct Open {
    std::string name;
    Role role;
  };

  void begin() {
    // Where lines have to be decoded each is looked at, so that the first of them is told.
    if (m_utf8 && inside(Role::kItem)) { m_lines.passOverTo(kNamesInItems); }
    m_lineBegin = m_lines.offset();
  }
  void useCalendar(std::size_t index) {
    if (m_made.calendars.size() <= index) { m_made.calendars.resize(index + 1); }
  }
  void warn(int line, std::string message) { m_made.problems.warn(line, "", std::move(message)); }
  bool inside(Role role) const { return m_openOf[static_cast<std::size_t>(role)] > 0; }
  static std::string nameOf(const ContentLine& line) {
    return inCapitals(line.value.substr(0, line.value.find_last_not_of(" \t") + 1));
  }
  /// As much of a component's name as a warning has room for.
  static std::string_view shown(std::string_view name) { return name.substr(0, 60); }

  void open(const ContentLine& line) {
    std::string name = nameOf(line);
    Role role = Role::kOther;
    if (name == "VCALENDAR") { role = Role::kCalendar; }
    if (name == "VEVENT" || name == "VTODO") { role = Role::kItem; }
    if (name == "VTIMEZONE") { role = Role::kZone; }
    // These never stand in one another: what is still open has lost its END.
    if (role == Role::kCalendar) {
      while (!m_open.empty()) { leave(line.line, false); }
    }
    while ((role == Role::kItem || role == Role::kZone) && (inside(Role::kItem) || inside(Role::kZone))) {
      leave(line.line, false);
    }
    const bool top = m_open.empty() || (m_open.size() == 1 && m_open.front().role == Role::kCalendar);
    if (role == Role::kCalendar) {
      m_calendar = m_made.calendars.size();
      m_made.calendars.emplace_back();
    } else if (role == Role::kItem && top) {
      m_item = {{m_lineBegin, 0, line.line},
                name == "VEVENT" ? ItemKind::kEvent : ItemKind::kReminder,
                m_utf8,
                m_calendar,
                "",
                false,
                false,
                false,
                0,
                ""};
    } else if (role == Role::kZone && top) {
      m_zone = {{m_lineBegin, 0, line.line}, m_calendar, ""};
    } else if (!inside(Role::kItem) && !inside(Role::kZone)) {
      warn(line.line, tr("{} components are not kept", shown(name)));
      role = Role::kOther;
    } else {
      role = Role::kOther;
    }
    m_places[name].push_back(m_open.size());
    ++m_openOf[static_cast<std::size_t>(role)];
    m_open.push_back({std::move(name), role});
    if (m_open.size() > kDeepest) { m_tooDeep = true; }
  }

  void close(const ContentLine& line) {
    const std::string name = nameOf(line);
    const auto found = m_places.find(name);
    if (found == m_places.end() || found->second.empty()) {
      warn(line.line, tr("END:{} closes nothing and was passed over", shown(name)));
      return;
    }
    for (const std::size_t place = found->second.back(); m_open.size() > place + 1;) { leave(line.line, false); }
    leave(line.line, true);
  }

  /// Leaves the innermost component; `closed` says that its END was there.
  void leave(int line, bool closed) {
    const Role role = m_open.back().role;
    const std::string name = std::move(m_open.back().name);
    m_open.pop_back();
    m_places[name].pop_back();
    --m_openOf[static_cast<std::size_t>(role)];
    if (role == Role::kItem) {
      m_item.span.end = closed ? m_lines.offset() : m_lineBegin;
      if (!closed) {
        m_made.problems.refuse(m_item.span.line, m_item.uid,
                               tr("the {} is not closed: its END:{} is missing before line {}",
                                  m_item.kind == ItemKind::kEvent ? "event" : "reminder", name, line));
      } else if (m_tooDeep) {
        m_made.problems.refuse(m_item.span.line, m_item.uid, tr("components stand in it more than {} deep", kDeepest));
      } else {
        m_made.items.push_back(std::move(m_item));
      }
      m_tooDeep = false;
    } else if (role == Role::kZone) {
      m_zone.span.end = closed ? m_lines.offset() : m_lineBegin;
      if (closed && !m_tooDeep) { m_made.zones.push_back(std::move(m_zone)); }
      if (!closed) { warn(m_zone.span.line, tr("the time zone is not closed and was passed over")); }
      m_tooDeep = false;
    } else if (!closed) {
      warn(line, tr("{} is not closed", shown(name)));
    }
    if (role == Role::kCalendar) { m_calendar = m_made.calendars.size(); }
  }

  void property(const ContentLine& line) {
    if (m_open.empty()) {
      warn(line.line, tr("text outside of any component was passed over"));
      return;
    }
    const Role role = m_open.back().role;
    if (role == Role::kCalendar) {
      CalendarHead& head = m_made.calendars[m_calendar];
      if (line.is("X-WR-CALNAME") || (line.is("NAME") && head.name.empty())) { head.name = unescapeText(line.value); }
      if (line.is("X-APPLE-CALENDAR-COLOR") || (line.is("COLOR") && !head.color)) {
        head.color = parseColor(line.value);
      }
      if (line.is("METHOD")) { head.method = std::string(line.value); }
      if (line.name.empty()) { warn(line.line, tr("this is no content line and was passed over")); }
    } else if (role == Role::kItem) {
      if (line.is("UID")) { m_item.uid = unescapeText(line.value); }
      if (line.is("RECURRENCE-ID")) { m_item.changed = true; }
      if (line.is("RRULE") || line.is("RDATE")) { m_item.repeats = true; }
      if (line.is("SEQUENCE")) {
        std::from_chars(line.value.data(), line.value.data() + line.value.size(), m_item.sequence);
      }
      if (line.is("LAST-MODIFIED") || (line.is("DTSTAMP") && m_item.modified.empty())) {
        m_item.modified = std::string(line.value);
      }
    } else if (role == Role::kZone && line.is("TZID")) {
      m_zone.tzid = unescapeText(line.value);
    }
  }

  const bool m_utf8;  ///< of all bytes
  ContentLines m_lines;
  CalendarLayout m_made;
  std::vector<Open> m_open;
  std::unordered_map<std::string, std::vector<std::size_t>> m_places;  ///< in `m_open`, by name
  std::array<std::size_t, 4> m_openOf{};                               ///< how many are open, by role
  ItemSpan m_item;
  ZoneSpan m_zone;
  std::size_t m_calendar = 0;
  std::size_t m_lineBegin = 0;
  bool m_tooDeep = false;
  bool m_saidEncoding = false;
};

}  // namespace

CalendarLayout layoutOf(std::string_view bytes) { return LayoutReader(bytes).read(); }

bool isOneZone(std::string_view text) {
  const CalendarLayout layout = layoutOf(text);
  // What is not UTF-8 brings one warning, and breaks nothing.
  return layout.zones.size() == 1 && layout.items.empty() && layout.problems.refused.empty() &&
         layout.problems.warnings.size() == (isUtf8(text) ? 0 : 1);
}

}  // namespace orlocal::store
