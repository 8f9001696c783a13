#include "store/item_reader.h"

#include <algorithm>

#include <fmt/core.h>

#include "store/civil_days.h"
#include "store/item_draft.h"
#include "store/recurrence.h"
#include "store/zone_names.h"

namespace orlocal::store {

namespace {

constexpr std::size_t kMostLines = 100'000;
constexpr std::size_t kMostBytes = std::size_t{16} << 20;
/// What the first occurrence of a series may take to be found.
constexpr std::uint64_t kFirstSteps = 5'000'000;

using Kind = CalendarTime::Kind;

}  // namespace

std::optional<ReadItem> ItemDraft::read(std::string_view text) {
  if (text.size() > kMostBytes) return refuse(m_span.span.line, "it is larger than 16 MiB");
  ContentLines lines(text, m_span.span.line);
  std::size_t count = 0;
  for (ContentLine line; lines.next(line);) {
    if (++count > kMostLines) return refuse(line.line, "it has more than 100,000 lines");
    component(line);
  }
  return finish(text);
}

std::optional<ReadItem> ItemDraft::refuse(int line, std::string_view reason) {
  const char* kind = m_item.kind == ItemKind::kEvent ? "event" : "reminder";
  m_problems.refused.push_back({line, m_item.uid, fmt::format("{}; the {} was not imported", reason, kind)});
  return std::nullopt;
}

void ItemDraft::warn(int line, std::string message) {
  m_problems.warnings.push_back({line, m_item.uid, std::move(message)});
}

void ItemDraft::fail(int line, std::string reason) {
  if (m_failure.empty()) {
    m_failureLine = line;
    m_failure = std::move(reason);
  }
}

void ItemDraft::component(const ContentLine& line) {
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

void ItemDraft::innerDone(int line) {
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

std::optional<ReadItem> ItemDraft::finish(std::string_view bytes) {
  if (m_failure.empty() && m_item.kind == ItemKind::kEvent && !m_item.start)
    fail(m_span.span.line, "it has no DTSTART");
  if (!m_failure.empty()) return refuse(m_failureLine, m_failure);
  if (m_item.recurrenceId && !m_span.changed) {
    warn(m_recurrenceIdLine, "RECURRENCE-ID changes no series of this file and was passed over: this is a series");
    m_item.recurrenceId.reset();
    m_parameters.erase("RECURRENCE-ID");
    m_andFuture = false;
  }
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
  // The beginning of 1970 is what is written where nothing is known.
  if ((!m_item.created || !m_item.modified) && m_stamp != Moment{}) m_item.stamped = m_stamp;
  if (!settleEnd()) return std::nullopt;
  if (m_item.kind == ItemKind::kReminder) settleCompletion();
  return settleRecurrence();
}

bool ItemDraft::settleEnd() {
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
  if (end->local.year() > 9999) {
    refuse(m_endLine, "its end lies past the year 9999");
    return false;
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

void ItemDraft::settleCompletion() {
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

std::optional<ReadItem> ItemDraft::settleRecurrence() {
  if (m_item.recurrenceId && !m_item.recurrence.empty()) {
    warn(m_ruleLine, "a changed occurrence cannot repeat itself; its rule was passed over");
    m_item.recurrence = {};
  }
  ReadItem made;
  if (!m_item.recurrence.empty()) {
    ExpansionBudget budget(kFirstSteps);
    const int line = m_ruleLine != 0 ? m_ruleLine : m_span.span.line;
    auto series = Series::compile(m_item, Zone());
    if (!series && !m_item.recurrence.exceptionRules.empty()) {
      warn(line, fmt::format("{}; EXRULE was passed over, and what it takes out is shown", series.error().message));
      m_item.recurrence.exceptionRules.clear();
      series = Series::compile(m_item, Zone());
    }
    if (!series) return refuse(line, series.error().message);
    if (const auto status = series->checkDensity(); !status) return refuse(line, status.error().message);
    if (const auto first = series->first(budget); !first) return refuse(line, first.error().message);
    made.series = std::make_shared<const Series>(std::move(*series));
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
  made.andFuture = m_andFuture;
  return made;
}

std::optional<ReadItem> readItem(std::string_view bytes, const ItemSpan& span, TzidTable& zones,
                                 ReadProblems& problems) {
  return ItemDraft(span, zones, problems).read(span.span.of(bytes));
}

}  // namespace orlocal::store
