#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/text.h"

namespace orlocal {

// The words by which callers name kinds, spans, actions and the like. They are compared by equality after lower-casing;
// an absent word is none of them.

/// The object kinds that a type keyword names. "task" and "reminder" name the same kind.
enum class ItemKind { kCalendar, kReminderList, kEvent, kReminder, kAttendee, kAlarm };
std::optional<ItemKind> itemKindNamed(const OptionalText& type);

/// How much of a series a save or a removal means.
enum class SpanWord { kThis, kFuture, kAll };
std::optional<SpanWord> spanNamed(const OptionalText& span);

/// What an alarm does.
enum class AlarmAction { kDisplay, kEmail, kSound, kProcedure };
std::optional<AlarmAction> alarmActionNamed(const OptionalText& action);
std::string_view alarmActionWord(AlarmAction action);

/// Daily 0, weekly 1, monthly 2, yearly 3.
std::optional<int> recurrenceFrequencyNamed(const OptionalText& type);
/// The lower-case word; "" for a number that has none.
std::string recurrenceTypeWord(long frequency);

/// 0 for "none" and for no word at all, 1 "high", 5 "medium", 9 "low".
std::optional<int> priorityNamed(const OptionalText& word);

/// `text` lower-cased; absent stays absent.
OptionalText lowercased(const OptionalText& text);

}  // namespace orlocal
