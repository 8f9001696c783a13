#include "store/icalendar/item_reader.h"

#include <algorithm>

#include <fmt/format.h>

#include "base/hash.h"
#include "base/text.h"
#include "base/translation.h"
#include "base/try.h"
#include "store/icalendar/item_draft.h"
#include "store/icalendar/item_limits.h"
#include "store/recurrence/recurrence.h"
#include "store/recurrence/recurrence_scale.h"
#include "store/time/civil_days.h"
#include "store/time/zone_names.h"

namespace orlocal::store {

namespace {

/// What each item may take to be compiled and its first occurrence found, beside what all of a file have together.
constexpr std::uint64_t kOwnSteps = 2'000;
/// What one item may take at most.
constexpr std::uint64_t kMostSteps = 5'000'000;
/// What each item may bring to a month beside what all of a file have together: one that comes twice a day.
constexpr std::int64_t kOwnOccurrences = 62;

using Kind = CalendarTime::Kind;

bool isScaled(const Recurrence& recurrence) {
  return std::any_of(recurrence.rules.begin(), recurrence.rules.end(), &ScaledRule::isNeededFor);
}

}  // namespace

RuleBudget RuleBudget::ofOwnParts(const std::atomic<bool>* stop) {
  RuleBudget budget(stop);
  budget.m_steps = 0;
  budget.m_occurrences = 0;
  budget.m_scaled = 0;
  return budget;
}

std::uint64_t RuleBudget::given(const Recurrence& recurrence) const {
  // A list of rules is as many rules.
  const std::uint64_t own = kOwnSteps * (recurrence.rules.size() + recurrence.exceptionRules.size() <= 1 ? 1 : 2);
  return std::min(own + m_steps, kMostSteps);
}

ExpansionBudget RuleBudget::forItem(const Recurrence& recurrence) const {
  const bool scaled = std::any_of(recurrence.rules.begin(), recurrence.rules.end(), &ScaledRule::isNeededFor);
  m_begun = std::chrono::steady_clock::now();
  const auto time =
      scaled ? std::chrono::duration_cast<std::chrono::milliseconds>(m_scaledTime) : std::chrono::milliseconds(10'000);
  return ExpansionBudget(given(recurrence), time, m_stop);
}

void RuleBudget::settle(const Recurrence& recurrence, const ExpansionBudget& left) {
  const std::uint64_t taken = given(recurrence) - left.left();
  const std::uint64_t beyond = taken - std::min(taken, kOwnSteps);
  m_ranShort = m_ranShort || left.left() == 0 || beyond > m_steps;
  m_steps -= std::min(m_steps, beyond);
  // libical's steps are not ours, and nothing but time tells what they cost.
  if (isScaled(recurrence)) { m_scaledTime -= std::min(m_scaledTime, std::chrono::steady_clock::now() - m_begun); }
}

bool RuleBudget::takesScaled(const Recurrence& recurrence) {
  if (!isScaled(recurrence)) { return true; }
  const bool takes = m_scaled > 0;
  m_scaled -= takes ? 1 : 0;
  m_ranShort = m_ranShort || !takes;
  return takes;
}

bool RuleBudget::takesOccurrences(std::int64_t inMonth) {
  const std::int64_t beyond = inMonth - std::min(inMonth, kOwnOccurrences);
  if (beyond > m_occurrences) {
    m_ranShort = true;
    return false;
  }
  m_occurrences -= beyond;
  return true;
}

std::optional<ReadItem> ItemDraft::read(std::string_view text) {
  if (text.size() > kMostItemBytes) { return refuse(m_span.span.line, tr("it is larger than 16 MiB")); }
  ContentLines lines(text, m_span.span.line, m_span.utf8);
  std::size_t count = 0;
  for (ContentLine line; lines.next(line);) {
    if (++count > kMostItemLines) { return refuse(line.line, tr("it has more than 100,000 lines")); }
    component(line);
  }
  return finish(text);
}

std::optional<ReadItem> ItemDraft::refuse(int line, std::string_view reason) {
  const char* kind = m_item.kind == ItemKind::kEvent ? "event" : "reminder";
  m_problems.refuse(line, m_item.uid, tr("{}; the {} was not imported", reason, kind));
  return std::nullopt;
}

void ItemDraft::warn(int line, std::string message) { m_problems.warn(line, m_item.uid, std::move(message)); }

void ItemDraft::fail(int line, std::string reason) {
  if (m_failure.empty()) {
    m_failureLine = line;
    m_failure = std::move(reason);
  }
}

void ItemDraft::component(const ContentLine& line) {
  if (line.is("BEGIN")) {
    if (std::exchange(m_begun, true)) { beginInner(line); }
  } else if (line.is("END")) {
    endInner(line);
  } else if (line.name.empty()) {
    warn(line.line, tr("\"{}\" is no content line and was passed over", line.text.substr(0, 60)));
  } else if (!m_open.empty()) {
    m_inner.emplace_back(line.text);
  } else {
    property(line);
  }
}

void ItemDraft::beginInner(const ContentLine& line) {
  if (m_open.empty()) { m_innerLine = line.line; }
  m_open.emplace_back(trimmed(line.value));
  m_inner.push_back("BEGIN:" + m_open.back());
}

/// What is not balanced would, written out again, close what stands around it.
void ItemDraft::endInner(const ContentLine& line) {
  const std::string_view name = trimmed(line.value);
  const bool ownEnd = equalsNoCase(name, m_item.kind == ItemKind::kEvent ? "VEVENT" : "VTODO");
  const auto found =
      std::find_if(m_open.rbegin(), m_open.rend(), [&](const std::string& open) { return equalsNoCase(open, name); });
  if (found == m_open.rend() && !ownEnd) {
    return;  // the layout has said that it closes nothing
  }
  if (m_open.empty()) { return; }
  m_innerBroken = m_innerBroken || found != m_open.rbegin();
  m_open.resize(static_cast<std::size_t>(ownEnd ? 0 : m_open.rend() - found - 1));
  m_inner.push_back("END:" + std::string(name));
  if (m_open.empty()) { innerDone(line.line); }
}

void ItemDraft::innerDone(int line) {
  if (m_innerBroken) {
    warn(m_innerLine, tr("the component that begins here, or one in it, is not closed; it is not kept"));
    m_innerBroken = false;
    m_inner.clear();
    return;
  }
  const bool isAlarm = equalsNoCase(m_inner.front(), "BEGIN:VALARM");
  const auto inside = std::span(m_inner).subspan(1, m_inner.size() - 2);
  auto alarm = isAlarm ? readAlarm(inside) : std::nullopt;
  if (alarm) {
    m_item.alarms.push_back(std::move(*alarm));
  } else {
    if (isAlarm) {
      warn(line, tr("the alarm that ends here has no action or trigger that can be followed; it is kept as it is"));
    }
    for (const std::string& text : m_inner) { m_components.append(text).append("\n"); }
  }
  m_inner.clear();
}

std::optional<ReadItem> ItemDraft::finish(std::string_view bytes) {
  if (m_failure.empty() && m_item.kind == ItemKind::kEvent && !m_item.start && !m_span.partial) {
    fail(m_span.span.line, tr("it has no DTSTART"));
  }
  if (m_span.changed && !m_item.recurrenceId) {
    fail(m_recurrenceIdLine, tr("its RECURRENCE-ID does not tell which occurrence it changes"));
  }
  if (!m_failure.empty()) { return refuse(m_failureLine, m_failure); }
  if (m_item.recurrenceId && !m_span.changed) {
    warn(m_recurrenceIdLine, tr("RECURRENCE-ID changes no series of this file and was passed over: this is a series"));
    m_item.recurrenceId.reset();
    m_parameters.erase("RECURRENCE-ID");
    m_andFuture = false;
  }
  // In an order that does not hang on where the lines stood.
  std::string extra;
  for (const auto& [name, parameters] : m_parameters) {
    extra.append("@").append(name).append(parameters).append("\n");
  }
  m_item.extra = extra + m_item.extra + m_components;
  if (m_item.uid.empty()) {
    // Named by its content, so that another import finds it again.
    std::string content;
    ContentLines lines(bytes);
    for (ContentLine line; lines.next(line);) {
      if (!line.is("DTSTAMP")) { content.append(line.text).append("\n"); }
    }
    m_item.uid = fmt::format("content-{:016x}", contentHash(content));
  }
  // The beginning of 1970 is what is written where nothing is known.
  const bool toldByStamp = !m_item.created || !m_item.modified || m_span.partial;
  if (toldByStamp && m_stamp != Moment{}) { m_item.stamped = m_stamp; }
  if (!settleEnd()) { return std::nullopt; }
  if (m_item.kind == ItemKind::kReminder) { settleCompletion(); }
  return settleRecurrence();
}

bool ItemDraft::settleEnd() {
  auto& start = m_item.start;
  auto& end = m_item.endOrDue();
  const bool event = m_item.kind == ItemKind::kEvent;
  if (!end && m_duration && start) { end = after(*start, *m_duration); }
  if (!event || !start) { return true; }
  if (!end) {
    end = start;
  } else if ((start->kind == Kind::kDate) != (end->kind == Kind::kDate)) {
    warn(m_endLine, tr("one of start and end is a date and the other has a time; the end was read as the start is"));
    if (start->kind == Kind::kDate) {
      *end = {Kind::kDate, LocalTime(LocalDay(end->local)), ""};
    } else {
      end->kind = start->kind;
      end->zone = start->zone;
    }
  }
  if (end->local.year() > 9999) {
    refuse(m_endLine, tr("its end lies past the year 9999"));
    return false;
  }
  const Moment from = momentOf(*start, Zone()), to = momentOf(*end, Zone());
  if (to < from) {
    refuse(m_endLine, tr("{} lies before DTSTART", m_duration ? tr("the end that DURATION gives") : "DTEND"));
    return false;
  }
  // A day that ends where it starts is written by many for one whole day.
  if (start->kind == Kind::kDate && end->local == start->local) { end->local += kSecondsPerDay; }
  return true;
}

void ItemDraft::settleCompletion() {
  if (m_isDone && !m_item.completed) {
    // Done at an unknown moment: the best guess that is the same at the next import.
    const auto due = m_item.due ? std::optional(momentOf(*m_item.due, Zone())) : std::nullopt;
    m_item.completed = m_item.modified ? m_item.modified : due ? due : m_stamp ? m_stamp : Moment{};
  }
  if (m_isFull) { m_percent = "PERCENT-COMPLETE:100"; }
  if (!m_item.completed && !m_percent.empty()) { m_item.extra.append(m_percent).append("\n"); }
  if (!m_item.completed) { return; }
  // What speaks against its being done is outdated.
  for (const char* outdated : {"STATUS:NEEDS-ACTION\n", "STATUS:IN-PROCESS\n"}) {
    if (const auto at = m_item.extra.find(outdated); at != std::string::npos) {
      m_item.extra.erase(at, std::string_view(outdated).size());
    }
  }
}

std::shared_ptr<const Series> ItemDraft::compile() {
  const int line = m_ruleLine != 0 ? m_ruleLine : m_span.span.line;
  if (!m_rules.takesScaled(m_item.recurrence)) {
    refuse(line, tr("the file has more than 40 series that count in other calendars (RSCALE)"));
    return nullptr;
  }
  ExpansionBudget budget = m_rules.forItem(m_item.recurrence);
  auto series = Series::compile(m_item, Zone(), {}, &budget);
  if (!series && !m_item.recurrence.exceptionRules.empty()) {
    warn(line, tr("{}; EXRULE was passed over, and what it takes out is shown", series.error().message));
    m_item.recurrence.exceptionRules.clear();
    series = Series::compile(m_item, Zone(), {}, &budget);
  }
  const auto accepted = [&]() -> Status {
    ORLOCAL_CHECK(series);
    ORLOCAL_CHECK(series->checkDensity());
    ORLOCAL_CHECK(series->first(budget));
    if (m_rules.takesOccurrences(series->mostInMonth())) { return {}; }
    return failure(ErrorCode::kRefused,
                   tr("the events of this file come too often in a month, all together, to be shown"));
  }();
  m_rules.settle(m_item.recurrence, budget);
  if (accepted) { return std::make_shared<const Series>(std::move(*series)); }
  refuse(line, accepted.error().message);
  return nullptr;
}

bool ItemDraft::addPeriods(ReadItem& made) {
  if (m_periods.empty()) { return true; }
  const auto& last = m_item.endOrDue();
  const auto length =
      m_item.start && last ? momentOf(*last, Zone()) - momentOf(*m_item.start, Zone()) : Moment::duration{};
  // Each is a whole item, with all of the texts.
  const std::size_t each = m_item.uid.size() + m_item.title.value_or("").size() + m_item.notes.value_or("").size() +
                           m_item.location.value_or("").size() + m_item.url.value_or("").size() + m_item.extra.size() +
                           256 * (1 + m_item.alarms.size() + m_item.attendees.size());
  std::size_t bytes = 0;
  Item one;
  for (const auto& [begin, end] : m_periods) {
    if (!end || momentOf(*end, Zone()) - momentOf(begin, Zone()) == length) { continue; }
    if (made.periods.empty()) {
      one = m_item;
      one.recurrence = {};
    }
    if ((bytes += each) > kMostItemBytes) {
      refuse(m_span.span.line, tr("its RDATE has more periods of their own length than an item may hold (16 MiB)"));
      return false;
    }
    Item& changed = made.periods.emplace_back(one);
    changed.recurrenceId = begin;
    changed.start = begin;
    changed.endOrDue() = end;
  }
  return true;
}

std::optional<ReadItem> ItemDraft::settleRecurrence() {
  if (m_span.partial) { m_item.recurrence = {}; }
  if (m_item.recurrenceId && !m_item.recurrence.empty()) {
    warn(m_ruleLine, translated(kRuleOfChanged));
    m_item.recurrence = {};
  }
  std::optional<ReadItem> made(std::in_place);
  if (!m_item.recurrence.empty()) {
    made->series = compile();
    if (made->series == nullptr || !addPeriods(*made)) {
      made.reset();
      return made;
    }
  }
  made->item = std::move(m_item);
  made->andFuture = m_andFuture;
  return made;
}

std::optional<ReadItem> readItem(std::string_view bytes, const ItemSpan& span, Tzids& zones, RuleBudget& rules,
                                 ReadProblems& problems) {
  return ItemDraft(span, zones, rules, problems).read(span.span.of(bytes));
}

}  // namespace orlocal::store
