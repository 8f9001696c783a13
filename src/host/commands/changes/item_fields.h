#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/result.h"
#include "host/commands/words/when_words.h"
#include "store/calendar_store.h"

namespace CLI {
class App;
}

namespace orlocal::host {

/// What the options of `new` and `edit` say of an item; an empty text takes away what is there.
struct FieldWords {
  std::optional<std::string> title, start, end, duration, zone, repeat, until, location, notes, url, priority;
  std::optional<int> count;
  std::vector<std::string> alarms, categories;
  bool allDay = false;
};
void addFieldOptions(CLI::App& command, FieldWords& words);

/// What could not be read, and in which text.
struct Misread {
  Failure why;
  std::string text;
};
template <class Value>
using Read = tl::expected<Value, Misread>;

/// `when` with what the options say, which wins. An empty `--repeat` is a rule that ends at once: see `takesRulesAway`.
Read<When> withOptions(When when, const FieldWords& words, const WordsSetting& setting);

/// Puts what the options say of everything but times, rules and alarms into the edit.
Read<void> putTexts(const FieldWords& words, store::ItemEdit& edit);
/// `start`: of the item as it is to be, for alarms at a time of day.
Read<void> putAlarms(const FieldWords& words, const WordsSetting& setting, store::LocalTime start,
                     store::ItemEdit& edit);
/// The rule as the item of these times has it.
store::RecurrenceRule ruleFor(store::RecurrenceRule rule, const Times& times, const store::Zone& zone);

/// The zone that `--zone` names, else `usual`.
Read<store::Zone> zoneFor(const FieldWords& words, const store::Zone& usual);
/// As calendar files have it: a day, or a time in that zone.
store::CalendarTime calendarTime(store::LocalTime time, bool allDay, const store::Zone& zone);

}  // namespace orlocal::host
