#pragma once

#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "host/commands/changes/change_run.h"
#include "host/commands/words/when_words.h"
#include "store/calendar_store.h"

namespace orlocal::host {

/// When the item is, on the viewer's wall clock; none of a reminder without a date.
std::optional<Times> shownTimesOf(const store::Item& item, const std::optional<store::Occurrence>& occurrence,
                                  const store::Zone& viewer);

/// `"Lunch" (1A2B3C4D): Tue 3 Nov 2026 12:30–13:30, every week, alarm 15 minutes before, in Work`.
/// Without the identifier where the item has none.
std::string itemLine(const store::Item& item, const store::Calendar& calendar, const store::Zone& viewer,
                     const std::optional<store::Occurrence>& occurrence = std::nullopt);
/// `"Lunch"`, for what cannot have a line.
std::string quotedTitle(const store::Item& item);

/// What the store said to a save of `item`; a refusal that does not name it gets its title before it.
template <class Answer>
Answer about(const store::Item& item, Answer answer) {
  const std::string title = item.title.value_or("");
  if (!answer && !title.empty() && answer.error().message.find(title) == std::string::npos) {
    answer.error().message = quotedTitle(item) + ": " + answer.error().message;
  }
  return answer;
}

/// What was done to an item, or would be: "Made", "Would make".
struct Outcome {
  const char* done;
  const char* rehearsed;
};
/// Prints the item as it is now, after the words for the outcome or, where that is wanted, as JSON.
Status tellItem(ChangeRun& run, const Outcome& outcome, const store::Item& item, const store::Calendar& calendar);

}  // namespace orlocal::host
