#include "backend/keywords.h"

#include "backend/keyword_table.h"

namespace orlocal {
namespace {

template <class Value>
struct Word {
  std::string_view word;
  Value value;
};

constexpr Word<ItemKind> kItemKinds[] = {
    {"calendar", ItemKind::kCalendar}, {"reminderlist", ItemKind::kReminderList}, {"event", ItemKind::kEvent},
    {"task", ItemKind::kReminder},     {"reminder", ItemKind::kReminder},         {"attendee", ItemKind::kAttendee},
    {"alarm", ItemKind::kAlarm},
};

constexpr Word<SpanWord> kSpans[] = {
    {"this", SpanWord::kThis},
    {"future", SpanWord::kFuture},
    {"all", SpanWord::kAll},
};

constexpr Word<AlarmAction> kAlarmActions[] = {
    {"display", AlarmAction::kDisplay},
    {"email", AlarmAction::kEmail},
    {"sound", AlarmAction::kSound},
    {"procedure", AlarmAction::kProcedure},
};

struct Numbered {
  std::string_view word;
  int number;
};

constexpr Numbered kRecurrenceTypes[] = {{"daily", 0}, {"weekly", 1}, {"monthly", 2}, {"yearly", 3}};

constexpr Numbered kPriorities[] = {{"none", 0}, {"high", 1}, {"medium", 5}, {"low", 9}};

template <class Row, std::size_t Size>
const Row* rowNamed(const Row (&table)[Size], const OptionalText& word) {
  return word ? rowForAnyCase(table, *word) : nullptr;
}

template <class Value, std::size_t Size>
std::optional<Value> valueNamed(const Word<Value> (&table)[Size], const OptionalText& word) {
  const auto* row = rowNamed(table, word);
  return row ? std::optional(row->value) : std::nullopt;
}

template <std::size_t Size>
std::optional<int> numberNamed(const Numbered (&table)[Size], const OptionalText& word) {
  const auto* row = rowNamed(table, word);
  return row ? std::optional(row->number) : std::nullopt;
}

}  // namespace

std::optional<ItemKind> itemKindNamed(const OptionalText& type) { return valueNamed(kItemKinds, type); }

std::optional<SpanWord> spanNamed(const OptionalText& span) { return valueNamed(kSpans, span); }

std::optional<AlarmAction> alarmActionNamed(const OptionalText& action) { return valueNamed(kAlarmActions, action); }

std::string_view alarmActionWord(AlarmAction action) {
  for (const auto& row : kAlarmActions) {
    if (row.value == action) { return row.word; }
  }
  return {};
}

std::optional<int> recurrenceFrequencyNamed(const OptionalText& type) { return numberNamed(kRecurrenceTypes, type); }

std::string recurrenceTypeWord(long frequency) {
  const auto* row = rowNumbered(kRecurrenceTypes, frequency);
  return row ? std::string(row->word) : std::string();
}

std::optional<int> priorityNamed(const OptionalText& word) {
  return word ? numberNamed(kPriorities, word) : std::optional(0);
}

OptionalText lowercased(const OptionalText& text) { return text ? OptionalText(lowercase(*text)) : std::nullopt; }

}  // namespace orlocal
